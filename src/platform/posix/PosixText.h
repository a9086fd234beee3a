// PosixText.h - text helpers shared by the POSIX platform files.
//
// The Wine prefix names files in UTF-8, keeps registry strings as UTF-16 and
// the readers speak code page 932. These helpers move text between the three
// without going through the Win32-shaped entry points of platform.h.
#ifndef QV_PLATFORM_POSIX_POSIXTEXT_H
#define QV_PLATFORM_POSIX_POSIXTEXT_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/CaseFold.h"

namespace qvp {
namespace posix {

// CP932 bytes to UTF-16. Strict: any invalid sequence fails. Lenient: each
// invalid sequence becomes U+30FB.
bool Cp932ToUtf16(const char* bytes, size_t count, bool strict, std::u16string* out);

// UTF-16 to CP932; a character without a CP932 form becomes '?'. *exact, if
// given, tells whether every character had a form.
std::string Utf16ToCp932(const char16_t* units, size_t count, bool* exact = nullptr);

// UTF-8 to UTF-16. Strict: overlong forms, surrogates and truncated sequences
// fail. Lenient: each bad byte becomes U+FFFD.
bool Utf8ToUtf16(const char* bytes, size_t count, bool strict, std::u16string* out);

// Bytes in another code page to UTF-16 through iconv. False for a code page
// glibc has no converter for, or (strict) for an invalid sequence; lenient,
// each bad byte becomes '?'.
bool IconvToUtf16(uint32_t codePage, const char* bytes, size_t count, bool strict, std::u16string* out);

// UTF-16 to UTF-8; a lone surrogate becomes U+FFFD.
std::string Utf16ToUtf8(const char16_t* units, size_t count);

// CP932 to UTF-8, strictly (a file name with a bad byte names nothing).
bool Cp932ToUtf8(const std::string& cp932, std::string* utf8);

// UTF-8 to CP932, only when every character has a CP932 form.
bool Utf8ToCp932Exact(const std::string& utf8, std::string* cp932);

// Names fold as on Windows (CaseFold.h).
using qvp::Fold;
using qvp::FoldUnit;
using qvp::LowerUnit;

// Whether a name is a DOS name already (eight characters, a dot and three,
// ASCII without the characters DOS forbids), which needs no short name.
bool IsDosName(const std::u16string& name);
// The short name Wine gives a name that is no DOS name: "beta.boxes" is
// "beta~RAG.box".
std::u16string ShortName(const std::u16string& name);

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_POSIXTEXT_H
