// DriveCheckTest.cpp - the checks of a copied drive as a front end sees
// them: which check failed, and the profiles to choose from when several
// used the mail client (the command line's words are checked by
// copied_drive.sh).
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/HostOs.h"
#include "WindowsDrive.h"
#include "support/SampleStore.h"

namespace tqnralm {
namespace {

namespace fs = std::filesystem;

void Cut(const fs::path& hive) { fs::resize_file(hive, 6000); }  // past its header, into its first bin

TEST(DriveCheck, ProblemsAndProfiles) {
    qvt::WinePrefix prefix;
    qvt::BuildSampleStore(prefix);
    const fs::path drive = fs::path(prefix.Root()) / "disk";
    const auto two = [](const fs::path& d) {
        fs::copy(d / "Users/Taro", d / "Users/Hanako", fs::copy_options::recursive);
    };
    const struct { const char* name; void (*damage)(const fs::path& drive); const char* user;
                   DriveCheck::Problem problem; std::string chosen; std::vector<std::string> users; } rows[] = {
        {"one profile", [](const fs::path&) {}, "", DriveCheck::kReadable, "Taro", {}},
        {"two profiles", two, "", DriveCheck::kSeveralUsers, "", {"Hanako", "Taro"}},
        {"two profiles, one named in another case", two, "hanako", DriveCheck::kReadable, "Hanako", {}},
        {"no Windows folder", [](const fs::path& d) { fs::remove_all(d / "Windows"); }, "", DriveCheck::kNotADrive, "",
         {}},
        {"no profile has the keys", [](const fs::path& d) { fs::remove(d / "Users/Taro/NTUSER.DAT"); }, "",
         DriveCheck::kNoUser, "", {}},
        {"a user without a profile", [](const fs::path&) {}, "Jiro", DriveCheck::kNoSuchUser, "", {}},
        {"the named user's hive cut short", [](const fs::path& d) { Cut(d / "Users/Taro/NTUSER.DAT"); }, "Taro",
         DriveCheck::kUserUnreadable, "", {}},
        {"the machine's hive cut short", [](const fs::path& d) { Cut(d / "Windows/System32/config/SOFTWARE"); }, "",
         DriveCheck::kMachineUnreadable, "", {}},
    };
    for (const auto& row : rows) {
        fs::remove_all(drive);
        ASSERT_TRUE(qvt::WriteCopiedDrive(prefix, drive.string(), "vista", "Taro"));
        row.damage(drive);
        const DriveCheck check = CheckWindowsDrive(drive.string(), row.user);
        EXPECT_EQ(check.problem, row.problem) << row.name << ": " << check.message;
        EXPECT_EQ(check.exit == 0, row.problem == DriveCheck::kReadable) << row.name;
        EXPECT_EQ(check.message.empty(), row.problem == DriveCheck::kReadable) << row.name;
        EXPECT_EQ(check.user, row.chosen) << row.name;
        EXPECT_EQ(check.users, row.users) << row.name;
    }
    os::ReadCopiedDrive(std::string(), std::string());
}

}  // namespace
}  // namespace tqnralm
