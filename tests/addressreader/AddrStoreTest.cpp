// AddrStoreTest.cpp - address stores on disk in a Wine prefix built in code:
// the users that the address side finds and their names, the files that make
// up a book, and one walk through the flat functions.
#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "AddrTestUtil.h"
#include "addressreader/AddrReader.h"
#include "support/WinePrefix.h"

namespace {

const char kKey[] = "Software\\CREAR\\AL-Mail";
const char kInstallDir[] = "C:\\Program Files\\AL-Mail";
const char kMailbox[] = "C:\\Users\\taro\\Mailbox";

// A prefix with the mail client installed: InstallPath and its file, and the
// uninstall file with its shortcut lines and "[Mailboxes]" section.
class StoreBuilder {
public:
    explicit StoreBuilder(bool bInstalledFile = true) {
        std::string exe = std::string(kInstallDir) + "\\AL-Mail32.exe";
        prefix.SetHklm(kKey, "InstallPath", exe);
        if (bInstalledFile) prefix.WriteFile(exe, "MZ");
    }
    void RegistryUser(const std::string& parent) { prefix.SetHkcu(kKey, "MailboxPath", parent); }
    // A start-menu shortcut named name.lnk whose arguments are the parent of
    // a mailbox directory.
    void Shortcut(const std::string& name, const std::string& arguments) {
        std::string lnk = "C:\\windows\\ｽﾀｰﾄ ﾒﾆｭｰ\\ﾌﾟﾛｸﾞﾗﾑ\\AL-Mail\\" + name + ".lnk";
        prefix.WriteFile(lnk, qvt::MakeShortcut(arguments, true));
        shortcuts += lnk + "=\r\n";
    }
    // A mailbox directory listed in the section, with its Mailbox.ini.
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
    std::string shortcuts;
    std::string section;
};

std::string Name(ADDROBJECT_HANDLE h) {
    QvV4Value v;
    QvV4Value_Init(&v);
    EXPECT_EQ(0, AddrReader_GetName(nullptr, h, &v));
    return qvt::Utf8(addrtest::Text8(v));
}

// Opens a reader and lists its users' names; -3 readers give what they have.
std::vector<std::string> UserNames(int32_t* pnOpen, bool* pbReader) {
    ADDRREADER_HANDLE hReader = &hReader;
    *pnOpen = AddrReader_Open(&hReader);
    *pbReader = hReader != nullptr;
    std::vector<std::string> names;
    if (hReader == nullptr) return names;
    int32_t n = 0;
    EXPECT_EQ(0, AddrReader_GetUserCount(hReader, &n));
    for (int32_t i = 0; i < n; ++i) {
        ADDROBJECT_HANDLE hUser = nullptr;
        EXPECT_EQ(0, AddrReader_GetUser(hReader, i, &hUser));
        names.push_back(Name(hUser));
    }
    ADDROBJECT_HANDLE hUser = &n;
    EXPECT_EQ(-3, AddrReader_GetUser(hReader, n, &hUser));
    EXPECT_EQ(&n, hUser);
    EXPECT_EQ(0, AddrReader_Close(hReader));
    return names;
}

struct UserCase {
    const char* name;
    void (*build)(StoreBuilder&);
    int32_t open;
    bool reader;
    std::vector<std::string> users;
};

void PrintTo(const UserCase& c, std::ostream* os) { *os << c.name; }

const UserCase kUsers[] = {
    {"no registry at all", [](StoreBuilder& s) { s.prefix.SetRawRegistry(true, "WINE REGISTRY Version 2\n"); },
     -3, false, {}},
    {"installed but no user", [](StoreBuilder& s) { s.WriteUninst(); }, -3, false, {}},
    {"registry user without shortcut or account", [](StoreBuilder& s) { s.RegistryUser("C:\\Users\\taro"); }, 0,
     true, {"AL-Mail User"}},
    {"installation file gone, user found",
     [](StoreBuilder& s) {
         s.prefix.Remove(std::string(kInstallDir) + "\\AL-Mail32.exe");
         s.RegistryUser("C:\\Users\\taro\\");
     },
     -3, true, {"AL-Mail User"}},
    {"shortcut names the registry user",
     [](StoreBuilder& s) {
         s.RegistryUser("C:\\Users\\taro");
         s.Shortcut("太郎", "\"C:\\Users\\taro\"");
         s.Account(kMailbox, "Title=not this");
         s.WriteUninst();
     },
     0, true, {"太郎"}},
    {"account title, empty title, fallback",
     [](StoreBuilder& s) {
         s.SectionUser("C:\\Users\\jiro\\Mailbox", "Title=次郎");
         s.SectionUser("C:\\Users\\empty\\Mailbox", "Title=");
         s.SectionUser("C:\\Users\\none\\Mailbox");
         s.WriteUninst();
     },
     0, true, {"次郎", "AL-Mail User", "AL-Mail User"}},
    {"one shortcut names only the first of two equal directories",
     [](StoreBuilder& s) {
         s.Shortcut("Hanako", "C:\\Users\\hanako");
         s.SectionUser("C:\\Users\\hanako\\Mailbox", "Title=second");
         s.SectionUser("C:\\Users\\hanako\\Mailbox", "Title=second");
         s.WriteUninst();
     },
     0, true, {"Hanako", "second"}},
    {"registry user first, its section line not twice",
     [](StoreBuilder& s) {
         s.RegistryUser("C:\\Users\\taro");
         s.SectionUser("C:\\Users\\jiro\\Mailbox", "Title=Jiro");
         s.Account(kMailbox, "Title=Taro");
         s.section += "c:\\users\\TARO\\Mailbox=\r\n";
         s.WriteUninst();
     },
     0, true, {"Taro", "Jiro"}},
};

class AddrUsers : public ::testing::TestWithParam<UserCase> {};

TEST_P(AddrUsers, FoundAndNamed) {
    const UserCase& c = GetParam();
    StoreBuilder store;
    c.build(store);
    int32_t nOpen = 0;
    bool bReader = false;
    std::vector<std::string> names = UserNames(&nOpen, &bReader);
    EXPECT_EQ(c.open, nOpen);
    EXPECT_EQ(c.reader, bReader);
    EXPECT_EQ(c.users, names);
}

INSTANTIATE_TEST_SUITE_P(Cases, AddrUsers, ::testing::ValuesIn(kUsers),
                         addrtest::ParamName<::testing::TestParamInfo<UserCase>>);

// The files of a book. Lists live in C:\lists; "C:\work" is the current
// directory, for relative entries.
struct BookCase {
    const char* name;
    bool bDefault;           // write "<mailbox>\Address"
    std::string addressFile;  // the AddressFile value (UTF-8), or "" for no Mailbox.ini
    std::vector<std::string> groups;
    const char* flat;
};

void PrintTo(const BookCase& c, std::ostream* os) { *os << c.name; }

std::string Semicolons(size_t n) { return std::string(n, ';'); }

const BookCase kBooks[] = {
    {"neither file", false, "", {}, ""},
    {"default file only", true, "", {"標準のアドレス帳"}, "d=1;"},
    {"listed files in order, missing, dangling and directory passed over", true,
     "C:\\lists\\a.txt;C:\\lists\\missing.txt;;C:\\lists;C:\\lists\\dangling;C:\\lists\\b",
     {"標準のアドレス帳", "a.txt", "b"}, "d=1;a=2;b=3;"},
    {"first entry with a star is dropped", false, "*C:\\lists\\a.txt;C:\\lists\\b", {"b"}, "b=3;"},
    {"only the first entry", false, "C:\\lists\\b;*C:\\lists\\a.txt", {"b"}, "b=3;"},
    {"only a star entry", true, "*C:\\lists\\a.txt", {"標準のアドレス帳"}, "d=1;"},
    {"semicolons only", false, ";;;;", {}, ""},
    {"a single byte is no list", false, "x", {}, ""},
    {"relative to the current directory", false, ";rel.txt;", {"rel.txt"}, "r=4;"},
    {"the default file again", true, "C:\\Users\\taro\\Mailbox\\Address", {"標準のアドレス帳", "Address"},
     "d=1;d=1;"},
    {"forward slashes", false, "C:/lists/a.txt", {"a.txt"}, "a=2;"},
    {"trail byte 0x5C is no separator", false, "C:\\lists\\表.txt", {"表.txt"}, "h=5;"},
    {"2,599 bytes read again", false, Semicolons(2585) + "C:\\lists\\a.txt", {"a.txt"}, "a=2;"},
    {"long value read again", false, Semicolons(5000) + "C:\\lists\\a.txt;C:\\lists\\b", {"a.txt", "b"},
     "a=2;b=3;"},
    {"2,598 bytes read once", false, Semicolons(2584) + "C:\\lists\\a.txt", {"a.txt"}, "a=2;"},
    {"cut at 65,535 bytes", false, Semicolons(65530) + "C:\\lists\\a.txt", {}, ""},
};

class AddrBooks : public ::testing::TestWithParam<BookCase> {};

TEST_P(AddrBooks, GroupsAndItems) {
    const BookCase& c = GetParam();
    qvt::WinePrefix prefix;
    if (c.bDefault) prefix.WriteFile(std::string(kMailbox) + "\\Address", "d: 1\n");
    if (!c.addressFile.empty()) {
        prefix.WriteFile(std::string(kMailbox) + "\\Mailbox.ini",
                         qvt::Cp932("[Property]\r\nAddressFile=" + c.addressFile + "\r\n"));
    }
    prefix.WriteFile("C:\\lists\\a.txt", "a: 2\r\n");
    prefix.WriteFile("C:\\lists\\b", "b: 3");
    prefix.WriteFile("C:\\lists\\表.txt", "h: 5\n");
    prefix.WriteFile("C:\\work\\rel.txt", "r: 4\n");
    prefix.WriteFile("C:\\work\\x", "x: 6\n");
    // A link to nothing: listed, but it cannot be opened.
    std::filesystem::create_symlink(prefix.HostPath("C:\\lists\\gone"), prefix.HostPath("C:\\lists\\dangling"));
    const std::filesystem::path oldCwd = std::filesystem::current_path();
    std::filesystem::current_path(prefix.HostPath("C:\\work"));

    CAddrBook book(kMailbox);
    EXPECT_EQ(0, book.Load());
    std::filesystem::current_path(oldCwd);

    std::vector<std::string> groups;
    for (int32_t i = 0; i < book.GroupCount(); ++i) groups.push_back(qvt::Utf8(book.GroupAt(i)->Name()));
    EXPECT_EQ(c.groups, groups);
    EXPECT_EQ(c.flat, addrtest::Flat(book));
    EXPECT_EQ("", addrtest::CheckInvariants(book));
}

INSTANTIATE_TEST_SUITE_P(Cases, AddrBooks, ::testing::ValuesIn(kBooks),
                         addrtest::ParamName<::testing::TestParamInfo<BookCase>>);

// A damaged default file (deep unclosed nesting, binary bytes, a long line
// without line end) is read as far as it goes, and the listed file behind it
// still comes.
TEST(AddrStore, DamagedFileDoesNotStopTheBook) {
    qvt::WinePrefix prefix;
    std::string bytes;
    for (int i = 0; i < 20000; ++i) bytes += "Group g\n";
    for (int i = 0; i < 4096; ++i) bytes += static_cast<char>((i * 131) % 256 == 0x1A ? 0 : (i * 131) % 256);
    bytes += std::string(1u << 20, 'w');
    prefix.WriteFile(std::string(kMailbox) + "\\Address", bytes);
    prefix.WriteFile(std::string(kMailbox) + "\\Mailbox.ini", "[Property]\r\nAddressFile=C:\\lists\\a.txt\r\n");
    prefix.WriteFile("C:\\lists\\a.txt", "a: 2\n");
    CAddrBook book(kMailbox);
    EXPECT_EQ(0, book.Load());
    ASSERT_EQ(2, book.GroupCount());
    EXPECT_STREQ("a.txt", book.GroupAt(1)->Name());
    EXPECT_STREQ("a", book.ItemAt(book.ItemCount() - 1)->Key());
    EXPECT_GT(book.ItemCount(), (1 << 20) / 5119);
    EXPECT_EQ("", addrtest::CheckInvariants(book));
}

// The flat functions from the reader down to an item, with two books of one
// user open at once, and a book closed after its reader.
TEST(AddrStore, WalkThroughTheFlatFunctions) {
    StoreBuilder store;
    store.RegistryUser("C:\\Users\\taro");
    store.prefix.WriteFile(std::string(kMailbox) + "\\Address",
                           qvt::Cp932("Group 友人\nはなこ: hanako@example.jp, hana@example.jp\nEnd Group\n"));
    ADDRREADER_HANDLE hReader = nullptr;
    ASSERT_EQ(0, AddrReader_Open(&hReader));
    int32_t bInstalled = 0;
    EXPECT_EQ(0, AddrReader_IsInstalled(hReader, &bInstalled));
    EXPECT_EQ(1, bInstalled);
    ADDROBJECT_HANDLE hUser = nullptr;
    ASSERT_EQ(0, AddrReader_GetUser(hReader, 0, &hUser));
    ADDROBJECT_HANDLE hBook = nullptr, hBook2 = nullptr;
    ASSERT_EQ(0, AddrReader_OpenBook(hReader, hUser, 7, &hBook));
    ASSERT_EQ(0, AddrReader_OpenBook(hReader, hUser, 7, &hBook2));
    EXPECT_NE(hBook, hBook2);
    EXPECT_EQ("アドレス帳", Name(hBook));

    ADDROBJECT_HANDLE hTop = nullptr, hFriends = nullptr, hComma = nullptr, hItem = nullptr;
    ASSERT_EQ(0, AddrReader_GetGroup(hReader, hBook, 0, &hTop));
    EXPECT_EQ("標準のアドレス帳", Name(hTop));
    ASSERT_EQ(0, AddrReader_GetGroup(hReader, hTop, 0, &hFriends));
    EXPECT_EQ("友人", Name(hFriends));
    ASSERT_EQ(0, AddrReader_GetGroup(hReader, hFriends, 0, &hComma));
    EXPECT_EQ("はなこ", Name(hComma));
    int32_t n = 0;
    EXPECT_EQ(0, AddrReader_GetItemCount(hReader, hComma, &n));
    EXPECT_EQ(2, n);
    ASSERT_EQ(0, AddrReader_GetItem(hReader, hBook, 1, &hItem));
    int32_t nProperty = -1;
    ASSERT_EQ(0, AddrReader_FindProperty(hReader, hBook, u"EMAIL;INTERNET", &nProperty));
    QvV4Value v;
    QvV4Value_Init(&v);
    QvV4Value_SetKind(&v, 2);
    ASSERT_EQ(0, AddrReader_GetItemProperty(hReader, hItem, nProperty, &v));
    EXPECT_EQ(std::u16string(u"hana@example.jp"), static_cast<const char16_t*>(v.pData));
    QvV4Value_Release(&v);

    EXPECT_EQ(0, AddrReader_CloseBook(hReader, hUser, 7, hBook2));
    EXPECT_EQ(0, AddrReader_Close(hReader));
    EXPECT_EQ(0, AddrReader_GetItemCount(nullptr, hBook, &n));
    EXPECT_EQ(2, n);
    EXPECT_EQ(0, AddrReader_CloseBook(nullptr, nullptr, 0, hBook));
}

}  // namespace
