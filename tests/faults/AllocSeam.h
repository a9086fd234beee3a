// AllocSeam.h - what this test program's operator new knows of the library.
#ifndef QV_TESTS_FAULTS_ALLOCSEAM_H
#define QV_TESTS_FAULTS_ALLOCSEAM_H

namespace qvt {

// Blocks operator new gave out inside the library's calls and not deleted
// yet: also those still reachable, which a leak checker forgives.
long LiveBlocks();

}  // namespace qvt

#endif  // QV_TESTS_FAULTS_ALLOCSEAM_H
