// BarrierTest.cpp - the address reader's flat functions when an allocation
// inside them fails, for each allocation they make in turn: the barrier
// answers -2 whatever it catches, running out of memory included (-1 is a
// reader or a text that could not be allocated, which these calls make none
// of).
#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>

#include "addressreader/AddrReader.h"
#include "platform/Faults.h"
#include "support/SampleStore.h"

namespace {

namespace faults = qvp::faults;

TEST(Barrier, AddressCallsOutOfMemoryAnswerTheBarriersCode) {
    qvt::WinePrefix prefix;
    qvt::BuildSampleStore(prefix);
    ADDRREADER_HANDLE hReader = nullptr;
    ASSERT_EQ(0, AddrReader_Open(&hReader));
    ADDROBJECT_HANDLE hUser = nullptr, hBook = nullptr;
    ASSERT_EQ(0, AddrReader_GetUser(hReader, 0, &hUser));
    ASSERT_EQ(0, AddrReader_OpenBook(hReader, hUser, 0, &hBook));
    int32_t nIndex = 0;
    struct Case {
        const char* name;
        std::function<int32_t()> call;
        std::set<int32_t> codes;
        bool allocates;  // on every platform
    } cases[] = {
        {"open a book",
         [&] {
             ADDROBJECT_HANDLE h = nullptr;
             const int32_t r = AddrReader_OpenBook(hReader, hUser, 0, &h);
             if (r == 0) AddrReader_CloseBook(hReader, hUser, 0, h);
             return r;
         },
         {0, -2}, true},
        // The key is converted by the platform, on Windows with no block of ours.
        {"find a property", [&] { return AddrReader_FindProperty(hReader, hBook, u"EMAIL;INTERNET", &nIndex); },
         {0, -2}, false},
    };
    for (const Case& c : cases) {
        long failed = 0;
        for (long n = 1;; ++n) {
            faults::ArmAllocation(n);
            const int32_t r = c.call();
            const bool hit = faults::AllocationFired();
            faults::ArmAllocation(0);
            EXPECT_EQ(1u, c.codes.count(r)) << c.name << ": allocation " << n << " failed, answer " << r;
            if (!hit) break;
            ++failed;
        }
        EXPECT_TRUE(!c.allocates || failed > 0) << c.name << " allocates nothing";
    }
    EXPECT_EQ(0, AddrReader_CloseBook(hReader, hUser, 0, hBook));
    EXPECT_EQ(0, AddrReader_Close(hReader));
}

}  // namespace
