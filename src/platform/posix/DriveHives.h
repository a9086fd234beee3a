// DriveHives.h - the registry hives and the profiles of a copied Windows
// system drive.
//
// HKEY_LOCAL_MACHINE\Software is Windows\System32\config\SOFTWARE;
// HKEY_CURRENT_USER is the NTUSER.DAT of one profile, in Users\<name>
// (Vista and later) or Documents and Settings\<name> (XP). The profile is the
// one the machine names (Machine.h), else the one profile whose hive holds
// the key that is asked for. When no profile or several hold it, the drive
// has no current user and answers no key at all, in neither hive: reading
// the machine's half of an installation for somebody unknown would mix users.
#ifndef QV_PLATFORM_POSIX_DRIVEHIVES_H
#define QV_PLATFORM_POSIX_DRIVEHIVES_H

#include "platform/platform.h"
#include "platform/posix/HiveFile.h"

#include <memory>
#include <string>
#include <vector>

namespace qvp {
namespace posix {

// The hive that holds `foldedKey` (folded, relative to the hive's root as
// RegOpen names it, "SOFTWARE\..." for the machine) on the drive at
// WindowsRoot(). nullptr when the hive is missing, unreadable or damaged, or
// when the current user cannot be told.
std::unique_ptr<HiveFile> OpenDriveHive(Hive hive, const std::u16string& foldedKey);

// A profile of the drive: its folder's name and the host path of its hive.
struct DriveProfile {
    std::string name;
    std::string hive;
};

// Every profile of the drive with an NTUSER.DAT, by the hives' paths.
std::vector<DriveProfile> DriveProfiles();

// The profile the machine names (WindowsUser()), found by the rules of
// Windows paths; false when none is named or it has no NTUSER.DAT.
bool NamedProfile(DriveProfile* out);

// Where the drive keeps its registry and profiles, as host paths spelled as
// far as they exist, then as named: whether a host folder is a Windows
// system drive at all, and what to tell when it is not.
struct DriveFolders {
    bool hasSoftware = false;
    std::string software, users, oldUsers;  // the Software hive, Users, Documents and Settings
};
DriveFolders LocateDriveFolders();

// Whether the hive file at a host path holds a key (names in UTF-8 separated
// by backslashes, matched in any case). false when the file cannot be read
// as a hive, *error then says why (HiveFile::Open).
bool HiveHasKey(const std::string& hostPath, const std::string& key, bool* has, int* error);

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_DRIVEHIVES_H
