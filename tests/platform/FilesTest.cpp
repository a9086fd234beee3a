// FilesTest.cpp - paths through the prefix, listings, text mode, the log
// file, system folders, dynamic loading.
#include "platform/platform.h"
#include "support/WinePrefix.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

// Keeps the current directory and gives it back.
class CwdGuard {
public:
    explicit CwdGuard(const std::string& to) : old_(fs::current_path()) { fs::current_path(qvt::HostFile(to)); }
    ~CwdGuard() { fs::current_path(old_); }

private:
    fs::path old_;
};

TEST(Paths, RelativeToTheCurrentDirectory) {
    qvt::WinePrefix prefix;
    prefix.WriteFile("C:\\Mail\\Sub\\a.txt", "x");
    CwdGuard cwd(prefix.HostPath("C:\\Mail\\Sub"));
    EXPECT_EQ(0, qvp::Access("a.txt"));
    EXPECT_EQ(0, qvp::Access("..\\SUB\\A.TXT"));
    EXPECT_EQ(-1, qvp::Access("b.txt"));
    char buffer[4096];
    ASSERT_NE(nullptr, qvp::GetCwd(buffer, sizeof buffer));
    EXPECT_EQ(qvt::Cp932(qvt::WindowsPath(prefix.HostPath("C:\\Mail\\Sub"))), std::string(buffer));
    EXPECT_EQ(0, qvp::Access(buffer)) << "the current directory maps back";
    EXPECT_EQ(nullptr, qvp::GetCwd(buffer, 4)) << "too small";
}

TEST(Paths, RemoveTakesFilesOnly) {
    qvt::WinePrefix prefix;
    prefix.WriteFile("C:\\Temp\\IBQVALM.tmp", "x");
    prefix.MakeDir("C:\\Temp\\Dir");
    EXPECT_EQ(0, qvp::Remove("C:\\temp\\ibqvalm.TMP"));
    EXPECT_EQ(-1, qvp::Access("C:\\Temp\\IBQVALM.tmp"));
    EXPECT_EQ(-1, qvp::Remove("C:\\Temp\\IBQVALM.tmp"));
    EXPECT_EQ(-1, qvp::Remove("C:\\Temp\\Dir"));
}

std::vector<std::string> List(const std::string& patternUtf8) {
    std::vector<std::string> names;
    qvp::FindData data;
    qvp::FindHandle* handle = qvp::FindFirst(qvt::Cp932(patternUtf8).c_str(), &data);
    if (handle == nullptr) return names;
    do {
        names.push_back(qvt::Utf8(data.name) + (data.attrib == qvp::kAttribDirectory ? "/" : ""));
        EXPECT_TRUE(data.attrib == qvp::kAttribDirectory || data.attrib == qvp::kAttribArchive);
    } while (qvp::FindNext(handle, &data));
    qvp::FindClose(handle);
    return names;
}

TEST(Listing, OrderAndPatterns) {
    qvt::WinePrefix prefix;
    for (const char* name : {"Zeta.box", "alpha.box", "Beta.BOX", "note.txt", "受信.box", "a.box", "A.box",
                             "\xF0\x9F\x98\x80.box", "noext", "beta.boxes"})
        prefix.WriteFile(std::string("C:\\Mail\\") + name, "x");
    prefix.MakeDir("C:\\Mail\\Folder.box");
    const struct {
        const char* pattern;
        std::vector<std::string> names;
    } cases[] = {
        {"C:\\Mail\\*.box",
         {"A.box", "a.box", "alpha.box", "Beta.BOX", "Folder.box/", "Zeta.box", "受信.box", "??.box"}},
        {"c:\\mail\\*.BOX",
         {"A.box", "a.box", "alpha.box", "Beta.BOX", "Folder.box/", "Zeta.box", "受信.box", "??.box"}},
        {"C:\\Mail\\?eta.box", {"Beta.BOX", "Zeta.box"}},
        {"C:\\Mail\\*",
         {"./", "../", "A.box", "a.box", "alpha.box", "Beta.BOX", "beta.boxes", "Folder.box/", "noext", "note.txt",
          "Zeta.box", "受信.box", "??.box"}},
        {"C:\\Mail\\no*.*", {"noext", "note.txt"}},
        {"C:\\Mail\\*.lst", {}},
        {"C:\\Missing\\*", {}},
        {"C:\\Mail\\", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pattern);
        EXPECT_EQ(c.names, List(c.pattern));
    }
}

struct TextCase {
    const char* name;
    std::string bytes;
    const char* mode;
    int n;
    std::vector<std::string> lines;
};

TEST(Files, TextAndBinaryMode) {
    const TextCase cases[] = {
        {"CR LF read as LF", "a\r\nb\r\n", "rt", 64, {"a\n", "b\n"}},
        {"lone CR stays", "a\rb\n\r", "rt", 64, {"a\rb\n", "\r"}},
        {"CR CR LF", "a\r\r\nb", "rt", 64, {"a\r\n", "b"}},
        {"Ctrl-Z ends the file", "a\nb\x1A" "c\n", "rt", 64, {"a\n", "b"}},
        {"Ctrl-Z after CR", "a\r\x1A\n", "rt", 64, {"a\r"}},
        {"binary keeps everything", "a\r\nb\x1A\n", "rb", 64, {"a\r\n", "b\x1A\n"}},
        {"default mode is text", "a\r\n", "r", 64, {"a\n"}},
        {"long line in pieces", "abcdefg\n", "rt", 4, {"abc", "def", "g\n"}},
        {"empty file", "", "rt", 64, {}},
    };
    qvt::WinePrefix prefix;
    for (const TextCase& c : cases) {
        SCOPED_TRACE(c.name);
        prefix.WriteFile("C:\\t.txt", c.bytes);
        qvp::File* file = qvp::FileOpen("C:\\T.TXT", c.mode);
        ASSERT_NE(nullptr, file);
        EXPECT_EQ(static_cast<long>(c.bytes.size()), qvp::FileLength(file));
        for (int pass = 0; pass < 2; ++pass) {
            std::vector<std::string> lines;
            char buffer[64];
            while (qvp::FileGets(buffer, c.n, file)) lines.push_back(buffer);
            EXPECT_EQ(c.lines, lines);
            EXPECT_TRUE(qvp::FileEof(file));
            qvp::FileRewind(file);
            EXPECT_FALSE(qvp::FileEof(file));
        }
        qvp::FileClose(file);
    }
}

TEST(Files, ReadAndOpenFailures) {
    qvt::WinePrefix prefix;
    prefix.WriteFile("C:\\m.alm", std::string("H\r\nB\x1A\0tail", 10));
    qvp::File* file = qvp::FileOpen("C:\\m.alm", "rb");
    ASSERT_NE(nullptr, file);
    char buffer[16];
    EXPECT_EQ(10u, qvp::FileRead(buffer, sizeof buffer, file));
    EXPECT_TRUE(qvp::FileEof(file));
    qvp::FileClose(file);
    file = qvp::FileOpen("C:\\m.alm", "rt");
    ASSERT_NE(nullptr, file);
    EXPECT_EQ(3u, qvp::FileRead(buffer, sizeof buffer, file));
    EXPECT_EQ("H\nB", std::string(buffer, 3));
    qvp::FileClose(file);

    prefix.MakeDir("C:\\Dir");
    EXPECT_EQ(nullptr, qvp::FileOpen("C:\\Dir", "rb")) << "a directory";
    EXPECT_EQ(nullptr, qvp::FileOpen("C:\\none.alm", "rb"));
    EXPECT_EQ(nullptr, qvp::FileOpen("C:\\m.alm", "w")) << "nothing is written";
}

std::u16string Wide(const std::string& utf8) {
    const int n = qvp::MultiByteToWideChar(qvp::kCpUtf8, 0, utf8.c_str(), -1, nullptr, 0);
    std::u16string out(static_cast<size_t>(n), u'\0');
    qvp::MultiByteToWideChar(qvp::kCpUtf8, 0, utf8.c_str(), -1, &out[0], n);
    return out;
}

TEST(LogFile, AppendsAndReportsCauses) {
    qvt::WinePrefix prefix;
    const std::string path = prefix.Root() + "/ログ.log";
    qvp::LogFile* log = nullptr;
    ASSERT_EQ(0, qvp::LogFileOpen(Wide(path).c_str(), &log));
    EXPECT_EQ(0, qvp::LogFileAppend(log, "one\r\n", 5));
    EXPECT_EQ(0, qvp::LogFileFlush(log));
    EXPECT_EQ(0, qvp::LogFileClose(log));
    ASSERT_EQ(0, qvp::LogFileOpen(Wide(path).c_str(), &log));
    qvp::LogFile* second = nullptr;
    ASSERT_EQ(0, qvp::LogFileOpen(Wide(path).c_str(), &second)) << "shared";
    EXPECT_EQ(0, qvp::LogFileAppend(log, "two\r\n", 5));
    EXPECT_EQ(0, qvp::LogFileAppend(second, "3\r\n", 3));
    EXPECT_EQ(0, qvp::LogFileAppend(log, "4\r\n", 3));
    qvp::LogFileClose(second);
    qvp::LogFileClose(log);
    EXPECT_EQ("one\r\ntwo\r\n3\r\n4\r\n", qvt::ReadHostFile(path)) << "never truncated, no BOM, appended at the end";

    prefix.MakeDir("C:\\Dir");
    const struct {
        const char* name;
        std::string path;
        int cause;
    } failures[] = {
        {"missing folder", prefix.HostPath("C:\\Nothing\\a.log"), 3},
        {"a file used as a folder", path + "/a.log", 3},
        {"a directory", prefix.HostPath("C:\\Dir"), 5},
    };
    for (const auto& f : failures) {
        SCOPED_TRACE(f.name);
        log = reinterpret_cast<qvp::LogFile*>(1);
        EXPECT_EQ(f.cause, qvp::LogFileOpen(Wide(f.path).c_str(), &log));
        EXPECT_EQ(nullptr, log);
    }
}

TEST(SystemFolders, WindowsAndTemp) {
    char buffer[64];
    EXPECT_EQ(10u, qvp::WindowsDirectory(buffer, sizeof buffer));
    EXPECT_STREQ("C:\\windows", buffer);
    EXPECT_EQ(11u, qvp::WindowsDirectory(buffer, 10)) << "too small: the size needed";

    const std::string dir = (fs::temp_directory_path() / "qvt-temp").u8string();
    fs::create_directories(qvt::HostFile(dir));
    {
        qvt::ScopedTempDir temp(dir);
        const std::string expected = qvt::Cp932(qvt::WindowsPath(dir)) + "\\";
        EXPECT_EQ(expected.size(), qvp::TempPath(sizeof buffer, buffer));
        EXPECT_EQ(expected, std::string(buffer));
    }
    fs::remove(qvt::HostFile(dir));
}

TEST(Runtime, ModulesClockAndCriticalSection) {
    EXPECT_EQ(nullptr, qvp::ModuleLoad("NoSuchLibrary.dll"));
    qvp::Module* module = qvp::ModuleLoad(QV_TEST_LIBRARY_DIR "/sNqxMsgNet.dll");
    ASSERT_NE(nullptr, module);
    EXPECT_NE(nullptr, qvp::ModuleSymbol(module, "MT_Init"));
    EXPECT_EQ(nullptr, qvp::ModuleSymbol(module, "MT_NoSuchFunction"));
    EXPECT_TRUE(qvp::ModuleFree(module));

    qvp::LocalTime t{};
    qvp::LocalTimeNow(&t);
    EXPECT_GE(t.year, 2020);
    EXPECT_TRUE(t.month >= 1 && t.month <= 12 && t.day >= 1 && t.day <= 31 && t.hour < 24 && t.minute < 60 &&
                t.second < 60 && t.milliseconds < 1000);

    qvp::CriticalSection* cs = qvp::CriticalSectionCreate();
    ASSERT_NE(nullptr, cs);
    qvp::CriticalSectionEnter(cs);
    qvp::CriticalSectionEnter(cs);  // re-entrant, as on Windows
    qvp::CriticalSectionLeave(cs);
    qvp::CriticalSectionLeave(cs);
    qvp::CriticalSectionDestroy(cs);
}

}  // namespace

namespace {

TEST(Files, TenMegabyteLineArrivesInPieces) {
    qvt::WinePrefix prefix;
    prefix.WriteFile("C:\\Uninst.inf", std::string(10u << 20, 'z') + "\r\n[Mailboxes]\r\n");
    qvp::File* file = qvp::FileOpen("C:\\uninst.inf", "rt");
    ASSERT_NE(nullptr, file);
    char buffer[270];
    size_t pieces = 0, bytes = 0;
    std::string last;
    while (qvp::FileGets(buffer, sizeof buffer, file)) {
        ++pieces;
        bytes += std::strlen(buffer);
        last = buffer;
    }
    qvp::FileClose(file);
    EXPECT_EQ((10u << 20) + 1 + 12, bytes);
    EXPECT_EQ("[Mailboxes]\n", last);
    EXPECT_EQ(((10u << 20) + 1 + 268) / 269 + 1, pieces);
}

}  // namespace
