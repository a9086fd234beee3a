// test_parsers.cpp - the message list and index file lines, and the escaping
// of names, on buffers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MailFixture.h"
#include "mailreader/EntryLists.h"
#include "mailreader/MailReaderApi.h"

namespace {

using Names = std::vector<std::string>;

TEST(EntryLists, Lines) {
    struct Case {
        const char* name;
        bool index;  // an index file, else "Entry.lst"
        std::string bytes;
        Names expected;
    };
    const Case cases[] = {
        {"file order kept", false, "0000000B=1,2\n0000000A=\n", {"0000000B.alm", "0000000A.alm"}},
        {"equals at byte eight only", false, "0000001=x\n000000001=x\n", {}},
        {"nothing after equals, no line end", false, "00000002=", {"00000002.alm"}},
        {"header and blank lines passed over", false, "[List]\n\n00000003=a\n", {"00000003.alm"}},
        {"eight bytes taken whatever they are", false, "ab cd/\\#=z\n", {"ab cd/\\#.alm"}},
        {"zero byte before the equals", false, std::string("0000\0" "004=x\n", 11), {}},
        // A line over 511 bytes goes on as a new line at byte 511.
        {"long line continues as a new line", false, std::string(511, 'y') + "00000005=x\n", {"00000005.alm"}},
        {"long line without equals", false, std::string(600, 'x') + "\n", {}},
        {"empty", false, "", {}},
        {"index: path before the first equals", true, "Acc\\in.box\\00000001=a=b\n", {"Acc\\in.box\\00000001.alm"}},
        {"index: line without equals passed over", true, "Acc\\x\\00000002\n=\n", {".alm"}},
        {"index: name cut at 255 bytes", true, std::string(300, 'n') + "=\n", {std::string(255, 'n') + ".alm"}},
        {"index: Shift-JIS name kept", true, "\x95\x5C\\00000003=\nb=\n", {"\x95\x5C\\00000003.alm", "b.alm"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        CMemoryLineSource source(c.bytes.data(), c.bytes.size());
        Names names;
        auto add = [&names](const std::string& name) { names.push_back(name); };
        if (c.index) ReadEntryLines(source, ParseIndexLine, add);
        else ReadEntryLines(source, ParseEntryListLine, add);
        EXPECT_EQ(c.expected, names);
    }
}

TEST(EntryLists, LineSourceGivesPiecesLikeFgets) {
    const std::string bytes = std::string(10, 'a') + "\nbc";
    CMemoryLineSource source(bytes.data(), bytes.size());
    char buffer[5];
    Names pieces;
    while (source.Gets(buffer, sizeof buffer) != nullptr) pieces.push_back(buffer);
    EXPECT_EQ((Names{"aaaa", "aaaa", "aa\n", "bc"}), pieces);
}

TEST(EscapeName, Table) {
    const std::pair<std::string, std::string> cases[] = {
        {"DEFAULT_USER1", "DEFAULT_USER1"},
        {"C:\\x#1/a", "C:%5cx%231%2fa"},
        {"100%", "100%"},                                   // percent stays
        {"\x95\x5C\\\x83\x5C", "\x95\x5C%5c\x83\x5C"},      // trail byte 5C untouched
        {"\xBD\xC0/", "\xBD\xC0%2f"},                       // katakana single bytes
        {"ab\x95", "ab\x95"},                               // lead byte last ends the text
        {"", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(c.second, EscapeRecordName(c.first)) << c.first;
}

}  // namespace
