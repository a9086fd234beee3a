// TextBytesTest.cpp - the shared UTF-8 encoder and hex-digit reader at the
// edges where a wrong bound or mask would show.
#include "platform/HexDigit.h"
#include "platform/Utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(TextBytes, Utf8AtTheEdgesOfEachLength) {
    const struct { const char* name; uint32_t cp; const char* expected; } rows[] = {
        {"ASCII", 0x41, "A"}, {"last one-byte", 0x7F, "\x7F"}, {"first two-byte", 0x80, "\xC2\x80"},
        {"last two-byte", 0x7FF, "\xDF\xBF"}, {"first three-byte", 0x800, "\xE0\xA0\x80"},
        {"kanji", 0x5C71, "\xE5\xB1\xB1"}, {"replacement", 0xFFFD, "\xEF\xBF\xBD"},
        {"last three-byte", 0xFFFF, "\xEF\xBF\xBF"}, {"first four-byte", 0x10000, "\xF0\x90\x80\x80"},
        {"emoji", 0x1F600, "\xF0\x9F\x98\x80"}, {"last code point", 0x10FFFF, "\xF4\x8F\xBF\xBF"},
    };
    for (const auto& row : rows) {
        std::string out = "x";
        qvp::AppendUtf8(out, row.cp);
        EXPECT_EQ(std::string("x") + row.expected, out) << row.name;
    }
}

TEST(TextBytes, HexDigitAndItsNeighbours) {
    const struct { char c; int expected; } rows[] = {
        {'0', 0}, {'9', 9}, {'a', 10}, {'f', 15}, {'A', 10}, {'F', 15},
        {'/', -1}, {':', -1}, {'@', -1}, {'G', -1}, {'`', -1}, {'g', -1}, {' ', -1}, {'\xB0', -1},
    };
    for (const auto& row : rows) EXPECT_EQ(row.expected, qvp::HexDigit(row.c)) << row.c;
}

}  // namespace
