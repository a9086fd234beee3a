// SampleStore.cpp - the sample installation.
#include "support/SampleStore.h"

#include <cstdio>

namespace qvt {

namespace {
const char kKey[] = "Software\\CREAR\\AL-Mail";
const char kInstallDir[] = "C:\\Program Files\\AL-Mail";
const char kStartMenu[] = "C:\\windows\\ｽﾀｰﾄ ﾒﾆｭｰ\\ﾌﾟﾛｸﾞﾗﾑ\\AL-Mail32\\";

std::string Lines(const std::vector<std::string>& lines) {
    std::string bytes;
    for (const std::string& line : lines) bytes += Cp932(line) + "\r\n";
    return bytes;
}
}  // namespace

void StoreWriter::Install(const std::string& installPath) {
    m_prefix.SetHklm(kKey, "InstallPath", installPath);
    m_prefix.WriteFile(installPath, "MZ");
}

void StoreWriter::RegistryMailbox(const std::string& dir) { m_prefix.SetHkcu(kKey, "MailboxPath", dir); }

void StoreWriter::Uninst(const std::string& path, const std::vector<std::string>& lines) { Text(path, lines); }

void StoreWriter::Shortcut(const std::string& path, const std::string& arguments, bool unicode) {
    m_prefix.WriteFile(path, MakeShortcut(arguments, unicode));
}

void StoreWriter::Mailbox(const std::string& dir, const std::string& addressFiles) {
    std::vector<std::string> lines = {"[Property]"};
    if (!addressFiles.empty()) lines.push_back("AddressFile=" + addressFiles);
    Text(dir + "\\Mailbox.ini", lines);
}

void StoreWriter::Account(const std::string& dir, const std::string& title) {
    std::vector<std::string> lines = {"[Property]"};
    if (!title.empty()) lines.push_back("Title=" + title);
    Text(dir + "\\Account.ini", lines);
}

void StoreWriter::FolderIni(const std::string& dir, const std::string& title, bool subfolders) {
    std::vector<std::string> lines = {"[Property]"};
    if (!title.empty()) lines.push_back("Title=" + title);
    if (subfolders) lines.push_back("Type=Subfolder");
    Text(dir + "\\Entry.ini", lines);
}

void StoreWriter::Messages(const std::string& dir, const std::vector<std::string>& messages, int firstNumber) {
    std::vector<std::string> entries;
    for (size_t i = 0; i < messages.size(); ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "%08d", firstNumber + static_cast<int>(i));
        entries.push_back(std::string(name) + "=1,0");
        m_prefix.WriteFile(dir + "\\" + name + ".alm", messages[i]);
    }
    Text(dir + "\\Entry.lst", entries);
}

void StoreWriter::Text(const std::string& path, const std::vector<std::string>& lines) {
    m_prefix.WriteFile(path, Lines(lines));
}

std::string MakeMessage(const std::string& subjectField, const std::string& messageId, const std::string& body) {
    std::string text = "From: sender@example.jp\r\nTo: receiver@example.jp\r\n";
    if (!subjectField.empty()) text += "Subject: " + subjectField + "\r\n";
    if (!messageId.empty()) text += "Message-ID: " + messageId + "\r\n";
    text += "Date: Fri, 14 Mar 2008 09:05:01 +0900\r\nMIME-Version: 1.0\r\n";
    text += "Content-Type: text/plain; charset=ISO-2022-JP\r\n\r\n" + body;
    return text;
}

void BuildSampleStore(WinePrefix& prefix) {
    StoreWriter w(prefix);
    const std::string install = std::string(kInstallDir) + "\\AlMail.exe";
    w.Install(install);
    // The registry's mailbox: the first user, named by its shortcut.
    w.RegistryMailbox("C:\\AL-Mail");
    const std::string taro = "C:\\AL-Mail\\Mailbox";
    const std::string hanako = "C:\\Data\\Hanako\\Mailbox";
    const std::string third = "D:\\Shared\\Mailbox";
    w.Uninst(std::string(kInstallDir) + "\\Uninst.inf",
             {"[Files]", install + "=",
              std::string(kStartMenu) + "山田太郎.lnk=", std::string(kStartMenu) + "鈴木花子.lnk=",
              "[Mailboxes]", taro + "=", hanako + "=", "C:\\Data\\Hanako\\Mailbox=", third + "=", "",
              "[Other]"});
    w.Shortcut(std::string(kStartMenu) + "山田太郎.lnk", "\"C:\\AL-Mail\"");
    w.Shortcut(std::string(kStartMenu) + "鈴木花子.lnk", "C:\\Data\\Hanako", false);
    // The third section line names a mailbox without "Mailbox.ini": passed over.

    // --- 山田太郎: two titled accounts and one without a title.
    w.Mailbox(taro, "*ignored.adr;C:\\AL-Mail\\Mailbox\\friends.txt;missing.adr");
    const std::string work = taro + "\\Account1";
    w.Account(work, "仕事");
    // inbox: no Entry.ini, so the built-in title and no messages.
    prefix.MakeDir(work + "\\inbox.box");
    // outbox: an Entry.ini without a title; built-in title, message form.
    w.FolderIni(work + "\\outbox.box", "", false);
    w.Messages(work + "\\outbox.box",
               {MakeMessage("=?ISO-2022-JP?B?GyRCMnE1RCROJCpDTiRpJDsbKEI=?=", "<meeting@example.jp>",
                            "\x1b$B$3$s$K$A$O\x1b(B\r\n")});
    // A folder of sub-folders.
    w.FolderIni(work + "\\00000001.box", "プロジェクト", true);
    w.FolderIni(work + "\\00000001.box\\00000002.box", "見積もり", false);
    w.Messages(work + "\\00000001.box\\00000002.box",
               {MakeMessage("=?UTF-8?B?UsOpdW5pb24g5pel5pys6Kqe44OG44K544OI?=", "<utf8@example.jp>", "body\r\n"),
                MakeMessage(Cp932("請求書について"), "<sjis@example.jp>", "body\r\n"),
                MakeMessage("", "", "A message without subject and id.\r\n")},
               10);
    w.FolderIni(work + "\\00000001.box\\00000003.box", "空のフォルダ", false);
    // trash: an index file with paths relative to the mailbox directory.
    w.Text(work + "\\trash.box", {"Account1\\outbox.box\\00000001=1", "no entry on this line"});

    w.Account(taro + "\\Account2", "個人");
    w.FolderIni(taro + "\\Account2\\00000005.box", "家族 #1/2", false);
    w.Messages(taro + "\\Account2\\00000005.box",
               {MakeMessage("=?ISO-2022-JP?B?GyRCPTVLdiROTT1EahsoQg==?=", "<weekend@example.jp>", "body\r\n")});
    // An account without a title: listed, without folders.
    w.Account(taro + "\\Account3", "");
    // A directory without Account.ini is no account.
    prefix.MakeDir(taro + "\\Backup");

    // Address book: the default file and one listed file.
    w.Text(taro + "\\Address", {"山田花子: hanako@example.jp", "Group 友人", "  佐藤: sato@example.jp",
                                "  Group 学校", "    先生: teacher@example.jp", "  End Group",
                                "  チーム: a@example.jp, b@example.jp", "End Group", "Separator",
                                "no address here"});
    w.Text(taro + "\\friends.txt", {"友達: friend@example.jp"});

    // --- 鈴木花子: one account; listed twice in the section.
    w.Mailbox(hanako);
    w.Account(hanako + "\\Main", "メイン");
    w.FolderIni(hanako + "\\Main\\00000001.box", "受信", false);
    w.Messages(hanako + "\\Main\\00000001.box",
               {MakeMessage("=?ISO-2022-JP?B?GyRCPTs9ak8/JE45OT83GyhC?=", "<address@example.jp>", "body\r\n")});
}

}  // namespace qvt
