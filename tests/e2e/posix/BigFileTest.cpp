// An index file of 2 GB (sparse, all zero bytes, no line end) is read in
// pieces, in bounded memory, and the walk ends. (Address files and entry
// lists go through the same line source.)
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include "e2e/StoreWalk.h"
#include "support/SampleStore.h"

namespace {

long PeakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(BigFiles, TwoGigabyteIndexFile) {
    qvt::WinePrefix prefix;
    qvt::BuildSampleStore(prefix);
    const std::string host = prefix.HostPath("C:\\AL-Mail\\Mailbox\\Account1\\trash.box");
    ASSERT_EQ(0, truncate(host.c_str(), 0));
    ASSERT_EQ(0, truncate(host.c_str(), 2LL << 30));
    const long before = PeakKilobytes();
    EXPECT_EQ("", qvt::StoreWalker().Run().Problems());
    EXPECT_LT(PeakKilobytes() - before, 64L << 10) << "KB more at the peak";
}

}  // namespace
