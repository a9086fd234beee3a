// RegistryTest.cpp - the parser of Wine's registry files. (A 64-bit
// prefix's 32-bit view is the win64 sample store's, read by the export and
// copied_drive tests; CopiedDriveTest holds the view's rules.)
#include "platform/posix/RegistryFile.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using qvp::posix::RegistryFile;

const std::string kHead = "WINE REGISTRY Version 2\n;; All keys relative to \\\\Machine\n\n#arch=win32\n\n";

TEST(RegistryFile, ParsesWineText) {
    // body: after kHead; value: folded
    const struct { const char* name; std::string body; std::u16string key, value; bool found; std::u16string text; }
        cases[] = {
        {"str(2): and a time stamp", "[Software\\\\A] 1\n\"Y\"=str(2):\"%y%\"\n", u"SOFTWARE\\A", u"Y", true, u"%y%"},
        {"multi-string keeps its NULs", "[A]\n\"M\"=str(7):\"a\\0b\\0\"\n", u"A", u"M", true, std::u16string(u"a\0b\0", 4)},
        {"backslash and quote", "[A]\n\"N\"=\"C:\\\\x\\\"y\\\"\"\n", u"A", u"N", true, u"C:\\x\"y\""},
        {"C escapes, others stand for themselves", "[A]\n\"N\"=\"\\t\\n\\r\\a\\e\\[\\q\"\n", u"A", u"N", true,
         u"\t\n\r\a\x1B[q"},
        {"hex escape up to 4 digits, octal up to 3", "[A]\n\"N\"=\"\\x30421\\x41z\\1012\\7x\"\n", u"A", u"N", true,
         u"\u30421AzA2\ax"},
        {"raw UTF-8", "[A]\n\"N\"=\"\xE3\x81\x82\"\n", u"A", u"N", true, u"\u3042"},
        {"escapes in key and value names", "[A\\]B\\\\C]\n\"\\x3042\"=\"v\"\n", u"A]B\\C", u"\u3042", true, u"v"},
        {"names in any case", "[software\\\\crear]\n\"installpath\"=\"v\"\n", u"SOFTWARE\\CREAR", u"INSTALLPATH", true, u"v"},
        {"first value wins", "[A]\n\"N\"=\"1\"\n\"n\"=\"2\"\n", u"A", u"N", true, u"1"},
        {"first key block wins", "[A]\n\"N\"=\"1\"\n[a]\n\"N\"=\"2\"\n\"O\"=\"3\"\n", u"A", u"O", true, u"3"},
        {"default value, blanks around =", "[A]\n@ =  \"d\"\n", u"A", u"", true, u"d"},
        {"CR LF, comment and option lines", "[A] 1\r\n#time=1\r\n;\"N\"=\"x\"\r\n\"N\"=\"v\"\r\n", u"A", u"N", true, u"v"},
        {"string type written in hex", "[A]\n\"N\"=hex(2):41,00,42,00,\\\n  00,00\n", u"A", u"N", true, u"AB"},
        {"line after a continued hex list", "[A]\n\"H\"=hex:01,\\\n  7e\n\"N\"=\"v\"\n", u"A", u"N", true, u"v"},
        {"unterminated string is passed over", "[A]\n\"N\"=\"v\n\"N\"=\"w\"\n", u"A", u"N", true, u"w"},
        {"value before any key is ignored", "\"N\"=\"v\"\n[A]\n", u"A", u"N", false, u""},
        {"unknown data type", "[A]\n\"N\"=wide:\"v\"\n", u"A", u"N", false, u""},
        {"unterminated key line", "[A\n\"N\"=\"v\"\n", u"A", u"N", false, u""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        RegistryFile file;
        const std::string text = kHead + c.body;
        ASSERT_TRUE(file.Parse(text.data(), text.size()));
        const RegistryFile::Value* value = file.Find(c.key, c.value);
        ASSERT_EQ(c.found, value != nullptr);
        if (value) { EXPECT_EQ(std::make_pair(true, c.text), std::make_pair(value->isText, value->text)); }
    }
}

TEST(RegistryFile, FirstLineDecides) {
    const std::pair<std::string, bool> cases[] = {{"WINE REGISTRY Version 2\r\n", true},
                                                  {"WINE REGISTRY Version 1\n", false},
                                                  {"\xEF\xBB\xBFWINE REGISTRY Version 2\n", false}};
    for (const auto& c : cases) {
        RegistryFile file;
        EXPECT_EQ(c.second, file.Parse(c.first.data(), c.first.size())) << c.first;
    }
}

// The walk is linear: ctest's time limit catches a quadratic one.
TEST(RegistryFile, LargeFile) {
    std::string text = kHead;
    for (int i = 0; i < 200000; ++i) text += "[K" + std::to_string(i) + "] 1\n\"N\"=\"v\"\n";
    RegistryFile file;
    ASSERT_TRUE(file.Parse(text.data(), text.size()));
    EXPECT_EQ(200000u, file.KeyCount());
    EXPECT_NE(nullptr, file.Find(u"K199999", u"N"));
}

}  // namespace
