// MsgText.h - byte helpers shared by the message parser.
//
// Mail is bytes: header names and keywords are ASCII and compared without
// regard to case, never through the C locale.
#ifndef QV_MSGLIB_MSGTEXT_H
#define QV_MSGLIB_MSGTEXT_H

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/HexDigit.h"

namespace msg {

inline char AsciiLower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool IsWsp(char c) { return c == ' ' || c == '\t'; }

inline bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
    }
    return true;
}

inline std::string LowerCopy(std::string_view s) {
    std::string out(s);
    for (char& c : out) c = AsciiLower(c);
    return out;
}

// Blanks, tabs and line-end bytes off both ends.
inline std::string_view TrimSpace(std::string_view s) {
    auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    size_t b = 0, e = s.size();
    while (b < e && blank(s[b])) ++b;
    while (e > b && blank(s[e - 1])) --e;
    return s.substr(b, e - b);
}

// A hexadecimal digit's value, -1 for any other byte (the platform layer's).
using qvp::HexDigit;

}  // namespace msg

#endif  // QV_MSGLIB_MSGTEXT_H
