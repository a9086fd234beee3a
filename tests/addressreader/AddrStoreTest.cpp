// AddrStoreTest.cpp - address stores in a Wine prefix built in code: the
// users found and their names, the files of a book, and one walk through the
// flat functions.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "AddrTestUtil.h"
#include "addressreader/AddrReader.h"
#include "support/WinePrefix.h"

namespace {

const char kKey[] = "Software\\CREAR\\AL-Mail";
const char kInstallDir[] = "C:\\Program Files\\AL-Mail";
const std::string kMailbox = "C:\\Users\\taro\\Mailbox";

// A prefix with the mail client installed, and the uninstall file with its
// shortcut lines and "[Mailboxes]" section.
struct StoreBuilder {
    StoreBuilder() {
        prefix.SetHklm(kKey, "InstallPath", std::string(kInstallDir) + "\\AL-Mail32.exe");
        prefix.WriteFile(std::string(kInstallDir) + "\\AL-Mail32.exe", "MZ");
    }
    void RegistryUser(const std::string& parent) { prefix.SetHkcu(kKey, "MailboxPath", parent); }
    // A start-menu shortcut whose arguments are the parent of a mailbox.
    void Shortcut(const std::string& name, const std::string& arguments) {
        std::string lnk = "C:\\windows\\ｽﾀｰﾄ ﾒﾆｭｰ\\ﾌﾟﾛｸﾞﾗﾑ\\AL-Mail\\" + name + ".lnk";
        prefix.WriteFile(lnk, qvt::MakeShortcut(arguments, true));
        shortcuts += lnk + "=\r\n";
    }
    void SectionUser(const std::string& directory, const std::string& title = "") {
        prefix.WriteFile(directory + "\\Mailbox.ini", "[Property]\r\n");
        if (!title.empty()) Account(directory, title);
        section += directory + "=\r\n";
    }
    void Account(const std::string& directory, const std::string& titleLine) {
        prefix.WriteFile(directory + "\\Account1\\Account.ini", qvt::Cp932("[Property]\r\n" + titleLine + "\r\n"));
    }
    void WriteUninst() {
        prefix.WriteFile(std::string(kInstallDir) + "\\Uninst.inf",
                         qvt::Cp932("[Files]\r\n" + shortcuts + "[Mailboxes]\r\n" + section));
    }
    qvt::WinePrefix prefix;
    std::string shortcuts, section;
};

std::string Name(ADDROBJECT_HANDLE h) {
    QvV4Value v;
    QvV4Value_Init(&v);
    EXPECT_EQ(0, AddrReader_GetName(nullptr, h, &v));
    std::string name = v.pData != nullptr ? qvt::Utf8(static_cast<const char*>(v.pData)) : "<null>";
    QvV4Value_Release(&v);
    return name;
}

TEST(AddrStore, UsersFoundAndNamed) {
    using S = StoreBuilder;
    struct Case { const char* name; void (*build)(S&); int32_t open; bool reader; std::vector<std::string> users; }
    cases[] = {
        {"no registry at all", [](S& s) { s.prefix.SetRawRegistry(true, "WINE REGISTRY Version 2\n"); }, -3, false, {}},
        {"installed but no user", [](S& s) { s.WriteUninst(); }, -3, false, {}},
        {"registry user alone", [](S& s) { s.RegistryUser("C:\\Users\\taro"); }, 0, true, {"AL-Mail User"}},
        {"installation file gone, user found", [](S& s) {
             s.prefix.Remove(std::string(kInstallDir) + "\\AL-Mail32.exe");
             s.RegistryUser("C:\\Users\\taro\\");
         }, -3, true, {"AL-Mail User"}},
        {"shortcut names the registry user", [](S& s) {
             s.RegistryUser("C:\\Users\\taro");
             s.Shortcut("太郎", "\"C:\\Users\\taro\"");
             s.Account(kMailbox, "Title=not this");
         }, 0, true, {"太郎"}},
        {"account title, empty title, fallback", [](S& s) {
             s.SectionUser("C:\\Users\\jiro\\Mailbox", "Title=次郎");
             s.SectionUser("C:\\Users\\empty\\Mailbox", "Title=");
             s.SectionUser("C:\\Users\\none\\Mailbox");
         }, 0, true, {"次郎", "AL-Mail User", "AL-Mail User"}},
        {"one shortcut names only the first of two equal directories", [](S& s) {
             s.Shortcut("Hanako", "C:\\Users\\hanako");
             s.SectionUser("C:\\Users\\hanako\\Mailbox", "Title=second");
             s.SectionUser("C:\\Users\\hanako\\Mailbox", "Title=second");
         }, 0, true, {"Hanako", "second"}},
        {"registry user first, its section line not twice", [](S& s) {
             s.RegistryUser("C:\\Users\\taro");
             s.SectionUser("C:\\Users\\jiro\\Mailbox", "Title=Jiro");
             s.Account(kMailbox, "Title=Taro");
             s.section += "c:\\users\\TARO\\Mailbox=\r\n";
         }, 0, true, {"Taro", "Jiro"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        StoreBuilder store;
        c.build(store);
        if (!store.section.empty() || !store.shortcuts.empty()) store.WriteUninst();  // lines listed
        ADDRREADER_HANDLE hReader = &hReader;
        EXPECT_EQ(c.open, AddrReader_Open(&hReader));
        EXPECT_EQ(c.reader, hReader != nullptr);
        if (hReader == nullptr) continue;
        int32_t n = 0;
        EXPECT_EQ(0, AddrReader_GetUserCount(hReader, &n));
        std::vector<std::string> names;
        ADDROBJECT_HANDLE hUser = nullptr;
        for (int32_t i = 0; i < n; ++i) {
            EXPECT_EQ(0, AddrReader_GetUser(hReader, i, &hUser));
            names.push_back(Name(hUser));
        }
        EXPECT_EQ(c.users, names);
        hUser = &n;
        EXPECT_EQ(-3, AddrReader_GetUser(hReader, n, &hUser));
        EXPECT_EQ(&n, hUser);
        EXPECT_EQ(0, AddrReader_Close(hReader));
    }
}

// The files of a book. Lists live in C:\lists; "C:\work" is the current
// directory, for relative entries.
TEST(AddrStore, BookFiles) {
    const std::string kSemis(2584, ';');
    // Deep unclosed nesting, binary bytes and a 1 MiB line without line end.
    std::string damaged;
    for (int i = 0; i < 20000; ++i) damaged += "Group g\n";
    for (int i = 0; i < 4096; ++i) damaged += static_cast<char>((i * 131) % 256 == 0x1A ? 0 : (i * 131) % 256);
    damaged += std::string(1u << 20, 'w');
    // defaultFile: "<mailbox>\Address" or "" for none; addressFile: the
    // AddressFile value (UTF-8) or "" for no Mailbox.ini.
    struct Case { const char* name; std::string defaultFile, addressFile; std::vector<std::string> groups;
                  std::string flat; } cases[] = {
        {"neither file", "", "", {}, ""},
        {"default file only", "d: 1\n", "", {"標準のアドレス帳"}, "d=1;"},
        {"listed files in order, missing, dangling and directory passed over", "d: 1\n",
         "C:\\lists\\a.txt;C:\\lists\\missing.txt;;C:\\lists;C:\\lists\\dangling;C:\\lists\\b",
         {"標準のアドレス帳", "a.txt", "b"}, "d=1;a=2;b=3;"},
        {"first entry with a star is dropped", "", "*C:\\lists\\a.txt;C:\\lists\\b", {"b"}, "b=3;"},
        {"a later star entry is kept", "", "C:\\lists\\b;*C:\\lists\\a.txt", {"b"}, "b=3;"},
        {"a single byte is no list", "", "x", {}, ""},
        {"relative to the current directory", "", ";rel.txt;", {"rel.txt"}, "r=4;"},
        {"the default file again", "d: 1\n", kMailbox + "\\Address", {"標準のアドレス帳", "Address"}, "d=1;d=1;"},
        {"forward slashes", "", "C:/lists/a.txt", {"a.txt"}, "a=2;"},
        {"trail byte 0x5C is no separator", "", "C:\\lists\\表.txt", {"表.txt"}, "h=5;"},
        {"2,598 bytes read once", "", kSemis + "C:\\lists\\a.txt", {"a.txt"}, "a=2;"},
        {"2,599 bytes read again", "", kSemis + ";C:\\lists\\a.txt", {"a.txt"}, "a=2;"},
        {"a damaged file is read as the parser reads it, the next file still comes", damaged,
         "C:\\lists\\a.txt", {"標準のアドレス帳", "a.txt"}, addrtest::Flat(*addrtest::Parse(damaged).book) + "a=2;"},
        {"cut at 65,535 bytes", "", std::string(65530, ';') + "C:\\lists\\a.txt", {}, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        qvt::WinePrefix prefix;
        if (!c.defaultFile.empty()) prefix.WriteFile(kMailbox + "\\Address", c.defaultFile);
        if (!c.addressFile.empty()) {
            prefix.WriteFile(kMailbox + "\\Mailbox.ini",
                             qvt::Cp932("[Property]\r\nAddressFile=" + c.addressFile + "\r\n"));
        }
        prefix.WriteFile("C:\\lists\\a.txt", "a: 2\r\n");
        prefix.WriteFile("C:\\lists\\b", "b: 3");
        prefix.WriteFile("C:\\lists\\表.txt", "h: 5\n");
        prefix.WriteFile("C:\\work\\rel.txt", "r: 4\n");
        prefix.WriteFile("C:\\work\\x", "x: 6\n");
        // A link to nothing, where the machine has links: listed, but it cannot be opened.
        std::error_code noLinks;
        std::filesystem::create_symlink(qvt::HostFile(prefix.HostPath("C:\\lists\\gone")),
                                        qvt::HostFile(prefix.HostPath("C:\\lists\\dangling")), noLinks);
        const std::filesystem::path oldCwd = std::filesystem::current_path();
        std::filesystem::current_path(qvt::HostFile(prefix.HostPath("C:\\work")));
        CAddrBook book(kMailbox.c_str());
        EXPECT_EQ(0, book.Load());
        std::filesystem::current_path(oldCwd);
        std::vector<std::string> groups;
        for (int32_t i = 0; i < book.GroupCount(); ++i) groups.push_back(qvt::Utf8(book.GroupAt(i)->Name()));
        EXPECT_EQ(c.groups, groups);
        EXPECT_EQ(c.flat, addrtest::Flat(book));
        EXPECT_EQ("", addrtest::CheckInvariants(book));
    }
}

// From the reader down to an item, two books of one user open at once, and a
// book closed after its reader.
TEST(AddrStore, WalkThroughTheFlatFunctions) {
    StoreBuilder store;
    store.RegistryUser("C:\\Users\\taro");
    store.prefix.WriteFile(kMailbox + "\\Address",
                           qvt::Cp932("Group 友人\nはなこ: hanako@example.jp, hana@example.jp\nEnd Group\n"));
    ADDRREADER_HANDLE hReader = nullptr;
    ASSERT_EQ(0, AddrReader_Open(&hReader));
    int32_t n = 0;
    EXPECT_EQ(0, AddrReader_IsInstalled(hReader, &n));
    EXPECT_EQ(1, n);
    ADDROBJECT_HANDLE hUser = nullptr, hBook = nullptr, hBook2 = nullptr, hGroup = nullptr, hItem = nullptr;
    ASSERT_EQ(0, AddrReader_GetUser(hReader, 0, &hUser));
    ASSERT_EQ(0, AddrReader_OpenBook(hReader, hUser, 7, &hBook));
    ASSERT_EQ(0, AddrReader_OpenBook(hReader, hUser, 7, &hBook2));
    EXPECT_NE(hBook, hBook2);
    EXPECT_EQ("アドレス帳", Name(hBook));
    hGroup = hBook;
    for (const char* name : {"標準のアドレス帳", "友人", "はなこ"}) {
        ASSERT_EQ(0, AddrReader_GetGroup(hReader, hGroup, 0, &hGroup));
        EXPECT_EQ(name, Name(hGroup));
    }
    EXPECT_EQ(0, AddrReader_GetItemCount(hReader, hGroup, &n));
    EXPECT_EQ(2, n);
    ASSERT_EQ(0, AddrReader_GetItem(hReader, hBook, 1, &hItem));
    ASSERT_EQ(0, AddrReader_FindProperty(hReader, hBook, u"EMAIL;INTERNET", &n));
    QvV4Value v;
    QvV4Value_Init(&v);
    QvV4Value_SetKind(&v, 2);
    ASSERT_EQ(0, AddrReader_GetItemProperty(hReader, hItem, n, &v));
    EXPECT_EQ(std::u16string(u"hana@example.jp"), static_cast<const char16_t*>(v.pData));
    QvV4Value_Release(&v);
    EXPECT_EQ(0, AddrReader_CloseBook(hReader, hUser, 7, hBook2));
    EXPECT_EQ(0, AddrReader_Close(hReader));
    EXPECT_EQ(0, AddrReader_GetItemCount(nullptr, hBook, &n));
    EXPECT_EQ(2, n);
    EXPECT_EQ(0, AddrReader_CloseBook(nullptr, nullptr, 0, hBook));
}

}  // namespace
