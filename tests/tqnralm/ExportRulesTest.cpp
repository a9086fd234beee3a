// The rules of tqnralm's export that the read-back tests cannot reach on the
// sample store: mboxrd quoting, the From line's sender and date, file names,
// the hashes of the manifest and of the cards' UIDs, and the queue between
// walking and writing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "FileNames.h"
#include "Manifest.h"
#include "Mbox.h"
#include "Sha1.h"
#include "Sha256.h"
#include "StepQueue.h"

namespace tqnralm {
namespace {

TEST(Mboxrd, QuotesFromLinesAndEndsLinesWithLf) {
    const struct { const char* body; const char* mbox; } rows[] = {
        {"From me\n", ">From me\n\n"},
        {">From me\n", ">>From me\n\n"},
        {">>From me\r\n", ">>>From me\n\n"},
        {"a From b\n", "a From b\n\n"},
        {" From b\nFrom\nFromage\n", " From b\nFrom\nFromage\n\n"},
        {"x\r\nFrom y", "x\n>From y\n\n"},  // the last line without an end gets one
        {"a\rb\r\n", "a\rb\n\n"},          // a lone CR stays
        {"", "\n"},
        // Lines longer than a block of sixteen, their CR LF on either side of a block's edge.
        {"0123456789abcde\r\nFrom x\r\n", "0123456789abcde\n>From x\n\n"},
        {"0123456789abcde\r\n0123456789012345678901234567890123456789\r\n",
         "0123456789abcde\n0123456789012345678901234567890123456789\n\n"},
        {"aaaaaaaaaaaaaaaaaaaa\rbbbbbbbbbbbbbbbbbbb\r\ncccccccccccccccccccccFrom",
         "aaaaaaaaaaaaaaaaaaaa\rbbbbbbbbbbbbbbbbbbb\ncccccccccccccccccccccFrom\n\n"},
        {"\r\n\r\nxxxxxxxxxxxxxxxxxxxxxxxx\n>>From y\nFrom z\r\n", "\n\nxxxxxxxxxxxxxxxxxxxxxxxx\n>>>From y\n>From z\n\n"},
    };
    for (const auto& row : rows) {
        std::string out;
        AppendMboxrd(row.body, std::string(row.body).size(), out);
        EXPECT_EQ(row.mbox, out) << row.body;
    }
}

TEST(Mboxrd, BeginsWithHeader) {
    struct { const char* text; bool header; } rows[] = {
        {"Subject: x\r\n\r\nbody", true}, {"X-A:", true}, {"\r\nbody", true}, {"\nbody", true},
        {"no header at all\r\n", false}, {"From x@y Fri Mar 14 00:05:01 2008\n", false}, {": x", false},
        {"Sub ject: x", false}, {"\x82\xA0: x", false}, {"Subject", false}, {"\r", false},
    };
    for (const auto& r : rows) EXPECT_EQ(r.header, BeginsWithHeader(r.text, std::strlen(r.text))) << r.text;
}

TEST(Mboxrd, DateInUtcAsAsctime) {
    const char* const kEpoch = "Thu Jan  1 00:00:00 1970";
    const struct { const char* date; const char* asctime; } rows[] = {
        {"Fri, 14 Mar 2008 09:05:01 +0900", "Fri Mar 14 00:05:01 2008"},
        {"14 Mar 2008 09:05:01 -0530", "Fri Mar 14 14:35:01 2008"},
        {"Thu, 1 Jan 2009 08:30 +0900 (JST)", "Wed Dec 31 23:30:00 2008"},  // no seconds, a comment
        {"Mon, 31 Dec 2007 23:00:00 EST", "Tue Jan  1 04:00:00 2008"},
        {"Sat, 1 Jan 2000 00:00:00 -0000", "Sat Jan  1 00:00:00 2000"},
        {"1 Mar 2008 00:30:00 JST", "Fri Feb 29 15:30:00 2008"},
        {"1 Mar 99 12:00:00 GMT", "Mon Mar  1 12:00:00 1999"},  // two-digit years: 1950 to 2049
        {"1 Mar 04 12:00:00 +0000", "Mon Mar  1 12:00:00 2004"},
        {"1 Mar 104 12:00:00 +0000", "Mon Mar  1 12:00:00 2004"},
        {"Sun, 1 Mar 2009 12:00:00", "Sun Mar  1 12:00:00 2009"},  // no zone: UTC
        {"", kEpoch},
        {"next Tuesday", kEpoch},
        {"29 Feb 2001 00:00:00 +0000", kEpoch},
        {"14 Foo 2008 09:05:01 +0900", kEpoch},
        {"14 Mar 2008 24:00:00 +0900", kEpoch},
        {"14 Mar 2008 09:05:01 +2400", kEpoch},
        {"14 Mar 2008 09:05:01 +09", kEpoch},
    };
    for (const auto& row : rows) EXPECT_EQ(row.asctime, AsctimeUtc(row.date)) << row.date;
}

// The quick reading of a common date must give what the general one gives,
// or leave the date to it: dates made of near-misses of every part.
TEST(Mboxrd, QuickDatesAgreeWithTheGeneralReading) {
    const std::vector<std::vector<std::string>> parts = {
        {"", "Fri, ", "fri ", "Fri,", "1 ", ",,"},
        {"14", "1", "01", "0", "32", "29", "31", "123", "x", "+1"},
        {" Mar ", " mar ", " Feb ", " Apr ", " Ma ", " March ", ",Mar,", "\tJun\t"},
        {"2008", "1999", "99", "49", "50", "104", "2000", "1899", "20081", "2"},
        {" 09:05:01", " 9:5:1", " 23:59:60", " 24:00", " 12:34", " 12:34:", " 12:345", " 1:2:3x", " +9:00:00", " 12:00:00\v"},
        {"", " +0900", " -0530", " +2400", " +0960", " +09", " +09000", " GMT", " +0900 (JST)", " +0900 x", " +0900,", " <x>"},
    };
    std::mt19937 random(5);
    for (int n = 0; n < 20000; ++n) {
        std::string date;
        for (const auto& choices : parts) date += choices[random() % choices.size()];
        int64_t quick = -1, general = -1;
        QuickDates(true);
        const bool quickRead = ParseDate(date, &quick);
        QuickDates(false);
        const bool generalRead = ParseDate(date, &general);
        ASSERT_EQ(generalRead, quickRead) << date;
        ASSERT_EQ(general, quick) << date;
    }
    QuickDates(true);
}

TEST(Mboxrd, MessageTimeFromDateElseReceived) {
    const int64_t k2008 = 1205453101;  // Fri, 14 Mar 2008 00:05:01 UTC
    const struct {
        const char* headers;
        int64_t time;  // -1: none
    } rows[] = {
        {"Date: Fri, 14 Mar 2008 09:05:01 +0900\r\n\r\n", k2008},
        {"Received: from a by b; Fri, 14 Mar 2008 00:05:01 +0000\nReceived: from c; 1 Jan 2000 00:00 +0000\n\n", k2008},
        {"Received: from a\n by b (x; y);\n Fri, 14 Mar 2008 00:05:01 GMT\n\n", k2008},  // folded, ';' in a comment
        {"Date: someday\nReceived: by b; 14 Mar 2008 09:05:01 +0900\n\n", k2008},
        {"Received: by b without a date\n\n", -1},
        {"Subject: none\n\nDate: Fri, 14 Mar 2008 09:05:01 +0900\n", -1},  // in the body
        {"", -1},
    };
    for (const auto& row : rows) {
        int64_t time = -1;
        const bool found = MessageTime(row.headers, std::string(row.headers).size(), &time);
        EXPECT_EQ(row.time >= 0, found) << row.headers;
        EXPECT_EQ(row.time, found ? time : -1) << row.headers;
    }
}

TEST(Mboxrd, FromLineSender) {
    const struct { const char* headers; const char* line; } rows[] = {
        {"Return-Path: <bounce@x.jp>\r\nFrom: a@x.jp\r\nDate: Fri, 14 Mar 2008 09:05:01 +0900\r\n\r\nbody",
         "From bounce@x.jp Fri Mar 14 00:05:01 2008\n"},
        {"Return-Path: <>\nFrom: \"Taro <boss>\" <taro@x.jp>\n\n", "From taro@x.jp Thu Jan  1 00:00:00 1970\n"},
        {"FROM: taro@x.jp (Taro <t>)\n\n", "From taro@x.jp Thu Jan  1 00:00:00 1970\n"},
        {"From: =?ISO-2022-JP?B?GyRCOzNFRBsoQg==?=\n <yamada@x.jp>\n\n", "From yamada@x.jp Thu Jan  1 00:00:00 1970\n"},
        {"From: undisclosed recipients\n\n", "From MAILER-DAEMON Thu Jan  1 00:00:00 1970\n"},
        {"Subject: s\n\nFrom: a@x.jp\nDate: 1 Mar 2008 00:00 +0000\n", "From MAILER-DAEMON Thu Jan  1 00:00:00 1970\n"},
        {"From: a b@x.jp\n\n", "From b@x.jp Thu Jan  1 00:00:00 1970\n"},
    };
    for (const auto& row : rows) {
        const size_t size = std::string(row.headers).size();
        int64_t time = -1;
        MessageTime(row.headers, size, &time);
        EXPECT_EQ(row.line, FromLine(row.headers, size, time)) << row.headers;
    }
}

TEST(FileNames, SafeComponent) {
    const std::string a199(199, 'a'), a60(60, 'a'), kana55 = [] {
        std::string s;
        for (int i = 0; i < 55; ++i) s += "\xe3\x81\x82";  // あ: one unit, three bytes
        return s;
    }();
    const NameStyle kPlain = NameStyle::kPlain, kTb = NameStyle::kThunderbird, kMd = NameStyle::kMaildir;
    const struct { std::string name; NameStyle style; std::string safe; } rows[] = {
        {"a/b\\c:d*e?f\"g<h>i|j", kPlain, "a_b_c_d_e_f_g_h_i_j"},
        {"tab\there\x7f\xc2\x85", kPlain, "tab_here__"},  // C0, DEL and C1 controls
        {"CON", kPlain, "CON_"}, {"con.txt", kPlain, "con_.txt"}, {"LPT9.log.gz", kPlain, "LPT9_.log.gz"},
        {"NUL.", kPlain, "NUL__"}, {"COM0", kPlain, "COM0"}, {"CONSOLE", kPlain, "CONSOLE"},
        {"name.", kPlain, "name_"}, {"name ", kPlain, "name_"}, {"", kPlain, "_"},
        {a199 + "\xe6\x97\xa5", kPlain, a199},  // 202 bytes, cut inside the last character
        {"日本語", kPlain, "日本語"},
        {"\xc0/x", kPlain, "\xc0_x"},  // no UTF-8: a lead byte does not take the '/' with it
        // Names that try to leave OUTDIR stay one component below it.
        {"..", kPlain, "._"}, {"../../x", kPlain, ".._.._x"}, {"/etc/passwd", kPlain, "_etc_passwd"},
        {"C:\\Windows", kPlain, "C__Windows"}, {"..", kTb, "__"}, {"..", kMd, "__"},
        // What Thunderbird and Dovecot open.
        {"a#b x;y pct%41", kPlain, "a#b x;y pct%41"}, {"a#b x;y pct%41", kTb, "a＃b x；y pct％41"},
        {"a#b x;y pct%41", kMd, "a#b x;y pct%41"}, {".dot", kTb, "_dot"}, {".dot", kMd, "_dot"},
        {"a.b.c", kMd, "a_b_c"}, {"a.b.c", kTb, "a.b.c"}, {"tilde~", kTb, "tilde_"}, {"tilde~", kMd, "tilde~"},
        {"~home", kMd, "_home"}, {"~home", kTb, "~home"}, {a60, kTb, std::string(55, 'a')}, {a60, kMd, a60},
        {kana55 + "\xe3\x81\x84", kTb, kana55},  // 55 characters of 168 bytes
        {std::string(54, 'a') + "\xf0\x9f\x93\xa7", kTb, std::string(54, 'a')},  // a surrogate pair counts two
        {std::string(54, 'a') + "~x", kTb, std::string(54, 'a') + "_"},  // the cut leaves a final "~"
        {"表示", kTb, "表示"},  // its Shift-JIS trail byte is 0x5C
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.safe, SafeComponent(row.name, row.style)) << row.name << " style " << static_cast<int>(row.style);
    }
}

TEST(FileNames, LibraryEscapesUndone) {
    const struct { const char* name; const char* unescaped; } rows[] = {
        {"家族 %231%2f2", "家族 #1/2"}, {"個人%232%2f私用%5c家", "個人#2/私用\\家"}, {"100%", "100%"},
        {"%2F%5C", "%2F%5C"},  // the library writes lower case only
        {"%2", "%2"}, {"%%23", "%#"}, {"pct%41", "pct%41"},
    };
    for (const auto& row : rows) EXPECT_EQ(row.unescaped, UnescapeName(row.name)) << row.name;
    EXPECT_EQ("NoTitle", LastPathComponent("C:\\Users\\taro\\AL-Mail\\Mailbox\\NoTitle"));
    EXPECT_EQ("Account3", LastPathComponent("C:\\AL-Mail\\Mailbox\\Account3\\"));
    EXPECT_EQ("plain", LastPathComponent("plain"));
}

bool IsReserved(const std::string& folded) { return folded == "000001.eml"; }

TEST(FileNames, SiblingsThatCollide) {
    const std::string a200(200, 'a');
    const std::vector<std::string> mbox = {".sbd", ".msf"};
    const struct {
        NameStyle style;
        std::vector<std::string> companions;
        std::vector<std::string> names;
        std::vector<std::string> claimed;
    } rows[] = {
        {NameStyle::kPlain, {}, {"Inbox", "INBOX", "inbox", "Inbox (2)"}, {"Inbox", "INBOX (2)", "inbox (3)", "Inbox (2) (2)"}},
        {NameStyle::kPlain, {}, {"Ärger", "äRGER", "Σ", "σ", "Ж", "ж", "Ａ", "ａ"},
         {"Ärger", "äRGER (2)", "Σ", "σ (2)", "Ж", "ж (2)", "Ａ", "ａ (2)"}},
        {NameStyle::kPlain, {}, {"a:b", "a_b", "a?b"}, {"a_b", "a_b (2)", "a_b (3)"}},
        {NameStyle::kPlain, {}, {a200, a200}, {a200, std::string(196, 'a') + " (2)"}},
        {NameStyle::kThunderbird, mbox, {"X.sbd", "x", "y.MSF", "Y"}, {"X.sbd", "x (2)", "y.MSF", "Y (2)"}},
        {NameStyle::kThunderbird, mbox, {"x", "X.SBD"}, {"x", "X.SBD (2)"}},
        {NameStyle::kThunderbird, mbox, {a200, a200}, {std::string(55, 'a'), std::string(51, 'a') + " (2)"}},
    };
    for (const auto& row : rows) {
        SiblingNames siblings(NameRules{row.style, row.companions, nullptr});
        for (size_t i = 0; i < row.names.size(); ++i) EXPECT_EQ(row.claimed[i], siblings.Claim(row.names[i]));
    }
    SiblingNames reserved(NameRules{NameStyle::kPlain, {}, IsReserved});
    reserved.Reserve("manifest.json");
    EXPECT_EQ("000001.EML (2)", reserved.Claim("000001.EML"));
    EXPECT_EQ("Manifest.JSON (2)", reserved.Claim("Manifest.JSON"));
}

TEST(StepQueue, KeepsOrderAndNeverLeavesAThreadWaiting) {
    StepQueue<int> queue(10);
    ASSERT_TRUE(queue.Push(1, 100)) << "a step over the bound goes in alone";
    std::thread walker([&] { EXPECT_FALSE(queue.Push(2, 8)) << "the writer stopped while the walker waited"; });
    queue.Stop();
    walker.join();
    EXPECT_FALSE(queue.Push(3, 1));

    StepQueue<int> fifo(10);
    std::thread writer([&] {
        std::vector<int> got;
        for (int step = 0; fifo.Pop(&step);) got.push_back(step);
        EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), got);
    });
    for (int step = 1; step <= 4; ++step) ASSERT_TRUE(fifo.Push(step, 6));  // one at a time fits
    fifo.Close();
    writer.join();
}

template <typename Hash>
std::string Digest(const std::string& input, size_t chunk) {
    Hash hash;
    for (size_t pos = 0; pos < input.size(); pos += chunk) hash.Update(input.data() + pos, std::min(chunk, input.size() - pos));
    return hash.HexDigest();
}

// FIPS 180's vectors, fed in chunks so that the buffered path runs; SHA-256 with
// the processor's SHA instructions where it has them, and the portable rounds.
TEST(Hashes, FipsVectors) {
    const struct { std::string text; size_t chunk; const char *sha1, *sha256; } rows[] = {
        {"", 1, "da39a3ee5e6b4b0d3255bfef95601890afd80709",
         "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", 3, "a9993e364706816aba3e25717850c26c9cd0d89d",
         "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", 7, "84983e441c3bd26ebaae4aa1f95129e5e54670f1",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {std::string(1000000, 'a'), 997, "34aa973cd4c4daa4f61eeb2bdbad27316534016f",
         "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    for (const auto& row : rows) EXPECT_EQ(row.sha1, Digest<Sha1>(row.text, row.chunk)) << row.text.size();
    for (bool instructions : {true, false}) {
        Sha256::UseProcessorInstructions(instructions);
        for (const auto& row : rows) {
            EXPECT_EQ(row.sha256, Digest<Sha256>(row.text, row.chunk)) << row.text.size() << " " << instructions;
        }
    }
    Sha256::UseProcessorInstructions(true);
}

// Two texts hashed side by side give each text's own digest, whatever their
// lengths (the blocks of both, then the rest of the longer one, then the
// padding of each).
TEST(Hashes, PairEqualsTwoDigests) {
    const size_t sizes[] = {0, 1, 55, 63, 64, 65, 127, 128, 1000, 4097};
    std::string a(4097, 0), b(4097, 0);
    for (size_t i = 0; i < a.size(); ++i) a[i] = static_cast<char>(i * 7), b[i] = static_cast<char>(i * 13 + 1);
    for (bool instructions : {true, false}) {
        Sha256::UseProcessorInstructions(instructions);
        for (size_t na : sizes) {
            for (size_t nb : sizes) {
                std::string hexA, hexB;
                Sha256::Pair(std::string_view(a).substr(0, na), std::string_view(b).substr(0, nb), &hexA, &hexB);
                EXPECT_EQ(Digest<Sha256>(a.substr(0, na), 64), hexA) << na << " " << nb << " " << instructions;
                EXPECT_EQ(Digest<Sha256>(b.substr(0, nb), 64), hexB) << na << " " << nb << " " << instructions;
            }
        }
    }
    Sha256::UseProcessorInstructions(true);
}

// The manifest's rows are encoded by hand: every string must come out as
// nlohmann-json writes it, invalid UTF-8 (which it replaces) included.
TEST(Manifest, StringsAsNlohmannJsonWritesThem) {
    const auto dump = [](const std::string& s) {
        return Json(s).dump(-1, ' ', false, Json::error_handler_t::replace);
    };
    // Well-formed UTF-8 (nlohmann-json's strict dump takes it) comes out the
    // same through the path that does not check it.
    const auto trusted = [](const std::string& s) {
        try {
            Json(s).dump(-1, ' ', false, Json::error_handler_t::strict);
        } catch (const Json::exception&) {
            return std::string();
        }
        std::string out;
        AppendJsonUtf8(&out, s);
        return out;
    };
    const std::string rows[] = {
        "", "plain", "q\"uote\\back/slash", std::string("\0\x01\b\t\n\x0B\f\r\x1F\x7F", 11),
        "\xC2\x80\xDF\xBF", "\xE0\xA0\x80\xED\x9F\xBF\xEF\xBF\xBF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
        "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80", "\x80", "a\xE3\x81", "\xE3\x81\xE3\x81\x82", "\x82\xA0 sjis", "\xFF\xFE",
    };
    for (const std::string& row : rows) {
        std::string out = "x";
        AppendJsonString(&out, row);
        EXPECT_EQ("x" + dump(row), out) << dump(row);
        const std::string unchecked = trusted(row);
        if (!unchecked.empty()) {
            EXPECT_EQ(dump(row), unchecked) << dump(row);
        }
    }
    std::mt19937 random(25);
    const char alphabet[] = {'a', '"', '\\', '\n', '\x01', '\x7F', '\x80', '\xBF', '\xC2', '\xE0', '\xED', '\xF0', '\xF4', '\xA0', '\x9F'};
    for (int i = 0; i < 20000; ++i) {
        std::string s(random() % 8, 'a');
        for (char& c : s) c = alphabet[random() % sizeof alphabet];
        std::string out;
        AppendJsonString(&out, s);
        ASSERT_EQ(dump(s), out) << dump(s);
        const std::string unchecked = trusted(s);
        if (!unchecked.empty()) {
            ASSERT_EQ(dump(s), unchecked) << dump(s);
        }
    }
}

}  // namespace
}  // namespace tqnralm
