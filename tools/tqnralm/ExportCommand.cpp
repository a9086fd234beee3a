// `export`: the plan, the checks of OUTDIR, then every message of the plan
// through one writer, each listed in the manifest as it is written.
#include <cstdio>
#include <thread>

#include "AddressPass.h"
#include "Commands.h"
#include "ExportPlan.h"
#include "Library.h"
#include "MailWriter.h"
#include "Manifest.h"
#include "Output.h"
#include "Progress.h"
#include "StepQueue.h"

namespace tqnralm {

const char* FormatName(MailFormat format) {
    switch (format) {
    case MailFormat::kMaildir: return "maildir";
    case MailFormat::kEml: return "eml";
    default: return "mbox";
    }
}

namespace {

struct MailTotals {
    int64_t written = 0;
    int64_t failed = 0;
    int64_t unread = 0;  // expected, but the enumeration stopped before them
    uint64_t bytes = 0;
};

Json NameJson(const std::string& name) { return name.empty() ? Json(nullptr) : Json(name); }

Json UsersJson(const ExportPlan& plan) {
    Json users = Json::array();
    for (const UserPlan& user : plan.users) {
        Json accounts = Json::array();
        for (const AccountPlan& account : user.accounts) {
            Json a = {{"index", account.index},
                      {"name", NameJson(account.name)},
                      {"display_name", NameJson(account.displayName)},
                      {"path", account.dir}};
            if (!account.sameAs.empty()) {
                a["same_as"] = account.sameAs;  // written once, under that account
            } else {
                Json folders = Json::array();
                for (const FolderPlan& folder : account.folders) {
                    folders.push_back({{"index", folder.index},
                                       {"name", NameJson(folder.name)},
                                       {"path", folder.target},
                                       {"messages", folder.expected}});
                }
                a["folders"] = std::move(folders);
            }
            accounts.push_back(std::move(a));
        }
        users.push_back({{"index", user.index}, {"name", NameJson(user.name)}, {"path", user.dir},
                         {"accounts", std::move(accounts)}});
    }
    return users;
}

// One step of the mail pass, made by the walker and done by the writer.
struct MailStep {
    enum Kind { kUser, kAccount, kBeginFolder, kMessage, kEndFolder } kind = kMessage;
    std::string path;  // the user's or account's folder, the folder's target, or the message's index
    int64_t position = 0;
    bool hasId = false, hasSubject = false;
    std::string messageId, subject;
    int32_t code = QV_S_OK;  // of the data: a message that cannot be fetched has no bytes
    std::string data;
    int64_t unread = 0;  // kEndFolder: expected, but the enumeration stopped before them
};

// Writes the messages of every folder of the plan. False when the output
// failed (the export stops); read failures are counted and listed.
//
// Two threads share the work: this one walks the store through the library
// (the library is for one thread at a time, and only this thread calls it),
// and a writer thread hashes, quotes and writes each message and lists it
// in the manifest. The steps pass through a bounded queue in tree order.
class MailPass {
public:
    MailPass(MailWriter& writer, Output& output, Manifest* manifest, Progress& progress, ExportPlan& plan)
        : writer_(writer), output_(output), manifest_(manifest), progress_(progress), plan_(plan) {}

    bool Run(MailTotals* totals) {
        bool written = true;
        std::thread writer([&] { written = Write(totals); });
        try {
            Walk();
            Hand();
        } catch (...) {  // the writer is stopped and joined before the walker's failure goes on
            queue_.Stop();
            queue_.Close();
            writer.join();
            throw;
        }
        queue_.Close();
        writer.join();
        return written;
    }

private:
    // Message bytes that may wait between the two threads, and the steps
    // handed over at once (each hand-over costs the two threads a lock).
    static constexpr size_t kQueueBytes = 8 << 20;
    static constexpr size_t kBatchBytes = 256 << 10;
    static constexpr size_t kBatchSteps = 64;

    bool Push(MailStep step) {
        batchBytes_ += step.data.size() + step.subject.size() + step.messageId.size() + 64;
        batch_.push_back(std::move(step));
        return (batch_.size() < kBatchSteps && batchBytes_ < kBatchBytes) || Hand();
    }

    // Hands the batch to the writer; false when the writer has stopped.
    bool Hand() {
        if (batch_.empty()) return true;
        const bool ok = queue_.Push(std::move(batch_), batchBytes_);
        batch_.clear();
        batchBytes_ = 0;
        return ok;
    }

    bool Push(MailStep::Kind kind, const std::string& path) {
        MailStep step;
        step.kind = kind;
        step.path = path;
        return Push(std::move(step));
    }

    void Walk() {
        for (UserPlan& user : plan_.users) {
            if (!Push(MailStep::kUser, user.dir)) return;
            for (AccountPlan& account : user.accounts) {
                if (!account.sameAs.empty()) continue;
                if (!Push(MailStep::kAccount, account.dir)) return;
                for (FolderPlan& folder : account.folders) {
                    if (!Folder(folder)) return;
                }
            }
        }
    }

    bool Folder(FolderPlan& folder) {
        if (!Push(MailStep::kBeginFolder, folder.target)) return false;
        Children messages(folder.folder.get(), QV_CLASS_MAILMESSAGE);
        Ref message;
        int64_t position = 0;
        for (;; ++position) {
            MailStep step;
            step.path = folder.index + "/" + std::to_string(position);
            int32_t code = messages.Next(&message);
            if (code == QV_E_NO_MORE_ITEMS) break;
            if (code != QV_S_OK) {
                plan_.problems.push_back({step.path, "message", code});
                break;
            }
            step.position = position;
            step.hasId = GetName(message.get(), false, &step.messageId) == QV_S_OK;
            step.hasSubject = GetName(message.get(), true, &step.subject) == QV_S_OK;
            QV_MAIL_DATA data;
            step.code = QV_MailMessage_GetData(message.get(), &data);
            if (step.code == QV_S_OK) {
                step.data.assign(data.pszMailText, data.nMailTextLen);
                data.pfnFree(data.pszMailText);
            }
            if (!Push(std::move(step))) return false;
        }
        MailStep end;
        end.kind = MailStep::kEndFolder;
        end.unread = position < folder.expected ? folder.expected - position : 0;
        return Push(std::move(end));
    }

    // The writer thread: does each step in order; on the first failure it
    // stops the queue, so that the walker stops too.
    bool Write(MailTotals* totals) {
        std::vector<MailStep> batch;
        while (queue_.Pop(&batch)) {
            for (MailStep& step : batch) {
                bool done = false;
                try {
                    done = Do(step, totals);
                } catch (const std::exception& e) {
                    output_.Fail(e.what());
                }
                if (!done) {
                    queue_.Stop();
                    return false;
                }
            }
        }
        return true;
    }

    bool Do(MailStep& step, MailTotals* totals) {
        switch (step.kind) {
        case MailStep::kUser: return output_.MakeDir(step.path);
        case MailStep::kAccount: return writer_.BeginAccount(step.path);
        case MailStep::kBeginFolder: return writer_.BeginFolder(step.path);
        case MailStep::kEndFolder:
            totals->unread += step.unread;
            return writer_.EndFolder();
        case MailStep::kMessage: break;
        }
        Json entry = {{"index", step.path}};
        entry["message_id"] = step.hasId ? Json(step.messageId) : Json(nullptr);
        entry["subject"] = step.hasSubject ? Json(step.subject) : Json(nullptr);
        if (step.code != QV_S_OK) {
            entry["status"] = "failed";
            entry["code"] = step.code;
            ++totals->failed;
            progress_.Step(0);
        } else {
            WrittenMessage written;
            const uint64_t before = output_.bytes();
            bool ok = writer_.WriteMessage(step.position, step.data.data(), step.data.size(), &written);
            step.data = std::string();  // no message is held past its write
            if (!ok) return false;
            entry["file"] = written.file;
            if (written.shared) entry["offset"] = written.offset;
            entry["length"] = written.length;
            entry["sha256"] = written.sha256;
            entry["status"] = "written";
            ++totals->written;
            totals->bytes += output_.bytes() - before;
            progress_.Step(output_.bytes() - before);
        }
        return manifest_ == nullptr || manifest_->Append(entry);
    }

    MailWriter& writer_;
    Output& output_;
    Manifest* manifest_;
    Progress& progress_;
    ExportPlan& plan_;
    std::vector<MailStep> batch_;
    size_t batchBytes_ = 0;
    StepQueue<std::vector<MailStep>> queue_{kQueueBytes};
};

void PrintPlan(const ExportPlan& plan) {
    for (const UserPlan& user : plan.users) {
        for (const AccountPlan& account : user.accounts) {
            if (!account.sameAs.empty()) {
                std::printf("%8s  %s (account %s, written once)\n", "", account.dir.c_str(), account.sameAs.c_str());
                continue;
            }
            for (const FolderPlan& folder : account.folders) {
                std::printf("%8lld  %s\n", static_cast<long long>(folder.expected), folder.target.c_str());
            }
        }
    }
}

int Fail(const std::string& message, Manifest* manifest) {
    std::fprintf(stderr, "tqnralm: %s\n", message.c_str());
    if (manifest != nullptr) manifest->Abandon();
    return kExitOutput;
}

}  // namespace

int RunExport(const GlobalOptions& global, const ExportOptions& options) {
    Session session;
    if (int exit = session.StartLog(global)) return exit;
    if (int exit = session.Open()) return exit;

    Output output(options.outDir, options.dryRun);
    std::unique_ptr<MailWriter> writer = MakeMailWriter(options.format, output);
    ExportPlan plan;
    if (int exit = MakePlan(session.root(), options, *writer, &plan)) return exit;

    // The source is never written: no OUTDIR inside the store.
    const std::string outDir = os::AbsolutePath(options.outDir);
    for (const std::string& folder : os::StoreFolders(AccountFolders(plan))) {
        if (os::IsInside(outDir, os::AbsolutePath(folder))) {
            return Fail("OUTDIR '" + options.outDir + "' lies inside the mail client's store ('" + folder +
                            "'); choose a folder outside it",
                        nullptr);
        }
    }
    switch (os::InspectFolder(options.outDir)) {
    case os::Folder::kNotAFolder: return Fail("OUTDIR '" + options.outDir + "' is not a folder", nullptr);
    case os::Folder::kNotEmpty:
        if (!options.force) {
            return Fail("OUTDIR '" + options.outDir +
                            "' is not empty; --force adds to it (nothing that is there is overwritten)",
                        nullptr);
        }
        break;
    default: break;
    }

    Manifest manifest;
    Manifest* listing = nullptr;
    if (!options.dryRun) {
        std::string error;
        if (!os::MakeDirectories(options.outDir, &error) || !manifest.Open(options.outDir, &error)) {
            return Fail(error, nullptr);
        }
        listing = &manifest;
        const int32_t version = QV_GetVersion();
        manifest.Put("tool", "tqnralm");
        manifest.Put("version", TQNRALM_VERSION);
        manifest.Put("interface", std::to_string(version >> 16) + "." + std::to_string(version & 0xFFFF));
        manifest.Put("source", os::SourceDescription());
        manifest.Put("format", FormatName(options.format));
        manifest.Put("users", UsersJson(plan));
        manifest.BeginArray("messages");
    } else {
        PrintPlan(plan);
    }

    Progress progress(!options.quiet && !options.dryRun && os::StderrIsTerminal(), plan.expected);
    MailTotals totals;
    MailPass pass(*writer, output, listing, progress, plan);
    if (options.mail && !pass.Run(&totals)) return Fail("cannot write " + output.error(), listing);
    if (!options.mail) plan.expected = 0;
    // The address books after the mail, listed after the messages.
    Json books = Json::array();
    AddressTotals addresses;
    if (options.addresses && !WriteAddressBooks(plan, options.addressForms, output, &books, &addresses)) {
        return Fail("cannot write " + output.error(), listing);
    }

    const bool complete = totals.failed == 0 && totals.unread == 0 && plan.problems.empty() &&
                          totals.written == plan.expected && addresses.Complete();
    if (options.dryRun) {
        std::printf("%lld messages in %zu folders, %llu bytes to write", static_cast<long long>(plan.expected),
                    plan.folders, static_cast<unsigned long long>(totals.bytes));
        if (!complete) {
            std::printf("; %lld messages and %zu other items cannot be read",
                        static_cast<long long>(totals.failed + totals.unread), plan.problems.size());
        }
        std::printf("\n");
        for (const Problem& problem : plan.problems) {
            std::printf("cannot read %s %s (code %d)\n", problem.item.c_str(), problem.index.c_str(),
                        static_cast<int>(problem.code));
        }
        if (options.mail) progress.Finish(true, totals.written, totals.failed, totals.bytes);
        if (options.addresses) PrintAddressSummary(true, addresses);
        return complete ? kExitOk : kExitIncomplete;
    }

    Json problems = Json::array();
    for (const Problem& problem : plan.problems) {
        problems.push_back({{"index", problem.index}, {"item", problem.item}, {"code", problem.code}});
    }
    manifest.totals() = {{"expected", plan.expected},
                         {"written", totals.written},
                         {"failed", totals.failed},
                         {"unread", totals.unread},
                         {"bytes", totals.bytes}};
    manifest.totals()["address_books"] = addresses.ToJson();
    if (!manifest.EndArray() || !manifest.Put("address_books", books) || !manifest.Put("problems", problems) ||
        !manifest.Finish()) {
        return Fail("cannot write the manifest: " + manifest.error(), &manifest);
    }
    if (options.mail) progress.Finish(false, totals.written, totals.failed, totals.bytes);
    if (options.addresses) PrintAddressSummary(false, addresses);
    for (const Problem& problem : plan.problems) {
        std::fprintf(stderr, "tqnralm: cannot read %s %s (code %d)\n", problem.item.c_str(), problem.index.c_str(),
                     static_cast<int>(problem.code));
    }
    return complete ? kExitOk : kExitIncomplete;
}

}  // namespace tqnralm
