// test_binding.cpp - the message library binding against the real library
// and against stub libraries with missing functions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>

#include "messagelib/MessageLib.h"
#include "platform/platform.h"

namespace {

void* Fallback() { return reinterpret_cast<void*>(&MissingFunction); }

// The libraries are loaded by path from the build's lib folder: under the
// address sanitizer dlopen runs from the sanitizer's runtime, which does
// not search the test program's own path.
const char* LibPath(const char* pszFile) {
    static std::set<std::string> s_paths;  // elements stay put
    return s_paths.insert(std::string(QV_TEST_LIBRARY_DIR) + "/" + pszFile).first->c_str();
}

// Binds a library by its Windows name for the span of a test.
struct Bound {
    explicit Bound(const char* pszName) {
        SetMessageLibraryNameForTests(LibPath(pszName));
        result = BindMessageLibrary();
    }
    ~Bound() {
        if (result == 0) UnbindMessageLibrary();
        SetMessageLibraryNameForTests(LibPath("sNqxMsgNet.dll"));
    }
    int32_t result;
};

bool Listed(const char* pszName) {
    const char* const* end = g_apszMessageLibNames + kMessageLibNameCount;
    return std::find_if(g_apszMessageLibNames, end, [&](const char* p) { return std::strcmp(p, pszName) == 0; }) != end;
}

const char* const kCalled[] = {"MT_Init",      "MT_Term",        "MT_Free",       "MT_ParseMailText", "MT_GetMainHeadPosition",
                               "MT_GetMainNext", "MT_GetAttach", "MT_GetSubjectD", "MT_GetMessageIDD"};

TEST(MessageLibNames, UniqueAndSpelledAsExported) {
    EXPECT_EQ(kMessageLibNameCount, std::set<std::string>(g_apszMessageLibNames,
                                                          g_apszMessageLibNames + kMessageLibNameCount).size());
    EXPECT_STREQ("RXN_GetNqxMsgNetVersion", g_apszMessageLibNames[kMessageLibHousekeepingCount]);
    EXPECT_TRUE(Listed("MT_GetSendTimeE_Part2"));
    EXPECT_TRUE(Listed("P3_ExecDeleteMailOfRecieve"));  // sic
    for (const char* name : kCalled) EXPECT_TRUE(Listed(name)) << name;
}

TEST(MessageLibBinding, NullModuleAndFallback) {
    EXPECT_EQ(0, ResolveHousekeeping(nullptr));
    EXPECT_EQ(0, ResolveFunctions(nullptr));
    EXPECT_EQ(0, UnloadMessageLibrary(nullptr));
    EXPECT_EQ(0, MissingFunction());
}

// Each library against what the table must then hold: its own function
// where it has one, a fallback elsewhere, in the untyped and typed views.
TEST(MessageLibBinding, ResolvesEachLibrary) {
    const struct {
        const char* file;
        bool all;  // has the nine called names, else only MT_Free
    } cases[] = {{"sNqxMsgNet.dll", true}, {"stub_onlyfree.dll", false}, {"stub_mock.dll", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        Bound bound(c.file);
        ASSERT_EQ(0, bound.result);
        qvp::Module* hModule = BoundMessageLibrary();
        ASSERT_NE(nullptr, hModule);
        for (size_t i = 0; i < kMessageLibNameCount; ++i) {
            void* p = qvp::ModuleSymbol(hModule, g_apszMessageLibNames[i]);
            EXPECT_EQ(p != nullptr ? p : Fallback(), g_apfnMessageLib[i]) << g_apszMessageLibNames[i];
        }
#define QV_TYPED(f) reinterpret_cast<void*>(g_MessageLib.f)
        const void* typed[9] = {QV_TYPED(MT_Init), QV_TYPED(MT_Term), QV_TYPED(MT_Free), QV_TYPED(MT_ParseMailText),
                                QV_TYPED(MT_GetMainHeadPosition), QV_TYPED(MT_GetMainNext), QV_TYPED(MT_GetAttach),
                                QV_TYPED(MT_GetSubjectD), QV_TYPED(MT_GetMessageIDD)};
#undef QV_TYPED
        for (size_t k = 0; k < 9; ++k) {
            void* own = qvp::ModuleSymbol(hModule, kCalled[k]);
            EXPECT_EQ(c.all || k == 2, own != nullptr) << kCalled[k];
            if (own != nullptr) EXPECT_EQ(own, typed[k]) << kCalled[k];
            else EXPECT_NE(nullptr, typed[k]) << kCalled[k];  // a typed fallback
        }
    }
}

TEST(MessageLibBinding, FallbacksOfAMissingFunctionDoNothing) {
    Bound bound("stub_onlyfree.dll");
    ASSERT_EQ(0, bound.result);
    EXPECT_EQ(0, g_MessageLib.MT_Init());
    char* text = reinterpret_cast<char*>(0x1);
    MT_WORD length = 77;
    EXPECT_EQ(0, g_MessageLib.MT_GetSubjectD(0, &text, &length));
    EXPECT_EQ(reinterpret_cast<char*>(0x1), text);
    EXPECT_EQ(77, length);
    EXPECT_EQ(0, g_MessageLib.MT_GetMessageIDD(0, &text, &length));
    EXPECT_EQ(0, g_MessageLib.MT_ParseMailText(0, "x", 1));
    EXPECT_EQ(0, g_MessageLib.MT_GetMainHeadPosition(0));
    MT_WORD a[10] = {};
    EXPECT_EQ(0, g_MessageLib.MT_GetAttach(0, &a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &a[6], &a[7], &a[8], &a[9]));
    EXPECT_EQ(0, g_MessageLib.MT_Term(0));
    // The one the stub has is its own: it frees what malloc gave.
    EXPECT_EQ(0, g_MessageLib.MT_Free(std::malloc(8)));
}

TEST(MessageLibBinding, LoadsByBareName) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "dlopen runs from the sanitizer's runtime, which has no search path of ours";
#endif
    SetMessageLibraryNameForTests(nullptr);
    qvp::Module* hModule = LoadMessageLibrary();
    ASSERT_NE(nullptr, hModule);
    EXPECT_NE(nullptr, qvp::ModuleSymbol(hModule, "MT_Init"));
    EXPECT_EQ(1, UnloadMessageLibrary(hModule));
    SetMessageLibraryNameForTests(LibPath("sNqxMsgNet.dll"));
}

// A failed load takes the count back and is tried again; readers share one load.
TEST(MessageLibBinding, CountsReadersAndLoadsOnce) {
    SetMessageLibraryNameForTests(LibPath("stub_not_there.dll"));
    EXPECT_EQ(-3, BindMessageLibrary());
    EXPECT_EQ(0, AddLibraryRef(0));
    EXPECT_EQ(nullptr, BoundMessageLibrary());
    SetMessageLibraryNameForTests(LibPath("sNqxMsgNet.dll"));
    ASSERT_EQ(0, BindMessageLibrary());
    qvp::Module* hFirst = BoundMessageLibrary();
    ASSERT_NE(nullptr, hFirst);
    ASSERT_EQ(0, BindMessageLibrary());
    EXPECT_EQ(hFirst, BoundMessageLibrary());
    EXPECT_EQ(2, AddLibraryRef(0));
    EXPECT_EQ(0, UnbindMessageLibrary());
    EXPECT_EQ(hFirst, BoundMessageLibrary());  // still bound for the second reader
    EXPECT_EQ(0, UnbindMessageLibrary());
    EXPECT_EQ(nullptr, BoundMessageLibrary());
    EXPECT_EQ(0, AddLibraryRef(0));
}

}  // namespace
