// MailFixture.h - mail client installations in a throw-away Wine prefix
// (paths and texts given in UTF-8, stored in Shift-JIS with CR LF), and
// short ways to call the reader's flat functions.
#ifndef QV_TESTS_MAILREADER_MAILFIXTURE_H
#define QV_TESTS_MAILREADER_MAILFIXTURE_H

#include <set>
#include <string>

#include <gtest/gtest.h>

#include "mailreader/MailReader.h"
#include "messagelib/MessageLib.h"
#include "platform/platform.h"
#include "support/SampleStore.h"

namespace mailtest {

const char kInstallPath[] = "C:\\Program Files\\AL-Mail\\AlMail.exe";
// The start-menu folder of a Japanese Windows, as the installer spells it.
const char kStartMenu[] = "C:\\windows\\ｽﾀｰﾄ ﾒﾆｭｰ\\ﾌﾟﾛｸﾞﾗﾑ\\AL-Mail\\";

inline std::string Sjis(const std::string& utf8) { return qvt::Cp932(utf8); }

// The client installed, with its registry mailbox; written on with the store writer.
struct MailStore : qvt::WinePrefix, qvt::StoreWriter {
    explicit MailStore(const std::string& mailbox, const std::string& installPath = kInstallPath)
        : qvt::StoreWriter(static_cast<qvt::WinePrefix&>(*this)) {
        Install(installPath);
        RegistryMailbox(mailbox);
    }
};

// A reader handle for the span of a test.
struct Reader {
    MAILREADER_HANDLE h = reinterpret_cast<MAILREADER_HANDLE>(1);
    int32_t result = MailReader_Open(&h);
    ~Reader() { if (result == 0) MailReader_Close(h); }
};

// "code:text" of one fetch as 8-bit text (the end-to-end walk reads UTF-16).
template <typename Fetch>
std::string Got(Fetch fetch) {
    QvV4Value value;
    QvV4Value_Init(&value);
    QvV4Value_SetKind(&value, QV_V4_KIND_TEXT8);
    int32_t r = fetch(&value);
    std::string text = r == 0 && value.pData != nullptr ? static_cast<const char*>(value.pData) : "";
    QvV4Value_Release(&value);
    return std::to_string(r) + ":" + text;
}
inline std::string Name(MAILREADER_HANDLE h, MAILRECORD_HANDLE rec) {
    return Got([&](QvV4Value* v) { return MailReader_GetName(h, rec, v); });
}
inline std::string DisplayName(MAILREADER_HANDLE h, MAILRECORD_HANDLE rec) {
    return Got([&](QvV4Value* v) { return MailReader_GetDisplayName(h, rec, v); });
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
