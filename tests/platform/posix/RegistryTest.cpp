// RegistryTest.cpp - Wine's registry files: the parser on its own, then the
// RegOpen/RegQueryString calls over a prefix built by WinePrefix.
#include "platform/platform.h"
#include "platform/posix/RegistryFile.h"
#include "support/WinePrefix.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using qvp::posix::RegistryFile;

const std::string kHead = "WINE REGISTRY Version 2\n;; All keys relative to \\\\Machine\n\n#arch=win32\n\n";

struct ParseCase {
    const char* name;
    std::string body;  // after kHead
    std::u16string key;
    std::u16string value;  // folded
    bool found;
    std::u16string text;
};

const ParseCase kParseCases[] = {
    {"plain string", "[Software\\\\A] 1\n\"N\"=\"v\"\n", u"SOFTWARE\\A", u"N", true, u"v"},
    {"str: and str(2):", "[A]\n\"X\"=str:\"x\"\n\"Y\"=str(2):\"%y%\"\n", u"A", u"Y", true, u"%y%"},
    {"multi-string keeps its NULs", "[A]\n\"M\"=str(7):\"a\\0b\\0\"\n", u"A", u"M", true, std::u16string(u"a\0b\0", 4)},
    {"backslash and quote", "[A]\n\"N\"=\"C:\\\\x\\\"y\\\"\"\n", u"A", u"N", true, u"C:\\x\"y\""},
    {"C escapes", "[A]\n\"N\"=\"\\t\\n\\r\\a\\e\"\n", u"A", u"N", true, u"\t\n\r\a\x1B"},
    {"hex escape up to 4 digits", "[A]\n\"N\"=\"\\x3042\\x30421\\x41z\"\n", u"A", u"N", true, u"\u3042\u30421Az"},
    {"octal escape up to 3 digits", "[A]\n\"N\"=\"\\101\\1012\\7x\"\n", u"A", u"N", true, u"AA2\ax"},
    {"other escapes stand for themselves", "[A]\n\"N\"=\"\\[\\]\\q\"\n", u"A", u"N", true, u"[]q"},
    {"raw UTF-8", "[A]\n\"N\"=\"\xE3\x81\x82\"\n", u"A", u"N", true, u"\u3042"},
    {"escaped bracket in a key", "[A\\]B\\\\C]\n\"N\"=\"v\"\n", u"A]B\\C", u"N", true, u"v"},
    {"escaped characters in a value name", "[A]\n\"\\x3042\\\"\"=\"v\"\n", u"A", u"\u3042\"", true, u"v"},
    {"names in any case", "[software\\\\crear]\n\"installpath\"=\"v\"\n", u"SOFTWARE\\CREAR", u"INSTALLPATH", true, u"v"},
    {"first value wins", "[A]\n\"N\"=\"1\"\n\"n\"=\"2\"\n", u"A", u"N", true, u"1"},
    {"first key block wins", "[A]\n\"N\"=\"1\"\n[a]\n\"N\"=\"2\"\n\"O\"=\"3\"\n", u"A", u"O", true, u"3"},
    {"default value", "[A]\n@=\"d\"\n", u"A", u"", true, u"d"},
    {"blanks around =", "[A]\n\"N\" =  \"v\"\n", u"A", u"N", true, u"v"},
    {"CR LF line ends", "[A] 1\r\n#time=1\r\n\"N\"=\"v\"\r\n", u"A", u"N", true, u"v"},
    {"string type written in hex", "[A]\n\"N\"=hex(2):41,00,42,00,\\\n  00,00\n", u"A", u"N", true, u"AB"},
    {"unterminated string is passed over", "[A]\n\"N\"=\"v\n\"N\"=\"w\"\n", u"A", u"N", true, u"w"},
    {"value before any key is ignored", "\"N\"=\"v\"\n[A]\n", u"A", u"N", false, u""},
    {"comment and option lines", "[A]\n;\"N\"=\"x\"\n#\"N\"=\"y\"\n\"N\"=\"v\"\n", u"A", u"N", true, u"v"},
    {"unknown data type", "[A]\n\"N\"=wide:\"v\"\n", u"A", u"N", false, u""},
    {"unterminated key line", "[A\n\"N\"=\"v\"\n", u"A", u"N", false, u""},
};

TEST(RegistryFile, ParsesWineText) {
    for (const ParseCase& c : kParseCases) {
        SCOPED_TRACE(c.name);
        RegistryFile file;
        const std::string text = kHead + c.body;
        ASSERT_TRUE(file.Parse(text.data(), text.size()));
        const RegistryFile::Value* value = file.Find(c.key, c.value);
        ASSERT_EQ(c.found, value != nullptr);
        if (value) {
            EXPECT_TRUE(value->isText);
            EXPECT_EQ(c.text, value->text);
        }
    }
}

TEST(RegistryFile, BinaryTypesKeepTheirBytes) {
    const std::string text = kHead + "[A]\n\"D\"=dword:0000002a\n\"H\"=hex:01,ff,\\\n  7e\n\"Z\"=\"z\"\n";
    RegistryFile file;
    ASSERT_TRUE(file.Parse(text.data(), text.size()));
    const RegistryFile::Value* d = file.Find(u"A", u"D");
    const RegistryFile::Value* h = file.Find(u"A", u"H");
    ASSERT_TRUE(d && h);
    EXPECT_EQ(std::string("\x2a\0\0\0", 4), d->bytes);
    EXPECT_EQ(std::string("\x01\xff\x7e"), h->bytes);
    EXPECT_TRUE(file.Find(u"A", u"Z")) << "the line after a continued hex list";
}

TEST(RegistryFile, FirstLineDecides) {
    const struct {
        const char* name;
        std::string text;
        bool ok;
    } cases[] = {
        {"exact", "WINE REGISTRY Version 2\n", true},
        {"with CR", "WINE REGISTRY Version 2\r\n", true},
        {"only the line", "WINE REGISTRY Version 2", true},
        {"version 1", "WINE REGISTRY Version 1\n", false},
        {"byte order mark", "\xEF\xBB\xBFWINE REGISTRY Version 2\n", false},
        {"REGEDIT4", "REGEDIT4\n", false},
        {"empty", "", false},
    };
    for (const auto& c : cases) {
        RegistryFile file;
        EXPECT_EQ(c.ok, file.Parse(c.text.data(), c.text.size())) << c.name;
    }
}

TEST(RegistryFile, ParentsAreImpliedAndArchIsRead) {
    const std::string text = "WINE REGISTRY Version 2\n#arch=win64\n[Software\\\\Wow6432Node\\\\CREAR\\\\AL-Mail]\n";
    RegistryFile file;
    ASSERT_TRUE(file.Parse(text.data(), text.size()));
    EXPECT_TRUE(file.Win64());
    EXPECT_TRUE(file.HasKey(u"SOFTWARE"));
    EXPECT_TRUE(file.HasKey(u"SOFTWARE\\WOW6432NODE\\CREAR"));
    EXPECT_TRUE(file.HasKey(u"SOFTWARE\\WOW6432NODE\\CREAR\\AL-MAIL"));
    EXPECT_FALSE(file.HasKey(u"SOFT"));
    EXPECT_FALSE(file.HasKey(u"SOFTWARE\\WOW6432NODE\\CREAR\\AL-MAIL\\X"));
}

// Every prefix of a file, and seeded random damage: the parser ends cleanly.
TEST(RegistryFile, TruncationAndDamage) {
    const std::string text = kHead +
                             "[Software\\\\CREAR\\\\AL-Mail] 1700000000\n#time=1d9\n"
                             "\"InstallPath\"=\"C:\\\\Program Files\\\\\\x30e1\\x30fc\\x30eb\\\\AlMail.exe\"\n"
                             "\"Blob\"=hex(7):41,00,00,00,\\\n  00,00\n@=dword:00000001\n";
    for (size_t n = 0; n <= text.size(); ++n) {
        RegistryFile file;
        file.Parse(text.data(), n);
    }
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 2000; ++round) {
        std::string damaged = text;
        for (int k = 0; k < 4; ++k) damaged[random() % damaged.size()] = static_cast<char>(random());
        RegistryFile file;
        file.Parse(damaged.data(), damaged.size());
    }
}

// ---------------------------------------------------------------- API ----

std::string Query(qvp::Hive hive, const char* key, const char* value, uint32_t size = 520, bool* ok = nullptr) {
    qvp::RegKey* handle = nullptr;
    std::string result = "<no key>";
    if (qvp::RegOpen(hive, key, &handle)) {
        std::string buffer(size, '\x7f');
        uint32_t bytes = size;
        const bool got = qvp::RegQueryString(handle, value, &buffer[0], &bytes);
        if (ok) *ok = got;
        result = got ? buffer.substr(0, bytes) : "<no value>";
        qvp::RegCloseKey(handle);
    }
    return result;
}

TEST(Registry, ReadsValuesAsAnsi) {
    qvt::WinePrefix prefix;
    prefix.SetHklm("Software\\CREAR\\AL-Mail", "InstallPath", "C:\\Program Files\\メール\\AlMail.exe");
    prefix.SetHkcu("Software\\CREAR\\AL-Mail", "MailboxPath", "C:\\Users\\波〜");
    const std::string install = qvt::Cp932("C:\\Program Files\\メール\\AlMail.exe") + '\0';
    EXPECT_EQ(install, Query(qvp::Hive::LocalMachine, "Software\\CREAR\\AL-Mail", "InstallPath"));
    EXPECT_EQ(install, Query(qvp::Hive::LocalMachine, "SOFTWARE\\crear\\al-mail\\", "installpath"));
    EXPECT_EQ(qvt::Cp932("C:\\Users\\波") + "?" + '\0',
              Query(qvp::Hive::CurrentUser, "Software\\CREAR\\AL-Mail", "MailboxPath"))
        << "U+301C has no CP932 form";
    EXPECT_EQ("<no value>", Query(qvp::Hive::CurrentUser, "Software\\CREAR\\AL-Mail", "InstallPath"));
    EXPECT_EQ("<no key>", Query(qvp::Hive::CurrentUser, "Software\\CREAR\\Other", "MailboxPath"));
    EXPECT_NE("<no key>", Query(qvp::Hive::LocalMachine, "Software\\CREAR", "x")) << "implied parent";
}

TEST(Registry, ValueMustFitWithItsTerminator) {
    qvt::WinePrefix prefix;
    prefix.SetHklm("Software\\A", "N", "abcd");
    bool ok = false;
    EXPECT_EQ(std::string("abcd", 5), Query(qvp::Hive::LocalMachine, "Software\\A", "N", 5, &ok));
    EXPECT_TRUE(ok);
    Query(qvp::Hive::LocalMachine, "Software\\A", "N", 4, &ok);
    EXPECT_FALSE(ok);
}

TEST(Registry, Win64PrefixLooksUnderWow6432NodeFirst) {
    qvt::WinePrefix prefix;
    prefix.SetWin64(true);
    prefix.SetHklm("Software\\CREAR\\AL-Mail", "InstallPath", "C:\\32");
    prefix.SetHkcu("Software\\CREAR\\AL-Mail", "MailboxPath", "C:\\M");
    EXPECT_EQ(std::string("C:\\32", 6), Query(qvp::Hive::LocalMachine, "Software\\CREAR\\AL-Mail", "InstallPath"));
    EXPECT_EQ(std::string("C:\\M", 5), Query(qvp::Hive::CurrentUser, "Software\\CREAR\\AL-Mail", "MailboxPath"))
        << "HKCU is not redirected";

    const std::string both = "WINE REGISTRY Version 2\n#arch=win64\n"
                             "[Software\\\\CREAR\\\\AL-Mail]\n\"InstallPath\"=\"plain\"\n\"Only\"=\"plain\"\n"
                             "[Software\\\\Wow6432Node\\\\CREAR\\\\AL-Mail]\n\"InstallPath\"=\"wow\"\n";
    prefix.SetRawRegistry(true, both);
    EXPECT_EQ(std::string("wow", 4), Query(qvp::Hive::LocalMachine, "Software\\CREAR\\AL-Mail", "InstallPath"));
    EXPECT_EQ("<no value>", Query(qvp::Hive::LocalMachine, "Software\\CREAR\\AL-Mail", "Only"))
        << "Wine opens the 32-bit view's key alone";
}

TEST(Registry, BrokenOrMissingFilesHoldNothing) {
    qvt::WinePrefix prefix;
    prefix.SetRawRegistry(true, "REGEDIT4\n[Software\\\\A]\n\"N\"=\"v\"\n");
    EXPECT_EQ("<no key>", Query(qvp::Hive::LocalMachine, "Software\\A", "N"));
    prefix.Remove("Z:" + prefix.Root() + "/user.reg");
    EXPECT_EQ("<no key>", Query(qvp::Hive::CurrentUser, "Software", "N"));
}

}  // namespace

namespace {

// A large file parses whole and keeps every key (the walk is linear; ctest's
// time limit catches a quadratic one).
TEST(RegistryFile, LargeFile) {
    std::string text = kHead;
    for (int i = 0; i < 200000; ++i)
        text += "[Software\\\\K" + std::to_string(i) + "] 1\n\"N\"=\"v" + std::to_string(i) + "\"\n";
    text += "[Long]\n\"N\"=\"" + std::string(10u << 20, 'x') + "\"\n";
    RegistryFile file;
    ASSERT_TRUE(file.Parse(text.data(), text.size()));
    EXPECT_EQ(200001u, file.KeyCount());
    const RegistryFile::Value* value = file.Find(u"SOFTWARE\\K199999", u"N");
    ASSERT_NE(nullptr, value);
    EXPECT_EQ(u"v199999", value->text);
    value = file.Find(u"LONG", u"N");
    ASSERT_NE(nullptr, value);
    EXPECT_EQ(10u << 20, value->text.size());
}

}  // namespace
