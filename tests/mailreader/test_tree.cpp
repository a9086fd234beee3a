// test_tree.cpp - accounts and the folder tree through the flat functions:
// the folder forms, lazy opening, the root token, and the reader's own life.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "MailFixture.h"
#include "mailreader/CMailReader.h"
#include "mailreader/MailReaderApi.h"

namespace {

using mailtest::Count;
using mailtest::DisplayName;
using mailtest::MailStore;
using mailtest::Name;
using mailtest::Reader;
using mailtest::Rec;
using mailtest::Sjis;

const std::string kBox = "C:\\Users\\taro\\Mailbox";
const std::string kAcc = kBox + "\\Account1";

CMailBox* Box(MAILRECORD_HANDLE h) { return static_cast<CMailBox*>(static_cast<CMailNamed*>(h)); }

class TreeTest : public ::testing::Test {
protected:
    void SetUp() override {
        MailStore& s = store;
        s.Install();
        s.RegistryMailbox("C:\\Users\\taro");
        // The end-to-end sample store has the plain inbox, outbox and trash forms.
        s.Ini(kAcc + "\\Account.ini", "仕事/会社#1");
        s.WriteFile(kAcc + "\\myinbox.box\\Entry.lst", "00000001=\r\n");  // not looked at without Entry.ini
        s.Ini(kAcc + "\\folder1.box\\Entry.ini", "Folder/One", "[Other]\r\nType=Subfolder\r\n");
        s.MakeDir(kAcc + "\\folder1.box\\sub1.box");
        s.MakeDir(kAcc + "\\noname.box");
        s.MakeDir(kAcc + "\\oldtrash.box");  // an index file must be a file
        s.WriteFile(kAcc + "\\plain.box", "x");
        s.Ini(kAcc + "\\blank.box\\Entry.ini", "Blank", " Type=Subfolder\r\ntype=subfolder\r\n");
        s.WriteFile(kAcc + "\\blank.box\\Entry.lst", "1234567=x\r\n");
        s.Ini(kAcc + "\\typed.box\\Entry.ini", "Typed", "Type=SubfolderXYZ\r\n");
        s.MakeDir(kAcc + "\\typed.box\\child.box");
        s.WriteFile(kAcc + "\\typed.box\\00000001.alm", "x");
        s.WriteFile(kAcc + "\\typed.box\\Entry.lst", "00000001=\r\n");
        // Not accounts: no "Account.ini", a plain file. An account without a title.
        s.Ini(kBox + "\\Account2\\x.box\\Entry.ini", "X");
        s.WriteFile(kBox + "\\Account3", "[Property]\r\nTitle=T\r\n");
        s.WriteFile(kBox + "\\Account4\\Account.ini", "[Property]\r\nTitle=\r\n");
        s.MakeDir(kBox + "\\Account4\\a.box");
        reader.reset(new Reader);
        ASSERT_EQ(0, reader->result);
        h = reader->h;
        ASSERT_EQ("0:1", Count(MailReader_GetUserCount, h));
        user = Rec(MailReader_GetUser, h, 0);
        acc = Rec(MailReader_GetAccount, h, user, 0);
    }
    int32_t Index(MAILRECORD_HANDLE parent, const std::string& name) {
        int32_t i = 0;
        while (i < Box(parent)->m_nFolders && name != Box(parent)->FolderAt(i)->szName) ++i;
        return i;
    }
    MailStore store;
    std::unique_ptr<Reader> reader;
    MAILREADER_HANDLE h = nullptr;
    MAILRECORD_HANDLE user = nullptr, acc = nullptr;
};

TEST_F(TreeTest, AccountsRootAndNullRecords) {
    EXPECT_EQ("0:DEFAULT_USER1", Name(h, user));
    EXPECT_EQ("-3:", DisplayName(h, user));
    ASSERT_EQ("0:2", Count(MailReader_GetAccountCount, h, user));
    MAILRECORD_HANDLE acc4 = Rec(MailReader_GetAccount, h, user, 1);
    MAILRECORD_HANDLE none = reinterpret_cast<MAILRECORD_HANDLE>(1);
    EXPECT_EQ(-3, MailReader_GetAccount(h, user, 2, &none));
    EXPECT_EQ(nullptr, none);
    // The display name is the title, escaped.
    EXPECT_EQ("0:" + Sjis("仕事%2f会社%231"), DisplayName(h, acc));
    EXPECT_EQ("0:" + Sjis("仕事%2f会社%231"), DisplayName(h, acc, QV_V4_KIND_TEXT16));
    EXPECT_EQ("0:7", Count(MailReader_GetFolderCount, h, acc));
    EXPECT_EQ("0:0", Count(MailReader_GetMessageCount, h, acc));
    // Without a title: listed, no display name, no folders.
    EXPECT_EQ("-3:", DisplayName(h, acc4));
    EXPECT_EQ("0:0", Count(MailReader_GetFolderCount, h, acc4));
}

TEST_F(TreeTest, FolderForms) {
    const struct {
        const char* entry;
        int32_t firstResult;
        std::string name;  // "code:title", UTF-8, escaped
        const char *folders, *messages;
    } cases[] = {
        {"blank.box", 0, "0:Blank", "0:0", "0:0"},
        {"folder1.box", 0, "0:Folder%2fOne", "0:1", "0:0"},
        {"myinbox.box", 0, "0:郵便受け", "0:0", "0:0"},
        {"noname.box", -3, "-3:", "0:0", "0:0"},
        {"oldtrash.box", -3, "0:ごみ箱", "0:0", "0:0"},
        {"plain.box", -3, "-3:", "0:0", "0:0"},
        {"typed.box", 0, "0:Typed", "0:1", "0:0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.entry);
        const int32_t index = Index(acc, c.entry);
        MAILRECORD_HANDLE folder = nullptr, again = nullptr;
        EXPECT_EQ(c.firstResult, MailReader_GetFolder(h, acc, index, &folder));
        ASSERT_NE(nullptr, folder);
        // The second request hands out the same record, with success.
        EXPECT_EQ(0, MailReader_GetFolder(h, acc, index, &again));
        EXPECT_EQ(folder, again);
        EXPECT_EQ(Sjis(c.name), Name(h, folder));
        EXPECT_EQ("-3:", DisplayName(h, folder));
        EXPECT_EQ(c.folders, Count(MailReader_GetFolderCount, h, folder));
        EXPECT_EQ(c.messages, Count(MailReader_GetMessageCount, h, folder));
        EXPECT_EQ(0, MailReader_OpenMessages(h, folder));
        EXPECT_EQ(0, MailReader_CloseMessages(h, folder));
    }
    MAILRECORD_HANDLE folder = nullptr;
    EXPECT_EQ(-3, MailReader_GetFolder(h, acc, 7, &folder));
    EXPECT_EQ(-3, MailReader_GetFolder(h, acc, -1, &folder));
}

TEST_F(TreeTest, RootTokenTagAndNullHandles) {
    MAILRECORD_HANDLE root = reinterpret_cast<MAILRECORD_HANDLE>(static_cast<intptr_t>(-1));
    EXPECT_EQ("0:ROOT", Name(h, root));
    // A copy of the tag stands for the root token: no folders to count or open.
    char tag[] = "CMLNOA User Handle";
    int32_t n = 7;
    EXPECT_EQ(-3, MailReader_GetFolderCount(h, tag, &n));
    MAILRECORD_HANDLE folder = nullptr;
    EXPECT_EQ(-2, MailReader_GetFolder(h, tag, 0, &folder));
    EXPECT_EQ(-2, MailReader_GetFolder(h, root, 0, &folder));
    EXPECT_EQ(nullptr, folder);
    EXPECT_EQ("-2:", Name(h, nullptr));
    EXPECT_EQ("0:AL-Mail32", mailtest::Got([&](QvV4Value* v) { return MailReader_GetMailerName(h, v); }));
}

// A null reader handle is refused with -3 and nothing written.
TEST(MailReaderApi, NullReader) {
    QvV4Value v;
    QvV4Value_Init(&v);
    int32_t n = 5;
    MAILRECORD_HANDLE out = nullptr;
    char record[1100] = {};
    EXPECT_EQ(-3, MailReader_Close(nullptr));
    EXPECT_EQ(-3, MailReader_GetName(nullptr, record, &v));
    EXPECT_EQ(-3, MailReader_GetUserCount(nullptr, &n));
    EXPECT_EQ(-3, MailReader_GetFolder(nullptr, record, 0, &out));
    EXPECT_EQ(-3, MailReader_CloseMessages(nullptr, record));
    EXPECT_EQ(-3, MailReader_GetSubject(nullptr, record, 0, &v));
    EXPECT_EQ(5, n);
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(nullptr, v.pData);
    EXPECT_EQ(0, record[0]);
}

TEST(MailReaderApi, OpenCloseAndInstalled) {
    struct Case {
        bool install;
        const char* library;
        int32_t openResult, isInstalledResult, installed;
    };
    for (const Case& c : {Case{false, "sNqxMsgNet.dll", 0, 0, 0}, Case{true, "sNqxMsgNet.dll", 0, 0, 1},
                          Case{false, "stub_not_there.dll", -3, -3, 9}}) {
        SCOPED_TRACE(c.library + std::string(c.install ? " installed" : ""));
        MailStore store;
        if (c.install) store.Install();
        mailtest::StubLibrary library(c.library);
        int32_t installed = 9;
        EXPECT_EQ(c.isInstalledResult, MailReader_IsInstalled(&installed));
        EXPECT_EQ(c.installed, installed);
        // Closing a reader of an installation removes a file of the temp file's name.
        const std::string temp = store.TempDir() + "/IBQVALM.tmp";
        std::ofstream(temp) << "left over";
        {
            Reader reader, second;  // two readers share the library
            EXPECT_EQ(c.openResult, reader.result);
            EXPECT_EQ(c.openResult, second.result);
            if (!c.install && c.openResult == 0) {
                EXPECT_EQ("0:0", Count(MailReader_GetUserCount, reader.h));  // no key, no users
            }
        }
        EXPECT_EQ(!c.install, std::filesystem::exists(temp));
        EXPECT_EQ(0, AddLibraryRef(0));
    }
}

}  // namespace
