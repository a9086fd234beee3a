// CharsetTest.cpp - which charset raw 8-bit text is read in.
#include <gtest/gtest.h>

#include <string>

#include "MsgCharset.h"
#include "platform/platform.h"

namespace {

using msg::kCpGuess;

// 日本語の件名 in three Japanese charsets; Привет in KOI8-R.
const std::string kEuc = "\xC6\xFC\xCB\xDC\xB8\xEC\xA4\xCE\xB7\xEF\xCC\xBE";
const std::string kSjis = "\x93\xFA\x96\x7B\x8C\xEA\x82\xCC\x8C\x8F\x96\xBC";
const std::string kUtf8 = "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E";
const std::string kJis = "\x1B$BF|K\\8l\x1B(B";
const std::string kKoi8 = "\xF0\xD2\xC9\xD7\xC5\xD4";

TEST(MsgCharset, GuessCodePageOrder) {
    const uint32_t kKoi8R = 20866, kGb = 936;
    const struct {
        const char* name;
        std::string bytes;
        uint32_t declared, expected;
    } cases[] = {
        {"euc-jp, none declared", kEuc, kCpGuess, qvp::kCpEucJp},
        {"shift_jis, none declared", kSjis, kCpGuess, qvp::kCp932},
        {"utf-8, none declared", kUtf8, kCpGuess, qvp::kCpUtf8},
        {"iso-2022-jp, none declared", kJis, kCpGuess, qvp::kCpIso2022Jp},
        {"latin-1 letter at the end", "caf\xE9", kCpGuess, qvp::kCp1252},
        {"latin-1 letter before a blank", "caf\xE9 ok", kCpGuess, qvp::kCp1252},
        {"windows-1252 quotes", "\x93q\x94", kCpGuess, qvp::kCp1252},
        {"a bad byte spoils utf-8", kUtf8 + "\xFF", kCpGuess, qvp::kCp1252},
        {"ascii: nothing to tell", "plain", kCpGuess, qvp::kCpUtf8},
        {"ascii keeps the declared charset", "plain", kKoi8R, kKoi8R},
        // A declared Japanese charset or UTF-8 wins where the bytes are valid in it.
        {"declared agrees: euc-jp", kEuc, qvp::kCpEucJp, qvp::kCpEucJp},
        {"declared agrees: shift_jis", kSjis, qvp::kCp932, qvp::kCp932},
        {"declared shift_jis over euc-jp scoring", "\xB1\xB2", qvp::kCp932, qvp::kCp932},
        {"declared euc-jp over utf-8", "\xC3\xA9", qvp::kCpEucJp, qvp::kCpEucJp},
        {"declared disagrees: iso-2022-jp, raw sjis", kSjis, qvp::kCpIso2022Jp, qvp::kCp932},
        {"declared disagrees: utf-8, raw euc-jp", kEuc, qvp::kCpUtf8, qvp::kCpEucJp},
        {"declared disagrees: euc-jp, raw sjis", kSjis, qvp::kCpEucJp, qvp::kCp932},
        {"declared disagrees: shift_jis, raw utf-8", kUtf8, qvp::kCp932, qvp::kCpUtf8},
        {"declared shift_jis, escapes", kJis, qvp::kCp932, qvp::kCpIso2022Jp},
        // Both Japanese charsets fit: EUC-JP pairs against Shift_JIS leads 81-9F.
        {"both fit, euc pairs win", "\xB1\xB2", kCpGuess, qvp::kCpEucJp},
        {"both fit, sjis lead wins", "\x8E\xA1", kCpGuess, qvp::kCp932},
        {"koi8-r fits euc-jp too", kKoi8, kKoi8R, qvp::kCpEucJp},
        // Otherwise the declared charset, then windows-1252.
        {"declared charset for what fits nothing", "\xA0\xFF\x80", kGb, kGb},
        {"declared us-ascii is no charset", "caf\xE9", qvp::kCpAscii, qvp::kCp1252},
        {"declared japanese but invalid", "caf\xE9", qvp::kCpEucJp, qvp::kCp1252},
        {"euc-jp 3-byte form", "\x8F\xFD\xFE", kCpGuess, qvp::kCpEucJp},
        {"cut euc-jp 3-byte form", "\x8F\xFD", kCpGuess, qvp::kCp1252},
        {"sjis trail 7F", "\x88\x7F", kCpGuess, qvp::kCp1252},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(msg::GuessCodePage(c.bytes, c.declared), c.expected) << c.name;
    }
}

}  // namespace
