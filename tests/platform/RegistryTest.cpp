// RegistryTest.cpp - registry values read as ANSI strings: keys and names in
// any case, characters without a CP932 form, the room for the NUL.
#include "platform/platform.h"
#include "support/WinePrefix.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Query(qvp::Hive hive, const char* key, const char* value, uint32_t size = 520) {
    qvp::RegKey* handle = nullptr;
    if (!qvp::RegOpen(hive, key, &handle)) return "<no key>";
    std::string buffer(size, '\x7f');
    uint32_t bytes = size;
    const bool got = qvp::RegQueryString(handle, value, &buffer[0], &bytes);
    qvp::RegCloseKey(handle);
    return got ? buffer.substr(0, bytes) : "<no value>";
}

TEST(Registry, ReadsValuesAsAnsi) {
    qvt::WinePrefix prefix;
    prefix.SetHklm("Software\\CREAR\\AL-Mail", "InstallPath", "C:\\メール\\AlMail.exe");
    prefix.SetHkcu("Software\\CREAR\\AL-Mail", "MailboxPath", "C:\\波〜");
    prefix.SetHklm("Software\\A", "N", "abcd");
    EXPECT_EQ(qvt::Cp932("C:\\メール\\AlMail.exe") + '\0',
              Query(qvp::Hive::LocalMachine, "SOFTWARE\\crear\\al-mail\\", "installpath"));
    EXPECT_EQ(qvt::Cp932("C:\\波") + "?" + '\0', Query(qvp::Hive::CurrentUser, "Software\\CREAR\\AL-Mail", "MailboxPath"))
        << "U+301C has no CP932 form";
    EXPECT_EQ("<no value>", Query(qvp::Hive::CurrentUser, "Software\\CREAR\\AL-Mail", "InstallPath"));
    EXPECT_EQ("<no key>", Query(qvp::Hive::CurrentUser, "Software\\CREAR\\Other", "MailboxPath"));
    EXPECT_EQ("<no key>", Query(qvp::Hive::LocalMachine, "Software\\CRE", "x")) << "a part of a name";
    EXPECT_EQ("<no value>", Query(qvp::Hive::LocalMachine, "Software\\CREAR", "x")) << "implied parent";
    EXPECT_EQ(std::string("abcd", 4) + '\0', Query(qvp::Hive::LocalMachine, "Software\\A", "N", 5)) << "fits";
    EXPECT_EQ("<no value>", Query(qvp::Hive::LocalMachine, "Software\\A", "N", 4)) << "no room for the NUL";
}

}  // namespace
