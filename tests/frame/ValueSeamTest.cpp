// Tests of the value record's two fills, the reader-result mapping and the
// 16-bit formatter.
#include <gtest/gtest.h>

#include <cstring>

#include "QvImplCommon/QvWString.h"
#include "frame/FakeTree.h"

namespace {

QvV4Value Fresh(uint32_t kind) {
    QvV4Value v;
    QvV4Value_Init(&v);
    QvV4Value_SetKind(&v, kind);
    return v;
}

// The mail side fills from a CP932 string, the address side from a C text.
TEST(ValueSeam, Fills) {
    const struct {
        const char* name;
        bool address;
        std::string source;
        uint32_t kind;
        int32_t result;
        uint32_t size;
        std::u16string wide;  // kind 2
    } cases[] = {
        {"ascii kind 1", false, "abc", 1, 0, 3, u""},
        {"any other kind is kind 1", false, "abc", 7, 0, 3, u""},
        {"empty kind 1", false, "", 1, 0, 2, u""},
        {"empty kind 2", false, "", 2, 0, 2, u""},
        {"japanese kind 2", false, "\x93\xfa\x96\x7b", 2, 0, 8, u"日本"},
        {"trail byte 5C", false, "\x95\x5c", 2, 0, 4, u"表"},
        {"invalid", false, "\x81\x20", 2, -3, 0, u""},
        {"lone lead byte", false, "a\x82", 2, -3, 0, u""},
        {"address: empty kind 1", true, "", 1, 0, 1, u""},
        {"address: kind 2", true, "\x83\x65\x83\x58\x83\x67", 2, 0, 8, u"テスト"},
        {"address: kind 3 refused", true, "x", 3, -3, 0, u""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QvV4Value v = Fresh(c.kind);
        EXPECT_EQ(c.result, c.address ? QvV4Value_FromText(&v, c.source.c_str()) : QvV4Value_FromString(c.source, &v));
        EXPECT_EQ(c.size, v.nSize);
        if (c.result != 0) {
            EXPECT_EQ(nullptr, v.pData);
            EXPECT_TRUE(c.address || v.pfnFree == nullptr);  // the address side sets it before it looks
            continue;
        }
        ASSERT_NE(nullptr, v.pData);
        if (c.kind == 2) EXPECT_EQ(c.wide, std::u16string(static_cast<const char16_t*>(v.pData)));
        else EXPECT_EQ(c.source, std::string(static_cast<const char*>(v.pData)));
        QvV4Value_Release(&v);
        EXPECT_EQ(nullptr, v.pData);
        QvV4Value_Release(&v);  // harmless twice
    }
    // A static text survives a release.
    static char16_t s_empty[1] = {0};
    QvV4Value v = Fresh(2);
    v.pData = s_empty;
    QvV4Value_Release(&v);
    EXPECT_EQ(s_empty, v.pData);
}

TEST(ValueSeam, ReaderResultsMapAndOnlyUnmappedOnesAreTraced) {
    Analyzer();
    TempLog log;
    ASSERT_EQ(QV_S_OK, log.Start());
    const std::pair<int32_t, int32_t> cases[] = {{-2, QV_E_ACCESS_DENIED}, {-1, QV_E_OUT_OF_MEMORY}, {0, QV_S_OK},
                                                 {-3, QV_E_UNEXPECTED}, {100, QV_E_UNEXPECTED}};
    for (auto [result, code] : cases) EXPECT_EQ(code, QvV4MapError(result)) << result;
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
