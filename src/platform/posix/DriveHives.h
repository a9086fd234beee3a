// DriveHives.h - the registry hives of a copied Windows system drive.
//
// HKEY_LOCAL_MACHINE\Software is Windows\System32\config\SOFTWARE;
// HKEY_CURRENT_USER is the NTUSER.DAT of one profile, in Users\<name>
// (Vista and later) or Documents and Settings\<name> (XP). The profile is the
// one TQNRALM_WINDOWS_USER names, else the one profile whose hive holds the
// key that is asked for. When no profile or several hold it, the drive has
// no current user and answers no key at all, in neither hive: reading the
// machine's half of an installation for somebody unknown would mix users.
#ifndef QV_PLATFORM_POSIX_DRIVEHIVES_H
#define QV_PLATFORM_POSIX_DRIVEHIVES_H

#include "platform/platform.h"
#include "platform/posix/HiveFile.h"

#include <memory>
#include <string>

namespace qvp {
namespace posix {

// The hive that holds `foldedKey` (folded, relative to the hive's root as
// RegOpen names it, "SOFTWARE\..." for the machine) on the drive at
// WindowsRoot(). nullptr when the hive is missing, unreadable or damaged, or
// when the current user cannot be told.
std::unique_ptr<HiveFile> OpenDriveHive(Hive hive, const std::u16string& foldedKey);

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_DRIVEHIVES_H
