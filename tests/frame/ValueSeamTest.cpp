// Tests of the value record's fill from a CP932 string, as the mail side
// fills it, and of the mapping of reader results. (The address side's fill
// from a C text, kinds 1 to 3, is read back by the address reader's tests.)
#include <gtest/gtest.h>

#include <utility>

#include "QvV4Value/QvV4Value.h"
#include "QvV4Wrapper/QvV4Utils.h"

namespace {

TEST(ValueSeam, FillFromString) {
    const struct {
        const char* name;
        std::string source;
        uint32_t kind;
        int32_t result;
        uint32_t size;
        std::u16string wide;  // kind 2
    } cases[] = {
        {"any other kind is kind 1", "abc", 7, 0, 3, u""},
        {"empty kind 2", "", 2, 0, 2, u""},
        {"trail byte 5C", "\x95\x5c", 2, 0, 4, u"表"},
        {"invalid", "\x81\x20", 2, -3, 0, u""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QvV4Value v;
        QvV4Value_Init(&v);
        QvV4Value_SetKind(&v, c.kind);
        EXPECT_EQ(c.result, QvV4Value_FromString(c.source, &v));
        EXPECT_EQ(c.size, v.nSize);
        if (c.result != 0) {
            EXPECT_TRUE(v.pData == nullptr && v.pfnFree == nullptr);
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

// What the readers return, as result codes: -1 is out of memory, not a miss.
TEST(ValueSeam, ReaderResultsMap) {
    const std::pair<int32_t, int32_t> cases[] = {
        {-2, QV_E_ACCESS_DENIED}, {-1, QV_E_OUT_OF_MEMORY}, {0, QV_S_OK}, {100, QV_E_UNEXPECTED}};
    for (auto [result, code] : cases) EXPECT_EQ(code, QvV4MapError(result)) << result;
}

}  // namespace
