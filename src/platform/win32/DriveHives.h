// DriveHives.h - a copied Windows system drive read by the Windows build:
// its folders, profiles and hives (CopiedDrive.h has the rules), and the
// mapping of the store's paths onto the drive's folder.
//
// Host paths are UTF-8 text with backslashes. Windows finds names in any
// case itself, so a path on the drive is its folder and the rest of the path.
#ifndef QV_PLATFORM_WIN32_DRIVEHIVES_H
#define QV_PLATFORM_WIN32_DRIVEHIVES_H

#include "platform/CopiedDrive.h"
#include "platform/win32/RegfHive.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qvp {
namespace win32 {

// A hive file, read whole.
class HiveFile : public RegfHive {
public:
    // false when it cannot be read or is no hive; *error then says why: the
    // system's error code, ERROR_DIRECTORY for a folder or another file that
    // is not a regular one, ERROR_BAD_FORMAT for no hive (damaged, cut short)
    // or one too large.
    bool Open(const std::string& hostPath, uint32_t* error = nullptr);
};

// The host path of a Windows path (wide) on the copied drive: C: is the
// drive's folder, another letter the folder DriveFolder names. false when
// its drive is not there; a path without a drive letter stays as it is.
bool DrivePath(const std::wstring& windowsPath, std::wstring* host);

std::unique_ptr<HiveFile> OpenDriveHive(Hive hive, const std::u16string& foldedKey);
std::vector<DriveProfile> DriveProfiles();
bool NamedProfile(DriveProfile* out);
DriveFolders LocateDriveFolders();

// Whether the hive file at a host path holds a key (names in UTF-8 separated
// by backslashes, matched in any case). false when the file cannot be read
// as a hive, *error then says why (HiveFile::Open).
bool HiveHasKey(const std::string& hostPath, const std::string& key, bool* has, uint32_t* error);

// UTF-8 and UTF-16 for the host's paths; a bad sequence becomes U+FFFD.
std::wstring WideFromUtf8(const std::string& utf8);
std::string Utf8FromWide(const std::wstring& wide);

}  // namespace win32
}  // namespace qvp

#endif  // QV_PLATFORM_WIN32_DRIVEHIVES_H
