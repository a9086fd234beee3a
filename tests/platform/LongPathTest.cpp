// LongPathTest.cpp - the absolute, normalised and prefixed form of a path
// that the Windows file functions receive.
#include "platform/LongPath.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Narrow(const std::u16string& s) { return std::string(s.begin(), s.end()); }
std::u16string Widen(const std::string& s) { return std::u16string(s.begin(), s.end()); }

TEST(LongPath, AbsoluteAndNormalised) {
    const struct { const char* name; const char* path; const char* cwd; const char* expected; } rows[] = {
        {"drive path", "C:\\Mail\\x.box", "D:\\w", "C:\\Mail\\x.box"},
        {"forward slashes", "C:/Mail//sub/", "D:\\w", "C:\\Mail\\sub"},
        {"dot and dot-dot", "C:\\a\\.\\b\\..\\c", "D:\\w", "C:\\a\\c"},
        {"dot-dot stops at the drive", "C:\\..\\..\\x", "D:\\w", "C:\\x"},
        {"drive root", "c:\\", "D:\\w", "C:\\"},
        {"relative", "out\\..\\export", "C:\\Users\\me", "C:\\Users\\me\\export"},
        {"relative up", "..\\..\\..\\x", "C:\\Users\\me", "C:\\x"}, {"dot", ".", "C:\\Users\\me\\", "C:\\Users\\me"},
        {"root-relative", "\\x\\y", "D:\\w\\v", "D:\\x\\y"},
        {"drive-relative, current drive", "d:x", "D:\\w", "D:\\w\\x"},
        {"drive-relative, other drive", "E:x", "D:\\w", "E:\\x"},
        {"UNC", "\\\\srv\\share\\a\\..\\b", "C:\\", "\\\\srv\\share\\b"},
        {"UNC with slashes", "//srv/share/a", "C:\\", "\\\\srv\\share\\a"},
        {"dot-dot stops at the share", "\\\\srv\\share\\..\\..\\b", "C:\\", "\\\\srv\\share\\b"},
        {"relative to a UNC folder", "b\\c", "\\\\srv\\share\\a", "\\\\srv\\share\\a\\b\\c"},
        {"root-relative on a share", "\\b", "\\\\srv\\share\\a", "\\\\srv\\share\\b"},
        {"prefixed already", "\\\\?\\C:\\a\\..\\b", "D:\\w", "\\\\?\\C:\\a\\..\\b"},
        {"device path", "\\\\.\\pipe\\x", "D:\\w", "\\\\.\\pipe\\x"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.expected, Narrow(qvp::FullPath(Widen(row.path), Widen(row.cwd)))) << row.name;
    }
}

TEST(LongPath, PrefixFrom248Characters) {
    // "C:\" and a name: the total length is what counts.
    const std::u16string shortest = u"C:\\" + std::u16string(qvp::kLongPathFrom - 4, u'a');
    const std::u16string longest = shortest + u"b";
    EXPECT_EQ(shortest, qvp::FullPath(shortest, u"C:\\"));
    EXPECT_EQ(u"\\\\?\\" + longest, qvp::FullPath(longest, u"C:\\"));
    // Normalised before it is measured and prefixed.
    EXPECT_EQ(u"\\\\?\\" + longest, qvp::FullPath(u"C:/x/../" + longest.substr(3), u"D:\\"));
    EXPECT_EQ(u"\\\\?\\" + longest, qvp::FullPath(longest.substr(3), u"C:\\"));

    const std::u16string share = u"\\\\srv\\share\\" + std::u16string(300, u'\u5C71');
    EXPECT_EQ(u"\\\\?\\UNC\\srv\\share\\" + std::u16string(300, u'\u5C71'), qvp::FullPath(share, u"C:\\"));
}

}  // namespace
