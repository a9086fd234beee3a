// fuzz_regf.cpp - hive bytes through the hand-written hive reader, with
// hivex as the oracle.
//
// An input is a raw hive ("regf" first) or, since random bytes rarely pass
// a hive's first checks, a list of changes to a valid hive (three bytes
// each: an offset and a new byte; an odd first byte makes the base block's
// checksum right again). The reader must survive anything; where hivex
// finds a key or a value in the same bytes, the reader finds the same.
#include "platform/posix/HiveFile.h"
#include "platform/win32/RegfHive.h"
#include "support/posix/Hive.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace {

std::string g_base;
std::string g_path;  // the file that holds the hive of one run

const char16_t* const kKeys[] = {u"", u"CREAR", u"CREAR\\AL-MAIL", u"WOW6432NODE\\CREAR\\AL-MAIL", u"日本語\\キー"};
const char16_t* const kNames[] = {u"INSTALLPATH", u"MAILBOXPATH", u"SIZE", u"", u"BIG", u"値"};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    g_path = (std::filesystem::temp_directory_path() / ("fuzz_regf." + std::to_string(std::random_device{}()))).string();
    const std::string base = g_path + ".base";
    std::atexit([] { std::remove(g_path.c_str()); });
    qvt::WriteHive(base, {{"Wow6432Node\\CREAR\\AL-Mail", {{"InstallPath", 1, qvt::RegSz("C:\\x\\a.exe")}}},
                          {"CREAR\\AL-Mail",
                           {{"InstallPath", 1, qvt::RegSz("C:\\日本語")},
                            {"MailboxPath", 2, qvt::RegSz("%x%")},
                            {"", 7, qvt::RegSz("a") + qvt::RegSz("b")},
                            {"Big", 3, std::string(20000, 'b')},
                            {"Size", 4, std::string("\x01\0\0\0", 4)}}},
                          {"日本語\\キー", {{"値", 1, qvt::RegSz("値")}}}});
    std::ifstream in(base, std::ios::binary);
    g_base.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    std::remove(base.c_str());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string hive;
    if (size >= 4 && std::string(reinterpret_cast<const char*>(data), 4) == "regf") {
        hive.assign(reinterpret_cast<const char*>(data), size);
    } else {
        hive = g_base;
        for (size_t i = 1; i + 2 < size; i += 3)
            hive[(data[i] | data[i + 1] << 8 | (i & 0x10) << 12) % hive.size()] = static_cast<char>(data[i + 2]);
        if (size > 0 && (data[0] & 1)) qvt::FixHiveChecksum(hive);
    }
    qvp::win32::RegfHive ours;
    ours.Load(hive);  // a hive it refuses answers nothing, which the oracle checks
    if (!std::ofstream(g_path, std::ios::binary | std::ios::trunc).write(hive.data(), std::streamsize(hive.size())))
        std::abort();
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
            if (!found || value.isText != expected.isText || value.text != expected.text ||
                value.bytes != expected.bytes)
                __builtin_trap();
        }
    }
    return 0;
}
