// Text between the library's 16-bit units and the host's UTF-8.
#include "Utf.h"

namespace tqnralm {

std::string Utf8(const QV_WCHAR* text) {
    std::string out;
    AssignUtf8(text, &out);
    return out;
}

void AssignUtf8(const QV_WCHAR* text, std::string* result) {
    std::string& out = *result;
    size_t length = 0;
    while (text != nullptr && text[length] != 0) ++length;
    // An ASCII text (most names, every Message-ID) a unit to a byte, in
    // loops without an early exit, which the compiler widens.
    uint16_t bits = 0;
    for (size_t i = 0; i < length; ++i) bits |= static_cast<uint16_t>(text[i]);
    if (bits < 0x80) {
        out.resize(length);
        char* const o = &out[0];
        for (size_t i = 0; i < length; ++i) o[i] = static_cast<char>(text[i]);
        return;
    }
    out.clear();
    for (size_t i = 0; i < length; ++i) {
        uint32_t u = static_cast<uint16_t>(text[i]);
        uint32_t lo = static_cast<uint16_t>(text[i + 1]);
        if (u >= 0xD800 && u < 0xDC00 && lo >= 0xDC00 && lo < 0xE000) {
            u = 0x10000 + ((u - 0xD800) << 10) + (lo - 0xDC00);
            ++i;
        } else if (u >= 0xD800 && u < 0xE000) {
            u = 0xFFFD;
        }
        AppendUtf8(out, u);
    }
}

std::vector<QV_WCHAR> Utf16(const std::string& utf8) {
    std::vector<QV_WCHAR> out;
    for (size_t i = 0; i < utf8.size();) {
        unsigned char c = static_cast<unsigned char>(utf8[i]);
        uint32_t cp = c;
        size_t n = 1;
        if (c >= 0xF0) { cp = c & 0x07; n = 4; }
        else if (c >= 0xE0) { cp = c & 0x0F; n = 3; }
        else if (c >= 0xC0) { cp = c & 0x1F; n = 2; }
        for (size_t k = 1; k < n && i + k < utf8.size(); ++k) cp = (cp << 6) | (utf8[i + k] & 0x3F);
        i += n;
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out.push_back(static_cast<QV_WCHAR>(0xD800 + (cp >> 10)));
            out.push_back(static_cast<QV_WCHAR>(0xDC00 + (cp & 0x3FF)));
        } else {
            out.push_back(static_cast<QV_WCHAR>(cp));
        }
    }
    out.push_back(0);
    return out;
}

}  // namespace tqnralm
