// A code page converter that cannot be opened (no descriptor left, no
// memory) costs the conversion that met it, not code page 932 for the rest
// of the process.
#include <gtest/gtest.h>

#include "platform/Faults.h"
#include "platform/platform.h"

namespace {

TEST(CodePageFaults, AFailedOpenCostsOneConversion) {
    char16_t out[4] = {};
    qvp::faults::ArmIo(1, qvp::faults::IoError::kTooManyFiles);
    EXPECT_EQ(0, qvp::MultiByteToWideChar(qvp::kCp932, qvp::kMbErrInvalidChars, "\x88\x9f", 2, out, 4));
    EXPECT_TRUE(qvp::faults::IoFired());
    qvp::faults::ArmIo(0, qvp::faults::IoError::kHardIo);
    for (const char* text : {"\x88\x9f", "\x88\xa0"}) {  // the one that failed, and one never asked for
        ASSERT_EQ(1, qvp::MultiByteToWideChar(qvp::kCp932, qvp::kMbErrInvalidChars, text, 2, out, 4)) << text;
        EXPECT_EQ(text[1] == '\x9f' ? u'\u4e9c' : u'\u5516', out[0]);
    }
}

// A converter of another code page that cannot be opened fails that
// conversion alone.
TEST(CodePageFaults, AFailedIconvOpenCostsOneConversion) {
    char16_t out[4] = {};
    qvp::faults::ArmIo(1, qvp::faults::IoError::kTooManyFiles);
    EXPECT_EQ(0, qvp::MultiByteToWideChar(1251, 0, "\xCF", 1, out, 4));
    EXPECT_TRUE(qvp::faults::IoFired());
    qvp::faults::ArmIo(0, qvp::faults::IoError::kHardIo);
    ASSERT_EQ(1, qvp::MultiByteToWideChar(1251, 0, "\xCF", 1, out, 4));
    EXPECT_EQ(u'\u041F', out[0]);
}

}  // namespace
