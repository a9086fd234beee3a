// ShellLink.cpp - the shell link object through COM on Windows.
#include "platform/platform.h"
#include "platform/win32/Causes.h"
#include "platform/win32/WidePath.h"

#include <windows.h>
#include <objbase.h>
#include <objidl.h>
#include <shlguid.h>
#include <shobjidl.h>

#include <cwchar>
#include <new>
#include <string>

namespace qvp {

struct ShellLink {
    IShellLinkW* link;
    bool unicode;  // the loaded file's strings are UTF-16
};

int32_t CoInitialize() { return static_cast<int32_t>(::CoInitialize(nullptr)); }

void CoUninitialize() { ::CoUninitialize(); }

ShellLink* ShellLinkCreate() {
    IShellLinkW* link = nullptr;
    const HRESULT created = ::CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                               reinterpret_cast<void**>(&link));
    win32::ThrowIfComNoMemory(created);
    if (FAILED(created) || link == nullptr) return nullptr;
    ShellLink* result = new (std::nothrow) ShellLink{link, true};
    if (result == nullptr) {
        link->Release();
        throw std::bad_alloc();
    }
    return result;
}

namespace {

// Whether the shortcut file holds its strings in UTF-16 (the IsUnicode bit of
// the header's link flags at offset 20); an old one holds them in the ANSI
// code page of the machine that made it.
bool UnicodeLink(const std::wstring& path) {
    unsigned char header[24] = {};
    const long n = win32::ReadHead(path, header, sizeof header);
    if (n < 0) return true;
    return static_cast<size_t>(n) < sizeof header || (header[20] & 0x80) != 0;
}

}  // namespace

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
        if (SUCCEEDED(loaded)) link->unicode = UnicodeLink(wide);
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

// The arguments as code page 932 text, as the readers take every path. The
// shell reads an ANSI shortcut's bytes in this machine's code page: back
// through that code page they are the bytes the shortcut holds.
bool ShellLinkGetArguments(ShellLink* link, char* buffer, int size) {
    if (link == nullptr || buffer == nullptr || size <= 0) return false;
    std::wstring wide(static_cast<size_t>(size), L'\0');
    const HRESULT result = link->link->GetArguments(&wide[0], size);
    win32::ThrowIfComNoMemory(result);
    if (FAILED(result)) return false;
    wide.resize(std::wcslen(wide.c_str()));
    if (link->unicode) {
        win32::AnsiName(wide.c_str(), buffer, size);
    } else if (::WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, buffer, size, nullptr, nullptr) <= 0) {
        buffer[0] = 0;
    }
    buffer[size - 1] = 0;
    return true;
}

void ShellLinkRelease(ShellLink* link) {
    if (link == nullptr) return;
    link->link->Release();
    delete link;
}

}  // namespace qvp
