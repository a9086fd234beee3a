// test_discovery.cpp - finding the installation and the users: registry
// values, the uninstall file, shortcuts, and the two profiles.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "MailFixture.h"
#include "mailreader/CMailReader.h"
#include "mailreader/Discovery.h"

namespace {

using mailtest::MailStore;
using Users = std::vector<std::pair<std::string, std::string>>;  // name, directory (UTF-8)
using Build = std::function<void(MailStore&)>;

const std::string kLnk = mailtest::kStartMenu;
const char kUninst[] = "C:\\Program Files\\AL-Mail\\Uninst.inf";

Users ReaderUsers(int32_t* pbInstalled) {
    CMailReader* pReader = nullptr;
    EXPECT_EQ(0, OpenReader(&pReader));
    Users users;
    if (pReader == nullptr) return users;
    *pbInstalled = pReader->IsInstalled();
    for (int32_t i = 0; i < pReader->m_nUsers; ++i) {
        CMailUser* pUser = nullptr;
        EXPECT_EQ(0, pReader->GetUser(i, &pUser));
        users.emplace_back(qvt::Utf8(pUser->m_szName), qvt::Utf8(pUser->m_szDirectory));
    }
    CMailUser* pNone = reinterpret_cast<CMailUser*>(1);
    EXPECT_EQ(-3, pReader->GetUser(pReader->m_nUsers, &pNone));
    EXPECT_EQ(nullptr, pNone);
    EXPECT_EQ(0, CloseReader(pReader));
    return users;
}

// A leading '$' stands for the start-menu folder.
std::string Lnk(const std::string& s) { return s.rfind('$', 0) == 0 ? kLnk + s.substr(1) : s; }

TEST(Discovery, MailUsers) {
    struct Case {
        const char* name;
        int install;                      // 0: no key, 1: InstallPath and its file, 2: InstallPath only
        const char* mailbox;              // MailboxPath, or none
        std::vector<std::string> uninst;  // lines of the uninstall file, or none
        std::vector<std::string> boxes;   // directories given a "Mailbox.ini"
        Users links;                      // Unicode shortcuts: path, arguments
        Users expected;
        int32_t installed;
        Build extra = nullptr;
        const char* installPath = mailtest::kInstallPath;
        const char* uninstPath = kUninst;
    };
    const Users registryUser = {{"DEFAULT_USER1", "C:\\U\\Mailbox"}};
    const Case cases[] = {
        {"no key", 0, nullptr, {}, {}, {}, {}, 0},
        {"trailing backslash dropped once", 1, "C:\\U\\", {}, {}, {}, registryUser, 1},
        {"empty mailbox path", 1, "", {}, {}, {}, {{"DEFAULT_USER1", "\\Mailbox"}}, 1},
        {"installed file missing: flag 0, discovery goes on", 2, "C:\\U", {}, {}, {}, registryUser, 0},
        {"no section: shortcuts still name the registry user", 1, "C:\\U", {"[Files]", "$Taro.lnk="}, {},
         {{"$Taro.lnk", "C:\\U"}}, {{"Taro", "C:\\U\\Mailbox"}}, 1},
        {"section lines, case-blind duplicates, a blank line ends them", 1, "C:\\Users\\Taro",
         {"[Mailboxes]", "c:\\users\\TARO\\Mailbox=", "C:\\M\\1\\Mailbox=", "C:\\M\\2\\Mailbox=", "C:\\M\\3\\MAILBOX=",
          "", "C:\\M\\4\\Mailbox="},
         {"C:\\Users\\taro\\Mailbox", "C:\\M\\1\\Mailbox", "C:\\M\\3\\Mailbox", "C:\\M\\4\\Mailbox"}, {},
         {{"DEFAULT_USER1", "C:\\Users\\Taro\\Mailbox"}, {"DEFAULT_USER2", "C:\\M\\1\\Mailbox"},
          {"DEFAULT_USER3", "C:\\M\\3\\MAILBOX"}}, 1},
        {"a new section header ends the section", 1, nullptr,
         {"[Mailboxes]", "C:\\M\\1\\Mailbox=", "[Other]", "C:\\M\\2\\Mailbox="}, {"C:\\M\\1\\Mailbox", "C:\\M\\2\\Mailbox"},
         {}, {{"DEFAULT_USER1", "C:\\M\\1\\Mailbox"}}, 1},
        {"end of file straight after the header", 1, "C:\\U", {"[Mailboxes]"}, {}, {}, registryUser, 1},
        {"quoted Unicode and bare ANSI arguments give the same directory", 1, nullptr,
         {"$Hanako.lnk=", "$Jiro.lnk=", "[Mailboxes]", "C:\\M\\Hanako\\Mailbox=", "C:\\M\\Jiro\\Mailbox="},
         {"C:\\M\\Hanako\\Mailbox", "C:\\M\\Jiro\\Mailbox"}, {{"$Hanako.lnk", "\"C:\\M\\Hanako\""}},
         {{"Hanako", "C:\\M\\Hanako\\Mailbox"}, {"Jiro", "C:\\M\\Jiro\\Mailbox"}}, 1,
         [](MailStore& s) { s.WriteFile(kLnk + "Jiro.lnk", qvt::MakeShortcut("C:\\M\\Jiro", false)); }},
        {"each shortcut names one user", 1, nullptr,
         {"$A.lnk=", "$B.lnk=", "[Mailboxes]", "C:\\M\\S\\Mailbox=", "C:\\M\\S\\Mailbox=", "C:\\M\\S\\Mailbox="},
         {"C:\\M\\S\\Mailbox"}, {{"$A.lnk", "C:\\M\\S"}, {"$B.lnk", "\"c:\\m\\s\""}},
         {{"A", "C:\\M\\S\\Mailbox"}, {"B", "C:\\M\\S\\Mailbox"}, {"DEFAULT_USER3", "C:\\M\\S\\Mailbox"}}, 1},
        {"shortcuts outside the start menu, broken or missing are passed over", 1, "C:\\U",
         {"C:\\Other\\X.lnk=", "$Broken.lnk=", "$Y.txt=", "$Missing.lnk="}, {}, {{"C:\\Other\\X.lnk", "C:\\U"}},
         registryUser, 1, [](MailStore& s) { s.WriteFile(kLnk + "Broken.lnk", "not a shortcut"); }},
        {"prefix, extension and files in any case", 1, "C:\\U", {"c:\\WINDOWS\\ｽﾀｰﾄ ﾒﾆｭｰ\\Sub\\Caps.LNK="}, {},
         {{"C:\\windows\\ｽﾀｰﾄ ﾒﾆｭｰ\\Sub\\Caps.LNK", "C:\\U"}}, {{"Caps", "C:\\U\\Mailbox"}}, 1, nullptr,
         mailtest::kInstallPath, "C:\\Program Files\\AL-Mail\\UNINST.INF"},
        {"Japanese names, trail byte 5C in directories", 1, "C:\\ソフト\\太郎",
         {"$太郎.lnk=", "$表さん.lnk=", "[Mailboxes]", "C:\\M\\表\\Mailbox="}, {"C:\\M\\表\\Mailbox"},
         {{"$太郎.lnk", "C:\\ソフト\\太郎"}, {"$表さん.lnk", "\"C:\\M\\表\""}},
         {{"太郎", "C:\\ソフト\\太郎\\Mailbox"}, {"表さん", "C:\\M\\表\\Mailbox"}}, 1, nullptr, "C:\\表示\\AlMail.exe",
         "C:\\表示\\Uninst.inf"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MailStore s;
        if (c.install != 0) s.Install(c.install == 1, c.installPath);
        if (c.mailbox != nullptr) s.RegistryMailbox(c.mailbox);
        std::vector<std::string> uninst;
        for (const std::string& line : c.uninst) uninst.push_back(Lnk(line));
        if (!uninst.empty()) s.Uninst(uninst, c.uninstPath);
        for (const std::string& dir : c.boxes) s.WriteFile(dir + "\\Mailbox.ini", "[Property]\r\n");
        for (const auto& link : c.links) s.WriteFile(Lnk(link.first), qvt::MakeShortcut(link.second, true));
        if (c.extra) c.extra(s);
        int32_t installed = -1;
        EXPECT_EQ(c.expected, ReaderUsers(&installed));
        EXPECT_EQ(c.installed, installed);
    }
}

// A discovery that only notes the directories it is given.
class NotingDiscovery : public CDiscovery {
public:
    explicit NotingDiscovery(const DiscoveryProfile& profile, int32_t bInstalled = 0) : CDiscovery(profile) {
        m_bInstalled = bInstalled;
    }
    Users users;

protected:
    int32_t AddUser(const char* pszDirectory) override {
        const char* pszName = ClaimShortcut(pszDirectory);
        users.emplace_back(pszName != nullptr ? qvt::Utf8(pszName) : "", qvt::Utf8(pszDirectory));
        return 0;
    }
};

TEST(Discovery, ProfilesDiffer) {
    struct Case {
        const char* name;
        Build build;
        bool address;
        int32_t presetInstalled, result, installed;
        size_t usersAfterInstallPath;
    };
    const Build none = [](MailStore&) {};
    const Build valueMissing = [](MailStore& s) { s.SetHklm(mailtest::kKey, "Other", "x"); };
    const Build fileMissing = [](MailStore& s) { s.Install(false); s.RegistryMailbox("C:\\U"); };
    const Case cases[] = {
        {"mail: no key", none, false, 0, -1, 0, 0},
        {"address: no key", none, true, 0, -1, 0, 0},
        {"mail: no value", valueMissing, false, 0, -2, 0, 0},
        {"address: no value", valueMissing, true, 0, -1, 0, 0},
        {"mail: flag written 0", fileMissing, false, 1, 0, 0, 0},
        {"address: flag kept", fileMissing, true, 1, 0, 1, 1},
        {"address: runs user discovery itself", fileMissing, true, 0, 0, 0, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MailStore store;
        c.build(store);
        NotingDiscovery d(c.address ? kAddressDiscoveryProfile : kMailDiscoveryProfile, c.presetInstalled);
        EXPECT_EQ(c.result, d.DiscoverInstallPath());
        EXPECT_EQ(c.installed, d.IsInstalled());
        EXPECT_EQ(c.usersAfterInstallPath, d.users.size());
    }
}

TEST(Discovery, NamesAndDirectoriesOfShortcuts) {
    MailStore store;
    store.Install();
    store.Uninst({kLnk + "One.lnk=", kLnk + "Two.Words.lnk=", kLnk + "Three.lnk="}, kUninst);
    store.WriteFile(kLnk + "One.lnk", qvt::MakeShortcut("\"E:\\a b\" c", true));  // several words taken whole
    store.WriteFile(kLnk + "Two.Words.lnk", qvt::MakeShortcut("E:\\x\"", true));   // a closing quote alone stays
    store.WriteFile(kLnk + "Three.lnk", qvt::MakeShortcut("", true));
    NotingDiscovery d(kMailDiscoveryProfile);
    ASSERT_EQ(0, d.DiscoverInstallPath());
    EXPECT_EQ(100, d.DiscoverUsers());  // no "[Mailboxes]" line
    Users found;
    for (const ShortcutEntry* p = d.Shortcuts(); p->pNext != nullptr; p = p->pNext)
        found.emplace_back(p->pszName, p->pszDirectory);
    EXPECT_EQ((Users{{"One", "E:\\a b\" c\\Mailbox"}, {"Two.Words", "E:\\x\"\\Mailbox"}, {"Three", "\\Mailbox"}}), found);
}

}  // namespace
