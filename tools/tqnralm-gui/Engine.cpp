// The assistant's threads (Engine.h).
#include "Engine.h"

#include <memory>

#include "Commands.h"
#include "ExportPlan.h"
#include "Library.h"
#include "MailWriter.h"
#include "Os.h"

namespace tqnralm {
namespace gui {

void Engine::Join() {
    if (thread_.joinable()) thread_.join();
}

// The plan of an export of everything, as the dry run makes it: it walks
// users, accounts and folders and counts each folder's messages.
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
                found_ = FoundFromPlan(plan);
            }
        }
        PostMessageW(window_, kFoundMessage, static_cast<WPARAM>(exit), 0);
    });
}

void Engine::Export(ExportOptions options) {
    Join();
    os::ClearStopRequest();
    done_ = 0;
    bytes_ = 0;
    total_ = found_.messages;  // until the export's plan says
    options.listener = this;
    options.quiet = true;
    thread_ = std::thread([this, options] {
        const int exit = RunExport(GlobalOptions(), options);
        PostMessageW(window_, kExportedMessage, static_cast<WPARAM>(exit), 0);
    });
}

void Engine::Cancel() { os::RaiseStop(); }

void Engine::OnProgress(int64_t done, int64_t total, uint64_t bytes) {
    done_ = done;
    total_ = total;
    bytes_ = bytes;
    if (!pending_.exchange(true)) PostMessageW(window_, kProgressMessage, 0, 0);
}

}  // namespace gui
}  // namespace tqnralm
