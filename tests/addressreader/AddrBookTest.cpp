// AddrBookTest.cpp - books built in memory: the address file grammar, long
// lines in pieces, deep nesting, and the flat functions on groups and items.
#include <gtest/gtest.h>

#include <string>

#include "AddrTestUtil.h"
#include "addressreader/AddrUser.h"

namespace {

std::string R(char c, size_t n) { return std::string(n, c); }

TEST(AddrParser, Grammar) {
    // tree: Dump of the file's group "F"; flat: the book's flat list, "*" to skip.
    struct Case { const char* name; std::string input, tree, flat; int32_t result; } cases[] = {
        {"keywords match as a prefix in any case", "SEPARATORs: x\ngROUPie: x\na: b\nend group and more\nc: d\n",
         "F{c=d|e: x{a=b}}", "a=b;c=d;", -1},
        {"End Group at the top ends the file", "a: 1\nEnd Group\nb: 2\n", "F{a=1}", "a=1;", 0},
        {"sixth byte passed over, names keep commas", "Group\tTab name \nEnd Group\nGroup a, b\nEnd Group\nGroupXY\n",
         "F{Tab name {}|a, b{}|Y{}}", "", -1},
        {"blanks, separator, colons", "\n   \n\t\v\f\r\n: value\nkey: \nkey:value\na:b: c: d\n  \tk \t: \t v  \n",
         "F{=value|key=|key:value=|a:b=c: d|k \t=v  }", "=value;key=;key:value=;a:b=c: d;k \t=v  ;", -1},
        {"commas: empty pieces, blanks, file order, none in keys", "k: , ,\no: a ,b , c,\nb,c: 4\n",
         "F{b,c=4|k{k=|k=}|o{o=a |o=b |o=c}}", "k=;k=;o=a ;o=b ;o=c;b,c=4;", -1},
        {"zero byte ends the line, Ctrl-Z the file", std::string("ab\0cd: x\n\0x: y\nq: r\n\x1A" "s: t\n", 26),
         "F{ab=|q=r}", "ab=;q=r;", -1},
        {"CR LF, lone CR, no final line feed", "a: b\r\nc: d\re\nf: g", "F{a=b|c=d\re|f=g}", "a=b;c=d\re;f=g;", -1},
        {"Shift-JIS bytes are no white space", "\x81\x40k: \x81\x40v\n", "F{\x81\x40k=\x81\x40v}", "*", -1},
        // Long lines come in pieces of at most 5,119 bytes, each a line of its
        // own; CR LF counts one byte, also split by a piece's end.
        {"piece boundaries", R('b', 5119) + "\r\n" + R('c', 5120) + "\n" + R('d', 5118) + "\r\n",
         "F{" + R('b', 5119) + "=|" + R('c', 5119) + "=|c=|" + R('d', 5118) + "=}", "*", -1},
        {"second piece classified afresh", R('x', 5119) + "Group g\nk: v\n", "F{" + R('x', 5119) + "=|g{k=v}}", "*",
         -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        addrtest::Parsed p = addrtest::Parse(c.input);
        EXPECT_EQ(c.result, p.result);
        EXPECT_EQ(c.tree, addrtest::Dump(p.file));
        EXPECT_EQ(c.flat, c.flat == "*" ? "*" : addrtest::Flat(*p.book));
    }
}

// 100,000 nested groups, closed or not, parse and are destroyed without recursion.
TEST(AddrParser, DeepNesting) {
    const int kDepth = 100000;
    for (bool bClosed : {true, false}) {
        std::string input;
        for (int i = 0; i < kDepth; ++i) input += "Group g\n";
        input += "deep: x\n";
        for (int i = 0; bClosed && i < kDepth; ++i) input += "End Group\n";
        addrtest::Parsed p = addrtest::Parse(input + "top: y\n");
        const CAddrGroup* group = p.file;
        int depth = 0;
        for (; group->GroupCount() == 1; ++depth) group = group->GroupAt(0);
        EXPECT_EQ(kDepth, depth);
        EXPECT_EQ("deep=x;top=y;", addrtest::Flat(*p.book));
        EXPECT_EQ(bClosed ? 1 : 0, p.file->ItemCount());
    }
}

TEST(AddrApi, IndexesAndBadPointers) {
    addrtest::Parsed p = addrtest::Parse("a: 1\nGroup G\nk: x, y\nEnd Group\n");
    IAddrNamed *book = p.book.get(), *g = p.file->GroupAt(0), *k = p.file->GroupAt(0)->GroupAt(0);
    // out: the item's key or the group's name, "<null>" or "<untouched>"; a
    // negative index reads as 0.
    struct Case { IAddrNamed* container; bool group; int32_t index, result; const char* out; } cases[] = {
        {book, false, 3, -3, "<null>"},    {book, false, -5, 0, "a"},         {book, true, 1, -3, "<untouched>"},
        {g, true, -1, 0, "k"},             {k, true, -1, 0, "<null>"},        {nullptr, true, 0, -2, "<null>"},
        {nullptr, false, 0, -2, "<untouched>"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << (c.group ? "group " : "item ") << c.index << " " << c.out);
        int sentinel = 0;
        ADDROBJECT_HANDLE o = &sentinel;
        EXPECT_EQ(c.result, c.group ? AddrReader_GetGroup(nullptr, c.container, c.index, &o)
                                    : AddrReader_GetItem(nullptr, c.container, c.index, &o));
        EXPECT_EQ(c.out, o == &sentinel ? "<untouched>"
                         : o == nullptr ? "<null>"
                         : c.group      ? std::string(dynamic_cast<CAddrGroup*>(static_cast<IAddrNamed*>(o))->Name())
                                        : std::string(static_cast<CAddrItem*>(o)->Key()));
    }
    // A failed count sets the group count to 0 and leaves the item count; a
    // user is no container, nor a book. Nulls that are no failure: 0.
    CAddrUser user("C:\\mb", "someone");
    int32_t n = 7;
    EXPECT_EQ(-2, AddrReader_GetItemCount(nullptr, nullptr, &n));
    EXPECT_EQ(-2, AddrReader_GetItemCount(nullptr, static_cast<IAddrNamed*>(&user), &n));
    EXPECT_EQ(7, n);
    EXPECT_EQ(-2, AddrReader_GetGroupCount(nullptr, nullptr, &n));
    EXPECT_EQ(0, n);
    EXPECT_EQ(-2, AddrReader_CloseBook(nullptr, nullptr, 0, static_cast<IAddrNamed*>(&user)));
    EXPECT_EQ(0, AddrReader_Close(nullptr));
    EXPECT_EQ(0, AddrReader_CloseBook(nullptr, nullptr, 0, nullptr));
    EXPECT_EQ(0, AddrReader_GetUserIndex(nullptr, &n, &n));
    EXPECT_EQ(-1, n);
}

// Texts of names and item properties in the kind the caller sets; the size
// counts the terminator.
TEST(AddrApi, NamesAndProperties) {
    addrtest::Parsed p = addrtest::Parse("  heading :   addr \n");
    ADDROBJECT_HANDLE item = p.book->ItemAt(0);
    const int32_t kName = -9;
    struct Case { ADDROBJECT_HANDLE object; int32_t property; uint32_t kind; int32_t result; std::string text;
                  uint32_t size; } cases[] = {
        {item, 0, 1, 0, "heading ", 9},           {item, 1, 2, 0, "addr ", 12},
        {item, 2, 1, -3, "<untouched>", 77},      {item, 0, 3, -3, "<null>", 0},
        {nullptr, 0, 1, -2, "<untouched>", 77},   {static_cast<IAddrNamed*>(p.book.get()), kName, 1, 0, "アドレス帳", 0},
        {nullptr, kName, 2, -2, "<null>", 0},
    };
    char sentinel = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "property " << c.property << " kind " << c.kind << " " << c.text);
        QvV4Value v;
        QvV4Value_Init(&v);
        QvV4Value_SetKind(&v, c.kind);
        if (c.property == kName) {
            EXPECT_EQ(c.result, AddrReader_GetName(nullptr, c.object, &v));
        } else {
            v.nSize = 77;
            v.pData = &sentinel;
            EXPECT_EQ(c.result, AddrReader_GetItemProperty(nullptr, c.object, c.property, &v));
            EXPECT_EQ(c.size, v.nSize);
        }
        EXPECT_EQ(c.text, addrtest::Text(v, &sentinel));
        QvV4Value_Release(&v);
    }
}

// FN and EMAIL;INTERNET are found: the end-to-end walk's display names and addresses.
TEST(AddrApi, FindProperty) {
    struct Case { const char16_t* key; int32_t result, index; } cases[] = {
        {u"fn", -3, 0}, {u"EMAIL", -3, 0}, {u"EMAIL;INTERNET;X", -3, 0}, {nullptr, -2, 99}};
    for (const Case& c : cases) {
        int32_t index = 99;
        EXPECT_EQ(c.result, AddrReader_FindProperty(nullptr, nullptr, c.key, &index));
        EXPECT_EQ(c.index, index);
    }
}

}  // namespace
