// IniTest.cpp - GetPrivateProfileStringA semantics, file by file.
#include "platform/platform.h"
#include "support/WinePrefix.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

const std::string kLongLine = "[P]\r\nT=" + std::string(10u << 20, 'y') + "\r\nU=2\r\n";

// file "<none>": no file
const struct {
    const char* name;
    std::string file;
    const char *section, *key, *def;
    uint32_t size;
    std::string expected;
} kIniCases[] = {
    {"section and key in any case", "[PROPERTY]\ntitle=Mine\n", "property", "TITLE", "", 64, "Mine"},
    {"blanks trimmed", "[P]\n \t Title \t=  Mine here \t\n", "P", "Title", "", 64, "Mine here"},
    {"CR and Ctrl-Z trimmed", "[P]\r\nTitle=Mine\x1A\r\n", "P", "Title", "", 64, "Mine"},
    {"double quotes lose the pair", "[P]\nT=\"a b\"\n", "P", "T", "", 64, "a b"},
    {"single quotes lose the pair", "[P]\nT='a b'\n", "P", "T", "", 64, "a b"},
    {"mismatched quotes stay", "[P]\nT=\"a b'\n", "P", "T", "", 64, "\"a b'"},
    {"two quotes give empty", "[P]\nT=\"\"\n", "P", "T", "d", 64, ""},
    {"comment line", "[P]\n;T=x\nT=y\n", "P", "T", "", 64, "y"},
    {"only the first column starts a comment", "[P]\n  ;T=x\n", "P", ";T", "d", 64, "x"},
    {"semicolon in a value is kept", "[P]\nT=a ; b\n", "P", "T", "", 64, "a ; b"},
    {"line without = is a key without value", "[P]\nT\nT=v\n", "P", "T", "d", 64, "d"},
    {"first duplicate key wins", "[P]\nT=1\nt=2\n", "P", "T", "", 64, "1"},
    {"only the first section of a name", "[P]\nA=1\n[Q]\n[p]\nT=2\n", "P", "T", "d", 64, "d"},
    {"key before any section", "T=1\n[P]\nT=2\n", "P", "T", "", 64, "2"},
    {"equals sign in the value", "[P]\nT=a=b\n", "P", "T", "", 64, "a=b"},
    {"empty value", "[P]\nT=\n", "P", "T", "d", 64, ""},
    {"NUL ends a value", std::string("[P]\nT=ab\0cd\n", 12), "P", "T", "", 64, "ab"},
    {"cut to size minus one", "[P]\nT=abcdef\n", "P", "T", "", 4, "abc"},
    {"ten-megabyte value cut", kLongLine, "P", "T", "", 64, std::string(63, 'y')},
    {"key after a ten-megabyte line", kLongLine, "P", "U", "", 64, "2"},
    {"missing key gives the default", "[P]\nT=1\n", "P", "X", "dflt", 64, "dflt"},
    {"default loses trailing blanks only", "[P]\n", "P", "X", " 'dflt' ", 64, " 'dflt'"},
    {"default is cut too", "[P]\n", "P", "X", "dflt", 3, "df"},
    {"missing file gives the default", "<none>", "P", "T", "dflt", 64, "dflt"},
    {"CR line ends, none at the end", "[P]\rA=1\rT=2", "P", "T", "", 64, "2"},
    {"Shift-JIS bytes", "[\x83\x81\x81\x5B\x83\x8B]\nT=\x95\x5C\x8E\xA6\n", "\x83\x81\x81\x5B\x83\x8B", "T", "", 64,
     "\x95\x5C\x8E\xA6"},
    {"full-width letters keep their case", "[\x82\x60]\nT=1\n", "\x82\x81", "T", "d", 64, "d"},
    {"UTF-8 byte order mark", "\xEF\xBB\xBF[P]\nT=\xE8\xA1\xA8\xE3\x80\x9C\n", "P", "T", "", 64, "\x95\x5C?"},
    {"UTF-16LE byte order mark", std::string("\xFF\xFE[\0P\0]\0\n\0T\0=\0\x68\x88\n\0", 18), "P", "T", "", 64,
     "\x95\x5C"},
};

TEST(Ini, GetPrivateProfileStringSemantics) {
    qvt::WinePrefix prefix;
    int number = 0;
    for (const auto& c : kIniCases) {
        SCOPED_TRACE(c.name);
        // A file of its own for each case: the system may keep a file it has read.
        const std::string path = "C:\\Ini\\case" + std::to_string(++number) + ".ini";
        if (c.file != "<none>") prefix.WriteFile(path, c.file);
        char buffer[65];
        std::memset(buffer, 0x7F, sizeof buffer);
        EXPECT_EQ(c.expected.size(), qvp::ProfileString(c.section, c.key, c.def, buffer, c.size, path.c_str()));
        EXPECT_EQ(c.expected, std::string(buffer));
        EXPECT_EQ(0x7F, buffer[c.size]) << "wrote past the buffer";
    }
}

}  // namespace
