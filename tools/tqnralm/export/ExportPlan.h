// The plan of an export: the users asked for, their accounts and folders
// with the names and targets they get, the messages expected, and what could
// not be read. Made by one walk before anything is written; messages are
// not held, only the folders, which the writing pass walks again.
#ifndef TQNRALM_TOOL_EXPORTPLAN_H
#define TQNRALM_TOOL_EXPORTPLAN_H

#include <cstdint>
#include <string>
#include <vector>

#include "Library.h"
#include "MailWriter.h"
#include "Options.h"

namespace tqnralm {

struct FolderPlan {
    std::string index;   // as `tree` prints it: "0/0/1/2"
    std::string name;    // the folder's own name
    std::string target;  // relative to OUTDIR
    std::vector<std::string> path;  // the safe names from the account's top folder down
    int64_t expected = 0;
    Ref folder;
};

struct AccountPlan {
    std::string index;
    std::string name;         // the account's name (its folder on the mail client's machine)
    std::string displayName;  // empty when it has none
    std::string dir;          // relative to OUTDIR: "<user>/<account>"
    std::string sameAs;       // the index of the account written already under this name, if any
    std::string inbox;        // the index of the folder written as the form's inbox, if any
    std::vector<FolderPlan> folders;
};

struct UserPlan {
    std::string index;
    std::string name;
    std::string dir;
    std::vector<AccountPlan> accounts;
    Ref user;
};

// Something that could not be read: the index of the item (or of the
// position where an enumeration stopped), what it is, and the library's code.
struct Problem {
    std::string index;
    std::string item;
    int32_t code;
};

struct ExportPlan {
    std::vector<UserPlan> users;
    std::vector<Problem> problems;
    int64_t expected = 0;  // messages of the folders written (a shared account once)
    size_t folders = 0;
};

// Walks the tree below `root`. kExitOk, or kExitUsage when a --user index
// names no user (with the message printed).
int MakePlan(QV_OBJ root, const ExportOptions& options, const MailWriter& writer, ExportPlan* plan);

// The account folders on the mail client's machine ("C:\AL-Mail\Mailbox\Account1").
std::vector<std::string> AccountFolders(const ExportPlan& plan);

}  // namespace tqnralm

#endif
