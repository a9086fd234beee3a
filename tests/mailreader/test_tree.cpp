// test_tree.cpp - accounts and the folder tree through the flat functions:
// every folder form, titles and their escaping, lazy opening, index files.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <memory>
#include <string>

#include "MailFixture.h"
#include "mailreader/CMailReader.h"
#include "mailreader/MailReaderApi.h"

namespace {

using mailtest::MailStore;
using mailtest::Reader;
using mailtest::Sjis;

const std::string kBox = "C:\\Users\\taro\\Mailbox";
const std::string kAcc = kBox + "\\Account1";

void BuildTree(MailStore& s) {
    s.Install();
    s.RegistryMailbox("C:\\Users\\taro");
    s.Account(kAcc, "仕事/会社#1");
    s.File(kAcc + "\\inbox.box\\Entry.lst", "00000001=\r\n");  // not looked at without Entry.ini
    s.FolderIni(kAcc + "\\outbox.box", "");
    s.File(kAcc + "\\outbox.box\\Entry.lst", "00000001=a\r\n00000002=b\r\n");
    s.File(kAcc + "\\trash.box", "Account1\\myinbox.box\\00000001=x\r\nno equals here\r\n");
    s.FolderIni(kAcc + "\\folder1.box", "Folder/One", "[Other]\r\nType=Subfolder\r\n");
    s.FolderIni(kAcc + "\\folder1.box\\sub1.box", "Sub\\表");
    s.File(kAcc + "\\folder1.box\\sub1.box\\Entry.lst", "00000009=\r\n");
    s.prefix.MakeDir(kAcc + "\\noname.box");
    s.prefix.MakeDir(kAcc + "\\oldtrash.box");  // an index file must be a file
    s.File(kAcc + "\\plain.box", "x");
    s.prefix.MakeDir(kAcc + "\\myinbox.box");
    s.File(kAcc + "\\myinbox.box\\00000001.alm", "Subject: in the index\r\n\r\nbody\r\n");
    s.FolderIni(kAcc + "\\blank.box", "Blank", " Type=Subfolder\r\ntype=subfolder\r\n");
    s.File(kAcc + "\\blank.box\\Entry.lst", "1234567=x\r\n");
    s.FolderIni(kAcc + "\\typed.box", "Typed", "Type=SubfolderXYZ\r\n");
    s.prefix.MakeDir(kAcc + "\\typed.box\\child.box");
    s.File(kAcc + "\\typed.box\\00000001.alm", "x");
    s.File(kAcc + "\\typed.box\\Entry.lst", "00000001=\r\n");
    // Not accounts: no "Account.ini", a plain file. An account without a title.
    s.FolderIni(kBox + "\\Account2\\x.box", "X");
    s.File(kBox + "\\Account3", "[Property]\r\nTitle=T\r\n");
    s.File(kBox + "\\Account4\\Account.ini", "[Property]\r\nTitle=\r\n");
    s.prefix.MakeDir(kBox + "\\Account4\\a.box");
}

CMailBox* Box(MAILRECORD_HANDLE h) { return static_cast<CMailBox*>(static_cast<CMailNamed*>(h)); }

int32_t ChildIndex(MAILRECORD_HANDLE parent, const std::string& name) {
    CMailBox* pBox = Box(parent);
    for (int32_t i = 0; i < pBox->m_nFolders; ++i)
        if (name == pBox->FolderAt(i)->szName) return i;
    return -1;
}

class TreeTest : public ::testing::Test {
protected:
    void SetUp() override {
        BuildTree(store);
        reader.reset(new Reader);
        ASSERT_EQ(0, reader->result);
        h = reader->h;
        int32_t n = -1;
        ASSERT_EQ(0, MailReader_GetUserCount(h, &n));
        ASSERT_EQ(1, n);
        ASSERT_EQ(0, MailReader_GetUser(h, 0, &user));
    }
    MailStore store;
    std::unique_ptr<Reader> reader;
    MAILREADER_HANDLE h = nullptr;
    MAILRECORD_HANDLE user = nullptr;
};

TEST_F(TreeTest, Accounts) {
    std::string text;
    EXPECT_EQ(0, mailtest::Name(h, user, &text));
    EXPECT_EQ("DEFAULT_USER1", text);
    EXPECT_EQ(-3, mailtest::DisplayName(h, user, &text));
    int32_t n = -1;
    ASSERT_EQ(0, MailReader_GetAccountCount(h, user, &n));
    ASSERT_EQ(2, n);
    MAILRECORD_HANDLE acc = nullptr;
    MAILRECORD_HANDLE acc4 = nullptr;
    ASSERT_EQ(0, MailReader_GetAccount(h, user, 0, &acc));
    ASSERT_EQ(0, MailReader_GetAccount(h, user, 1, &acc4));
    MAILRECORD_HANDLE none = reinterpret_cast<MAILRECORD_HANDLE>(1);
    EXPECT_EQ(-3, MailReader_GetAccount(h, user, 2, &none));
    EXPECT_EQ(nullptr, none);
    // An account's name is its directory, escaped; its display name the title.
    EXPECT_EQ(0, mailtest::Name(h, acc, &text));
    EXPECT_EQ("C:%5cUsers%5ctaro%5cMailbox%5cAccount1", text);
    EXPECT_EQ(0, mailtest::DisplayName(h, acc, &text));
    EXPECT_EQ(Sjis("仕事%2f会社%231"), text);
    EXPECT_EQ(0, mailtest::Text([&](QvV4Value* v) { return MailReader_GetDisplayName(h, acc, v); }, &text,
                                QV_V4_KIND_TEXT16));
    EXPECT_EQ(Sjis("仕事%2f会社%231"), text);
    // Without a title: listed, no display name, no folders.
    EXPECT_EQ(-3, mailtest::DisplayName(h, acc4, &text));
    EXPECT_EQ(0, MailReader_GetFolderCount(h, acc4, &n));
    EXPECT_EQ(0, n);
    EXPECT_EQ(0, MailReader_GetFolderCount(h, acc, &n));
    EXPECT_EQ(10, n);
    EXPECT_EQ(0, MailReader_GetMessageCount(h, acc, &n));
    EXPECT_EQ(0, n);
}

TEST_F(TreeTest, FolderForms) {
    MAILRECORD_HANDLE acc = nullptr;
    ASSERT_EQ(0, MailReader_GetAccount(h, user, 0, &acc));
    struct Case {
        const char* entry;
        int32_t firstResult;
        int32_t nameResult;
        std::string title;  // UTF-8, escaped
        int32_t folders;
        int32_t messages;
    };
    const Case cases[] = {
        {"blank.box", 0, 0, "Blank", 0, 0},
        {"folder1.box", 0, 0, "Folder%2fOne", 1, 0},
        {"inbox.box", 0, 0, "郵便受け", 0, 0},
        {"myinbox.box", 0, 0, "郵便受け", 0, 0},
        {"noname.box", -3, -3, "", 0, 0},
        {"oldtrash.box", -3, 0, "ごみ箱", 0, 0},
        {"outbox.box", 0, 0, "送信箱", 0, 2},
        {"plain.box", -3, -3, "", 0, 0},
        {"trash.box", 0, 0, "ごみ箱", 0, 1},
        {"typed.box", 0, 0, "Typed", 1, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.entry);
        int32_t index = ChildIndex(acc, c.entry);
        ASSERT_LE(0, index);
        MAILRECORD_HANDLE folder = nullptr;
        EXPECT_EQ(c.firstResult, MailReader_GetFolder(h, acc, index, &folder));
        ASSERT_NE(nullptr, folder);
        // The second request hands out the same record, with success.
        MAILRECORD_HANDLE again = nullptr;
        EXPECT_EQ(0, MailReader_GetFolder(h, acc, index, &again));
        EXPECT_EQ(folder, again);
        std::string text;
        EXPECT_EQ(c.nameResult, mailtest::Name(h, folder, &text));
        EXPECT_EQ(Sjis(c.title), text);
        EXPECT_EQ(-3, mailtest::DisplayName(h, folder, &text));
        int32_t n = -1;
        EXPECT_EQ(0, MailReader_GetFolderCount(h, folder, &n));
        EXPECT_EQ(c.folders, n);
        EXPECT_EQ(0, MailReader_GetMessageCount(h, folder, &n));
        EXPECT_EQ(c.messages, n);
        EXPECT_EQ(0, MailReader_OpenMessages(h, folder));
        EXPECT_EQ(0, MailReader_CloseMessages(h, folder));
    }
    MAILRECORD_HANDLE folder = nullptr;
    int32_t n = 0;
    ASSERT_EQ(0, MailReader_GetFolderCount(h, acc, &n));
    EXPECT_EQ(-3, MailReader_GetFolder(h, acc, n, &folder));
    EXPECT_EQ(-3, MailReader_GetFolder(h, acc, -1, &folder));
}

TEST_F(TreeTest, SubfoldersAndIndexFile) {
    MAILRECORD_HANDLE acc = nullptr, folder1 = nullptr, sub = nullptr, trash = nullptr, outbox = nullptr;
    ASSERT_EQ(0, MailReader_GetAccount(h, user, 0, &acc));
    ASSERT_EQ(0, MailReader_GetFolder(h, acc, ChildIndex(acc, "folder1.box"), &folder1));
    ASSERT_EQ(0, MailReader_GetFolder(h, folder1, 0, &sub));
    std::string text;
    EXPECT_EQ(0, mailtest::Name(h, sub, &text));
    EXPECT_EQ(Sjis("Sub%5c表"), text);  // the trail byte 5C of 表 is no backslash
    int32_t n = -1;
    EXPECT_EQ(0, MailReader_GetMessageCount(h, sub, &n));
    EXPECT_EQ(1, n);
    // Index file entries are reached from the mailbox directory.
    ASSERT_EQ(0, MailReader_GetFolder(h, acc, ChildIndex(acc, "trash.box"), &trash));
    EXPECT_EQ(0, mailtest::Text([&](QvV4Value* v) { return MailReader_GetMessageText(h, trash, 0, v); }, &text));
    EXPECT_EQ("Subject: in the index\r\n\r\nbody\r\n", text);
    EXPECT_EQ(kBox, qvt::Utf8(Box(trash)->m_szPath));
    // Message names from "Entry.lst" are eight characters and ".alm".
    ASSERT_EQ(0, MailReader_GetFolder(h, acc, ChildIndex(acc, "outbox.box"), &outbox));
    EXPECT_EQ("00000001.alm", Box(outbox)->MessageAt(0)->sName);
    EXPECT_EQ("00000002.alm", Box(outbox)->MessageAt(1)->sName);
}

TEST_F(TreeTest, TagRootTokenAndNullHandles) {
    MAILRECORD_HANDLE acc = nullptr;
    ASSERT_EQ(0, MailReader_GetAccount(h, user, 0, &acc));
    MAILRECORD_HANDLE root = reinterpret_cast<MAILRECORD_HANDLE>(static_cast<intptr_t>(-1));
    std::string text;
    EXPECT_EQ(0, mailtest::Name(h, root, &text));
    EXPECT_EQ("ROOT", text);
    // A copy of the tag stands for the root token: no folders to count or open.
    char tag[] = "CMLNOA User Handle";
    int32_t n = 7;
    MAILRECORD_HANDLE folder = nullptr;
    EXPECT_EQ(-3, MailReader_GetFolderCount(h, tag, &n));
    EXPECT_EQ(-2, MailReader_GetFolder(h, tag, 0, &folder));
    EXPECT_EQ(-2, MailReader_GetFolder(h, root, 0, &folder));
    EXPECT_EQ(nullptr, folder);
    EXPECT_EQ(-2, mailtest::Name(h, nullptr, &text));
    EXPECT_EQ(0, mailtest::Text([&](QvV4Value* v) { return MailReader_GetMailerName(h, v); }, &text));
    EXPECT_EQ("AL-Mail32", text);
    MailReaderHandle* pHandle = static_cast<MailReaderHandle*>(h);
    EXPECT_STREQ("CMLNOA User Handle", pHandle->pszTag);
    EXPECT_EQ(-1, pHandle->nRootToken);
}

// One table over the functions that refuse a null reader handle.
TEST(MailReaderApi, NullReader) {
    QvV4Value v;
    QvV4Value_Init(&v);
    int32_t n = 5;
    MAILRECORD_HANDLE out = nullptr;
    char record[1100] = {};
    MAILRECORD_HANDLE r = record;
    const struct {
        const char* name;
        int32_t result;
    } cases[] = {
        {"Close", MailReader_Close(nullptr)},
        {"GetMailerName", MailReader_GetMailerName(nullptr, &v)},
        {"GetName", MailReader_GetName(nullptr, r, &v)},
        {"GetDisplayName", MailReader_GetDisplayName(nullptr, r, &v)},
        {"GetUserCount", MailReader_GetUserCount(nullptr, &n)},
        {"GetUser", MailReader_GetUser(nullptr, 0, &out)},
        {"GetAccountCount", MailReader_GetAccountCount(nullptr, r, &n)},
        {"GetAccount", MailReader_GetAccount(nullptr, r, 0, &out)},
        {"GetFolderCount", MailReader_GetFolderCount(nullptr, r, &n)},
        {"GetFolder", MailReader_GetFolder(nullptr, r, 0, &out)},
        {"OpenMessages", MailReader_OpenMessages(nullptr, r)},
        {"CloseMessages", MailReader_CloseMessages(nullptr, r)},
        {"GetMessageCount", MailReader_GetMessageCount(nullptr, r, &n)},
        {"GetSubject", MailReader_GetSubject(nullptr, r, 0, &v)},
        {"GetMessageId", MailReader_GetMessageId(nullptr, r, 0, &v)},
        {"GetMessageText", MailReader_GetMessageText(nullptr, r, 0, &v)},
    };
    for (const auto& c : cases) EXPECT_EQ(-3, c.result) << c.name;
    EXPECT_EQ(5, n);
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(nullptr, v.pData);
    EXPECT_EQ(0, record[0]);
}

TEST(MailReaderApi, OpenCloseAndInstalled) {
    {
        MailStore store;  // no key: an open reader with no users
        int32_t installed = 9;
        EXPECT_EQ(0, MailReader_IsInstalled(&installed));
        EXPECT_EQ(0, installed);
        Reader reader;
        ASSERT_EQ(0, reader.result);
        int32_t n = -1;
        EXPECT_EQ(0, MailReader_GetUserCount(reader.h, &n));
        EXPECT_EQ(0, n);
    }
    {
        MailStore store;
        store.Install();
        int32_t installed = 9;
        EXPECT_EQ(0, MailReader_IsInstalled(&installed));
        EXPECT_EQ(1, installed);
        // Closing a loaded reader removes a file of the temp file's name.
        const std::string temp = store.TempDir() + "/IBQVALM.tmp";
        std::ofstream(temp) << "left over";
        ASSERT_TRUE(std::filesystem::exists(temp));
        {
            Reader reader;
            ASSERT_EQ(0, reader.result);
            Reader second;  // two readers share the library
            ASSERT_EQ(0, second.result);
        }
        EXPECT_FALSE(std::filesystem::exists(temp));
        EXPECT_EQ(0, AddLibraryRef(0));
    }
    {
        MailStore store;
        mailtest::StubLibrary missing("stub_not_there.dll");
        MAILREADER_HANDLE h = reinterpret_cast<MAILREADER_HANDLE>(1);
        EXPECT_EQ(-3, MailReader_Open(&h));
        EXPECT_EQ(nullptr, h);
        int32_t installed = 9;
        EXPECT_EQ(-3, MailReader_IsInstalled(&installed));
        EXPECT_EQ(9, installed);
        EXPECT_EQ(0, AddLibraryRef(0));
    }
}

}  // namespace
