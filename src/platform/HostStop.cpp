// The host's stop request, the one state the two halves of its seam to the
// operating system share: the signal or console handler of each sets it, the
// export polls it between messages.
#include "platform/HostOs.h"

#include <atomic>

namespace tqnralm {
namespace os {
namespace {

std::atomic<bool> stopRequested{false};

}  // namespace

bool RequestStop() { return stopRequested.exchange(true); }
bool StopRequested() { return stopRequested.load(std::memory_order_relaxed); }
void ClearStopRequest() { stopRequested.store(false); }

}  // namespace os
}  // namespace tqnralm
