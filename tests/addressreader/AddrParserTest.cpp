// AddrParserTest.cpp - the address file grammar, long lines in pieces,
// text-mode reading, deep nesting and damaged input.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "AddrTestUtil.h"

using addrtest::Parse;

namespace {

std::string R(char c, size_t n) { return std::string(n, c); }

TEST(AddrParser, Grammar) {
    // tree: Dump of the file's group "F"; flat: the book's flat list, "*" to
    // skip; result: of ParseFile. (The end-to-end sample book has a file of
    // every ordinary line form.)
    struct Case { const char* name; std::string input, tree, flat; int32_t result; } cases[] = {
        {"empty file", "", "F{}", "", -1},
        {"blank and white-space lines", "\n   \n\t\v\f\r\n", "F{}", "", -1},
        {"keywords as a prefix", "separators: x\nGroupie: x\na: b\n", "F{e: x{a=b}}", "a=b;", -1},
        {"keywords in any case", "gROUP g\nx: 1\nend group\nSEPARATOR\ny: 2\n", "F{y=2|g{x=1}}", "x=1;y=2;", -1},
        {"End Group at the top ends the file", "a: 1\nEnd Group\nb: 2\n", "F{a=1}", "a=1;", 0},
        {"End Group with text behind it", "Group g\nEnd Group and more\na: 1\n", "F{a=1|g{}}", "a=1;", -1},
        {"Group with nothing behind", "Group\na: 1\n", "F{{a=1}}", "a=1;", -1},
        {"sixth byte passed over, names keep commas", "Group\tTab name \nEnd Group\nGroup a, b\nEnd Group\nGroupXY\n",
         "F{Tab name {}|a, b{}|Y{}}", "", -1},
        {"unclosed groups end with the file", "Group a\nGroup b\nx: 1\n", "F{a{b{x=1}}}", "x=1;", -1},
        {"empty key, empty value, no separator", ": value\nkey: \njust a heading\n",
         "F{=value|key=|just a heading=}", "=value;key=;just a heading=;", -1},
        {"colons", "key:value\na:b: c: d\n", "F{key:value=|a:b=c: d}", "key:value=;a:b=c: d;", -1},
        {"white space before the separator stays", "  \tkey \t: \t value  \n", "F{key \t=value  }",
         "key \t=value  ;", -1},
        {"lone comma, comma at the end, blank between", "k: ,\nm: a, b,\nn: , ,\n",
         "F{k{k=}|m{m=a|m=b}|n{n=|n=}}", "k=;m=a;m=b;n=;n=;", -1},
        {"white space around commas", "o: a ,b , c\np: a, \n", "F{o{o=a |o=b |o=c}|p{p=a|p=}}",
         "o=a ;o=b ;o=c;p=a;p=;", -1},
        {"comma groups keep file order flat, commas in a key mean nothing", "a: 1\nk: 2,3\nb,c: 4\n",
         "F{a=1|b,c=4|k{k=2|k=3}}", "a=1;k=2;k=3;b,c=4;", -1},
        {"zero byte ends the line", std::string("ab\0cd: x\n\0x: y\nq: r\n", 20), "F{ab=|q=r}", "ab=;q=r;", -1},
        {"CR LF, lone CR, no final line feed", "a: b\r\nc: d\re\nf: g", "F{a=b|c=d\re|f=g}", "a=b;c=d\re;f=g;", -1},
        {"Ctrl-Z ends the file", "a: b\n\x1A" "c: d\n", "F{a=b}", "a=b;", -1},
        {"Shift-JIS bytes are no white space", "\x81\x40k: \x81\x40v\n", "F{\x81\x40k=\x81\x40v}", "*", -1},
        // Lines longer than the buffer come in pieces of at most 5,119 bytes,
        // each classified as a line of its own; CR LF counts one byte.
        {"piece boundaries", R('a', 5118) + "\n" + R('b', 5119) + "\n" + R('c', 5120) + "\n" + R('d', 5118) + "\r\n",
         "F{" + R('a', 5118) + "=|" + R('b', 5119) + "=|" + R('c', 5119) + "=|c=|" + R('d', 5118) + "=}", "*", -1},
        {"value split by the piece end", "k: " + R('v', 5200) + "\n", "F{k=" + R('v', 5116) + "|" + R('v', 84) + "=}",
         "*", -1},
        {"second piece classified afresh", R('x', 5119) + "Group g\nk: v\n", "F{" + R('x', 5119) + "=|g{k=v}}", "*",
         -1},
        {"line without line end", R('z', 12000),
         "F{" + R('z', 5119) + "=|" + R('z', 5119) + "=|" + R('z', 1762) + "=}", "*", -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        addrtest::Parsed p = Parse(c.input);
        EXPECT_EQ(c.result, p.result);
        EXPECT_EQ(c.tree, addrtest::Dump(p.file));
        if (c.flat != "*") {
            EXPECT_EQ(c.flat, addrtest::Flat(*p.book));
        }
        EXPECT_EQ("", addrtest::CheckInvariants(*p.book));
    }
}

// The memory source reads as a text-mode stream: fgets pieces of n-1 bytes,
// CR LF as LF wherever the piece ends, Ctrl-Z as the end.
TEST(AddrMemoryLineSource, ReadsLikeATextStream) {
    struct Case { std::string input; int n; std::vector<std::string> lines; } cases[] = {
        {"ab\r\ncd", 10, {"ab\n", "cd"}}, {"ab\r\n", 3, {"ab", "\n"}},     {"a\r\r\n", 10, {"a\r\n"}},
        {"a\r", 10, {"a\r"}},             {"abc\x1A" "def\n", 10, {"abc"}}, {"\x1A" "abc", 10, {}},
        {"abcdef", 3, {"ab", "cd", "ef"}}, {"", 10, {}},
    };
    for (const Case& c : cases) {
        CAddrMemoryLineSource source(c.input.data(), c.input.size());
        std::vector<std::string> got;
        char buffer[16];
        while (source.Gets(buffer, c.n) != nullptr) got.emplace_back(buffer);
        EXPECT_EQ(c.lines, got) << "input of " << c.input.size() << " bytes, n " << c.n;
    }
}

// 100,000 nested groups, closed or not, parse and are destroyed without
// recursion: each level one subgroup, the innermost one item.
TEST(AddrParserStress, DeepNesting) {
    const int kDepth = 100000;
    for (bool bClosed : {true, false}) {
        std::string input;
        for (int i = 0; i < kDepth; ++i) input += "Group g\n";
        input += "deep: x\n";
        for (int i = 0; bClosed && i < kDepth; ++i) input += "End Group\n";
        if (bClosed) input += "top: y\n";
        addrtest::Parsed p = Parse(input);
        EXPECT_EQ(-1, p.result);
        const CAddrGroup* group = p.file;
        int depth = 0;
        for (; group->GroupCount() == 1; ++depth) group = group->GroupAt(0);
        EXPECT_EQ(kDepth, depth);
        ASSERT_EQ(1, group->ItemCount());
        EXPECT_STREQ("deep", group->ItemAt(0)->Key());
        EXPECT_EQ(bClosed ? 1 : 0, p.file->ItemCount());
        EXPECT_EQ("", addrtest::CheckInvariants(*p.book));
    }
}

// Seeded random bytes (QV_SEED to repeat a run) keep the book's invariants.
TEST(AddrParserStress, RandomGarbageKeepsInvariants) {
    unsigned seed = std::random_device{}();
    if (const char* env = std::getenv("QV_SEED")) seed = static_cast<unsigned>(std::strtoul(env, nullptr, 10));
    std::printf("seed %u\n", seed);
    std::mt19937 rng(seed);
    const char kAlphabet[] = "Group End Separator:, \n\r\t\x1A\x81\x40" "ab";
    for (int round = 0; round < 200; ++round) {
        std::string input(rng() % 20000, '\0');
        for (char& c : input) c = round % 2 == 0 ? kAlphabet[rng() % (sizeof kAlphabet - 1)] : static_cast<char>(rng());
        addrtest::Parsed p = Parse(input);
        ASSERT_EQ("", addrtest::CheckInvariants(*p.book)) << "seed " << seed << " round " << round;
    }
}

}  // namespace
