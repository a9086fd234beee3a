// DriveHives.h - the registry hives and the profiles of a copied Windows
// system drive, found on the host's disk by the rules of CopiedDrive.h.
#ifndef QV_PLATFORM_POSIX_DRIVEHIVES_H
#define QV_PLATFORM_POSIX_DRIVEHIVES_H

#include "platform/CopiedDrive.h"
#include "platform/posix/HiveFile.h"

#include <memory>
#include <string>
#include <vector>

namespace qvp {
namespace posix {

using qvp::DriveFolders;
using qvp::DriveProfile;

// The hive that holds `foldedKey` on the drive at WindowsRoot()
// (drive::OpenHive).
std::unique_ptr<HiveFile> OpenDriveHive(Hive hive, const std::u16string& foldedKey);

// Every profile of the drive with an NTUSER.DAT, by the hives' paths.
std::vector<DriveProfile> DriveProfiles();

// The profile the machine names (WindowsUser()), found by the rules of
// Windows paths; false when none is named or it has no NTUSER.DAT.
bool NamedProfile(DriveProfile* out);

DriveFolders LocateDriveFolders();

// Whether the hive file at a host path holds a key (names in UTF-8 separated
// by backslashes, matched in any case). false when the file cannot be read
// as a hive, *error then says why (HiveFile::Open).
bool HiveHasKey(const std::string& hostPath, const std::string& key, bool* has, int* error);

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_DRIVEHIVES_H
