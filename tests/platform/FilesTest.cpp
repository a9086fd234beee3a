// FilesTest.cpp - paths through the prefix, listings, text mode, the log
// file, the Windows folder.
#include "platform/platform.h"
#include "support/WinePrefix.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

TEST(Paths, CurrentDirectoryAndRemove) {
    qvt::WinePrefix prefix;
    char buffer[4096];
    ASSERT_NE(nullptr, qvp::GetCwd(buffer, sizeof buffer));
    EXPECT_EQ(qvt::Cp932(qvt::WindowsPath(fs::current_path().u8string())), std::string(buffer));
    EXPECT_EQ(0, qvp::Access(buffer)) << "the current directory maps back";
    EXPECT_EQ(nullptr, qvp::GetCwd(buffer, 4)) << "too small";

    prefix.WriteFile("C:\\Temp\\IBQVALM.tmp", "x");
    prefix.MakeDir("C:\\Temp\\Dir");
    EXPECT_EQ(0, qvp::Remove("C:\\temp\\ibqvalm.TMP"));
    EXPECT_EQ(-1, qvp::Remove("C:\\Temp\\IBQVALM.tmp"));
    EXPECT_EQ(-1, qvp::Remove("C:\\Temp\\Dir")) << "files only";
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

// A pattern matches the long name or the short 8.3 name Wine makes for a
// name that is no DOS name ("beta.boxes" is "beta~RAG.box" as well), and a
// path through short names opens, in any case.
TEST(Listing, OrderPatternsAndShortNames) {
    qvt::WinePrefix prefix;
    const std::string dir = "C:\\Long Folder Name\\";
    for (const char* name : {"Zeta.box", "alpha.box", "Beta.BOX", "受信.box", "a.box", "beta.boxes", "abc.bo.x",
                             "long name.bo", "Ωmega12345.txt", "a~b.txt"})
        prefix.WriteFile(dir + name, "x");
    prefix.MakeDir(dir + "Folder.box");
    const struct { const char* pattern; std::vector<std::string> names; } cases[] = {
        {"*.box", {"a.box", "alpha.box", "Beta.BOX", "beta.boxes", "Folder.box/", "Zeta.box", "受信.box"}},
        {"*.B?X", {"a.box", "alpha.box", "Beta.BOX", "beta.boxes", "Folder.box/", "Zeta.box", "受信.box"}},
        {"*.bo", {"long name.bo"}},
        {"*~*", {"abc.bo.x", "a~b.txt", "beta.boxes", "long name.bo", "Ωmega12345.txt", "受信.box"}},
        {"BETA~rag.*", {"beta.boxes"}},
        {"_meg~WIN.txt", {"Ωmega12345.txt"}},  // the hash takes Ω as ω
        {"abc_~QUP.x", {"abc.bo.x"}},
        {"a~b.t*", {"a~b.txt"}},  // a DOS name already: no short name
        {"Folder.*", {"Folder.box/"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pattern);
        EXPECT_EQ(c.names, List(dir + c.pattern));
    }
    EXPECT_TRUE(List("C:\\Missing\\*").empty());
    const std::pair<const char*, bool> paths[] = {
        {"C:\\long~zat\\BETA~rag.BOX", true}, {"C:\\Long~ZAT\\beta~RAF.box", false},  // another hash
        {"C:\\Long~ZAT\\beta~RAG.bo", false}, {"C:\\Long~ZAT\\a~b.txt", true}};
    for (const auto& [path, exists] : paths) EXPECT_EQ(exists ? 0 : -1, qvp::Access(path)) << path;
}

// Names that code page 932 cannot hold exactly, as Wine 8.0's _findfirst
// lists them: '?' or a best fit, in the order of the folded UTF-16 names;
// such a name opens nothing.
TEST(Listing, NamesWithoutShiftJisForm) {
    const struct { const char* hostName; const char* listed; bool opens; } cases[] = {
        {"Ab.h", "Ab.h", true},
        {"x\u2014.f", "x?.f", false},  // glibc maps U+2014, Windows does not
        {"\u00E9.d", "e.d", false},
        {"\u2160.g", "\u2160.g", true},  // NEC row
        {"\u301C.c", "?.c", false},
        {"\U0001F600.b", "??.b", false},  // one '?' per surrogate
    };
    qvt::WinePrefix prefix;
    std::vector<std::string> expected = {"./", "../"};
    for (const auto& c : cases) {
        prefix.WriteFile(std::string("C:\\Names\\") + c.hostName, "x");
        expected.push_back(c.listed);
    }
    EXPECT_EQ(expected, List("C:\\Names\\*"));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.listed);
        qvp::File* file = qvp::FileOpen(qvt::Cp932(std::string("C:\\Names\\") + c.listed).c_str(), "rb");
        EXPECT_EQ(c.opens, file != nullptr);
        if (file != nullptr) qvp::FileClose(file);
    }
}

TEST(Files, TextAndBinaryMode) {
    const struct { const char* name; std::string bytes; const char* mode; int n; std::vector<std::string> lines; }
        cases[] = {
        {"CR LF read as LF", "a\r\nb\r\n", "rt", 64, {"a\n", "b\n"}},
        {"lone CR stays", "a\rb\n\r", "rt", 64, {"a\rb\n", "\r"}},
        {"CR CR LF", "a\r\r\nb", "rt", 64, {"a\r\n", "b"}},
        {"Ctrl-Z ends the file", "a\nb\x1A" "c\n", "rt", 64, {"a\n", "b"}},
        {"Ctrl-Z after CR", "a\r\x1A\n", "rt", 64, {"a\r"}},
        {"binary keeps everything", "a\r\nb\x1A\n", "rb", 64, {"a\r\n", "b\x1A\n"}},
        {"long line in pieces", "abcdefg\n", "rt", 4, {"abc", "def", "g\n"}},
    };
    qvt::WinePrefix prefix;
    for (const auto& c : cases) {
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
    prefix.MakeDir("C:\\Dir");
    const struct { const char* path; const char* mode; int cause; } refused[] = {
        {"C:\\Dir", "rb", qvp::kCauseAccessDenied}, {"C:\\none.txt", "rt", qvp::kCauseFileNotFound},
        {"C:\\No\\t.txt", "rt", qvp::kCauseBadPath},
        {"C:\\t.txt", "w", qvp::kCauseGeneric},  // nothing is written
    };
    for (const auto& r : refused) {
        int cause = -1;
        EXPECT_EQ(nullptr, qvp::FileOpen(r.path, r.mode, &cause)) << r.path;
        EXPECT_EQ(r.cause, cause) << r.path;
    }
}

// The files of one folder open through a handle of the folder kept from
// the last open: what changes on the disk between two opens is still seen.
TEST(Files, OpensWhatTheFolderHoldsNow) {
    using P = qvt::WinePrefix;
    const auto none = [](P&) {};
    const struct { const char* name; void (*change)(P&); const char* path; const char* expected; } cases[] = {
        {"next file", none, "C:\\Box\\b.alm", "b"},  // expected null: not found
        {"the same name in another folder", none, "C:\\Other\\b.alm", "other"},
        {"back in the first", none, "C:\\Box\\b.alm", "b"},
        {"a name in another case", none, "C:\\box\\B.ALM", "b"},
        {"a file gone", [](P& p) { fs::remove(p.HostPath("C:\\Box\\b.alm")); }, "C:\\Box\\b.alm", nullptr},
        {"the folder made anew",
         [](P& p) { fs::remove_all(p.HostPath("C:\\Box")), p.WriteFile("C:\\Box\\a.alm", "new"); },
         "C:\\Box\\a.alm", "new"},
        {"and its next file", [](P& p) { p.WriteFile("C:\\Box\\c.alm", "c"); }, "C:\\Box\\c.alm", "c"},
        {"the folder gone", [](P& p) { fs::remove_all(p.HostPath("C:\\Box")); }, "C:\\Box\\c.alm", nullptr},
    };
    qvt::WinePrefix prefix;
    prefix.WriteFile("C:\\Box\\a.alm", "a");
    prefix.WriteFile("C:\\Box\\b.alm", "b");
    prefix.WriteFile("C:\\Other\\b.alm", "other");
    qvp::FileClose(qvp::FileOpen("C:\\Other\\b.alm", "rb"));  // both folders known
    qvp::FileClose(qvp::FileOpen("C:\\Box\\a.alm", "rb"));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        c.change(prefix);
        qvp::File* file = qvp::FileOpen(c.path, "rb");
        ASSERT_EQ(c.expected == nullptr, file == nullptr);
        if (file == nullptr) continue;
        char buffer[8] = {};
        EXPECT_EQ(std::string(c.expected), std::string(buffer, qvp::FileRead(buffer, sizeof buffer, file)));
        qvp::FileClose(file);
    }
}

// (The frame's tests show a new log appended to an old one.)
TEST(LogFile, SharedAppendsAndCauses) {
    qvt::WinePrefix prefix;
    const std::string path = prefix.Root() + "/ログ.log";
    qvp::LogFile* log = nullptr;
    qvp::LogFile* second = nullptr;
    ASSERT_EQ(0, qvp::LogFileOpen(qvt::Utf16(path).c_str(), &log));
    ASSERT_EQ(0, qvp::LogFileOpen(qvt::Utf16(path).c_str(), &second)) << "shared";
    EXPECT_EQ(0, qvp::LogFileAppend(log, "1\r\n", 3));
    EXPECT_EQ(0, qvp::LogFileAppend(second, "2\r\n", 3));
    EXPECT_EQ(0, qvp::LogFileFlush(second));
    EXPECT_EQ(0, qvp::LogFileAppend(log, "3\r\n", 3));
    EXPECT_EQ(0, qvp::LogFileClose(second));
    EXPECT_EQ(0, qvp::LogFileClose(log));
    EXPECT_EQ("1\r\n2\r\n3\r\n", qvt::ReadHostFile(path)) << "each append at the end";

    prefix.MakeDir("C:\\Dir");
    log = reinterpret_cast<qvp::LogFile*>(1);
    EXPECT_EQ(3, qvp::LogFileOpen(qvt::Utf16(path + "/a.log").c_str(), &log)) << "a file used as a folder";
    EXPECT_EQ(nullptr, log);
    log = reinterpret_cast<qvp::LogFile*>(1);
    EXPECT_EQ(5, qvp::LogFileOpen(qvt::Utf16(prefix.HostPath("C:\\Dir")).c_str(), &log)) << "a directory";
    EXPECT_EQ(nullptr, log);
}

TEST(SystemFolders, WindowsDirectory) {
    char buffer[64];
    EXPECT_EQ(10u, qvp::WindowsDirectory(buffer, sizeof buffer));
    EXPECT_STREQ("C:\\windows", buffer);
    EXPECT_EQ(11u, qvp::WindowsDirectory(buffer, 10)) << "too small: the size needed";
}

}  // namespace
