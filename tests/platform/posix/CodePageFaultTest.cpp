// A code page converter that cannot be opened (no descriptor left, no
// memory) costs the conversion that met it, not code page 932 for the rest
// of the process.
#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/Faults.h"
#include "platform/platform.h"

namespace {

// The converters and the table of known codes live for the process, so the
// scenario runs in a process of its own, where neither is open or known yet.
bool FailedOpenCostsOneConversion() {
    char16_t out[4] = {};
    qvp::faults::ArmIo(1, qvp::faults::IoError::kTooManyFiles);
    if (qvp::MultiByteToWideChar(qvp::kCp932, qvp::kMbErrInvalidChars, "\x88\x9f", 2, out, 4) != 0) return false;
    if (!qvp::faults::IoFired()) return false;
    qvp::faults::ArmIo(0, qvp::faults::IoError::kHardIo);
    for (const char* text : {"\x88\x9f", "\x88\xa0"}) {  // the one that failed, and one never asked for
        if (qvp::MultiByteToWideChar(qvp::kCp932, qvp::kMbErrInvalidChars, text, 2, out, 4) != 1) return false;
        if (out[0] != (text[1] == '\x9f' ? u'\u4e9c' : u'\u5516')) return false;
    }
    return true;
}

TEST(CodePageFaults, AFailedOpenCostsOneConversion) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(FailedOpenCostsOneConversion() ? 0 : 1), testing::ExitedWithCode(0), "");
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
