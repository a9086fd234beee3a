// The tests' kill points (see KillPoint.h).
#include "KillPoint.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/HostOs.h"

namespace tqnralm {
namespace {

struct Armed {
    int point = -1;
    long countdown = 0;
    enum { kKill, kStop, kPause } action = kKill;
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
            armed.action = std::strcmp(end, ":stop") == 0 ? Armed::kStop
                           : std::strcmp(end, ":pause") == 0 ? Armed::kPause
                                                              : Armed::kKill;
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
    switch (Seam().action) {
    case Armed::kStop: os::RaiseStop(); break;
    case Armed::kPause:
        std::fputs("tqnralm: paused\n", stderr);
        std::fflush(stderr);
        for (int c = std::getchar(); c != '\n' && c != EOF;) c = std::getchar();
        break;
    default: os::KillSelf();
    }
}

}  // namespace tqnralm
