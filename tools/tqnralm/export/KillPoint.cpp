// The tests' kill points (see KillPoint.h).
#include "KillPoint.h"

#include <cstdlib>
#include <cstring>

#include "Os.h"

namespace tqnralm {
namespace {

struct Armed {
    int point = -1;
    long countdown = 0;
    bool stop = false;  // ask to stop instead of ending the process
};

Armed Read() {
    static const char* const kNames[] = {"message", "mid-message", "journal", "rename", "file"};
    Armed armed;
    const char* value = std::getenv("TQNRALM_KILL_AT");
    if (value == nullptr) return armed;
    const char* colon = std::strchr(value, ':');
    if (colon == nullptr) return armed;
    for (int i = 0; i < 5; ++i) {
        if (std::strlen(kNames[i]) == static_cast<size_t>(colon - value) &&
            std::strncmp(kNames[i], value, colon - value) == 0) {
            armed.point = i;
            char* end = nullptr;
            armed.countdown = std::strtol(colon + 1, &end, 10);
            armed.stop = std::strcmp(end, ":stop") == 0;
        }
    }
    return armed;
}

}  // namespace

// Read once; only the writing thread, and after it the main thread, arrive
// at the points.
Armed& Seam() {
    static Armed armed = Read();
    return armed;
}

bool KillPointReached(KillPoint point) {
    Armed& armed = Seam();
    return armed.point == static_cast<int>(point) && --armed.countdown == 0;
}

void KillAt(KillPoint point) {
    if (!KillPointReached(point)) return;
    if (Seam().stop) {
        os::RaiseStop();
    } else {
        os::KillSelf();
    }
}

}  // namespace tqnralm
