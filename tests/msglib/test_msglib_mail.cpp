// test_msglib_mail.cpp - mail built in code, read through the nine functions:
// subject and message id (charsets, encoded words, raw Japanese, folding,
// broken headers), main parts and attachments (codings, nesting, names,
// limits), large and deep input.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "MsgTestDriver.h"

using msgtest::Entity;
using msgtest::ParseAll;
using msgtest::Parsed;
using msgtest::Utf8;

namespace {

std::string Multipart(const std::string& subtype, const std::string& b, const std::vector<std::string>& parts) {
    std::string body = "preamble\r\n";
    for (const std::string& p : parts) body += "--" + b + "\r\n" + p + "\r\n";
    return Entity({"Content-Type: multipart/" + subtype + "; boundary=\"" + b + "\""},
                  body + "--" + b + "--\r\nepilogue\r\n");
}
std::string Mixed(const std::vector<std::string>& parts) { return Multipart("mixed", "b1", parts); }
std::string MixedBody(const std::string& body) { return Entity({"Content-Type: multipart/mixed; boundary=b"}, body); }
std::string S(const std::string& subject) { return Entity({"Subject: " + subject}, "body"); }
std::string Text(const std::string& body) { return Entity({"Content-Type: text/plain"}, body); }
std::string File(const std::string& disposition) {
    return Entity({"Content-Type: application/octet-stream", "Content-Transfer-Encoding: base64",
                   "Content-Disposition: attachment; " + disposition},
                  "AAEC\r\n");
}
std::string Coded(const std::string& charset, const std::string& coding, const std::string& body) {
    return Entity({"Content-Type: text/plain; charset=" + charset, "Content-Transfer-Encoding: " + coding}, body);
}
std::string Id(const std::string& line) { return Entity({"Message-ID:" + line}, ""); }

TEST(MsgHeaders, SubjectAndId) {
    struct Case {
        const char* name;
        std::string mail;
        const char* subject;  // UTF-8; null: none handed out
        const char* id;
    };
    const std::string jis = "\x1B$BF|K\\8l\x1B(B";  // 日本語 in ISO-2022-JP
    const Case cases[] = {
        {"plain, trimmed", S("  Hello world  \t"), "Hello world", nullptr},
        {"iso-2022-jp B, lower case", S("=?iso-2022-jp?b?GyRCRnxLXDhsGyhC?="), "日本語", nullptr},
        {"utf-8 Q, underscore", S("=?utf-8?q?=E6=97=A5=E6=9C=AC_=E8=AA=9E?="), "日本 語", nullptr},
        {"euc-jp", S("=?EUC-JP?B?xvzL3Ljs?="), "日本語", nullptr},
        {"shift_jis", S("=?Shift_JIS?B?k/qWe4zq?="), "日本語", nullptr},
        {"windows-31j NEC row", S("=?Windows-31J?B?h0CHQQ==?="), "①②", nullptr},
        {"iso-8859-1", S("=?ISO-8859-1?Q?30=B0C_=B11?="), "30°C ±1", nullptr},
        {"language suffix", S("=?UTF-8*ja?B?5pel5pys6Kqe?="), "日本語", nullptr},
        {"no cp932 form becomes ?", S("=?UTF-8?B?7ZWc?= x"), "? x", nullptr},
        {"blanks, folding between words", S("=?UTF-8?B?5pel?= \t\r\n =?UTF-8?B?5pys?="), "日本", nullptr},
        {"character split across words", S("=?UTF-8?B?5Lu25Q==?= =?UTF-8?B?kI3jgafjgZk=?="), "件名です", nullptr},
        {"blank between word and text", S("Re: =?UTF-8?B?5pel?= end"), "Re: 日 end", nullptr},
        {"two charsets", S("=?UTF-8?B?5pel?= =?ISO-2022-JP?B?GyRCJUYlOSVIGyhC?="), "日テスト", nullptr},
        {"broken words stay literal", S("=?UTF-8?X?abc?= =?UTF-8?B?@@@@?= =?UTF-8?Q?a=ZZ?= =?x?= =?UTF-8?B?5pel?="),
         "=?UTF-8?X?abc?= =?UTF-8?B?@@@@?= =?UTF-8?Q?a=ZZ?= =?x?= 日", nullptr},
        {"unclosed, blank inside", S("=?UTF-8?Q?a b?= =?UTF-8?B?5pel"), "=?UTF-8?Q?a b?= =?UTF-8?B?5pel", nullptr},
        {"unknown charset read as raw", S("=?X-UNKNOWN?B?5pel5pys6Kqe?="), "日本語", nullptr},
        {"raw shift-jis, 0x5C trail", S("\x95\\\x8E" "\xA6"), "表示", nullptr},
        {"raw utf-8", S("\xE6\x97\xA5\xE6\x9C\xAC"), "日本", nullptr},
        {"raw jis then encoded word", S(jis + " =?UTF-8?B?5pel?="), "日本語 日", nullptr},
        {"folded text keeps the blank", S("first\r\n second\r\n\tthird"), "first second\tthird", nullptr},
        {"lf line ends", Entity({"Subject: =?UTF-8?B?5pel?=", "  =?UTF-8?B?5pys?= x", "Message-ID: <lf@x>"}, "", "\n"),
         "日本 x", "<lf@x>"},
        {"name case, blank before colon", Entity({"SUBJECT : a", "message-id:<a@b>"}, ""), "a", "<a@b>"},
        {"first field wins", Entity({"Subject: 1", "subject: 2", "Message-ID: <1@x>", "Message-ID: <2@x>"}, ""),
         "1", "<1@x>"},
        {"empty field", Entity({"Subject:"}, "x"), "", nullptr},
        {"id folded, trimmed, blank inside kept", Entity({"Message-Id:", " \t<a", " @b>  "}, ""), nullptr, "<a @b>"},
        {"id without brackets", Id(" bare@x"), nullptr, "bare@x"},
        {"id words not decoded", Id("<=?UTF-8?B?5pel?=@x>"), nullptr, "<=?UTF-8?B?5pel?=@x>"},
        {"only in the body", Entity({"From: a@b"}, "Subject: s\r\nMessage-ID: <b@x>\r\n"), nullptr, nullptr},
        {"no blank line: all header", "From: a@b\r\nSubject: last line", "last line", nullptr},
        {"field after a non-field line", "From a@b Mon Jan 1 00:00:00 2001\r\nSubject: s\r\n", "s", nullptr},
        {"continuation before any field", " stray\r\nSubject: s\r\n\r\n", "s", nullptr},
        {"zero byte before the field", std::string("X: a\0b\r\nSubject: after\r\n\r\n", 26), "after", nullptr},
        {"empty message", "", nullptr, nullptr},
        {"only a blank line", "\r\n", nullptr, nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Parsed p = ParseAll(c.mail);
        EXPECT_EQ(p.hasSubject ? Utf8(p.subject) : "(none)", c.subject ? c.subject : "(none)");
        EXPECT_EQ(p.hasId ? p.id : "(none)", c.id ? c.id : "(none)");
    }
}

// (The table's UTF-8 texts show the bytes are CP932.)
TEST(MsgHeaders, ZeroByteInsideTheSubjectIsKept) {
    EXPECT_EQ(ParseAll(std::string("Subject: a\0b\r\n\r\n", 16)).subject, std::string("a\0b", 3));
}

TEST(MsgMime, PartsAndAttachments) {
    struct Case {
        const char* name;
        std::string mail;
        std::vector<std::string> bodies;  // UTF-8; "type:..." for other than text/plain
        std::vector<std::string> names;   // UTF-8, of the attachments
    };
    const std::string jis = "\x1B$B;qNA\x1B(B";  // 資料
    const Case cases[] = {
        {"no content type", Entity({"Subject: s"}, "hello\r\n"), {"hello\r\n"}, {}},
        {"empty message is one empty part", "", {""}, {}},
        {"iso-2022-jp body", Coded("\"ISO-2022-JP\"", "7bit", jis + "\r\n"), {"資料\r\n"}, {}},
        {"base64 body", Coded("utf-8", "Base64", "5pys5paH\r\n44Gn44GZDQo=\r\n"), {"本文です\r\n"}, {}},
        {"qp body", Coded("UTF-8", "quoted-printable", "=E6=97=A5=E6=9C=AC=\r\n=e8=aa=9e x=zz ="), {"日本語 x=zz "}, {}},
        {"raw shift-jis body", Entity({}, "\x95\\\x8E" "\xA6"), {"表示"}, {}},
        {"unknown transfer coding kept", Coded("us-ascii", "x-uue", "begin"), {"begin"}, {}},
        {"invalid content type", Entity({"Content-Type: garbage"}, "x"), {"x"}, {}},
        {"encoded file name", Mixed({Text("see"), File("filename=\"=?ISO-2022-JP?B?GyRCO3FOQRsoQi50eHQ=?=\"")}),
         {"see"}, {"資料.txt"}},
        {"rfc 2231 sections", Mixed({File("filename*1*=%E6%96%99; filename*0*=utf-8'ja'%E8%B3%87;\r\n f*=x")}),
         {}, {"資料"}},
        {"raw jis, sjis names", Mixed({File("filename=\"\x95\\.txt\""), File("filename=\"" + jis + "\"")}), {},
         {"表.txt", "資料"}},
        {"name from content type", Mixed({Entity({"Content-Type: image/png; name=pic.png"}, "")}), {}, {"pic.png"}},
        {"alternative inside mixed",
         Multipart("mixed", "o", {Multipart("alternative", "i", {Text("a"), Entity({"Content-Type: text/html"}, "")}),
                                  File("filename=a.pdf")}),
         {"a", "type:text/html"}, {"a.pdf"}},
        {"text marked as attachment", Mixed({Entity({"Content-Disposition: attachment"}, "log")}), {}, {""}},
        {"attached message not opened", Mixed({Text("fwd"), Entity({"Content-Type: message/rfc822"}, S("x"))}),
         {"fwd"}, {""}},
        {"digest parts are messages", Multipart("digest", "d", {Entity({}, S("x")), "\r\ny"}), {}, {"", ""}},
        {"close delimiter missing", MixedBody("--b\r\n\r\none\r\n--b\r\n\r\ntwo"), {"one", "two"}, {}},
        {"blanks after delimiters", MixedBody("pre\r\n--b \t\r\n\r\nbody\r\n--b-- \r\n\r\n--b\r\n\r\nafter\r\n"),
         {"body"}, {}},
        {"delimiter-like line is data", MixedBody("--b\r\n\r\nx\r\n--bx\r\n--b--\r\n"), {"x\r\n--bx"}, {}},
        {"lf ends", Entity({"Content-Type: multipart/mixed;", " boundary=lf"}, "--lf\n\nA\n--lf\n\nB\n--lf--", "\n"),
         {"A", "B"}, {}},
        {"multipart without boundary", Entity({"Content-Type: multipart/mixed"}, "x"), {}, {""}},
        {"multipart without parts", Mixed(std::vector<std::string>{}), {}, {}},
        {"part without blank line", MixedBody("--b\r\nContent-Type: text/plain\r\n--b--"), {""}, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Parsed p = ParseAll(c.mail);
        std::vector<std::string> bodies, names;
        for (const msgtest::MainPart& m : p.parts) {
            EXPECT_EQ(m.bodyLength, static_cast<MT_WORD>(m.body.size()));
            bodies.push_back(m.type == "text/plain" ? Utf8(m.body) : "type:" + m.type);
        }
        for (const std::string& n : p.attachNames) names.push_back(Utf8(n));
        EXPECT_EQ(bodies, c.bodies);
        EXPECT_EQ(names, c.names);
        EXPECT_EQ(p.attachResult, static_cast<MT_WORD>(names.size()));
        EXPECT_FALSE(p.gapInSlots);
    }
}

TEST(MsgMime, PartWords) {
    const std::string mail = Mixed({File("filename=f"),
                                    Entity({"Content-Type: text/plain; charset=\"Shift_JIS\"",
                                            "Content-Transfer-Encoding: quoted-printable",
                                            "Content-Disposition: INLINE", "Content-ID: <c1@x>"},
                                           "=83=5C")});
    Parsed p = ParseAll(mail);
    ASSERT_EQ(p.parts.size(), 1u);
    const msgtest::MainPart& m = p.parts[0];
    EXPECT_EQ(m.body, "\x83\\");
    // The file is leaf 1.
    EXPECT_EQ(std::tie(m.number, m.charset, m.encoding, m.disposition, m.depth, m.contentId),
              std::make_tuple(MT_WORD{2}, "shift_jis", MT_WORD{MT_ENC_QP}, "inline", MT_WORD{1}, "<c1@x>"));
    EXPECT_EQ(mail.compare(static_cast<size_t>(m.offset), 6, "=83=5C"), 0);
    p = ParseAll(Entity({}, "x"));
    ASSERT_EQ(p.parts.size(), 1u);
    const msgtest::MainPart& d = p.parts[0];
    EXPECT_EQ(std::tie(d.number, d.charset, d.encoding, d.disposition, d.depth, d.contentId),
              std::make_tuple(MT_WORD{1}, "", MT_WORD{MT_ENC_NONE}, "-", MT_WORD{0}, "-"));
}

TEST(MsgMime, FiftyPartsFillWhatFits) {
    std::vector<std::string> parts;
    for (int i = 1; i <= 50; ++i) {
        parts.push_back(Text("t" + std::to_string(i)));
        parts.push_back(File("filename=f" + std::to_string(i)));
    }
    Parsed p = ParseAll(Mixed(parts));
    ASSERT_EQ(p.parts.size(), static_cast<size_t>(MT_MAX_MAIN_PARTS));
    for (int i = 0; i < MT_MAX_MAIN_PARTS; ++i) {
        EXPECT_EQ(p.parts[i].body, "t" + std::to_string(i + 1));
        EXPECT_EQ(p.parts[i].number, 2 * i + 1);
    }
    EXPECT_EQ(p.attachResult, 50);
    ASSERT_EQ(p.attachNames.size(), static_cast<size_t>(MT_ATTACH_SLOTS));
    for (int i = 0; i < MT_ATTACH_SLOTS; ++i) EXPECT_EQ(p.attachNames[i], "f" + std::to_string(i + 1));
}

// depth multiparts, each holding the next; the innermost holds one text part.
std::string Nested(int depth) {
    std::string head, tail;
    for (int i = 0; i < depth; ++i) {
        const std::string b = "b" + std::to_string(i);
        head += "Content-Type: multipart/mixed; boundary=" + b + "\r\n\r\n--" + b + "\r\n";
    }
    for (int i = depth; i-- > 0;) tail += "\r\n--b" + std::to_string(i) + "--\r\n";
    return head + "Content-Type: text/plain\r\n\r\ndeep" + tail;
}

TEST(MsgMime, Nesting) {
    Parsed p = ParseAll(Nested(20));
    ASSERT_EQ(p.parts.size(), 1u);
    EXPECT_EQ(p.parts[0].body, "deep");
    EXPECT_EQ(p.parts[0].depth, 20);
    // Far deeper than any mail: the walk stops opening multiparts, in flat
    // stack and time.
    p = ParseAll(Nested(100000));
    EXPECT_TRUE(p.parts.empty());
    EXPECT_EQ(p.attachResult, 0);
}

TEST(MsgMime, TenMegabyteLines) {
    const size_t big = 10u << 20;
    // A long plain subject, and runs of broken encoded word openers.
    for (const std::string unit : {"a", "=?", "=?a?q?"}) {
        std::string subject;
        while (subject.size() < big) subject += unit;
        EXPECT_EQ(ParseAll(Entity({"Subject: " + subject}, "")).subject, subject);
    }
    // A huge boundary and a body of lines that start like delimiters.
    std::string body;
    while (body.size() < big / 2) body += "--zzzz\r\n";
    const std::string huge = "Content-Type: multipart/mixed; boundary=" + std::string(big / 4, 'z');
    EXPECT_TRUE(ParseAll(Entity({huge}, body)).parts.empty());
    // Many folded lines of one field.
    std::string folded = "Subject: x";
    while (folded.size() < big) folded += "\r\n y";
    EXPECT_EQ(ParseAll(folded).subject.size(), 1 + (folded.size() - 10) / 4 * 2);
}

}  // namespace
