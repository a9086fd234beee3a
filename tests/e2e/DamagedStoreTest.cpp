// Damaged stores walked whole through the exports: every file the library
// reads, in turn, missing or replaced.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <random>

#include "e2e/StoreWalk.h"
#include "support/SampleStore.h"

namespace {

namespace fs = std::filesystem;

// A walk costs a few milliseconds, several times that under a sanitizer: the
// truncation loop takes every second length (every eighth under a
// sanitizer), from an offset that varies from run to run (printed), so that
// runs together cover every length.
#if defined(__SANITIZE_ADDRESS__)
constexpr unsigned kTruncationStride = 8;
#else
constexpr unsigned kTruncationStride = 2;
#endif

// Every file the library reads, cut at every length up to 4 KB and at a
// few lengths beyond; each cut store walked whole.
TEST(DamagedStore, EveryFileCutAtEveryLength) {
    qvt::WinePrefix prefix;
    qvt::BuildSampleStore(prefix);
    const unsigned long offset = static_cast<unsigned long>(qvt::EnvOr("QV_DAMAGE_OFFSET", qvt::RunSeed())) % kTruncationStride;
    std::printf("truncation: every %u lengths from QV_DAMAGE_OFFSET=%lu\n", kTruncationStride, offset);
    size_t walks = 0;
    for (const std::string& file : prefix.StoreFiles()) {
        const std::string bytes = qvt::ReadHostFile(file);
        std::vector<size_t> lengths;
        for (size_t n = offset; n < std::min<size_t>(bytes.size(), 4096); n += kTruncationStride) lengths.push_back(n);
        for (size_t n = 4096; n < bytes.size(); n += bytes.size() / 8 + 1) lengths.push_back(n);
        for (size_t n : lengths) {
            qvt::WriteHostFile(file, bytes.substr(0, n));
            EXPECT_EQ("", qvt::StoreWalker().Run().Problems()) << file << " cut at " << n;
            ++walks;
        }
        qvt::WriteHostFile(file, bytes);
        if (HasFailure()) break;
    }
    std::printf("truncation: %zu damaged stores walked\n", walks);
}

// Seeded byte flips in each file (QV_DAMAGE_SEED gives a seed back).
TEST(DamagedStore, SeededByteFlips) {
    qvt::WinePrefix prefix;
    qvt::BuildSampleStore(prefix);
    const unsigned long seed = static_cast<unsigned long>(qvt::EnvOr("QV_DAMAGE_SEED", qvt::RunSeed()));
    std::printf("byte flips: QV_DAMAGE_SEED=%lu\n", seed);
    std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
    for (const std::string& file : prefix.StoreFiles()) {
        const std::string bytes = qvt::ReadHostFile(file);
        if (bytes.empty()) continue;
        for (int round = 0; round < 16; ++round) {
            std::string damaged = bytes;
            const int flips = 1 + static_cast<int>(random() % 8);
            for (int i = 0; i < flips; ++i) {
                const size_t at = random() % damaged.size();
                // Half the flips write a byte the formats give a meaning to.
                static const char kMeaningful[] = "\r\n\x1A\0=[];\\\x81\xFF:\"<>";
                damaged[at] = random() % 2 ? kMeaningful[random() % (sizeof kMeaningful - 1)]
                                           : static_cast<char>(random());
            }
            qvt::WriteHostFile(file, damaged);
            EXPECT_EQ("", qvt::StoreWalker().Run().Problems()) << file << " round " << round;
        }
        qvt::WriteHostFile(file, bytes);
        if (HasFailure()) break;
    }
}

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
