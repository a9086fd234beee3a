// Faults.h - the fault seams of the tests: the Nth allocation, or the Nth
// call of the platform layer that opens or reads a file, lists a folder,
// loads a module or opens a code page converter, fails. Nothing is armed
// unless a test arms it; unarmed, each seam costs one compare.
//
// Only the platform layer and the tests' own allocation functions ask these;
// a failed call looks to the layer above as the system's own failure would.
#ifndef QV_PLATFORM_FAULTS_H
#define QV_PLATFORM_FAULTS_H

namespace qvp {
namespace faults {

// What a failed system call reports: an I/O error, no descriptor left, no
// permission, or no memory (EIO, EMFILE, EACCES, ENOMEM and their Windows
// kin).
enum class IoError { kHardIo, kTooManyFiles, kDenied, kNoMemory };

// Arms the countdown: the nth allocation (or call) from now fails, once.
// 0 disarms.
void ArmAllocation(long n);
void ArmIo(long n, IoError error);
// Whether the armed fault has been injected since it was armed.
bool AllocationFired();
bool IoFired();
// Pauses counting (the tests' own allocations between two library calls).
void PauseAllocation(bool paused);
bool AllocationPaused();

// Counts one allocation: true when it must fail.
bool AllocationFails();
// Counts one call: true (and the error) when it must fail.
bool IoFails(IoError* error);

}  // namespace faults
}  // namespace qvp

#endif  // QV_PLATFORM_FAULTS_H
