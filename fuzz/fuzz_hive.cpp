// fuzz_hive.cpp - registry hive bytes (read as HiveInput.h says) through
// hivex and the hive reader.
#include "HiveInput.h"
#include "platform/posix/HiveFile.h"

namespace {

std::string g_base;
std::string g_path;  // the file that holds the hive of one run

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    g_path = fuzzcheck::ScratchPath("fuzz_hive");
    g_base = fuzzhive::BaseHive(g_path, {
        {"Wow6432Node\\CREAR\\AL-Mail", {{"InstallPath", 1, qvt::RegSz("C:\\x\\a.exe")}}},
        {"CREAR\\AL-Mail",
         {{"InstallPath", 1, qvt::RegSz("C:\\日本語")},
          {"MailboxPath", 2, qvt::RegSz("%x%")},
          {"Size", 4, std::string("\x01\0\0\0", 4)}}}});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string hive = fuzzhive::FromInput(data, size, g_base);
    fuzzhive::Write(g_path, hive);
    qvp::posix::HiveFile file;
    if (!file.Open(g_path)) return 0;
    qvp::posix::RegistryFile::Value value;
    for (const char16_t* key : {u"CREAR\\AL-MAIL", u"WOW6432NODE\\CREAR\\AL-MAIL"}) {
        for (const char16_t* name : {u"INSTALLPATH", u"MAILBOXPATH", u"SIZE", u""}) {
            if (file.Find(key, name, &value) && value.isText && value.text.size() > hive.size()) __builtin_trap();
        }
    }
    return 0;
}
