// test_discovery.cpp - finding the installation and the users. (The sample
// store has quoted Unicode and bare ANSI shortcuts, a directory listed twice,
// a mailbox without settings, a blank line and a section ending the list.)
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "MailFixture.h"
#include "mailreader/CMailReader.h"

namespace {

using mailtest::MailStore;
using Users = std::vector<std::pair<std::string, std::string>>;  // name, directory (UTF-8)

const std::string kLnk = mailtest::kStartMenu;
const char kUninst[] = "C:\\Program Files\\AL-Mail\\Uninst.inf";

Users ReaderUsers() {
    CMailReader* pReader = nullptr;
    EXPECT_EQ(0, OpenReader(&pReader));
    Users users;
    if (pReader == nullptr) return users;
    for (int32_t i = 0; i < pReader->UserCount(); ++i) {
        CMailUser* pUser = nullptr;
        EXPECT_EQ(0, pReader->GetUser(i, &pUser));
        users.emplace_back(qvt::Utf8(pUser->m_szName), qvt::Utf8(pUser->m_szDirectory));
    }
    EXPECT_EQ(0, CloseReader(pReader));
    return users;
}

// A leading '$' stands for the start-menu folder.
std::string Lnk(const std::string& s) { return s.rfind('$', 0) == 0 ? kLnk + s.substr(1) : s; }

TEST(Discovery, MailUsers) {
    // boxes: directories given a "Mailbox.ini"; links: shortcuts (path, arguments; "" for a file that is none).
    struct Case { const char* name; const char* mailbox; std::vector<std::string> uninst, boxes; Users links, expected;
                  const char* installPath = mailtest::kInstallPath; const char* uninstPath = kUninst; };
    const Case cases[] = {
        // A quote is dropped at the start and only then at the end.
        {"no section: a shortcut names the registry user, one trailing backslash dropped", "E:\\a b\" c\\",
         {"[Files]", "$One.Two.lnk="}, {}, {{"$One.Two.lnk", "\"E:\\a b\" c"}}, {{"One.Two", "E:\\a b\" c\\Mailbox"}}},
        {"section lines, case-blind duplicates, a blank line ends them", "C:\\Users\\Taro",
         {"[Mailboxes]", "c:\\users\\TARO\\Mailbox=", "C:\\M\\1\\Mailbox=", "C:\\M\\2\\Mailbox=", "C:\\M\\3\\MAILBOX=",
          "", "C:\\M\\4\\Mailbox="},
         {"C:\\Users\\taro\\Mailbox", "C:\\M\\1\\Mailbox", "C:\\M\\3\\Mailbox", "C:\\M\\4\\Mailbox"}, {},
         {{"DEFAULT_USER1", "C:\\Users\\Taro\\Mailbox"}, {"DEFAULT_USER2", "C:\\M\\1\\Mailbox"},
          {"DEFAULT_USER3", "C:\\M\\3\\MAILBOX"}}},
        {"shortcuts outside the start menu, broken or missing passed over; names in any case", "C:\\U",
         {"C:\\Other\\X.lnk=", "$Broken.lnk=", "$Y.txt=", "$Missing.lnk=", "c:\\WINDOWS\\ｽﾀｰﾄ ﾒﾆｭｰ\\Sub\\Caps.LNK="},
         {}, {{"C:\\Other\\X.lnk", "C:\\U"}, {"$Broken.lnk", ""}, {"C:\\windows\\ｽﾀｰﾄ ﾒﾆｭｰ\\Sub\\Caps.LNK", "C:\\U"}},
         {{"Caps", "C:\\U\\Mailbox"}}, mailtest::kInstallPath, "C:\\Program Files\\AL-Mail\\UNINST.INF"},
        {"Japanese names, trail byte 5C in directories", "C:\\ソフト\\太郎",
         {"$太郎.lnk=", "$表さん.lnk=", "[Mailboxes]", "C:\\M\\表\\Mailbox="}, {"C:\\M\\表\\Mailbox"},
         {{"$太郎.lnk", "C:\\ソフト\\太郎"}, {"$表さん.lnk", "\"C:\\M\\表\""}},
         {{"太郎", "C:\\ソフト\\太郎\\Mailbox"}, {"表さん", "C:\\M\\表\\Mailbox"}}, "C:\\表示\\AlMail.exe",
         "C:\\表示\\Uninst.inf"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MailStore s(c.mailbox, c.installPath);
        std::vector<std::string> uninst;
        for (const std::string& line : c.uninst) uninst.push_back(Lnk(line));
        s.Uninst(c.uninstPath, uninst);
        for (const std::string& dir : c.boxes) s.Mailbox(dir);
        for (const auto& link : c.links)
            link.second.empty() ? s.Raw(Lnk(link.first), "not a shortcut") : s.Shortcut(Lnk(link.first), link.second);
        EXPECT_EQ(c.expected, ReaderUsers());
    }
}

}  // namespace
