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
    for (const char* file : {"C:\\AL-Mail\\Mailbox\\Account1\\trash.box"}) {
        SCOPED_TRACE(file);
        const std::string host = prefix.HostPath(file);
        const std::string bytes = qvt::ReadHostFile(host);
        ASSERT_EQ(0, truncate(host.c_str(), 0));
        ASSERT_EQ(0, truncate(host.c_str(), 2LL << 30));
        const long before = PeakKilobytes();
        const qvt::WalkResult walk = qvt::StoreWalker().Run();
        EXPECT_LT(PeakKilobytes() - before, 64L << 10) << "KB more at the peak";
        for (int32_t code : walk.codes) EXPECT_TRUE(qvt::DocumentedCode(code)) << code;
        qvt::WriteHostFile(host, bytes);
    }
}

}  // namespace
