// test_msglib_headers.cpp - subject and message id of messages built in code:
// charsets, encoded words, raw Japanese bytes, folding, broken headers.
#include <gtest/gtest.h>

#include <string>

#include "MsgTestDriver.h"

using msgtest::Entity;
using msgtest::EntityLf;
using msgtest::ParseAll;
using msgtest::Parsed;
using msgtest::Utf8;

namespace {

// A literal with its zero bytes, without the terminator.
template <size_t N>
std::string Bytes(const char (&s)[N]) {
    return std::string(s, N - 1);
}

std::string Subject(const std::string& value) { return Entity({"Subject: " + value}, "body\r\n"); }

struct SubjectCase {
    const char* name;
    std::string mail;
    bool present;
    std::string expected;  // UTF-8
};

// Escaped bytes are split from following hexadecimal letters by "" "".
const std::string kJisNihongo = "\x1B$BF|K\\8l\x1B(B";  // 日本語 in ISO-2022-JP
const std::string kSjisNihongo = "\x93\xFA\x96{\x8C\xEA";

std::vector<SubjectCase> SubjectCases() {
    return {
        {"plain ascii", Subject("Hello world"), true, "Hello world"},
        {"iso-2022-jp B", Subject("=?ISO-2022-JP?B?GyRCRnxLXDhsGyhC?="), true, "日本語"},
        {"charset and encoding in lower case", Subject("=?iso-2022-jp?b?GyRCRnxLXDhsGyhC?="), true,
         "日本語"},
        {"iso-2022-jp Q", Subject("=?ISO-2022-JP?Q?=1B$BF|K=5C8l=1B(B?="), true, "日本語"},
        {"utf-8 B", Subject("=?UTF-8?B?5pel5pys6Kqe?="), true, "日本語"},
        {"utf-8 Q with underscore as space",
         Subject("=?utf-8?q?=E6=97=A5=E6=9C=AC_=E8=AA=9E?="), true, "日本 語"},
        {"euc-jp B", Subject("=?EUC-JP?B?xvzL3Ljs?="), true, "日本語"},
        {"shift_jis B", Subject("=?Shift_JIS?B?k/qWe4zq?="), true, "日本語"},
        {"windows-31j with NEC row", Subject("=?Windows-31J?B?h0CHQQ==?="), true, "①②"},
        {"cp932 name", Subject("=?CP932?B?h0CHQQ==?="), true, "①②"},
        {"iso-8859-1 Q", Subject("=?ISO-8859-1?Q?30=B0C_=B11?="), true, "30°C ±1"},
        {"us-ascii Q", Subject("=?US-ASCII?Q?Re=3A_hi?="), true, "Re: hi"},
        {"language suffix", Subject("=?UTF-8*ja?B?5pel5pys6Kqe?="), true, "日本語"},
        {"no cp932 form becomes ?", Subject("=?UTF-8?B?7ZWc?= x"), true, "? x"},
        {"blank between adjacent words dropped",
         Subject("=?UTF-8?B?5pel?= \t =?UTF-8?B?5pys?="), true, "日本"},
        {"folding between adjacent words dropped",
         Subject("=?UTF-8?B?5pel?=\r\n =?UTF-8?B?5pys?="), true, "日本"},
        {"character split across two words", Subject("=?UTF-8?B?5Lu25Q==?= =?UTF-8?B?kI3jgafjgZk=?="),
         true, "件名です"},
        {"blank between word and text kept", Subject("Re: =?UTF-8?B?5pel?= end"), true, "Re: 日 end"},
        {"words of two charsets", Subject("=?UTF-8?B?5pel?= =?ISO-2022-JP?B?GyRCJUYlOSVIGyhC?="), true,
         "日テスト"},
        {"unknown encoding stays literal", Subject("=?UTF-8?X?abc?="), true, "=?UTF-8?X?abc?="},
        {"bad base64 stays literal", Subject("=?UTF-8?B?@@@@?= x"), true, "=?UTF-8?B?@@@@?= x"},
        {"bad Q escape stays literal", Subject("=?UTF-8?Q?a=ZZ?="), true, "=?UTF-8?Q?a=ZZ?="},
        {"unclosed word stays literal", Subject("=?UTF-8?B?5pel"), true, "=?UTF-8?B?5pel"},
        {"blank inside word stays literal", Subject("=?UTF-8?Q?a b?="), true, "=?UTF-8?Q?a b?="},
        {"lone opener", Subject("a =? b ?= c"), true, "a =? b ?= c"},
        {"broken word then good word", Subject("=?x?= =?UTF-8?B?5pel?="), true, "=?x?= 日"},
        {"unknown charset read as raw", Subject("=?X-UNKNOWN?B?5pel5pys6Kqe?="), true, "日本語"},
        {"raw iso-2022-jp", Subject("Re: \x1B$B7oL>\x1B(B"), true, "Re: 件名"},
        {"raw shift-jis", Subject("\x95\\\x8E" "\xA6 " + kSjisNihongo), true, "表示 日本語"},
        {"raw utf-8", Subject("\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E"), true, "日本語"},
        {"raw jis then encoded word", Subject(kJisNihongo + " =?UTF-8?B?5pel?="), true, "日本語 日"},
        {"folded plain text keeps the blank", Subject("first\r\n second\r\n\tthird"), true,
         "first second\tthird"},
        {"lf line ends", EntityLf({"Subject: =?UTF-8?B?5pel?=", "  =?UTF-8?B?5pys?= x"}, "b\n"), true,
         "日本 x"},
        {"name in any case", Entity({"SUBJECT: upper"}, ""), true, "upper"},
        {"blank before colon", Entity({"Subject : spaced"}, ""), true, "spaced"},
        {"first field wins", Entity({"Subject: one", "subject: two"}, ""), true, "one"},
        {"trimmed", Subject("  padded  \t"), true, "padded"},
        {"empty field", Entity({"Subject:"}, "x"), true, ""},
        {"missing", Entity({"From: a@b"}, "Subject: in the body\r\n"), false, ""},
        {"no blank line: all header", "From: a@b\r\nSubject: last line", true, "last line"},
        {"field after a line that is no field", "From a@b Mon Jan 1 00:00:00 2001\r\nSubject: s\r\n", true,
         "s"},
        {"continuation before any field ignored", " stray\r\nSubject: s\r\n\r\n", true, "s"},
        {"zero byte before the field", Bytes("X-Junk: a\0b\r\nSubject: after\r\n\r\n"), true,
         "after"},
        {"empty message", "", false, ""},
        {"only a blank line", "\r\n", false, ""},
    };
}

TEST(MsgHeaders, Subjects) {
    for (const SubjectCase& c : SubjectCases()) {
        SCOPED_TRACE(c.name);
        Parsed p = ParseAll(c.mail);
        EXPECT_EQ(p.hasSubject, c.present);
        if (c.present) {
            EXPECT_EQ(Utf8(p.subject), c.expected);
        }
    }
}

TEST(MsgHeaders, SubjectBytesAreCp932) {
    Parsed p = ParseAll(Subject("=?ISO-2022-JP?B?GyRCRnxLXDhsGyhC?="));
    EXPECT_EQ(p.subject, kSjisNihongo);
    // Raw Shift-JIS comes out as it went in, trail byte 0x5C included.
    p = ParseAll(Subject("\x83\\"));
    EXPECT_EQ(p.subject, "\x83\\");
}

TEST(MsgHeaders, ZeroByteInsideValueIsData) {
    Parsed p = ParseAll(Bytes("Subject: a\0b\r\n\r\n"));
    ASSERT_TRUE(p.hasSubject);
    EXPECT_EQ(p.subject, std::string("a\0b", 3));
}

struct IdCase {
    const char* name;
    std::string mail;
    bool present;
    std::string expected;
};

TEST(MsgHeaders, MessageIds) {
    const IdCase cases[] = {
        {"plain", Entity({"Message-ID: <1234@example.jp>"}, ""), true, "<1234@example.jp>"},
        {"name in any case", Entity({"message-id:<a@b>"}, ""), true, "<a@b>"},
        {"folded and trimmed", Entity({"Message-Id:", " \t<folded@x>  "}, ""), true, "<folded@x>"},
        {"folded inside", Entity({"Message-ID: <a", " @b>"}, ""), true, "<a @b>"},
        {"no brackets kept as is", Entity({"Message-ID: bare@x"}, ""), true, "bare@x"},
        {"first wins", Entity({"Message-ID: <1@x>", "Message-ID: <2@x>"}, ""), true, "<1@x>"},
        {"encoded words not decoded", Entity({"Message-ID: <=?UTF-8?B?5pel?=@x>"}, ""), true,
         "<=?UTF-8?B?5pel?=@x>"},
        {"lf only, no blank line", "Message-ID: <lf@x>", true, "<lf@x>"},
        {"missing", Entity({"Subject: s"}, "Message-ID: <body@x>\r\n"), false, ""},
        {"empty message", "", false, ""},
    };
    for (const IdCase& c : cases) {
        SCOPED_TRACE(c.name);
        Parsed p = ParseAll(c.mail);
        EXPECT_EQ(p.hasId, c.present);
        if (c.present) {
            EXPECT_EQ(p.id, c.expected);
        }
    }
}

}  // namespace
