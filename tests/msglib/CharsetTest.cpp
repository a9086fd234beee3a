// CharsetTest.cpp - subjects in every charset of mail: which charset raw
// 8-bit text is read in, every label family, the best-fit forms, and bytes
// that code page 932 has no character for.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "CharsetRows.h"
#include "MsgCharset.h"
#include "platform/platform.h"
#include "sNqxMsgNet.h"
#include "support/WinePrefix.h"

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
    const struct { const char* name; std::string bytes; uint32_t declared, expected; } cases[] = {
        {"windows-1252 quotes", "\x93q\x94", kCpGuess, qvp::kCp1252},
        {"a bad byte spoils utf-8", kUtf8 + "\xFF", kCpGuess, qvp::kCp1252},
        {"ascii: nothing to tell", "plain", kCpGuess, qvp::kCpUtf8},
        {"ascii under a charset of ascii bytes", "plain", qvp::kCpUtf16Le, qvp::kCpUtf8},
        {"8-bit text is no utf-16", "caf\xE9", qvp::kCpUtf16Be, qvp::kCp1252},
        // A declared Japanese charset or UTF-8 wins where the bytes are valid in
        // it (the subject rows hold more declarations that the bytes contradict).
        {"declared euc-jp over utf-8", "\xC3\xA9", qvp::kCpEucJp, qvp::kCpEucJp},
        {"declared disagrees: shift_jis, raw utf-8", kUtf8, qvp::kCp932, qvp::kCpUtf8},
        {"declared shift_jis, escapes", kJis, qvp::kCp932, qvp::kCpIso2022Jp},
        // Both Japanese charsets fit: EUC-JP pairs against Shift_JIS leads 81-9F.
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

// A subject or id as the reader gets it; "(none)" when it is not handed out,
// "(invalid)" when the reader's strict conversion would refuse it.
std::string Read(MT_WORD (*get)(MT_WORD, char**, MT_WORD*), const std::string& mail) {
    MT_WORD root = MT_Init();
    EXPECT_EQ(MT_ParseMailText(root, mail.data(), static_cast<MT_WORD>(mail.size())), 1);
    char* text = nullptr;
    MT_WORD length = 0;
    std::string out = "(none)";
    if (get(root, &text, &length)) {
        out.assign(text, static_cast<size_t>(length));
        const int n = static_cast<int>(out.size());
        if (n > 0 && qvp::MultiByteToWideChar(932, qvp::kMbErrInvalidChars, out.data(), n, nullptr, 0) <= 0)
            out = "(invalid)";
        MT_Free(text);
    }
    MT_Term(root);
    return out;
}

TEST(MsgCharset, Labels) {
    const std::string longest = "iso-2022-jp" + std::string(21, 'x');  // 32 bytes, no label
    const struct { const char* name; std::string label; uint32_t expected; } cases[] = {
        {"case and underscore", " ISO_2022-Jp*ja\t", qvp::kCpIso2022Jp},
        {"python alias", "UTF_8", qvp::kCpUtf8},
        {"prefix of a label", "iso-2022", kCpGuess},
        {"32 bytes", longest, kCpGuess},
        {"33 bytes", longest + "x", kCpGuess},
        {"8-bit byte", "utf-8\xC0", kCpGuess},
        {"empty", "", kCpGuess},
    };
    for (const auto& c : cases) EXPECT_EQ(msg::CodePageOfCharset(c.label), c.expected) << c.name;
}

TEST(MsgCharset, SubjectRows) {
    for (const qvt::SubjectRow& row : qvt::SubjectRows()) {
        // A word in a charset the system has no converter for (Wine has none
        // for GB18030 and ISO-2022-KR) is read as raw text.
        const std::string label = row.subject.substr(2, row.subject.find('?', 2) - 2);
        const uint32_t codePage = row.subject.compare(0, 2, "=?") == 0 ? msg::CodePageOfCharset(label) : kCpGuess;
        if (codePage != kCpGuess && qvp::MultiByteToWideChar(codePage, 0, "a", 1, nullptr, 0) == 0) continue;
        const std::string subject = Read(MT_GetSubjectD, row.Mail());
        EXPECT_EQ(subject == "(invalid)" ? subject : qvt::Utf8(subject), row.expected) << row.name;
    }
}

// With QV_SUBJECT_CORPUS naming a folder: each row's message, and a list of
// what the reader got, for check_subjects.py to compare with Python's email.
TEST(MsgCharset, WritesTheCorpus) {
    const char* folder = std::getenv("QV_SUBJECT_CORPUS");
    if (folder == nullptr) GTEST_SKIP() << "run by check_subjects.py";
    std::ofstream list(std::string(folder) + "/rows.tsv", std::ios::binary);
    const auto& rows = qvt::SubjectRows();
    for (size_t i = 0; i < rows.size(); ++i) {
        std::ofstream(std::string(folder) + "/" + std::to_string(i) + ".eml", std::ios::binary) << rows[i].Mail();
        list << i << '\t' << rows[i].name << '\t' << rows[i].rawCodec << '\t'
             << qvt::Utf8(Read(MT_GetSubjectD, rows[i].Mail())) << '\n';
    }
    ASSERT_TRUE(list.good());
}

// One byte that code page 932 lacks never loses a subject or an id,
// wherever it stands and however the text around it is written.
TEST(MsgCharset, BytesWithoutACharacterNeverLoseTheText) {
    const std::string contexts[] = {"ab", kSjis, kEuc, kUtf8, kJis};
    const char* wrappers[][2] = {{"", ""}, {"=?shift_jis?Q?", "?="}, {"=?utf-8?Q?", "?="},
                                 {"=?iso-8859-1?Q?", "?="}, {"=?euc-jp?Q?", "?="}};
    for (const char* byte : {"\xA0", "\xFD", "\xFE", "\xFF"}) {
        for (const std::string& text : contexts) {
            for (size_t at : {size_t{0}, text.size() / 2, text.size()}) {
                const std::string value = text.substr(0, at) + byte + text.substr(at);
                for (const auto& w : wrappers) {
                    std::string word = value;
                    if (*w[0]) {
                        word.clear();
                        for (char c : value) {
                            static const char kHex[] = "0123456789ABCDEF";
                            const unsigned char u = static_cast<unsigned char>(c);
                            word += {'=', kHex[u >> 4], kHex[u & 15]};
                        }
                    }
                    const std::string mail = "Subject: " + std::string(w[0]) + word + w[1] + "\r\nMessage-ID: <" +
                                             value + "@x>\r\n\r\n";
                    for (const auto get : {MT_GetSubjectD, MT_GetMessageIDD}) {
                        const std::string text = Read(get, mail);
                        EXPECT_TRUE(text != "(invalid)" && text != "(none)") << mail;
                    }
                }
            }
        }
    }
}

}  // namespace
