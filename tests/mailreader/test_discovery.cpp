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
using mailtest::Sjis;
using Users = std::vector<std::pair<std::string, std::string>>;  // name, directory (UTF-8)

const std::string kLnk = mailtest::kStartMenu;

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

TEST(Discovery, MailUsers) {
    struct Case {
        const char* name;
        std::function<void(MailStore&)> build;
        Users expected;
        int32_t installed;
    };
    const Case cases[] = {
        {"no key", [](MailStore&) {}, {}, 0},
        {"registry mailbox, no uninstall file",
         [](MailStore& s) {
             s.Install();
             s.RegistryMailbox("C:\\Users\\taro");
         },
         {{"DEFAULT_USER1", "C:\\Users\\taro\\Mailbox"}}, 1},
        {"trailing backslash dropped once",
         [](MailStore& s) {
             s.Install();
             s.RegistryMailbox("C:\\Users\\taro\\");
         },
         {{"DEFAULT_USER1", "C:\\Users\\taro\\Mailbox"}}, 1},
        {"empty mailbox path",
         [](MailStore& s) {
             s.Install();
             s.RegistryMailbox("");
         },
         {{"DEFAULT_USER1", "\\Mailbox"}}, 1},
        {"installed file missing: flag 0, discovery goes on",
         [](MailStore& s) {
             s.Install(false);
             s.RegistryMailbox("C:\\Users\\taro");
         },
         {{"DEFAULT_USER1", "C:\\Users\\taro\\Mailbox"}}, 0},
        {"InstallPath missing under the key",
         [](MailStore& s) { s.RegistryMailbox("C:\\Users\\taro"); }, {}, 0},
        {"no section: shortcuts still name the registry user",
         [](MailStore& s) {
             s.Install();
             s.RegistryMailbox("C:\\Users\\taro");
             s.Uninst({"[Files]", kLnk + "Taro.lnk="});
             s.Shortcut(kLnk + "Taro.lnk", "C:\\Users\\taro");
         },
         {{"Taro", "C:\\Users\\taro\\Mailbox"}}, 1},
        {"section lines and their end",
         [](MailStore& s) {
             s.Install();
             s.RegistryMailbox("C:\\Users\\Taro");
             for (const char* d : {"C:\\M\\One\\Mailbox", "C:\\M\\Three\\Mailbox", "C:\\M\\Four\\Mailbox"}) s.Mailbox(d);
             s.Mailbox("C:\\Users\\taro\\Mailbox");
             s.Uninst({"[Mailboxes]", "c:\\users\\TARO\\Mailbox=", "C:\\M\\One\\Mailbox=", "C:\\M\\Two\\Mailbox=",
                       "C:\\M\\Three\\MAILBOX=", "", "C:\\M\\Four\\Mailbox="});
         },
         {{"DEFAULT_USER1", "C:\\Users\\Taro\\Mailbox"},
          {"DEFAULT_USER2", "C:\\M\\One\\Mailbox"},
          {"DEFAULT_USER3", "C:\\M\\Three\\MAILBOX"}}, 1},
        {"a new section header ends the section",
         [](MailStore& s) {
             s.Install();
             s.Mailbox("C:\\M\\One\\Mailbox");
             s.Mailbox("C:\\M\\Two\\Mailbox");
             s.Uninst({"[Mailboxes]", "C:\\M\\One\\Mailbox=", "[Other]", "C:\\M\\Two\\Mailbox="});
         },
         {{"DEFAULT_USER1", "C:\\M\\One\\Mailbox"}}, 1},
        {"end of file straight after the header",
         [](MailStore& s) {
             s.Install();
             s.RegistryMailbox("C:\\U");
             s.Uninst({"[Mailboxes]"});
         },
         {{"DEFAULT_USER1", "C:\\U\\Mailbox"}}, 1},
        {"quoted and bare arguments give the same directory",
         [](MailStore& s) {
             s.Install();
             s.Mailbox("C:\\M\\Hanako\\Mailbox");
             s.Mailbox("C:\\M\\Jiro\\Mailbox");
             s.Uninst({kLnk + "Hanako.lnk=", kLnk + "Jiro.lnk=", "[Mailboxes]", "C:\\M\\Hanako\\Mailbox=",
                       "C:\\M\\Jiro\\Mailbox="});
             s.Shortcut(kLnk + "Hanako.lnk", "\"C:\\M\\Hanako\"");
             s.Shortcut(kLnk + "Jiro.lnk", "C:\\M\\Jiro", false);
         },
         {{"Hanako", "C:\\M\\Hanako\\Mailbox"}, {"Jiro", "C:\\M\\Jiro\\Mailbox"}}, 1},
        {"each shortcut names one user",
         [](MailStore& s) {
             s.Install();
             s.Mailbox("C:\\M\\Same\\Mailbox");
             s.Uninst({kLnk + "A.lnk=", kLnk + "B.lnk=", "[Mailboxes]", "C:\\M\\Same\\Mailbox=",
                       "C:\\M\\Same\\Mailbox=", "C:\\M\\Same\\Mailbox="});
             s.Shortcut(kLnk + "A.lnk", "C:\\M\\Same");
             s.Shortcut(kLnk + "B.lnk", "\"c:\\m\\same\"");
         },
         {{"A", "C:\\M\\Same\\Mailbox"}, {"B", "C:\\M\\Same\\Mailbox"}, {"DEFAULT_USER3", "C:\\M\\Same\\Mailbox"}}, 1},
        {"shortcuts outside the start menu and broken ones are passed over",
         [](MailStore& s) {
             s.Install();
             s.RegistryMailbox("C:\\U");
             s.Uninst({"C:\\Other\\X.lnk=", kLnk + "Broken.lnk=", kLnk + "Y.txt=", kLnk + "Missing.lnk="});
             s.Shortcut("C:\\Other\\X.lnk", "C:\\U");
             s.File(kLnk + "Broken.lnk", "not a shortcut");
         },
         {{"DEFAULT_USER1", "C:\\U\\Mailbox"}}, 1},
        {"prefix and extension in any case, files in any case",
         [](MailStore& s) {
             s.Install();
             s.RegistryMailbox("C:\\U");
             s.Uninst({"c:\\WINDOWS\\ｽﾀｰﾄ ﾒﾆｭｰ\\Sub\\Caps.LNK="}, "C:\\Program Files\\AL-Mail\\UNINST.INF");
             s.Shortcut("C:\\windows\\ｽﾀｰﾄ ﾒﾆｭｰ\\Sub\\Caps.LNK", "C:\\U");
         },
         {{"Caps", "C:\\U\\Mailbox"}}, 1},
        {"Japanese names, trail byte 5C in directories",
         [](MailStore& s) {
             s.Install(true, "C:\\表示\\AlMail.exe");
             s.RegistryMailbox("C:\\ソフト\\太郎");
             s.Mailbox("C:\\M\\表\\Mailbox");
             s.Uninst({kLnk + "太郎.lnk=", kLnk + "表さん.lnk=", "[Mailboxes]", "C:\\M\\表\\Mailbox="},
                      "C:\\表示\\Uninst.inf");
             s.Shortcut(kLnk + "太郎.lnk", "C:\\ソフト\\太郎");
             s.Shortcut(kLnk + "表さん.lnk", "\"C:\\M\\表\"");
         },
         {{"太郎", "C:\\ソフト\\太郎\\Mailbox"}, {"表さん", "C:\\M\\表\\Mailbox"}}, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MailStore store;
        c.build(store);
        int32_t installed = -1;
        EXPECT_EQ(c.expected, ReaderUsers(&installed));
        EXPECT_EQ(c.installed, installed);
    }
}

// A discovery that only notes the directories it is given.
class NotingDiscovery : public CDiscovery {
public:
    explicit NotingDiscovery(const DiscoveryProfile& profile) : CDiscovery(profile) {}
    void PresetInstalled(int32_t b) { m_bInstalled = b; }
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
        std::function<void(MailStore&)> build;
        bool address;
        int32_t presetInstalled;
        int32_t result;
        int32_t installed;
        size_t usersAfterInstallPath;
    };
    auto valueMissing = [](MailStore& s) { s.prefix.SetHklm(mailtest::kKey, "Other", "x"); };
    auto fileMissing = [](MailStore& s) {
        s.Install(false);
        s.RegistryMailbox("C:\\U");
    };
    const Case cases[] = {
        {"mail: no key", [](MailStore&) {}, false, 0, -1, 0, 0},
        {"address: no key", [](MailStore&) {}, true, 0, -1, 0, 0},
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
        NotingDiscovery d(c.address ? kAddressDiscoveryProfile : kMailDiscoveryProfile);
        d.PresetInstalled(c.presetInstalled);
        EXPECT_EQ(c.result, d.DiscoverInstallPath());
        EXPECT_EQ(c.installed, d.IsInstalled());
        EXPECT_EQ(c.usersAfterInstallPath, d.users.size());
    }
}

TEST(Discovery, NamesAndDirectoriesOfShortcuts) {
    MailStore store;
    store.Install();
    store.Uninst({kLnk + "One.lnk=", kLnk + "Two.Words.lnk=", kLnk + "Three.lnk="});
    store.Shortcut(kLnk + "One.lnk", "\"E:\\a b\" c");  // several words taken whole
    store.Shortcut(kLnk + "Two.Words.lnk", "E:\\x\"");   // a closing quote alone stays
    store.Shortcut(kLnk + "Three.lnk", "");
    NotingDiscovery d(kMailDiscoveryProfile);
    ASSERT_EQ(0, d.DiscoverInstallPath());
    EXPECT_EQ(100, d.DiscoverUsers());  // no "[Mailboxes]" line
    std::vector<std::pair<std::string, std::string>> found;
    for (const ShortcutEntry* p = d.Shortcuts(); p->pNext != nullptr; p = p->pNext)
        found.emplace_back(p->pszName, p->pszDirectory);
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"One", "E:\\a b\" c\\Mailbox"}, {"Two.Words", "E:\\x\"\\Mailbox"}, {"Three", "\\Mailbox"}};
    EXPECT_EQ(expected, found);
}

}  // namespace
