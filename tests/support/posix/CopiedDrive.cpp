// CopiedDrive.cpp - the copied-drive form of a prefix: its drive C: with the
// registry as hive files.
#include "support/posix/Hive.h"
#include "support/SampleStore.h"

#include <strings.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace qvt {
namespace {

// The entry of a host folder named `name` in any case, else `name` itself.
fs::path Entry(const fs::path& dir, const std::string& name) {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(dir, ignored))
        if (::strcasecmp(entry.path().filename().c_str(), name.c_str()) == 0) return entry.path();
    return dir / name;
}

HiveKeys Keys(const WinePrefix::Hive& hive, bool software, bool win64) {
    HiveKeys keys;
    for (const std::string& key : hive.order) {
        std::string path = key;
        if (software) {
            // The SOFTWARE hive's root is HKLM\Software; other keys are not in it.
            if (::strncasecmp(key.c_str(), "software\\", 9) != 0) continue;
            path = (win64 ? "Wow6432Node\\" : "") + key.substr(9);
        }
        std::vector<HiveValue> values;
        for (const auto& [name, text] : hive.keys.at(key)) values.push_back({name, 1, RegSz(text)});
        keys.emplace_back(path, std::move(values));
    }
    return keys;
}

}  // namespace

bool WriteCopiedDrive(const WinePrefix& prefix, const std::string& hostDir, const std::string& layout,
                      const std::string& user) {
    if (layout != "xp" && layout != "vista") return false;
    const bool xp = layout == "xp";
    const fs::path to = fs::absolute(HostFile(hostDir));
    fs::remove_all(to);
    fs::create_directories(to.parent_path());
    fs::copy(HostFile(prefix.Root()) / "drive_c", to, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    // XP spelled its folders in capitals, later Windows in mixed case.
    const fs::path windows = to / (xp ? "WINDOWS" : "Windows"), existing = Entry(to, "windows");
    if (fs::exists(existing)) fs::rename(existing, windows);
    const fs::path config = windows / (xp ? "system32" : "System32") / "config";
    fs::create_directories(config);
    WriteHive((config / (xp ? "software" : "SOFTWARE")).u8string(), Keys(prefix.Registry(true), true, prefix.Win64()));
    const fs::path profiles = to / (xp ? "Documents and Settings" : "Users");
    fs::create_directories(profiles / user);
    fs::create_directories(profiles / (xp ? "Default User" : "Default"));
    fs::create_directories(profiles / (xp ? "All Users" : "Public"));
    WriteHive((profiles / user / "NTUSER.DAT").u8string(), Keys(prefix.Registry(false), false, false));
    WriteHive((profiles / (xp ? "Default User" : "Default") / "NTUSER.DAT").u8string(),
              {{"Software\\Microsoft", {}}});
    return true;
}

}  // namespace qvt
