// Tests of the value record's two fills and the reader-result mapping.
#include <gtest/gtest.h>

#include "QvV4Wrapper/QvV4Value.h"

namespace {

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
        {"any other kind is kind 1", false, "abc", 7, 0, 3, u""},
        {"empty kind 2", false, "", 2, 0, 2, u""},
        {"trail byte 5C", false, "\x95\x5c", 2, 0, 4, u"表"},
        {"invalid", false, "\x81\x20", 2, -3, 0, u""},
        {"address: empty kind 1", true, "", 1, 0, 1, u""},
        {"address: kind 2", true, "\x83\x65\x83\x58\x83\x67", 2, 0, 8, u"テスト"},
        {"address: kind 3 refused", true, "x", 3, -3, 0, u""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QvV4Value v;
        QvV4Value_Init(&v);
        QvV4Value_SetKind(&v, c.kind);
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
        QvV4Value_Release(&v);  // harmless twice
        EXPECT_EQ(nullptr, v.pData);
    }
}

TEST(ValueSeam, ReaderResultsMap) {
    const std::pair<int32_t, int32_t> cases[] = {
        {-2, QV_E_ACCESS_DENIED}, {-1, QV_E_OUT_OF_MEMORY}, {0, QV_S_OK}, {100, QV_E_UNEXPECTED}};
    for (auto [result, code] : cases) EXPECT_EQ(code, QvV4MapError(result)) << result;
}

}  // namespace
