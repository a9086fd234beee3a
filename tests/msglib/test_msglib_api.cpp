// test_msglib_api.cpp - the nine functions at their edges (root 0, bad
// arguments, a parse that replaces the last, partial slots), and the decoders
// of transfer codings and parameters underneath.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "MsgParams.h"
#include "MsgTestDriver.h"
#include "MsgTransferCoding.h"

namespace {

const MT_WORD kJunk = 0x5A5A;

struct Root {
    MT_WORD r = MT_Init();
    ~Root() { MT_Term(r); }
    MT_WORD Parse(const std::string& s) { return MT_ParseMailText(r, s.data(), static_cast<MT_WORD>(s.size())); }
    std::string Subject() {
        std::string s;
        return msgtest::Handed(MT_GetSubjectD, r, &s) ? s : "(none)";
    }
};

// Slots the caller could free twice after a failed call.
void ExpectCleared(const MT_WORD (&w)[10]) {
    for (MT_WORD x : w) EXPECT_EQ(x, 0);
}

TEST(MsgApi, RootZeroDoesNothing) {
    char* text = reinterpret_cast<char*>(kJunk);
    MT_WORD length = kJunk, pos = 1, w[10];
    EXPECT_EQ(MT_Term(0), 0);
    EXPECT_EQ(MT_Free(nullptr), 0);
    EXPECT_EQ(MT_ParseMailText(0, "Subject: x\r\n", 12), 0);
    EXPECT_EQ(MT_GetMainHeadPosition(0), 0);
    std::fill(w, w + 10, kJunk);
    EXPECT_EQ(msgtest::MainNext(0, &pos, w), 0);
    ExpectCleared(w);
    std::fill(w, w + 10, kJunk);
    EXPECT_EQ(msgtest::Attach(0, w), 0);
    ExpectCleared(w);
    EXPECT_EQ(MT_GetSubjectD(0, &text, &length), 0);
    EXPECT_EQ(MT_GetMessageIDD(0, &text, &length), 0);
    EXPECT_EQ(text, reinterpret_cast<char*>(kJunk));
    EXPECT_EQ(length, kJunk);
}

const std::string kWithAll =
    msgtest::Entity({"Subject: s", "Message-ID: <i@x>", "Content-Type: multipart/mixed; boundary=b"},
                    "--b\r\n\r\ntext\r\n--b\r\nContent-Disposition: attachment; filename=a\r\n\r\nx\r\n--b--");

// A second parse on a root that holds kWithAll.
TEST(MsgApi, BadArgumentsAndReplacement) {
    const struct {
        const char *name, *text;
        MT_WORD size, result, attach;
        const char* subject;
    } cases[] = {
        {"the same message again", kWithAll.data(), static_cast<MT_WORD>(kWithAll.size()), 1, 1, "s"},
        {"a message without those", "From: a\r\n\r\n", 11, 1, 0, "(none)"},
        {"size 0 with null text", nullptr, 0, 1, 0, "(none)"},
        {"null text with a size", nullptr, 5, 0, 0, "(none)"},
        {"negative size", "Subject: x\r\n", -1, 0, 0, "(none)"},
        {"size stops before the field", "Subject: x\r\n", 0, 1, 0, "(none)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Root root;
        ASSERT_EQ(root.Parse(kWithAll), 1);
        EXPECT_EQ(MT_ParseMailText(root.r, c.text, c.size), c.result);
        EXPECT_EQ(root.Subject(), c.subject);
        MT_WORD a[10] = {};
        EXPECT_EQ(msgtest::Attach(root.r, a), c.attach);
        for (MT_WORD x : a) MT_Free(reinterpret_cast<void*>(x));
        EXPECT_EQ(MT_GetMainHeadPosition(root.r) != 0, c.result == 1);
    }
}

TEST(MsgApi, PositionsAndPartialSlots) {
    Root root, other;
    ASSERT_EQ(root.Parse(kWithAll), 1);
    ASSERT_EQ(other.Parse("Subject: other\r\n\r\n"), 1);
    EXPECT_EQ(root.Subject(), "s");  // roots are independent
    for (MT_WORD bad : {MT_WORD(0), MT_WORD(-1), MT_WORD(2), MT_WORD(99)}) {
        MT_WORD pos = bad, w[10];
        std::fill(w, w + 10, kJunk);
        EXPECT_EQ(msgtest::MainNext(root.r, &pos, w), 0);
        EXPECT_EQ(pos, 0);
        ExpectCleared(w);
    }
    // Only the slots given are filled (the sanitizer build sees any leak).
    MT_WORD pos = MT_GetMainHeadPosition(root.r), body = 0, length = 0, a1 = 0;
    EXPECT_EQ(MT_GetMainNext(root.r, &pos, nullptr, nullptr, &body, &length, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0),
              1);
    EXPECT_EQ(msgtest::TakeText(body), "text");
    EXPECT_EQ(length, 4);
    EXPECT_EQ(pos, 0);
    EXPECT_EQ(MT_GetAttach(root.r, nullptr, &a1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr),
              1);
    EXPECT_EQ(a1, 0);
    char* text = nullptr;
    EXPECT_EQ(MT_GetSubjectD(root.r, &text, nullptr), 1);
    EXPECT_EQ(msgtest::TakeText(reinterpret_cast<MT_WORD>(text)), "s");
    EXPECT_EQ(MT_GetMessageIDD(root.r, nullptr, nullptr), 0);
}

// Each decoder as text to text; "-" when it fails or finds nothing.
using Decoder = std::string (*)(std::string_view);
const Decoder kB64Word = [](std::string_view in) {
    std::string out;
    return msg::DecodeBase64Word(in, &out) ? out : "-";
};
const Decoder kQWord = [](std::string_view in) {
    std::string out;
    return msg::DecodeQWord(in, &out) ? out : "-";
};
msg::MsgParams Params(std::string_view field) {
    msg::MsgParams p;
    p.Parse(field);
    return p;
}
const Decoder kValue = [](std::string_view field) { return Params(field).Value(); };
const Decoder kName = [](std::string_view field) {
    std::string v;
    return Params(field).Get("name", &v) ? v : "-";
};
const Decoder kTextF = [](std::string_view field) {  // the expected texts are ASCII
    std::u16string t;
    return Params(field).GetText("f", &t) ? std::string(t.begin(), t.end()) : "-";
};

TEST(MsgDecoders, Table) {
    const Decoder b = msg::DecodeBase64Body, q = msg::DecodeQuotedPrintableBody;
    const struct {
        Decoder decode;
        const char *in, *out;
    } cases[] = {
        {b, "aGVs\r\nbG8=\r\n", "hello"}, {b, "aG*V s!bG8", "hello"}, {b, "aGk=aGk=", "hi"}, {b, "aGkx5", "hi1"},
        {q, "=4a=4A", "JJ"}, {q, "a=\r\nb= \t\nc=", "abc"}, {q, "a\r\nb", "a\r\nb"}, {q, "=G1=4", "=G1=4"},
        {kB64Word, "aGk=", "hi"}, {kB64Word, "aGk", "hi"}, {kB64Word, "aGkh", "hi!"}, {kB64Word, "", ""},
        {kB64Word, "aGk==", "-"}, {kB64Word, "a", "-"}, {kB64Word, "aG=k", "-"},
        {kQWord, "a_b=3D", "a b="}, {kQWord, "=4", "-"}, {kQWord, "=xy", "-"},
        {kValue, "Text/Plain; Charset=\"ISO-2022-JP\"", "text/plain"}, {kValue, "text/plain (c) ; x=y", "text/plain"},
        {kValue, "", ""},
        {kName, "a/b; Name=\"q\\\"uo\\\\te\"", "q\"uo\\te"}, {kName, "a/b (c; x=y) ; name = v ", "v"},
        {kName, "a/b; name=\"unterminated", "unterminated"}, {kName, "a/b; junk; =x; name=first; name=second", "first"},
        {kName, "a/b; other=1", "-"}, {kName, "a/b (unclosed comment; name=v", "-"},
        {kTextF, "a; f*=us-ascii'en'a%20b", "a b"}, {kTextF, "a; f*=%41%4", "A%4"},
        {kTextF, "a; f*0=x; f*1*=%41; f*2=\"y z\"", "xAy z"}, {kTextF, "a; f*0=x; f*2=z", "x"},  // a gap ends it
        {kTextF, "a; f*1=x", "-"}, {kTextF, "a; f*0=x; f*0=y; f*1=z", "xz"}, {kTextF, "a; f*=x; f=plain", "x"},
        {kTextF, "a; f=\"=?UTF-8?Q?a=5Fb?=\"", "a_b"}, {kTextF, "a; f*99999999=x", "-"}, {kTextF, "a; fx*=y", "-"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.decode(c.in), c.out) << c.in;
}

}  // namespace
