// The assistant's words for an old disk: the folder read when the person
// picked the disk's Windows folder itself, and a plain sentence and a hint
// for every check of the disk that can fail.
#include <gtest/gtest.h>

#include <string>

#include "Drive.h"
#include "Strings.h"

namespace tqnralm {
namespace gui {
namespace {

TEST(AssistantDrive, TheWindowsFolderStandsForItsDisk) {
    const struct {
        const char* picked;
        const char* read;  // "": the folder itself
    } rows[] = {
        {"E:\\Windows", "E:\\"},
        {"E:\\WINDOWS\\", "E:\\"},
        {"Z:\\mnt\\old\\windows", "Z:\\mnt\\old"},
        {"\\\\server\\share\\Windows", "\\\\server\\share"},
        {"E:\\", ""},
        {"E:\\Users", ""},
        {"E:\\Windows\\System32", ""},
        {"E:\\Windows.old", ""},
        {"E:\\MyWindows", ""},
        {"Windows", ""},
        {"", ""},
    };
    for (const auto& row : rows) EXPECT_EQ(row.read, ParentOfWindowsFolder(row.picked)) << row.picked;
}

TEST(AssistantDrive, EveryProblemHasWordsAndAHint) {
    ChooseLanguage(0x0409);
    const struct {
        DriveCheck::Problem problem;
        const char* inWhat;  // what the sentence names
        bool hint;
    } rows[] = {
        {DriveCheck::kNotADrive, "\"E:\\old\"", true},
        {DriveCheck::kNoHiveReader, "registry", false},
        {DriveCheck::kNoSuchUser, "\"Jiro\"", true},
        {DriveCheck::kSeveralUsers, "Several", true},
        {DriveCheck::kNoUser, "settings", true},
        {DriveCheck::kUserUnreadable, "cannot be read", true},
        {DriveCheck::kMachineUnreadable, "cannot be read", true},
    };
    for (const auto& row : rows) {
        DriveCheck check;
        check.problem = row.problem;
        const DriveProblemText text = DriveProblem(check, "E:\\old", "Jiro");
        EXPECT_NE(std::string::npos, text.what.find(row.inWhat)) << row.problem << ": " << text.what;
        EXPECT_EQ(row.hint, !text.hint.empty()) << row.problem;
    }
    EXPECT_TRUE(DriveProblem(DriveCheck(), "E:\\", "").what.empty());
}

}  // namespace
}  // namespace gui
}  // namespace tqnralm
