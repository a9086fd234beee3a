// The kept blocks: a block given back serves only a text that fits, is
// handed out once until given back again, and what is kept stays bounded.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "platform/KeptBlocks.h"

namespace {

long g_live = 0;  // blocks on the heap
void* Allocate(size_t n) { return ++g_live, std::malloc(n); }
void Release(void* p) { --g_live, std::free(p); }

// Each block is written whole, so that a block too small shows under ASan.
void* Filled(qvp::KeptBlocks& kept, size_t n) {
    void* p = kept.Take(n);
    if (p != nullptr) std::memset(p, 'x', n);
    return p;
}

// Four blocks of 2 KB rooms at most, 4 KB in all. Texts taken together are
// given back from another thread; then how many blocks stay on the heap, and
// whether the next text is served without a new one.
TEST(KeptBlocks, ServeTextsThatFitWithinBounds) {
    using Limits = qvp::KeptBlocks::Limits;
    constexpr Limits kEighths = {4, 4096, 256, 2048, 8}, kPowers = {4, 4096, 64, 2048, 1};
    const struct { const char* name; Limits limits; std::vector<size_t> given; size_t next; long kept; bool served; }
        cases[] = {
            {"up to its size rounded within an eighth", kEighths, {1500}, 1536, 1, true},
            {"larger", kEighths, {1500}, 1537, 1, false},
            {"tiny, then a little larger", kEighths, {1}, 300, 1, false},
            {"too large to keep", kEighths, {3000}, 3000, 0, false},
            {"up to its power of two", kPowers, {1100}, 2048, 1, true},
            {"past its power of two", kPowers, {1000}, 1025, 1, false},
            {"bound by count", kEighths, {300, 300, 300, 300, 300, 300}, 300, 4, true},
            {"bound by bytes", kEighths, {2000, 2000, 2000}, 2000, 2, true},
            {"a larger block puts out the smallest", kEighths, {300, 300, 300, 300, 2000}, 2000, 4, true},
            {"a smaller one does not", kEighths, {2000, 2000, 300}, 300, 2, true},
        };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        qvp::KeptBlocks kept(c.limits, Allocate, Release);
        std::vector<void*> taken;
        for (size_t n : c.given) taken.push_back(Filled(kept, n));
        std::thread([&] { for (void* p : taken) kept.Give(p); }).join();
        EXPECT_EQ(c.kept, g_live);
        void* next = Filled(kept, c.next);
        EXPECT_EQ(c.served, g_live == c.kept);
        void* again = Filled(kept, c.next);  // the same block is not handed out twice
        EXPECT_NE(next, again);
        for (void* p : {next, again}) kept.Give(p);
        kept.Drop();
        EXPECT_EQ(0, g_live);
    }
}

}  // namespace
