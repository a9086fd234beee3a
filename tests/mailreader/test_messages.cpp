// test_messages.cpp - loading messages: subjects in their encodings, message
// ids, whole texts, broken and missing files, the message library's drive.
#include <gtest/gtest.h>

#include <string>

#include "MailFixture.h"
#include "mailreader/CMailReader.h"

namespace {

using mailtest::MailStore;
using mailtest::Reader;
using mailtest::Sjis;

const std::string kFolder = "C:\\Users\\taro\\Mailbox\\Account1\\msgs.box";

std::string Msg(int n) {
    char name[16];
    std::snprintf(name, sizeof name, "%08X", n);
    return name;
}

// A store with one account and one message folder; the messages are given
// as file bytes, and null means the list names a file that is not there.
void BuildFolder(MailStore& s, const std::vector<const std::string*>& messages, const std::string& listExtra = "") {
    s.Install();
    s.RegistryMailbox("C:\\Users\\taro");
    s.Account("C:\\Users\\taro\\Mailbox\\Account1", "Work");
    s.FolderIni(kFolder, "Messages");
    std::string list;
    for (size_t i = 0; i < messages.size(); ++i) {
        list += Msg(static_cast<int>(i)) + "=1,0\r\n";
        if (messages[i] != nullptr) s.File(kFolder + "\\" + Msg(static_cast<int>(i)) + ".alm", *messages[i]);
    }
    s.File(kFolder + "\\Entry.lst", list + listExtra);
}

class Folder {
public:
    explicit Folder(const Reader& r) : h(r.h) {
        MAILRECORD_HANDLE user = nullptr, acc = nullptr;
        EXPECT_EQ(0, MailReader_GetUser(h, 0, &user));
        EXPECT_EQ(0, MailReader_GetAccount(h, user, 0, &acc));
        EXPECT_EQ(0, MailReader_GetFolder(h, acc, 0, &folder));
    }
    int32_t Subject(int32_t i, std::string* out, uint32_t kind = QV_V4_KIND_TEXT8) {
        return mailtest::Text([&](QvV4Value* v) { return MailReader_GetSubject(h, folder, i, v); }, out, kind);
    }
    int32_t Id(int32_t i, std::string* out) {
        return mailtest::Text([&](QvV4Value* v) { return MailReader_GetMessageId(h, folder, i, v); }, out);
    }
    int32_t Whole(int32_t i, std::string* out) {
        return mailtest::Text([&](QvV4Value* v) { return MailReader_GetMessageText(h, folder, i, v); }, out);
    }
    CMailBox* Box() const { return static_cast<CMailBox*>(static_cast<CMailNamed*>(folder)); }
    MAILREADER_HANDLE h;
    MAILRECORD_HANDLE folder = nullptr;
};

TEST(Messages, WithTheMessageLibrary) {
    const std::string iso = "Subject: =?ISO-2022-JP?B?GyRCRnxLXDhsJE43b0w+GyhC?=\r\nMessage-ID: <a@b>\r\n\r\nx\r\n";
    const std::string utf8 = "Subject: =?UTF-8?B?5pel5pys6Kqe44Gu5Lu25ZCN?=\r\n\r\nx\r\n";
    const std::string raw = "Subject: " + Sjis("日本語の件名") + "\r\n\r\nx\r\n";
    const std::string escapes = "Subject: a#b/c\\d\r\nMessage-ID: <x/y#z>\r\n\r\n";
    const std::string zero = std::string("Subject: z\r\n\r\nbefore\0after", 25);
    const std::string empty;
    const std::string garbage = std::string("\x00\xff\xfe\x1a\x80\x81\r\n\x1b$B", 12) + std::string(300, '\x85');
    const std::string huge = "Subject: big\r\nX-Long: " + std::string(10 * 1024 * 1024, 'a') + "\r\n\r\nbody\r\n";
    MailStore store;
    BuildFolder(store, {&iso, &utf8, &raw, &escapes, &zero, &empty, nullptr, &garbage, &huge},
                "0000001=not an entry\r\n");
    Reader reader;
    ASSERT_EQ(0, reader.result);
    Folder f(reader);
    int32_t n = -1;
    ASSERT_EQ(0, MailReader_GetMessageCount(f.h, f.folder, &n));
    ASSERT_EQ(9, n);
    struct Case {
        const char* name;
        int32_t index;
        int32_t subjectResult;
        std::string subject;  // Shift-JIS
        int32_t idResult;
        std::string id;
        int32_t wholeResult;
        std::string whole;
    };
    const Case cases[] = {
        {"ISO-2022-JP", 0, 0, Sjis("日本語の件名"), 0, "<a@b>", 0, iso},
        {"UTF-8", 1, 0, Sjis("日本語の件名"), -3, "", 0, utf8},
        {"raw Shift-JIS", 2, 0, Sjis("日本語の件名"), -3, "", 0, raw},
        {"not escaped", 3, 0, "a#b/c\\d", 0, "<x/y#z>", 0, escapes},
        {"zero byte ends the whole text", 4, 0, "z", -3, "", 0, "Subject: z\r\n\r\nbefore"},
        {"empty file", 5, -3, "", -3, "", 0, ""},
        {"missing file", 6, -3, "", -2, "", -2, ""},
        {"huge header line", 8, 0, "big", -3, "", 0, huge},
        {"index out of range", 9, -3, "", -3, "", -3, ""},
        {"negative index", -1, -3, "", -3, "", -3, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::string text;
        EXPECT_EQ(c.subjectResult, f.Subject(c.index, &text));
        EXPECT_EQ(c.subject, text);
        EXPECT_EQ(c.idResult, f.Id(c.index, &text));
        EXPECT_EQ(c.id, text);
        EXPECT_EQ(c.wholeResult, f.Whole(c.index, &text));
        EXPECT_TRUE(c.whole == text) << text.size();
    }
    // The library was given every byte, the zero byte and what follows it.
    std::string text;
    ASSERT_EQ(0, f.Whole(4, &text));
    EXPECT_EQ(static_cast<int32_t>(zero.size()), f.Box()->m_nTextSize);
    // Garbage parses without harm; whatever comes back is a result code.
    int32_t r = f.Subject(7, &text);
    EXPECT_TRUE(r == 0 || r == -3) << r;
    EXPECT_EQ(0, f.Whole(7, &text));
    EXPECT_EQ(std::string(garbage.c_str()), text);
    // Delivered as UTF-16 for the tree.
    EXPECT_EQ(0, f.Subject(0, &text, QV_V4_KIND_TEXT16));
    EXPECT_EQ(Sjis("日本語の件名"), text);
}

TEST(Messages, TwoFoldersHoldTheirOwnMessage) {
    const std::string a = "Subject: A\r\n\r\n";
    const std::string b = "Subject: B\r\n\r\n";
    MailStore store;
    BuildFolder(store, {&a, &b});
    store.FolderIni("C:\\Users\\taro\\Mailbox\\Account1\\zzz.box", "Other");
    store.File("C:\\Users\\taro\\Mailbox\\Account1\\zzz.box\\Entry.lst", "00000000=\r\n");
    store.File("C:\\Users\\taro\\Mailbox\\Account1\\zzz.box\\00000000.alm", "Subject: Z\r\n\r\n");
    Reader reader;
    ASSERT_EQ(0, reader.result);
    Folder f(reader);
    MAILRECORD_HANDLE user = nullptr, acc = nullptr, other = nullptr;
    ASSERT_EQ(0, MailReader_GetUser(reader.h, 0, &user));
    ASSERT_EQ(0, MailReader_GetAccount(reader.h, user, 0, &acc));
    ASSERT_EQ(0, MailReader_GetFolder(reader.h, acc, 1, &other));
    std::string text;
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(0, f.Subject(round, &text));
        EXPECT_EQ(round == 0 ? "A" : "B", text);
        EXPECT_EQ(0, mailtest::Text([&](QvV4Value* v) { return MailReader_GetSubject(reader.h, other, 0, v); },
                                    &text));
        EXPECT_EQ("Z", text);
    }
}

// The counting stub shows how the library is driven.
TEST(Messages, DrivingTheLibrary) {
    mailtest::StubLibrary stub("stub_mock.dll");
    const std::string one = "first subject\r\nbody";
    const std::string two = "second subject\r\n";
    const std::string nothing = "!no fields";
    MailStore store;
    BuildFolder(store, {&one, &two, nullptr, &nothing});
    struct StubCounters {
        long inits, terms, frees, null_frees, parses, main_next, attach, bad_trailing_words;
        long outstanding, last_size;
    };
    // The test holds the library too, so that its counters outlive the reader.
    ASSERT_EQ(0, BindMessageLibrary());
    qvp::Module* hModule = BoundMessageLibrary();
    ASSERT_NE(nullptr, hModule);
    auto get = reinterpret_cast<StubCounters* (*)()>(qvp::ModuleSymbol(hModule, "StubCounters"));
    ASSERT_NE(nullptr, get);
    StubCounters* counters = get();
    *counters = StubCounters{};
    {
        Reader reader;
        ASSERT_EQ(0, reader.result);
        Folder f(reader);
        EXPECT_EQ(1, counters->inits);  // one parse root per opened folder
        std::string text;
        // Subject, id and whole text of one message: one read, one parse.
        ASSERT_EQ(0, f.Subject(0, &text));
        EXPECT_EQ("first subject", text);
        EXPECT_EQ(10, counters->null_frees);  // nothing held before the first load
        EXPECT_EQ(0, f.Id(0, &text));
        EXPECT_EQ("<parse-1>", text);
        EXPECT_EQ(0, f.Whole(0, &text));
        EXPECT_EQ(one, text);
        EXPECT_EQ(1, counters->parses);
        EXPECT_EQ(static_cast<long>(one.size()), counters->last_size);
        // Seven main parts offered, five slots kept, no stray words.
        EXPECT_EQ(5, counters->main_next);
        EXPECT_EQ(5, f.Box()->m_nMainParts);
        EXPECT_EQ(0, counters->bad_trailing_words);
        EXPECT_EQ(1, f.Box()->m_nAttachResult);
        // Alternating between two messages reloads each time.
        EXPECT_EQ(0, f.Subject(1, &text));
        EXPECT_EQ(0, f.Subject(0, &text));
        EXPECT_EQ(3, counters->parses);
        // A failed load forgets the held message: the same index never gets
        // the previous message's texts.
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(-3, f.Subject(2, &text));
            EXPECT_EQ("", text);
            EXPECT_EQ(-2, f.Id(2, &text));
            EXPECT_EQ(-2, f.Whole(2, &text));
        }
        EXPECT_EQ(-1, f.Box()->m_nCurrent);
        // A message that vanishes between the list and the load.
        store.prefix.Remove(kFolder + "\\00000001.alm");
        EXPECT_EQ(-3, f.Subject(1, &text));
        EXPECT_EQ(-2, f.Whole(1, &text));
        // The library gives no text: -3, the message stays held.
        EXPECT_EQ(-3, f.Subject(3, &text));
        EXPECT_EQ(-3, f.Id(3, &text));
        EXPECT_EQ(0, f.Whole(3, &text));
        EXPECT_EQ(nothing, text);
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
    MailStore store;
    BuildFolder(store, {&one});
    Reader reader;
    ASSERT_EQ(0, reader.result);
    Folder f(reader);
    EXPECT_EQ(0, f.Box()->m_pParse);
    std::string text;
    EXPECT_EQ(-3, f.Subject(0, &text));
    EXPECT_EQ(-3, f.Id(0, &text));
    EXPECT_EQ(0, f.Whole(0, &text));
    EXPECT_EQ(one, text);
}

TEST(Messages, LargeFolderIsIndexed) {
    MailStore store;
    BuildFolder(store, {});
    std::string list;
    const int kCount = 100000;
    list.reserve(static_cast<size_t>(kCount) * 12);
    for (int i = 0; i < kCount; ++i) list += Msg(i) + "=\r\n";
    store.File(kFolder + "\\Entry.lst", list);
    store.File(kFolder + "\\" + Msg(kCount - 1) + ".alm", "Subject: last\r\n\r\n");
    Reader reader;
    ASSERT_EQ(0, reader.result);
    Folder f(reader);
    int32_t n = 0;
    ASSERT_EQ(0, MailReader_GetMessageCount(f.h, f.folder, &n));
    ASSERT_EQ(kCount, n);
    std::string text;
    EXPECT_EQ(0, f.Whole(kCount - 1, &text));
    EXPECT_EQ("Subject: last\r\n\r\n", text);
    for (int i = 0; i < kCount; i += 997) EXPECT_EQ(Msg(i) + ".alm", f.Box()->MessageAt(i)->sName);
}

}  // namespace
