// The mapping of reader results. (The value record's fills are read back by
// the readers' tests in both kinds, and the damaged stores' walks fill it
// from invalid Shift-JIS.)
#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <utility>

#include "QvV4Value/QvTextBlocks.h"
#include "QvV4Wrapper/QvV4Utils.h"

namespace {

// What the readers return, as result codes: -1 is out of memory, not a miss.
TEST(ValueSeam, ReaderResultsMap) {
    const std::pair<int32_t, int32_t> cases[] = {
        {-2, QV_E_ACCESS_DENIED}, {-1, QV_E_OUT_OF_MEMORY}, {0, QV_S_OK}, {100, QV_E_UNEXPECTED}};
    for (auto [result, code] : cases) EXPECT_EQ(code, QvV4MapError(result)) << result;
}

// A block given back serves a later text only when that text fits in it,
// also when another thread gave it back; each block is written whole.
TEST(ValueSeam, TextBlocksServeOnlyTextsThatFit) {
    const struct { const char* name; size_t first, next; bool same; } cases[] = {
        {"same size", 2000, 2000, true},
        {"smaller", 2000, 10, true},
        {"up to its size rounded within an eighth", 2000, 2048, true},
        {"larger", 2000, 2049, false},
        {"tiny, then a little larger", 1, 300, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QvTextBlock_Drop();
        void* first = QvTextBlock_Take(c.first);
        ASSERT_NE(nullptr, first);
        std::memset(first, 'a', c.first);
        std::thread([first] { QvTextBlock_Free(first); }).join();
        void* next = QvTextBlock_Take(c.next);
        ASSERT_NE(nullptr, next);
        std::memset(next, 'b', c.next);
        EXPECT_EQ(c.same, next == first);
        QvTextBlock_Free(next);
    }
    QvTextBlock_Drop();
}

}  // namespace
