// test_tree.cpp - accounts and folders through the flat functions: folder
// forms, lazy opening, names, the root token, and the reader's own life. (The
// sample store has the plain inbox, outbox and trash forms, sub-folders, and
// accounts without title or settings.)
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "MailFixture.h"
#include "mailreader/CMailReader.h"
#include "mailreader/MailReaderApi.h"

namespace {

using mailtest::Count;
using mailtest::DisplayName;
using mailtest::Name;
using mailtest::Rec;
using mailtest::Sjis;

const std::string kBox = "C:\\Users\\taro\\Mailbox";
const std::string kAcc = kBox + "\\Account1";

TEST(Tree, AccountsFoldersAndTheRoot) {
    mailtest::MailStore s("C:\\Users\\taro");
    s.Account(kAcc, "仕事/会社#1");
    s.WriteFile(kBox + "\\Account3", "[Property]\r\nTitle=T\r\n");  // a file is no account
    s.WriteFile(kAcc + "\\myinbox.box\\Entry.lst", "00000001=\r\n");  // not looked at without Entry.ini
    // "Type=Subfolder" counts as the start of any line in any section, case and all.
    s.Text(kAcc + "\\folder1.box\\Entry.ini", {"[Property]", "Title=Folder/One", "[Other]", "Type=SubfolderXYZ"});
    s.WriteFile(kAcc + "\\folder1.box\\Entry.lst", "00000001=\r\n");
    s.MakeDir(kAcc + "\\folder1.box\\sub1.box");
    s.Text(kAcc + "\\blank.box\\Entry.ini", {"[Property]", "Title=Blank", " Type=Subfolder", "type=subfolder"});
    s.WriteFile(kAcc + "\\blank.box\\Entry.lst", "00000001=\r\n");
    s.MakeDir(kAcc + "\\oldtrash.box");  // an index file must be a file
    s.WriteFile(kAcc + "\\plain.box", "x");
    mailtest::Reader reader;
    MAILREADER_HANDLE h = reader.h;
    MAILRECORD_HANDLE user = Rec(MailReader_GetUser, h, 0), acc = Rec(MailReader_GetAccount, h, user, 0);
    EXPECT_EQ("0:1", Count(MailReader_GetAccountCount, h, user));
    MAILRECORD_HANDLE none = reinterpret_cast<MAILRECORD_HANDLE>(1);
    EXPECT_EQ(-3, MailReader_GetAccount(h, user, 1, &none));
    EXPECT_EQ(nullptr, none);
    EXPECT_EQ("0:" + Sjis("仕事%2f会社%231"), DisplayName(h, acc));  // the title, escaped
    EXPECT_EQ("0:5", Count(MailReader_GetFolderCount, h, acc));
    EXPECT_EQ(-3, MailReader_GetFolder(h, acc, 5, &none));
    EXPECT_EQ(-3, MailReader_GetFolder(h, acc, -1, &none));

    // A folder opens when first asked for; one that fails to open is handed
    // out again, with success, titled or not.
    const struct { const char* entry; int32_t first; std::string name; const char *folders, *messages; } cases[] = {
        {"blank.box", 0, "0:Blank", "0:0", "0:1"}, {"folder1.box", 0, "0:Folder%2fOne", "0:1", "0:0"},
        {"myinbox.box", 0, "0:郵便受け", "0:0", "0:0"}, {"oldtrash.box", -3, "0:ごみ箱", "0:0", "0:0"},
        {"plain.box", -3, "-3:", "0:0", "0:0"},
    };
    CMailBox* box = static_cast<CMailBox*>(static_cast<CMailNamed*>(acc));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.entry);
        int32_t index = 0;
        while (index < box->FolderCount() && std::string(c.entry) != box->FolderAt(index)->szName) ++index;
        MAILRECORD_HANDLE folder = nullptr, again = nullptr;
        EXPECT_EQ(c.first, MailReader_GetFolder(h, acc, index, &folder));
        ASSERT_NE(nullptr, folder);
        EXPECT_EQ(0, MailReader_GetFolder(h, acc, index, &again));
        EXPECT_EQ(folder, again);
        EXPECT_EQ(Sjis(c.name), Name(h, folder));
        EXPECT_EQ("-3:", DisplayName(h, folder));
        EXPECT_EQ(c.folders, Count(MailReader_GetFolderCount, h, folder));
        EXPECT_EQ(c.messages, Count(MailReader_GetMessageCount, h, folder));
    }

    // The root token, and a copy of the tag that stands for it: no folders.
    MAILRECORD_HANDLE root = reinterpret_cast<MAILRECORD_HANDLE>(static_cast<intptr_t>(-1));
    EXPECT_EQ("0:ROOT", Name(h, root));
    char tag[] = "CMLNOA User Handle";
    EXPECT_EQ("-3:-1", Count(MailReader_GetFolderCount, h, tag));
    EXPECT_EQ(-2, MailReader_GetFolder(h, tag, 0, &none));
    EXPECT_EQ(-2, MailReader_GetFolder(h, root, 0, &none));
    EXPECT_EQ(nullptr, none);
    EXPECT_EQ("-2:", Name(h, nullptr));
}

// A null reader handle is refused with -3 and nothing written.
TEST(MailReaderApi, NullReader) {
    char record[1100] = {};
    MAILRECORD_HANDLE out = nullptr;
    EXPECT_EQ(-3, MailReader_Close(nullptr));
    EXPECT_EQ("-3:", Name(nullptr, record));
    EXPECT_EQ("-3:-1", Count(MailReader_GetUserCount, nullptr));
    EXPECT_EQ(-3, MailReader_GetFolder(nullptr, record, 0, &out));
    EXPECT_EQ(-3, MailReader_CloseMessages(nullptr, record));
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(0, record[0]);
}

// "%" stays; a double-byte character is copied whole, a lead byte last ends
// the text, and single-byte katakana are no lead bytes.
TEST(MailReaderApi, EscapeName) {
    const std::pair<std::string, std::string> cases[] = {
        {"100%#\x95\x5C\\\x83\x5C", "100%%23\x95\x5C%5c\x83\x5C"}, {"\xBD\xC0/", "\xBD\xC0%2f"}, {"ab\x95", "ab\x95"}};
    for (const auto& c : cases) EXPECT_EQ(c.second, EscapeRecordName(c.first)) << c.first;
}

// Two readers share the library; closing a reader of an installation
// removes a file of the temp file's name.
TEST(MailReaderApi, OpenCloseAndInstalled) {
    // install: 0 nothing, 1 InstallPath and its file, 2 InstallPath alone
    struct Case { int install; const char* library; int32_t result, installed; };
    for (const Case& c : {Case{0, "sNqxMsgNet.dll", 0, 0}, Case{1, "sNqxMsgNet.dll", 0, 1},
                          Case{2, "sNqxMsgNet.dll", 0, 0}, Case{0, "stub_not_there.dll", -3, 9}}) {
        SCOPED_TRACE(testing::Message() << c.library << " " << c.install);
        qvt::WinePrefix store;
        const std::string temp = store.Root() + "/tmp";
        std::filesystem::create_directories(qvt::HostFile(temp));
        qvt::ScopedEnv scopedTemp(qvt::machine::TempVariable(), temp);
        if (c.install != 0) qvt::StoreWriter(store).Install(mailtest::kInstallPath);
        if (c.install == 2) store.Remove(mailtest::kInstallPath);
        mailtest::StubLibrary library(c.library);
        int32_t installed = 9;
        EXPECT_EQ(c.result, MailReader_IsInstalled(&installed));
        EXPECT_EQ(c.installed, installed);
        qvt::WriteHostFile(temp + "/IBQVALM.tmp", "left over");
        {
            mailtest::Reader reader, second;
            EXPECT_EQ(c.result, reader.result);
            EXPECT_EQ(c.result == 0, reader.h != nullptr);  // a failed open leaves no handle
            EXPECT_EQ(c.result, second.result);
            EXPECT_EQ(c.result == 0 ? "0:0" : "-3:-1", Count(MailReader_GetUserCount, reader.h));  // no users
        }
        EXPECT_EQ(c.install == 0, std::filesystem::exists(qvt::HostFile(temp + "/IBQVALM.tmp")));
        EXPECT_EQ(0, AddLibraryRef(0));
    }
}

}  // namespace
