// The mapping of reader results. (The value record's fills are read back by
// the readers' tests in both kinds, and the damaged stores' walks fill it
// from invalid Shift-JIS.)
#include <gtest/gtest.h>

#include <utility>

#include "QvV4Wrapper/QvV4Utils.h"

namespace {

// What the readers return, as result codes: -1 is out of memory, not a miss.
TEST(ValueSeam, ReaderResultsMap) {
    const std::pair<int32_t, int32_t> cases[] = {
        {-2, QV_E_ACCESS_DENIED}, {-1, QV_E_OUT_OF_MEMORY}, {0, QV_S_OK}, {100, QV_E_UNEXPECTED}};
    for (auto [result, code] : cases) EXPECT_EQ(code, QvV4MapError(result)) << result;
}

}  // namespace
