// MessageLib.h - run-time binding of the message library "sNqxMsgNet.dll".
//
// The library is not linked: the first mail reader to open loads it and looks
// up all 173 of its exports by name into one process-wide table; the last
// reader to close unloads it. A name the library does not export gets a
// fallback that does nothing and gives 0, so an older or smaller library
// binds all the same. Nine of the functions are called; they have typed
// entries (a call through a pointer of another type would be undefined), the
// rest are kept as plain addresses.
#ifndef QV_MESSAGELIB_MESSAGELIB_H
#define QV_MESSAGELIB_MESSAGELIB_H

#include <cstddef>
#include <cstdint>

#include "sNqxMsgNet.h"

namespace qvp {
struct Module;
}

// Number of names resolved, and how many of them are housekeeping names that
// ResolveHousekeeping fills (the first five).
enum : size_t { kMessageLibNameCount = 173, kMessageLibHousekeepingCount = 5 };

// The exported names in the order of resolving.
extern const char* const g_apszMessageLibNames[kMessageLibNameCount];

// The resolved address of each name, or the address of MissingFunction.
extern void* g_apfnMessageLib[kMessageLibNameCount];

// The nine functions the reader calls, each the library's own or a typed
// fallback.
struct MessageLibFunctions {
    PFN_MT_Init MT_Init;
    PFN_MT_Term MT_Term;
    PFN_MT_Free MT_Free;
    PFN_MT_ParseMailText MT_ParseMailText;
    PFN_MT_GetMainHeadPosition MT_GetMainHeadPosition;
    PFN_MT_GetMainNext MT_GetMainNext;
    PFN_MT_GetAttach MT_GetAttach;
    PFN_MT_GetSubjectD MT_GetSubjectD;
    PFN_MT_GetMessageIDD MT_GetMessageIDD;
};
extern MessageLibFunctions g_MessageLib;

// Adds +1 or -1 to the number of readers that rely on the library; gives the
// new count.
int32_t AddLibraryRef(int32_t nDelta);
// Loads the library by its bare file name; null on failure.
qvp::Module* LoadMessageLibrary();
// Fills the housekeeping entries. 1, or 0 for a null module.
int32_t ResolveHousekeeping(qvp::Module* hModule);
// Fills the other 168 entries and the nine typed ones. 1, or 0 for a null
// module.
int32_t ResolveFunctions(qvp::Module* hModule);
// Unloads the module. 1 on success; 0 for a null module or a failure.
int32_t UnloadMessageLibrary(qvp::Module* hModule);
// The fallback of every untyped entry: enters and leaves the fallback lock
// and gives 0. It looks at no argument.
MT_WORD MissingFunction();

// The binding as the reader's open and close use it. BindMessageLibrary:
// 0, or -3 when the library cannot be loaded (the count is taken back).
// UnbindMessageLibrary: 0, or -3 when the unload fails.
int32_t BindMessageLibrary();
int32_t UnbindMessageLibrary();

// The module bound now, null when none.
qvp::Module* BoundMessageLibrary();

// Tests load stub libraries under their own Windows file name ("stub_x.dll").
// Null restores "sNqxMsgNet.dll". The text must outlive its use.
void SetMessageLibraryNameForTests(const char* pszFileName);

#endif  // QV_MESSAGELIB_MESSAGELIB_H
