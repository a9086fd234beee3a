// `export`: the plan, the checks of OUTDIR (or the journal of the unfinished
// export in it), then every message of the plan through one writer, each
// listed in the manifest as it is written, then the address books.
#include <cstdio>

#include "AddressPass.h"
#include "DirectorySink.h"
#include "DryRunSink.h"
#include "Export.h"
#include "ExportPlan.h"
#include "FileNames.h"
#include "Journal.h"
#include "KillPoint.h"
#include "Library.h"
#include "MailPass.h"
#include "MailWriter.h"
#include "Manifest.h"
#include "Progress.h"
#include "Report.h"
#include "Sha256.h"

namespace tqnralm {
namespace {

// Where the export's text for a person goes.
Report& TextOf(const ExportOptions& options) { return ReportOr(options.report); }

Json NameJson(const std::string& name) { return name.empty() ? Json(nullptr) : Json(name); }

// The name as its owner wrote it: "name" keeps the library's escaped form,
// which identifies the object.
Json ShownJson(const std::string& name) { return NameJson(UnescapeName(name)); }

Json UsersJson(const ExportPlan& plan) {
    Json users = Json::array();
    for (const UserPlan& user : plan.users) {
        Json accounts = Json::array();
        for (const AccountPlan& account : user.accounts) {
            Json a = {{"index", account.index},
                      {"name", NameJson(account.name)},
                      {"display_name", ShownJson(account.displayName)},
                      {"path", account.dir}};
            if (!account.sameAs.empty()) {
                a["same_as"] = account.sameAs;  // written once, under that account
            } else {
                if (!account.inbox.empty()) a["inbox"] = account.inbox;
                Json folders = Json::array();
                for (const FolderPlan& folder : account.folders) {
                    folders.push_back({{"index", folder.index},
                                       {"name", NameJson(folder.name)},
                                       {"display_name", ShownJson(folder.name)},
                                       {"path", folder.target},
                                       {"messages", folder.expected}});
                }
                a["folders"] = std::move(folders);
            }
            accounts.push_back(std::move(a));
        }
        users.push_back({{"index", user.index}, {"name", NameJson(user.name)},
                         {"display_name", ShownJson(user.name)}, {"path", user.dir},
                         {"accounts", std::move(accounts)}});
    }
    return users;
}

// Each target of the mail and its message count.
void SayPlan(Report& report, const ExportPlan& plan) {
    for (const UserPlan& user : plan.users) {
        for (const AccountPlan& account : user.accounts) {
            if (!account.sameAs.empty()) {
                report.Say(Channel::kListing, "%8s  %s (account %s, written once)\n", "",
                           os::DisplayPath(account.dir).c_str(), account.sameAs.c_str());
                continue;
            }
            for (const FolderPlan& folder : account.folders) {
                report.Say(Channel::kListing, "%8lld  %s\n", static_cast<long long>(folder.expected),
                           os::DisplayPath(folder.target).c_str());
            }
        }
    }
}

int Fail(Report& report, const std::string& message, Manifest* manifest) {
    report.Say(Channel::kMessage, "tqnralm: %s\n", message.c_str());
    if (manifest != nullptr) {
        manifest->Abandon();
        report.Text(Channel::kMessage, "tqnralm: what was written is kept; the same command goes on from there\n");
    }
    return kExitOutput;
}

// An OUTDIR without an unfinished export: empty or new, or --force.
int CheckNewOutDir(const ExportOptions& options) {
    switch (os::InspectFolder(options.outDir)) {
    case os::Folder::kNotAFolder: return Fail(TextOf(options), "OUTDIR '" + options.outDir + "' is not a folder", nullptr);
    case os::Folder::kNotEmpty:
        if (!options.force) {
            return Fail(TextOf(options), "OUTDIR '" + options.outDir +
                            "' is not empty; --force adds to it (nothing that is there is overwritten)",
                        nullptr);
        }
        if (os::Exists(options.outDir + "/" + Manifest::kFileName)) {
            return Fail(TextOf(options), "'" + options.outDir + "/" + Manifest::kFileName + "' exists (nothing is overwritten)",
                        nullptr);
        }
        return 0;
    default: return 0;
    }
}

// Two exports into one OUTDIR would mix their files and journals: while an
// export runs it holds OUTDIR, and a second one stops here, before it
// writes. An OUTDIR that is there is held before the plan, a new one once
// it is made (Begin).
int HoldOutDir(Report& report, const std::string& outDir, os::OutDirLock& lock) {
    std::string error;
    switch (lock.Acquire(outDir, &error)) {
    case os::OutDirLock::Result::kBusy:
        return Fail(report, "OUTDIR '" + outDir + "' is being written by another export; wait until it ends, " +
                        "or choose another OUTDIR",
                    nullptr);
    case os::OutDirLock::Result::kUnavailable:
        report.Say(Channel::kMessage,
                   "tqnralm: %s: OUTDIR cannot be locked; start no other export into it while this one runs\n",
                   error.c_str());
        return 0;
    default: return 0;
    }
}

// The source is never written: no OUTDIR inside the store.
int CheckOutsideStore(const ExportOptions& options, const ExportPlan& plan) {
    const std::vector<os::StoreFolder> store = os::StoreFolders(AccountFolders(plan));
    if (const os::StoreFolder* folder = os::FolderHolding(store, options.outDir)) {
        return Fail(TextOf(options), "OUTDIR '" + options.outDir + "' lies inside the mail client's store ('" + folder->hostPath +
                        "'); choose a folder outside it",
                    nullptr);
    }
    return 0;
}

bool Complete(const ExportPlan& plan, const MailTotals& totals, const AddressTotals& addresses) {
    return totals.failed == 0 && totals.unread == 0 && plan.problems.empty() && totals.written == plan.expected &&
           addresses.Complete();
}

// Each file of the address books and its address count, as the manifest lists them.
void SayBooks(Report& report, const Json& books) {
    for (const Json& book : books) {
        if (book.contains("same_as")) {
            report.Say(Channel::kListing, "%8s  %s (book %s, written once)\n", "",
                       book["name"].get<std::string>().c_str(),
                       os::DisplayPath(book["same_as"].get<std::string>()).c_str());
        }
        for (const Json& file : book["files"]) {
            report.Say(Channel::kListing, "%8d  %s\n", book["addresses"]["written"].get<int>(),
                       os::DisplayPath(file["path"].get<std::string>()).c_str());
        }
    }
}

// The one ending of every export, its dry run and the rerun of a finished
// one: the summary of what was done (or is to be done), and what could not
// be read. A dry run lists on the listing channel, where its plan went.
void End(const ExportOptions& options, const ExportResult& result, Progress& progress) {
    const bool dryRun = options.dryRun;
    Report& report = TextOf(options);
    if (dryRun) {
        std::string counts = FormatText("%lld messages in %llu folders, %llu bytes to write",
                                        static_cast<long long>(result.messages),
                                        static_cast<unsigned long long>(result.folders),
                                        static_cast<unsigned long long>(result.mail.bytes));
        if (result.exit != kExitOk) {
            counts += FormatText("; %lld messages and %llu other items cannot be read",
                                 static_cast<long long>(result.mail.failed + result.mail.unread),
                                 static_cast<unsigned long long>(result.problems.size()));
        }
        report.Text(Channel::kListing, counts + "\n");
    }
    for (const Problem& problem : dryRun ? result.problems : std::vector<Problem>()) {
        report.Say(Channel::kListing, "cannot read %s %s (code %d)\n", problem.item.c_str(), problem.index.c_str(),
                   static_cast<int>(problem.code));
    }
    if (options.mail) progress.Finish(dryRun, result.mail.written, result.mail.failed, result.mail.bytes);
    if (options.addresses && result.addressTotals) SayAddressSummary(report, dryRun, result.addresses);
    for (const Problem& problem : dryRun ? std::vector<Problem>() : result.problems) {
        report.Say(Channel::kMessage, "tqnralm: cannot read %s %s (code %d)\n", problem.item.c_str(),
                   problem.index.c_str(), static_cast<int>(problem.code));
    }
}

// The result of a plan and its passes.
ExportResult Result(const ExportPlan& plan, const MailTotals& mail, const AddressTotals& addresses) {
    ExportResult result;
    result.exit = Complete(plan, mail, addresses) ? kExitOk : kExitIncomplete;
    result.messages = plan.expected;
    result.folders = plan.folders;
    result.mail = mail;
    result.addresses = addresses;
    result.problems = plan.problems;
    return result;
}

// The export into a sink that only counts, with the plan printed.
ExportResult DryRun(const ExportOptions& options, ExportPlan& plan, MailWriter& writer) {
    SayPlan(TextOf(options), plan);
    DryRunSink sink;
    Progress progress(false, plan.expected, TextOf(options));
    progress.Listen(options.listener);
    MailTotals totals;
    MailPass pass(writer, sink, nullptr, JournalState(), progress, plan);
    pass.KeepRawHeaders(options.raw);
    if (options.mail) pass.Run(&totals);
    if (!options.mail) plan.expected = 0;
    Json books = Json::array();
    AddressTotals addresses;
    if (options.addresses) WriteAddressBooks(plan, options.addressForms, sink, &books, &addresses, TextOf(options));
    SayBooks(TextOf(options), books);
    ExportResult result = Result(plan, totals, addresses);
    End(options, result, progress);
    return result;
}

// The members of the manifest before the messages: they name the store, its
// plan and the format.
Json Header(const ExportPlan& plan, const ExportOptions& options) {
    const int32_t version = QV_GetVersion();
    return {{"tool", "tqnralm"},
            {"version", TQNRALM_VERSION},
            {"interface", std::to_string(version >> 16) + "." + std::to_string(version & 0xFFFF)},
            {"source", os::SourceDescription()},
            {"format", options.format->name},
            {"users", UsersJson(plan)}};
}

// What names one export in its journal: the header and the other options.
std::string Identity(const Json& header, const ExportOptions& options) {
    std::string text = header.dump() + (options.mail ? " mail" : "") + (options.addresses ? " addresses" : "") +
                       (options.raw ? " raw" : "");
    for (const Format* form : options.addressForms) text += std::string(" ") + form->name;
    Sha256 sha;
    sha.Update(text.data(), text.size());
    return sha.HexDigest();
}

// An export whose manifest was complete when it stopped: what is left is
// its rename and the journal's removal.
int Republish(const std::string& outDir, const JournalState& state, DirectorySink& sink,
              const ExportOptions& options) {
    const std::string final = outDir + "/" + Manifest::kFileName, partial = final + ".partial";
    std::string error;
    if (!os::Exists(final) && !os::RenameNew(partial, final, &error)) return Fail(TextOf(options), error, nullptr);
    // Stopped inside the rename, both names may hold the manifest.
    if (os::Exists(partial)) {
        if (!SameFileContent(partial, final)) return Fail(TextOf(options), "'" + partial + "' is not the manifest's copy", nullptr);
        os::RemoveFile(partial);
    }
    if (!sink.journal().Remove(&error)) return Fail(TextOf(options), error, nullptr);
    // What the journal kept of the mail; the address books' counts it does not keep.
    ExportResult result;
    result.exit = state.exit;
    result.mail = {state.written, state.failed, state.unread, state.bytes};
    result.addressTotals = false;
    Progress progress(false, 0, TextOf(options));
    End(options, result, progress);
    return state.exit;
}

// Opens the journal and the manifest of a new export, or of the unfinished
// one in OUTDIR. Returns -1 to go on, else the exit code.
int Begin(const ExportOptions& options, const Json& header, JournalState* state, Manifest& manifest,
          DirectorySink& sink, os::OutDirLock& lock) {
    const std::string identity = state->identity;
    std::string error;
    switch (sink.journal().Load(state, &error)) {
    case Journal::Found::kUnreadable: return Fail(TextOf(options), error, nullptr);
    case Journal::Found::kFound:
        if (state->identity != identity) {
            return Fail(TextOf(options), "OUTDIR '" + options.outDir + "' holds an unfinished export of another store or with " +
                            "other options; rerun the command that began it, or choose another OUTDIR",
                        nullptr);
        }
        if (state->finished) return Republish(options.outDir, *state, sink, options);
        TextOf(options).Say(Channel::kMessage, "tqnralm: going on with the unfinished export in '%s'\n",
                            options.outDir.c_str());
        sink.SetResuming();
        if (!manifest.Resume(options.outDir, state->manifest, state->listed, &error)) return Fail(TextOf(options), error, nullptr);
        break;
    case Journal::Found::kNone:
        if (int exit = CheckNewOutDir(options)) return exit;
        if (!os::MakeDirectories(options.outDir, &error)) return Fail(TextOf(options), error, nullptr);
        if (!lock.tried()) {
            // OUTDIR is new: held now, and looked at again under the lock.
            if (int exit = HoldOutDir(TextOf(options), options.outDir, lock)) return exit;
            return Begin(options, header, state, manifest, sink, lock);
        }
        // The journal first: the temporary manifest it finds is this export's.
        if (!sink.journal().Save(*state, &error) || !manifest.Open(options.outDir, &error)) return Fail(TextOf(options), error, nullptr);
        break;
    }
    if (state->manifest == 0) {
        for (const auto& member : header.items()) manifest.Put(member.key(), member.value());
        manifest.BeginArray("messages");
    }
    return -1;
}

// The manifest's last members, the journal's last word, and the rename
// that makes the export finished.
int Finish(Report& report, ExportPlan& plan, const MailTotals& totals, const Json& books,
           const AddressTotals& addresses, Manifest& manifest, Journal& journal, JournalState& state) {
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
    state.finished = true;
    state.exit = Complete(plan, totals, addresses) ? kExitOk : kExitIncomplete;
    std::string error;
    if (!manifest.EndArray() || !manifest.Put("address_books", books) || !manifest.Put("problems", problems) ||
        !manifest.Complete(&state.manifest)) {
        return Fail(report, "cannot write the manifest: " + manifest.error(), &manifest);
    }
    if (!journal.Save(state, &error)) return Fail(report, error, &manifest);
    KillAt(KillPoint::kRename);
    if (!manifest.Publish()) return Fail(report, "cannot write the manifest: " + manifest.error(), &manifest);
    KillAt(KillPoint::kRename);
    if (!journal.Remove(&error)) return Fail(report, error, nullptr);
    return state.exit;
}

ExportResult Exited(int exit) {
    ExportResult result;
    result.exit = exit;
    return result;
}

// The passes into OUTDIR after the plan: the mail, the address books, then
// the manifest that makes the export finished.
ExportResult Write(const ExportOptions& options, ExportPlan& plan, MailWriter& writer, os::OutDirLock& lock) {
    const Json header = Header(plan, options);
    JournalState state;
    state.identity = Identity(header, options);
    DirectorySink sink(options.outDir);
    Manifest manifest;
    if (int exit = Begin(options, header, &state, manifest, sink, lock); exit >= 0) return Exited(exit);

    os::CatchStopSignals();
    Progress progress(!options.quiet && os::StderrIsTerminal(), plan.expected, TextOf(options));
    MailTotals totals{state.written, state.failed, state.unread, state.bytes};
    progress.Listen(options.listener);
    MailPass pass(writer, sink, &manifest, state, progress, plan);
    pass.KeepRawHeaders(options.raw);
    if (options.mail && !pass.Run(&totals)) return Exited(Fail(TextOf(options), "cannot write " + sink.error(), &manifest));
    if (!options.mail) plan.expected = 0;
    // The address books after the mail, listed after the messages; a rerun
    // writes them again and takes the files that are whole already.
    Json books = Json::array();
    AddressTotals addresses;
    if (!os::StopRequested() && options.addresses &&
        !WriteAddressBooks(plan, options.addressForms, sink, &books, &addresses, TextOf(options))) {
        return Exited(Fail(TextOf(options), "cannot write " + sink.error(), &manifest));
    }
    if (os::StopRequested()) {
        manifest.Abandon();
        progress.Stopped(totals.written, totals.failed, totals.bytes);
        return Exited(kExitStopped);
    }
    if (!sink.Commit()) return Exited(Fail(TextOf(options), "cannot write " + sink.error(), &manifest));
    ExportResult result = Result(plan, totals, addresses);
    result.exit = Finish(TextOf(options), plan, totals, books, addresses, manifest, sink.journal(), state);
    if (result.exit != kExitOutput) End(options, result, progress);
    return result;
}

}  // namespace

ExportResult Export(const GlobalOptions& global, const ExportOptions& options) {
    Session session(TextOf(options));
    if (int exit = session.StartLog(global)) return Exited(exit);
    if (int exit = session.Open()) return Exited(exit);

    std::unique_ptr<MailWriter> writer = MakeMailWriter(*options.format);
    os::OutDirLock lock;
    const os::Folder folder = os::InspectFolder(options.outDir);
    const bool there = folder == os::Folder::kEmpty || folder == os::Folder::kNotEmpty;
    if (int exit = !options.dryRun && there ? HoldOutDir(TextOf(options), options.outDir, lock) : 0) return Exited(exit);
    ExportPlan plan;
    if (int exit = MakePlan(session.root(), options, *writer, &plan)) return Exited(exit);
    if (int exit = CheckOutsideStore(options, plan)) return Exited(exit);
    if (options.dryRun) return DryRun(options, plan, *writer);
    return Write(options, plan, *writer, lock);
}

}  // namespace tqnralm
