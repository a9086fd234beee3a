// The assistant's work, on threads of its own so that the window never
// waits: the walk that finds the mail, the dry run that sizes an export, and
// the export (Export.h). Each ends with a message posted to the window; the
// export's progress is posted as it goes, one message waiting at a time, and
// its messages (why a write failed) are kept for the last step.
#ifndef TQNRALM_GUI_ENGINE_H
#define TQNRALM_GUI_ENGINE_H

#include "WindowsApi.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Model.h"
#include "WindowsDrive.h"
#include "Options.h"
#include "Progress.h"
#include "Report.h"

namespace tqnralm {
namespace gui {

// wParam: the exit code (Options.h).
constexpr UINT kFoundMessage = WM_APP + 1;
constexpr UINT kProgressMessage = WM_APP + 2;
constexpr UINT kExportedMessage = WM_APP + 3;
constexpr UINT kPlannedMessage = WM_APP + 4;

class Engine : public ProgressListener, public Report {
public:
    explicit Engine(HWND window) : window_(window) {}
    ~Engine() override;

    // Finds the mail client on this machine; after an old disk, the library
    // reads this machine again from here on.
    void Find();
    // The same of an old disk: the host's checks of the drive at `root` (or
    // of the folder above it, when `root` is the disk's Windows folder) and
    // the profile `user` (empty: the one that used the client), then the
    // walk when the drive is readable. From then on the library reads that
    // drive, the export too, until another is chosen.
    void FindDrive(const std::string& root, const std::string& user);
    // The found tree, read after kFoundMessage.
    const Found& found() const { return found_; }
    // The last drive's checks and the folder read as its root; "" for this machine.
    const DriveCheck& drive() const { return drive_; }
    const std::string& driveRoot() const { return driveRoot_; }
    // The dry run of an export with these options: what it would write.
    void Plan(ExportOptions options);
    bool planning() const { return planning_; }
    const PlanTotals& planned() const { return planned_; }
    void Export(ExportOptions options);
    // Asks the export to stop after the message it writes (it stays resumable).
    void Cancel();

    // The last progress; the window calls Taken() when it has shown it.
    int64_t done() const { return done_; }
    int64_t total() const { return total_; }
    uint64_t bytes() const { return bytes_; }
    std::string folder() const;
    void Taken() { pending_ = false; }
    void OnProgress(int64_t done, int64_t total, uint64_t bytes) override;
    void OnFolder(const std::string& target) override;
    // The export's messages; its status line and listing are of no use here.
    void Text(Channel channel, const std::string& text) override;
    std::vector<std::string> messages() const;

private:
    void Join();
    int Walk();
    void Post(UINT message, WPARAM wParam);

    HWND window_;
    std::thread thread_;
    Found found_;
    DriveCheck drive_;
    std::string driveRoot_;
    PlanTotals planned_;
    std::atomic<bool> planning_{false};
    std::atomic<int64_t> done_{0}, total_{0};
    std::atomic<uint64_t> bytes_{0};
    std::atomic<bool> pending_{false};
    mutable std::mutex folderMutex_;
    std::string folder_;
    std::vector<std::string> messages_;  // under folderMutex_
};

}  // namespace gui
}  // namespace tqnralm

#endif
