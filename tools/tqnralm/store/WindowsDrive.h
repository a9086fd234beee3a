// WindowsDrive.h - `--windows DIR`: the mail client read from a copied
// Windows system drive, and what the host tells its user about that drive.
#ifndef TQNRALM_TOOL_WINDOWSDRIVE_H
#define TQNRALM_TOOL_WINDOWSDRIVE_H

#include <string>
#include <vector>

namespace tqnralm {

// What the checks of a copied drive found. `problem` says which check
// failed, for a front end that words it in its own language; `message` is
// the host's own sentence, with the paths it tried.
struct DriveCheck {
    enum Problem {
        kReadable,          // the drive is named as the machine the library reads
        kNotADrive,         // no SOFTWARE hive where a Windows drive keeps it
        kNoSuchUser,        // the user named has no profile with an NTUSER.DAT
        kUserUnreadable,    // that user's NTUSER.DAT cannot be read
        kSeveralUsers,      // several profiles used the mail client: `users`
        kNoUser,            // no profile has the mail client's settings
        kMachineUnreadable  // the SOFTWARE hive cannot be read
    };
    Problem problem = kReadable;
    int exit = 0;                    // the exit code (Options.h)
    std::string message;             // empty when readable
    std::string user;                // the profile read, when readable
    std::vector<std::string> users;  // kSeveralUsers: the profiles' names, by path
};

// Checks the drive and the profile before the library is asked and, when
// both are good, names them as the machine the library reads
// (os::ReadCopiedDrive). Without a user named, the profile is the one whose
// NTUSER.DAT holds the mail client's keys. kNotADrive, kUserUnreadable,
// kNoSuchUser, kNoUser and kMachineUnreadable exit kExitNotInstalled;
// kSeveralUsers kExitUsage.
DriveCheck CheckWindowsDrive(const std::string& root, const std::string& user);

// CheckWindowsDrive with its message printed: the command line's.
int UseWindowsDrive(const std::string& root, const std::string& user);

}  // namespace tqnralm

#endif
