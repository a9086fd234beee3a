// ShellLinkFileTest.cpp - the .lnk parser of the emulation against cut and
// damaged files.
#include "platform/posix/ShellLinkFile.h"
#include "support/WinePrefix.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using qvp::posix::ShellLinkFile;

// A shortcut with an IDList and a LinkInfo in front of its strings, which
// MakeShortcut does not write: the header's flags are patched and the two
// blocks inserted after the header.
std::string WithIdListAndLinkInfo(const std::string& link) {
    std::string out = link.substr(0, 0x4C);
    out[0x14] = static_cast<char>(out[0x14] | 0x03);
    out += std::string("\x02\x00\x00\x00", 4);  // IDList: u16 size 2, the closing empty item
    // LinkInfo: u32 size and header size 0x1C, no volume, no paths.
    out += std::string("\x1C\x00\x00\x00\x1C\x00\x00\x00", 8) + std::string(20, '\0');
    return out + link.substr(0x4C);
}

// Cut anywhere before the end of its last string, a shortcut fails; the
// four bytes of the closing extra-data block are not read.
TEST(ShellLinkFile, TruncatedAtEveryLengthFails) {
    for (bool unicode : {true, false}) {
        const std::string full = WithIdListAndLinkInfo(qvt::MakeShortcut("\"C:\\メール\"", unicode));
        for (size_t n = 0; n < full.size(); ++n) {
            const std::string cut = full.substr(0, n);  // its own allocation: ASan sees overreads
            ShellLinkFile file;
            EXPECT_EQ(n >= full.size() - 4, file.Parse(cut.data(), cut.size())) << n;
        }
    }
}

TEST(ShellLinkFile, RandomDamageEndsCleanly) {
    const std::string full = WithIdListAndLinkInfo(qvt::MakeShortcut("C:\\Mail", true));
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 5000; ++round) {
        std::string damaged = full;
        damaged[0x14 + random() % (damaged.size() - 0x14)] = static_cast<char>(random());
        ShellLinkFile file;
        file.Parse(damaged.data(), damaged.size());
    }
}

}  // namespace
