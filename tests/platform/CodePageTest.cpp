// CodePageTest.cpp - code page conversion: the CP932 rules of Windows
// (strict and lenient), the '?' rule back to CP932, and the mail charsets.
#include "platform/platform.h"
#include "platform/Cp932JisRuns.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

int ToWide(uint32_t cp, uint32_t flags, const std::string& bytes, std::u16string* out) {
    const int size = static_cast<int>(bytes.size());
    const int n = qvp::MultiByteToWideChar(cp, flags, bytes.data(), size, nullptr, 0);
    out->assign(n > 0 ? static_cast<size_t>(n) : 0, u'\0');
    return n > 0 ? qvp::MultiByteToWideChar(cp, flags, bytes.data(), size, &(*out)[0], n) : n;
}

std::string ToBytes(uint32_t cp, const std::u16string& wide) {
    const int n = qvp::WideCharToMultiByte(cp, wide.data(), static_cast<int>(wide.size()), nullptr, 0);
    std::string out(n > 0 ? static_cast<size_t>(n) : 0, '\0');
    EXPECT_EQ(n, n > 0 ? qvp::WideCharToMultiByte(cp, wide.data(), static_cast<int>(wide.size()), &out[0], n) : n);
    return out;
}

TEST(CodePage, DecodesStrictAndLenient) {
    const struct {
        const char* name;
        uint32_t codePage;
        std::string bytes;
        std::u16string text;  // lenient; strict gives the same or fails
        bool strictFails;
    } cases[] = {
        {"trail byte 0x5C, backslash and tilde", 932, "\x95\x5C\\~", u"\u8868\\~", false},
        {"half-width katakana", 932, "\xB1\xDF", u"\uFF71\uFF9F", false},
        {"single 0x80 is U+0080", 932, "\x80", u"\u0080", false},
        {"NEC row 13", 932, "\x87\x40", u"\u2460", false},
        {"IBM extension and its NEC-selected twin", 932, "\xFA\x5C\xED\x40", u"\u7E8A\u7E8A", false},
        {"user-defined area", 932, "\xF0\x40\xF9\xFC", u"\uE000\uE757", false},
        {"lone lead byte at the end", 932, "a\x82", u"a\u30FB", true},
        {"bad trail byte consumes both", 932, "\x81\x20\x41", u"\u30FB\u0041", true},
        {"unassigned code", 932, "\x85\x40", u"\u30FB", true},
        {"bytes A0 FD FE FF: private use", 932, "\xA0\xFD\xFE\xFF", u"\uF8F0\uF8F1\uF8F2\uF8F3", true},
        {"ACP is 932", 0, "\x82\xA0", u"\u3042", false},
        {"utf-8 two and four bytes", 65001, "\xC3\xA9\xF0\x9F\x98\x80", u"\u00E9\U0001F600", false},
        {"utf-8 encoded surrogate", 65001, "\xED\xA0\x80", u"\uFFFD\uFFFD", true},
        {"utf-8 truncated: one for the sequence", 65001, "a\xE3\x81", u"a\uFFFD", true},
        {"iso-2022-jp kanji", 50220, "a\x1B$B$\"\x1B(Bb", u"a\u3042b", false},
        {"iso-2022-jp 8-bit byte", 50220, "\xA4", u"\u30FB", true},
        {"euc-jp kanji and kana", 51932, "\xA4\xA2\x8E\xB1", u"\u3042\uFF71", false},
        {"euc-jp JIS X 0212", 51932, "\x8F\xB0\xA1z", u"\u30FBz", true},
        {"latin-1", 28591, "\xE9\xFF", u"\u00E9\u00FF", false},
        {"ascii drops the high bit", 20127, "A\xE9", u"Ai", false},
        // The code pages of other languages' mail, one row a family (the
        // subject rows of the message library read KOI8-R, IBM866, ISO-8859-5
        // and -7, windows-1251 and Big5); strict conversion is not offered
        // for UTF-7 and the other ISO-2022 forms.
        {"windows-1252", 1252, "caf\xE9 \x93q\x94 \x80", u"caf\u00E9 \u201Cq\u201D \u20AC", false},
        {"windows-1250", 1250, "\x8A\xE8", u"\u0160\u010D", false},
        {"windows-1253", 1253, "\xE1\xE2", u"\u03B1\u03B2", false},
        {"windows-1254", 1254, "\xF0\xFD", u"\u011F\u0131", false},
        {"windows-1255", 1255, "\xF9\xEC", u"\u05E9\u05DC", false},
        {"windows-1256", 1256, "\xC7", u"\u0627", false},
        {"windows-1257", 1257, "\xE0", u"\u0105", false},
        {"windows-874", 874, "\xA1", u"\u0E01", false},
        {"koi8-u", 21866, "\xA4", u"\u0454", false},
        {"macintosh", 10000, "\x8E", u"\u00E9", false},
        {"iso-8859-2", 28592, "\xA9", u"\u0160", false},
        {"iso-8859-8", 28598, "\xF9", u"\u05E9", false},
        {"iso-8859-15", 28605, "\xA4", u"\u20AC", false},
        {"gbk", 936, "\xD6\xD0\xCE\xC4", u"\u4E2D\u6587", false},
        {"euc-kr", 949, "\xC7\xD1\xB1\xDB", u"\uD55C\uAE00", false},
        {"utf-7", 65000, "+ZeVnLIqe-", u"\u65E5\u672C\u8A9E", true},
        {"utf-16le, a byte order mark chooses", 1200, "\xFE\xFF\x30\x42\x30", u"\u3042\uFFFD", true},
        {"utf-16be", 1201, "\x30\x42", u"\u3042", false},
        {"gbk, a cut character", 936, "\xD6\xD0\xCE", u"\u4E2D?", true},
    };
    // Code pages that not every system has (Wine lacks both).
    const std::u16string gb18030 = u"\U00020000";
    for (const auto& c : {std::make_pair(54936, "\x95\x32\x82\x36"), std::make_pair(50225, "\x1B$)C\x0EqiY~\x0F")}) {
        std::u16string text;
        if (qvp::MultiByteToWideChar(c.first, 0, "a", 1, nullptr, 0) == 0) continue;
        EXPECT_GT(ToWide(c.first, 0, c.second, &text), 0);
        EXPECT_EQ(text, c.first == 54936 ? gb18030 : u"\u4E2D\u6587") << c.first;
    }
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::u16string text;
        EXPECT_EQ(c.strictFails ? 0 : static_cast<int>(c.text.size()),
                  ToWide(c.codePage, qvp::kMbErrInvalidChars, c.bytes, &text));
        EXPECT_EQ(static_cast<int>(c.text.size()), ToWide(c.codePage, 0, c.bytes, &text));
        EXPECT_EQ(c.text, text);
    }
}

TEST(CodePage, EncodesWithQuestionMarks) {
    const struct { const char* name; uint32_t codePage; std::u16string wide; std::string bytes; } cases[] = {
        {"wave dash, minus, double bar, dashes, euro: no form", 932, u"\u301C\u2212\u2016\u2014\u203E\u20AC", "??????"},
        {"the full-width forms map", 932, u"\uFF5E\u2225\uFF0D", "\x81\x60\x81\x61\x81\x7C"},
        {"IBM extension is preferred", 932, u"\u7E8A", "\xFA\x5C"},
        {"best fit for Latin-1 letters", 932, u"\u00C9t\u00E9 \u00AB\u00BB", "Ete \x81\xE1\x81\xE2"},
        {"private use back to single bytes", 932, u"\uF8F0\uF8F3", "\xA0\xFF"},
        {"each surrogate on its own", 932, u"\U0001F600x\xD800", "??x?"},
        {"utf-8", 65001, u"\u3042\U0001F600", "\xE3\x81\x82\xF0\x9F\x98\x80"},
        {"iso-2022-jp ends in ASCII", 50220, u"a\u3042", "a\x1B$B$\"\x1B(B"},
        {"latin-1", 28591, u"\u00E9\u3042", "\xE9?"},
        {"ascii takes best-fit letters", 20127, u"A\u00E9\u20AC", "Ae?"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.bytes, ToBytes(c.codePage, c.wide));
    }
}

TEST(CodePage, LeadBytesAndRoundTripOfEveryDoubleByteCode) {
    int valid = 0;
    for (unsigned lead = 0; lead < 256; ++lead) {
        const bool isLead = (lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xFC);
        ASSERT_EQ(isLead, qvp::IsDBCSLeadByte(static_cast<unsigned char>(lead))) << lead;
        for (unsigned trail = 0x40; isLead && trail <= 0xFC; ++trail) {
            const char bytes[2] = {static_cast<char>(lead), static_cast<char>(trail)};
            char16_t unit = 0, again = 0;
            if (qvp::MultiByteToWideChar(932, qvp::kMbErrInvalidChars, bytes, 2, &unit, 1) != 1) continue;
            ++valid;
            // These have no form back (see above); NEC and IBM duplicates come back as the preferred code.
            if (unit == 0x301C || unit == 0x2212 || unit == 0x2016 || unit == 0x2014) continue;
            char back[2] = {0, 0};
            ASSERT_EQ(2, qvp::WideCharToMultiByte(932, &unit, 1, back, 2)) << std::hex << lead << " " << trail;
            ASSERT_EQ(1, qvp::MultiByteToWideChar(932, qvp::kMbErrInvalidChars, back, 2, &again, 1));
            ASSERT_EQ(unit, again) << std::hex << lead << " " << trail;
        }
    }
    EXPECT_GT(valid, 7000 + 1880) << "JIS X 0208, NEC, IBM and the user-defined area";
}

// The one-pass path must give what the two conversions give: every JIS
// X 0208 code in both charsets, then random text made of the bytes that
// steer the decoders (escapes, shifts, 8-bit bytes, cut sequences).
TEST(CodePage, JapaneseToAnsiEqualsTheTwoConversions) {
    const auto twoSteps = [](uint32_t cp, const std::string& bytes) {
        std::u16string wide;
        ToWide(cp, 0, bytes, &wide);
        return wide.empty() ? std::string() : ToBytes(932, wide);
    };
    std::string iso = "\x1B$B", euc;
    for (unsigned j1 = 0x21; j1 <= 0x7E; ++j1) {
        for (unsigned j2 = 0x21; j2 <= 0x7E; ++j2) {
            iso += {static_cast<char>(j1), static_cast<char>(j2)};
            euc += {static_cast<char>(j1 | 0x80), static_cast<char>(j2 | 0x80)};
        }
    }
    std::vector<std::pair<uint32_t, std::string>> texts = {{50220, iso}, {51932, euc}};
    const std::string pieces[] = {"\x1B$B", "\x1B(B", "\x1B(J", "\x1B(I", "\x1B$@", "\x1B$(D", "\x1B", "\x0E",
                                  "\x0F", "$\"", "-!", "y~", "\x8E\xB1", "\x8F\xB0\xA1", "\xA4\xA2", "\xFF",
                                  "a", "\r\n", "\x80", "\x7F", "0!$\"%v!!\".OSt&0!", "\x1B(B\r\n\x1B$B",
                                  "\xB0\xA1\xA4\xA2\xA5\xF6\xCF\xD3\xF4\xA6\xA1\xA1\xA2\xAE\xB0\xA1"};
    std::mt19937 random(932);
    for (int n = 0; n < 400; ++n) {
        std::string text;
        for (size_t k = random() % 24; k > 0; --k) text += pieces[random() % std::size(pieces)];
        texts.push_back({n % 2 ? 50220u : 51932u, text});
    }
    for (const bool wide : {true, false}) {  // AVX2's steps, where there are any, and SSE2's
        const bool before = qvp::cp932::AllowWideSteps(wide);
        for (const auto& [cp, text] : texts) {
            std::string direct = "kept:";
            ASSERT_TRUE(qvp::JapaneseToAnsi(cp, text.data(), text.size(), &direct));
            ASSERT_EQ("kept:" + twoSteps(cp, text), direct) << cp << " " << testing::PrintToString(text);
        }
        qvp::cp932::AllowWideSteps(before);
    }
    std::string untouched;
    EXPECT_FALSE(qvp::JapaneseToAnsi(65001, "a", 1, &untouched));
    EXPECT_TRUE(untouched.empty());
}

std::string TwoSteps(uint32_t cp, const std::string& bytes) {
    std::u16string wide;
    ToWide(cp, 0, bytes, &wide);
    return wide.empty() ? std::string() : ToBytes(932, wide);
}

// The codes that the converter takes by arithmetic have that form in the
// platform's table, which the two conversions read.
TEST(CodePage, ArithmeticJisCodesHaveTheirFormInTheTable) {
    int arithmetic = 0;
    for (unsigned code = 0x2121; code <= 0x7E7E; ++code) {
        if (!qvp::cp932::IsArithmeticJis(code)) continue;
        ++arithmetic;
        const unsigned sjis = qvp::cp932::JisToSjis(code >> 8, code & 0xFF);
        const std::string form = {static_cast<char>(sjis >> 8), static_cast<char>(sjis & 0xFF)};
        ASSERT_EQ(form, TwoSteps(932, form)) << std::hex << code;
    }
    EXPECT_EQ(94 + 14 + 83 + 86 + 2965 + 3390, arithmetic) << "symbols, hiragana, katakana, kanji levels 1 and 2";
}

// Runs of pairs and of ASCII at every length around the 16-, 32- and 64-byte
// steps, each followed by every kind of byte that ends a run, in the steps of
// each width.
TEST(CodePage, JapaneseRunsOfEveryLength) {
    const std::string pairs = "0!$\"%v!!\".OSt&";  // first and last codes of the arithmetic rows
    std::string longLine;  // a line end, then a line of more than one wide step
    for (int k = 0; k < 5; ++k) longLine += pairs;
    const struct {
        uint32_t codePage;
        std::vector<std::string> ends;
    } cases[] = {
        {50220, {"", "\x1B(B\r\n", "\x1B(B\r\n\x1B$B0!", "\x1B(B\r\n\x1B$B" + longLine + "\x1B(B\r\n",
                 "\x1B(J\x1B$@0!", "-p", "#0", "\"/", "OT", "t'", "%w", "$t",
                 "0", "0\x7F", " 0", "\x0E1\x0F", "\x1B(I1", "\x1B$(D0!", "\x80", "\x1B", "\x1B(", "\x1B$"}},
        {51932, {"", "\r\n", "\r\n\xB0\xA1", "\xAD\xF0", "\xA3\xB0", "\xA2\xAF", "\xCF\xD4", "\xF4\xA7", "\xB0",
                 "\xB0\x7F", "\xB0\xFF", "\x8E\xB1", "\x8F\xB0\xA1", "\x80", "\x1B$B"}},
    };
    for (const auto& c : cases) {
        const bool euc = c.codePage == 51932;
        for (size_t length = 0; length <= 80; ++length) {
            std::string run, ascii;
            for (size_t k = 0; k < length; ++k) {
                run += static_cast<char>(pairs[k % pairs.size()] | (euc ? 0x80 : 0));
                ascii += static_cast<char>('a' + k % 26);
            }
            if (length % 2) run.pop_back();
            for (const std::string& end : c.ends) {
                for (const std::string& text : {(euc ? "" : "\x1B$B") + run + end, ascii + end}) {
                    const std::string expected = TwoSteps(c.codePage, text);
                    for (const bool wide : {true, false}) {
                        const bool before = qvp::cp932::AllowWideSteps(wide);
                        std::string direct;
                        ASSERT_TRUE(qvp::JapaneseToAnsi(c.codePage, text.data(), text.size(), &direct));
                        qvp::cp932::AllowWideSteps(before);
                        ASSERT_EQ(expected, direct) << c.codePage << " " << testing::PrintToString(text);
                    }
                }
            }
        }
    }
}

TEST(CodePage, BufferRules) {
    const struct { const char* name; const char* bytes; int cbMulti, cchWide, expected; } cases[] = {
        {"-1 counts the terminator", "\x82\xA0z", -1, 8, 3},
        {"size query", "\x82\xA0z", 3, 0, 2},
        {"one unit short fails", "\x82\xA0z", 3, 1, 0},
        {"zero or negative sizes fail", "abc", -2, 8, 0},
        {"lead byte before the terminator keeps it", "\x82", -1, 8, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        char16_t out[8] = {};
        EXPECT_EQ(c.expected, qvp::MultiByteToWideChar(932, 0, c.bytes, c.cbMulti, c.cchWide ? out : nullptr, c.cchWide));
    }
    EXPECT_EQ(0, qvp::MultiByteToWideChar(12345, 0, "a", 1, nullptr, 0)) << "unknown code page";
    char narrow[4];
    EXPECT_EQ(3, qvp::WideCharToMultiByte(932, u"\u3042", -1, narrow, 4));
    EXPECT_EQ(0, narrow[2]);
    EXPECT_EQ(0, qvp::WideCharToMultiByte(932, u"\u3042\u3042", 2, narrow, 3)) << "too small";
}

}  // namespace
