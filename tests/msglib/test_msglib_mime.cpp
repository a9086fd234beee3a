// test_msglib_mime.cpp - main parts and attachments of MIME messages built in
// code: bodies and their codings, nesting, names, limits, large and deep input.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MsgTestDriver.h"

using msgtest::Entity;
using msgtest::EntityLf;
using msgtest::MultipartBody;
using msgtest::ParseAll;
using msgtest::Parsed;
using msgtest::Utf8;

namespace {

std::string Multipart(const std::string& subtype, const std::string& boundary,
                      const std::vector<std::string>& parts) {
    return Entity({"Content-Type: multipart/" + subtype + "; boundary=\"" + boundary + "\""},
                  MultipartBody(boundary, parts));
}

std::string TextPart(const std::string& body) { return Entity({"Content-Type: text/plain"}, body); }

std::string FilePart(const std::string& disposition) {
    return Entity({"Content-Type: application/octet-stream", "Content-Transfer-Encoding: base64",
                   "Content-Disposition: attachment; " + disposition},
                  "AAEC\r\n");
}

struct PartExpect {
    std::string type;
    std::string body;  // UTF-8
};

struct MimeCase {
    const char* name;
    std::string mail;
    std::vector<PartExpect> parts;
    MT_WORD attachments;
    std::vector<std::string> names;  // UTF-8
};

std::vector<MimeCase> MimeCases() {
    return {
        {"single part without content type", Entity({"Subject: s"}, "hello\r\n"),
         {{"text/plain", "hello\r\n"}}, 0, {}},
        {"empty message is one empty text part", "", {{"text/plain", ""}}, 0, {}},
        {"all header, no body", "Subject: s", {{"text/plain", ""}}, 0, {}},
        {"iso-2022-jp body",
         Entity({"Content-Type: text/plain; charset=\"ISO-2022-JP\""}, "\x1B$B$3$s$K$A$O\x1B(B\r\n"),
         {{"text/plain", "こんにちは\r\n"}}, 0, {}},
        {"base64 utf-8 body",
         Entity({"Content-Type: text/plain; charset=utf-8", "Content-Transfer-Encoding: Base64"},
                "5pys5paH\r\n44Gn44GZDQo=\r\n"),
         {{"text/plain", "本文です\r\n"}}, 0, {}},
        {"quoted-printable body",
         Entity({"Content-Type: text/plain; charset=UTF-8", "Content-Transfer-Encoding: quoted-printable"},
                "=E6=97=A5=E6=9C=AC=\r\n=e8=aa=9e x=zz ="),
         {{"text/plain", "日本語 x=zz "}}, 0, {}},
        {"raw shift-jis body without charset", Entity({}, "\x95\\\x8E" "\xA6"), {{"text/plain", "表示"}}, 0,
         {}},
        {"unknown transfer encoding kept raw",
         Entity({"Content-Transfer-Encoding: x-uuencode"}, "begin 644 a\r\n"),
         {{"text/plain", "begin 644 a\r\n"}}, 0, {}},
        {"invalid content type is text/plain", Entity({"Content-Type: garbage"}, "x"),
         {{"text/plain", "x"}}, 0, {}},
        {"text and named attachment",
         Multipart("mixed", "b1",
                   {TextPart("see the file\r\n"),
                    FilePart("filename=\"=?ISO-2022-JP?B?GyRCO3FOQRsoQi50eHQ=?=\"")}),
         {{"text/plain", "see the file\r\n"}}, 1, {"資料.txt"}},
        {"rfc 2231 file name",
         Multipart("mixed", "b1", {FilePart("filename*=UTF-8''%E8%B3%87%E6%96%99%2E%74%78%74")}), {}, 1,
         {"資料.txt"}},
        {"rfc 2231 continuations",
         Multipart("mixed", "b1",
                   {FilePart("filename*1*=%E6%96%99; filename*0*=utf-8'ja'%E8%B3%87;\r\n filename*2=\".txt\"")}),
         {}, 1, {"資料.txt"}},
        {"raw shift-jis file name with 0x5C trail byte",
         Multipart("mixed", "b1", {FilePart("filename=\"\x95\\.txt\"")}), {}, 1, {"表.txt"}},
        {"name from content type",
         Multipart("mixed", "b1", {Entity({"Content-Type: image/png; name=pic.png"}, "")}), {}, 1,
         {"pic.png"}},
        {"alternative inside mixed",
         Multipart("mixed", "outer",
                   {Multipart("alternative", "inner",
                              {TextPart("plain\r\n"), Entity({"Content-Type: text/html"}, "<p>html</p>")}),
                    FilePart("filename=a.pdf")}),
         {{"text/plain", "plain\r\n"}, {"text/html", "<p>html</p>"}}, 1, {"a.pdf"}},
        {"text marked as attachment",
         Multipart("mixed", "b1", {Entity({"Content-Disposition: attachment"}, "log\r\n")}), {}, 1, {""}},
        {"attached message is not opened",
         Multipart("mixed", "b1",
                   {TextPart("fwd\r\n"), Entity({"Content-Type: message/rfc822"},
                                                Entity({"Subject: inner"}, "inner body\r\n"))}),
         {{"text/plain", "fwd\r\n"}}, 1, {""}},
        {"digest parts default to messages",
         Multipart("digest", "d", {Entity({}, Entity({"Subject: inner"}, "x")), Entity({}, "y")}), {}, 2,
         {"", ""}},
        {"close delimiter missing",
         Entity({"Content-Type: multipart/mixed; boundary=b"}, "--b\r\n\r\none\r\n--b\r\n\r\ntwo"),
         {{"text/plain", "one"}, {"text/plain", "two"}}, 0, {}},
        {"preamble, blanks after delimiter, epilogue",
         Entity({"Content-Type: multipart/mixed; boundary=b"},
                "pre\r\n--b \t\r\n\r\nbody\r\n--b-- \r\n\r\n--b\r\n\r\nafter close\r\n"),
         {{"text/plain", "body"}}, 0, {}},
        {"line that only starts like a delimiter is data",
         Entity({"Content-Type: multipart/mixed; boundary=b"}, "--b\r\n\r\nx\r\n--bx\r\n--b--\r\n"),
         {{"text/plain", "x\r\n--bx"}}, 0, {}},
        {"lf line ends",
         EntityLf({"Content-Type: multipart/mixed;", " boundary=lf"}, "--lf\n\nA\n--lf\n\nB\n--lf--\n"),
         {{"text/plain", "A"}, {"text/plain", "B"}}, 0, {}},
        {"multipart without boundary is an attachment", Entity({"Content-Type: multipart/mixed"}, "x"), {},
         1, {""}},
        {"multipart without parts", Multipart("mixed", "b1", {}), {}, 0, {}},
        {"part without blank line is all header",
         Entity({"Content-Type: multipart/mixed; boundary=b"}, "--b\r\nContent-Type: text/plain\r\n--b--"),
         {{"text/plain", ""}}, 0, {}},
    };
}

TEST(MsgMime, PartsAndAttachments) {
    for (const MimeCase& c : MimeCases()) {
        SCOPED_TRACE(c.name);
        Parsed p = ParseAll(c.mail);
        ASSERT_EQ(p.parts.size(), c.parts.size());
        for (size_t i = 0; i < c.parts.size(); ++i) {
            EXPECT_EQ(p.parts[i].type, c.parts[i].type);
            EXPECT_EQ(Utf8(p.parts[i].body), c.parts[i].body);
            EXPECT_EQ(p.parts[i].bodyLength, static_cast<MT_WORD>(p.parts[i].body.size()));
        }
        EXPECT_EQ(p.attachResult, c.attachments);
        std::vector<std::string> names;
        for (const std::string& n : p.attachNames) names.push_back(Utf8(n));
        EXPECT_EQ(names, c.names);
        EXPECT_EQ(p.nullSlotsBeforeLast, 0);
    }
}

TEST(MsgMime, PartWords) {
    const std::string inner = Entity({"Content-Type: text/plain; charset=\"Shift_JIS\"",
                                      "Content-Transfer-Encoding: quoted-printable",
                                      "Content-Disposition: INLINE", "Content-ID: <c1@x>"},
                                     "=83=5C");
    const std::string mail = Multipart("mixed", "b", {FilePart("filename=f"), inner});
    Parsed p = ParseAll(mail);
    ASSERT_EQ(p.parts.size(), 1u);
    const msgtest::MainPart& m = p.parts[0];
    EXPECT_EQ(m.number, 2);  // the file is leaf 1
    EXPECT_EQ(m.body, "\x83\\");
    EXPECT_EQ(m.charset, "shift_jis");
    EXPECT_EQ(m.encoding, MT_ENC_QP);
    EXPECT_TRUE(m.hasDisposition);
    EXPECT_EQ(m.disposition, "inline");
    EXPECT_EQ(m.depth, 1);
    EXPECT_TRUE(m.hasContentId);
    EXPECT_EQ(m.contentId, "<c1@x>");
    EXPECT_EQ(mail.compare(static_cast<size_t>(m.offset), 6, "=83=5C"), 0);

    p = ParseAll(Entity({}, "x"));
    ASSERT_EQ(p.parts.size(), 1u);
    EXPECT_EQ(p.parts[0].number, 1);
    EXPECT_EQ(p.parts[0].charset, "");
    EXPECT_EQ(p.parts[0].encoding, MT_ENC_NONE);
    EXPECT_FALSE(p.parts[0].hasDisposition);
    EXPECT_FALSE(p.parts[0].hasContentId);
    EXPECT_EQ(p.parts[0].depth, 0);
}

TEST(MsgMime, FiftyPartsFillWhatFits) {
    std::vector<std::string> texts, files;
    for (int i = 1; i <= 50; ++i) {
        texts.push_back(TextPart("t" + std::to_string(i)));
        files.push_back(FilePart("filename=f" + std::to_string(i)));
    }
    Parsed p = ParseAll(Multipart("mixed", "b", texts));
    ASSERT_EQ(p.parts.size(), static_cast<size_t>(MT_MAX_MAIN_PARTS));
    for (int i = 0; i < MT_MAX_MAIN_PARTS; ++i) {
        EXPECT_EQ(p.parts[i].body, "t" + std::to_string(i + 1));
        EXPECT_EQ(p.parts[i].number, i + 1);
    }
    EXPECT_EQ(p.attachResult, 0);

    p = ParseAll(Multipart("mixed", "b", files));
    EXPECT_TRUE(p.parts.empty());
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
    // Far deeper than any mail: the walk stops opening multiparts, and
    // neither the stack nor the time grows with the depth.
    p = ParseAll(Nested(100000));
    EXPECT_TRUE(p.parts.empty());
    EXPECT_EQ(p.attachResult, 0);
}

TEST(MsgMime, TenMegabyteLines) {
    const size_t big = 10u << 20;
    std::string subject(big, 'a');
    Parsed p = ParseAll(Entity({"Subject: " + subject}, ""));
    EXPECT_EQ(p.subject.size(), big);

    // Nothing but broken encoded word openers, and a line of "=?a?b?" runs.
    std::string openers;
    while (openers.size() < big) openers += "=?";
    p = ParseAll(Entity({"Subject: " + openers}, ""));
    EXPECT_EQ(p.subject, openers);
    std::string runs;
    while (runs.size() < big) runs += "=?a?q?";
    p = ParseAll(Entity({"Subject: " + runs}, ""));
    EXPECT_EQ(p.subject, runs);

    // A huge boundary and a body of lines that start like delimiters.
    std::string boundary(big / 4, 'z');
    std::string body;
    while (body.size() < big / 2) body += "--zzzz\r\n";
    p = ParseAll(Entity({"Content-Type: multipart/mixed; boundary=" + boundary}, body));
    EXPECT_TRUE(p.parts.empty());

    // Many folded lines of one field.
    std::string folded = "Subject: x";
    while (folded.size() < big) folded += "\r\n y";
    p = ParseAll(folded);
    EXPECT_EQ(p.subject.size(), 1 + (folded.size() - 10) / 4 * 2);
}

}  // namespace
