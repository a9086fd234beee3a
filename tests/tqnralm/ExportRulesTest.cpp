// The rules of tqnralm's export that the read-back tests cannot reach on the
// sample store: mboxrd quoting, the From line's sender and date, file names,
// the hashes of the manifest and of the cards' UIDs, and the queue between
// walking and writing.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "FileNames.h"
#include "Mbox.h"
#include "Sha1.h"
#include "Sha256.h"
#include "StepQueue.h"

namespace tqnralm {
namespace {

TEST(Mboxrd, QuotesFromLinesAndEndsLinesWithLf) {
    const struct {
        const char* body;
        const char* mbox;
    } rows[] = {
        {"From me\n", ">From me\n\n"},
        {">From me\n", ">>From me\n\n"},
        {">>From me\r\n", ">>>From me\n\n"},
        {"a From b\n", "a From b\n\n"},
        {" From b\nFrom\nFromage\n", " From b\nFrom\nFromage\n\n"},
        {"x\r\nFrom y", "x\n>From y\n\n"},  // the last line without an end gets one
        {"a\rb\r\n", "a\rb\n\n"},          // a lone CR stays
        {"", "\n"},
    };
    for (const auto& row : rows) {
        std::string out;
        AppendMboxrd(row.body, std::string(row.body).size(), out);
        EXPECT_EQ(row.mbox, out) << row.body;
    }
}

TEST(Mboxrd, DateInUtcAsAsctime) {
    const char* const kEpoch = "Thu Jan  1 00:00:00 1970";
    const struct {
        const char* date;
        const char* asctime;
    } rows[] = {
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

TEST(Mboxrd, FromLineSender) {
    const struct {
        const char* headers;
        const char* line;
    } rows[] = {
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
        EXPECT_EQ(row.line, FromLine(row.headers, std::string(row.headers).size())) << row.headers;
    }
}

TEST(FileNames, SafeComponent) {
    const std::string a199(199, 'a');
    const struct {
        std::string name;
        std::string safe;
    } rows[] = {
        {"a/b\\c:d*e?f\"g<h>i|j", "a_b_c_d_e_f_g_h_i_j"},
        {"tab\there\x7f\xc2\x85", "tab_here__"},  // C0, DEL and C1 controls
        {"CON", "CON_"},
        {"con.txt", "con_.txt"},
        {"LPT9.log.gz", "LPT9_.log.gz"},
        {"NUL.", "NUL__"},
        {"COM0", "COM0"},
        {"CONSOLE", "CONSOLE"},
        {"name.", "name_"},
        {"name ", "name_"},
        {"..", "._"},
        {"", "_"},
        {a199 + "\xe6\x97\xa5", a199},  // 202 bytes, cut inside the last character
        {"日本語", "日本語"},
        {"\xc0/x", "\xc0_x"},  // no UTF-8: a lead byte does not take the '/' with it
    };
    for (const auto& row : rows) EXPECT_EQ(row.safe, SafeComponent(row.name)) << row.name;
}

bool IsReserved(const std::string& folded) { return folded == "000001.eml"; }

TEST(FileNames, SiblingsThatCollide) {
    const std::string a200(200, 'a');
    const struct {
        const char* companion;
        std::vector<std::string> names;
        std::vector<std::string> claimed;
    } rows[] = {
        {"", {"Inbox", "INBOX", "inbox", "Inbox (2)"}, {"Inbox", "INBOX (2)", "inbox (3)", "Inbox (2) (2)"}},
        {"", {"Ärger", "äRGER", "Σ", "σ", "Ж", "ж", "Ａ", "ａ"}, {"Ärger", "äRGER (2)", "Σ", "σ (2)", "Ж", "ж (2)", "Ａ", "ａ (2)"}},
        {"", {"a:b", "a_b", "a?b"}, {"a_b", "a_b (2)", "a_b (3)"}},
        {"", {a200, a200}, {a200, std::string(196, 'a') + " (2)"}},
        {".sbd", {"X.sbd", "x"}, {"X.sbd", "x (2)"}},
        {".sbd", {"x", "X.SBD"}, {"x", "X.SBD (2)"}},
    };
    for (const auto& row : rows) {
        SiblingNames siblings(row.companion);
        for (size_t i = 0; i < row.names.size(); ++i) EXPECT_EQ(row.claimed[i], siblings.Claim(row.names[i]));
    }
    SiblingNames reserved("", IsReserved);
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
    const struct {
        std::string text;
        size_t chunk;
        const char *sha1, *sha256;
    } rows[] = {
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

}  // namespace
}  // namespace tqnralm
