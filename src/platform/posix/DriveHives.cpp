// DriveHives.cpp - the copied drive's rules over host paths and hivex.
#include "platform/posix/DriveHives.h"

#include "platform/posix/DirStream.h"
#include "platform/posix/HostPath.h"
#include "platform/posix/PosixText.h"

namespace qvp {
namespace posix {
namespace {

// Names are found in any case, as Windows finds them (HostPath.h).
struct HostAccess {
    using File = HiveFile;
    static constexpr char kSeparator = '/';
    static bool Map(const std::string& windowsUtf8, std::string* host) {
        return MapUtf8Path(windowsUtf8, host) == kMapFound;
    }
    static std::vector<std::string> Names(const std::string& host) {
        std::vector<std::string> out;
        DirStream dir(host);
        while (const char* entry = dir.Next()) {
            if (std::string(entry) != "." && std::string(entry) != "..") out.push_back(entry);
        }
        return out;
    }
};

}  // namespace

std::vector<DriveProfile> DriveProfiles() { return drive::Profiles<HostAccess>(); }

bool NamedProfile(DriveProfile* out) { return drive::Named<HostAccess>(out); }

DriveFolders LocateDriveFolders() { return drive::Folders<HostAccess>(); }

std::unique_ptr<HiveFile> OpenDriveHive(Hive hive, const std::u16string& foldedKey) {
    return drive::OpenHive<HostAccess>(hive, foldedKey);
}

bool HiveHasKey(const std::string& hostPath, const std::string& key, bool* has, int* error) {
    HiveFile hive;
    if (!hive.Open(hostPath, error)) return false;
    std::u16string wide;
    Utf8ToUtf16(key.data(), key.size(), false, &wide);
    *has = hive.HasKey(Fold(std::move(wide)));
    return true;
}

}  // namespace posix
}  // namespace qvp
