// DriveHives.cpp - the hives of a copied drive and the choice of its user.
#include "platform/posix/DriveHives.h"

#include "platform/posix/DirStream.h"
#include "platform/posix/HostPath.h"
#include "platform/posix/PosixText.h"

#include <algorithm>

namespace qvp {
namespace posix {

namespace {

const char kSoftwareHive[] = "C:\\Windows\\System32\\config\\SOFTWARE";

const char* const kProfileFolders[] = {"C:\\Users\\", "C:\\Documents and Settings\\"};

std::unique_ptr<HiveFile> OpenHive(const std::string& windowsUtf8) {
    std::string host;
    if (MapUtf8Path(windowsUtf8, &host) != kMapFound) return nullptr;
    auto hive = std::make_unique<HiveFile>();
    if (!hive->Open(host)) return nullptr;
    return hive;
}

// The user's hive: the named profile's, else the only one that holds the key.
std::unique_ptr<HiveFile> OpenUserHive(const std::u16string& foldedKey) {
    if (!WindowsUser().empty()) {
        DriveProfile named;
        auto hive = std::make_unique<HiveFile>();
        return NamedProfile(&named) && hive->Open(named.hive) ? std::move(hive) : nullptr;
    }
    std::unique_ptr<HiveFile> chosen;
    for (const DriveProfile& profile : DriveProfiles()) {
        auto hive = std::make_unique<HiveFile>();
        if (!hive->Open(profile.hive) || !hive->HasKey(foldedKey)) continue;
        if (chosen != nullptr) return nullptr;
        chosen = std::move(hive);
    }
    return chosen;
}

}  // namespace

std::vector<DriveProfile> DriveProfiles() {
    std::vector<DriveProfile> out;
    for (const char* folder : kProfileFolders) {
        std::string host, hive;
        if (MapUtf8Path(folder, &host) != kMapFound) continue;
        DirStream dir(host);
        while (const char* entry = dir.Next()) {
            const std::string name = entry;
            if (name == "." || name == "..") continue;
            if (MapUtf8Path(folder + name + "\\NTUSER.DAT", &hive) == kMapFound) out.push_back({name, hive});
        }
    }
    std::sort(out.begin(), out.end(), [](const DriveProfile& a, const DriveProfile& b) { return a.hive < b.hive; });
    return out;
}

bool NamedProfile(DriveProfile* out) {
    const std::string named = WindowsUser();
    if (named.empty()) return false;
    for (const char* folder : kProfileFolders) {
        if (MapUtf8Path(folder + named + "\\NTUSER.DAT", &out->hive) != kMapFound) continue;
        const size_t slash = out->hive.rfind('/');
        const size_t start = out->hive.rfind('/', slash - 1) + 1;
        out->name = out->hive.substr(start, slash - start);
        return true;
    }
    return false;
}

DriveFolders LocateDriveFolders() {
    DriveFolders out;
    out.hasSoftware = MapUtf8Path(kSoftwareHive, &out.software) == kMapFound;
    MapUtf8Path(kProfileFolders[0], &out.users);
    MapUtf8Path(kProfileFolders[1], &out.oldUsers);
    return out;
}

bool HiveHasKey(const std::string& hostPath, const std::string& key, bool* has, int* error) {
    HiveFile hive;
    if (!hive.Open(hostPath, error)) return false;
    std::u16string wide;
    Utf8ToUtf16(key.data(), key.size(), false, &wide);
    *has = hive.HasKey(Fold(std::move(wide)));
    return true;
}

std::unique_ptr<HiveFile> OpenDriveHive(Hive hive, const std::u16string& foldedKey) {
    static const std::u16string kSoftware = u"SOFTWARE";
    if (hive == Hive::CurrentUser) return OpenUserHive(foldedKey);
    // The machine's key asks the user's hive for the same key below Software.
    const bool underSoftware = foldedKey.compare(0, kSoftware.size(), kSoftware) == 0 &&
                               (foldedKey.size() == kSoftware.size() || foldedKey[kSoftware.size()] == u'\\');
    if (!underSoftware || OpenUserHive(foldedKey) == nullptr) return nullptr;
    return OpenHive(kSoftwareHive);
}

}  // namespace posix
}  // namespace qvp
