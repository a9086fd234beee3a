// What the command line asks for, and the exit codes every command answers with.
#ifndef TQNRALM_TOOL_OPTIONS_H
#define TQNRALM_TOOL_OPTIONS_H

#include <string>
#include <vector>

#include "Formats.h"

namespace tqnralm {

// Exit codes of the program, the same for every command.
enum Exit {
    kExitOk = 0,            // everything done
    kExitIncomplete = 1,    // some items could not be read; the rest was done
    kExitUsage = 2,         // the command line is wrong
    kExitNotInstalled = 3,  // the mail client was not found
    kExitOutput = 4,        // the output could not be written
    kExitStopped = 130,     // SIGINT or SIGTERM: stopped, the rerun goes on
};

// Options that stand before or after any command.
struct GlobalOptions {
    std::string logFile;  // the library's trace log, UTF-16LE; empty: none
    std::string windowsRoot;  // a copied Windows system drive; empty: the Wine prefix
    std::string windowsUser;  // its profile; empty: the one that used the mail client
};

class ProgressListener;  // Progress.h
class Report;            // Report.h

// `tqnralm export OUTDIR ...`.
struct ExportOptions {
    std::string outDir;
    const Format* format = &DefaultMailFormat();  // a mail form of Formats.h
    std::vector<int> users;  // user indexes to export; empty: every user
    bool dryRun = false;     // plan only: print targets and counts, write nothing
    bool force = false;      // add to an OUTDIR that holds other files
    bool quiet = false;      // no status line on a terminal
    bool raw = false;        // messages exactly as the library gives them: no header rewriting
    bool mail = true;        // export the mail
    bool addresses = true;   // export the address books
    std::vector<const Format*> addressForms = FormatsOf(FormatKind::kAddress);
    ProgressListener* listener = nullptr;  // a window's view of the progress; null: none
    Report* report = nullptr;  // where the text for a person goes; null: nowhere
};

}  // namespace tqnralm

#endif
