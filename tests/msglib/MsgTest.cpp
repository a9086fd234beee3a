// MsgTest.cpp - the nine functions driven as the mail reader drives them, and
// the parameter decoder underneath.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "MsgCharset.h"
#include "MsgParams.h"
#include "platform/platform.h"
#include "sNqxMsgNet.h"
#include "support/WinePrefix.h"

namespace {

using qvt::Utf8;
using Strings = std::vector<std::string>;
const MT_WORD kJunk = 0x5A5A;

// The text of a word the library handed out, freed; "-" for none.
std::string Take(MT_WORD word) {
    char* p = reinterpret_cast<char*>(word);
    std::string s = p ? p : "-";
    MT_Free(p);
    return s;
}

// The subject or id, exactly the bytes handed out; "(none)" when the call fails.
std::string Handed(MT_WORD (*get)(MT_WORD, char**, MT_WORD*), MT_WORD root) {
    char* text = nullptr;
    MT_WORD length = -1;
    const bool ok = get(root, &text, &length) != 0;
    EXPECT_EQ(ok, text != nullptr) << "a text on failure or none on success";
    if (!text) return "(none)";
    std::string s(text, static_cast<size_t>(length) + 1);
    MT_Free(text);
    EXPECT_EQ(s.back(), '\0');
    return s.substr(0, s.size() - 1);
}

MT_WORD MainNext(MT_WORD root, MT_WORD* pos, MT_WORD (&w)[10]) {
    return MT_GetMainNext(root, pos, &w[0], &w[1], &w[2], &w[3], &w[4], &w[5], &w[6], &w[7], &w[8], &w[9], 0, 0,
                          0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
}
MT_WORD Attach(MT_WORD root, MT_WORD (&a)[10]) {
    return MT_GetAttach(root, &a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &a[6], &a[7], &a[8], &a[9]);
}

struct Parsed {
    std::string subject, id;  // CP932, "(none)" when not handed out
    Strings bodies;           // UTF-8; a part of other than text/plain shows its type
    Strings words;            // of each part: "number charset encoding disposition depth content-id offset"
    MT_WORD attachResult = 0;
    Strings names;  // UTF-8, the attachment slots up to the first null one
};

// Parses on a fresh root, reads and frees everything, ends the root; or on
// the root given, which goes on.
Parsed ParseAll(const std::string& mail, MT_WORD shared = 0) {
    Parsed r;
    MT_WORD root = shared != 0 ? shared : MT_Init();
    EXPECT_EQ(MT_ParseMailText(root, mail.data(), static_cast<MT_WORD>(mail.size())), 1);
    r.subject = Handed(MT_GetSubjectD, root);
    r.id = Handed(MT_GetMessageIDD, root);
    for (MT_WORD pos = MT_GetMainHeadPosition(root); pos != 0 && r.bodies.size() <= MT_MAX_MAIN_PARTS;) {
        MT_WORD w[10] = {};
        EXPECT_EQ(MainNext(root, &pos, w), 1);
        const char* body = reinterpret_cast<const char*>(w[2]);
        EXPECT_TRUE(!body || body[w[3]] == '\0');
        const std::string type = Take(w[0]);
        r.bodies.push_back(type != "text/plain" ? "type:" + type : body ? Utf8(std::string(body, size_t(w[3]))) : "-");
        r.words.push_back(std::to_string(w[1]) + " " + Take(w[4]) + " " + std::to_string(w[5]) + " " + Take(w[6]) +
                          " " + std::to_string(w[7]) + " " + Take(w[8]) + " " + std::to_string(w[9]));
        MT_Free(reinterpret_cast<void*>(w[2]));
    }
    EXPECT_LE(r.bodies.size(), size_t{MT_MAX_MAIN_PARTS}) << "more main parts than the reader has slots";
    MT_WORD a[10] = {};
    r.attachResult = Attach(root, a);
    EXPECT_TRUE(std::is_partitioned(a, a + 10, [](MT_WORD x) { return x != 0; })) << "a null slot before a filled one";
    for (MT_WORD x : a)
        if (x) r.names.push_back(Utf8(Take(x)));
    if (shared == 0) MT_Term(root);
    return r;
}

// Header lines, an empty line, then the body.
std::string Entity(const Strings& headers, const std::string& body, const char* eol = "\r\n") {
    std::string out;
    for (const std::string& h : headers) out += h + eol;
    return out + eol + body;
}
std::string Multipart(const std::string& subtype, const std::string& b, const Strings& parts) {
    std::string body = "preamble\r\n";
    for (const std::string& p : parts) body += "--" + b + "\r\n" + p + "\r\n";
    return Entity({"Content-Type: multipart/" + subtype + "; boundary=\"" + b + "\""}, body + "--" + b + "--\r\nend");
}
std::string Mixed(const Strings& parts) { return Multipart("mixed", "b1", parts); }
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

const std::string kWithAll = Entity({"Subject: s", "Message-ID: <i@x>", "Content-Type: multipart/mixed; boundary=b"},
                                    "--b\r\n\r\ntext\r\n--b\r\nContent-Disposition: attachment; filename=a\r\n\r\nx");

// A failed call hands out nothing and clears every slot given (a caller could free them twice).
TEST(MsgApi, FailedCallsHandOutNothing) {
    char* text = reinterpret_cast<char*>(kJunk);
    MT_WORD length = kJunk, w[10], root = MT_Init();
    EXPECT_EQ(MT_Term(0) + MT_GetMainHeadPosition(0) + MT_ParseMailText(0, "Subject: x", 10), 0);
    EXPECT_EQ(MT_GetSubjectD(0, &text, &length) + MT_GetMessageIDD(0, &text, &length), 0);
    EXPECT_EQ(text, reinterpret_cast<char*>(kJunk));
    EXPECT_EQ(length, kJunk);
    std::fill(w, w + 10, kJunk);
    EXPECT_EQ(Attach(0, w) + std::count(w, w + 10, 0), 10);
    ASSERT_EQ(MT_ParseMailText(root, kWithAll.data(), MT_WORD(kWithAll.size())), 1);
    for (auto [r, start] : {std::pair<MT_WORD, MT_WORD>{0, 1}, {root, 0}, {root, -1}, {root, 2}, {root, 99}}) {
        MT_WORD pos = start;
        std::fill(w, w + 10, kJunk);
        EXPECT_EQ(MainNext(r, &pos, w) + std::count(w, w + 10, 0), 10);
        EXPECT_EQ(pos, r ? 0 : start);
    }
    // Only the slots given are filled (the sanitizer build sees any leak).
    MT_WORD pos = MT_GetMainHeadPosition(root), body = 0, size = 0, a1 = 0;
    EXPECT_EQ(MT_GetMainNext(root, &pos, nullptr, nullptr, &body, &size, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0),
              1);
    EXPECT_EQ(Take(body) + std::to_string(size) + std::to_string(pos), "text40");
    EXPECT_EQ(MT_GetAttach(root, nullptr, &a1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              1);
    EXPECT_EQ(a1, 0);
    EXPECT_EQ(MT_GetSubjectD(root, &text, nullptr) + MT_GetMessageIDD(root, nullptr, nullptr), 1);
    EXPECT_EQ(Take(reinterpret_cast<MT_WORD>(text)), "s");
    MT_Term(root);
}

// A second parse on a root that holds kWithAll replaces it, also when it fails.
TEST(MsgApi, BadArgumentsAndReplacement) {
    const struct { const char* text; MT_WORD size, result, attach; const char* subject; } cases[] = {
        {kWithAll.data(), MT_WORD(kWithAll.size()), 1, 1, "s"}, {nullptr, 0, 1, 0, "(none)"},
        {nullptr, 5, 0, 0, "(none)"}, {"Subject: x", -1, 0, 0, "(none)"}, {"Subject: x", 0, 1, 0, "(none)"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << (c.text ? "text" : "null") << ", size " << c.size);
        MT_WORD root = MT_Init(), a[10] = {};
        ASSERT_EQ(MT_ParseMailText(root, kWithAll.data(), MT_WORD(kWithAll.size())), 1);
        EXPECT_EQ(MT_ParseMailText(root, c.text, c.size), c.result);
        EXPECT_EQ(Handed(MT_GetSubjectD, root), c.subject);
        EXPECT_EQ(Attach(root, a), c.attach);
        for (MT_WORD x : a) MT_Free(reinterpret_cast<void*>(x));
        EXPECT_EQ(MT_GetMainHeadPosition(root) != 0, c.result == 1);
        MT_Term(root);
    }
}

TEST(MsgHeaders, SubjectAndId) {
    const std::string jis = "\x1B$BF|K\\8l\x1B(B";  // 日本語 in ISO-2022-JP
    const struct { const char* name; std::string mail; const char *subject, *id; } cases[] = {  // subject in UTF-8
        {"plain, trimmed", S("  Hello world  \t"), "Hello world", "(none)"},
        {"utf-8 Q, underscore", S("=?utf-8?q?=E6=97=A5=E6=9C=AC_=E8=AA=9E?="), "日本 語", "(none)"},
        {"language suffix", S("=?UTF-8*ja?B?5pel5pys6Kqe?="), "日本語", "(none)"},
        {"no cp932 form becomes ?", S("=?UTF-8?B?7ZWc?= x"), "? x", "(none)"},
        {"folding between words", S("=?UTF-8?B?5pel?= \t\r\n =?UTF-8?B?5pys?="), "日本", "(none)"},
        {"character split across words", S("=?UTF-8?B?5Lu25Q==?= =?UTF-8?B?kI3jgafjgZk=?="), "件名です", "(none)"},
        {"broken words stay literal", S("=?UTF-8?X?abc?= =?UTF-8?B?@@@@?= =?UTF-8?Q?a=ZZ?= =?x?= =?UTF-8?B?5pel?="),
         "=?UTF-8?X?abc?= =?UTF-8?B?@@@@?= =?UTF-8?Q?a=ZZ?= =?x?= 日", "(none)"},
        {"unknown charset read as raw", S("=?X-UNKNOWN?B?5pel5pys6Kqe?="), "日本語", "(none)"},
        {"raw shift-jis, 0x5C trail", S("\x95\\\x8E" "\xA6"), "表示", "(none)"},
        {"raw jis then encoded word", S(jis + " =?UTF-8?B?5pel?="), "日本語 日", "(none)"},
        {"raw euc-jp as declared, id too", Entity({"Subject: \xB1\xB2", "Message-ID: <\xB1\xB2@x>",
                                                  "Content-Type: text/plain; charset=\"EUC-JP\""}, ""), "渦", "<渦@x>"},
        {"name case, blank before colon, first wins",
         Entity({"SUBJECT : 1", "subject: 2", "message-id:<1@x>", "Message-ID: <2@x>"}, ""), "1", "<1@x>"},
        {"empty field", Entity({"Subject:"}, "x"), "", "(none)"},
        {"id folded, trimmed, blank inside kept", Entity({"Message-Id:", " \t<a", " @b>  "}, ""), "(none)", "<a @b>"},
        {"raw jis id", Entity({"Message-ID: <" + jis + "@x>"}, ""), "(none)", "<日本語@x>"},
        {"id words not decoded", Entity({"Message-ID:=?UTF-8?B?5pel?=@x"}, ""), "(none)", "=?UTF-8?B?5pel?=@x"},
        {"only in the body", Entity({"From: a@b"}, "Subject: s\r\nMessage-ID: <b@x>\r\n"), "(none)", "(none)"},
        {"no blank line: all header", "From: a@b\r\nSubject: last line", "last line", "(none)"},
        {"field after a non-field line", "From a@b Mon Jan 1 00:00:00 2001\r\nSubject: s\r\n", "s", "(none)"},
        {"empty message", "", "(none)", "(none)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Parsed p = ParseAll(c.mail);
        EXPECT_EQ(Utf8(p.subject), c.subject);
        EXPECT_EQ(Utf8(p.id), c.id);
    }
    // The UTF-8 texts above show the bytes are CP932; a zero byte stays.
    EXPECT_EQ(ParseAll(std::string("Subject: a\0b\r\n\r\n", 16)).subject, std::string("a\0b", 3));
}

TEST(MsgMime, PartsAndAttachments) {
    const std::string jis = "\x1B$B;qNA\x1B(B";  // 資料
    const struct { const char* name; std::string mail; Strings bodies, names; } cases[] = {
        {"empty message is one empty part", "", {""}, {}},
        {"base64", Coded("utf-8", "Base64", "5pys5paH\r\n44Gn44GZDQo=\r\n"), {"本文です\r\n"}, {}},
        {"qp", Coded("UTF-8", "quoted-printable", "=E6=97=A5=E6=9C=AC=\r\n=e8=aa=9e x=zz ="), {"日本語 x=zz "}, {}},
        {"encoded file name", Mixed({Text("see"), File("filename=\"=?ISO-2022-JP?B?GyRCO3FOQRsoQi50eHQ=?=\"")}),
         {"see"}, {"資料.txt"}},
        {"rfc 2231 sections", Mixed({File("filename*1*=%E6%96%99; filename*0*=utf-8'ja'%E8%B3%87;\r\n f*=x")}), {},
         {"資料"}},
        {"bodies and names by their charset labels",
         Mixed({Coded("koi8-r", "8bit", "\xF0\xD2\xC9\xD7\xC5\xD4"), Coded("latin-1", "8bit", "caf\xE9 \xA0"),
                File("filename*=windows-1251''%CF%F0.txt"), File("filename=\"=?big5?B?pKSk5Q==?=\"")}),
         {"Привет", "cafe  "}, {"Пр.txt", "中文"}},
        {"raw jis, sjis names", Mixed({File("filename=\"\x95\\.txt\""), File("filename=\"" + jis + "\"")}), {},
         {"表.txt", "資料"}},
        {"alternative inside mixed",
         Multipart("mixed", "o", {Multipart("alternative", "i", {Text("a"), Entity({"Content-Type: text/html"}, "")}),
                                  File("filename=a.pdf")}),
         {"a", "type:text/html"}, {"a.pdf"}},
        {"attached message not opened", Mixed({Text("fwd"), Entity({"Content-Type: message/rfc822"}, S("x"))}),
         {"fwd"}, {""}},
        {"digest parts are messages", Multipart("digest", "d", {Entity({}, S("x")), "\r\ny"}), {}, {"", ""}},
        {"close delimiter missing", MixedBody("--b\r\n\r\none\r\n--b\r\n\r\ntwo"), {"one", "two"}, {}},
        {"delimiter-like line is data", MixedBody("--b\r\n\r\nx\r\n--bx\r\n--b--\r\n"), {"x\r\n--bx"}, {}},
        {"lf ends", Entity({"Content-Type: multipart/mixed;", " boundary=lf"}, "--lf\n\nA\n--lf\n\nB\n--lf--", "\n"),
         {"A", "B"}, {}},
        {"multipart without boundary", Entity({"Content-Type: multipart/mixed"}, "x"), {}, {""}},
        {"jis bodies, longer then shorter then empty",
         Mixed({Coded("iso-2022-jp", "7bit", jis + jis + jis + "\r\n"), Coded("iso-2022-jp", "7bit", jis),
                Coded("iso-2022-jp", "7bit", "")}),
         {"資料資料資料\r\n", "資料", ""}, {}},
        {"euc-jp in base64", Coded("euc-jp", "base64", "u/HOwQ=="), {"資料"}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Parsed p = ParseAll(c.mail);
        EXPECT_EQ(p.bodies, c.bodies);
        EXPECT_EQ(p.names, c.names);
        EXPECT_EQ(p.attachResult, static_cast<MT_WORD>(c.names.size()));
    }
    // One root for all, as a folder's walk keeps it: nothing of one message
    // stays in the next, in either order.
    MT_WORD root = MT_Init();
    const size_t n = sizeof cases / sizeof cases[0];
    for (size_t k = 0; k < 2 * n; ++k) {
        const auto& c = cases[k < n ? k : 2 * n - 1 - k];
        SCOPED_TRACE(std::string("on one root: ") + c.name);
        Parsed p = ParseAll(c.mail, root);
        EXPECT_EQ(p.bodies, c.bodies);
        EXPECT_EQ(p.names, c.names);
    }
    MT_Term(root);
}

TEST(MsgMime, PartWordsAndLimits) {
    const Strings headers = {"Content-Type: text/plain; charset=\"Shift_JIS\"", "Content-Disposition: INLINE",
                             "Content-Transfer-Encoding: quoted-printable", "Content-ID: <c1@x>"};
    const std::string mail = Mixed({File("filename=f"), Entity(headers, "=83=5C")});
    Parsed p = ParseAll(mail);
    EXPECT_EQ(p.bodies, Strings{"ソ"});
    EXPECT_EQ(p.words.at(0), "2 shift_jis " + std::to_string(MT_ENC_QP) + " inline 1 <c1@x> " +  // the file is 1
                                 std::to_string(mail.find("=83=5C")));
    // Fifty parts: what fits in the reader's slots, and the count of all attachments.
    Strings parts;
    for (int i = 1; i <= 50; ++i)
        parts.push_back(i % 2 ? Text("t" + std::to_string(i)) : File("filename=f" + std::to_string(i)));
    p = ParseAll(Mixed(parts));
    EXPECT_EQ(p.bodies, (Strings{"t1", "t3", "t5", "t7", "t9"}));
    EXPECT_EQ(p.words.back().substr(0, 2), "9 ");
    EXPECT_EQ(p.attachResult, 25);
    EXPECT_EQ(p.names, (Strings{"f2", "f4", "f6", "f8", "f10", "f12", "f14", "f16", "f18", "f20"}));
}

TEST(MsgMime, HugeInput) {
    // Far deeper than any mail: the walk stops opening multiparts, in flat stack and time.
    std::string deep;
    for (int i = 0; i < 100000; ++i) {
        const std::string b = "b" + std::to_string(i);
        deep += "Content-Type: multipart/mixed; boundary=" + b + "\r\n\r\n--" + b + "\r\n";
    }
    Parsed p = ParseAll(deep + "Content-Type: text/plain\r\n\r\ndeep");
    EXPECT_EQ(p.bodies.size() + p.attachResult, 0u);
    // Ten megabytes: broken encoded word openers, a boundary over lines like delimiters, many folded lines.
    const size_t big = 10u << 20;
    std::string subject, body, folded = "Subject: x";
    while (subject.size() < big) subject += "=?a?q?";
    EXPECT_EQ(ParseAll(Entity({"Subject: " + subject}, "")).subject, subject);
    while (body.size() < big / 2) body += "--zzzz\r\n";
    EXPECT_TRUE(ParseAll(Entity({"Content-Type: multipart/mixed; boundary=" + std::string(big / 4, 'z')}, body))
                    .bodies.empty());
    while (folded.size() < big) folded += "\r\n y";
    EXPECT_EQ(ParseAll(folded).subject.size(), 1 + (folded.size() - 10) / 4 * 2);
}

// A parameter field read back as "value|name|text of f", "-" for what is not found
// (the expected texts are ASCII).
std::string Params(std::string_view field) {
    msg::MsgParams p;
    p.Parse(field);
    std::string name;
    std::u16string f;
    return p.Value() + "|" + (p.Get("name", &name) ? name : "-") + "|" +
           (p.GetText("f", &f) ? std::string(f.begin(), f.end()) : "-");
}

TEST(MsgDecoders, Params) {
    const std::pair<const char*, const char*> cases[] = {
        {"Text/Plain (c; x=y) ; Name=\"q\\\"uo\\\\te\"", "text/plain|q\"uo\\te|-"},
        {"a/b; junk; =x; name=first; name=second; f=\"unterminated", "a/b|first|unterminated"},
        {"a/b (unclosed comment; name=v", "a/b|-|-"}, {"a; f*=us-ascii'en'a%20b%41%4", "a|-|a bA%4"},
        {"a; f*0=x; f*1*=%41; f*2=\"y z\"; f*4=gap", "a|-|xAy z"}, {"a; f*0=x; f*0=y; f*1=z; f=plain", "a|-|xz"},
        {"a; f*1=x; f*99999999=y; fx*=z", "a|-|-"},
    };
    for (const auto& [in, out] : cases) EXPECT_EQ(Params(in), out) << in;
}

// Long ASCII runs pass straight through; the text between them must convert
// as it would within the whole text, whatever state the decoder was in.
TEST(MsgCharset, AsciiRunsConvertAsTheWholeText) {
    const std::string pad(40, 'A'), jis = "\x1B$BF|K\\8l\x1B(B";  // 日本語
    const struct { uint32_t codePage; std::string text; } kTexts[] = {
        {qvp::kCpIso2022Jp, pad + jis + pad + "\r\n" + jis + "\r\n" + pad},
        {qvp::kCpIso2022Jp, "\x1B$B" + pad + "\x1B(B" + pad},                // ASCII bytes in two-byte mode
        {qvp::kCpIso2022Jp, "\x1B$BF|\x1B(J" + pad + "\x1B(I" + pad},        // JIS Roman, then kana
        {qvp::kCpIso2022Jp, jis + pad + "\x0E" + pad + "\x0F" + pad},            // shifted kana
        {qvp::kCpIso2022Jp, pad + "\x1B(Z" + pad + "\x1B$" + pad + "\xA4" + pad + "\x1B("},  // broken escapes
        {qvp::kCpUtf8, pad + "\xE6\x97\xA5" + pad + "\xE6\x97" + pad + "\xFF"},     // a cut sequence, a bad byte
    };
    for (const auto& t : kTexts) {
        std::u16string wide;
        msg::AppendWide(t.codePage, t.text, &wide);
        msg::TextRoom room;
        EXPECT_EQ(msg::WideToCp932(wide), msg::Cp932View(t.codePage, t.text, &room)) << t.text;
    }
}

}  // namespace
