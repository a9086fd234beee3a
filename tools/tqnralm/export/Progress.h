// The export's report: a status line on a terminal, at most ten times a
// second (messages done of all, MB, messages per second, time left), and one
// summary line at the end. Times go to the report only, never into the
// output, so that two exports are byte-identical.
#ifndef TQNRALM_TOOL_PROGRESS_H
#define TQNRALM_TOOL_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

#include "Report.h"

namespace tqnralm {

// Told of every message done, on the export's writer thread (a window posts
// it on to its own thread). `total` is the messages the plan expects.
class ProgressListener {
public:
    virtual ~ProgressListener() = default;
    virtual void OnProgress(int64_t done, int64_t total, uint64_t bytes) = 0;
    // A folder's messages come next: its path relative to OUTDIR.
    virtual void OnFolder(const std::string& target) { (void)target; }
};

class Progress {
public:
    // `live`: show the status line (stderr is a terminal and not --quiet).
    Progress(bool live, int64_t total, Report& report);
    // One message done, written or failed, and the bytes it added.
    void Step(uint64_t bytes);
    // Tells `listener` (may be null) of each step from now on.
    void Listen(ProgressListener* listener) { listener_ = listener; }
    // The folder whose messages come next, told to the listener.
    void Folder(const std::string& target) {
        if (listener_ != nullptr) listener_->OnFolder(target);
    }
    // Clears the status line and prints the summary; a dry run's counts
    // are what would be written.
    void Finish(bool dryRun, int64_t written, int64_t failed, uint64_t bytes);

    // The same when a stop was asked for: how far the export got.
    void Stopped(int64_t written, int64_t failed, uint64_t bytes);

private:
    void Clear();
    void Show(std::chrono::steady_clock::time_point now);

    bool live_;
    Report& report_;
    int64_t total_;
    int64_t done_ = 0;
    uint64_t bytes_ = 0;
    ProgressListener* listener_ = nullptr;
    int width_ = 0;  // of the status line shown last
    std::chrono::steady_clock::time_point start_, last_;
};

}  // namespace tqnralm

#endif
