// QvWString.cpp - the formatter of the 16-bit text type.
#include "QvImplCommon/QvWString.h"

#include <cstdarg>

namespace {

void AppendDigits(std::u16string& out, unsigned long long value, unsigned base, size_t width, bool upper) {
    char16_t digits[32];
    size_t n = 0;
    const char* table = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    do {
        digits[n++] = static_cast<char16_t>(table[value % base]);
        value /= base;
    } while (value != 0 && n < sizeof(digits) / sizeof(digits[0]));
    for (size_t i = n; i < width; ++i) out.push_back(u'0');
    while (n > 0) out.push_back(digits[--n]);
}

}  // namespace

void CQvWString::Assign(const char16_t* psz) {
    m_str.clear();
    Append(psz);
}

void CQvWString::Append(const char16_t* psz) {
    if (psz != nullptr) m_str += psz;
}

void CQvWString::AppendAscii(const char* psz) {
    if (psz == nullptr) return;
    while (*psz != '\0') m_str.push_back(static_cast<char16_t>(static_cast<unsigned char>(*psz++)));
}

void CQvWString::AppendFormat(const char* pszFormat, ...) {
    va_list args;
    va_start(args, pszFormat);
    AppendFormatV(pszFormat, args);
    va_end(args);
}

void CQvWString::Format(const char* pszFormat, ...) {
    m_str.clear();
    va_list args;
    va_start(args, pszFormat);
    AppendFormatV(pszFormat, args);
    va_end(args);
}

void CQvWString::AppendFormatV(const char* pszFormat, va_list args) {
    for (const char* p = pszFormat; *p != '\0'; ++p) {
        if (*p != '%') {
            m_str.push_back(static_cast<char16_t>(static_cast<unsigned char>(*p)));
            continue;
        }
        ++p;
        size_t width = 0;
        while (*p >= '0' && *p <= '9') width = width * 10 + static_cast<size_t>(*p++ - '0');
        bool isShort = false;
        if (*p == 'l') ++p;
        else if (*p == 'h') { isShort = true; ++p; }
        switch (*p) {
        case 's': {
            const char16_t* psz = va_arg(args, const char16_t*);
            Append(psz != nullptr ? psz : u"(NULL)");
            break;
        }
        case 'd': {
            // Every %ld argument is a 32-bit value, passed as int32_t.
            long long value = va_arg(args, int32_t);
            if (value < 0) {
                m_str.push_back(u'-');
                value = -value;
            }
            AppendDigits(m_str, static_cast<unsigned long long>(value), 10, width, false);
            break;
        }
        case 'u':
        case 'x': {
            unsigned long long value = va_arg(args, uint32_t);
            if (isShort) value = static_cast<uint16_t>(value);
            AppendDigits(m_str, value, *p == 'x' ? 16 : 10, width, false);
            break;
        }
        case 'p':
            AppendDigits(m_str, reinterpret_cast<uintptr_t>(va_arg(args, void*)), 16, 2 * sizeof(void*), true);
            break;
        case '%':
            m_str.push_back(u'%');
            break;
        default:
            return;  // a format of our own making; nothing else occurs
        }
    }
}
