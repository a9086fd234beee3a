// Faults.cpp - the countdowns behind the fault seams, and the library's C heap.
#include "platform/Faults.h"

#include "platform/platform.h"

#include <cstdlib>

namespace qvp {
namespace faults {
namespace {

long g_allocationsLeft = 0;  // 0: unarmed
bool g_allocationFired = false;
bool g_allocationPaused = false;
long g_ioLeft = 0;
bool g_ioFired = false;
IoError g_ioError = IoError::kHardIo;

}  // namespace

void ArmAllocation(long n) {
    g_allocationsLeft = n;
    g_allocationFired = false;
}

void ArmIo(long n, IoError error) {
    g_ioLeft = n;
    g_ioError = error;
    g_ioFired = false;
}

bool AllocationFired() { return g_allocationFired; }
bool IoFired() { return g_ioFired; }
void PauseAllocation(bool paused) { g_allocationPaused = paused; }
bool AllocationPaused() { return g_allocationPaused; }

bool AllocationFails() {
    if (g_allocationsLeft == 0 || g_allocationPaused || --g_allocationsLeft != 0) return false;
    g_allocationFired = true;
    return true;
}

bool IoFails(IoError* error) {
    if (g_ioLeft == 0 || --g_ioLeft != 0) return false;
    g_ioFired = true;
    *error = g_ioError;
    return true;
}

}  // namespace faults

void* Malloc(size_t bytes) { return faults::AllocationFails() ? nullptr : std::malloc(bytes); }

void* Calloc(size_t count, size_t size) { return faults::AllocationFails() ? nullptr : std::calloc(count, size); }

void Free(void* p) { std::free(p); }

}  // namespace qvp
