// MailFixture.h - mail client installations in a throw-away Wine prefix
// (paths and texts given in UTF-8, stored in Shift-JIS with CR LF), and
// short ways to call the reader's flat functions.
#ifndef QV_TESTS_MAILREADER_MAILFIXTURE_H
#define QV_TESTS_MAILREADER_MAILFIXTURE_H

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <set>
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
// The start-menu folder of a Japanese Windows, as the installer spells it.
const char kStartMenu[] = "C:\\windows\\ｽﾀｰﾄ ﾒﾆｭｰ\\ﾌﾟﾛｸﾞﾗﾑ\\AL-Mail\\";

inline std::string Sjis(const std::string& utf8) { return qvt::Cp932(utf8); }

// A machine whose temporary directory lies in its own folder for the store's life.
class MailStore : public qvt::WinePrefix {
public:
    MailStore() : tmp_(Root() + "/tmp"), scopedTmp_((std::filesystem::create_directories(qvt::HostFile(tmp_)), tmp_)) {}
    const std::string& TempDir() const { return tmp_; }
    // InstallPath, and the file it names unless told otherwise.
    void Install(bool bFileExists = true, const std::string& path = kInstallPath) {
        SetHklm(kKey, "InstallPath", path);
        if (bFileExists) WriteFile(path, "MZ");
    }
    void RegistryMailbox(const std::string& dir) { SetHkcu(kKey, "MailboxPath", dir); }
    void Uninst(const std::vector<std::string>& lines, const std::string& path) {
        std::string bytes;
        for (const std::string& line : lines) bytes += Sjis(line) + "\r\n";
        WriteFile(path, bytes);
    }
    // "Account.ini" or a folder's "Entry.ini" with a title (none when empty) and extra raw lines.
    void Ini(const std::string& path, const std::string& title, const std::string& extra = "") {
        WriteFile(path, "[Property]\r\n" + (title.empty() ? "" : "Title=" + Sjis(title) + "\r\n") + extra);
    }

private:
    std::string tmp_;
    qvt::ScopedTempDir scopedTmp_;
};

// An open reader handle for the span of a test; a failed open must leave none.
struct Reader {
    Reader() : h(reinterpret_cast<MAILREADER_HANDLE>(1)) {
        result = MailReader_Open(&h);
        if (result != 0 && h != nullptr) {
            ADD_FAILURE() << "a failed open left a handle";
            h = nullptr;
        }
    }
    ~Reader() {
        if (h != nullptr) MailReader_Close(h);
    }
    MAILREADER_HANDLE h;
    int32_t result;
};

// "code:text" of one fetch, as 8-bit text or as UTF-16 (given back in
// Shift-JIS), so that one check covers both.
template <typename Fetch>
std::string Got(Fetch fetch, uint32_t kind = QV_V4_KIND_TEXT8) {
    QvV4Value value;
    QvV4Value_Init(&value);
    QvV4Value_SetKind(&value, kind);
    int32_t r = fetch(&value);
    std::string text;
    if (r == 0 && value.pData != nullptr)
        text = kind == QV_V4_KIND_TEXT8 ? std::string(static_cast<const char*>(value.pData))
                                        : qvt::Cp932(qvt::Utf8(std::u16string(static_cast<const char16_t*>(value.pData))));
    QvV4Value_Release(&value);
    return std::to_string(r) + ":" + text;
}
inline std::string Name(MAILREADER_HANDLE h, MAILRECORD_HANDLE rec, uint32_t kind = QV_V4_KIND_TEXT8) {
    return Got([&](QvV4Value* v) { return MailReader_GetName(h, rec, v); }, kind);
}
inline std::string DisplayName(MAILREADER_HANDLE h, MAILRECORD_HANDLE rec, uint32_t kind = QV_V4_KIND_TEXT8) {
    return Got([&](QvV4Value* v) { return MailReader_GetDisplayName(h, rec, v); }, kind);
}
// "code:count" of one of the counting functions.
template <typename F, typename... A>
std::string Count(F f, A... a) {
    int32_t n = -1;
    int32_t r = f(a..., &n);
    return std::to_string(r) + ":" + std::to_string(n);
}
// A user, account or folder record that must be there.
template <typename F, typename... A>
MAILRECORD_HANDLE Rec(F f, A... a) {
    MAILRECORD_HANDLE p = nullptr;
    EXPECT_EQ(0, f(a..., &p));
    return p;
}

// The libraries are loaded by path from the build's lib folder: under the
// address sanitizer dlopen runs from the sanitizer's runtime, which does
// not search the test program's own path.
inline const char* LibPath(const char* pszFile) {
    static std::set<std::string> s_paths;  // elements stay put
    return s_paths.insert(std::string(QV_TEST_LIBRARY_DIR) + "/" + pszFile).first->c_str();
}

// Loads stub_<name>.dll in place of the message library for one scope.
struct StubLibrary {
    explicit StubLibrary(const char* pszFile) { SetMessageLibraryNameForTests(LibPath(pszFile)); }
    ~StubLibrary() { SetMessageLibraryNameForTests(LibPath("sNqxMsgNet.dll")); }
};

// The real library by path, plus one load of the program's own so that it
// stays mapped after the last reader unloads it: its code page converters
// live in its static data and would otherwise show up as leaks.
struct RealLibraryEnvironment : ::testing::Environment {
    void SetUp() override {
        SetMessageLibraryNameForTests(LibPath("sNqxMsgNet.dll"));
        static qvp::Module* s_hPinned = qvp::ModuleLoad(LibPath("sNqxMsgNet.dll"));
        (void)s_hPinned;
    }
};
inline ::testing::Environment* const g_realLibrary = ::testing::AddGlobalTestEnvironment(new RealLibraryEnvironment);

}  // namespace mailtest

#endif  // QV_TESTS_MAILREADER_MAILFIXTURE_H
