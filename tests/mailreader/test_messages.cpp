// test_messages.cpp - loading messages: subjects in their encodings, message
// ids, whole texts, broken and missing files, the message library's drive.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MailFixture.h"
#include "mailreader/CMailReader.h"

namespace {

using mailtest::Count;
using mailtest::Got;
using mailtest::MailStore;
using mailtest::Reader;
using mailtest::Rec;
using mailtest::Sjis;

const std::string kAcc = "C:\\Users\\taro\\Mailbox\\Account1";
const std::string kFolder = kAcc + "\\msgs.box";

std::string Msg(size_t n) {
    char name[16];
    std::snprintf(name, sizeof name, "%08X", static_cast<unsigned>(n));
    return name;
}

// The account's folder of the given index, and its texts as "code:text".
struct Folder {
    explicit Folder(const Reader& r, int32_t index = 0) : h(r.h) {
        folder = Rec(MailReader_GetFolder, h, Rec(MailReader_GetAccount, h, Rec(MailReader_GetUser, h, 0), 0), index);
    }
    std::string Subject(int32_t i, uint32_t kind = QV_V4_KIND_TEXT8) {
        return Got([&](QvV4Value* v) { return MailReader_GetSubject(h, folder, i, v); }, kind);
    }
    std::string Id(int32_t i) { return Got([&](QvV4Value* v) { return MailReader_GetMessageId(h, folder, i, v); }); }
    std::string Whole(int32_t i) { return Got([&](QvV4Value* v) { return MailReader_GetMessageText(h, folder, i, v); }); }
    CMailBox* Box() const { return static_cast<CMailBox*>(static_cast<CMailNamed*>(folder)); }
    MAILREADER_HANDLE h;
    MAILRECORD_HANDLE folder = nullptr;
};

// An account with the folder "msgs.box" of the given messages (file bytes;
// null for a file the list names but that is not there) and a second folder
// of one message "Z", open in a reader.
struct Opened {
    explicit Opened(const std::vector<const std::string*>& messages, const std::string& listExtra = "")
        : built(Build(store, messages, listExtra)) {}
    static bool Build(MailStore& s, const std::vector<const std::string*>& messages, const std::string& listExtra) {
        s.Install();
        s.RegistryMailbox("C:\\Users\\taro");
        s.Ini(kAcc + "\\Account.ini", "Work");
        s.Ini(kFolder + "\\Entry.ini", "Messages");
        std::string list;
        for (size_t i = 0; i < messages.size(); ++i) {
            list += Msg(i) + "=1,0\r\n";
            if (messages[i] != nullptr) s.WriteFile(kFolder + "\\" + Msg(i) + ".alm", *messages[i]);
        }
        s.WriteFile(kFolder + "\\Entry.lst", list + listExtra);
        s.Ini(kAcc + "\\zzz.box\\Entry.ini", "Other");
        s.WriteFile(kAcc + "\\zzz.box\\Entry.lst", "00000000=\r\n");
        s.WriteFile(kAcc + "\\zzz.box\\00000000.alm", "Subject: Z\r\n\r\n");
        return true;
    }
    MailStore store;
    bool built;
    Reader reader;
    Folder f{reader};
};

TEST(Messages, WithTheMessageLibrary) {
    const std::string iso = "Subject: =?ISO-2022-JP?B?GyRCRnxLXDhsJE43b0w+GyhC?=\r\nMessage-ID: <a@b>\r\n\r\nx\r\n";
    const std::string escapes = "Subject: a#b/c\\d\r\nMessage-ID: <x/y#z>\r\n\r\n";
    const std::string zero = std::string("Subject: z\r\n\r\nbefore\0after", 25);
    const std::string empty;
    const std::string garbage = std::string("\x00\xff\xfe\x1a\x80\x81\r\n\x1b$B", 12) + std::string(300, '\x85');
    const std::string huge = "Subject: big\r\nX-Long: " + std::string(10 * 1024 * 1024, 'a') + "\r\n\r\nbody\r\n";
    // (The end-to-end walk reads UTF-8 and raw Shift-JIS subjects.)
    Opened o({&iso, &escapes, &zero, &empty, nullptr, &garbage, &huge}, "0000001=not an entry\r\n");
    Folder& f = o.f;
    ASSERT_EQ("0:7", Count(MailReader_GetMessageCount, f.h, f.folder));
    const std::string subject = "0:" + Sjis("日本語の件名");
    const struct {
        int32_t index;
        std::string subject, id, whole;  // "code:text", the subject in Shift-JIS
    } cases[] = {
        {0, subject, "0:<a@b>", "0:" + iso},
        {1, "0:a#b/c\\d", "0:<x/y#z>", "0:" + escapes},  // not escaped
        {2, "0:z", "-3:", "0:Subject: z\r\n\r\nbefore"},  // a zero byte ends the whole text
        {3, "-3:", "-3:", "0:"},                          // empty file
        {4, "-3:", "-2:", "-2:"},                         // missing file
        {6, "0:big", "-3:", "0:" + huge},                 // huge header line
        {7, "-3:", "-3:", "-3:"},                         // index out of range
        {-1, "-3:", "-3:", "-3:"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.index);
        EXPECT_EQ(c.subject, f.Subject(c.index));
        EXPECT_EQ(c.id, f.Id(c.index));
        EXPECT_TRUE(c.whole == f.Whole(c.index));
    }
    // The library was given every byte, the zero byte and what follows it.
    ASSERT_EQ("0:Subject: z\r\n\r\nbefore", f.Whole(2));
    EXPECT_EQ(static_cast<int32_t>(zero.size()), f.Box()->m_nTextSize);
    // Garbage parses without harm; whatever comes back is a result code.
    std::string r = f.Subject(5);
    EXPECT_TRUE(r.rfind("0:", 0) == 0 || r == "-3:") << r;
    EXPECT_EQ("0:" + std::string(garbage.c_str()), f.Whole(5));
    EXPECT_EQ(subject, f.Subject(0, QV_V4_KIND_TEXT16));  // as UTF-16 for the tree
    // Two folders hold their own message.
    Folder other(o.reader, 1);
    EXPECT_EQ("0:Z", other.Subject(0));
    EXPECT_EQ("0:z", f.Subject(2));
    EXPECT_EQ("0:Z", other.Subject(0));
}

// The counting stub shows how the library is driven.
TEST(Messages, DrivingTheLibrary) {
    mailtest::StubLibrary stub("stub_mock.dll");
    const std::string one = "first subject\r\nbody", two = "second subject\r\n", nothing = "!no fields";
    struct StubCounters {
        long inits, terms, parses, main_next, bad_trailing_words, outstanding;
    };
    // The test holds the library too, so that its counters outlive the reader.
    ASSERT_EQ(0, BindMessageLibrary());
    auto get = reinterpret_cast<StubCounters* (*)()>(qvp::ModuleSymbol(BoundMessageLibrary(), "StubCounters"));
    ASSERT_NE(nullptr, get);
    StubCounters* counters = get();
    *counters = StubCounters{};
    {
        Opened o({&one, &two, nullptr, &nothing});
        Folder& f = o.f;
        EXPECT_EQ(1, counters->inits);  // one parse root per opened folder
        // Subject, id and whole text of one message: one read, one parse.
        ASSERT_EQ("0:first subject", f.Subject(0));
        EXPECT_EQ("0:<parse-1>", f.Id(0));
        EXPECT_EQ("0:" + one, f.Whole(0));
        EXPECT_EQ(1, counters->parses);
        // Seven main parts offered, five slots kept, no stray words.
        EXPECT_EQ(5, counters->main_next);
        EXPECT_EQ(5, f.Box()->m_nMainParts);
        EXPECT_EQ(0, counters->bad_trailing_words);
        EXPECT_EQ(1, f.Box()->m_nAttachResult);
        // Alternating between two messages reloads each time.
        EXPECT_EQ("0:second subject", f.Subject(1));
        EXPECT_EQ("0:first subject", f.Subject(0));
        EXPECT_EQ(3, counters->parses);
        // A failed load forgets the held message, also when asked again.
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ("-3:", f.Subject(2));
            EXPECT_EQ("-2:", f.Id(2));
            EXPECT_EQ("-2:", f.Whole(2));
        }
        EXPECT_EQ(-1, f.Box()->m_nCurrent);
        // The library gives no text: -3, the message stays held.
        EXPECT_EQ("-3:", f.Subject(3));
        EXPECT_EQ("-3:", f.Id(3));
        EXPECT_EQ("0:" + nothing, f.Whole(3));
        EXPECT_EQ(3, f.Box()->m_nCurrent);
        EXPECT_LT(0, counters->outstanding);
    }
    // Everything the library gave out went back, and every root was ended.
    EXPECT_EQ(0, counters->outstanding);
    EXPECT_EQ(counters->inits, counters->terms);
    EXPECT_EQ(0, UnbindMessageLibrary());
}

TEST(Messages, LibraryWithOnlyFree) {
    mailtest::StubLibrary stub("stub_onlyfree.dll");
    const std::string one = "Subject: s\r\nMessage-ID: <i>\r\n\r\nbody";
    Opened o({&one});
    EXPECT_EQ(0, o.f.Box()->m_pParse);
    EXPECT_EQ("-3:", o.f.Subject(0));
    EXPECT_EQ("-3:", o.f.Id(0));
    EXPECT_EQ("0:" + one, o.f.Whole(0));
}

TEST(Messages, LargeFolderIsIndexed) {
    const size_t kCount = 100000;
    const std::string last = "Subject: last\r\n\r\n";
    std::vector<const std::string*> messages(kCount);
    messages.back() = &last;
    Opened o(messages);
    ASSERT_EQ("0:" + std::to_string(kCount), Count(MailReader_GetMessageCount, o.f.h, o.f.folder));
    EXPECT_EQ("0:" + last, o.f.Whole(kCount - 1));
    for (size_t i = 0; i < kCount; i += 997) EXPECT_EQ(Msg(i) + ".alm", o.f.Box()->MessageAt(static_cast<int32_t>(i))->sName);
}

}  // namespace
