// IniFileTest.cpp - the INI reader of the emulation against damaged files
// and very long lines.
#include "platform/posix/IniFile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

namespace {

TEST(Ini, DamagedFilesEndCleanly) {
    static const char kText[] = "\xFF\xFE[\0P\0]\0\r\0\n\0T\0=\0'\0x\0'\0";
    static const char kNoise[] = "[]=;'\"\r\n\x1A\xFF\xFE\x82 ";
    const std::string text(kText, sizeof kText - 1);
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    char buffer[8];
    for (int round = 0; round < 3000; ++round) {
        std::string damaged = text.substr(0, random() % (text.size() + 1));
        for (char& c : damaged)
            if (random() % 4 == 0) c = kNoise[random() % (sizeof kNoise - 1)];
        const uint32_t n = qvp::posix::ProfileStringFromBytes(damaged.data(), damaged.size(), "P", "T", "d", buffer,
                                                              sizeof buffer);
        ASSERT_LT(n, sizeof buffer);
        ASSERT_EQ(n, std::strlen(buffer));
    }
}

TEST(Ini, TenMegabyteLine) {
    const std::string text = "[P]\r\nT=" + std::string(10u << 20, 'y') + "\r\nU=2\r\n";
    char buffer[512];
    EXPECT_EQ(511u, qvp::posix::ProfileStringFromBytes(text.data(), text.size(), "P", "T", "", buffer, sizeof buffer));
    EXPECT_EQ(1u, qvp::posix::ProfileStringFromBytes(text.data(), text.size(), "P", "U", "", buffer, sizeof buffer));
    EXPECT_STREQ("2", buffer);
}

}  // namespace
