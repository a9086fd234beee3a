// Tests of the value record's two fills, the reader-result mapping and the
// 16-bit formatter.
#include <gtest/gtest.h>

#include <cstring>

#include "QvImplCommon/QvWString.h"
#include "frame/FakeTree.h"
#include "tqnralm.h"

namespace {

QvV4Value Fresh(uint32_t kind) {
    QvV4Value v;
    QvV4Value_Init(&v);
    QvV4Value_SetKind(&v, kind);
    return v;
}

TEST(ValueSeam, MailSideFill) {
    struct Case {
        const char* name;
        std::string source;
        uint32_t kind;
        int32_t result;
        uint32_t size;
        std::u16string wide;  // kind 2
    };
    const Case cases[] = {
        {"ascii kind 1", "abc", 1, 0, 3, u""},
        {"any other kind is kind 1", "abc", 7, 0, 3, u""},
        {"empty kind 1", "", 1, 0, 2, u""},
        {"empty kind 2", "", 2, 0, 2, u""},
        {"japanese kind 2", "\x93\xfa\x96\x7b", 2, 0, 8, u"日本"},
        {"trail byte 5C", "\x95\x5c", 2, 0, 4, u"表"},
        {"invalid", "\x81\x20", 2, -3, 0, u""},
        {"lone lead byte", "a\x82", 2, -3, 0, u""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        QvV4Value v = Fresh(c.kind);
        EXPECT_EQ(c.result, QvV4Value_FromString(c.source, &v));
        if (c.result != 0) {
            EXPECT_EQ(nullptr, v.pData);
            EXPECT_EQ(nullptr, v.pfnFree);
            continue;
        }
        EXPECT_EQ(c.size, v.nSize);
        ASSERT_NE(nullptr, v.pData);
        if (c.kind == 2) EXPECT_EQ(c.wide, std::u16string(static_cast<const char16_t*>(v.pData)));
        else EXPECT_EQ(c.source, std::string(static_cast<const char*>(v.pData)));
        QvV4Value_Release(&v);
        EXPECT_EQ(nullptr, v.pData);
        QvV4Value_Release(&v);  // harmless twice
    }
}

TEST(ValueSeam, AddressSideFill) {
    QvV4Value v = Fresh(1);
    EXPECT_EQ(0, QvV4Value_FromText(&v, ""));
    EXPECT_EQ(1u, v.nSize);
    QvV4Value_Release(&v);
    v = Fresh(2);
    EXPECT_EQ(0, QvV4Value_FromText(&v, "\x83\x65\x83\x58\x83\x67"));
    EXPECT_EQ(8u, v.nSize);
    EXPECT_EQ(u"テスト", std::u16string(static_cast<const char16_t*>(v.pData)));
    QvV4Value_Release(&v);
    v = Fresh(3);
    EXPECT_EQ(-3, QvV4Value_FromText(&v, "x"));
    EXPECT_EQ(0u, v.nSize);
    EXPECT_EQ(nullptr, v.pData);
    // A static text survives a release.
    static char16_t s_empty[1] = {0};
    v.pData = s_empty;
    v.pfnFree = nullptr;
    QvV4Value_Release(&v);
    EXPECT_EQ(s_empty, v.pData);
}

TEST(ValueSeam, ReaderResultsMapAndOnlyUnmappedOnesAreTraced) {
    Analyzer();
    TempLog log;
    ASSERT_EQ(QV_S_OK, QV_StartLogging(reinterpret_cast<const QV_WCHAR*>(log.Path16().c_str())));
    EXPECT_EQ(QV_E_ACCESS_DENIED, QvV4MapError(-2));
    EXPECT_EQ(QV_E_OUT_OF_MEMORY, QvV4MapError(-1));
    EXPECT_EQ(QV_S_OK, QvV4MapError(0));
    EXPECT_EQ(QV_E_UNEXPECTED, QvV4MapError(-3));
    EXPECT_EQ(QV_E_UNEXPECTED, QvV4MapError(100));
    QV_EndLogging();
    const std::vector<std::string> lines = log.Lines();
    ASSERT_EQ(4u, lines.size());
    // This record's source line is fixed.
    EXPECT_EQ("[Q5V4ALM],3,T,QvV4Utils(L),V4 エラー (-3) を QV_E_UNEXPECTED に丸めた", lines[1]);
    EXPECT_NE(std::string::npos, log.Text().find("QvV4Utils(43),V4 エラー (100)"));
}

TEST(ValueSeam, FormatterConversions) {
    CQvWString s;
    s.Format("%ld|%lu|%lx|%04hu|%s|%s|%%", int32_t{-42}, uint32_t{4294967295u}, uint32_t{0x200}, uint32_t{7},
             u"テ", static_cast<const char16_t*>(nullptr));
    EXPECT_EQ(u"-42|4294967295|200|0007|テ|(NULL)|%", std::u16string(s.GetString()));
    s.Format("%p", reinterpret_cast<void*>(uintptr_t{0xa41f20}));
    std::u16string expected(2 * sizeof(void*) - 6, u'0');
    expected += u"A41F20";
    EXPECT_EQ(expected, std::u16string(s.GetString()));
}

}  // namespace
