// IniTest.cpp - GetPrivateProfileStringA semantics, file by file.
#include "platform/platform.h"
#include "support/WinePrefix.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

namespace {

struct IniCase {
    const char* name;
    std::string file;  // "<none>": no file
    const char* section;
    const char* key;
    const char* def;
    uint32_t size;
    std::string expected;
};

const IniCase kIniCases[] = {
    {"plain", "[Property]\nTitle=Mine\n", "Property", "Title", "", 64, "Mine"},
    {"section and key in any case", "[PROPERTY]\ntitle=Mine\n", "property", "TITLE", "", 64, "Mine"},
    {"blanks trimmed", "[P]\n \t Title \t=  Mine here \t\n", "P", "Title", "", 64, "Mine here"},
    {"CR and Ctrl-Z trimmed", "[P]\r\nTitle=Mine\x1A\r\n", "P", "Title", "", 64, "Mine"},
    {"lookup names trimmed", "[P]\nTitle=Mine\n", " P ", " Title ", "", 64, "Mine"},
    {"double quotes lose the pair", "[P]\nT=\"a b\"\n", "P", "T", "", 64, "a b"},
    {"single quotes lose the pair", "[P]\nT='a b'\n", "P", "T", "", 64, "a b"},
    {"mismatched quotes stay", "[P]\nT=\"a b'\n", "P", "T", "", 64, "\"a b'"},
    {"one quote stays", "[P]\nT=\"\n", "P", "T", "", 64, "\""},
    {"two quotes give empty", "[P]\nT=\"\"\n", "P", "T", "d", 64, ""},
    {"quote only at the start stays", "[P]\nT=\"abc\n", "P", "T", "", 64, "\"abc"},
    {"comment line", "[P]\n;T=x\nT=y\n", "P", "T", "", 64, "y"},
    {"only the first column starts a comment", "[P]\n  ;T=x\n", "P", ";T", "d", 64, "x"},
    {"semicolon in a value is kept", "[P]\nT=a ; b\n", "P", "T", "", 64, "a ; b"},
    {"line without = is a key without value", "[P]\nT\nT=v\n", "P", "T", "d", 64, "d"},
    {"first duplicate key wins", "[P]\nT=1\nt=2\n", "P", "T", "", 64, "1"},
    {"only the first section of a name", "[P]\nA=1\n[Q]\n[p]\nT=2\n", "P", "T", "d", 64, "d"},
    {"key in another section", "[Q]\nT=1\n[P]\nU=2\n", "P", "T", "d", 64, "d"},
    {"key before any section", "T=1\n[P]\nT=2\n", "P", "T", "", 64, "2"},
    {"section name up to the last bracket", "[a]b]\nT=1\n", "a]b", "T", "", 64, "1"},
    {"equals sign in the value", "[P]\nT=a=b\n", "P", "T", "", 64, "a=b"},
    {"empty value", "[P]\nT=\n", "P", "T", "d", 64, ""},
    {"NUL ends a value", std::string("[P]\nT=ab\0cd\n", 12), "P", "T", "", 64, "ab"},
    {"cut to size minus one", "[P]\nT=abcdef\n", "P", "T", "", 4, "abc"},
    {"size one stores nothing", "[P]\nT=abcdef\n", "P", "T", "", 1, ""},
    {"missing key gives the default", "[P]\nT=1\n", "P", "X", "dflt", 64, "dflt"},
    {"default loses trailing blanks only", "[P]\n", "P", "X", " 'dflt' ", 64, " 'dflt'"},
    {"default is cut too", "[P]\n", "P", "X", "dflt", 3, "df"},
    {"missing file gives the default", "<none>", "P", "T", "dflt", 64, "dflt"},
    {"LF line ends", "[P]\nA=1\nT=2\n", "P", "T", "", 64, "2"},
    {"CR line ends", "[P]\rA=1\rT=2\r", "P", "T", "", 64, "2"},
    {"no line end at the end", "[P]\r\nT=2", "P", "T", "", 64, "2"},
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
    for (const IniCase& c : kIniCases) {
        SCOPED_TRACE(c.name);
        // A file of its own for each case: the system may keep a file it has read.
        const std::string path = "C:\\Ini\\case" + std::to_string(++number) + ".ini";
        if (c.file != "<none>") prefix.WriteFile(path, c.file);
        char buffer[64];
        std::memset(buffer, 0x7F, sizeof buffer);
        const uint32_t n = qvp::ProfileString(c.section, c.key, c.def, buffer, c.size, path.c_str());
        EXPECT_EQ(c.expected.size(), n);
        EXPECT_EQ(c.expected, std::string(buffer));
        EXPECT_EQ(0x7F, buffer[c.size < 64 ? c.size : 63]) << "wrote past the buffer";
    }
}

TEST(Ini, FoundInAnyCaseAndInTheWindowsFolder) {
    qvt::WinePrefix prefix;
    prefix.WriteFile("C:\\Mail\\Account1\\Account.ini", "[Property]\r\nTitle=Taro\r\n");
    char buffer[512];
    EXPECT_EQ(4u, qvp::ProfileString("Property", "Title", "", buffer, sizeof buffer,
                                     "C:\\MAIL\\account1\\ACCOUNT.INI"));
    EXPECT_STREQ("Taro", buffer);
    EXPECT_EQ(0u, qvp::ProfileString("Property", "Title", "", buffer, sizeof buffer, "C:\\Mail\\Account2\\Account.ini"));
    EXPECT_STREQ("", buffer);
    prefix.WriteFile("C:\\windows\\qvtest.ini", "[Mail]\nMAPI=1\n");
    EXPECT_EQ(1u, qvp::ProfileString("mail", "mapi", "0", buffer, sizeof buffer, "qvtest.ini"));
    EXPECT_STREQ("1", buffer);
}

}  // namespace
