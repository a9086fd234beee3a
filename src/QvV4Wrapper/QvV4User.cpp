// QvV4User.cpp - the user: name, accounts and the search for its book.
#include "QvV4Wrapper/QvV4User.h"

#include "QvImplCommon/QvITraceRecord.h"
#include "QvV4Wrapper/QvV4Account.h"
#include "QvV4Wrapper/QvV4AddressBook.h"
#include "addressreader/AddrReader.h"
#include "mailreader/MailReader.h"

CQvV4User::CQvV4User(CQvIObject* pParent) : CQvIUser(pParent) {
    QvV4Value_Init(&m_valName);
    QvV4Value_SetKind(&m_valName, QV_V4_KIND_TEXT16);
}

CQvV4User::~CQvV4User() {
    delete[] m_ppAccounts;
    delete m_pBook;
    QvV4Value_Release(&m_valName);
}

void CQvV4User::OnChildDisposed(CQvIObject* pChild) {
    int32_t nClass = 0;
    if (pChild->GetClass(&nClass) != QV_S_OK || nClass != QV_CLASS_ACCOUNT) return;
    QvV4ClearSlot(m_ppAccounts, VisibleAccountCount(), pChild, static_cast<CQvV4Account*>(pChild)->m_nIndex);
}

int32_t CQvV4User::GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return QvV4FetchText(m_valName, lpszName, lpcNameLen, [&](CQvV4Analyzer* pAnalyzer) {
        return MailReader_GetName(pAnalyzer->m_hMailReader, m_hUser, &m_valName);
    });
}

int32_t CQvV4User::GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return GetName(lpszName, lpcNameLen);
}

int32_t CQvV4User::FetchAccountCount() {
    if (m_nAccountCount != -2) return QV_S_OK;
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (pAnalyzer == nullptr) return QV_E_UNEXPECTED;
    int32_t nCount = -2;
    int32_t result = MailReader_GetAccountCount(pAnalyzer->m_hMailReader, m_hUser, &nCount);
    if (result == 0) {
        m_nAccountCount = nCount;
        if (nCount == -1) {
            // The source and line of this record are fixed: they are part of the log.
            CQvITraceRecord("QvV4Wrapper/QvV4User", 153, QV_TRACE_INFO).Text(u"アカウントが存在しないパターン").Write();
        }
    }
    return QvV4MapError(result);
}

int32_t CQvV4User::SearchBook() {
    if (m_bBookFetched) return QV_S_OK;
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (pAnalyzer == nullptr) return QV_E_UNEXPECTED;
    int32_t nCount = 0;
    int32_t result = AddrReader_GetUserCount(pAnalyzer->m_hAddrReader, &nCount);
    if (result != 0) return QvV4MapError(result);
    // Mail user i and address user i are the same mailbox directory.
    void* hAddrUser = nullptr;
    if (m_nIndex < nCount && AddrReader_GetUser(pAnalyzer->m_hAddrReader, m_nIndex, &hAddrUser) == 0) {
        m_pBook = new CQvV4AddressBook(this);
        m_pBook->Bind(hAddrUser, 0);
    }
    m_bBookFetched = 1;
    return QV_S_OK;
}

int32_t CQvV4User::GetChildCount(int32_t nClass, int32_t* pnChildCount) {
    int32_t code;
    switch (nClass) {
    case QV_CLASS_ACCOUNT:
        code = FetchAccountCount();
        if (code == QV_S_OK) *pnChildCount = VisibleAccountCount();
        return code;
    case QV_CLASS_ADDRESSBOOK:
        code = SearchBook();
        if (code == QV_S_OK) *pnChildCount = m_pBook != nullptr ? 1 : 0;
        return code;
    default:
        return QV_E_INVALID_ARGUMENT;
    }
}

int32_t CQvV4User::CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) {
    if (ppObjs == nullptr) return QV_E_INVALID_ARGUMENT;
    int32_t code;
    switch (nClass) {
    case QV_CLASS_ACCOUNT: {
        code = FetchAccountCount();
        if (code != QV_S_OK) return code;
        auto* pObjs = new CQvV4AccountObjects(this);
        pObjs->Init(VisibleAccountCount());
        *ppObjs = pObjs;
        return QV_S_OK;
    }
    case QV_CLASS_ADDRESSBOOK:
        code = SearchBook();
        if (code != QV_S_OK) return code;
        *ppObjs = QvV4BookObjects(this, m_pBook);
        return QV_S_OK;
    default:
        return QV_E_INVALID_ARGUMENT;
    }
}

int32_t CQvV4User::GetAccountAt(int32_t nIndex, CQvIObject** ppChild) {
    int32_t nVisible = m_ppAccounts != nullptr ? VisibleAccountCount() : 0;
    return QvV4FetchChild(
        m_ppAccounts, nVisible, nIndex, ppChild,
        [&] {
            int32_t code = FetchAccountCount();
            nVisible = VisibleAccountCount();
            return code;
        },
        [&](int32_t i, void** phAccount) {
            // Without an account layer the one account has handle 0.
            if (m_nAccountCount == -1) return QV_S_OK;
            return QvV4FetchHandle([&](CQvV4Analyzer* pAnalyzer) {
                return MailReader_GetAccount(pAnalyzer->m_hMailReader, m_hUser, i, phAccount);
            });
        },
        [&](void* hAccount, int32_t i) {
            auto* pAccount = new CQvV4Account(this);
            pAccount->Bind(hAccount, i);
            return pAccount;
        });
}
