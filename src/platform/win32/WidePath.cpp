// WidePath.cpp - ANSI paths to long wide paths (see WidePath.h).
#include "platform/win32/WidePath.h"

#include <windows.h>

#include <cstdio>

#include "platform/LongPath.h"
#include "platform/win32/DriveHives.h"

namespace qvp {
namespace win32 {

std::wstring WidePath(const wchar_t* wide) {
    if (wide == nullptr || *wide == 0) return std::wstring();
    std::wstring cwd(MAX_PATH, L'\0');
    DWORD n = ::GetCurrentDirectoryW(static_cast<DWORD>(cwd.size()), &cwd[0]);
    if (n >= cwd.size()) {
        cwd.resize(n);
        n = ::GetCurrentDirectoryW(n, &cwd[0]);
    }
    cwd.resize(n);
    const std::wstring path = wide;
    const std::u16string full =
        FullPath(std::u16string(path.begin(), path.end()), std::u16string(cwd.begin(), cwd.end()));
    return std::wstring(full.begin(), full.end());
}

namespace {

bool InTempFolder(const std::wstring& path) {
    wchar_t temp[MAX_PATH + 1] = {};
    const DWORD n = ::GetTempPathW(MAX_PATH + 1, temp);
    return n > 0 && n <= MAX_PATH && path.size() >= n &&
           ::CompareStringOrdinal(path.c_str(), static_cast<int>(n), temp, static_cast<int>(n), TRUE) == CSTR_EQUAL;
}

}  // namespace

std::wstring AnsiToWide(const char* ansi) {
    if (ansi == nullptr || *ansi == 0) return std::wstring();
    const int n = ::MultiByteToWideChar(kAnsiCodePage, 0, ansi, -1, nullptr, 0);
    if (n <= 0) return std::wstring();
    std::wstring wide(static_cast<size_t>(n), L'\0');
    if (::MultiByteToWideChar(kAnsiCodePage, 0, ansi, -1, &wide[0], n) <= 0) return std::wstring();
    wide.pop_back();  // the NUL
    return wide;
}

std::wstring WidePath(const char* ansi) {
    std::wstring wide = AnsiToWide(ansi);
    if (wide.empty()) return wide;
    // On a copied drive the store's paths name the drive's files; the temp
    // folder (TempPath) stays this machine's.
    std::wstring host;
    if (!WindowsRoot().empty() && !InTempFolder(wide)) {
        if (!DrivePath(wide, &host)) return std::wstring();
        wide.swap(host);
    }
    return WidePath(wide.c_str());
}

void AnsiName(const wchar_t* wide, char* out, int size) {
    if (size <= 0) return;
    const int n = ::WideCharToMultiByte(kAnsiCodePage, 0, wide, -1, out, size, "?", nullptr);
    if (n <= 0) {
        // Longer than the buffer: the part that fits, cut at a whole character.
        out[0] = 0;
        std::wstring part = wide;
        while (!part.empty() && ::WideCharToMultiByte(kAnsiCodePage, 0, part.c_str(), -1, out, size, "?", nullptr) <= 0)
            part.pop_back();
    }
    out[size - 1] = 0;
}

long ReadHead(const std::wstring& path, unsigned char* out, size_t size) {
    FILE* stream = ::_wfopen(path.c_str(), L"rb");
    if (stream == nullptr) return -1;
    const size_t n = std::fread(out, 1, size, stream);
    std::fclose(stream);
    return static_cast<long>(n);
}

}  // namespace win32
}  // namespace qvp
