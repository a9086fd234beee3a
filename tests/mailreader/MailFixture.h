// MailFixture.h - builders of mail client installations for the reader's
// tests: registry values, "Uninst.inf", shortcuts, mailbox and account
// directories, folder settings, message lists and messages, all in a
// throw-away Wine prefix. Paths and texts are given in UTF-8 and stored as
// the client stores them (Shift-JIS, CR LF).
#ifndef QV_TESTS_MAILREADER_MAILFIXTURE_H
#define QV_TESTS_MAILREADER_MAILFIXTURE_H

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mailreader/MailReader.h"
#include "messagelib/MessageLib.h"
#include "platform/platform.h"
#include "support/WinePrefix.h"

namespace mailtest {

const char kKey[] = "Software\\CREAR\\AL-Mail";
const char kInstallPath[] = "C:\\Program Files\\AL-Mail\\AlMail.exe";
const char kUninst[] = "C:\\Program Files\\AL-Mail\\Uninst.inf";
// The start-menu folder of a Japanese Windows, as the installer spells it.
const char kStartMenu[] = "C:\\windows\\ｽﾀｰﾄ ﾒﾆｭｰ\\ﾌﾟﾛｸﾞﾗﾑ\\AL-Mail\\";

inline std::string Sjis(const std::string& utf8) { return qvt::Cp932(utf8); }

class MailStore {
public:
    MailStore() {
        const char* old = std::getenv("TMPDIR");
        hadTmp_ = old != nullptr;
        if (hadTmp_) oldTmp_ = old;
        tmp_ = prefix.Root() + "/tmp";
        std::filesystem::create_directories(tmp_);
        setenv("TMPDIR", tmp_.c_str(), 1);
    }
    ~MailStore() {
        if (hadTmp_) setenv("TMPDIR", oldTmp_.c_str(), 1);
        else unsetenv("TMPDIR");
    }
    const std::string& TempDir() const { return tmp_; }

    // InstallPath, and the file it names unless told otherwise.
    void Install(bool bFileExists = true, const std::string& path = kInstallPath) {
        prefix.SetHklm(kKey, "InstallPath", path);
        if (bFileExists) prefix.WriteFile(path, "MZ");
    }
    void RegistryMailbox(const std::string& dir) { prefix.SetHkcu(kKey, "MailboxPath", dir); }
    // "Uninst.inf" in Shift-JIS with CR LF line ends.
    void Uninst(const std::vector<std::string>& lines, const std::string& path = kUninst) {
        std::string bytes;
        for (const std::string& line : lines) bytes += Sjis(line) + "\r\n";
        prefix.WriteFile(path, bytes);
    }
    void Shortcut(const std::string& path, const std::string& arguments, bool unicode = true) {
        prefix.WriteFile(path, qvt::MakeShortcut(arguments, unicode));
    }
    // A mailbox directory the uninstall file may list: it has "Mailbox.ini".
    void Mailbox(const std::string& dir) { prefix.WriteFile(dir + "\\Mailbox.ini", "[Property]\r\n"); }
    void Account(const std::string& dir, const std::string& title) {
        prefix.WriteFile(dir + "\\Account.ini", "[Property]\r\nTitle=" + Sjis(title) + "\r\n");
    }
    // "Entry.ini" with a title (none when empty) and extra raw lines.
    void FolderIni(const std::string& dir, const std::string& title, const std::string& extra = "") {
        std::string bytes = "[Property]\r\n";
        if (!title.empty()) bytes += "Title=" + Sjis(title) + "\r\n";
        prefix.WriteFile(dir + "\\Entry.ini", bytes + extra);
    }
    void File(const std::string& path, const std::string& bytes) { prefix.WriteFile(path, bytes); }

    qvt::WinePrefix prefix;

private:
    std::string tmp_;
    std::string oldTmp_;
    bool hadTmp_ = false;
};

// An open reader handle for the span of a test.
class Reader {
public:
    Reader() { result = MailReader_Open(&h); }
    ~Reader() {
        if (h != nullptr) MailReader_Close(h);
    }
    MAILREADER_HANDLE h = nullptr;
    int32_t result;
};

// Fetches a text through one of the flat functions as 8-bit text (kind 1)
// or as UTF-16 (kind 2, converted back to UTF-8 here).
template <typename Fetch>
int32_t Text(Fetch fetch, std::string* out, uint32_t kind = QV_V4_KIND_TEXT8) {
    QvV4Value value;
    QvV4Value_Init(&value);
    QvV4Value_SetKind(&value, kind);
    int32_t r = fetch(&value);
    out->clear();
    if (r == 0 && value.pData != nullptr) {
        if (kind == QV_V4_KIND_TEXT8) {
            *out = static_cast<const char*>(value.pData);
        } else {
            std::u16string wide(static_cast<const char16_t*>(value.pData));
            std::string cp932;
            int n = qvp::WideCharToMultiByte(qvp::kCp932, wide.c_str(), static_cast<int>(wide.size()), nullptr, 0);
            cp932.resize(static_cast<size_t>(n));
            if (n > 0) qvp::WideCharToMultiByte(qvp::kCp932, wide.c_str(), static_cast<int>(wide.size()), &cp932[0], n);
            *out = cp932;
        }
    }
    QvV4Value_Release(&value);
    return r;
}

inline int32_t Name(MAILREADER_HANDLE h, MAILRECORD_HANDLE rec, std::string* out) {
    return Text([&](QvV4Value* v) { return MailReader_GetName(h, rec, v); }, out);
}
inline int32_t DisplayName(MAILREADER_HANDLE h, MAILRECORD_HANDLE rec, std::string* out) {
    return Text([&](QvV4Value* v) { return MailReader_GetDisplayName(h, rec, v); }, out);
}

// The libraries are loaded from the build's lib folder by path: under the
// address sanitizer dlopen is called from the sanitizer's runtime, whose
// search path does not hold the test program's own.
inline const char* LibPath(const char* pszFile) {
    static std::string s_paths[4];
    static const char* const s_files[4] = {"sNqxMsgNet.dll", "stub_mock.dll", "stub_onlyfree.dll",
                                           "stub_not_there.dll"};
    for (int i = 0; i < 4; ++i) {
        if (std::string(pszFile) == s_files[i]) {
            if (s_paths[i].empty()) s_paths[i] = std::string(QV_TEST_BINARY_DIR) + "/lib/" + pszFile;
            return s_paths[i].c_str();
        }
    }
    return pszFile;
}

// Loads stub_<name>.dll in place of the message library for one scope.
class StubLibrary {
public:
    explicit StubLibrary(const char* pszFile) { SetMessageLibraryNameForTests(LibPath(pszFile)); }
    ~StubLibrary() { SetMessageLibraryNameForTests(LibPath("sNqxMsgNet.dll")); }
};

// Every test program of the reader starts with the real library by path.
// The program also holds one load of it of its own, so that the library
// stays mapped when the last reader unloads it: its code page converters
// live in its static data, and an unmapped library would leave them to the
// leak checker as lost.
class RealLibraryEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        SetMessageLibraryNameForTests(LibPath("sNqxMsgNet.dll"));
        if (s_hPinned == nullptr) s_hPinned = qvp::ModuleLoad(LibPath("sNqxMsgNet.dll"));
    }

private:
    static inline qvp::Module* s_hPinned = nullptr;
};

}  // namespace mailtest

#endif  // QV_TESTS_MAILREADER_MAILFIXTURE_H
