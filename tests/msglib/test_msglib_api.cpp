// test_msglib_api.cpp - the nine functions at their edges (root 0, bad
// arguments, a parse that replaces the last, partial slots), and the decoders
// of transfer codings and parameters underneath.
#include <gtest/gtest.h>

#include <string>

#include "MsgParams.h"
#include "MsgTestDriver.h"
#include "MsgTransferCoding.h"

namespace {

const MT_WORD kJunk = 0x5A5A;

TEST(MsgApi, RootZeroDoesNothing) {
    char* text = reinterpret_cast<char*>(kJunk);
    MT_WORD length = kJunk;
    MT_WORD pos = 1;
    MT_WORD w[10];
    for (MT_WORD& x : w) x = kJunk;
    EXPECT_EQ(MT_Term(0), 0);
    EXPECT_EQ(MT_Free(nullptr), 0);
    EXPECT_EQ(MT_ParseMailText(0, "Subject: x\r\n", 12), 0);
    EXPECT_EQ(MT_GetMainHeadPosition(0), 0);
    EXPECT_EQ(MT_GetMainNext(0, &pos, &w[0], &w[1], &w[2], &w[3], &w[4], &w[5], &w[6], &w[7], &w[8],
                             &w[9], 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0),
              0);
    for (MT_WORD x : w) EXPECT_EQ(x, 0);  // nothing the caller could free twice
    for (MT_WORD& x : w) x = kJunk;
    EXPECT_EQ(MT_GetAttach(0, &w[0], &w[1], &w[2], &w[3], &w[4], &w[5], &w[6], &w[7], &w[8], &w[9]), 0);
    for (MT_WORD x : w) EXPECT_EQ(x, 0);
    EXPECT_EQ(MT_GetSubjectD(0, &text, &length), 0);
    EXPECT_EQ(MT_GetMessageIDD(0, &text, &length), 0);
    EXPECT_EQ(text, reinterpret_cast<char*>(kJunk));
    EXPECT_EQ(length, kJunk);
}

struct Root {
    MT_WORD r = MT_Init();
    ~Root() { MT_Term(r); }
    bool HasSubject() {
        char* t = nullptr;
        MT_WORD len = 0;
        bool ok = MT_GetSubjectD(r, &t, &len) != 0;
        MT_Free(t);
        return ok;
    }
    MT_WORD Attach() {
        MT_WORD a[10] = {};
        MT_WORD n = MT_GetAttach(r, &a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &a[6], &a[7], &a[8], &a[9]);
        for (MT_WORD x : a) MT_Free(reinterpret_cast<void*>(x));
        return n;
    }
};

const std::string kWithAll =
    msgtest::Entity({"Subject: s", "Message-ID: <i@x>", "Content-Type: multipart/mixed; boundary=b"},
                    "--b\r\n\r\ntext\r\n--b\r\nContent-Disposition: attachment; filename=a\r\n\r\nx\r\n--b--");

TEST(MsgApi, BadArgumentsAndReplacement) {
    struct Case {
        const char* name;
        const char* text;
        MT_WORD size;
        MT_WORD result;
        bool subject;
        MT_WORD attach;
    };
    const Case cases[] = {
        {"the same message again", kWithAll.data(), static_cast<MT_WORD>(kWithAll.size()), 1, true, 1},
        {"a message without those", "From: a\r\n\r\n", 11, 1, false, 0},
        {"size 0 with null text", nullptr, 0, 1, false, 0},
        {"null text with a size", nullptr, 5, 0, false, 0},
        {"negative size", "Subject: x\r\n", -1, 0, false, 0},
        {"size stops before the field", "Subject: x\r\n", 0, 1, false, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Root root;
        ASSERT_NE(root.r, 0);
        ASSERT_EQ(MT_ParseMailText(root.r, kWithAll.data(), static_cast<MT_WORD>(kWithAll.size())), 1);
        ASSERT_TRUE(root.HasSubject());
        EXPECT_EQ(MT_ParseMailText(root.r, c.text, c.size), c.result);
        EXPECT_EQ(root.HasSubject(), c.subject);
        EXPECT_EQ(root.Attach(), c.attach);
        EXPECT_EQ(MT_GetMainHeadPosition(root.r) != 0, c.result == 1);
    }
}

TEST(MsgApi, PositionsAndPartialSlots) {
    Root root;
    ASSERT_EQ(MT_ParseMailText(root.r, kWithAll.data(), static_cast<MT_WORD>(kWithAll.size())), 1);
    MT_WORD w[10];
    for (MT_WORD bad : {MT_WORD(0), MT_WORD(-1), MT_WORD(2), MT_WORD(99)}) {
        MT_WORD pos = bad;
        for (MT_WORD& x : w) x = kJunk;
        EXPECT_EQ(MT_GetMainNext(root.r, &pos, &w[0], &w[1], &w[2], &w[3], &w[4], &w[5], &w[6], &w[7],
                                 &w[8], &w[9], 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0),
                  0);
        EXPECT_EQ(pos, 0);
        for (MT_WORD x : w) EXPECT_EQ(x, 0);
    }
    // Only the slots given are filled; nothing is made for the others (the
    // leak checker of the sanitizer build sees any text left behind).
    MT_WORD pos = MT_GetMainHeadPosition(root.r);
    MT_WORD body = 0, length = 0;
    EXPECT_EQ(MT_GetMainNext(root.r, &pos, nullptr, nullptr, &body, &length, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0),
              1);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(body)), "text");
    EXPECT_EQ(length, 4);
    EXPECT_EQ(pos, 0);
    MT_Free(reinterpret_cast<void*>(body));
    MT_WORD a1 = 0;
    EXPECT_EQ(MT_GetAttach(root.r, nullptr, &a1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr),
              1);
    EXPECT_EQ(a1, 0);
    char* text = nullptr;
    EXPECT_EQ(MT_GetSubjectD(root.r, &text, nullptr), 1);
    EXPECT_STREQ(text, "s");
    MT_Free(text);
    EXPECT_EQ(MT_GetMessageIDD(root.r, nullptr, nullptr), 0);
}

TEST(MsgApi, RootsAreIndependent) {
    Root a, b;
    const std::string one = "Subject: one\r\n\r\n", two = "Subject: two\r\n\r\n";
    MT_ParseMailText(a.r, one.data(), static_cast<MT_WORD>(one.size()));
    MT_ParseMailText(b.r, two.data(), static_cast<MT_WORD>(two.size()));
    char* t = nullptr;
    MT_WORD n = 0;
    ASSERT_EQ(MT_GetSubjectD(a.r, &t, &n), 1);
    EXPECT_STREQ(t, "one");
    MT_Free(t);
}

struct CodingCase {
    const char* name;
    std::string (*decode)(std::string_view);
    std::string in;
    std::string out;
};

TEST(MsgCoding, Bodies) {
    const CodingCase cases[] = {
        {"base64", msg::DecodeBase64Body, "aGVs\r\nbG8=\r\n", "hello"},
        {"base64 junk skipped", msg::DecodeBase64Body, "aG*V s!bG8", "hello"},
        {"base64 stops at padding", msg::DecodeBase64Body, "aGk=aGk=", "hi"},
        {"base64 dangling six bits", msg::DecodeBase64Body, "aGkx5", "hi1"},
        {"qp bytes any case", msg::DecodeQuotedPrintableBody, "=41=4a=4A", "AJJ"},
        {"qp soft breaks", msg::DecodeQuotedPrintableBody, "a=\r\nb= \t\nc=", "abc"},
        {"qp hard break kept", msg::DecodeQuotedPrintableBody, "a\r\nb", "a\r\nb"},
        {"qp bad escape kept", msg::DecodeQuotedPrintableBody, "=G1=4", "=G1=4"},
    };
    for (const CodingCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.decode(c.in), c.out);
    }
}

TEST(MsgCoding, Words) {
    struct Case {
        const char* in;
        bool b;
        bool ok;
        std::string out;
    };
    const Case cases[] = {
        {"aGk=", true, true, "hi"},   {"aGk", true, true, "hi"},    {"aGkh", true, true, "hi!"},
        {"aGk==", true, false, ""},   {"a", true, false, ""},       {"aG=k", true, false, ""},
        {"", true, true, ""},         {"a_b=3D", false, true, "a b="}, {"=4", false, false, ""},
        {"=xy", false, false, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.in);
        std::string out;
        bool ok = c.b ? msg::DecodeBase64Word(c.in, &out) : msg::DecodeQWord(c.in, &out);
        EXPECT_EQ(ok, c.ok);
        if (ok) {
            EXPECT_EQ(out, c.out);
        }
    }
}

TEST(MsgParams, Values) {
    struct Case {
        const char* field;
        const char* value;
        const char* param;
        bool found;
        std::string expected;
    };
    const Case cases[] = {
        {"Text/Plain; Charset=\"ISO-2022-JP\"", "text/plain", "charset", true, "ISO-2022-JP"},
        {"text/plain (comment; x=y) ; charset = utf-8 ", "text/plain", "charset", true, "utf-8"},
        {"a/b; name=\"q\\\"uo\\\\te\"", "a/b", "name", true, "q\"uo\\te"},
        {"a/b; name=\"unterminated", "a/b", "name", true, "unterminated"},
        {"a/b; junk; =x; name=v", "a/b", "name", true, "v"},
        {"a/b; name=first; name=second", "a/b", "name", true, "first"},
        {"a/b; other=1", "a/b", "name", false, ""},
        {"a/b (unclosed comment; name=v", "a/b", "name", false, ""},
        {"", "", "name", false, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.field);
        msg::MsgParams p;
        p.Parse(c.field);
        EXPECT_EQ(p.Value(), c.value);
        std::string v;
        EXPECT_EQ(p.Get(c.param, &v), c.found);
        if (c.found) {
            EXPECT_EQ(v, c.expected);
        }
    }
}

TEST(MsgParams, Rfc2231) {
    struct Case {
        const char* field;
        bool found;
        std::u16string expected;
    };
    const Case cases[] = {
        {"a; f*=us-ascii'en'a%20b", true, u"a b"},
        {"a; f*=%41%4", true, u"A%4"},
        {"a; f*0=x; f*1*=%41; f*2=\"y z\"", true, u"xAy z"},
        {"a; f*0=x; f*2=z", true, u"x"},  // a gap ends the value
        {"a; f*1=x", false, u""},         // no section 0
        {"a; f*0=x; f*0=y; f*1=z", true, u"xz"},
        {"a; f*=x; f=plain", true, u"x"},
        {"a; f=\"=?UTF-8?Q?a=5Fb?=\"", true, u"a_b"},
        {"a; f*99999999=x", false, u""},
        {"a; fx*=y", false, u""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.field);
        msg::MsgParams p;
        p.Parse(c.field);
        std::u16string text;
        EXPECT_EQ(p.GetText("f", &text), c.found);
        if (c.found) {
            EXPECT_EQ(text, c.expected);
        }
    }
}

}  // namespace
