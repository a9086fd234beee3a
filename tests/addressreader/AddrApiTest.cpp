// AddrApiTest.cpp - the flat functions on books, groups and items built in
// memory: counts and indexes (out of range, negative, empty lists), the
// barrier's answers to bad pointers, the properties and names.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "AddrTestUtil.h"
#include "addressreader/AddrReader.h"
#include "addressreader/AddrUser.h"

namespace {

// Book: top group F with item a and subgroups G and E (empty); G holds item b
// and the comma subgroup k with items x and y.
const char kFile[] = "a: 1\nGroup G\nb: 2\nk: x, y\nEnd Group\nGroup E\nEnd Group\n";

enum class Op { ItemCount, GroupCount, Item, Group };
enum Holder { kBook, kF, kG, kK, kE, kNull, kUser };

struct AccessCase {
    const char* name;
    Holder container;
    Op op;
    int32_t index;
    int32_t result;
    const char* out;  // count, group name, "key=value", "<null>" or "<untouched>"
};

void PrintTo(const AccessCase& c, std::ostream* os) { *os << c.name; }

const AccessCase kAccess[] = {
    {"book items are the flat list", kBook, Op::ItemCount, 0, 0, "4"},
    {"book groups are the files", kBook, Op::GroupCount, 0, 0, "1"},
    {"group items are direct only", kG, Op::ItemCount, 0, 0, "1"},
    {"group subgroups", kF, Op::GroupCount, 0, 0, "2"},
    {"book item by index", kBook, Op::Item, 2, 0, "k=x"},
    {"book item at the count", kBook, Op::Item, 4, -3, "<null>"},
    {"negative item index reads as 0", kBook, Op::Item, -5, 0, "a=1"},
    {"comma subgroup item", kK, Op::Item, 1, 0, "k=y"},
    {"empty group, negative item index", kE, Op::Item, -1, 0, "<null>"},
    {"empty group, item 0", kE, Op::Item, 0, -3, "<null>"},
    {"top group by index", kBook, Op::Group, 0, 0, "F"},
    {"group at the count leaves the output", kBook, Op::Group, 1, -3, "<untouched>"},
    {"negative group index reads as 0", kG, Op::Group, -1, 0, "k"},
    {"empty group, negative group index", kK, Op::Group, -1, 0, "<null>"},
    {"null container, item count", kNull, Op::ItemCount, 0, -2, "<untouched>"},
    {"null container, group count gives 0", kNull, Op::GroupCount, 0, -2, "0"},
    {"null container, group", kNull, Op::Group, 0, -2, "<null>"},
    {"null container, item", kNull, Op::Item, 0, -2, "<untouched>"},
    {"user is no container", kUser, Op::ItemCount, 0, -2, "<untouched>"},
    {"user is no container, group", kUser, Op::Group, 0, -2, "<null>"},
};

class AddrAccess : public ::testing::TestWithParam<AccessCase> {};

TEST_P(AddrAccess, ResultAndOutput) {
    const AccessCase& c = GetParam();
    addrtest::Parsed p = addrtest::Parse(kFile);
    CAddrUser user("C:\\mb", "someone");
    CAddrGroup* g = p.file->GroupAt(0);
    ADDROBJECT_HANDLE holders[] = {static_cast<IAddrNamed*>(p.book.get()), static_cast<IAddrNamed*>(p.file),
                                   static_cast<IAddrNamed*>(g), static_cast<IAddrNamed*>(g->GroupAt(0)),
                                   static_cast<IAddrNamed*>(p.file->GroupAt(1)), nullptr,
                                   static_cast<IAddrNamed*>(&user)};
    ADDROBJECT_HANDLE h = holders[c.container];
    int sentinel = 0;
    std::string out;
    if (c.op == Op::ItemCount || c.op == Op::GroupCount) {
        int32_t n = 12345;
        int32_t r = c.op == Op::ItemCount ? AddrReader_GetItemCount(nullptr, h, &n) : AddrReader_GetGroupCount(nullptr, h, &n);
        EXPECT_EQ(c.result, r);
        out = n == 12345 ? "<untouched>" : std::to_string(n);
    } else {
        ADDROBJECT_HANDLE o = &sentinel;
        int32_t r = c.op == Op::Item ? AddrReader_GetItem(nullptr, h, c.index, &o) : AddrReader_GetGroup(nullptr, h, c.index, &o);
        EXPECT_EQ(c.result, r);
        if (o == &sentinel) {
            out = "<untouched>";
        } else if (o == nullptr) {
            out = "<null>";
        } else if (c.op == Op::Item) {
            auto* item = static_cast<CAddrItem*>(o);
            out = std::string(item->Key()) + "=" + item->Value();
        } else {
            QvV4Value v;
            QvV4Value_Init(&v);
            EXPECT_EQ(0, AddrReader_GetName(nullptr, o, &v));
            out = addrtest::Text8(v);
        }
    }
    EXPECT_EQ(c.out, out);
}

INSTANTIATE_TEST_SUITE_P(Cases, AddrAccess, ::testing::ValuesIn(kAccess),
                         addrtest::ParamName<::testing::TestParamInfo<AccessCase>>);

TEST(AddrApi, FindProperty) {
    struct Case {
        const char16_t* key;
        int32_t result;
        int32_t index;
    } cases[] = {
        {u"FN", 0, 0}, {u"EMAIL;INTERNET", 0, 1}, {u"fn", -3, 0}, {u"N-1", -3, 0},
        {u"", -3, 0},  {u"FN ", -3, 0},          {u"EMAIL", -3, 0}, {u"EMAIL;INTERNET;X", -3, 0},
    };
    for (const Case& c : cases) {
        int32_t index = 99;
        EXPECT_EQ(c.result, AddrReader_FindProperty(nullptr, nullptr, c.key, &index));
        EXPECT_EQ(c.index, index);
    }
    int32_t index = 0;
    EXPECT_EQ(-2, AddrReader_FindProperty(nullptr, nullptr, nullptr, &index));
    EXPECT_EQ(-2, AddrReader_FindProperty(nullptr, nullptr, u"FN", nullptr));
}

TEST(AddrApi, ItemProperties) {
    addrtest::Parsed p = addrtest::Parse("  heading :   addr \n");
    ADDROBJECT_HANDLE item = p.book->ItemAt(0);
    struct Case {
        ADDROBJECT_HANDLE item;
        int32_t property;
        uint32_t kind;
        int32_t result;
        std::u16string text;  // u"<untouched>" when pData stays the sentinel
        uint32_t size;
    } cases[] = {
        {item, 0, 1, 0, u"heading ", 9},
        {item, 1, 1, 0, u"addr ", 6},
        {item, 1, 2, 0, u"addr ", 12},
        {item, 2, 1, -3, u"<untouched>", 77},
        {item, -1, 2, -3, u"<untouched>", 77},
        {item, 0, 3, -3, u"<null>", 0},
        {nullptr, 0, 1, -2, u"<untouched>", 77},
    };
    char sentinel = 0;
    for (const Case& c : cases) {
        QvV4Value v{nullptr, c.kind, 77, &sentinel};
        EXPECT_EQ(c.result, AddrReader_GetItemProperty(nullptr, c.item, c.property, &v));
        EXPECT_EQ(c.size, v.nSize);
        std::u16string text;
        if (v.pData == &sentinel) {
            text = u"<untouched>";
        } else if (v.pData == nullptr) {
            text = u"<null>";
        } else if (c.kind == 1) {
            for (const char* s = static_cast<const char*>(v.pData); *s != '\0'; ++s) text += static_cast<char16_t>(*s);
        } else {
            text = static_cast<const char16_t*>(v.pData);
        }
        EXPECT_EQ(c.text, text) << "property " << c.property << " kind " << c.kind;
        QvV4Value_Release(&v);
    }
    EXPECT_EQ(-2, AddrReader_GetItemProperty(nullptr, item, 0, nullptr));
}

TEST(AddrApi, Names) {
    addrtest::Parsed p = addrtest::Parse("k: a, b\n");
    CAddrUser named("C:\\mb", "Taro");
    struct Case {
        ADDROBJECT_HANDLE object;
        uint32_t kind;
        int32_t result;
        std::u16string text;
    } cases[] = {
        {static_cast<IAddrNamed*>(p.book.get()), 2, 0, u"\u30A2\u30C9\u30EC\u30B9\u5E33"},
        {static_cast<IAddrNamed*>(p.file), 2, 0, u"F"},
        {static_cast<IAddrNamed*>(p.file->GroupAt(0)), 2, 0, u"k"},
        {static_cast<IAddrNamed*>(&named), 2, 0, u"Taro"},
        {static_cast<IAddrNamed*>(&named), 3, -3, u""},
        {nullptr, 2, -2, u""},
    };
    for (const Case& c : cases) {
        QvV4Value v;
        QvV4Value_Init(&v);
        QvV4Value_SetKind(&v, c.kind);
        EXPECT_EQ(c.result, AddrReader_GetName(nullptr, c.object, &v));
        EXPECT_EQ(c.text, v.pData != nullptr ? std::u16string(static_cast<const char16_t*>(v.pData)) : u"");
        QvV4Value_Release(&v);
    }
    QvV4Value v;
    QvV4Value_Init(&v);
    EXPECT_EQ(0, AddrReader_GetName(nullptr, static_cast<IAddrNamed*>(p.book.get()), &v));
    EXPECT_EQ(kAddrBookName, addrtest::Text8(v));
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
