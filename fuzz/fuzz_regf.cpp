// fuzz_regf.cpp - hive bytes (read as HiveInput.h says) through hivex and
// the hand-written hive reader, with hivex as the oracle: both must survive
// anything; where hivex finds a key or a value in the same bytes, the reader
// finds the same.
#include "HiveInput.h"
#include "platform/posix/HiveFile.h"
#include "platform/win32/RegfHive.h"

namespace {

std::string g_base;
std::string g_path;  // the file that holds the hive of one run

const char16_t* const kKeys[] = {u"", u"CREAR", u"CREAR\\AL-MAIL", u"WOW6432NODE\\CREAR\\AL-MAIL", u"日本語\\キー"};
const char16_t* const kNames[] = {u"INSTALLPATH", u"MAILBOXPATH", u"SIZE", u"", u"BIG", u"値"};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    g_path = fuzzcheck::ScratchPath("fuzz_regf");
    g_base = fuzzhive::BaseHive(g_path, {
        {"Wow6432Node\\CREAR\\AL-Mail", {{"InstallPath", 1, qvt::RegSz("C:\\x\\a.exe")}}},
        {"CREAR\\AL-Mail",
         {{"InstallPath", 1, qvt::RegSz("C:\\日本語")},
          {"MailboxPath", 2, qvt::RegSz("%x%")},
          {"", 7, qvt::RegSz("a") + qvt::RegSz("b")},
          {"Big", 3, std::string(20000, 'b')},
          {"Size", 4, std::string("\x01\0\0\0", 4)}}},
        {"日本語\\キー", {{"値", 1, qvt::RegSz("値")}}}});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string hive = fuzzhive::FromInput(data, size, g_base);
    qvp::win32::RegfHive ours;
    ours.Load(hive);  // a hive it refuses answers nothing, which the oracle checks
    fuzzhive::Write(g_path, hive);
    qvp::posix::HiveFile theirs;
    const bool oracle = theirs.Open(g_path);
    qvp::win32::RegfHive::Value value;
    qvp::posix::RegistryFile::Value expected;
    for (const char16_t* key : kKeys) {
        if (oracle && theirs.HasKey(key) && !ours.HasKey(key)) __builtin_trap();
        for (const char16_t* name : kNames) {
            const bool found = ours.Find(key, name, &value);
            if (found && value.isText && value.text.size() > hive.size()) __builtin_trap();
            if (!oracle || !theirs.Find(key, name, &expected)) continue;
            if (expected.isText && expected.text.size() > hive.size()) __builtin_trap();
            if (!found || value.isText != expected.isText || value.text != expected.text ||
                value.bytes != expected.bytes)
                __builtin_trap();
        }
    }
    return 0;
}
