// ExportReportTest.cpp - the export's text for a person reaches the front
// end's report, each line on its channel, and nothing of it the process's
// stdout or stderr (a window has neither).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Export.h"
#include "Report.h"
#include "support/SampleStore.h"
#include "support/WinePrefix.h"

namespace tqnralm {
namespace {

struct Recorder : Report {
    std::string text[3];
    void Text(Channel channel, const std::string& line) override { text[static_cast<int>(channel)] += line; }
};

TEST(ExportReport, EveryLineGoesToTheReport) {
    qvt::WinePrefix scratch;  // OUTDIR lies outside the store
    qvt::WinePrefix prefix;
    ASSERT_TRUE(qvt::BuildSampleStore(prefix, "damaged"));
    const std::string out = scratch.Root() + "/out";
    qvt::WriteHostFile(scratch.Root() + "/file", "x");
    // listing and message: a part of each channel's text; listing "" where there is none
    struct Row { const char* name; std::string outDir; bool dryRun; std::vector<int> users; int exit;
                 const char* listing; const char* message; } rows[] = {
        {"dry run", out + "/dry", true, {}, kExitIncomplete, "8 messages in 6 folders",
         "tqnralm: dry run: 5 to write, 3 failed"},
        {"export", out + "/mail", false, {}, kExitIncomplete, "", "tqnralm: cannot read folder 0/0/"},
        {"OUTDIR holds an export", out + "/mail", false, {}, kExitOutput, "", "' is not empty; --force adds to it"},
        {"OUTDIR is a file", scratch.Root() + "/file", false, {}, kExitOutput, "", "' is not a folder\n"},
        {"no such user", out + "/user", false, {9}, kExitUsage, "", "tqnralm: there is no user 9 (the users are 0 to 1"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ExportOptions options;
        Recorder recorder;
        options.outDir = row.outDir, options.dryRun = row.dryRun, options.users = row.users, options.report = &recorder;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int exit = Export(GlobalOptions(), options).exit;
        EXPECT_EQ("", testing::internal::GetCapturedStdout());
        EXPECT_EQ("", testing::internal::GetCapturedStderr());
        EXPECT_EQ(row.exit, exit);
        const std::string& listing = recorder.text[static_cast<int>(Channel::kListing)];
        const std::string& message = recorder.text[static_cast<int>(Channel::kMessage)];
        EXPECT_NE(std::string::npos, listing.find(row.listing)) << listing;
        EXPECT_EQ(*row.listing == '\0', listing.empty()) << listing;
        EXPECT_NE(std::string::npos, message.find(row.message)) << message;
        EXPECT_TRUE(recorder.text[static_cast<int>(Channel::kStatus)].empty()) << "no status line unless live";
    }
}

}  // namespace
}  // namespace tqnralm
