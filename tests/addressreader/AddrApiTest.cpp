// AddrApiTest.cpp - the flat functions on books, groups and items built in
// memory: counts and indexes, the barrier's answers to bad pointers, the
// properties and names.
#include <gtest/gtest.h>

#include <string>

#include "AddrTestUtil.h"
#include "addressreader/AddrReader.h"
#include "addressreader/AddrUser.h"
#include "support/WinePrefix.h"

namespace {

TEST(AddrApi, CountsAndIndexes) {
    // Top group F with item a and subgroups G and E (empty); G holds item b
    // and the comma subgroup k with items x and y.
    addrtest::Parsed p = addrtest::Parse("a: 1\nGroup G\nb: 2\nk: x, y\nEnd Group\nGroup E\nEnd Group\n");
    CAddrUser user("C:\\mb", "someone");
    CAddrGroup* g = p.file->GroupAt(0);
    enum Holder { kBook, kF, kG, kK, kE, kNull, kUser };
    IAddrNamed* const holders[] = {p.book.get(), p.file, g, g->GroupAt(0), p.file->GroupAt(1), nullptr, &user};
    enum Op { kItemCount, kGroupCount, kItem, kGroup };
    // out: count, group name, "key=value", "<null>" or "<untouched>"; a
    // negative index reads as 0, and a user is no container.
    struct Case { Holder container; Op op; int32_t index, result; const char* out; } cases[] = {
        {kBook, kItemCount, 0, 0, "4"},  {kBook, kGroupCount, 0, 0, "1"}, {kG, kItemCount, 0, 0, "1"},
        {kF, kGroupCount, 0, 0, "2"},    {kBook, kItem, 4, -3, "<null>"}, {kBook, kItem, -5, 0, "a=1"},
        {kK, kItem, 1, 0, "k=y"},        {kE, kItem, -1, 0, "<null>"},    {kE, kItem, 0, -3, "<null>"},
        {kBook, kGroup, 0, 0, "F"},      {kBook, kGroup, 1, -3, "<untouched>"}, {kG, kGroup, -1, 0, "k"},
        {kK, kGroup, -1, 0, "<null>"},   {kNull, kItemCount, 0, -2, "<untouched>"}, {kNull, kGroupCount, 0, -2, "0"},
        {kNull, kGroup, 0, -2, "<null>"}, {kNull, kItem, 0, -2, "<untouched>"},
        {kUser, kItemCount, 0, -2, "<untouched>"}, {kUser, kGroup, 0, -2, "<null>"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "holder " << c.container << " op " << c.op << " index " << c.index);
        ADDROBJECT_HANDLE h = holders[c.container];
        int32_t n = 12345;
        int sentinel = 0;
        ADDROBJECT_HANDLE o = &sentinel;
        switch (c.op) {
            case kItemCount: EXPECT_EQ(c.result, AddrReader_GetItemCount(nullptr, h, &n)); break;
            case kGroupCount: EXPECT_EQ(c.result, AddrReader_GetGroupCount(nullptr, h, &n)); break;
            case kItem: EXPECT_EQ(c.result, AddrReader_GetItem(nullptr, h, c.index, &o)); break;
            case kGroup: EXPECT_EQ(c.result, AddrReader_GetGroup(nullptr, h, c.index, &o)); break;
        }
        std::string out = c.op <= kGroupCount ? (n == 12345 ? "<untouched>" : std::to_string(n))
                          : o == &sentinel    ? "<untouched>"
                          : o == nullptr      ? "<null>"
                          : c.op == kItem     ? std::string(static_cast<CAddrItem*>(o)->Key()) + "=" +
                                                    static_cast<CAddrItem*>(o)->Value()
                                              : dynamic_cast<CAddrGroup*>(static_cast<IAddrNamed*>(o))->Name();
        EXPECT_EQ(c.out, out);
    }
}

// Texts of names and item properties in the kind the caller sets.
TEST(AddrApi, NamesAndProperties) {
    addrtest::Parsed p = addrtest::Parse("  heading :   addr \nk: a, b\n");
    CAddrUser user("C:\\mb", "Taro");
    ADDROBJECT_HANDLE item = p.book->ItemAt(0);
    auto named = [](IAddrNamed* o) -> ADDROBJECT_HANDLE { return o; };
    // property -9: the name; text UTF-8, "<null>" or "<untouched>"; the size
    // with the terminator is checked for properties only.
    struct Case { ADDROBJECT_HANDLE object; int32_t property; uint32_t kind; int32_t result; std::string text;
                  uint32_t size; } cases[] = {
        {item, 0, 1, 0, "heading ", 9},           {item, 1, 1, 0, "addr ", 6},
        {item, 1, 2, 0, "addr ", 12},             {item, 2, 1, -3, "<untouched>", 77},
        {item, -1, 2, -3, "<untouched>", 77},     {item, 0, 3, -3, "<null>", 0},
        {nullptr, 0, 1, -2, "<untouched>", 77},
        {named(p.book.get()), -9, 1, 0, kAddrBookName, 0},
        {named(p.file), -9, 2, 0, "F", 0},        {named(p.file->GroupAt(0)), -9, 2, 0, "k", 0},
        {named(&user), -9, 2, 0, "Taro", 0},      {named(&user), -9, 3, -3, "<null>", 0},
        {nullptr, -9, 2, -2, "<null>", 0},
    };
    char sentinel = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "property " << c.property << " kind " << c.kind << " " << c.text);
        QvV4Value v;
        QvV4Value_Init(&v);
        QvV4Value_SetKind(&v, c.kind);
        if (c.property == -9) {
            EXPECT_EQ(c.result, AddrReader_GetName(nullptr, c.object, &v));
        } else {
            v.nSize = 77;
            v.pData = &sentinel;
            EXPECT_EQ(c.result, AddrReader_GetItemProperty(nullptr, c.object, c.property, &v));
            EXPECT_EQ(c.size, v.nSize);
        }
        EXPECT_EQ(c.text, v.pData == &sentinel ? "<untouched>"
                          : v.pData == nullptr ? "<null>"
                          : c.kind == 1        ? std::string(static_cast<const char*>(v.pData))
                                               : qvt::Utf8(std::u16string(static_cast<const char16_t*>(v.pData))));
        QvV4Value_Release(&v);
    }
    EXPECT_EQ(-2, AddrReader_GetItemProperty(nullptr, item, 0, nullptr));
}

TEST(AddrApi, FindProperty) {
    struct Case { const char16_t* key; int32_t result, index; } cases[] = {
        {u"FN", 0, 0}, {u"EMAIL;INTERNET", 0, 1}, {u"fn", -3, 0}, {u"N-1", -3, 0}, {u"", -3, 0},
        {u"FN ", -3, 0}, {u"EMAIL", -3, 0}, {u"EMAIL;INTERNET;X", -3, 0}, {nullptr, -2, 99},
    };
    for (const Case& c : cases) {
        int32_t index = 99;
        EXPECT_EQ(c.result, AddrReader_FindProperty(nullptr, nullptr, c.key, &index));
        EXPECT_EQ(c.index, index);
    }
    EXPECT_EQ(-2, AddrReader_FindProperty(nullptr, nullptr, u"FN", nullptr));
}

TEST(AddrApi, NullsThatAreNoFailure) {
    int32_t index = 0;
    EXPECT_EQ(0, AddrReader_Close(nullptr));
    EXPECT_EQ(0, AddrReader_CloseBook(nullptr, nullptr, 0, nullptr));
    EXPECT_EQ(0, AddrReader_GetUserIndex(nullptr, &index, &index));
    EXPECT_EQ(-1, index);
    ADDROBJECT_HANDLE book = &index;
    EXPECT_EQ(-2, AddrReader_OpenBook(nullptr, nullptr, 0, &book));
    CAddrUser user("C:\\mb", "someone");
    EXPECT_EQ(-2, AddrReader_CloseBook(nullptr, nullptr, 0, static_cast<IAddrNamed*>(&user)));
}

}  // namespace
