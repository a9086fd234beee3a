// Text between the library's 16-bit units and the host's UTF-8.
#ifndef TQNRALM_TOOL_UTF_H
#define TQNRALM_TOOL_UTF_H

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Utf8.h"
#include "tqnralm.h"

namespace tqnralm {

// Appends one code point as UTF-8 (the platform layer's encoder).
using qvp::AppendUtf8;

// A NUL-terminated 16-bit text as UTF-8. A lone surrogate becomes U+FFFD, so
// the result is always valid UTF-8; NULL gives "".
std::string Utf8(const QV_WCHAR* text);
// The same into *out, its buffer kept: a name read for every message costs
// no allocation, and an ASCII text is copied a unit to a byte.
void AssignUtf8(const QV_WCHAR* text, std::string* out);

// UTF-8 as 16-bit units with a terminating 0 (for paths handed to the library).
std::vector<QV_WCHAR> Utf16(const std::string& utf8);

}  // namespace tqnralm

#endif
