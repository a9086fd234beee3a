// test_messages.cpp - message lists, and messages through the message
// library: texts and ids, broken and missing files, how the library is
// driven. (The sample store's walk reads subjects in every encoding and shows
// that each folder holds its own message; the fuzzers read any list bytes.)
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MailFixture.h"
#include "mailreader/CMailReader.h"
#include "mailreader/EntryLists.h"

namespace {

using mailtest::Got;
using mailtest::Rec;

TEST(EntryLists, Lines) {
    using Names = std::vector<std::string>;
    // index: an index file, else "Entry.lst"
    struct Case { const char* name; bool index; std::string bytes; Names expected; } cases[] = {
        {"file order kept, eight bytes whatever they are", false, "0000000B=1,2\nab cd/\\#=z\n",
         {"0000000B.alm", "ab cd/\\#.alm"}},
        {"equals at byte eight only", false, "0000001=x\n000000001=x\n", {}},
        {"nothing after equals, no line end", false, "00000002=", {"00000002.alm"}},
        {"over 511 bytes a line goes on as a new one", false, std::string(511, 'y') + "00000005=x\n", {"00000005.alm"}},
        {"index: path before the first equals", true, "Acc\\in.box\\00000001=a=b\n", {"Acc\\in.box\\00000001.alm"}},
        {"index: name cut at 255 bytes", true, std::string(300, 'n') + "=\n", {std::string(255, 'n') + ".alm"}},
        {"index: Shift-JIS name kept", true, "\x95\x5C\\00000003=\n", {"\x95\x5C\\00000003.alm"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        CMemoryLineSource source(c.bytes.data(), c.bytes.size());
        Names names;
        auto add = [&names](const std::string& name) { names.push_back(name); };
        if (c.index) ReadEntryLines(source, ParseIndexLine, add);
        else ReadEntryLines(source, ParseEntryListLine, add);
        EXPECT_EQ(c.expected, names);
    }
}

// A reader of an account whose one folder lists the given messages (file
// bytes; null for a file that is not there).
struct Opened {
    explicit Opened(const std::vector<const std::string*>& messages) : built(Build(store, messages)) {}
    static bool Build(mailtest::MailStore& s, const std::vector<const std::string*>& messages) {
        const std::string acc = "C:\\Users\\taro\\Mailbox\\Account1", folder = acc + "\\msgs.box";
        s.Account(acc, "Work");
        s.FolderIni(folder, "Messages", false);
        std::vector<std::string> texts;
        for (const std::string* m : messages) texts.push_back(m ? *m : "");
        s.Messages(folder, texts, 0);
        for (size_t i = 0; i < messages.size(); ++i)
            if (messages[i] == nullptr) s.Remove(folder + "\\0000000" + std::to_string(i) + ".alm");
        return true;
    }
    std::string Subject(int32_t i) { return Got([&](QvV4Value* v) { return MailReader_GetSubject(h, f, i, v); }); }
    std::string Id(int32_t i) { return Got([&](QvV4Value* v) { return MailReader_GetMessageId(h, f, i, v); }); }
    std::string Whole(int32_t i) { return Got([&](QvV4Value* v) { return MailReader_GetMessageText(h, f, i, v); }); }
    mailtest::MailStore store{"C:\\Users\\taro"};
    bool built;
    mailtest::Reader reader;
    MAILREADER_HANDLE h = reader.h;
    MAILRECORD_HANDLE f =
        Rec(MailReader_GetFolder, h, Rec(MailReader_GetAccount, h, Rec(MailReader_GetUser, h, 0), 0), 0);
    CMailBox* Box() const { return static_cast<CMailBox*>(static_cast<CMailNamed*>(f)); }
};

TEST(Messages, WithTheMessageLibrary) {
    const std::string escapes = "Subject: a#b/c\\d\r\nMessage-ID: <x/y#z>\r\n\r\n";
    const std::string zero = std::string("Subject: z\r\n\r\nbefore\0after", 25);
    const std::string empty;
    Opened o({&escapes, &zero, &empty, nullptr});
    EXPECT_EQ("0:4", mailtest::Count(MailReader_GetMessageCount, o.h, o.f));
    const struct { int32_t index; std::string subject, id, whole; } cases[] = {  // "code:text"
        {0, "0:a#b/c\\d", "0:<x/y#z>", "0:" + escapes},  // not escaped
        {1, "0:z", "-3:", "0:Subject: z\r\n\r\nbefore"},  // a zero byte ends the whole text
        {2, "-3:", "-3:", "0:"},                          // empty file
        {3, "-3:", "-2:", "-2:"},                         // missing file
        {-1, "-3:", "-3:", "-3:"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.index);
        EXPECT_EQ(c.subject, o.Subject(c.index));
        EXPECT_EQ(c.id, o.Id(c.index));
        EXPECT_EQ(c.whole, o.Whole(c.index));
    }
    // The library was given every byte, the zero byte and what follows it.
    ASSERT_EQ("0:z", o.Subject(1));
    EXPECT_EQ(static_cast<int32_t>(zero.size()), o.Box()->m_nTextSize);
}

// Bytes that code page 932 has no character for never cost a subject or an
// id its strict wide form.
TEST(Messages, EveryByteHasAWideForm) {
    const std::string mail = "Subject: a\xA0=?shift_jis?Q?=FD?=\xFE\r\nMessage-ID: <\xFF@x>\r\n\r\n";
    Opened o({&mail});
    const auto wide = [&](auto fetch) {
        QvV4Value value;
        QvV4Value_Init(&value);
        QvV4Value_SetKind(&value, QV_V4_KIND_TEXT16);
        const int32_t r = fetch(&value);
        QvV4Value_Release(&value);
        return r;
    };
    EXPECT_EQ(0, wide([&](QvV4Value* v) { return MailReader_GetSubject(o.h, o.f, 0, v); }));
    EXPECT_EQ(0, wide([&](QvV4Value* v) { return MailReader_GetMessageId(o.h, o.f, 0, v); }));
}

// The counting stub shows how the library is driven.
TEST(Messages, DrivingTheLibrary) {
    mailtest::StubLibrary stub("stub_mock.dll");
    const std::string one = "first subject\r\nbody", two = "second subject\r\n", nothing = "!no fields";
    struct StubCounters { long inits, terms, parses, main_next, bad_trailing_words, outstanding; };
    // The test holds the library too, so that its counters outlive the reader.
    ASSERT_EQ(0, BindMessageLibrary());
    auto get = reinterpret_cast<StubCounters* (*)()>(qvp::ModuleSymbol(BoundMessageLibrary(), "StubCounters"));
    ASSERT_NE(nullptr, get);
    StubCounters* counters = get();
    *counters = StubCounters{};
    {
        Opened o({&one, &two, nullptr, &nothing});
        EXPECT_EQ(1, counters->inits);  // one parse root per opened folder
        // Subject, id and whole text of one message: one read, one parse.
        ASSERT_EQ("0:first subject", o.Subject(0));
        EXPECT_EQ("0:<parse-1>", o.Id(0));
        EXPECT_EQ("0:" + one, o.Whole(0));
        EXPECT_EQ(1, counters->parses);
        // Seven main parts offered, five slots kept, no stray words.
        EXPECT_EQ(5, counters->main_next);
        EXPECT_EQ(0, counters->bad_trailing_words);
        // Alternating between two messages reloads each time.
        EXPECT_EQ("0:second subject", o.Subject(1));
        EXPECT_EQ("0:first subject", o.Subject(0));
        EXPECT_EQ(3, counters->parses);
        // A failed load forgets the held message, also when asked again.
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ("-3:", o.Subject(2));
            EXPECT_EQ("-2:", o.Whole(2));
        }
        // The library gives no text: -3, the message stays held.
        EXPECT_EQ("-3:", o.Subject(3));
        EXPECT_EQ("0:" + nothing, o.Whole(3));
        EXPECT_EQ(4, counters->parses);
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
    EXPECT_EQ("-3:", o.Subject(0));
    EXPECT_EQ("-3:", o.Id(0));
    EXPECT_EQ("0:" + one, o.Whole(0));
    // The functions the library lacks are bound to fallbacks that give 0 and touch nothing.
    char* text = nullptr;
    MT_WORD length = 77;
    EXPECT_EQ(0, g_MessageLib.MT_Term(0) + g_MessageLib.MT_GetSubjectD(0, &text, &length));
    EXPECT_TRUE(text == nullptr && length == 77);
}

}  // namespace
