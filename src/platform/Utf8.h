// Utf8.h - the one UTF-8 encoder, shared by the platform layer and the host.
//
// It knows no platform. It is inline so that the host takes it without
// linking the platform layer (which is a shared object on Linux).
#ifndef QV_PLATFORM_UTF8_H
#define QV_PLATFORM_UTF8_H

#include <cstdint>
#include <string>

namespace qvp {

// Appends one code point (at most U+10FFFF) as UTF-8: one to four bytes.
inline void AppendUtf8(std::string& out, uint32_t cp) {
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

}  // namespace qvp

#endif  // QV_PLATFORM_UTF8_H
