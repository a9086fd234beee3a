// ShellLink.cpp - the shell link object through COM on Windows.
#include "platform/platform.h"
#include "platform/win32/Causes.h"
#include "platform/win32/WidePath.h"

#include <windows.h>
#include <objbase.h>
#include <objidl.h>
#include <shlguid.h>
#include <shobjidl.h>

#include <new>

namespace qvp {

struct ShellLink {
    IShellLinkA* link;
};

int32_t CoInitialize() { return static_cast<int32_t>(::CoInitialize(nullptr)); }

void CoUninitialize() { ::CoUninitialize(); }

ShellLink* ShellLinkCreate() {
    IShellLinkA* link = nullptr;
    const HRESULT created = ::CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA,
                                               reinterpret_cast<void**>(&link));
    win32::ThrowIfComNoMemory(created);
    if (FAILED(created) || link == nullptr) return nullptr;
    ShellLink* result = new (std::nothrow) ShellLink{link};
    if (result == nullptr) {
        link->Release();
        throw std::bad_alloc();
    }
    return result;
}

bool ShellLinkLoad(ShellLink* link, const char* path) {
    if (link == nullptr || path == nullptr) return false;
    IPersistFile* file = nullptr;
    const HRESULT queried = link->link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file));
    win32::ThrowIfComNoMemory(queried);
    if (FAILED(queried) || file == nullptr) return false;
    HRESULT loaded = E_FAIL;
    try {
        const std::wstring wide = win32::WidePath(path);
        if (!wide.empty()) loaded = file->Load(wide.c_str(), STGM_WRITE);
    } catch (...) {
        file->Release();
        throw;
    }
    file->Release();
    // E_OUTOFMEMORY from the load is taken for a damaged file: the shell
    // allocates the sizes that the file's blocks claim, so a broken shortcut
    // gives it too, and it must cost its one name, not the walk.
    return SUCCEEDED(loaded);
}

bool ShellLinkGetArguments(ShellLink* link, char* buffer, int size) {
    if (link == nullptr || buffer == nullptr || size <= 0) return false;
    const HRESULT result = link->link->GetArguments(buffer, size);
    win32::ThrowIfComNoMemory(result);
    return SUCCEEDED(result);
}

void ShellLinkRelease(ShellLink* link) {
    if (link == nullptr) return;
    link->link->Release();
    delete link;
}

}  // namespace qvp
