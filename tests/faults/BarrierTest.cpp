// BarrierTest.cpp - the address reader's flat functions when each of their
// allocations in turn fails: the barrier answers -2 (-1 is for a reader or
// text that could not be made); the open has none, its discovery's failures
// reach the caller's barrier.
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <set>
#include <string>

#include "QvV4Value/QvExceptions.h"
#include "addressreader/AddrReader.h"
#include "faults/AllocSeam.h"
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
    // allocates: on every platform
    struct Case { const char* name; std::function<int32_t()> call; std::set<int32_t> codes; bool allocates; }
        cases[] = {
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

TEST(Barrier, AddressOpenLetsOutOfMemoryReachTheCaller) {
    qvt::WinePrefix prefix;
    qvt::BuildSampleStore(prefix);
    // A first open fills what the platform layer keeps for the process once
    // asked, which the count of live blocks leaves out.
    ADDRREADER_HANDLE hFirst = nullptr;
    ASSERT_EQ(0, AddrReader_Open(&hFirst));
    ASSERT_EQ(0, AddrReader_Close(hFirst));
    qvt::machine::ForgetFolders();
    const long live = qvt::LiveBlocks();
    long thrown = 0;
    for (long n = 1;; ++n) {
        ADDRREADER_HANDLE hReader = &thrown;  // anything but what the open writes
        int32_t r = 1;
        faults::ArmAllocation(n);
        try {
            r = AddrReader_Open(&hReader);
        } catch (const std::bad_alloc&) {
            ++thrown;
        } catch (const CMemoryException&) {
            ++thrown;
        }
        const bool hit = faults::AllocationFired();
        faults::ArmAllocation(0);
        if (!hit) {
            EXPECT_EQ(0, r);
            EXPECT_EQ(0, AddrReader_Close(hReader));
            break;
        }
        // -1 only while the reader itself is being made, before any discovery.
        if (r != 1) {
            EXPECT_TRUE(r == -1 && hReader == nullptr && thrown == 0) << "allocation " << n << ": " << r;
        }
        qvt::machine::ForgetFolders();
        EXPECT_EQ(live, qvt::LiveBlocks()) << "allocation " << n << ": blocks left behind";
    }
    EXPECT_GT(thrown, 0) << "no failure of the discovery reached the caller";
}

}  // namespace
