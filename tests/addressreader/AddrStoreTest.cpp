// AddrStoreTest.cpp - address stores in a Wine prefix built in code: the
// users found and their names, a book's life, the files of a book.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "AddrTestUtil.h"
#include "support/SampleStore.h"

namespace {

const char kExe[] = "C:\\Program Files\\AL-Mail\\AlMail.exe";
const char kUninst[] = "C:\\Program Files\\AL-Mail\\Uninst.inf";
const std::string kStart = "C:\\windows\\ｽﾀｰﾄ ﾒﾆｭｰ\\ﾌﾟﾛｸﾞﾗﾑ\\AL-Mail\\";
const std::string kMailbox = "C:\\Users\\taro\\Mailbox";

// Users are named by their shortcut, else by the first account's title, else
// by a fixed name. (Discovery itself is the mail reader's, tested there.)
TEST(AddrStore, UsersFoundAndNamed) {
    using W = qvt::StoreWriter;
    struct Case { const char* name; void (*build)(qvt::WinePrefix&); int32_t open; bool reader;
                  std::vector<std::string> users; } cases[] = {
        {"installed but no user", [](qvt::WinePrefix& p) { W(p).Install(kExe); W(p).Uninst(kUninst, {"[Mailboxes]"}); },
         -3, false, {}},
        {"installation file gone, user found", [](qvt::WinePrefix& p) {
             p.SetHklm("Software\\CREAR\\AL-Mail", "InstallPath", kExe);
             W(p).RegistryMailbox("C:\\Users\\taro\\");
         }, -3, true, {"AL-Mail User"}},
        {"shortcut, title, empty title", [](qvt::WinePrefix& p) {
             W w(p);
             w.Install(kExe);
             w.RegistryMailbox("C:\\Users\\taro");
             w.Shortcut(kStart + "太郎.lnk", "\"C:\\Users\\taro\"");
             w.Account(kMailbox + "\\Account1", "not this");
             for (const char* user : {"jiro", "none"}) w.Mailbox("C:\\Users\\" + std::string(user) + "\\Mailbox");
             w.Account("C:\\Users\\jiro\\Mailbox\\Account1", "次郎");
             w.Text("C:\\Users\\none\\Mailbox\\Account1\\Account.ini", {"[Property]", "Title="});
             w.Uninst(kUninst, {"[Files]", kStart + "太郎.lnk=", "[Mailboxes]", "C:\\Users\\jiro\\Mailbox=",
                                "C:\\Users\\none\\Mailbox="});
         }, 0, true, {"太郎", "次郎", "AL-Mail User"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        qvt::WinePrefix prefix;
        c.build(prefix);
        prefix.WriteFile(kMailbox + "\\Address", "k: a@example.jp, b@example.jp\n");
        ADDRREADER_HANDLE hReader = &hReader;
        EXPECT_EQ(c.open, AddrReader_Open(&hReader));
        EXPECT_EQ(c.reader, hReader != nullptr);
        if (hReader == nullptr) continue;
        int32_t n = 0;
        EXPECT_EQ(0, AddrReader_GetUserCount(hReader, &n));
        std::vector<std::string> names;
        ADDROBJECT_HANDLE hUser = nullptr, hBook = nullptr, hBook2 = nullptr;
        for (int32_t i = n - 1; i >= 0; --i) {
            QvV4Value v;
            QvV4Value_Init(&v);
            EXPECT_EQ(0, AddrReader_GetUser(hReader, i, &hUser));
            EXPECT_EQ(0, AddrReader_GetName(hReader, hUser, &v));
            names.insert(names.begin(), addrtest::Text(v));
            QvV4Value_Release(&v);
        }
        EXPECT_EQ(c.users, names);
        // Each opening builds a book of its own, and a book outlives its reader.
        EXPECT_EQ(0, AddrReader_OpenBook(hReader, hUser, 7, &hBook));
        EXPECT_EQ(0, AddrReader_OpenBook(hReader, hUser, 7, &hBook2));
        EXPECT_NE(hBook, hBook2);
        EXPECT_EQ(0, AddrReader_CloseBook(hReader, hUser, 7, hBook2));
        hUser = &n;
        EXPECT_EQ(-3, AddrReader_GetUser(hReader, n, &hUser));
        EXPECT_EQ(&n, hUser);
        EXPECT_EQ(0, AddrReader_Close(hReader));
        EXPECT_EQ(0, AddrReader_GetItemCount(nullptr, hBook, &n));
        EXPECT_EQ(2, n);
        EXPECT_EQ(0, AddrReader_CloseBook(nullptr, nullptr, 0, hBook));
    }
}

// The files of a book, listed in C:\lists. (The end-to-end sample book has
// the default file, a listed one, a missing one and a first entry with a star.)
TEST(AddrStore, BookFiles) {
    const std::string kSemis(2584, ';');
    const std::string damaged = "Group g\nGroup h\n" + std::string("\x01\xff\x85\0x", 5) + std::string(6000, 'w');
    // The contents of "<mailbox>\Address" and the AddressFile value; "" for none.
    struct Case { const char* name; std::string defaultFile, addressFile; std::vector<std::string> groups;
                  std::string flat; } cases[] = {
        {"listed files in order, missing, dangling and directory passed over", "d: 1\n",
         "*C:\\lists\\b;C:\\lists\\a.txt;C:\\lists\\missing.txt;;C:\\lists;C:\\lists\\dangling;C:\\lists\\b",
         {"標準のアドレス帳", "a.txt", "b"}, "d=1;a=2;b=3;"},
        {"a single byte is no list", "", "x", {}, ""},
        {"forward slashes", "", "C:/lists/a.txt", {"a.txt"}, "a=2;"},
        {"trail byte 0x5C is no separator", "", "C:\\lists\\表.txt", {"表.txt"}, "h=5;"},
        {"2,598 bytes read once", "", kSemis + "C:\\lists\\a.txt", {"a.txt"}, "a=2;"},
        {"2,599 bytes read again", "", kSemis + ";C:\\lists\\a.txt", {"a.txt"}, "a=2;"},
        {"cut at 65,535 bytes", "", std::string(65530, ';') + "C:\\lists\\a.txt", {}, ""},
        {"a damaged file is read as the parser reads it, the next file still comes", damaged,
         "C:\\lists\\a.txt", {"標準のアドレス帳", "a.txt"}, addrtest::Flat(*addrtest::Parse(damaged).book) + "a=2;"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        qvt::WinePrefix prefix;
        if (!c.defaultFile.empty()) prefix.WriteFile(kMailbox + "\\Address", c.defaultFile);
        if (!c.addressFile.empty()) qvt::StoreWriter(prefix).Mailbox(kMailbox, c.addressFile);
        prefix.WriteFile("C:\\lists\\a.txt", "a: 2\r\n");
        prefix.WriteFile("C:\\lists\\b", "b: 3");
        prefix.WriteFile("C:\\lists\\表.txt", "h: 5\n");
        // A link to nothing, where the machine has links: listed, but it cannot be opened.
        std::error_code noLinks;
        std::filesystem::create_symlink(qvt::HostFile(prefix.HostPath("C:\\lists\\gone")),
                                        qvt::HostFile(prefix.HostPath("C:\\lists\\dangling")), noLinks);
        CAddrBook book(kMailbox.c_str());
        EXPECT_EQ(0, book.Load());
        std::vector<std::string> groups;
        for (int32_t i = 0; i < book.GroupCount(); ++i) groups.push_back(qvt::Utf8(book.GroupAt(i)->Name()));
        EXPECT_EQ(c.groups, groups);
        EXPECT_EQ(c.flat, addrtest::Flat(book));
    }
}

}  // namespace
