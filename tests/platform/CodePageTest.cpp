// CodePageTest.cpp - code page conversion: the CP932 rules of Windows
// (strict and lenient), the '?' rule back to CP932, and the mail charsets.
#include "platform/platform.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::u16string ToWide(uint32_t cp, uint32_t flags, const std::string& bytes, int* result) {
    const int n = qvp::MultiByteToWideChar(cp, flags, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
    std::u16string out(n > 0 ? static_cast<size_t>(n) : 0, u'\0');
    *result = n > 0 ? qvp::MultiByteToWideChar(cp, flags, bytes.data(), static_cast<int>(bytes.size()), &out[0], n)
                    : n;
    return out;
}

std::string ToBytes(uint32_t cp, const std::u16string& wide) {
    const int n = qvp::WideCharToMultiByte(cp, wide.data(), static_cast<int>(wide.size()), nullptr, 0);
    std::string out(n > 0 ? static_cast<size_t>(n) : 0, '\0');
    if (n > 0) {
        EXPECT_EQ(n, qvp::WideCharToMultiByte(cp, wide.data(), static_cast<int>(wide.size()), &out[0], n));
    }
    return out;
}

struct DecodeCase {
    const char* name;
    uint32_t codePage;
    std::string bytes;
    std::u16string strict;   // empty with strictFails
    bool strictFails;
    std::u16string lenient;
};

const DecodeCase kDecodeCases[] = {
    {"ascii keeps backslash and tilde", 932, "a\\b~", u"a\\b~", false, u"a\\b~"},
    {"hiragana", 932, "\x82\xA0", u"\u3042", false, u"\u3042"},
    {"trail byte 0x5C", 932, "\x95\x5C\\", u"\u8868\\", false, u"\u8868\\"},
    {"half-width katakana", 932, "\xB1\xDF", u"\uFF71\uFF9F", false, u"\uFF71\uFF9F"},
    {"single 0x80 is U+0080", 932, "\x80", u"\u0080", false, u"\u0080"},
    {"NEC row 13", 932, "\x87\x40", u"\u2460", false, u"\u2460"},
    {"IBM extension", 932, "\xFA\x5C", u"\u7E8A", false, u"\u7E8A"},
    {"NEC-selected IBM extension", 932, "\xED\x40", u"\u7E8A", false, u"\u7E8A"},
    {"user-defined area start", 932, "\xF0\x40", u"\uE000", false, u"\uE000"},
    {"user-defined area end", 932, "\xF9\xFC", u"\uE757", false, u"\uE757"},
    {"lone lead byte at the end", 932, "a\x82", u"", true, u"a\u30FB"},
    {"bad trail byte consumes both", 932, "\x81\x20\x41", u"", true, u"\u30FB\u0041"},
    {"unassigned code", 932, "\x85\x40", u"", true, u"\u30FB"},
    {"bytes A0 FD FE FF: private use", 932, "\xA0\xFD\xFE\xFF", u"", true, u"\uF8F0\uF8F1\uF8F2\uF8F3"},
    {"ACP is 932", 0, "\x82\xA0", u"\u3042", false, u"\u3042"},
    {"utf-8 two and four bytes", 65001, "\xC3\xA9\xF0\x9F\x98\x80", u"\u00E9\U0001F600", false,
     u"\u00E9\U0001F600"},
    {"utf-8 overlong", 65001, "\xC0\xAF", u"", true, u"\uFFFD\uFFFD"},
    {"utf-8 encoded surrogate", 65001, "\xED\xA0\x80", u"", true, u"\uFFFD\uFFFD"},
    {"utf-8 truncated: one for the sequence", 65001, "a\xE3\x81", u"", true, u"a\uFFFD"},
    {"iso-2022-jp kanji", 50220, "a\x1B$B$\"\x1B(Bb", u"a\u3042b", false, u"a\u3042b"},
    {"iso-2022-jp NEC row", 50220, "\x1B$B-!\x1B(B", u"\u2460", false, u"\u2460"},
    {"iso-2022-jp kana", 50220, "\x1B(I1\x1B(B", u"\uFF71", false, u"\uFF71"},
    {"iso-2022-jp 8-bit byte", 50220, "\xA4", u"", true, u"\u30FB"},
    {"euc-jp kanji and kana", 51932, "\xA4\xA2\x8E\xB1", u"\u3042\uFF71", false, u"\u3042\uFF71"},
    {"euc-jp JIS X 0212", 51932, "\x8F\xB0\xA1z", u"", true, u"\u30FBz"},
    {"latin-1", 28591, "\xE9\xFF", u"\u00E9\u00FF", false, u"\u00E9\u00FF"},
    {"ascii drops the high bit", 20127, "A\xE9", u"Ai", false, u"Ai"},
};

TEST(CodePage, DecodesStrictAndLenient) {
    for (const DecodeCase& c : kDecodeCases) {
        SCOPED_TRACE(c.name);
        int result = 0;
        const std::u16string strict = ToWide(c.codePage, qvp::kMbErrInvalidChars, c.bytes, &result);
        if (c.strictFails) {
            EXPECT_EQ(0, result);
        } else {
            EXPECT_EQ(static_cast<int>(c.strict.size()), result);
            EXPECT_EQ(c.strict, strict);
        }
        const std::u16string lenient = ToWide(c.codePage, 0, c.bytes, &result);
        EXPECT_EQ(static_cast<int>(c.lenient.size()), result);
        EXPECT_EQ(c.lenient, lenient);
    }
}

struct EncodeCase {
    const char* name;
    uint32_t codePage;
    std::u16string wide;
    std::string bytes;
};

const EncodeCase kEncodeCases[] = {
    {"hiragana", 932, u"\u3042", "\x82\xA0"},
    {"wave dash has no form", 932, u"\u301C", "?"},
    {"minus sign, double bar, em dash, overline", 932, u"\u2212\u2016\u2014\u203E", "????"},
    {"the full-width forms map", 932, u"\uFF5E\u2225\uFF0D", "\x81\x60\x81\x61\x81\x7C"},
    {"IBM extension is preferred", 932, u"\u7E8A", "\xFA\x5C"},
    {"NEC row 13", 932, u"\u2460", "\x87\x40"},
    {"user-defined area", 932, u"\uE000", "\xF0\x40"},
    {"U+0080", 932, u"\u0080", "\x80"},
    {"half-width katakana", 932, u"\uFF71", "\xB1"},
    {"no form", 932, u"a\u20ACb", "a?b"},
    {"best fit for Latin-1 letters", 932, u"\u00C9t\u00E9 \u00AB\u00BB", "Ete \x81\xE1\x81\xE2"},
    {"private use back to single bytes", 932, u"\uF8F0\uF8F3", "\xA0\xFF"},
    {"each surrogate on its own", 932, u"\U0001F600x\xD800", "??x?"},
    {"utf-8", 65001, u"\u3042\U0001F600", "\xE3\x81\x82\xF0\x9F\x98\x80"},
    {"iso-2022-jp", 50220, u"a\u3042b", "a\x1B$B$\"\x1B(Bb"},
    {"iso-2022-jp ends in ASCII", 50220, u"\u3042", "\x1B$B$\"\x1B(B"},
    {"euc-jp", 51932, u"\u3042\uFF71", "\xA4\xA2\x8E\xB1"},
    {"latin-1", 28591, u"\u00E9\u3042", "\xE9?"},
    {"ascii takes best-fit letters", 20127, u"A\u00E9\u20AC", "Ae?"},
};

TEST(CodePage, EncodesWithQuestionMarks) {
    for (const EncodeCase& c : kEncodeCases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.bytes, ToBytes(c.codePage, c.wide));
    }
}

TEST(CodePage, EveryValidDoubleByteCodeSurvivesARoundTrip) {
    int valid = 0;
    for (unsigned lead = 0x81; lead <= 0xFC; ++lead) {
        if (!qvp::IsDBCSLeadByte(static_cast<unsigned char>(lead))) continue;
        for (unsigned trail = 0x40; trail <= 0xFC; ++trail) {
            const char bytes[2] = {static_cast<char>(lead), static_cast<char>(trail)};
            char16_t unit = 0;
            if (qvp::MultiByteToWideChar(932, qvp::kMbErrInvalidChars, bytes, 2, &unit, 1) != 1) continue;
            ++valid;
            char back[2] = {0, 0};
            const int n = qvp::WideCharToMultiByte(932, &unit, 1, back, 2);
            char16_t again = 0;
            // Duplicates (NEC and IBM rows) come back as the preferred code of the same character.
            if (unit == 0x301C || unit == 0x2212 || unit == 0x2016 || unit == 0x2014) continue;
            ASSERT_EQ(2, n) << std::hex << lead << " " << trail;
            ASSERT_EQ(1, qvp::MultiByteToWideChar(932, qvp::kMbErrInvalidChars, back, 2, &again, 1));
            ASSERT_EQ(unit, again) << std::hex << lead << " " << trail;
        }
    }
    // JIS X 0208, NEC, IBM and the user-defined area.
    EXPECT_GT(valid, 7000 + 1880);
}

TEST(CodePage, LeadBytes) {
    for (unsigned b = 0; b < 256; ++b) {
        const bool lead = (b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xFC);
        EXPECT_EQ(lead, qvp::IsDBCSLeadByte(static_cast<unsigned char>(b))) << b;
    }
}

TEST(CodePage, BufferRules) {
    struct Case {
        const char* name;
        const char* bytes;
        int cbMulti;
        int cchWide;
        int expected;
    };
    const Case cases[] = {
        {"-1 counts the terminator", "\x82\xA0z", -1, 8, 3},
        {"size query", "\x82\xA0z", 3, 0, 2},
        {"exact fit", "\x82\xA0z", 3, 2, 2},
        {"one unit short fails", "\x82\xA0z", 3, 1, 0},
        {"zero input bytes fail", "abc", 0, 8, 0},
        {"negative sizes fail", "abc", -2, 8, 0},
        {"lead byte before the terminator keeps it", "\x82", -1, 8, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        char16_t out[8] = {};
        EXPECT_EQ(c.expected, qvp::MultiByteToWideChar(932, 0, c.bytes, c.cbMulti, c.cchWide ? out : nullptr, c.cchWide));
    }
    char16_t out[4];
    EXPECT_EQ(0, qvp::MultiByteToWideChar(1252, 0, "a", 1, out, 4)) << "unknown code page";
    char narrow[4];
    EXPECT_EQ(3, qvp::WideCharToMultiByte(932, u"\u3042", -1, narrow, 4));
    EXPECT_EQ(0, narrow[2]);
    EXPECT_EQ(0, qvp::WideCharToMultiByte(932, u"\u3042\u3042", 2, narrow, 3)) << "too small";
}

TEST(CodePage, LargeInputConvertsWhole) {
    std::string big;
    for (int i = 0; i < 400000; ++i) big += "\x82\xA0\x95\x5C" "ab\r\n";
    int result = 0;
    const std::u16string wide = ToWide(932, qvp::kMbErrInvalidChars, big, &result);
    ASSERT_EQ(static_cast<int>(400000 * 6), result);
    EXPECT_EQ(big, ToBytes(932, wide));
}

}  // namespace
