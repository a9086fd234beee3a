// MessageLib.cpp - loading the message library and filling its function table.
#include "messagelib/MessageLib.h"

#include "platform/platform.h"

namespace {

// The one lock of the fallback. It guards nothing: entering it is the whole
// of the fallback's work, kept so that a missing function costs what the
// client's own binding costs. Made with the module, destroyed with it.
struct FallbackLock {
    qvp::CriticalSection* pcs = qvp::CriticalSectionCreate();
    ~FallbackLock() {
        if (pcs != nullptr) qvp::CriticalSectionDestroy(pcs);
    }
};
FallbackLock g_fallbackLock;

void EnterLeaveFallbackLock() {
    if (g_fallbackLock.pcs != nullptr) {
        qvp::CriticalSectionEnter(g_fallbackLock.pcs);
        qvp::CriticalSectionLeave(g_fallbackLock.pcs);
    }
}

// Typed fallbacks of the nine called functions.
MT_WORD MissingInit() { return MissingFunction(); }
MT_WORD MissingTerm(MT_WORD) { return MissingFunction(); }
MT_WORD MissingFree(void*) { return MissingFunction(); }
MT_WORD MissingParseMailText(MT_WORD, const char*, MT_WORD) { return MissingFunction(); }
MT_WORD MissingGetMainHeadPosition(MT_WORD) { return MissingFunction(); }
MT_WORD MissingGetMainNext(MT_WORD, MT_WORD*, MT_WORD*, MT_WORD*, MT_WORD*, MT_WORD*, MT_WORD*,
                           MT_WORD*, MT_WORD*, MT_WORD*, MT_WORD*, MT_WORD*, MT_WORD, MT_WORD,
                           MT_WORD, MT_WORD, MT_WORD, MT_WORD, MT_WORD, MT_WORD, MT_WORD, MT_WORD,
                           MT_WORD, MT_WORD, MT_WORD, MT_WORD) {
    return MissingFunction();
}
MT_WORD MissingGetAttach(MT_WORD, MT_WORD*, MT_WORD*, MT_WORD*, MT_WORD*, MT_WORD*, MT_WORD*,
                         MT_WORD*, MT_WORD*, MT_WORD*, MT_WORD*) {
    return MissingFunction();
}
MT_WORD MissingGetText(MT_WORD, char**, MT_WORD*) { return MissingFunction(); }

const char kDefaultFileName[] = "sNqxMsgNet.dll";
const char* g_pszFileName = kDefaultFileName;

int32_t g_nLibraryCount = 0;
qvp::Module* g_hModule = nullptr;

void* AsEntry(MT_WORD (*pfn)()) { return reinterpret_cast<void*>(pfn); }

// Looks a name up; null when the module lacks it.
void* Lookup(qvp::Module* hModule, size_t nIndex) {
    return qvp::ModuleSymbol(hModule, g_apszMessageLibNames[nIndex]);
}

template <typename Pfn>
void ResolveTyped(qvp::Module* hModule, size_t nIndex, Pfn& pfn, Pfn pfnFallback) {
    void* p = Lookup(hModule, nIndex);
    pfn = p != nullptr ? reinterpret_cast<Pfn>(p) : pfnFallback;
}

// Index of a name in the table, for the typed entries.
size_t IndexOf(const char* pszName) {
    for (size_t i = 0; i < kMessageLibNameCount; ++i) {
        const char* a = g_apszMessageLibNames[i];
        const char* b = pszName;
        while (*a != '\0' && *a == *b) {
            ++a;
            ++b;
        }
        if (*a == *b) return i;
    }
    return kMessageLibNameCount;
}

}  // namespace

const char* const g_apszMessageLibNames[kMessageLibNameCount] = {
    "RXN_GarbageCollection",
    "RXN_GarbageObjectManager",
    "RXN_TraceObjectManager",
    "RXN_GarbageMemManager",
    "RXN_TraceMemManager",
    "RXN_GetNqxMsgNetVersion",
    "MT_Free",
    "MT_Init",
    "MT_Term",
    "MT_EntryRoot",
    "MT_AddMain",
    "MT_AddAttachOne",
    "MT_AddAttach",
    "MT_BuildMailText",
    "MT_ParseMailText",
    "MT_ParseMailTextHeader",
    "MT_GetBufferE",
    "MT_GetBufferD",
    "MT_GetRoot",
    "MT_GetMainHeadPosition",
    "MT_GetMainNext",
    "MT_GetAttachCount",
    "MT_GetAttach",
    "MT_GetMainFileE",
    "MT_GetMainFileD",
    "MT_GetAttachFileE",
    "MT_GetAttachFileD",
    "MT_GetHeaderE",
    "MT_GetHeaderD",
    "MT_GetNameValueE",
    "MT_GetNameValueD",
    "MT_FindE",
    "MT_FindD",
    "MT_FindEArray",
    "MT_FindDArray",
    "MT_GetInReplyToE",
    "MT_GetInReplyToD",
    "MT_GetReferencesE",
    "MT_GetReferencesD",
    "MT_GetReE",
    "MT_GetReD",
    "MT_GetSubjectE",
    "MT_GetSubjectD",
    "MT_GetFromE",
    "MT_GetFromD",
    "MT_GetToE",
    "MT_GetToD",
    "MT_GetCcE",
    "MT_GetCcD",
    "MT_GetBccE",
    "MT_GetBccD",
    "MT_GetSenderE",
    "MT_GetSenderD",
    "MT_GetReplyToE",
    "MT_GetReplyToD",
    "MT_GetMailReplyToE",
    "MT_GetMailReplyToD",
    "MT_GetMailFollowupToE",
    "MT_GetMailFollowupToD",
    "MT_GetContentTypeE",
    "MT_GetContentTypeD",
    "MT_GetTargetNameE",
    "MT_GetTargetNameD",
    "MT_GetFileNameE",
    "MT_GetFileNameD",
    "MT_GetContentTransferEncodingE",
    "MT_GetContentTransferEncodingD",
    "MT_GetContentDescriptionE",
    "MT_GetContentDescriptionD",
    "MT_GetContentDispositionE",
    "MT_GetContentDispositionD",
    "MT_GetContentIDE",
    "MT_GetContentIDD",
    "MT_GetReturnPathE",
    "MT_GetReturnPathD",
    "MT_GetReceivedE",
    "MT_GetReceivedD",
    "MT_GetCommentE",
    "MT_GetCommentD",
    "MT_GetSendDateE",
    "MT_GetSendDateD",
    "MT_GetSendTimeE_Part2",
    "MT_GetSendTimeD_Part2",
    "MT_GetMimeVersionE",
    "MT_GetMimeVersionD",
    "MT_GetMessageIDE",
    "MT_GetMessageIDD",
    "MT_GetXSpecialActionE",
    "MT_GetXSpecialActionD",
    "MT_GetXMailerE",
    "MT_GetXMailerD",
    "MT_GetXPriorityE",
    "MT_GetXPriorityD",
    "MT_GetXUIDLE",
    "MT_GetXUIDLD",
    "MT_GetPartCount",
    "MT_GetPartD",
    "MT_GetPartE",
    "DT_Free",
    "DT_Init",
    "DT_Term",
    "DT_IsLoading",
    "DT_Login",
    "DT_Login2",
    "DT_Login3",
    "DT_Logout",
    "DT_GetEntryName",
    "DT_IsActiveEntryName",
    "DT_LogoutEntryName",
    "DT_GetEntryAll",
    "DT_GetDefaultUser",
    "DT_SetDefaultUser",
    "DT_DisplayAccessPoint",
    "P3_Free",
    "P3_Init",
    "P3_Term",
    "P3_ExecClearCancel",
    "P3_EntryCallBack",
    "P3_ExecOpenServer",
    "P3_ExecRecvMail",
    "P3_ExecDeleteMail",
    "P3_ExecCloseServer",
    "P3_ExecCancel",
    "P3_GetLastError",
    "P3_GetErrorMessage",
    "P3_ExecAuth",
    "P3_ExecAuthDialog",
    "P3_ExecGetUIDL",
    "P3_ExecGetServerMailInfoSV",
    "P3_ExecRecvMailSV",
    "P3_ExecDeleteMailSV",
    "P3_ExecDeleteMailOfRecieve",
    "SP_Free",
    "SP_Init",
    "SP_Term",
    "SP_ExecClearCancel",
    "SP_EntryCallBack",
    "SP_ExecOpenServer",
    "SP_ExecSendMail",
    "SP_ExecCloseServer",
    "SP_ExecCancel",
    "SP_GetLastError",
    "SP_GetErrorMessage",
    "SP_SendMail",
    "MB_Free",
    "MB_Init",
    "MB_Term",
    "MB_InitMailBox",
    "MB_TermMailBox",
    "MB_ReadMailBox",
    "MB_WriteMailBox",
    "MB_GetIndexFileName",
    "MB_GetDataFileName",
    "MB_GetCount",
    "MB_Add",
    "MB_RemoveAt",
    "MB_GetAtIndex",
    "MB_GetAtData",
    "MB_GetHeadPosition",
    "MB_GetNextIndex",
    "MB_GetNextData",
    "MU_Free",
    "MU_Init",
    "MU_Term",
    "MU_Open",
    "MU_Read",
    "MU_Write",
    "MU_Lookup",
    "MU_Add",
    "MU_RemoveAt",
    "MU_GetAt",
    "MU_MapGetStartPosition",
    "MU_MapGetNextAssoc",
};

void* g_apfnMessageLib[kMessageLibNameCount];

MessageLibFunctions g_MessageLib = {
    MissingInit,          MissingTerm,        MissingFree,      MissingParseMailText,
    MissingGetMainHeadPosition, MissingGetMainNext, MissingGetAttach, MissingGetText,
    MissingGetText,
};

MT_WORD MissingFunction() {
    EnterLeaveFallbackLock();
    return 0;
}

int32_t AddLibraryRef(int32_t nDelta) {
    g_nLibraryCount += nDelta;
    return g_nLibraryCount;
}

qvp::Module* LoadMessageLibrary() { return qvp::ModuleLoad(g_pszFileName); }

int32_t ResolveHousekeeping(qvp::Module* hModule) {
    if (hModule == nullptr) return 0;
    for (size_t i = 0; i < kMessageLibHousekeepingCount; ++i) {
        void* p = Lookup(hModule, i);
        g_apfnMessageLib[i] = p != nullptr ? p : AsEntry(MissingFunction);
    }
    return 1;
}

int32_t ResolveFunctions(qvp::Module* hModule) {
    if (hModule == nullptr) return 0;
    for (size_t i = kMessageLibHousekeepingCount; i < kMessageLibNameCount; ++i) {
        void* p = Lookup(hModule, i);
        g_apfnMessageLib[i] = p != nullptr ? p : AsEntry(MissingFunction);
    }
    static const size_t s_anIndex[9] = {
        IndexOf("MT_Init"),          IndexOf("MT_Term"),        IndexOf("MT_Free"),
        IndexOf("MT_ParseMailText"), IndexOf("MT_GetMainHeadPosition"),
        IndexOf("MT_GetMainNext"),   IndexOf("MT_GetAttach"),   IndexOf("MT_GetSubjectD"),
        IndexOf("MT_GetMessageIDD"),
    };
    MessageLibFunctions& f = g_MessageLib;
    ResolveTyped(hModule, s_anIndex[0], f.MT_Init, &MissingInit);
    ResolveTyped(hModule, s_anIndex[1], f.MT_Term, &MissingTerm);
    ResolveTyped(hModule, s_anIndex[2], f.MT_Free, &MissingFree);
    ResolveTyped(hModule, s_anIndex[3], f.MT_ParseMailText, &MissingParseMailText);
    ResolveTyped(hModule, s_anIndex[4], f.MT_GetMainHeadPosition, &MissingGetMainHeadPosition);
    ResolveTyped(hModule, s_anIndex[5], f.MT_GetMainNext, &MissingGetMainNext);
    ResolveTyped(hModule, s_anIndex[6], f.MT_GetAttach, &MissingGetAttach);
    ResolveTyped(hModule, s_anIndex[7], f.MT_GetSubjectD, &MissingGetText);
    ResolveTyped(hModule, s_anIndex[8], f.MT_GetMessageIDD, &MissingGetText);
    return 1;
}

int32_t UnloadMessageLibrary(qvp::Module* hModule) {
    if (hModule == nullptr) return 0;
    return qvp::ModuleFree(hModule) ? 1 : 0;
}

// Every table entry back to its fallback: no entry may point into a module
// that is gone.
static void ResetFunctions() {
    for (void*& p : g_apfnMessageLib) p = AsEntry(MissingFunction);
    g_MessageLib = MessageLibFunctions{
        MissingInit,          MissingTerm,        MissingFree,      MissingParseMailText,
        MissingGetMainHeadPosition, MissingGetMainNext, MissingGetAttach, MissingGetText,
        MissingGetText,
    };
}

int32_t BindMessageLibrary() {
    if (g_hModule != nullptr) {
        AddLibraryRef(+1);
        return 0;
    }
    // Nothing is counted or kept until the module stands with its table
    // filled: a load that throws (out of memory) or fails leaves the binding
    // as it was, and the next reader tries again.
    qvp::Module* hModule = LoadMessageLibrary();
    if (hModule == nullptr) return -3;
    ResolveHousekeeping(hModule);
    ResolveFunctions(hModule);
    g_hModule = hModule;
    g_nLibraryCount = 1;
    return 0;
}

int32_t UnbindMessageLibrary() {
    if (g_hModule == nullptr || AddLibraryRef(-1) > 0) return 0;
    // The module is forgotten either way: a module that failed to unload is
    // not used again.
    qvp::Module* hModule = g_hModule;
    g_hModule = nullptr;
    g_nLibraryCount = 0;
    ResetFunctions();
    return UnloadMessageLibrary(hModule) != 0 ? 0 : -3;
}

qvp::Module* BoundMessageLibrary() { return g_hModule; }

void SetMessageLibraryNameForTests(const char* pszFileName) {
    g_pszFileName = pszFileName != nullptr ? pszFileName : kDefaultFileName;
}
