// test_binding.cpp - the message library binding against the real library
// and against stub libraries with missing functions.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "messagelib/MessageLib.h"
#include "platform/platform.h"

namespace {

void* Fallback() { return reinterpret_cast<void*>(&MissingFunction); }

// The libraries are loaded from the build's lib folder by path: under the
// address sanitizer dlopen is called from the sanitizer's runtime, whose
// search path does not hold the test program's own.
const char* LibPath(const char* pszFile) {
    static std::string s_paths[8];
    static int s_used = 0;
    std::string path = std::string(QV_TEST_BINARY_DIR) + "/lib/" + pszFile;
    for (int i = 0; i < s_used; ++i)
        if (s_paths[i] == path) return s_paths[i].c_str();
    s_paths[s_used] = path;
    return s_paths[s_used++].c_str();
}

// Binds a library by its Windows name for the span of a test.
class Bound {
public:
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

size_t IndexOf(const char* pszName) {
    for (size_t i = 0; i < kMessageLibNameCount; ++i)
        if (std::strcmp(g_apszMessageLibNames[i], pszName) == 0) return i;
    return kMessageLibNameCount;
}

const char* const kCalled[] = {"MT_Init",        "MT_Term",      "MT_Free",
                               "MT_ParseMailText", "MT_GetMainHeadPosition", "MT_GetMainNext",
                               "MT_GetAttach",   "MT_GetSubjectD", "MT_GetMessageIDD"};

TEST(MessageLibNames, FamiliesInOrderAndUnique) {
    struct Case {
        const char* prefix;
        size_t first;
        size_t count;
    };
    const Case cases[] = {{"RXN_", 0, 6},   {"MT_", 6, 92},   {"DT_", 98, 15}, {"P3_", 113, 19},
                          {"SP_", 132, 12}, {"MB_", 144, 17}, {"MU_", 161, 12}};
    size_t total = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.prefix);
        for (size_t i = c.first; i < c.first + c.count; ++i)
            EXPECT_EQ(0, std::strncmp(g_apszMessageLibNames[i], c.prefix, std::strlen(c.prefix))) << i;
        total += c.count;
    }
    EXPECT_EQ(kMessageLibNameCount, total);
    std::set<std::string> unique(g_apszMessageLibNames, g_apszMessageLibNames + kMessageLibNameCount);
    EXPECT_EQ(kMessageLibNameCount, unique.size());
    // Spelled as the library exports them, and in the order of resolving.
    EXPECT_STREQ("RXN_GetNqxMsgNetVersion", g_apszMessageLibNames[kMessageLibHousekeepingCount]);
    EXPECT_NE(kMessageLibNameCount, IndexOf("MT_GetSendTimeE_Part2"));
    EXPECT_NE(kMessageLibNameCount, IndexOf("P3_ExecDeleteMailOfRecieve"));
    EXPECT_STREQ("MU_MapGetNextAssoc", g_apszMessageLibNames[kMessageLibNameCount - 1]);
    for (const char* name : kCalled) EXPECT_NE(kMessageLibNameCount, IndexOf(name)) << name;
}

TEST(MessageLibBinding, NullModuleAndFallback) {
    EXPECT_EQ(0, ResolveHousekeeping(nullptr));
    EXPECT_EQ(0, ResolveFunctions(nullptr));
    EXPECT_EQ(0, UnloadMessageLibrary(nullptr));
    EXPECT_EQ(0, MissingFunction());
}

// Each library against what the table must then hold for the nine called
// names and for the names it does not export.
TEST(MessageLibBinding, ResolvesEachLibrary) {
    struct Case {
        const char* file;
        const char* exported[9];  // names the library has, null-padded
    };
    const Case cases[] = {
        {"sNqxMsgNet.dll",
         {"MT_Init", "MT_Term", "MT_Free", "MT_ParseMailText", "MT_GetMainHeadPosition",
          "MT_GetMainNext", "MT_GetAttach", "MT_GetSubjectD", "MT_GetMessageIDD"}},
        {"stub_onlyfree.dll", {"MT_Free"}},
        {"stub_mock.dll",
         {"MT_Init", "MT_Term", "MT_Free", "MT_ParseMailText", "MT_GetMainHeadPosition",
          "MT_GetMainNext", "MT_GetAttach", "MT_GetSubjectD", "MT_GetMessageIDD"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        Bound bound(c.file);
        ASSERT_EQ(0, bound.result);
        qvp::Module* hModule = BoundMessageLibrary();
        ASSERT_NE(nullptr, hModule);
        for (size_t i = 0; i < kMessageLibNameCount; ++i) {
            void* p = qvp::ModuleSymbol(hModule, g_apszMessageLibNames[i]);
            EXPECT_EQ(p != nullptr ? p : Fallback(), g_apfnMessageLib[i]) << g_apszMessageLibNames[i];
        }
        std::set<std::string> exported;
        for (const char* name : c.exported)
            if (name != nullptr) exported.insert(name);
        // The typed entries: the library's own where it has them.
        const void* typed[9] = {
            reinterpret_cast<void*>(g_MessageLib.MT_Init),
            reinterpret_cast<void*>(g_MessageLib.MT_Term),
            reinterpret_cast<void*>(g_MessageLib.MT_Free),
            reinterpret_cast<void*>(g_MessageLib.MT_ParseMailText),
            reinterpret_cast<void*>(g_MessageLib.MT_GetMainHeadPosition),
            reinterpret_cast<void*>(g_MessageLib.MT_GetMainNext),
            reinterpret_cast<void*>(g_MessageLib.MT_GetAttach),
            reinterpret_cast<void*>(g_MessageLib.MT_GetSubjectD),
            reinterpret_cast<void*>(g_MessageLib.MT_GetMessageIDD),
        };
        for (size_t k = 0; k < 9; ++k) {
            void* own = qvp::ModuleSymbol(hModule, kCalled[k]);
            EXPECT_EQ(exported.count(kCalled[k]) != 0, own != nullptr) << kCalled[k];
            if (own != nullptr) EXPECT_EQ(own, typed[k]) << kCalled[k];
            else EXPECT_NE(nullptr, typed[k]) << kCalled[k];
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
    EXPECT_EQ(0, g_MessageLib.MT_GetAttach(0, &a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &a[6], &a[7],
                                           &a[8], &a[9]));
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

TEST(MessageLibBinding, CountsReadersAndLoadsOnce) {
    SetMessageLibraryNameForTests(LibPath("sNqxMsgNet.dll"));
    ASSERT_EQ(0, AddLibraryRef(0));
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

TEST(MessageLibBinding, FailedLoadTakesTheCountBackAndIsTriedAgain) {
    SetMessageLibraryNameForTests(LibPath("stub_not_there.dll"));
    EXPECT_EQ(-3, BindMessageLibrary());
    EXPECT_EQ(0, AddLibraryRef(0));
    EXPECT_EQ(nullptr, BoundMessageLibrary());
    SetMessageLibraryNameForTests(LibPath("sNqxMsgNet.dll"));
    EXPECT_EQ(0, BindMessageLibrary());
    EXPECT_NE(nullptr, BoundMessageLibrary());
    EXPECT_EQ(0, UnbindMessageLibrary());
}

TEST(MessageLibBinding, ReloadAfterLastCloseFillsTheTableAnew) {
    {
        Bound bound("stub_onlyfree.dll");
        ASSERT_EQ(0, bound.result);
        EXPECT_EQ(Fallback(), g_apfnMessageLib[IndexOf("MT_Init")]);
    }
    Bound bound("sNqxMsgNet.dll");
    ASSERT_EQ(0, bound.result);
    EXPECT_NE(Fallback(), g_apfnMessageLib[IndexOf("MT_Init")]);
    EXPECT_EQ(qvp::ModuleSymbol(BoundMessageLibrary(), "MT_Init"), g_apfnMessageLib[IndexOf("MT_Init")]);
    // The real library parses: a root, a subject.
    MT_WORD root = g_MessageLib.MT_Init();
    ASSERT_NE(0, root);
    const char mail[] = "Subject: hello\r\n\r\nbody\r\n";
    g_MessageLib.MT_ParseMailText(root, mail, sizeof mail - 1);
    char* text = nullptr;
    MT_WORD length = 0;
    if (g_MessageLib.MT_GetSubjectD(root, &text, &length) != 0) {
        EXPECT_EQ(std::string("hello"), std::string(text, static_cast<size_t>(length)));
    }
    g_MessageLib.MT_Free(text);
    g_MessageLib.MT_Term(root);
}

}  // namespace
