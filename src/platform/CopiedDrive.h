// CopiedDrive.h - a copied Windows system drive as the machine the library
// reads, and the rules by which its registry and profiles are found.
//
// A host may name a copied drive before its first call of the library; one
// that names none gets it from the environment: TQNRALM_WINDOWS_ROOT and
// TQNRALM_WINDOWS_USER. The process holds one machine, in the platform
// layer, so what the host names is what the library reads.
//
// HKEY_LOCAL_MACHINE\Software is the drive's Windows\System32\config\SOFTWARE;
// HKEY_CURRENT_USER is the NTUSER.DAT of one profile, in Users\<name> (Vista
// and later) or Documents and Settings\<name> (XP). The profile is the one
// the machine names, else the one profile whose hive holds the key that is
// asked for. When no profile or several hold it, the drive has no current
// user and answers no key at all, in neither hive: reading the machine's
// half of an installation for somebody unknown would mix users.
//
// Each platform layer reads paths and hives its own way; the rules are
// written once, here, over what it gives (DriveAccess below).
#ifndef QV_PLATFORM_COPIEDDRIVE_H
#define QV_PLATFORM_COPIEDDRIVE_H

#include "platform/platform.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace qvp {

// Reads the copied drive at `root` (a host folder) from now on; `user` names
// its profile (empty: the one profile that used the client).
void UseCopiedDrive(const std::string& root, const std::string& user);
// The copied drive's folder; empty when the machine is another.
std::string WindowsRoot();
// Whether a host named the copied drive (UseCopiedDrive), and then its
// folder: WindowsRoot without the environment, for a caller that reads the
// environment its own way.
bool NamedWindowsRoot(std::string* root);
// The profile named for the copied drive; empty when none is.
std::string WindowsUser();
// Where a copied drive's other letter lies (a client whose data lay on D:):
// TQNRALM_DRIVE_<LETTER>; empty when it is not there. `letter` in 'a'-'z'.
std::string DriveFolder(char letter);
// The Windows folder as the machine's registry names it (the SystemRoot of
// the Windows NT key: "C:\\windows" in a Wine prefix, "C:\\WINDOWS" or
// another folder on a copied drive), else Wine's default "C:\\windows".
std::string RegistryWindowsDirectory();
// An environment variable in UTF-8; empty when it is not set. Each platform
// layer has its own.
std::string EnvironmentText(const char* name);

// A profile of the drive: its folder's name and the host path of its hive.
struct DriveProfile {
    std::string name;
    std::string hive;
};

// Where the drive keeps its registry and profiles, as host paths spelled as
// far as they exist, then as named: whether a host folder is a Windows
// system drive at all, and what to tell when it is not.
struct DriveFolders {
    bool hasSoftware = false;
    std::string software, users, oldUsers;  // the Software hive, Users, Documents and Settings
};

namespace drive {

extern const char kSoftwareHive[];
extern const char* const kProfileFolders[2];
// Whether a folded machine key lies below "SOFTWARE".
bool UnderSoftware(const std::u16string& foldedKey);

// What a platform layer gives the rules (all static):
//   bool Map(const std::string& windowsUtf8, std::string* host): the host
//       path of a Windows path on the drive; true when it exists.
//   std::vector<std::string> Names(const std::string& hostFolder): the
//       entries of a folder, without "." and "..".
//   char kSeparator: the host paths' separator.
//   File: a hive, with bool Open(const std::string& host) and
//       bool HasKey(const std::u16string& foldedPath) const.
template <class Access>
std::vector<DriveProfile> Profiles() {
    std::vector<DriveProfile> out;
    for (const char* folder : kProfileFolders) {
        std::string host, hive;
        if (!Access::Map(folder, &host)) continue;
        for (const std::string& name : Access::Names(host)) {
            if (Access::Map(folder + name + "\\NTUSER.DAT", &hive)) out.push_back({name, hive});
        }
    }
    std::sort(out.begin(), out.end(), [](const DriveProfile& a, const DriveProfile& b) { return a.hive < b.hive; });
    return out;
}

// The profile the machine names (WindowsUser()), found by the rules of
// Windows paths; false when none is named or it has no NTUSER.DAT.
template <class Access>
bool Named(DriveProfile* out) {
    const std::string named = WindowsUser();
    if (named.empty()) return false;
    for (const char* folder : kProfileFolders) {
        if (!Access::Map(folder + named + "\\NTUSER.DAT", &out->hive)) continue;
        const size_t slash = out->hive.rfind(Access::kSeparator);
        const size_t start = out->hive.rfind(Access::kSeparator, slash - 1) + 1;
        out->name = out->hive.substr(start, slash - start);
        return true;
    }
    return false;
}

template <class Access>
DriveFolders Folders() {
    DriveFolders out;
    out.hasSoftware = Access::Map(kSoftwareHive, &out.software);
    Access::Map(kProfileFolders[0], &out.users);
    Access::Map(kProfileFolders[1], &out.oldUsers);
    return out;
}

// The user's hive: the named profile's, else the only one that holds the key.
template <class Access>
std::unique_ptr<typename Access::File> UserHive(const std::u16string& foldedKey) {
    using File = typename Access::File;
    if (!WindowsUser().empty()) {
        DriveProfile named;
        auto hive = std::make_unique<File>();
        return Named<Access>(&named) && hive->Open(named.hive) ? std::move(hive) : nullptr;
    }
    std::unique_ptr<File> chosen;
    for (const DriveProfile& profile : Profiles<Access>()) {
        auto hive = std::make_unique<File>();
        if (!hive->Open(profile.hive) || !hive->HasKey(foldedKey)) continue;
        if (chosen != nullptr) return nullptr;
        chosen = std::move(hive);
    }
    return chosen;
}

// The hive that holds `foldedKey` (folded, relative to the hive's root as
// RegOpen names it, "SOFTWARE\..." for the machine). nullptr when the hive
// is missing, unreadable or damaged, or when the current user cannot be told.
template <class Access>
std::unique_ptr<typename Access::File> OpenHive(Hive hive, const std::u16string& foldedKey) {
    if (hive == Hive::CurrentUser) return UserHive<Access>(foldedKey);
    // The machine's key asks the user's hive for the same key below Software.
    if (!UnderSoftware(foldedKey) || UserHive<Access>(foldedKey) == nullptr) return nullptr;
    std::string host;
    auto file = std::make_unique<typename Access::File>();
    return Access::Map(kSoftwareHive, &host) && file->Open(host) ? std::move(file) : nullptr;
}

}  // namespace drive
}  // namespace qvp

#endif  // QV_PLATFORM_COPIEDDRIVE_H
