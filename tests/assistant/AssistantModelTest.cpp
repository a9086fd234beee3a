// The migration assistant's view apart from its window: the found tree and
// its counts, the progress line, the totals read back from a manifest, the
// texts in both languages, and the export's progress reports it listens to.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <tuple>
#include <vector>

#include "Model.h"
#include "Progress.h"
#include "Strings.h"

namespace tqnralm {
namespace gui {
namespace {

FolderPlan Folder(const std::string& name, std::vector<std::string> path, int64_t messages) {
    FolderPlan folder;
    folder.name = name;
    folder.path = std::move(path);
    folder.expected = messages;
    return folder;
}

TEST(AssistantFound, EachRowCountsWhatLiesBelowIt) {
    ExportPlan plan;
    plan.users.resize(2);
    plan.users[0].index = "0", plan.users[0].name = "Taro", plan.users[0].accounts.resize(2);
    plan.users[1].index = "1", plan.users[1].name = "%2fHanako";
    AccountPlan &work = plan.users[0].accounts[0], &shared = plan.users[0].accounts[1];
    work.name = "Account1", work.displayName = "Work%23";
    work.folders.push_back(Folder("inbox", {"inbox"}, 3));
    work.folders.push_back(Folder("2008", {"inbox", "2008"}, 5));
    work.folders.push_back(Folder("Q1", {"inbox", "2008", "Q1"}, 7));
    work.folders.push_back(Folder("sent", {"sent"}, 11));
    shared.name = "C:%5cAL-Mail%5cAccount2", shared.sameAs = "0/0";
    shared.folders.push_back(Folder("never shown", {"x"}, 100));
    // As the dry run lists them: a book read twice is written once.
    const Json books = Json::parse(R"([
        {"user":"0","name":"Default","addresses":{"written":4,"failed":1}},
        {"user":"1","name":"Friends","addresses":{"written":2}},
        {"user":"1","name":"Default","same_as":"Taro/addresses/Default"},
        {"user":"7","name":"no such user","addresses":{"written":50}}])");

    ChooseLanguage(0x0409);
    const Found found = FoundFromPlan(plan, books);
    const struct { int depth; const char* label; } rows[] = {
        {0, "Taro (26)"}, {1, "Work# (26)"}, {2, "inbox (15)"}, {3, "2008 (12)"}, {4, "Q1 (7)"},
        {2, "sent (11)"}, {1, "Account2 (0)"}, {1, "Default (4 addresses)"}, {0, "/Hanako (0)"},
        {1, "Friends (2 addresses)"}, {1, "Default (the same as another book; written once)"},
    };
    ASSERT_EQ(std::size(rows), found.rows.size());
    for (size_t i = 0; i < found.rows.size(); ++i) {
        EXPECT_EQ(rows[i].depth, found.rows[i].depth) << i;
        EXPECT_EQ(rows[i].label, Label(found.rows[i])) << i;
    }
    EXPECT_EQ(2, found.users);
    EXPECT_EQ(4, found.folders);
    EXPECT_EQ(26, found.messages);
    EXPECT_EQ(2, found.books);
    EXPECT_EQ(6, found.addresses);
}

// The manifest's share (half a kilobyte a message) counts against the space.
TEST(AssistantSpace, TotalsAndAWarningWhenShort) {
    const struct { const char* name; int exit; int64_t messages; uint64_t bytes; bool freeKnown; uint64_t free;
                   const char* line; bool shortOfSpace; } rows[] = {
        {"counting", -1, 0, 0, true, 5000000, "Counting what the export will write... 5.0 MB free on the destination.",
         false},
        {"room", 0, 40, 1500000, true, 9000000000, "40 messages, 1.5 MB to write; 9000.0 MB free on the destination.",
         false},
        {"just room", 1, 1000, 1000000, true, 1512000,
         "1000 messages, 1.0 MB to write; 1.5 MB free on the destination.", false},
        {"short by the manifest", 0, 1000, 1000000, true, 1400000,
         "1000 messages, 1.0 MB to write; 1.4 MB free on the destination.\n"
         "The destination is 0.2 MB short of space: choose another folder or free some space.", true},
        {"a few bytes short", 0, 0, 100, true, 99, "0 messages, 0.0 MB to write; 0.0 MB free on the destination.\n"
         "The destination is 0.1 MB short of space: choose another folder or free some space.", true},
        {"unknown free space", 0, 3, 10, false, 0, "3 messages, 0.0 MB to write; ? MB free on the destination.", false},
    };
    ChooseLanguage(0x0409);
    for (const auto& row : rows) {
        PlanTotals plan;
        plan.exit = row.exit, plan.messages = row.messages, plan.bytes = row.bytes;
        const SpaceCheck check = CheckSpace(plan, row.freeKnown, row.free);
        EXPECT_EQ(row.line, check.line) << row.name;
        EXPECT_EQ(row.shortOfSpace, check.shortOfSpace) << row.name;
    }
}

TEST(AssistantProgress, LineInEitherLanguage) {
    const struct { bool japanese; int64_t done, total; uint64_t bytes; double seconds; const char* line; } rows[] = {
        {false, 0, 40, 0, 0, "0 of 40 messages, 0.0 MB, 0 messages/s, --:-- left"},
        {false, 10, 40, 1500000, 2, "10 of 40 messages, 1.5 MB, 5 messages/s, 0:06 left"},
        {false, 100, 100, 0, 4, "100 of 100 messages, 0.0 MB, 25 messages/s, 0:00 left"},
        {false, 5, 3, 0, 1, "5 of 3 messages, 0.0 MB, 5 messages/s, --:-- left"},  // more than planned
        {false, 1, 7201, 0, 1, "1 of 7201 messages, 0.0 MB, 1 message/s, 120:00 left"},
        {false, 1, 1, 0, 1, "1 of 1 message, 0.0 MB, 1 message/s, 0:00 left"},
        {true, 10, 40, 1500000, 2, "10 / 40 通、1.5 MB、毎秒 5 通、残り 0:06"},
    };
    for (const auto& row : rows) {
        ChooseLanguage(row.japanese ? 0x0411 : 0x0409);
        EXPECT_EQ(row.line, ProgressLine(row.done, row.total, row.bytes, row.seconds));
    }
    ChooseLanguage(0x0409);
}

TEST(AssistantStrings, JapaneseOnlyForAJapaneseUiLanguage) {
    const struct { uint16_t langId; bool japanese; } rows[] = {
        {0x0411, true}, {0x0011, true}, {0x0409, false}, {0x0804, false}, {0x0412, false}, {0, false}};
    for (const auto& row : rows) {
        ChooseLanguage(row.langId);
        EXPECT_EQ(row.japanese, Japanese()) << row.langId;
    }
    ChooseLanguage(0x0409);
}

// Every text in both languages, with the same placeholders (a missing %N
// would drop a count from one language's line).
TEST(AssistantStrings, BothLanguagesHoldTheSamePlaceholders) {
    const auto placeholders = [](const std::string& text) {
        std::string found;
        for (size_t i = 0; i + 1 < text.size(); ++i) {
            if (text[i] == '%' && text[i + 1] >= '1' && text[i + 1] <= '9') found += text[i + 1];
        }
        std::sort(found.begin(), found.end());
        return found;
    };
    for (int i = 0; i < static_cast<int>(Text::kCount); ++i) {
        ChooseLanguage(0x0411);
        const std::string ja = Str(static_cast<Text>(i));
        ChooseLanguage(0x0409);
        const std::string en = Str(static_cast<Text>(i));
        EXPECT_FALSE(ja.empty() || en.empty()) << i;
        EXPECT_EQ(placeholders(en), placeholders(ja)) << i;
    }
}

// An English noun agrees with the count before it; a Japanese counter
// needs no plural.
TEST(AssistantStrings, CountsAgreeWithTheirNouns) {
    const struct { bool japanese; Text id; std::vector<std::string> args; const char* text; } rows[] = {
        {false, Text::kFoundTotals, {"1", "1", "1", "1", "1"},
         "1 user, 1 folder, 1 message, 1 address book, 1 address"},
        {false, Text::kFoundTotals, {"2", "0", "11", "21", "1"},
         "2 users, 0 folders, 11 messages, 21 address books, 1 address"},
        {false, Text::kBookRow, {"Default", "1"}, "Default (1 address)"},
        {false, Text::kPlanTotals, {"1", "0.1", "1"}, "1 message, 0.1 MB to write; 1 MB free on the destination."},
        {true, Text::kFoundTotals, {"1", "2", "1", "1", "1"},
         "ユーザー 1 人、フォルダー 2 個、メール 1 通、アドレス帳 1 冊、アドレス 1 件"},
    };
    for (const auto& row : rows) {
        ChooseLanguage(row.japanese ? 0x0411 : 0x0409);
        std::vector<std::string> a = row.args;
        a.resize(5);
        EXPECT_EQ(row.text, Format(row.id, {a[0], a[1], a[2], a[3], a[4]}));
    }
    ChooseLanguage(0x0409);
}

TEST(AssistantStrings, FormatFillsPlaceholdersOnly) {
    ChooseLanguage(0x0409);
    EXPECT_EQ("3 written, 0 failed, 1 unread", Format(Text::kDoneTotals, {"3", "0", "1"}));
    EXPECT_EQ("%1 written, %2 failed, %3 unread", Format(Text::kDoneTotals, {}));  // too few: left as they are
    EXPECT_EQ("The export failed (code 4).", Format(Text::kDoneFailed, {"4", "unused"}));
}

// Each problem points at the output of the deepest written item above it;
// failed messages follow what could not be read.
TEST(AssistantManifest, TotalsAndProblems) {
    ChooseLanguage(0x0409);
    const char* users = R"("users":[{"index":"0","path":"Taro","accounts":[{"index":"0/0","path":"Taro/Work",
        "folders":[{"index":"0/0/1","path":"Taro/Work/inbox"},{"index":"0/0/10","path":"Taro/Work/sent"}]}]}],)";
    using P = std::vector<std::pair<std::string, std::string>>;
    const struct { const char* name; std::string manifest; bool read; int64_t written, failed, unread; P problems; }
        rows[] = {
        {"whole",
         std::string("{") + users + R"("totals":{"written":12,"failed":1,"unread":2},"problems":[
             {"index":"0/0/10/3","item":"message","code":-5},{"index":"0/0/2","item":"folder","code":-6},
             {"index":"1","item":"user","code":-7}],
             "messages":[{"index":"0/0/1/0","status":"written"},{"index":"0/0/1/4","status":"failed","code":-8}]})",
         true, 12, 1, 2,
         P{{"message 0/0/10/3 (code -5)", "Taro/Work/sent"}, {"folder 0/0/2 (code -6)", "Taro/Work"},
           {"user 1 (code -7)", ""}, {"message 0/0/1/4 (code -8)", "Taro/Work/inbox"}}},
        {"no problems member", R"({"totals":{"written":3}})", true, 3, 0, 0, {}},
        {"counts of the wrong type", R"({"totals":{"written":"3","failed":1.5}})", true, 0, 0, 0, {}},
        {"a problem missing its members", R"({"totals":{},"problems":[{"item":"folder"},7],"users":3})", true, 0,
         0, 0, P{{"folder ? (code ?)", ""}}},
        {"no totals", R"({"messages":[]})", false, 0, 0, 0, {}},
        {"cut short", R"({"totals":{"written":12)", false, 0, 0, 0, {}},
        {"empty", "", false, 0, 0, 0, {}},
    };
    for (const auto& row : rows) {
        const DoneTotals totals = TotalsFromManifest(row.manifest);
        EXPECT_EQ(std::make_tuple(row.read, row.written, row.failed, row.unread),
                  std::make_tuple(totals.read, totals.written, totals.failed, totals.unread)) << row.name;
        P problems;
        for (const DoneProblem& p : totals.problems) problems.emplace_back(p.text, p.path);
        EXPECT_EQ(row.problems, problems) << row.name;
    }
    ChooseLanguage(0x0411);  // the problems' words in the UI language
    EXPECT_EQ("フォルダー 0/0/2 (コード -6)", TotalsFromManifest(rows[0].manifest).problems[1].text);
    ChooseLanguage(0x0409);
}

// The export tells its listener of every message, written or failed, with
// the running totals, and of each folder before its messages.
TEST(AssistantProgress, ListenerSeesEveryStep) {
    struct Recorder : ProgressListener {
        std::vector<std::string> calls;
        void OnProgress(int64_t done, int64_t total, uint64_t bytes) override {
            calls.push_back(std::to_string(done) + "/" + std::to_string(total) + " " + std::to_string(bytes));
        }
        void OnFolder(const std::string& target) override { calls.push_back(target); }
    } recorder;
    Progress progress(false, 3, ReportOr(nullptr));
    progress.Step(10);  // before anyone listens
    progress.Listen(&recorder);
    progress.Step(0);
    progress.Folder("Taro/Work/inbox");
    progress.Step(5);
    EXPECT_EQ((std::vector<std::string>{"2/3 10", "Taro/Work/inbox", "3/3 15"}), recorder.calls);
}

}  // namespace
}  // namespace gui
}  // namespace tqnralm
