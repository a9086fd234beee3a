// What the commands share: the copied drive checked before the store is
// read, the program's help texts and its global options.
#include "Command.h"

#include <cstdio>
#include <sstream>

#include "Console.h"
#include "WindowsDrive.h"

namespace tqnralm {

const char* const kProgramDescription =
    "Reads the mail, accounts and address books of AL-Mail32 and prints or exports them.\n"
    "The mail client's machine is the Wine prefix named by WINEPREFIX (default ~/.wine), or a copied\n"
    "Windows system drive (--windows DIR, or TQNRALM_WINDOWS_ROOT).";

const char* const kExitCodesHelp =
    "Exit codes: 0 everything was done; 1 some messages or folders could not be read (the rest was\n"
    "done), or an unexpected failure such as no memory left; 2 usage; 3 the mail client was not found;\n"
    "4 the output could not be written; 130 stopped by Ctrl+C or SIGTERM. After a stop, a kill or a\n"
    "full disk the same export command goes on from where it stopped.\n"
    "Text goes to a console as characters and to a file or a pipe as UTF-8; 'cat' writes a message's\n"
    "bytes as they are.";

int Command::Execute(const GlobalOptions& global) {
    if (ReadsStore() && !global.windowsRoot.empty()) {
        const int code = UseWindowsDrive(global.windowsRoot, global.windowsUser);
        if (code != kExitOk) return code;
    }
    return Run(global);
}

void DeclareGlobalOptions(CLI::App& app, GlobalOptions& global) {
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
}

int Parse(CLI::App& app, int argc, char** argv) {
    try {
        app.parse(argc, argv);
        return -1;
    } catch (const CLI::ParseError& error) {
        // CLI11's help and error texts, through the console like every other text.
        std::ostringstream out, err;
        const int code = app.exit(error, out, err);
        Print(stdout, "%s", out.str().c_str());
        Print(stderr, "%s", err.str().c_str());
        return error.get_exit_code() == 0 ? code : kExitUsage;  // help is no error
    }
}

}  // namespace tqnralm
