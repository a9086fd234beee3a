// MsgCharset.h - the charset seam of the message library.
//
// Every conversion goes through the platform's converter with Windows code
// page numbers; this file only names charsets, guesses the charset of raw
// bytes and keeps ASCII off the converter.
#ifndef QV_MSGLIB_MSGCHARSET_H
#define QV_MSGLIB_MSGCHARSET_H

#include <cstdint>
#include <string>
#include <string_view>

namespace msg {

// Not a code page: bytes whose charset is unknown or undeclared, decoded by
// GuessCodePage.
enum : uint32_t { kCpGuess = 0 };

// The code page of a MIME charset name (any case; an RFC 2231 "*language"
// suffix is ignored). kCpGuess for a charset we do not know.
uint32_t CodePageOfCharset(std::string_view name);

// Raw 8-bit header or body text of old Japanese mail: an escape byte means
// ISO-2022-JP, valid UTF-8 means UTF-8, anything else is taken as Shift-JIS.
uint32_t GuessCodePage(std::string_view bytes);

bool IsValidUtf8(std::string_view bytes);

// Appends the UTF-16 form of bytes in a code page (or kCpGuess). Invalid
// sequences do not fail: the converter's replacement, or '?' when the
// converter refuses the whole text, stands in for them.
void AppendWide(uint32_t codePage, std::string_view bytes, std::u16string* out);

// UTF-16 to code page 932; a character without a CP932 form becomes '?'.
std::string WideToCp932(std::u16string_view wide);

// Bytes in a code page (or kCpGuess) to CP932. CP932 input is kept as it is.
std::string BytesToCp932(uint32_t codePage, std::string_view bytes);

}  // namespace msg

#endif  // QV_MSGLIB_MSGCHARSET_H
