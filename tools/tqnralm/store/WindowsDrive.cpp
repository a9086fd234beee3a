// WindowsDrive.cpp - what the host tells its user of a copied drive: its
// hives and profiles come from the library's platform layer (Os.h), which
// finds them as it reads them.
#include "WindowsDrive.h"

#include <cstdio>

#include "Console.h"
#include "Options.h"
#include "platform/HostOs.h"

namespace tqnralm {
namespace {

const char kClientKey[] = "Software\\CREAR\\AL-Mail";

DriveCheck Fail(DriveCheck::Problem problem, int exit, const std::string& message) {
    DriveCheck check;
    check.problem = problem;
    check.exit = exit;
    check.message = message;
    return check;
}

std::string ProfileList(const std::vector<os::DriveProfile>& profiles) {
    std::string list;
    for (const os::DriveProfile& p : profiles) list += "\n  " + p.name + "  (" + p.hive + ")";
    return list;
}

// The profile of the user named, or the one whose hive has the client's keys.
DriveCheck ChooseProfile(const std::string& root, const std::string& user, const os::DriveLayout& drive) {
    std::string error;
    DriveCheck check;
    if (!user.empty()) {
        if (!drive.hasNamed) {
            const std::string known = ProfileList(drive.profiles);
            return Fail(DriveCheck::kNoSuchUser, kExitNotInstalled,
                        "no Windows user '" + user + "' with an NTUSER.DAT on '" + root +
                            "'; the profiles are:" + (known.empty() ? " none" : known));
        }
        if (os::ProbeHive(drive.named.hive, kClientKey, &error) == os::Hive::kUnreadable)
            return Fail(DriveCheck::kUserUnreadable, kExitNotInstalled, "cannot read the user's registry " + error);
        check.user = drive.named.name;
        return check;
    }
    std::vector<os::DriveProfile> withKeys;
    std::string lookedIn, unreadable;
    for (const os::DriveProfile& p : drive.profiles) {
        lookedIn += "\n  " + p.hive;
        switch (os::ProbeHive(p.hive, kClientKey, &error)) {
            case os::Hive::kHasKey: withKeys.push_back(p); break;
            case os::Hive::kUnreadable: unreadable += "\n  " + error; break;
            default: break;
        }
    }
    if (withKeys.size() > 1) {
        check = Fail(DriveCheck::kSeveralUsers, kExitUsage,
                     "several Windows users on '" + root + "' used AL-Mail32:" + ProfileList(withKeys) +
                         "\nChoose one with --windows-user NAME.");
        for (const os::DriveProfile& p : withKeys) check.users.push_back(p.name);
        return check;
    }
    if (withKeys.empty()) {
        return Fail(DriveCheck::kNoUser, kExitNotInstalled,
                    "no Windows user on '" + root + "' has AL-Mail32's settings (" + kClientKey +
                        "). Looked in:" + (lookedIn.empty() ? " no NTUSER.DAT at all" : lookedIn) +
                        (unreadable.empty() ? "" : "\nCould not read:" + unreadable));
    }
    check.user = withKeys.front().name;
    return check;
}

}  // namespace

DriveCheck CheckWindowsDrive(const std::string& root, const std::string& user) {
    os::ReadCopiedDrive(root, user);
    const os::DriveLayout drive = os::InspectCopiedDrive();
    std::string error;
    if (!drive.hasSoftware) {
        return Fail(DriveCheck::kNotADrive, kExitNotInstalled,
                    "'" + root + "' is not a Windows system drive: there is no " + drive.software +
                        " (nor profiles in " + drive.users + " or " + drive.oldUsers + ")");
    }
    DriveCheck check = ChooseProfile(root, user, drive);
    if (check.problem != DriveCheck::kReadable) return check;
    if (os::ProbeHive(drive.software, kClientKey, &error) == os::Hive::kUnreadable)
        return Fail(DriveCheck::kMachineUnreadable, kExitNotInstalled, "cannot read the machine's registry " + error);
    os::ReadCopiedDrive(root, check.user);
    return check;
}

int UseWindowsDrive(const std::string& root, const std::string& user) {
    const DriveCheck check = CheckWindowsDrive(root, user);
    if (check.exit != kExitOk) Print(stderr, "tqnralm: %s\n", check.message.c_str());
    return check.exit;
}

}  // namespace tqnralm
