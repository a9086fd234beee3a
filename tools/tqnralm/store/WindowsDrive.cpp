// WindowsDrive.cpp - what the host tells its user of a copied drive: its
// hives and profiles come from the library's platform layer (Os.h), which
// finds them as it reads them.
#include "WindowsDrive.h"

#include <cstdio>
#include <vector>

#include "Console.h"
#include "Options.h"
#include "Os.h"

namespace tqnralm {
namespace {

const char kClientKey[] = "Software\\CREAR\\AL-Mail";

int Fail(int code, const std::string& message) {
    Print(stderr, "tqnralm: %s\n", message.c_str());
    return code;
}

}  // namespace

int UseWindowsDrive(const std::string& root, const std::string& user) {
    os::ReadCopiedDrive(root, user);
    const os::DriveLayout drive = os::InspectCopiedDrive();
    std::string error;
    if (!drive.hasSoftware) {
        return Fail(kExitNotInstalled, "'" + root + "' is not a Windows system drive: there is no " + drive.software +
                                           " (nor profiles in " + drive.users + " or " + drive.oldUsers + ")");
    }
    if (os::ProbeHive(drive.software, kClientKey, &error) == os::Hive::kUnsupported) return Fail(kExitUsage, error);

    std::string chosen;
    const std::vector<os::DriveProfile>& profiles = drive.profiles;
    if (!user.empty()) {
        if (!drive.hasNamed) {
            std::string known;
            for (const os::DriveProfile& p : profiles) known += "\n  " + p.name + "  (" + p.hive + ")";
            return Fail(kExitNotInstalled, "no Windows user '" + user + "' with an NTUSER.DAT on '" + root +
                                               "'; the profiles are:" + (known.empty() ? " none" : known));
        }
        if (os::ProbeHive(drive.named.hive, kClientKey, &error) == os::Hive::kUnreadable)
            return Fail(kExitNotInstalled, "cannot read the user's registry " + error);
        chosen = drive.named.name;
    } else {
        std::vector<os::DriveProfile> withKeys;
        std::string lookedIn, unreadable;
        for (const os::DriveProfile& p : profiles) {
            lookedIn += "\n  " + p.hive;
            switch (os::ProbeHive(p.hive, kClientKey, &error)) {
                case os::Hive::kHasKey: withKeys.push_back(p); break;
                case os::Hive::kUnreadable: unreadable += "\n  " + error; break;
                default: break;
            }
        }
        if (withKeys.size() > 1) {
            std::string list;
            for (const os::DriveProfile& p : withKeys) list += "\n  " + p.name + "  (" + p.hive + ")";
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
    if (os::ProbeHive(drive.software, kClientKey, &error) == os::Hive::kUnreadable)
        return Fail(kExitNotInstalled, "cannot read the machine's registry " + error);
    os::ReadCopiedDrive(root, chosen);
    return kExitOk;
}

}  // namespace tqnralm
