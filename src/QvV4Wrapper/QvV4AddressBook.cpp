// QvV4AddressBook.cpp - books, groups and addresses, and the address data
// record with its release function.
#include "QvV4Wrapper/QvV4AddressBook.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "addressreader/AddrReader.h"
#include "platform/platform.h"

const char16_t* const g_apszQvV4PropertyKeys[QV_V4_PROPERTY_COUNT] = {
    u"FN",             u"N-1",            u"N-2",          u"N-S1",           u"N-S2",
    u"NICKNAME",       u"EMAIL;INTERNET", u"TEL;HOME;VOICE", u"TEL;HOME;FAX", u"TEL;WORK;VOICE",
    u"TEL;WORK;FAX",   u"TEL;CELL;VOICE", u"TEL;PAGER;VOICE", u"ADR;HOME-2",  u"ADR;HOME-3",
    u"ADR;HOME-4",     u"ADR;HOME-5",     u"ADR;HOME-6",   u"ADR;HOME-7",     u"ADR;WORK-2",
    u"ADR;WORK-3",     u"ADR;WORK-4",     u"ADR;WORK-5",   u"ADR;WORK-6",     u"ADR;WORK-7",
    u"ADR;ORG-1",      u"ADR;ORG-2",      u"TITLE",        u"NOTE",
};

namespace {

// The fields of the record in the order of their offsets, with the key
// that fills each.
struct FieldKey {
    QV_WCHAR* QV_ADDRESS_DATA::*pField;
    int32_t nKeyIndex;
};
const FieldKey kFields[] = {
    {&QV_ADDRESS_DATA::lpszN1, 1},           {&QV_ADDRESS_DATA::lpszN2, 2},
    {&QV_ADDRESS_DATA::lpszNS1, 3},          {&QV_ADDRESS_DATA::lpszNS2, 4},
    {&QV_ADDRESS_DATA::lpszNickName, 5},     {&QV_ADDRESS_DATA::lpszEmailInternet, 6},
    {&QV_ADDRESS_DATA::lpszTelHomeVoice, 7}, {&QV_ADDRESS_DATA::lpszTelHomeFax, 8},
    {&QV_ADDRESS_DATA::lpszTelCellVoice, 11}, {&QV_ADDRESS_DATA::lpszAdrHome6, 17},
    {&QV_ADDRESS_DATA::lpszAdrHome7, 18},    {&QV_ADDRESS_DATA::lpszAdrHome5, 16},
    {&QV_ADDRESS_DATA::lpszAdrHome4, 15},    {&QV_ADDRESS_DATA::lpszAdrHome3, 14},
    {&QV_ADDRESS_DATA::lpszAdrHome2, 13},    {&QV_ADDRESS_DATA::lpszTelWorkVoice, 9},
    {&QV_ADDRESS_DATA::lpszTelWorkFax, 10},  {&QV_ADDRESS_DATA::lpszTelPagerVoice, 12},
    {&QV_ADDRESS_DATA::lpszAdrWork6, 23},    {&QV_ADDRESS_DATA::lpszAdrWork7, 24},
    {&QV_ADDRESS_DATA::lpszAdrWork5, 22},    {&QV_ADDRESS_DATA::lpszAdrWork4, 21},
    {&QV_ADDRESS_DATA::lpszAdrWork3, 20},    {&QV_ADDRESS_DATA::lpszAdrWork2, 19},
    {&QV_ADDRESS_DATA::lpszAdrOrg1, 25},     {&QV_ADDRESS_DATA::lpszAdrOrg2, 26},
    {&QV_ADDRESS_DATA::lpszTitle, 27},       {&QV_ADDRESS_DATA::lpszNote, 28},
};

// Every text field the release function frees: the keyed ones and the three
// reserved texts. The two reserved words are not touched.
QV_WCHAR* QV_ADDRESS_DATA::*const kTextFields[] = {
    &QV_ADDRESS_DATA::lpszN1,           &QV_ADDRESS_DATA::lpszN2,           &QV_ADDRESS_DATA::lpszNS1,
    &QV_ADDRESS_DATA::lpszNS2,          &QV_ADDRESS_DATA::lpszNickName,     &QV_ADDRESS_DATA::lpszEmailInternet,
    &QV_ADDRESS_DATA::lpszTelHomeVoice, &QV_ADDRESS_DATA::lpszTelHomeFax,   &QV_ADDRESS_DATA::lpszTelCellVoice,
    &QV_ADDRESS_DATA::lpszReserved1,    &QV_ADDRESS_DATA::lpszAdrHome6,     &QV_ADDRESS_DATA::lpszAdrHome7,
    &QV_ADDRESS_DATA::lpszAdrHome5,     &QV_ADDRESS_DATA::lpszAdrHome4,     &QV_ADDRESS_DATA::lpszAdrHome3,
    &QV_ADDRESS_DATA::lpszAdrHome2,     &QV_ADDRESS_DATA::lpszTelWorkVoice, &QV_ADDRESS_DATA::lpszTelWorkFax,
    &QV_ADDRESS_DATA::lpszReserved2,    &QV_ADDRESS_DATA::lpszTelPagerVoice, &QV_ADDRESS_DATA::lpszAdrWork6,
    &QV_ADDRESS_DATA::lpszAdrWork7,     &QV_ADDRESS_DATA::lpszAdrWork5,     &QV_ADDRESS_DATA::lpszAdrWork4,
    &QV_ADDRESS_DATA::lpszAdrWork3,     &QV_ADDRESS_DATA::lpszAdrWork2,     &QV_ADDRESS_DATA::lpszAdrOrg1,
    &QV_ADDRESS_DATA::lpszReserved3,    &QV_ADDRESS_DATA::lpszAdrOrg2,      &QV_ADDRESS_DATA::lpszTitle,
    &QV_ADDRESS_DATA::lpszNote,
};

QvV4Value FreshText16() {
    QvV4Value val;
    QvV4Value_Init(&val);
    QvV4Value_SetKind(&val, QV_V4_KIND_TEXT16);
    return val;
}

// An empty text that is never released.
const char16_t s_szEmpty[1] = {0};

}  // namespace

void QvV4ReleaseAddressData(QV_ADDRESS_DATA* pAddressData) {
    if (pAddressData == nullptr) return;
    for (auto pField : kTextFields) qvp::Free(pAddressData->*pField);
    if (pAddressData->pExtra != nullptr) {
        for (int32_t i = 0; i < pAddressData->nExtraCount; ++i) {
            qvp::Free(pAddressData->pExtra[2 * i]);
            qvp::Free(pAddressData->pExtra[2 * i + 1]);
        }
        qvp::Free(pAddressData->pExtra);
    }
}

// ------------------------------------------------------------------ book --

CQvV4AddressBook::CQvV4AddressBook(CQvIObject* pParent) : CQvIAddressBook(pParent) {
    for (int32_t& n : m_anPropIndex) n = -1;
}

CQvV4AddressBook::~CQvV4AddressBook() {
    delete[] m_ppGroups;
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (m_hBook != nullptr && pAnalyzer != nullptr) {
        AddrReader_CloseBook(pAnalyzer->m_hAddrReader, m_hAddrUser, m_nBookId, m_hBook);
    }
}

void CQvV4AddressBook::OnChildDisposed(CQvIObject* pChild) {
    int32_t nClass = 0;
    if (pChild->GetClass(&nClass) != QV_S_OK || nClass != QV_CLASS_ADDRESSGROUP) return;
    QvV4ClearSlot(m_ppGroups, m_nGroupCount, pChild, static_cast<CQvV4AddressGroup*>(pChild)->m_nIndex);
}

int32_t CQvV4AddressBook::OpenBook() {
    if (m_bBookOpened) return QV_S_OK;
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (pAnalyzer == nullptr) return QV_E_UNEXPECTED;
    // A book that cannot be loaded is an empty book for the object's life.
    if (AddrReader_OpenBook(pAnalyzer->m_hAddrReader, m_hAddrUser, m_nBookId, &m_hBook) != 0) m_hBook = nullptr;
    m_bBookOpened = 1;
    return QV_S_OK;
}

void CQvV4AddressBook::ResolveProperties() {
    if (m_bPropsResolved) return;
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (OpenBook() == QV_S_OK && m_hBook != nullptr && pAnalyzer != nullptr) {
        for (int32_t i = 0; i < QV_V4_PROPERTY_COUNT; ++i) {
            if (AddrReader_FindProperty(pAnalyzer->m_hAddrReader, m_hBook, g_apszQvV4PropertyKeys[i],
                                        &m_anPropIndex[i]) != 0) {
                m_anPropIndex[i] = -1;
            }
        }
    }
    m_bPropsResolved = 1;
}

int32_t CQvV4AddressBook::GetPropertyIndex(int32_t nKeyIndex) {
    ResolveProperties();
    return m_anPropIndex[nKeyIndex];
}

int32_t CQvV4AddressBook::FetchGroupCount() {
    if (m_nGroupCount != -1) return QV_S_OK;
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (pAnalyzer == nullptr) return QV_E_UNEXPECTED;
    int32_t code = OpenBook();
    if (code != QV_S_OK) return code;
    if (m_hBook == nullptr) {
        m_nGroupCount = 0;
        return QV_S_OK;
    }
    return QvV4FetchCount(m_nGroupCount, -1, [&](CQvV4Analyzer* pA, int32_t* pnCount) {
        return AddrReader_GetGroupCount(pA->m_hAddrReader, m_hBook, pnCount);
    });
}

int32_t CQvV4AddressBook::GetChildCount(int32_t nClass, int32_t* pnChildCount) {
    if (nClass == QV_CLASS_ADDRESS) {
        // No address stands directly in a book.
        *pnChildCount = 0;
        return QV_S_OK;
    }
    if (nClass != QV_CLASS_ADDRESSGROUP) return QV_E_INVALID_ARGUMENT;
    int32_t code = FetchGroupCount();
    if (code == QV_S_OK) *pnChildCount = m_nGroupCount;
    return code;
}

int32_t CQvV4AddressBook::CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) {
    if (ppObjs == nullptr) return QV_E_INVALID_ARGUMENT;
    if (nClass == QV_CLASS_ADDRESS) {
        *ppObjs = new CQvIEmptyObjects(this);
        return QV_S_OK;
    }
    if (nClass != QV_CLASS_ADDRESSGROUP) return QV_E_INVALID_ARGUMENT;
    int32_t code = FetchGroupCount();
    if (code != QV_S_OK) return code;
    auto* pObjs = new CQvV4BookGroupObjects(this);
    pObjs->Init(m_nGroupCount);
    *ppObjs = pObjs;
    return QV_S_OK;
}

int32_t CQvV4AddressBook::GetGroupAt(int32_t nIndex, CQvIObject** ppChild) {
    return QvV4FetchChild(
        m_ppGroups, m_nGroupCount, nIndex, ppChild, [&] { return FetchGroupCount(); },
        [&](int32_t i, void** phGroup) {
            return QvV4FetchHandle([&](CQvV4Analyzer* pAnalyzer) {
                return AddrReader_GetGroup(pAnalyzer->m_hAddrReader, m_hBook, i, phGroup);
            });
        },
        [&](void* hGroup, int32_t i) {
            auto* pGroup = new CQvV4AddressGroup(this, this);
            pGroup->Bind(hGroup, i);
            return pGroup;
        });
}

// ----------------------------------------------------------------- group --

CQvV4AddressGroup::CQvV4AddressGroup(CQvIObject* pParent, CQvV4AddressBook* pBook)
    : CQvIAddressGroup(pParent), m_pBook(pBook), m_valName(FreshText16()) {}

CQvV4AddressGroup::~CQvV4AddressGroup() {
    delete[] m_ppGroups;
    delete[] m_ppAddresses;
    QvV4Value_Release(&m_valName);
}

void CQvV4AddressGroup::OnChildDisposed(CQvIObject* pChild) {
    int32_t nClass = 0;
    if (pChild->GetClass(&nClass) != QV_S_OK) return;
    if (nClass == QV_CLASS_ADDRESSGROUP) {
        QvV4ClearSlot(m_ppGroups, m_nGroupCount, pChild, static_cast<CQvV4AddressGroup*>(pChild)->m_nIndex);
    } else if (nClass == QV_CLASS_ADDRESS) {
        QvV4ClearSlot(m_ppAddresses, m_nAddressCount, pChild, static_cast<CQvV4Address*>(pChild)->m_nIndex);
    }
}

int32_t CQvV4AddressGroup::GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return QvV4FetchText(m_valName, lpszName, lpcNameLen, [&](CQvV4Analyzer* pAnalyzer) {
        return AddrReader_GetName(pAnalyzer->m_hAddrReader, m_hGroup, &m_valName);
    });
}

int32_t CQvV4AddressGroup::GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return GetName(lpszName, lpcNameLen);
}

int32_t CQvV4AddressGroup::FetchGroupCount() {
    return QvV4FetchCount(m_nGroupCount, -1, [&](CQvV4Analyzer* pAnalyzer, int32_t* pnCount) {
        return AddrReader_GetGroupCount(pAnalyzer->m_hAddrReader, m_hGroup, pnCount);
    });
}

int32_t CQvV4AddressGroup::FetchAddressCount() {
    return QvV4FetchCount(m_nAddressCount, -1, [&](CQvV4Analyzer* pAnalyzer, int32_t* pnCount) {
        return AddrReader_GetItemCount(pAnalyzer->m_hAddrReader, m_hGroup, pnCount);
    });
}

int32_t CQvV4AddressGroup::GetChildCount(int32_t nClass, int32_t* pnChildCount) {
    int32_t code;
    switch (nClass) {
    case QV_CLASS_ADDRESSGROUP:
        code = FetchGroupCount();
        if (code == QV_S_OK) *pnChildCount = m_nGroupCount;
        return code;
    case QV_CLASS_ADDRESS:
        code = FetchAddressCount();
        if (code == QV_S_OK) *pnChildCount = m_nAddressCount;
        return code;
    default:
        return QV_E_INVALID_ARGUMENT;
    }
}

int32_t CQvV4AddressGroup::CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) {
    if (ppObjs == nullptr) return QV_E_INVALID_ARGUMENT;
    if (nClass != QV_CLASS_ADDRESSGROUP && nClass != QV_CLASS_ADDRESS) return QV_E_INVALID_ARGUMENT;
    const bool bGroups = nClass == QV_CLASS_ADDRESSGROUP;
    int32_t code = bGroups ? FetchGroupCount() : FetchAddressCount();
    if (code != QV_S_OK) return code;
    auto* pObjs = new CQvV4GroupChildObjects(this);
    pObjs->Init(bGroups ? 1 : 0, bGroups ? m_nGroupCount : m_nAddressCount);
    *ppObjs = pObjs;
    return QV_S_OK;
}

int32_t CQvV4AddressGroup::GetGroupAt(int32_t nIndex, CQvIObject** ppChild) {
    return QvV4FetchChild(
        m_ppGroups, m_nGroupCount, nIndex, ppChild, [&] { return FetchGroupCount(); },
        [&](int32_t i, void** phGroup) {
            return QvV4FetchHandle([&](CQvV4Analyzer* pAnalyzer) {
                return AddrReader_GetGroup(pAnalyzer->m_hAddrReader, m_hGroup, i, phGroup);
            });
        },
        [&](void* hGroup, int32_t i) {
            auto* pGroup = new CQvV4AddressGroup(this, m_pBook);
            pGroup->Bind(hGroup, i);
            return pGroup;
        });
}

int32_t CQvV4AddressGroup::GetAddressAt(int32_t nIndex, CQvIObject** ppChild) {
    return QvV4FetchChild(
        m_ppAddresses, m_nAddressCount, nIndex, ppChild, [&] { return FetchAddressCount(); },
        [&](int32_t i, void** phItem) {
            return QvV4FetchHandle([&](CQvV4Analyzer* pAnalyzer) {
                return AddrReader_GetItem(pAnalyzer->m_hAddrReader, m_hGroup, i, phItem);
            });
        },
        [&](void* hItem, int32_t i) {
            auto* pAddress = new CQvV4Address(this, m_pBook);
            pAddress->Bind(hItem, i);
            return pAddress;
        });
}

// --------------------------------------------------------------- address --

CQvV4Address::CQvV4Address(CQvIObject* pParent, CQvV4AddressBook* pBook)
    : CQvIAddress(pParent), m_pBook(pBook), m_valName(FreshText16()), m_valDisplayName(FreshText16()) {}

CQvV4Address::~CQvV4Address() {
    QvV4Value_Release(&m_valName);
    QvV4Value_Release(&m_valDisplayName);
}

int32_t CQvV4Address::FetchProperty(QvV4Value& val, int32_t nKeyIndex, QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return QvV4FetchText(val, lpszName, lpcNameLen, [&](CQvV4Analyzer* pAnalyzer) -> int32_t {
        int32_t nProperty = m_pBook->GetPropertyIndex(nKeyIndex);
        if (nProperty < 0) {
            // A key the reader does not know: an empty text, no failure.
            val.pfnFree = nullptr;
            val.pData = const_cast<char16_t*>(s_szEmpty);
            return 0;
        }
        return AddrReader_GetItemProperty(pAnalyzer->m_hAddrReader, m_hItem, nProperty, &val);
    });
}

int32_t CQvV4Address::GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return FetchProperty(m_valName, QV_V4_PROPERTY_EMAIL, lpszName, lpcNameLen);
}

int32_t CQvV4Address::GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return FetchProperty(m_valDisplayName, QV_V4_PROPERTY_FN, lpszName, lpcNameLen);
}

void CQvV4Address::FetchField(QV_WCHAR*& pszField, int32_t nKeyIndex) {
    qvp::Free(pszField);
    pszField = nullptr;
    QvV4Value val = FreshText16();
    int32_t nProperty = m_pBook->GetPropertyIndex(nKeyIndex);
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (nProperty >= 0 && pAnalyzer != nullptr &&
        AddrReader_GetItemProperty(pAnalyzer->m_hAddrReader, m_hItem, nProperty, &val) == 0 &&
        val.pData != nullptr) {
        const char16_t* pszText = static_cast<const char16_t*>(val.pData);
        size_t n = 0;
        while (pszText[n] != 0) ++n;
        auto* pszCopy = static_cast<QV_WCHAR*>(qvp::Malloc((n + 1) * sizeof(QV_WCHAR)));
        if (pszCopy == nullptr) {
            QvV4Value_Release(&val);
            throw std::bad_alloc();
        }
        for (size_t i = 0; i <= n; ++i) pszCopy[i] = static_cast<QV_WCHAR>(pszText[i]);
        pszField = pszCopy;
    }
    QvV4Value_Release(&val);
}

int32_t CQvV4Address::GetData(QV_ADDRESS_DATA* pAddressData) {
    if (pAddressData == nullptr) return QV_E_INVALID_ARGUMENT;
    std::memset(pAddressData, 0, sizeof(*pAddressData));
    pAddressData->pfnRelease = QvV4ReleaseAddressData;
    try {
        for (const FieldKey& field : kFields) FetchField(pAddressData->*(field.pField), field.nKeyIndex);
    } catch (...) {
        QvV4ReleaseAddressData(pAddressData);
        throw;
    }
    return QV_S_OK;
}
