// DriveHives.cpp - the hives of a copied drive and the choice of its user.
#include "platform/posix/DriveHives.h"

#include "platform/posix/HostPath.h"

#include <dirent.h>

#include <cstdlib>

namespace qvp {
namespace posix {
namespace {

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
    const char* named = std::getenv("TQNRALM_WINDOWS_USER");
    if (named != nullptr && *named != 0) {
        for (const char* folder : kProfileFolders) {
            if (auto hive = OpenHive(folder + std::string(named) + "\\NTUSER.DAT")) return hive;
        }
        return nullptr;
    }
    std::unique_ptr<HiveFile> chosen;
    for (const char* folder : kProfileFolders) {
        std::string host;
        if (MapUtf8Path(folder, &host) != kMapFound) continue;
        DIR* dir = opendir(host.c_str());
        if (dir == nullptr) continue;
        bool several = false;
        while (const struct dirent* entry = readdir(dir)) {
            const std::string name = entry->d_name;
            if (name == "." || name == "..") continue;
            auto hive = OpenHive(folder + name + "\\NTUSER.DAT");
            if (hive == nullptr || !hive->HasKey(foldedKey)) continue;
            several = chosen != nullptr;
            if (several) break;
            chosen = std::move(hive);
        }
        closedir(dir);
        if (several) return nullptr;
    }
    return chosen;
}

}  // namespace

std::unique_ptr<HiveFile> OpenDriveHive(Hive hive, const std::u16string& foldedKey) {
    static const std::u16string kSoftware = u"SOFTWARE";
    if (hive == Hive::CurrentUser) return OpenUserHive(foldedKey);
    // The machine's key asks the user's hive for the same key below Software.
    const bool underSoftware = foldedKey.compare(0, kSoftware.size(), kSoftware) == 0 &&
                               (foldedKey.size() == kSoftware.size() || foldedKey[kSoftware.size()] == u'\\');
    if (!underSoftware || OpenUserHive(foldedKey) == nullptr) return nullptr;
    return OpenHive("C:\\Windows\\System32\\config\\SOFTWARE");
}

}  // namespace posix
}  // namespace qvp
