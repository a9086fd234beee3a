// CopiedDriveTest.cpp - a copied Windows system drive as the machine: drive
// letters, the registry from hive files, the choice of the profile, and
// damaged hives.
#include "platform/platform.h"
#include "platform/RegistryQuery.h"
#include "support/WinePrefix.h"
#include "support/posix/Hive.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qvp::Hive;
using qvt::HiveValue;
using qvt::RegSz;
using qvt::ScopedEnv;

const char kKey[] = "Software\\CREAR\\AL-Mail";

// A drive in a folder of the prefix, which it hides: the prefix's own files
// and registry are no longer seen.
class CopiedDrive : public ::testing::Test {
protected:
    void SetUp() override {
        prefix.SetHklm(kKey, "InstallPath", "from the prefix");
        prefix.SetHkcu(kKey, "MailboxPath", "from the prefix");
        prefix.WriteFile("C:\\prefix.txt", "x");
    }
    std::string Host(const std::string& relative) const { return prefix.Root() + "/disk/" + relative; }
    void WriteHive(const std::string& relative, const qvt::HiveKeys& keys) {
        prefix.WriteFile("Z:" + Host(relative), "");
        qvt::WriteHive(Host(relative), keys);
    }
    void Software(const qvt::HiveKeys& keys) { WriteHive("Windows/System32/config/SOFTWARE", keys); }
    void User(const std::string& profile, bool withKey) {
        WriteHive(profile + "/NTUSER.DAT", {{withKey ? kKey : "Software\\Other", {{"MailboxPath", 1, RegSz(profile)}}}});
    }

    qvt::WinePrefix prefix;
    ScopedEnv root{"TQNRALM_WINDOWS_ROOT", prefix.Root() + "/disk"};
};

TEST_F(CopiedDrive, DriveLetters) {
    prefix.WriteFile("Z:" + Host("Dir/File.txt"), "x");
    prefix.WriteFile("Z:" + prefix.Root() + "/d/Shared/x.txt", "x");
    ScopedEnv d("TQNRALM_DRIVE_D", prefix.Root() + "/d");
    const struct { std::string path; bool exists; } cases[] = {
        {"C:\\dir\\FILE.TXT", true},        // C: is the drive's folder, in any case
        {"C:\\prefix.txt", false},          // the prefix is out of the picture
        {"d:\\shared\\X.txt", true},        // D: through TQNRALM_DRIVE_D
        {"E:\\x.txt", false},               // a letter without a mapping
        {"Z:" + Host("Dir/File.txt"), true},  // Z: is still the host's root
    };
    for (const auto& c : cases) EXPECT_EQ(c.exists ? 0 : -1, qvp::Access(c.path.c_str())) << c.path;
}

TEST_F(CopiedDrive, ValuesFromTheHives) {
    Software({{"Wow6432Node\\CREAR\\AL-Mail",
               {{"InstallPath", 1, RegSz("wow")},
                {"Sz", 1, RegSz("C:\\日本語")},
                {"Expand", 2, RegSz("%TEMP%\\x")}, {"Unterminated", 1, RegSz("ab").substr(0, 4)},
                {"Dword", 4, std::string("\x2a\0\0\0", 4)}, {"", 1, RegSz("default")}}},
              {"CREAR\\AL-Mail", {{"InstallPath", 1, RegSz("plain")}, {"Only", 1, RegSz("plain")}}},
              {"Other", {{"Sz", 1, RegSz("x")}}}});
    User("Users/Taro", true);
    const char kLower[] = "software\\crear\\al-mail";
    const struct { Hive hive; const char* key; const char* value; uint32_t size; std::string expected; } cases[] = {
        {Hive::LocalMachine, kKey, "InstallPath", 520, std::string("wow", 4)},  // the 32-bit view first
        {Hive::LocalMachine, kKey, "Only", 520, "<no value>"},                  // and that key alone
        {Hive::LocalMachine, kLower, "SZ", 520, qvt::Cp932("C:\\日本語") + '\0'},
        {Hive::LocalMachine, kKey, "Expand", 520, std::string("%TEMP%\\x", 9)},
        {Hive::LocalMachine, kKey, "Unterminated", 520, std::string("ab", 3)},
        {Hive::LocalMachine, kKey, "Dword", 520, std::string("\x2a\0\0\0\0", 5)},
        {Hive::LocalMachine, kKey, "", 520, std::string("default", 8)},
        {Hive::LocalMachine, kKey, "Sz", 8, "<no value>"},             // does not fit with its NUL
        {Hive::LocalMachine, "Software\\Other", "Sz", 520, "<no key>"},  // no user holds that key
        {Hive::LocalMachine, "System\\CREAR", "Sz", 520, "<no key>"},    // only Software is on the disk
        {Hive::CurrentUser, kKey, "MailboxPath", 520, std::string("Users/Taro", 11)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.key) + " " + c.value);
        EXPECT_EQ(c.expected, qvt::Query(c.hive, c.key, c.value, c.size));
    }
}

// No profile is chosen where several hold the client's key, none does, or the
// named one is missing, and then the machine's half is not read either.
TEST_F(CopiedDrive, NoProfileChosen) {
    Software({{"CREAR\\AL-Mail", {{"InstallPath", 1, RegSz("x")}}}});
    // profiles: folder, holds the client's key; user: TQNRALM_WINDOWS_USER
    const struct { std::vector<std::pair<std::string, bool>> profiles; const char* user; } cases[] = {
        {{{"Users/Taro", true}, {"Documents and Settings/Old", true}}, ""},
        {{{"Users/Taro", false}}, ""},
        {{{"Users/Taro", true}}, "Jiro"},
    };
    for (const auto& c : cases) {
        prefix.Remove("Z:" + Host("Users"));
        prefix.Remove("Z:" + Host("Documents and Settings"));
        for (const auto& [folder, withKey] : c.profiles) User(folder, withKey);
        ScopedEnv user("TQNRALM_WINDOWS_USER", c.user);
        EXPECT_EQ("<no key>", qvt::Query(Hive::CurrentUser, kKey, "MailboxPath")) << c.profiles.size() << c.user;
        EXPECT_EQ("<no key>", qvt::Query(Hive::LocalMachine, kKey, "InstallPath")) << c.profiles.size() << c.user;
    }
}

// A cut hive is no hive: no key. (fuzz_hive changes the bytes of a hive
// that holds the client's keys.)
TEST_F(CopiedDrive, DamagedHives) {
    User("Users/Taro", true);
    Software({{"CREAR\\AL-Mail", {{"InstallPath", 1, RegSz("C:\\x")}}}});
    const std::string path = Host("Windows/System32/config/SOFTWARE"), good = qvt::ReadHostFile(path);
    for (size_t size = 0; size < good.size(); size += 256) {
        qvt::WriteHostFile(path, good.substr(0, size));
        EXPECT_EQ("<no key>", qvt::Query(Hive::LocalMachine, kKey, "InstallPath")) << size;
    }
    prefix.Remove("Z:" + path);
    prefix.MakeDir("Z:" + path);
    EXPECT_EQ("<no key>", qvt::Query(Hive::LocalMachine, kKey, "InstallPath")) << "a folder is no hive";
}

}  // namespace
