// AddrParserTest.cpp - the address file grammar, line pieces, text-mode
// reading, deep nesting and damaged input.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <ostream>
#include <string>

#include "AddrTestUtil.h"
#include "addressreader/AddrLineSource.h"

using addrtest::Dump;
using addrtest::Flat;
using addrtest::Parse;

namespace {

struct GrammarCase {
    const char* name;
    std::string input;
    const char* tree;  // Dump of the file's group "F"
    const char* flat;  // the book's flat list
    int32_t result;    // of ParseFile
};

void PrintTo(const GrammarCase& c, std::ostream* os) { *os << c.name; }

const GrammarCase kGrammar[] = {
    {"empty file", "", "F{}", "", -1},
    {"blank and white-space lines", "\n   \n\t\v\f\r\n", "F{}", "", -1},
    {"made-up sample",
     "first heading: first address\nGroup Friends\n  second heading: second address\n  Group Club\n"
     "    third heading: third address\n  End Group\n  team: fourth address, fifth address\nEnd Group\n"
     "Separator\nsixth address\n",
     "F{first heading=first address|sixth address=|Friends{second heading=second address|"
     "Club{third heading=third address}|team{team=fourth address|team=fifth address}}}",
     "first heading=first address;second heading=second address;third heading=third address;"
     "team=fourth address;team=fifth address;sixth address=;",
     -1},
    {"keyword Group as a prefix", "Groupie: x\na: b\n", "F{e: x{a=b}}", "a=b;", -1},
    {"keyword Separator as a prefix", "separators: x\na: b\n", "F{a=b}", "a=b;", -1},
    {"keywords in any case", "gROUP g\nx: 1\nend group\nSEPARATOR\ny: 2\n", "F{y=2|g{x=1}}", "x=1;y=2;", -1},
    {"End Group at the top ends the file", "a: 1\nEnd Group\nb: 2\n", "F{a=1}", "a=1;", 0},
    {"End Group with text behind it", "Group g\nEnd Group and more\na: 1\n", "F{a=1|g{}}", "a=1;", -1},
    {"Group with nothing behind", "Group\na: 1\n", "F{{a=1}}", "a=1;", -1},
    {"Group with one blank behind", "Group \na: 1\n", "F{{a=1}}", "a=1;", -1},
    {"sixth byte passed over whatever it is", "Group\tTab name \nEnd Group\nGroupXY\n",
     "F{Tab name {}|Y{}}", "", -1},
    {"group names keep commas", "Group a, b\nEnd Group\n", "F{a, b{}}", "", -1},
    {"unclosed groups end with the file", "Group a\nGroup b\nx: 1\n", "F{a{b{x=1}}}", "x=1;", -1},
    {"empty key", ": value\n", "F{=value}", "=value;", -1},
    {"empty value", "key: \n", "F{key=}", "key=;", -1},
    {"no separator", "just a heading\n", "F{just a heading=}", "just a heading=;", -1},
    {"colon without blank stays in the key", "key:value\n", "F{key:value=}", "key:value=;", -1},
    {"later colon belongs to the value", "a:b: c: d\n", "F{a:b=c: d}", "a:b=c: d;", -1},
    {"white space before the separator stays", "  \tkey \t: \t value  \n", "F{key \t=value  }",
     "key \t=value  ;", -1},
    {"a lone comma", "k: ,\n", "F{k{k=}}", "k=;", -1},
    {"a comma at the end makes no item", "k: a, b,\n", "F{k{k=a|k=b}}", "k=a;k=b;", -1},
    {"comma blank comma", "k: , ,\n", "F{k{k=|k=}}", "k=;k=;", -1},
    {"white space before a comma stays", "k: a ,b , c\n", "F{k{k=a |k=b |k=c}}", "k=a ;k=b ;k=c;", -1},
    {"blank after the last comma is a piece", "k: a, \n", "F{k{k=a|k=}}", "k=a;k=;", -1},
    {"commas in a key mean nothing", "a,b: c\n", "F{a,b=c}", "a,b=c;", -1},
    {"comma groups beside items keep file order flat", "a: 1\nk: 2,3\nb: 4\n", "F{a=1|b=4|k{k=2|k=3}}",
     "a=1;k=2;k=3;b=4;", -1},
    {"zero byte ends the line", std::string("ab\0cd: x\nq: r\n", 14), "F{ab=|q=r}", "ab=;q=r;", -1},
    {"zero byte first is a blank line", std::string("\0x: y\nq: r\n", 11), "F{q=r}", "q=r;", -1},
    {"CR LF arrives as LF", "a: b\r\nc: d\r\n", "F{a=b|c=d}", "a=b;c=d;", -1},
    {"a lone CR stays", "a: b\rc\n", "F{a=b\rc}", "a=b\rc;", -1},
    {"no final line feed keeps the last byte", "a: b\nc: d", "F{a=b|c=d}", "a=b;c=d;", -1},
    {"Ctrl-Z ends the file", "a: b\n\x1A" "c: d\n", "F{a=b}", "a=b;", -1},
    {"Shift-JIS bytes are no white space", "\x81\x40k: \x81\x40v\n", "F{\x81\x40k=\x81\x40v}",
     "\x81\x40k=\x81\x40v;", -1},
};

class AddrGrammar : public ::testing::TestWithParam<GrammarCase> {};

TEST_P(AddrGrammar, ParsesAsTheFormatSays) {
    const GrammarCase& c = GetParam();
    addrtest::Parsed p = Parse(c.input);
    EXPECT_EQ(c.result, p.result);
    EXPECT_EQ(c.tree, Dump(p.file));
    EXPECT_EQ(c.flat, Flat(*p.book));
    EXPECT_EQ("", addrtest::CheckInvariants(*p.book));
}

INSTANTIATE_TEST_SUITE_P(Cases, AddrGrammar, ::testing::ValuesIn(kGrammar), addrtest::ParamName<::testing::TestParamInfo<GrammarCase>>);

// Lines longer than the buffer arrive in pieces of at most 5,119 bytes, each
// classified as a line of its own.
struct PieceCase {
    const char* name;
    std::string input;
    std::vector<std::pair<std::string, std::string>> items;  // the flat list
    int32_t groups;                                           // subgroups of "F"
};

void PrintTo(const PieceCase& c, std::ostream* os) { *os << c.name; }

std::string Run(char c, size_t n) { return std::string(n, c); }

const PieceCase kPieces[] = {
    {"5118 bytes and LF read whole", Run('a', 5118) + "\n", {{Run('a', 5118), ""}}, 0},
    {"5119 bytes then a lone LF", Run('a', 5119) + "\n", {{Run('a', 5119), ""}}, 0},
    {"5120 bytes in two pieces", Run('a', 5120) + "\n", {{Run('a', 5119), ""}, {"a", ""}}, 0},
    {"value split by the piece end", "k: " + Run('v', 5200) + "\n", {{"k", Run('v', 5116)}, {Run('v', 84), ""}}, 0},
    {"second piece classified afresh", Run('x', 5119) + "Group g\nk: v\n", {{Run('x', 5119), ""}, {"k", "v"}}, 1},
    {"CR LF counts one byte", Run('a', 5118) + "\r\nb: c\r\n", {{Run('a', 5118), ""}, {"b", "c"}}, 0},
    {"line without line end", Run('z', 12000), {{Run('z', 5119), ""}, {Run('z', 5119), ""}, {Run('z', 1762), ""}}, 0},
};

class AddrPieces : public ::testing::TestWithParam<PieceCase> {};

TEST_P(AddrPieces, LongLinesComeInPieces) {
    const PieceCase& c = GetParam();
    addrtest::Parsed p = Parse(c.input);
    ASSERT_EQ(static_cast<int32_t>(c.items.size()), p.book->ItemCount());
    for (size_t i = 0; i < c.items.size(); ++i) {
        const CAddrItem* item = p.book->ItemAt(static_cast<int32_t>(i));
        EXPECT_EQ(c.items[i].first, item->Key()) << "item " << i;
        EXPECT_EQ(c.items[i].second, item->Value()) << "item " << i;
    }
    EXPECT_EQ(c.groups, p.file->GroupCount());
}

INSTANTIATE_TEST_SUITE_P(Cases, AddrPieces, ::testing::ValuesIn(kPieces),
                         addrtest::ParamName<::testing::TestParamInfo<PieceCase>>);

// The memory source must read as a text-mode stream: fgets pieces of n-1
// bytes, CR LF as LF wherever the piece ends, Ctrl-Z as the end.
TEST(AddrMemoryLineSource, ReadsLikeATextStream) {
    struct Case {
        std::string input;
        int n;
        std::vector<std::string> lines;
    } cases[] = {
        {"ab\r\ncd", 10, {"ab\n", "cd"}},
        {"ab\r\n", 3, {"ab", "\n"}},
        {"a\r\r\n", 10, {"a\r\n"}},
        {"a\r", 10, {"a\r"}},
        {"abc\x1A" "def\n", 10, {"abc"}},
        {"\x1A" "abc", 10, {}},
        {"abcdef", 3, {"ab", "cd", "ef"}},
        {"", 10, {}},
    };
    for (const Case& c : cases) {
        CAddrMemoryLineSource source(c.input.data(), c.input.size());
        std::vector<std::string> got;
        char buffer[16];
        while (source.Gets(buffer, c.n) != nullptr) got.emplace_back(buffer);
        EXPECT_EQ(c.lines, got) << "input of " << c.input.size() << " bytes, n " << c.n;
    }
}

// 100,000 nested groups parse and are destroyed without recursion, and come
// out as the grammar says: each level one subgroup, the innermost one item.
TEST(AddrParserStress, DeepNesting) {
    const int kDepth = 100000;
    for (bool bClosed : {true, false}) {
        std::string input;
        for (int i = 0; i < kDepth; ++i) input += "Group g\n";
        input += "deep: x\n";
        if (bClosed) {
            for (int i = 0; i < kDepth; ++i) input += "End Group\n";
            input += "top: y\n";
        }
        addrtest::Parsed p = Parse(input);
        EXPECT_EQ(-1, p.result);
        const CAddrGroup* group = p.file;
        int depth = 0;
        while (group->GroupCount() == 1) {
            group = group->GroupAt(0);
            ++depth;
        }
        EXPECT_EQ(kDepth, depth);
        ASSERT_EQ(1, group->ItemCount());
        EXPECT_STREQ("deep", group->ItemAt(0)->Key());
        EXPECT_EQ(bClosed ? 2 : 1, p.book->ItemCount());
        EXPECT_EQ(bClosed ? 1 : 0, p.file->ItemCount());
        EXPECT_EQ("", addrtest::CheckInvariants(*p.book));
    }
}

TEST(AddrParserStress, TenMegabyteLineWithoutLineEnd) {
    const size_t kSize = 10u << 20;
    addrtest::Parsed p = Parse(std::string(kSize, 'q'));
    EXPECT_EQ(static_cast<int32_t>((kSize + 5118) / 5119), p.book->ItemCount());
    EXPECT_EQ("", addrtest::CheckInvariants(*p.book));
}

// Seeded random bytes (QV_SEED to repeat a run): whatever comes in, the book
// keeps its invariants.
TEST(AddrParserStress, RandomGarbageKeepsInvariants) {
    unsigned seed = std::random_device{}();
    if (const char* env = std::getenv("QV_SEED")) seed = static_cast<unsigned>(std::strtoul(env, nullptr, 10));
    std::printf("seed %u\n", seed);
    std::mt19937 rng(seed);
    const char kAlphabet[] = "Group End Separator:, \n\r\t\x1A\x81\x40" "ab";
    for (int round = 0; round < 200; ++round) {
        std::string input(rng() % 20000, '\0');
        bool bText = round % 2 == 0;
        for (char& c : input) {
            c = bText ? kAlphabet[rng() % (sizeof kAlphabet - 1)] : static_cast<char>(rng());
        }
        addrtest::Parsed p = Parse(input);
        ASSERT_EQ("", addrtest::CheckInvariants(*p.book)) << "seed " << seed << " round " << round;
    }
}

}  // namespace
