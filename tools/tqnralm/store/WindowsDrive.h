// WindowsDrive.h - `--windows DIR`: the mail client read from a copied
// Windows system drive, and what the host tells its user about that drive.
#ifndef TQNRALM_TOOL_WINDOWSDRIVE_H
#define TQNRALM_TOOL_WINDOWSDRIVE_H

#include <string>

namespace tqnralm {

// Checks the drive and the profile before the library is asked, and names
// both as the machine the library reads (os::ReadCopiedDrive). Without
// a user named, the profile is the one whose NTUSER.DAT holds the mail
// client's keys. Returns kExitOk, or the exit code with the message printed:
// kExitNotInstalled when DIR is no Windows drive (the paths tried are named),
// a hive cannot be read, or no profile has the keys (the hives looked in are
// named); kExitUsage when several have them (they are listed).
int UseWindowsDrive(const std::string& root, const std::string& user);

}  // namespace tqnralm

#endif
