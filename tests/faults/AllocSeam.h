// AllocSeam.h - what this test program's operator new knows of the library.
#ifndef QV_TESTS_FAULTS_ALLOCSEAM_H
#define QV_TESTS_FAULTS_ALLOCSEAM_H

namespace qvt {

// Blocks that operator new gave out while allocations counted (inside the
// library's calls) and that are not deleted yet: a block a walk leaves
// behind after QV_ExitLibrary shows here even when it is still reachable,
// which a leak checker forgives.
long LiveBlocks();

}  // namespace qvt

#endif  // QV_TESTS_FAULTS_ALLOCSEAM_H
