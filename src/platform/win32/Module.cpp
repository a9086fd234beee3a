// Module.cpp - dynamic libraries and the critical section on Windows.
#include "platform/platform.h"
#include "platform/win32/Causes.h"
#include "platform/win32/WidePath.h"

#include <windows.h>

#include <new>
#include <string>

namespace qvp {

struct Module {
    HMODULE handle;
};

struct CriticalSection {
    CRITICAL_SECTION section;
};

// A DLL built by mingw-w64 with its thread runtime linked in takes a TLS
// slot of that runtime's own each time it is loaded (on i686 already when
// libgcc registers the DLL's unwind tables) and never gives it back. A
// process has 1088 slots: one that loads and frees such a library a thousand
// times, a walk at a time, aborts. So a library, once loaded, is pinned:
// FreeLibrary leaves it in place and every later load finds it there.
Module* ModuleLoad(const char* fileName) {
    if (fileName == nullptr || *fileName == 0) return nullptr;
    // The name is code page 932 text, as every path of the readers.
    const std::wstring wide = win32::AnsiToWide(fileName);
    const HMODULE handle = wide.empty() ? nullptr : ::LoadLibraryW(wide.c_str());
    if (handle == nullptr) {
        win32::ThrowIfNoMemory(::GetLastError());
        return nullptr;
    }
    HMODULE pinned = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                         reinterpret_cast<LPCWSTR>(handle), &pinned);
    Module* module = new (std::nothrow) Module{handle};
    if (module == nullptr) {
        ::FreeLibrary(handle);
        throw std::bad_alloc();
    }
    return module;
}

void* ModuleSymbol(Module* module, const char* name) {
    if (module == nullptr || name == nullptr) return nullptr;
    return reinterpret_cast<void*>(::GetProcAddress(module->handle, name));
}

bool ModuleFree(Module* module) {
    if (module == nullptr) return false;
    const bool ok = ::FreeLibrary(module->handle) != 0;
    delete module;
    return ok;
}

CriticalSection* CriticalSectionCreate() {
    CriticalSection* cs = new (std::nothrow) CriticalSection;
    if (cs != nullptr) ::InitializeCriticalSection(&cs->section);
    return cs;
}

void CriticalSectionEnter(CriticalSection* cs) {
    if (cs != nullptr) ::EnterCriticalSection(&cs->section);
}

void CriticalSectionLeave(CriticalSection* cs) {
    if (cs != nullptr) ::LeaveCriticalSection(&cs->section);
}

void CriticalSectionDestroy(CriticalSection* cs) {
    if (cs == nullptr) return;
    ::DeleteCriticalSection(&cs->section);
    delete cs;
}

}  // namespace qvp
