// test_parsers.cpp - the message list line formats and the escaping of
// names, on buffers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MailFixture.h"
#include "mailreader/EntryLists.h"
#include "mailreader/MailReaderApi.h"

namespace {

const ::testing::Environment* const g_realLibrary =
    ::testing::AddGlobalTestEnvironment(new mailtest::RealLibraryEnvironment);

std::vector<std::string> Read(const std::string& bytes, bool index) {
    CMemoryLineSource source(bytes.data(), bytes.size());
    std::vector<std::string> names;
    auto add = [&names](const std::string& name) { names.push_back(name); };
    if (index) ReadEntryLines(source, ParseIndexLine, add);
    else ReadEntryLines(source, ParseEntryListLine, add);
    return names;
}

TEST(EntryList, Lines) {
    struct Case {
        const char* name;
        std::string bytes;
        std::vector<std::string> expected;
    };
    const std::string longName(600, 'x');
    const Case cases[] = {
        {"one entry", "00000001=1,2,3\n", {"00000001.alm"}},
        {"file order kept", "0000000B=\n0000000A=\n", {"0000000B.alm", "0000000A.alm"}},
        {"equals at byte eight only", "0000001=x\n000000001=x\n", {}},
        {"nothing after equals", "00000002=", {"00000002.alm"}},
        {"header and blank lines passed over", "[List]\n\n00000003=a\n", {"00000003.alm"}},
        {"eight bytes taken whatever they are", "ab cd/\\#=z\n", {"ab cd/\\#.alm"}},
        {"zero byte before the equals", std::string("0000\0" "004=x\n", 11), {}},
        // A line over 511 bytes goes on as a new line at byte 511.
        {"long line continues as a new line",
         std::string(511, 'y') + "00000005=x\n", {"00000005.alm"}},
        {"long line of equals", longName + "\n", {}},
        {"empty", "", {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.expected, Read(c.bytes, false));
    }
}

TEST(IndexFile, Lines) {
    struct Case {
        const char* name;
        std::string bytes;
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        {"path before the first equals", "Acc\\inbox.box\\00000001=a=b\n", {"Acc\\inbox.box\\00000001.alm"}},
        {"line without equals passed over", "Acc\\x\\00000002\n=\n", {".alm"}},
        {"name cut at 255 bytes", std::string(300, 'n') + "=\n", {std::string(255, 'n') + ".alm"}},
        {"Shift-JIS name kept", "\x95\x5C\\00000003=\n", {"\x95\x5C\\00000003.alm"}},
        {"several in file order", "b=\na=\n", {"b.alm", "a.alm"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.expected, Read(c.bytes, true));
    }
}

TEST(LineSource, GivesPiecesLikeFgets) {
    const std::string bytes = std::string(10, 'a') + "\n" + "bc";
    CMemoryLineSource source(bytes.data(), bytes.size());
    char buffer[5];
    std::vector<std::string> pieces;
    while (source.Gets(buffer, sizeof buffer) != nullptr) pieces.push_back(buffer);
    EXPECT_EQ((std::vector<std::string>{"aaaa", "aaaa", "aa\n", "bc"}), pieces);
}

TEST(EscapeName, Table) {
    struct Case {
        const char* name;
        std::string input;
        std::string expected;
    };
    const Case cases[] = {
        {"plain", "DEFAULT_USER1", "DEFAULT_USER1"},
        {"slash", "a/b", "a%2fb"},
        {"hash and backslash", "C:\\x#1", "C:%5cx%231"},
        {"percent stays", "100%", "100%"},
        {"trail byte 5C untouched", "\x95\x5C\\\x83\x5C", "\x95\x5C%5c\x83\x5C"},
        {"katakana single bytes", "\xBD\xC0/", "\xBD\xC0%2f"},
        {"lead byte last ends the text", "ab\x95", "ab\x95"},
        {"empty", "", ""},
        {"all three", "#/\\", "%23%2f%5c"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.expected, EscapeRecordName(c.input));
    }
}

}  // namespace
