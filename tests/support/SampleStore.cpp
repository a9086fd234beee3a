// SampleStore.cpp - the sample installation and its variants.
#include "support/SampleStore.h"

#include <utility>

namespace qvt {

namespace {
const char kKey[] = "Software\\CREAR\\AL-Mail";
const std::string kInstallDir = "C:\\Program Files\\AL-Mail";
const std::string kExe = kInstallDir + "\\AlMail.exe";
const std::string kStartMenu = "C:\\windows\\ｽﾀｰﾄ ﾒﾆｭｰ\\ﾌﾟﾛｸﾞﾗﾑ\\AL-Mail32\\";

// "[Property]" and a line for each key whose value is not empty.
std::vector<std::string> Property(const std::vector<std::pair<const char*, std::string>>& keys) {
    std::vector<std::string> lines = {"[Property]"};
    for (const auto& [key, value] : keys) {
        if (!value.empty()) lines.push_back(key + ("=" + value));
    }
    return lines;
}

// A message file's name without ".alm": eight digits.
std::string Number(int n) { return std::string(8 - std::to_string(n).size(), '0') + std::to_string(n); }

std::string Message(const std::string& subjectField, const std::string& messageId) {
    return MakeMessage(subjectField, messageId, "body\r\n");
}

// ---- Variants: the same client on other machines, and damaged stores.

// A 64-bit Windows: the client's HKLM key lies in the 32-bit view, and names
// below the installation are written in another case than the reader asks for.
void BuildWin64Store(WinePrefix& prefix) {
    prefix.SetWin64(true);
    BuildSampleStore(prefix);
    StoreWriter w(prefix);
    const std::string account = "C:\\AL-Mail\\Mailbox\\ACCOUNT4";
    w.Text(account + "\\ACCOUNT.INI", {"[PROPERTY]", "TITLE=大文字"});
    w.Text(account + "\\00000007.BOX\\ENTRY.INI", {"[property]", "title=受信箱"});
    w.Raw(account + "\\00000007.BOX\\00000001.ALM",
          Message("=?iso-2022-jp?b?GyRCQmc4PjtaGyhC?=", "<upper@example.jp>"));
    w.Text(account + "\\00000007.BOX\\ENTRY.LST", {"00000001=1,0"});
    w.Text(account + "\\Inbox.Box\\Entry.Ini", {"[Property]", "Title=\"引用符\""});
}

// Only the registry names a mailbox, by the short name of its folder (as old
// installers wrote paths): no uninstall file, so no shortcuts and no mailbox
// list. Its settings carry byte order marks.
void BuildRegistryOnlyStore(WinePrefix& prefix) {
    StoreWriter w(prefix);
    w.Install(kExe);
    w.RegistryMailbox("C:\\Users\\MAIL~TQV");  // "Mail Store"
    const std::string mailbox = "C:\\Users\\Mail Store\\Mailbox";
    w.Raw(mailbox + "\\Mailbox.ini", "\xEF\xBB\xBF[Property]\r\nAddressFile = \"Other.adr\" \r\n");
    static const char kUtf16Title[] =
        "\xFF\xFE[\0P\0r\0o\0p\0e\0r\0t\0y\0]\0\r\0\n\0T\0i\0t\0l\0e\0=\0\xE5\x65\x2C\x67\r\0\n\0";
    w.Raw(mailbox + "\\Main\\Account.ini", std::string(kUtf16Title, sizeof kUtf16Title - 1));
    w.FolderIni(mailbox + "\\Main\\00000001.box", "受信", false);
    w.Messages(mailbox + "\\Main\\00000001.box",
               {Message("=?ISO-2022-JP?B?GyRCPTs9ak8/JE45OT83GyhC?=", "<only@example.jp>"),
                Message("plain ascii", "<ascii@example.jp>")});
    w.Text(mailbox + "\\Address", {"一人: one@example.jp"});
    w.Text(mailbox + "\\Other.adr", {"Group 外", "  二人: two@example.jp", "End Group"});
}

// Files the client never writes but a damaged disk or a hand edit leaves behind.
void BuildDamagedStore(WinePrefix& prefix) {
    StoreWriter w(prefix);
    w.Install(kExe);
    w.RegistryMailbox("C:\\AL-Mail");
    const std::string box = "C:\\AL-Mail\\Mailbox", other = "C:\\Other\\Mailbox";
    // The uninstall file: a lone CR inside a line, and a Ctrl-Z that ends the text before the last mailbox.
    w.Raw(kInstallDir + "\\Uninst.inf",
          Cp932("[Files]\r\n" + kExe + "=\r\n" + kStartMenu + "壊れた.lnk=\r\n" + kStartMenu + "別人.lnk=\r\n" +
                "[Mailboxes]\r\n" + box + "=\r\n" + other + "=\r\nC:\\Odd\rName\\Mailbox=\r\n\x1A" +
                "C:\\Hidden\\Mailbox=\r\n"));
    // A shortcut cut short, and one with ANSI arguments.
    w.Raw(kStartMenu + "壊れた.lnk", MakeShortcut("\"C:\\AL-Mail\"", true).substr(0, 90));
    w.Shortcut(kStartMenu + "別人.lnk", "C:\\Other", false);
    for (const std::string& mailbox : {box, other, std::string("C:\\Hidden\\Mailbox")}) w.Mailbox(mailbox);
    w.Account(other + "\\A", "他");

    const std::string account = box + "\\Account1", folder = account + "\\00000001.box";
    w.Account(account, "壊れた箱");
    w.FolderIni(folder, "索引", false);
    const std::string messages[] = {
        Message("\x81\x20sub\x85\x40ject\xA0\xFD end\x88", "<damaged1@example.jp>"),  // invalid Shift-JIS
        Message("=?ISO-2022-JP?B?GyRCJCIk?=", "<damaged2@example.jp>"),               // cut inside the encoded text
        Message("=?UTF-8?Q?caf=C3=A9_=FF?=", "<\x82\xA0@example.jp>"), "no header at all"};
    for (int i = 0; i < 4; ++i) w.Raw(folder + "\\" + Number(i + 1) + ".alm", messages[i]);
    // Entry.lst: lines without '=', a name without its file, a line longer
    // than any name, a lone CR, a duplicate, and a Ctrl-Z that ends the list.
    w.Raw(folder + "\\Entry.lst", "00000001=1,0\r\nno equals sign\r\n\r\n00000009=1,0\r\n" + std::string(400, '7') +
                                      "=1,0\r\n00000002\r=1,0\r\n00000003=1,0\r\n00000003=1,0\r\n=\r\n"
                                      "00000004=\r\n\x1A"
                                      "00000002=1,0\r\n");
    // Titles: raw Shift-JIS with a lone lead byte, and one that is too long.
    w.Raw(account + "\\00000002.box\\Entry.ini", "[Property]\r\nTitle=\x93\xFA\x96\x7B\x8C\r\n");
    w.FolderIni(account + "\\00000003.box", std::string(300, 'T'), false);
    // A folder whose name has no Shift-JIS form, and one in Japanese.
    w.FolderIni(account + "\\\xE2\x82\xAC.box", "ユーロ", false);
    w.FolderIni(account + "\\日本語.box", "日本語", false);
    // "*.box" finds this one through its short name ("arch~JVN.box").
    w.FolderIni(account + "\\archive.boxes", "短い名前", false);
    // An index file whose lines leave the mailbox.
    w.Text(account + "\\trash.box", {"..\\..\\Other\\Mailbox\\A\\x=1", "Account1\\00000001.box\\00000003=1",
                                     std::string(300, 'x') + "=1"});
    // The address book: groups five deep, one never closed, an End Group too many, invalid Shift-JIS, a long line.
    w.Raw(box + "\\Address",
          Cp932("Group 一\r\n Group 二\r\n  Group 三\r\n   Group 四\r\n    Group 五\r\n     深い: deep@example.jp\r\n"
                "    End Group\r\n   End Group\r\n  End Group\r\n End Group\r\nEnd Group\r\nEnd Group\r\n") +
              "\x81\x20" "bad: bad@example.jp\r\n" + std::string(600, 'a') + ": long@example.jp\r\n" +
              Cp932("Group 閉じない\r\n  最後: last@example.jp\r\n"));
}

// Three users of three accounts of three folders of two messages, all
// readable: a host that is made to fail on some of them must still give
// the rest.
void BuildThreesStore(WinePrefix& prefix) {
    StoreWriter w(prefix);
    w.Install(kExe);
    w.RegistryMailbox("C:\\Mail1");
    std::vector<std::string> uninst = {"[Files]", kExe + "=", "[Mailboxes]"};
    for (char u = '1'; u <= '3'; ++u) uninst.push_back(std::string("C:\\Mail") + u + "\\Mailbox=");
    w.Uninst(kInstallDir + "\\Uninst.inf", uninst);
    for (char u = '1'; u <= '3'; ++u) {
        const std::string mailbox = std::string("C:\\Mail") + u + "\\Mailbox";
        w.Mailbox(mailbox);
        for (char a = '1'; a <= '3'; ++a) {
            const std::string account = mailbox + "\\Account" + a;
            w.Account(account, std::string("口座") + a);
            for (char f = '1'; f <= '3'; ++f) {
                const std::string id = std::string("u") + u + "a" + a + "f" + f;
                w.FolderIni(account + "\\0000000" + f + ".box", std::string("箱") + f, false);
                w.Messages(account + "\\0000000" + f + ".box",
                           {Message(id + " one", "<" + id + "m1@example.jp>"),
                            Message(id + " two", "<" + id + "m2@example.jp>")});
            }
        }
    }
}

// Accounts whose inbox must be found by its title: 郵便受け with a
// subfolder beside 受信箱 and Inbox; a folder titled INBOX; none at the top
// (a 郵便受け below another folder is no inbox). One message is empty.
void BuildInboxStore(WinePrefix& prefix) {
    StoreWriter w(prefix);
    w.Install(kExe);
    w.RegistryMailbox("C:\\AL-Mail");
    const std::string box = "C:\\AL-Mail\\Mailbox";
    w.Mailbox(box);
    const std::string titles[3] = {"甲", "乙", "丙"};
    // Each row: account, folder directory, title, subfolders, messages.
    const struct { int account; const char* dir; const char* title; bool parent; int messages; } rows[] = {
        {0, "00000001.box", "受信箱", false, 1},  {0, "00000002.box", "郵便受け", true, 0},
        {0, "00000002.box\\00000003.box", "下", false, 2}, {0, "00000004.box", "Inbox", false, 1},
        {1, "00000001.box", "箱", false, 2},      {1, "00000002.box", "INBOX", false, 3},
        {2, "00000001.box", "箱", false, 1},      {2, "00000002.box", "親", true, 0},
        {2, "00000002.box\\00000003.box", "郵便受け", false, 1}};
    for (int a = 0; a < 3; ++a) w.Account(box + "\\Account" + std::to_string(a + 1), titles[a]);
    for (const auto& row : rows) {
        const std::string dir = box + "\\Account" + std::to_string(row.account + 1) + "\\" + row.dir;
        w.FolderIni(dir, row.title, row.parent);
        std::vector<std::string> messages;
        for (int m = 0; m < row.messages; ++m) {
            const std::string id = "<" + std::to_string(row.account) + "-" + Number(m) + "-" + row.dir + "@example.jp>";
            messages.push_back(Message(std::string(row.title) + " " + std::to_string(m), id));
        }
        if (row.account == 1 && row.messages == 2) messages[1].clear();  // a message file of no bytes
        if (!messages.empty()) w.Messages(dir, messages);
    }
}

const struct { const char* name; void (*build)(WinePrefix&); } kVariants[] = {
    {"default", BuildSampleStore}, {"win64", BuildWin64Store}, {"registry-only", BuildRegistryOnlyStore},
    {"damaged", BuildDamagedStore}, {"threes", BuildThreesStore}, {"inbox", BuildInboxStore}};

}  // namespace

void StoreWriter::Install(const std::string& installPath) {
    m_prefix.SetHklm(kKey, "InstallPath", installPath);
    m_prefix.WriteFile(installPath, "MZ");
}

void StoreWriter::RegistryMailbox(const std::string& dir) { m_prefix.SetHkcu(kKey, "MailboxPath", dir); }

void StoreWriter::Shortcut(const std::string& path, const std::string& arguments, bool unicode) {
    m_prefix.WriteFile(path, MakeShortcut(arguments, unicode));
}

void StoreWriter::Mailbox(const std::string& dir, const std::string& addressFiles) {
    Text(dir + "\\Mailbox.ini", Property({{"AddressFile", addressFiles}}));
}

void StoreWriter::Account(const std::string& dir, const std::string& title) {
    Text(dir + "\\Account.ini", Property({{"Title", title}}));
}

void StoreWriter::FolderIni(const std::string& dir, const std::string& title, bool subfolders) {
    Text(dir + "\\Entry.ini", Property({{"Title", title}, {"Type", subfolders ? "Subfolder" : ""}}));
}

void StoreWriter::Messages(const std::string& dir, const std::vector<std::string>& messages, int firstNumber) {
    std::vector<std::string> entries;
    for (size_t i = 0; i < messages.size(); ++i) {
        entries.push_back(Number(firstNumber + static_cast<int>(i)) + "=1,0");
        m_prefix.WriteFile(dir + "\\" + Number(firstNumber + static_cast<int>(i)) + ".alm", messages[i]);
    }
    Text(dir + "\\Entry.lst", entries);
}

void StoreWriter::Text(const std::string& path, const std::vector<std::string>& lines) {
    std::string bytes;
    for (const std::string& line : lines) bytes += Cp932(line) + "\r\n";
    m_prefix.WriteFile(path, bytes);
}

std::string MakeMessage(const std::string& subjectField, const std::string& messageId, const std::string& body) {
    std::string text = "From: sender@example.jp\r\nTo: receiver@example.jp\r\n";
    if (!subjectField.empty()) text += "Subject: " + subjectField + "\r\n";
    if (!messageId.empty()) text += "Message-ID: " + messageId + "\r\n";
    text += "Date: Fri, 14 Mar 2008 09:05:01 +0900\r\nMIME-Version: 1.0\r\n";
    return text + "Content-Type: text/plain; charset=ISO-2022-JP\r\n\r\n" + body;
}

void BuildSampleStore(WinePrefix& prefix) {
    StoreWriter w(prefix);
    w.Install(kExe);
    // The registry's mailbox: the first user, named by its shortcut. The
    // uninstall file lists Hanako twice, then a mailbox without "Mailbox.ini".
    w.RegistryMailbox("C:\\AL-Mail");
    const std::string taro = "C:\\AL-Mail\\Mailbox", hanako = "C:\\Data\\Hanako\\Mailbox";
    w.Uninst(kInstallDir + "\\Uninst.inf",
             {"[Files]", kExe + "=", kStartMenu + "山田太郎.lnk=", kStartMenu + "鈴木花子.lnk=", "[Mailboxes]",
              taro + "=", hanako + "=", hanako + "=", "D:\\Shared\\Mailbox=", "", "[Other]"});
    w.Shortcut(kStartMenu + "山田太郎.lnk", "\"C:\\AL-Mail\"");
    w.Shortcut(kStartMenu + "鈴木花子.lnk", "C:\\Data\\Hanako", false);

    // 山田太郎: two titled accounts and one without a title (listed, without
    // folders); a directory without Account.ini is no account.
    w.Mailbox(taro, "*ignored.adr;C:\\AL-Mail\\Mailbox\\friends.txt;missing.adr");
    const std::string work = taro + "\\Account1", project = work + "\\00000001.box";
    w.Account(work, "仕事");
    prefix.MakeDir(work + "\\inbox.box");           // no Entry.ini: the built-in title, no messages
    w.FolderIni(work + "\\outbox.box", "", false);  // no title: the built-in one, message form
    w.Messages(work + "\\outbox.box", {MakeMessage("=?ISO-2022-JP?B?GyRCMnE1RCROJCpDTiRpJDsbKEI=?=",
                                                   "<meeting@example.jp>", "\x1b$B$3$s$K$A$O\x1b(B\r\n")});
    w.FolderIni(project, "プロジェクト", true);
    w.FolderIni(project + "\\00000002.box", "見積もり", false);
    w.Messages(project + "\\00000002.box",
               {Message("=?UTF-8?B?UsOpdW5pb24g5pel5pys6Kqe44OG44K544OI?=", "<utf8@example.jp>"),
                Message(Cp932("請求書について"), "<sjis@example.jp>"),
                MakeMessage("", "", "A message without subject and id.\r\n")},
               10);
    w.FolderIni(project + "\\00000003.box", "空のフォルダ", false);
    // trash: an index file with paths relative to the mailbox directory.
    w.Text(work + "\\trash.box", {"Account1\\outbox.box\\00000001=1", "no entry on this line"});
    w.Account(taro + "\\Account2", "個人");
    w.FolderIni(taro + "\\Account2\\00000005.box", "家族 #1/2", false);
    w.Messages(taro + "\\Account2\\00000005.box",
               {Message("=?ISO-2022-JP?B?GyRCPTVLdiROTT1EahsoQg==?=", "<weekend@example.jp>")});
    w.Account(taro + "\\Account3", "");
    prefix.MakeDir(taro + "\\Backup");
    // Address book: the default file and one listed file.
    w.Text(taro + "\\Address", {"山田花子: hanako@example.jp", "Group 友人", "  佐藤: sato@example.jp", "  Group 学校",
                                "    先生: teacher@example.jp", "  End Group", "  チーム: a@example.jp, b@example.jp",
                                "End Group", "Separator", "no address here"});
    // The same address again in a group, and a heading with the characters
    // that the export's forms escape.
    w.Text(taro + "\\friends.txt", {"友達: friend@example.jp", "Group 同僚", "  友達: friend@example.jp",
                                    "  Smith, John; Jr.\\: smith@example.jp", "End Group"});

    // 鈴木花子: one account.
    w.Mailbox(hanako);
    w.Account(hanako + "\\Main", "メイン");
    w.FolderIni(hanako + "\\Main\\00000001.box", "受信", false);
    w.Messages(hanako + "\\Main\\00000001.box",
               {Message("=?ISO-2022-JP?B?GyRCPTs9ak8/JE45OT83GyhC?=", "<address@example.jp>")});
}

std::vector<std::string> SampleStoreVariants() {
    std::vector<std::string> names;
    for (const auto& v : kVariants) names.push_back(v.name);
    return names;
}

bool BuildSampleStore(WinePrefix& prefix, const std::string& variant) {
    for (const auto& v : kVariants) {
        if (variant == v.name) return v.build(prefix), true;
    }
    return false;
}

}  // namespace qvt
