// QvWString.h - growable 16-bit text with printf-style formatting, the text
// type of the trace log and of the tree's cached names.
#ifndef QV_QVWSTRING_H
#define QV_QVWSTRING_H

#include <cstdarg>
#include <cstdint>
#include <string>

class CQvWString {
public:
    CQvWString() = default;
    CQvWString(const char16_t* psz) { Assign(psz); }

    void Assign(const char16_t* psz);
    void Append(const char16_t* psz);
    void Append(const CQvWString& str) { m_str += str.m_str; }
    // Widens 7-bit text (names of functions and parameters).
    void AppendAscii(const char* psz);
    // Appends formatted text. Conversions: %s (const char16_t*, NULL shows
    // "(NULL)"), %ld (int32_t), %lu and %lx (uint32_t), %p (upper-case hexadecimal padded to
    // the pointer's width, no prefix, as the Windows C runtime prints it),
    // %0Nhu (a 16-bit value passed as uint32_t, zero-padded to N) and %%.
    void AppendFormat(const char* pszFormat, ...);
    void Format(const char* pszFormat, ...);

    size_t GetLength() const { return m_str.size(); }
    const char16_t* GetString() const { return m_str.c_str(); }

private:
    void AppendFormatV(const char* pszFormat, va_list args);
    std::u16string m_str;
};

#endif  // QV_QVWSTRING_H
