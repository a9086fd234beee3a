// ShellLink.cpp - the shell link object through COM on Windows.
#include "platform/platform.h"
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
    if (FAILED(::CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA,
                                  reinterpret_cast<void**>(&link))) ||
        link == nullptr)
        return nullptr;
    ShellLink* result = new (std::nothrow) ShellLink{link};
    if (result == nullptr) link->Release();
    return result;
}

bool ShellLinkLoad(ShellLink* link, const char* path) {
    if (link == nullptr || path == nullptr) return false;
    IPersistFile* file = nullptr;
    if (FAILED(link->link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file))) || file == nullptr)
        return false;
    const std::wstring wide = win32::WidePath(path);
    bool ok = !wide.empty() && SUCCEEDED(file->Load(wide.c_str(), STGM_WRITE));
    file->Release();
    return ok;
}

bool ShellLinkGetArguments(ShellLink* link, char* buffer, int size) {
    if (link == nullptr || buffer == nullptr || size <= 0) return false;
    return SUCCEEDED(link->link->GetArguments(buffer, size));
}

void ShellLinkRelease(ShellLink* link) {
    if (link == nullptr) return;
    link->link->Release();
    delete link;
}

}  // namespace qvp
