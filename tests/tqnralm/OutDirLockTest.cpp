// OutDirLockTest.cpp - one export at a time in an OUTDIR: while the lock is
// held a second holder is refused (in this process as in another), the
// folder still reads as empty, and once given back it leaves nothing in it.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/HostOs.h"
#include "support/WinePrefix.h"

namespace tqnralm {
namespace {

using Result = os::OutDirLock::Result;

TEST(OutDirLock, OneHolderAtATimeAndNoTrace) {
    qvt::WinePrefix scratch;
    const std::string dir = scratch.Root() + "/out";
    std::filesystem::create_directory(qvt::HostFile(dir));
    std::string error;
    {
        os::OutDirLock first, second;
        ASSERT_EQ(Result::kHeld, first.Acquire(dir, &error)) << error;
        EXPECT_EQ(Result::kBusy, second.Acquire(dir, &error));
        EXPECT_EQ(os::Folder::kEmpty, os::InspectFolder(dir)) << "the lock counts as a file of OUTDIR";
    }
    {
        os::OutDirLock again;
        EXPECT_EQ(Result::kHeld, again.Acquire(dir, &error)) << "not given back with its holder: " << error;
    }
    EXPECT_TRUE(std::filesystem::is_empty(qvt::HostFile(dir)));
    os::OutDirLock missing;
    EXPECT_EQ(Result::kUnavailable, missing.Acquire(dir + "/none", &error));
    EXPECT_TRUE(missing.tried() && !error.empty());
}

}  // namespace
}  // namespace tqnralm
