// The host's side of the library: one session from the log to the root
// object; the tree below it is walked through Tree.h.
#ifndef TQNRALM_TOOL_LIBRARY_H
#define TQNRALM_TOOL_LIBRARY_H

#include "Console.h"
#include "Options.h"
#include "Tree.h"

namespace tqnralm {

// The library from start to end for one command: the log, the installed
// test, the life cycle and the root.
class Session {
public:
    // Why the store cannot be opened goes to `report`.
    explicit Session(Report& report = ConsoleReport()) : report_(report) {}
    ~Session();
    // Starts the log if asked. Returns kExitOk or the exit code to leave with
    // (the message is reported).
    int StartLog(const GlobalOptions& options);
    // Finds the mail client and opens the tree. kExitOk, or kExitNotInstalled
    // with the message reported.
    int Open();
    QV_OBJ root() const { return root_.get(); }

private:
    Report& report_;
    bool logging_ = false;
    bool initialised_ = false;
    Ref root_;
};

}  // namespace tqnralm

#endif
