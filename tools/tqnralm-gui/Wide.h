// UTF-8 to and from the UTF-16 of the W functions, and the few file calls
// the window makes itself (the export makes its own).
#ifndef TQNRALM_GUI_WIDE_H
#define TQNRALM_GUI_WIDE_H

#include "WindowsApi.h"

#include <cstdio>
#include <string>

namespace tqnralm {
namespace gui {

inline std::wstring Wide(const std::string& utf8) {
    const int n = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
    std::wstring out(n, L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), &out[0], n);
    return out;
}

inline std::string Utf8(const std::wstring& wide) {
    const int n = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), nullptr, 0, nullptr,
                                      nullptr);
    std::string out(n, '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), &out[0], n, nullptr, nullptr);
    return out;
}

inline void SetText(HWND control, const std::string& text) { SetWindowTextW(control, Wide(text).c_str()); }

inline bool FileExists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

// A file's bytes, or "" when it cannot be read.
inline std::string ReadAll(const std::wstring& path) {
    std::string text;
    if (FILE* f = _wfopen(path.c_str(), L"rb")) {
        char buffer[65536];
        for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, f)) > 0;) text.append(buffer, n);
        std::fclose(f);
    }
    return text;
}

}  // namespace gui
}  // namespace tqnralm

#endif
