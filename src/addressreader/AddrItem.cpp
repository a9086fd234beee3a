// AddrItem.cpp - one address of an address book.
#include "addressreader/AddrItem.h"

namespace {
const char* SkipSpace(const char* psz) {
    while (AddrIsSpace(*psz)) ++psz;
    return psz;
}
}  // namespace

CAddrItem::CAddrItem(const char* pszKey, const char* pszValue)
    : m_nBookIndex(-1), m_pszKey(AddrCopyText(pszKey)), m_pszValue(AddrCopyText(SkipSpace(pszValue))) {}

int32_t CAddrItem::GetProperty(int32_t nIndex, QvV4Value* pValue) const {
    switch (nIndex) {
    case 0:
        return QvV4Value_FromText(pValue, m_pszKey.get());
    case 1:
        return QvV4Value_FromText(pValue, m_pszValue.get());
    default:
        return -3;
    }
}
