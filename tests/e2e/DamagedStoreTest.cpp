// Damaged stores walked whole through the exports: every file the library
// reads, in turn, missing or replaced.
#include <gtest/gtest.h>

#include <filesystem>

#include "e2e/StoreWalk.h"
#include "support/SampleStore.h"

namespace {

namespace fs = std::filesystem;

// A folder where a file was expected reads as the file missing, or, where
// the file is only looked for, as one with nothing in it; on every machine
// alike (Windows refuses to open a folder as a file).
TEST(DamagedStore, FolderWhereAFileWasExpected) {
    qvt::WinePrefix prefix;
    qvt::BuildSampleStore(prefix);
    const std::vector<std::string> files = prefix.StoreFiles();
    ASSERT_GE(files.size(), 20u);
    for (const std::string& file : files) {
        if (file.size() > 4 && file.compare(file.size() - 4, 4, ".box") == 0) continue;  // may be either
        SCOPED_TRACE(file);
        const std::string bytes = qvt::ReadHostFile(file);
        fs::remove(qvt::HostFile(file));
        const qvt::WalkResult missing = qvt::StoreWalker().Run();
        qvt::WriteHostFile(file, "");
        const qvt::WalkResult empty = qvt::StoreWalker().Run();
        fs::remove(qvt::HostFile(file));
        fs::create_directory(qvt::HostFile(file));
        const qvt::WalkResult folder = qvt::StoreWalker().Run();
        fs::remove(qvt::HostFile(file));
        qvt::WriteHostFile(file, bytes);
        EXPECT_TRUE(folder.lines == missing.lines || folder.lines == empty.lines);
    }
}

}  // namespace
