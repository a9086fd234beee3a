// The assistant's threads (Engine.h).
#include "Engine.h"

#include <memory>

#include "AddressPass.h"
#include "Export.h"
#include "ExportPlan.h"
#include "Library.h"
#include "MailPass.h"
#include "DryRunSink.h"
#include "Formats.h"
#include "MailWriter.h"
#include "Os.h"

namespace tqnralm {
namespace gui {

namespace {

// The bytes of each message of a dry run, as the export would write them.
struct Sizer : ProgressListener {
    uint64_t bytes = 0;
    void OnProgress(int64_t, int64_t, uint64_t total) override { bytes = total; }
};

}  // namespace

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
void Engine::Find() {
    Join();
    thread_ = std::thread([this] {
        int exit = kExitOk;
        {
            Session session;
            exit = session.Open();
            if (exit == kExitOk) {
                std::unique_ptr<MailWriter> writer = MakeMailWriter(DefaultMailFormat());
                ExportPlan plan;
                exit = MakePlan(session.root(), ExportOptions(), *writer, &plan);
                Json books = Json::array();
                AddressTotals addresses;
                DryRunSink sink;
                WriteAddressBooks(plan, FormatsOf(FormatKind::kAddress), sink, &books, &addresses);
                found_ = FoundFromPlan(plan, books);
            }
        }
        Post(kFoundMessage, static_cast<WPARAM>(exit));
    });
}

// The export's own dry run: the plan of the chosen users, then every
// message through the chosen format's writer and every address book
// through theirs, counted and not written.
void Engine::Plan(ExportOptions options) {
    Join();
    os::ClearStopRequest();
    planning_ = true;
    thread_ = std::thread([this, options] {
        PlanTotals totals;
        {
            Session session;
            totals.exit = session.Open();
            DryRunSink sink;
            std::unique_ptr<MailWriter> writer = MakeMailWriter(*options.format);
            ExportPlan plan;
            if (totals.exit == kExitOk) totals.exit = MakePlan(session.root(), options, *writer, &plan);
            if (totals.exit == kExitOk) {
                Sizer sizer;
                Progress progress(false, plan.expected);
                progress.Listen(&sizer);
                MailPass pass(*writer, sink, nullptr, JournalState(), progress, plan);
                MailTotals mail;
                if (options.mail) pass.Run(&mail);
                Json books = Json::array();
                AddressTotals addresses;
                if (options.addresses) WriteAddressBooks(plan, options.addressForms, sink, &books, &addresses);
                totals.messages = options.mail ? plan.expected : 0;
                totals.bytes = sizer.bytes + addresses.bytes;
            }
        }
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
    options.listener = this;
    options.quiet = true;
    thread_ = std::thread([this, options] {
        const int exit = RunExport(GlobalOptions(), options);
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

std::string Engine::folder() const {
    std::lock_guard<std::mutex> lock(folderMutex_);
    return folder_;
}

}  // namespace gui
}  // namespace tqnralm
