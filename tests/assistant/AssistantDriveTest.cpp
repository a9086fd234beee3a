// The assistant's words for an old disk: the folder read when the person
// picked the disk's Windows folder itself, and the sentences that name it.
#include <gtest/gtest.h>

#include <string>

#include "Drive.h"
#include "Strings.h"

namespace tqnralm {
namespace gui {
namespace {

TEST(AssistantDrive, TheWindowsFolderStandsForItsDisk) {
    const struct { const char* picked; const char* read; } rows[] = {  // read "": the folder itself
        {"E:\\Windows", "E:\\"}, {"E:\\WINDOWS\\", "E:\\"}, {"Z:\\mnt\\old\\windows", "Z:\\mnt\\old"},
        {"\\\\server\\share\\Windows", "\\\\server\\share"}, {"E:\\", ""}, {"E:\\Users", ""},
        {"E:\\Windows\\System32", ""}, {"E:\\Windows.old", ""}, {"E:\\MyWindows", ""}, {"Windows", ""}, {"", ""},
    };
    for (const auto& row : rows) EXPECT_EQ(row.read, ParentOfWindowsFolder(row.picked)) << row.picked;
}

// The sentences that name what was asked get it in their place.
TEST(AssistantDrive, ProblemsNameTheFolderOrUserAsked) {
    ChooseLanguage(0x0409);
    const struct { DriveCheck::Problem problem; const char* inWhat; } rows[] = {
        {DriveCheck::kNotADrive, "\"E:\\old\" is not"}, {DriveCheck::kNoSuchUser, "user \"Jiro\""}};
    for (const auto& row : rows) {
        DriveCheck check;
        check.problem = row.problem;
        const DriveProblemText text = DriveProblem(check, "E:\\old", "Jiro");
        EXPECT_NE(std::string::npos, text.what.find(row.inWhat)) << text.what;
        EXPECT_FALSE(text.hint.empty()) << row.problem;
    }
}

}  // namespace
}  // namespace gui
}  // namespace tqnralm
