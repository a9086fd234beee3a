// PrefixPathsTest.cpp - Windows paths mapped into the Wine prefix: drive
// links, any case, Z:, and the host's temporary directory.
#include "platform/platform.h"
#include "support/WinePrefix.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

TEST(Paths, MapThroughThePrefix) {
    qvt::WinePrefix prefix;
    prefix.WriteFile("C:\\Mail\\Entry.ini", "x");
    prefix.WriteFile("C:\\メール\\受信箱.box", "x");
    prefix.WriteFile("C:\\Mail\\ＡＢＣ.txt", "x");
    prefix.MakeDir("C:\\Mail\\Sub");
    const struct { const char* name; std::string path; bool exists; } cases[] = {  // path: UTF-8, given in CP932
        {"any case", "c:\\MAIL\\entry.INI", true}, {"slashes", "C:/Mail/Entry.ini", true},
        {"doubled backslashes", "C:\\\\Mail\\\\Entry.ini", true},
        {"dot and dot-dot", "C:\\Mail\\.\\Sub\\..\\Entry.ini", true},
        {"dot-dot stops at the root", "C:\\..\\..\\Mail\\Entry.ini", true},
        {"a directory", "C:\\mail\\sub\\", true},
        {"Japanese names", "C:\\メール\\受信箱.box", true},
        {"full-width letters in any case", "C:\\mail\\ａｂｃ.TXT", true},
        {"missing file", "C:\\Mail\\Entry.lst", false},
        {"drive without a link", "Q:\\Mail\\Entry.ini", false},
        {"a file used as a folder", "C:\\Mail\\Entry.ini\\x", false},
        {"the prefix through Z:", "Z:" + prefix.Root() + "/drive_c/Mail/Entry.ini", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.exists ? 0 : -1, qvp::Access(qvt::Cp932(c.path).c_str()));
    }
    EXPECT_EQ(-1, qvp::Access("C:\\Mail\\\x82")) << "invalid CP932 names nothing";

    fs::remove(fs::path(prefix.Root()) / "dosdevices" / "c:");
    EXPECT_EQ(0, qvp::Access("C:\\Mail\\Entry.ini")) << "c: falls back to drive_c";
}

// Names that differ in case only can be made on the host, not through Wine;
// Wine lists them all, in byte order among themselves.
TEST(Paths, NamesThatDifferInCaseOnly) {
    qvt::WinePrefix prefix;
    for (const char* name : {"x.box", "X.BOX", "x.BOX", "X.box"}) prefix.WriteFile(std::string("C:\\Mail\\") + name, "x");
    std::vector<std::string> names;
    qvp::FindData data;
    qvp::FindHandle* handle = qvp::FindFirst("C:\\Mail\\*.box", &data);
    for (bool more = handle != nullptr; more; more = qvp::FindNext(handle, &data)) names.push_back(data.name);
    qvp::FindClose(handle);
    EXPECT_EQ((std::vector<std::string>{"X.BOX", "X.box", "x.BOX", "x.box"}), names);
}

// A folder's files open by the spelling of the folder they were last found
// through; another prefix, where that spelling names another folder, reads
// its own file, and so does the first once it is back.
TEST(Paths, TheSameFolderInAnotherPrefix) {
    const auto read = [](const char* path) {
        qvp::File* file = qvp::FileOpen(path, "rb");
        if (file == nullptr) return std::string("(none)");
        char buffer[8] = {};
        const std::string text(buffer, qvp::FileRead(buffer, sizeof buffer, file));
        qvp::FileClose(file);
        return text;
    };
    qvt::WinePrefix first;
    first.WriteFile("C:\\Box\\a.alm", "a");
    first.WriteFile("C:\\Box\\b.alm", "first");
    EXPECT_EQ("a", read("C:\\Box\\a.alm"));
    EXPECT_EQ("first", read("C:\\Box\\b.alm"));
    {
        qvt::WinePrefix second;
        second.WriteFile("C:\\Box\\b.alm", "second");
        EXPECT_EQ("second", read("C:\\Box\\b.alm"));
    }
    EXPECT_EQ("first", read("C:\\Box\\b.alm"));
}

TEST(Paths, TempPathFallsBackToTheHostTmp) {
    char buffer[64];
    const struct { const char* tmpdir; const char* expected; } cases[] = {
        {"/var/tmp/", "Z:\\var\\tmp\\"}, {"", "Z:\\tmp\\"}, {"relative", "Z:\\tmp\\"}};
    for (const auto& c : cases) {
        qvt::ScopedEnv temp(qvt::machine::TempVariable(), c.tmpdir);
        EXPECT_EQ(std::strlen(c.expected), qvp::TempPath(sizeof buffer, buffer));
        EXPECT_STREQ(c.expected, buffer);
    }
}

}  // namespace

namespace {

// The Windows folder is the prefix's own answer (Windows asks the system).
TEST(Paths, WindowsDirectoryFromTheMachine) {
    qvt::WinePrefix prefix;
    char buffer[64];
    prefix.SetHklm("Software\\Microsoft\\Windows NT\\CurrentVersion", "SystemRoot", "D:\\WINNT");
    EXPECT_EQ(8u, qvp::WindowsDirectory(buffer, sizeof buffer));
    EXPECT_STREQ("D:\\WINNT", buffer);
    EXPECT_EQ(9u, qvp::WindowsDirectory(buffer, 8)) << "too small: the size needed";
}

}  // namespace
