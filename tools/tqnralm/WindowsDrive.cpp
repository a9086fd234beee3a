// WindowsDrive.cpp - the copied drive's hives and profiles, found as the
// library finds them: names in any case, profiles in "Users" (Vista and
// later) and "Documents and Settings" (XP).
#include "WindowsDrive.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <vector>

#include "Options.h"
#include "Os.h"

namespace tqnralm {
namespace {

namespace fs = std::filesystem;

const char kClientKey[] = "Software\\CREAR\\AL-Mail";

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    return text;
}

// Follows the names below `dir`, each in any case. The path as far as it
// exists, then the rest as given; true when all of it exists.
bool Find(const std::string& dir, const std::vector<std::string>& names, std::string* path) {
    fs::path current = fs::u8path(dir);
    bool found = true;
    for (const std::string& name : names) {
        fs::path next = current / fs::u8path(name);
        std::error_code ec;
        if (found && !fs::exists(next, ec)) {
            found = false;
            for (const auto& entry : fs::directory_iterator(current, ec)) {
                if (Lower(entry.path().filename().u8string()) == Lower(name)) {
                    next = entry.path();
                    found = true;
                    break;
                }
            }
        }
        current = next;
    }
    *path = current.u8string();
    return found;
}

struct Profile {
    std::string name, hive;
};

// Every profile folder with an NTUSER.DAT, by name.
std::vector<Profile> Profiles(const std::string& root) {
    std::vector<Profile> out;
    for (const char* folder : {"Users", "Documents and Settings"}) {
        std::string dir, hive;
        if (!Find(root, {folder}, &dir)) continue;
        std::error_code ec;
        for (const auto& entry : fs::directory_iterator(fs::u8path(dir), ec)) {
            const std::string name = entry.path().filename().u8string();
            if (Find(entry.path().u8string(), {"NTUSER.DAT"}, &hive)) out.push_back({name, hive});
        }
    }
    std::sort(out.begin(), out.end(), [](const Profile& a, const Profile& b) { return a.hive < b.hive; });
    return out;
}

int Fail(int code, const std::string& message) {
    std::fprintf(stderr, "tqnralm: %s\n", message.c_str());
    return code;
}

}  // namespace

int UseWindowsDrive(const std::string& root, const std::string& user) {
    std::string software, error;
    const bool hasSoftware = Find(root, {"Windows", "System32", "config", "SOFTWARE"}, &software);
    if (!hasSoftware) {
        std::string users, xp;
        Find(root, {"Users"}, &users);
        Find(root, {"Documents and Settings"}, &xp);
        return Fail(kExitNotInstalled, "'" + root + "' is not a Windows system drive: there is no " + software +
                                           " (nor profiles in " + users + " or " + xp + ")");
    }
    if (os::ProbeHive(software, kClientKey, &error) == os::Hive::kUnsupported) return Fail(kExitUsage, error);

    std::string chosen;
    std::vector<Profile> profiles = Profiles(root);
    if (!user.empty()) {
        auto it = std::find_if(profiles.begin(), profiles.end(),
                               [&](const Profile& p) { return Lower(p.name) == Lower(user); });
        if (it == profiles.end()) {
            std::string known;
            for (const Profile& p : profiles) known += "\n  " + p.name + "  (" + p.hive + ")";
            return Fail(kExitNotInstalled, "no Windows user '" + user + "' with an NTUSER.DAT on '" + root +
                                               "'; the profiles are:" + (known.empty() ? " none" : known));
        }
        if (os::ProbeHive(it->hive, kClientKey, &error) == os::Hive::kUnreadable)
            return Fail(kExitNotInstalled, "cannot read the user's registry " + error);
        chosen = it->name;
    } else {
        std::vector<Profile> withKeys;
        std::string lookedIn, unreadable;
        for (const Profile& p : profiles) {
            lookedIn += "\n  " + p.hive;
            switch (os::ProbeHive(p.hive, kClientKey, &error)) {
                case os::Hive::kHasKey: withKeys.push_back(p); break;
                case os::Hive::kUnreadable: unreadable += "\n  " + error; break;
                default: break;
            }
        }
        if (withKeys.size() > 1) {
            std::string list;
            for (const Profile& p : withKeys) list += "\n  " + p.name + "  (" + p.hive + ")";
            return Fail(kExitUsage, "several Windows users on '" + root + "' used AL-Mail32:" + list +
                                        "\nChoose one with --windows-user NAME.");
        }
        if (withKeys.empty()) {
            return Fail(kExitNotInstalled,
                        "no Windows user on '" + root + "' has AL-Mail32's settings (" + kClientKey +
                            "). Looked in:" + (lookedIn.empty() ? " no NTUSER.DAT at all" : lookedIn) +
                            (unreadable.empty() ? "" : "\nCould not read:" + unreadable));
        }
        chosen = withKeys.front().name;
    }
    if (os::ProbeHive(software, kClientKey, &error) == os::Hive::kUnreadable)
        return Fail(kExitNotInstalled, "cannot read the machine's registry " + error);
    os::SetEnvironment("TQNRALM_WINDOWS_ROOT", root);
    os::SetEnvironment("TQNRALM_WINDOWS_USER", chosen);
    return kExitOk;
}

}  // namespace tqnralm
