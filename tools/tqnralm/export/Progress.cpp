// The export's report (see Progress.h).
#include "Progress.h"

#include <cstdio>

namespace tqnralm {

Progress::Progress(bool live, int64_t total, Report& report)
    : live_(live), report_(report), total_(total), start_(std::chrono::steady_clock::now()), last_(start_) {}

void Progress::Step(uint64_t bytes) {
    ++done_;
    bytes_ += bytes;
    if (listener_ != nullptr) listener_->OnProgress(done_, total_, bytes_);
    if (!live_) return;
    const auto now = std::chrono::steady_clock::now();
    if (now - last_ >= std::chrono::milliseconds(100)) Show(now);
}

void Progress::Show(std::chrono::steady_clock::time_point now) {
    last_ = now;
    const double seconds = std::chrono::duration<double>(now - start_).count();
    const double rate = seconds > 0 ? done_ / seconds : 0;
    char eta[32] = "--:--";
    if (rate > 0 && total_ >= done_) {
        long left = static_cast<long>((total_ - done_) / rate + 0.5);
        std::snprintf(eta, sizeof eta, "%ld:%02ld", left / 60, left % 60);
    }
    char line[160];
    int n = std::snprintf(line, sizeof line, "%lld/%lld messages, %.1f MB, %.0f messages/s, %s left",
                          static_cast<long long>(done_), static_cast<long long>(total_), bytes_ / 1e6, rate, eta);
    // Spaces cover what a longer line before left (no terminal escapes: the
    // Windows console does not take them by default).
    report_.Say(Channel::kStatus, "\r%s%*s", line, width_ > n ? width_ - n : 0, "");
    width_ = n;
}

void Progress::Clear() {
    if (width_ > 0) report_.Say(Channel::kStatus, "\r%*s\r", width_, "");
    width_ = 0;
}

void Progress::Stopped(int64_t written, int64_t failed, uint64_t bytes) {
    Clear();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    report_.Say(Channel::kMessage,
          "tqnralm: export stopped: %lld written, %lld failed, %llu bytes, %.2f s; "
          "the same command goes on from there\n",
          static_cast<long long>(written), static_cast<long long>(failed),
          static_cast<unsigned long long>(bytes), seconds);
}

void Progress::Finish(bool dryRun, int64_t written, int64_t failed, uint64_t bytes) {
    Clear();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    report_.Say(Channel::kMessage, "tqnralm: %s: %lld %s, %lld failed, %llu bytes, %.2f s\n", dryRun ? "dry run" : "export",
          static_cast<long long>(written), dryRun ? "to write" : "written",
          static_cast<long long>(failed),
          static_cast<unsigned long long>(bytes), seconds);
}

}  // namespace tqnralm
