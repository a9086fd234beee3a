// The assistant's threads (Engine.h).
#include "Engine.h"

#include <memory>

#include "AddressPass.h"
#include "Export.h"
#include "ExportPlan.h"
#include "Library.h"
#include "Drive.h"
#include "DryRunSink.h"
#include "Formats.h"
#include "MailWriter.h"
#include "platform/HostOs.h"

namespace tqnralm {
namespace gui {

Engine::~Engine() {
    os::RaiseStop();  // a dry run or export still going ends after its message
    Join();
}

void Engine::Join() {
    if (thread_.joinable()) thread_.join();
}

void Engine::Post(UINT message, WPARAM wParam) { PostMessageW(window_, message, wParam, 0); }

// The plan of an export of everything, as the dry run makes it: it walks
// users, accounts and folders and counts each folder's messages; then the
// address books, read and counted, nothing written.
int Engine::Walk() {
    found_ = Found();
    Session session;
    int exit = session.Open();
    if (exit != kExitOk) return exit;
    std::unique_ptr<MailWriter> writer = MakeMailWriter(DefaultMailFormat());
    ExportPlan plan;
    exit = MakePlan(session.root(), ExportOptions(), *writer, &plan);
    Json books = Json::array();
    AddressTotals addresses;
    DryRunSink sink;
    WriteAddressBooks(plan, FormatsOf(FormatKind::kAddress), sink, &books, &addresses, *this);
    found_ = FoundFromPlan(plan, books);
    return exit;
}

void Engine::Find() {
    Join();
    if (!driveRoot_.empty()) {
        os::ReadCopiedDrive(std::string(), std::string());
        drive_ = DriveCheck();
        driveRoot_.clear();
    }
    thread_ = std::thread([this] { Post(kFoundMessage, static_cast<WPARAM>(Walk())); });
}

void Engine::FindDrive(const std::string& root, const std::string& user) {
    Join();
    thread_ = std::thread([this, root, user] {
        driveRoot_ = root;
        drive_ = CheckWindowsDrive(root, user);
        const std::string parent = ParentOfWindowsFolder(root);
        if (drive_.problem == DriveCheck::kNotADrive && !parent.empty()) {
            const DriveCheck above = CheckWindowsDrive(parent, user);
            if (above.problem != DriveCheck::kNotADrive) driveRoot_ = parent, drive_ = above;
        }
        found_ = Found();
        Post(kFoundMessage, static_cast<WPARAM>(drive_.exit != kExitOk ? drive_.exit : Walk()));
    });
}

// The export's own dry run (Export.h): the plan of the chosen users, then
// every message through the chosen format's writer and every address book
// through theirs, counted and not written.
void Engine::Plan(ExportOptions options) {
    Join();
    os::ClearStopRequest();
    planning_ = true;
    options.dryRun = true;
    options.quiet = true;
    if (options.outDir.empty()) options.outDir = ".";  // no folder chosen yet: none is written anyway
    thread_ = std::thread([this, options] {
        const ExportResult result = tqnralm::Export(GlobalOptions(), options);
        PlanTotals totals;
        totals.exit = result.exit;
        totals.messages = result.messages;
        totals.bytes = result.mail.bytes + result.addresses.bytes;
        planned_ = totals;
        planning_ = false;
        Post(kPlannedMessage, static_cast<WPARAM>(totals.exit));
    });
}

void Engine::Export(ExportOptions options) {
    if (planning_) os::RaiseStop();  // the dry run is of no use now
    Join();
    os::ClearStopRequest();
    done_ = 0;
    bytes_ = 0;
    total_ = found_.messages;  // until the export's plan says
    OnFolder(std::string());
    {
        std::lock_guard<std::mutex> lock(folderMutex_);
        messages_.clear();
    }
    options.listener = this;
    options.report = this;
    options.quiet = true;
    thread_ = std::thread([this, options] {
        const int exit = tqnralm::Export(GlobalOptions(), options).exit;
        Post(kExportedMessage, static_cast<WPARAM>(exit));
    });
}

void Engine::Cancel() { os::RaiseStop(); }

void Engine::OnProgress(int64_t done, int64_t total, uint64_t bytes) {
    done_ = done;
    total_ = total;
    bytes_ = bytes;
    if (!pending_.exchange(true)) Post(kProgressMessage, 0);
}

void Engine::OnFolder(const std::string& target) {
    std::lock_guard<std::mutex> lock(folderMutex_);
    folder_ = target;
}

void Engine::Text(Channel channel, const std::string& text) {
    if (channel != Channel::kMessage) return;
    std::lock_guard<std::mutex> lock(folderMutex_);
    messages_.push_back(text);
}

std::vector<std::string> Engine::messages() const {
    std::lock_guard<std::mutex> lock(folderMutex_);
    return messages_;
}

std::string Engine::folder() const {
    std::lock_guard<std::mutex> lock(folderMutex_);
    return folder_;
}

}  // namespace gui
}  // namespace tqnralm
