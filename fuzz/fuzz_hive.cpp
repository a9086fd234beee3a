// fuzz_hive.cpp - registry hive bytes through hivex and the hive reader.
//
// Random bytes rarely pass a hive's first checks, so besides raw hives
// ("regf" first) an input can be a list of changes to a valid hive that
// holds the client's keys: three bytes each, an offset and a new byte. When
// the input's first byte is odd the base block's checksum is made right
// again, so that damage behind it is reached.
#include "FuzzCheck.h"
#include "platform/posix/HiveFile.h"
#include "support/posix/Hive.h"

#include <cstdio>
#include <fstream>
#include <iterator>

namespace {

std::string g_base;
std::string g_path;  // the file that holds the hive of one run

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    g_path = fuzzcheck::ScratchPath("fuzz_hive");
    const std::string base = g_path + ".base";
    qvt::WriteHive(base, {{"Wow6432Node\\CREAR\\AL-Mail", {{"InstallPath", 1, qvt::RegSz("C:\\x\\a.exe")}}},
                          {"CREAR\\AL-Mail",
                           {{"InstallPath", 1, qvt::RegSz("C:\\日本語")},
                            {"MailboxPath", 2, qvt::RegSz("%x%")},
                            {"Size", 4, std::string("\x01\0\0\0", 4)}}}});
    std::ifstream in(base, std::ios::binary);
    g_base.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    std::remove(base.c_str());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string hive = fuzzcheck::Text(data, size);
    if (hive.compare(0, 4, "regf") != 0) {
        hive = g_base;
        for (size_t i = 1; i + 2 < size; i += 3)
            hive[(data[i] | data[i + 1] << 8 | (i & 0x10) << 12) % hive.size()] = static_cast<char>(data[i + 2]);
        if (size > 0 && (data[0] & 1)) qvt::FixHiveChecksum(hive);
    }
    fuzzcheck::Check(static_cast<bool>(
        std::ofstream(g_path, std::ios::binary | std::ios::trunc).write(hive.data(), std::streamsize(hive.size()))));
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
