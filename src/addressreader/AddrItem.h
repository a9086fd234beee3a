// AddrItem.h - one address: a heading (the key of an entry line) and an
// address (its value), owned by the group in whose item list it stands.
#ifndef QV_ADDRITEM_H
#define QV_ADDRITEM_H

#include <cstdint>
#include <cstring>
#include <memory>

#include "QvV4Value/QvV4Value.h"

// White space of the address files: blank, tab, LF, VT, FF, CR. A byte of
// 0x80 or above (a Shift-JIS lead byte) never is.
inline bool AddrIsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// An owned copy of a zero-ended 8-bit text.
inline std::unique_ptr<char[]> AddrCopyText(const char* psz) {
    size_t cb = std::strlen(psz) + 1;
    std::unique_ptr<char[]> copy(new char[cb]);
    std::memcpy(copy.get(), psz, cb);
    return copy;
}

class CAddrItem {
public:
    // Copies the key, and the value from its first byte that is not white
    // space; trailing white space stays.
    CAddrItem(const char* pszKey, const char* pszValue);

    // Index 0 delivers the key ("FN"), 1 the value ("EMAIL;INTERNET"),
    // through QvV4Value_FromText. Any other index: -3, record untouched.
    int32_t GetProperty(int32_t nIndex, QvV4Value* pValue) const;

    const char* Key() const { return m_pszKey.get(); }
    const char* Value() const { return m_pszValue.get(); }
    int32_t BookIndex() const { return m_nBookIndex; }

private:
    friend class CAddrBook;
    int32_t m_nBookIndex;  // position in the book's flat list; -1 until taken
    std::unique_ptr<char[]> m_pszKey;
    std::unique_ptr<char[]> m_pszValue;
};

#endif  // QV_ADDRITEM_H
