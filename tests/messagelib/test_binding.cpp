// test_binding.cpp - the message library binding against the real library
// and against stub libraries with missing functions.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "messagelib/MessageLib.h"
#include "platform/platform.h"

namespace {

// By path from the build's lib folder: under the address sanitizer dlopen
// runs from the sanitizer's runtime, which does not search our own path.
void Use(const char* pszFile) {
    static std::set<std::string> s_paths;  // elements stay put
    SetMessageLibraryNameForTests(s_paths.insert(std::string(QV_TEST_LIBRARY_DIR) + "/" + pszFile).first->c_str());
}

// Binds a library by its Windows name for one scope.
struct Bound {
    explicit Bound(const char* pszFile) : result((Use(pszFile), BindMessageLibrary())) {}
    ~Bound() {
        if (result == 0) UnbindMessageLibrary();
        Use("sNqxMsgNet.dll");
    }
    int32_t result;
};

// A name the library exports is bound to its own function, any other to the fallback.
TEST(MessageLibBinding, ResolvesEachLibrary) {
    for (const char* file : {"sNqxMsgNet.dll", "stub_onlyfree.dll", "stub_mock.dll"}) {
        SCOPED_TRACE(file);
        Bound bound(file);
        ASSERT_EQ(0, bound.result);
        for (size_t i = 0; i < kMessageLibNameCount; ++i) {
            void* own = qvp::ModuleSymbol(BoundMessageLibrary(), g_apszMessageLibNames[i]);
            EXPECT_EQ(own ? own : reinterpret_cast<void*>(&MissingFunction), g_apfnMessageLib[i])
                << g_apszMessageLibNames[i];
        }
        EXPECT_EQ(qvp::ModuleSymbol(BoundMessageLibrary(), "MT_Free"), reinterpret_cast<void*>(g_MessageLib.MT_Free));
    }
}

// The typed fallbacks give 0 and touch nothing.
TEST(MessageLibBinding, FallbacksDoNothing) {
    Bound bound("stub_onlyfree.dll");
    ASSERT_EQ(0, bound.result);
    char* text = nullptr;
    MT_WORD length = 77, a[10] = {};
    EXPECT_EQ(0, g_MessageLib.MT_Init());
    EXPECT_EQ(0, g_MessageLib.MT_ParseMailText(0, "x", 1));
    EXPECT_EQ(0, g_MessageLib.MT_GetSubjectD(0, &text, &length));
    EXPECT_EQ(0, g_MessageLib.MT_GetAttach(0, &a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &a[6], &a[7], &a[8], &a[9]));
    EXPECT_EQ(0, g_MessageLib.MT_Term(0));
    EXPECT_TRUE(text == nullptr && length == 77);
}

// Readers share one load, the last unloads it (a failed load: the mail reader's OpenCloseAndInstalled).
TEST(MessageLibBinding, CountsReadersAndLoadsOnce) {
    Use("sNqxMsgNet.dll");
    ASSERT_EQ(0, BindMessageLibrary());
    qvp::Module* hFirst = BoundMessageLibrary();
    ASSERT_NE(nullptr, hFirst);
    ASSERT_EQ(0, BindMessageLibrary());
    EXPECT_EQ(0, UnbindMessageLibrary());
    EXPECT_EQ(hFirst, BoundMessageLibrary());
    EXPECT_EQ(0, UnbindMessageLibrary());
    EXPECT_EQ(nullptr, BoundMessageLibrary());
}

}  // namespace
