// WidePath.h - an ANSI path of the readers as the wide file functions take
// it: converted from code page 932, absolute, and in the "\\?\"
// form when long (LongPath.h), so that a store whose path passes MAX_PATH is
// read like any other. On a copied drive an ANSI path names the drive's file
// (DriveHives.h), except in this machine's temp folder.
#ifndef QV_PLATFORM_WIN32_WIDEPATH_H
#define QV_PLATFORM_WIN32_WIDEPATH_H

#include <cstddef>
#include <string>

namespace qvp {
namespace win32 {

// The readers' ANSI text is the mail client's, a Japanese program's: code
// page 932 whatever this machine's own ANSI code page is (1252 on an English
// Windows reading a copied Japanese drive). Never CP_ACP or an A call.
constexpr unsigned kAnsiCodePage = 932;

// ANSI text as UTF-16; NULL and text that does not convert give "".
std::wstring AnsiToWide(const char* ansi);

// Empty when the text is no path in the ANSI code page.
std::wstring WidePath(const char* ansi);
std::wstring WidePath(const wchar_t* wide);

// A wide name as ANSI text into `out` (at most `size` bytes with the NUL);
// a character without an ANSI form becomes '?', as the ANSI calls give it.
void AnsiName(const wchar_t* wide, char* out, int size);

// The first bytes of a file (its mark or header) into `out`: how many were
// read, or -1 when the file cannot be opened.
long ReadHead(const std::wstring& path, unsigned char* out, size_t size);

}  // namespace win32
}  // namespace qvp

#endif  // QV_PLATFORM_WIN32_WIDEPATH_H
