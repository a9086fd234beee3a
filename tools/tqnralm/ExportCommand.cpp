// `export`: the plan, the checks of OUTDIR, then every message of the plan
// through one writer, each listed in the manifest as it is written.
#include <cstdio>

#include "AddressPass.h"
#include "Commands.h"
#include "ExportPlan.h"
#include "FileNames.h"
#include "Library.h"
#include "MailPass.h"
#include "MailWriter.h"
#include "Manifest.h"
#include "Output.h"
#include "Progress.h"

namespace tqnralm {

const char* FormatName(MailFormat format) {
    switch (format) {
    case MailFormat::kMaildir: return "maildir";
    case MailFormat::kEml: return "eml";
    default: return "mbox";
    }
}

namespace {

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
    pass.KeepRawHeaders(options.raw);
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
