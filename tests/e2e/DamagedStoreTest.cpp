// Damaged stores walked whole through the exports: every file the library
// reads, in turn, missing or replaced.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "e2e/StoreWalk.h"
#include "support/SampleStore.h"

namespace {

namespace fs = std::filesystem;

// A walk costs a few milliseconds, several times that under a sanitizer: the
// truncation loop takes every second length (every eighth under a sanitizer)
// from an offset that varies from run to run (printed), so that runs together
// cover every length.
#if defined(__SANITIZE_ADDRESS__)
constexpr unsigned kTruncationStride = 8;
#else
constexpr unsigned kTruncationStride = 2;
#endif

// The sample store walked whole with each file in turn replaced by each of
// its damaged forms; returns the walks made.
size_t WalkDamaged(const std::function<std::vector<std::string>(const std::string&)>& damage) {
    qvt::WinePrefix prefix;
    qvt::BuildSampleStore(prefix);
    size_t walks = 0;
    for (const std::string& file : prefix.StoreFiles()) {
        const std::string bytes = qvt::ReadHostFile(file);
        for (const std::string& damaged : damage(bytes)) {
            qvt::WriteHostFile(file, damaged);
            EXPECT_EQ("", qvt::StoreWalker().Run().Problems()) << file << " as " << testing::PrintToString(damaged);
            ++walks;
        }
        qvt::WriteHostFile(file, bytes);
        if (::testing::Test::HasFailure()) break;
    }
    return walks;
}

// Every file cut at every length up to 4 KB and at a few lengths beyond.
TEST(DamagedStore, EveryFileCutAtEveryLength) {
    const size_t offset = static_cast<size_t>(qvt::EnvOr("QV_DAMAGE_OFFSET", qvt::RunSeed())) % kTruncationStride;
    std::printf("truncation: every %u lengths from QV_DAMAGE_OFFSET=%zu\n", kTruncationStride, offset);
    const size_t walks = WalkDamaged([offset](const std::string& bytes) {
        std::vector<std::string> cut;
        for (size_t n = offset; n < std::min<size_t>(bytes.size(), 4096); n += kTruncationStride)
            cut.push_back(bytes.substr(0, n));
        for (size_t n = 4096; n < bytes.size(); n += bytes.size() / 8 + 1) cut.push_back(bytes.substr(0, n));
        return cut;
    });
    std::printf("truncation: %zu damaged stores walked\n", walks);
}

// Seeded byte flips in each file (QV_DAMAGE_SEED gives a seed back); half
// the flips write a byte the formats give a meaning to.
TEST(DamagedStore, SeededByteFlips) {
    const unsigned long seed = static_cast<unsigned long>(qvt::EnvOr("QV_DAMAGE_SEED", qvt::RunSeed()));
    std::printf("byte flips: QV_DAMAGE_SEED=%lu\n", seed);
    std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
    WalkDamaged([&random](const std::string& bytes) {
        static const char kMeaningful[] = "\r\n\x1A\0=[];\\\x81\xFF:\"<>";
        std::vector<std::string> flipped(bytes.empty() ? 0 : 16, bytes);
        for (std::string& damaged : flipped) {
            for (int i = 1 + static_cast<int>(random() % 8); i > 0; --i) {
                const size_t at = random() % damaged.size();
                damaged[at] = random() % 2 ? kMeaningful[random() % (sizeof kMeaningful - 1)]
                                           : static_cast<char>(random());
            }
        }
        return flipped;
    });
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
