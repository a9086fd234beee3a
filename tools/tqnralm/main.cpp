// tqnralm - the command-line host of the library: walks the tree of an
// installed mail client and prints it, prints one message's raw text, or
// exports every message for another mail program. It uses nothing but the
// public header, as any host would. This file only reads the command line.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <new>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "Commands.h"
#include "Console.h"
#include "Options.h"
#include "Os.h"
#include "WindowsDrive.h"

namespace {

const char* const kDescription =
    "Reads the mail, accounts and address books of AL-Mail32 and prints or exports them.\n"
    "The mail client's machine is the Wine prefix named by WINEPREFIX (default ~/.wine), or a copied\n"
    "Windows system drive (--windows DIR, or TQNRALM_WINDOWS_ROOT).";

const char* const kExitCodes =
    "Exit codes: 0 everything was done; 1 some messages or folders could not be read (the rest was\n"
    "done), or an unexpected failure such as no memory left; 2 usage; 3 the mail client was not found;\n"
    "4 the output could not be written; 130 stopped by Ctrl+C or SIGTERM. After a stop, a kill or a\n"
    "full disk the same export command goes on from where it stopped.\n"
    "Text goes to a console as characters and to a file or a pipe as UTF-8; 'cat' writes a message's\n"
    "bytes as they are.";

// "all three" forms, for the help.
std::string AllOf(size_t count) {
    const char* const kWords[] = {"none", "the one", "both", "all three", "all four", "all five", "all six"};
    return count < sizeof kWords / sizeof kWords[0] ? kWords[count] : "all";
}

// CLI11's help and error texts, through the console like every other text.
int Exit(const CLI::App& app, const CLI::Error& error) {
    std::ostringstream out, err;
    const int code = app.exit(error, out, err);
    tqnralm::Print(stdout, "%s", out.str().c_str());
    tqnralm::Print(stderr, "%s", err.str().c_str());
    return code;
}

int Run(int argc, char** argv) {
    using namespace tqnralm;
    CLI::App app(kDescription, "tqnralm");
    app.footer(kExitCodes);
    app.require_subcommand(1);
    // Options of the program stand before or after the command.
    app.fallthrough();
    GlobalOptions global;
    app.add_option("--log", global.logFile, "Write the library's trace log to FILE (UTF-16LE)")->type_name("FILE");
    app.add_option("--windows", global.windowsRoot,
                   "Read a copied Windows system drive (an old disk, mounted read-only) instead of a Wine "
                   "prefix; drive letters other than C: map through TQNRALM_DRIVE_<LETTER>")
        ->type_name("DIR")
        ->envname("TQNRALM_WINDOWS_ROOT");
    app.add_option("--windows-user", global.windowsUser,
                   "The Windows user whose mail to read on that drive (default: the one who used AL-Mail32)")
        ->type_name("NAME")
        ->envname("TQNRALM_WINDOWS_USER");

    CLI::App* version = app.add_subcommand("version", "Print the interface version");
    CLI::App* tree = app.add_subcommand("tree", "Print the whole tree: users, accounts, folders, messages, "
                                                "address books, groups and addresses");
    std::string catPath;
    CLI::App* cat = app.add_subcommand("cat", "Print the raw text of one message");
    cat->add_option("PATH", catPath,
                    "A list of indexes user/account/folder[/subfolder...]/message, as 'tree' shows them")
        ->required();

    ExportOptions exportOptions;
    CLI::App* exportCommand = app.add_subcommand(
        "export", "Write every message out as " + JoinList(FormatDescriptions(FormatKind::kMail), " or ") +
                      " files, and every address book as " +
                      JoinList(FormatDescriptions(FormatKind::kAddress), " and ") +
                      ", with OUTDIR/manifest.json listing each file and its SHA-256");
    exportCommand->footer(kExitCodes);
    exportCommand->add_option("OUTDIR", exportOptions.outDir, "The folder to write into; created when missing")
        ->required();
    std::string format = exportOptions.format->name;
    std::vector<std::string> mailForms = FormatNames(FormatKind::kMail);
    exportCommand->add_option("--format", format, JoinList(mailForms, " or ").insert(mailForms[0].size(), " (default)"))
        ->check(CLI::IsMember(mailForms));
    exportCommand->add_option("--user", exportOptions.users, "Export only the user at INDEX (repeatable)")
        ->type_name("INDEX")
        ->check(CLI::NonNegativeNumber);
    exportCommand->add_flag("--dry-run", exportOptions.dryRun,
                            "Print each folder's target and message count and the totals; write nothing");
    exportCommand->add_flag("--force", exportOptions.force,
                            "Add to an OUTDIR that holds other files (nothing is ever overwritten)");
    exportCommand->add_flag("--quiet", exportOptions.quiet, "No status line, only the summary");
    exportCommand->add_flag("--raw", exportOptions.raw,
                            "Write each message exactly as the mail client holds it (raw 8-bit header fields "
                            "are not made readable)");
    const std::vector<std::string> addressNames = FormatNames(FormatKind::kAddress);
    std::string addressForms = JoinList(addressNames, ",");
    exportCommand
        ->add_option("--addresses", addressForms,
                     "The forms of the address books, comma-separated: " + JoinList(addressNames, ", ") +
                         " (default " + AllOf(addressNames.size()) + ")")
        ->type_name("FORMS")
        ->check([&addressNames](const std::string& value) {
            std::vector<const Format*> forms;
            return ParseFormatList(FormatKind::kAddress, value, &forms)
                       ? std::string()
                       : "FORMS is a list of " + JoinList(addressNames, " and ");
        });
    bool noMail = false, noAddresses = false;
    CLI::Option* noMailFlag = exportCommand->add_flag("--no-mail", noMail, "Leave the messages out");
    exportCommand->add_flag("--no-addresses", noAddresses, "Leave the address books out")->excludes(noMailFlag);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return Exit(app, e);
    } catch (const CLI::CallForAllHelp& e) {
        return Exit(app, e);
    } catch (const CLI::ParseError& e) {
        Exit(app, e);
        return kExitUsage;
    }
    if (*version) return RunVersion(global);
    if (!global.windowsRoot.empty()) {
        const int code = UseWindowsDrive(global.windowsRoot, global.windowsUser);
        if (code != kExitOk) return code;
    }
    if (*tree) return RunTree(global);
    if (*cat) return RunCat(global, catPath);
    exportOptions.format = FindFormat(FormatKind::kMail, format);
    exportOptions.mail = !noMail;
    exportOptions.addresses = !noAddresses;
    ParseFormatList(FormatKind::kAddress, addressForms, &exportOptions.addressForms);
    return RunExport(global, exportOptions);
}

}  // namespace

// Arguments in UTF-8 (on Windows from the UTF-16 command line); a failure
// that escapes a command ends in one line and an exit code, never in
// std::terminate.
int main(int argc, char** argv) {
    using namespace tqnralm;
    os::UseBinaryStreams();
    try {
        std::vector<std::string> args = os::ProgramArguments(argc, argv);
        std::vector<char*> pointers;
        for (std::string& arg : args) pointers.push_back(&arg[0]);
        pointers.push_back(nullptr);
        return Run(static_cast<int>(args.size()), pointers.data());
    } catch (const std::filesystem::filesystem_error& e) {
        Print(stderr, "tqnralm: '%s': %s\n", os::DisplayPath(e.path1().u8string()).c_str(), e.code().message().c_str());
        return kExitOutput;
    } catch (const std::system_error& e) {
        Print(stderr, "tqnralm: %s\n", e.what());
        return kExitOutput;
    } catch (const std::bad_alloc&) {
        Print(stderr, "tqnralm: out of memory\n");
        return kExitIncomplete;
    } catch (const std::exception& e) {
        Print(stderr, "tqnralm: %s\n", e.what());
        return kExitIncomplete;
    }
}
