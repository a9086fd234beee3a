// StoreFoldersTest.cpp - on Windows an export never writes into the store
// either: the installation folder, every mailbox folder and every account
// folder, an OUTDIR compared with them as Windows compares paths (any case,
// short names made long).
#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <vector>

#include "platform/HostOs.h"
#include "support/WinePrefix.h"

namespace tqnralm {
namespace {

const char kKey[] = "Software\\CREAR\\AL-Mail";

// The 8.3 name Windows gives a folder that exists, in UTF-8.
std::string ShortPath(const std::string& path) {
    wchar_t wide[MAX_PATH] = {}, shortPath[MAX_PATH] = {};
    MultiByteToWideChar(CP_UTF8, 0, path.c_str(), -1, wide, MAX_PATH);
    GetShortPathNameW(wide, shortPath, MAX_PATH);
    char out[3 * MAX_PATH] = {};
    WideCharToMultiByte(CP_UTF8, 0, shortPath, -1, out, sizeof out, nullptr, nullptr);
    return out;
}

TEST(StoreFolders, OutDirInsideTheStoreOnWindows) {
    qvt::WinePrefix machine;
    const std::string root = "C:\\TQ Store " + std::to_string(GetCurrentProcessId());
    machine.WriteFile(root + "\\Program Files\\AL-Mail\\AlMail.exe", "");
    machine.WriteFile(root + "\\メール箱\\Mailbox\\Mailbox.ini", "");
    machine.MakeDir(root + "\\メール箱\\Mailbox\\Account1");
    machine.WriteFile(root + "\\Other\\Mailbox\\Mailbox.ini", "");  // a user found through a shortcut
    machine.MakeDir(root + "\\Other\\Mailbox\\Account1");
    machine.MakeDir(root + "\\Loose\\Account");  // an account outside any mailbox folder
    machine.SetHklm(kKey, "InstallPath", root + "\\Program Files\\AL-Mail\\AlMail.exe");
    machine.SetHkcu(kKey, "MailboxPath", root + "\\メール箱\\");
    const std::vector<os::StoreFolder> store = os::StoreFolders(
        {root + "\\メール箱\\Mailbox\\Account1", root + "\\Other\\Mailbox\\Account1", root + "\\Loose\\Account"});

    const std::string install = root + "\\Program Files\\AL-Mail", mailbox = root + "\\メール箱\\Mailbox";
    const struct { const char* name; std::string outDir; std::string holder; } rows[] = {  // holder "": none
        {"the installation folder", install + "\\out", install},
        {"the installation folder by its short name", ShortPath(install) + "\\out", install},
        {"this user's mailbox folder", mailbox, mailbox},
        {"this user's mailbox in another case, with slashes", root + "/メール箱/MAILBOX/x", mailbox},
        {"an account folder by its short name", ShortPath(mailbox + "\\Account1") + "\\y", mailbox + "\\Account1"},
        {"another user's mailbox folder", root + "\\Other\\Mailbox\\new", root + "\\Other\\Mailbox"},
        {"an account outside any mailbox", root + "\\Loose\\Account\\x", root + "\\Loose\\Account"},
        {"beside that account", root + "\\Loose\\x", ""}, {"a sibling that starts alike", mailbox + "2", ""},
        {"above the store", root + "\\out", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const os::StoreFolder* holder = os::FolderHolding(store, row.outDir);
        ASSERT_EQ(!row.holder.empty(), holder != nullptr) << row.outDir << " " << (holder ? holder->hostPath : "");
        if (holder != nullptr) { EXPECT_EQ(row.holder, holder->windowsPath); }
    }
    machine.Remove(root);
}

}  // namespace
}  // namespace tqnralm
