// RegistryTest.cpp - registry values read as ANSI strings: keys and names in
// any case, characters without a CP932 form, the room for the NUL.
#include "platform/RegistryQuery.h"
#include "support/WinePrefix.h"

#include <gtest/gtest.h>


namespace {

TEST(Registry, ReadsValuesAsAnsi) {
    qvt::WinePrefix prefix;
    prefix.SetHklm("Software\\CREAR\\AL-Mail", "InstallPath", "C:\\メール\\AlMail.exe");
    prefix.SetHkcu("Software\\CREAR\\AL-Mail", "MailboxPath", "C:\\波〜");
    prefix.SetHklm("Software\\A", "N", "abcd");
    EXPECT_EQ(qvt::Cp932("C:\\メール\\AlMail.exe") + '\0',
              qvt::Query(qvp::Hive::LocalMachine, "SOFTWARE\\crear\\al-mail\\", "installpath"));
    EXPECT_EQ(qvt::Cp932("C:\\波") + "?" + '\0', qvt::Query(qvp::Hive::CurrentUser, "Software\\CREAR\\AL-Mail", "MailboxPath"))
        << "U+301C has no CP932 form";
    EXPECT_EQ("<no value>", qvt::Query(qvp::Hive::CurrentUser, "Software\\CREAR\\AL-Mail", "InstallPath"));
    EXPECT_EQ("<no key>", qvt::Query(qvp::Hive::CurrentUser, "Software\\CREAR\\Other", "MailboxPath"));
    EXPECT_EQ("<no key>", qvt::Query(qvp::Hive::LocalMachine, "Software\\CRE", "x")) << "a part of a name";
    EXPECT_EQ("<no value>", qvt::Query(qvp::Hive::LocalMachine, "Software\\CREAR", "x")) << "implied parent";
    EXPECT_EQ(std::string("abcd", 4) + '\0', qvt::Query(qvp::Hive::LocalMachine, "Software\\A", "N", 5)) << "fits";
    EXPECT_EQ("<no value>", qvt::Query(qvp::Hive::LocalMachine, "Software\\A", "N", 4)) << "no room for the NUL";
}

}  // namespace
