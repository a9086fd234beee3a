// ShortcutTest.cpp - the arguments of .lnk files through the shell link calls.
#include "platform/platform.h"
#include "support/WinePrefix.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The shortcut with an IDList and a LinkInfo (the two flags set) in front of its strings.
std::string WithIdListAndLinkInfo(const std::string& link) {
    std::string out = link.substr(0, 0x4C);
    out[0x14] = static_cast<char>(out[0x14] | 0x03);
    out += std::string("\x02\x00\x00\x00", 4);  // IDList: u16 size 2, the closing empty item
    // LinkInfo: u32 size and header size 0x1C, no volume, no paths.
    out += std::string("\x1C\x00\x00\x00\x1C\x00\x00\x00", 8) + std::string(20, '\0');
    return out + link.substr(0x4C);
}

std::string Patch(std::string bytes, size_t offset, const std::string& with) {
    return bytes.replace(offset, with.size(), with);
}

TEST(ShellLink, ReadsArguments) {
    const std::string quoted = "\"C:\\メール\\Taro\"";
    const std::string unicode = qvt::MakeShortcut("C:\\Mail\\Taro", true);
    // arguments: CP932
    const struct { const char* name; std::string bytes; bool ok; std::string arguments; } cases[] = {
        {"unicode, Wine's NUL", unicode, true, "C:\\Mail\\Taro"},
        {"unicode without NUL", qvt::MakeShortcut("C:\\Mail\\Taro", true, false), true, "C:\\Mail\\Taro"},
        {"quoted Japanese, unicode", qvt::MakeShortcut(quoted, true), true, qvt::Cp932(quoted)},
        {"quoted Japanese, ansi", qvt::MakeShortcut(quoted, false), true, qvt::Cp932(quoted)},
        {"no CP932 form", qvt::MakeShortcut("a\u301Cb", true), true, "a?b"},
        {"IDList and LinkInfo skipped", WithIdListAndLinkInfo(unicode), true, "C:\\Mail\\Taro"},
        {"LinkInfo smaller than its size field",
         Patch(WithIdListAndLinkInfo(unicode), 0x4C + 4, std::string("\x03\x00", 2)), false, ""},
        {"no HasArguments flag", Patch(unicode, 0x14, std::string("\x98\x00", 2)), true, ""},
        {"header size", Patch(unicode, 0, std::string("\x4D\x00", 2)), false, ""},
        {"CLSID", Patch(unicode, 4, "\x02"), false, ""},
        {"extra data is not read", unicode.substr(0, unicode.size() - 4), true, "C:\\Mail\\Taro"},
        {"cut inside the arguments", unicode.substr(0, unicode.size() - 10), false, ""},
        {"string count past the end", Patch(unicode, 0x4C, std::string("\xFF\x7F", 2)), false, ""},
    };
    qvt::WinePrefix prefix;
    ASSERT_EQ(qvp::kSOk, qvp::CoInitialize());
    qvp::ShellLink* link = qvp::ShellLinkCreate();
    ASSERT_NE(nullptr, link);
    char buffer[520];
    int number = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = "C:\\Links\\case" + std::to_string(++number) + ".lnk";
        prefix.WriteFile(path, c.bytes);
        EXPECT_EQ(c.ok, qvp::ShellLinkLoad(link, path.c_str()));
        if (c.ok) {
            ASSERT_TRUE(qvp::ShellLinkGetArguments(link, buffer, sizeof buffer));
            EXPECT_EQ(c.arguments, std::string(buffer));
        }
    }
    prefix.WriteFile("C:\\Links\\Broken.lnk", std::string("L\0\0\0", 4));
    ASSERT_TRUE(qvp::ShellLinkLoad(link, "C:\\LINKS\\CASE1.LNK"));
    EXPECT_FALSE(qvp::ShellLinkLoad(link, "C:\\Links\\Broken.lnk"));
    EXPECT_FALSE(qvp::ShellLinkLoad(link, "C:\\Links\\Missing.lnk"));
    ASSERT_TRUE(qvp::ShellLinkGetArguments(link, buffer, sizeof buffer));
    EXPECT_STREQ("C:\\Mail\\Taro", buffer) << "a failed load keeps what was loaded";
    qvp::ShellLinkRelease(link);
    qvp::CoUninitialize();
}

TEST(ShellLink, ComIsCountedPerThread) {
    EXPECT_EQ(nullptr, qvp::ShellLinkCreate()) << "no COM on this thread yet";
    EXPECT_EQ(qvp::kSOk, qvp::CoInitialize());
    EXPECT_EQ(qvp::kSFalse, qvp::CoInitialize());
    qvp::CoUninitialize();
    qvp::ShellLink* link = qvp::ShellLinkCreate();
    EXPECT_NE(nullptr, link);
    qvp::ShellLinkRelease(link);
    qvp::CoUninitialize();
}

}  // namespace
