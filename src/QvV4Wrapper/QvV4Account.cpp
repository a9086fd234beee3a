// QvV4Account.cpp - the account: name, title, folders, and the answers for
// the child classes it can be asked for but does not have.
#include "QvV4Wrapper/QvV4Account.h"

#include <cstdlib>
#include <new>

#include "QvV4Wrapper/QvV4MailFolder.h"
#include "QvV4Wrapper/QvV4User.h"
#include "addressreader/AddrReader.h"
#include "mailreader/MailReader.h"
#include "platform/platform.h"

CQvV4Account::CQvV4Account(CQvIObject* pParent) : CQvIAccount(pParent) {
    for (QvV4Value* pVal : {&m_valName, &m_valDisplayName}) {
        QvV4Value_Init(pVal);
        QvV4Value_SetKind(pVal, QV_V4_KIND_TEXT16);
    }
}

CQvV4Account::~CQvV4Account() {
    delete[] m_ppFolders;
    QvV4Value_Release(&m_valDisplayName);
    QvV4Value_Release(&m_valName);
}

void CQvV4Account::OnChildDisposed(CQvIObject* pChild) {
    int32_t nClass = 0;
    if (pChild->GetClass(&nClass) != QV_S_OK || nClass != QV_CLASS_MAILFOLDER) return;
    QvV4ClearSlot(m_ppFolders, m_nFolderCount, pChild, static_cast<CQvV4MailFolder*>(pChild)->m_nIndex);
}

template <typename ReaderName>
int32_t CQvV4Account::FetchName(QvV4Value& val, QV_WCHAR* lpszName, uint32_t* lpcNameLen, ReaderName readerName) {
    if (val.pData == nullptr && m_hAccount == nullptr) {
        // The account that stands for the user has an empty name and title.
        void* p = qvp::Calloc(1, sizeof(char16_t));
        if (p == nullptr) throw std::bad_alloc();
        val.pfnFree = qvp::Free;
        val.nSize = sizeof(char16_t);
        val.pData = p;
    }
    return QvV4FetchText(val, lpszName, lpcNameLen, [&](CQvV4Analyzer* pAnalyzer) {
        return readerName(pAnalyzer->m_hMailReader, m_hAccount, &val);
    });
}

int32_t CQvV4Account::GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return FetchName(m_valName, lpszName, lpcNameLen, MailReader_GetName);
}

int32_t CQvV4Account::GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return FetchName(m_valDisplayName, lpszName, lpcNameLen, MailReader_GetDisplayName);
}

int32_t CQvV4Account::SearchBook() {
    if (m_bBookFetched) return QV_S_OK;
    if (m_hAccount == nullptr) {
        m_bBookFetched = 1;
        return QV_S_OK;
    }
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (pAnalyzer == nullptr) return QV_E_UNEXPECTED;
    int32_t nUserIndex = -1;
    int32_t result = AddrReader_GetUserIndex(pAnalyzer->m_hAddrReader,
                                             static_cast<CQvV4User*>(GetParent())->m_hUser, &nUserIndex);
    if (result != 0) return QvV4MapError(result);
    // The address reader answers -1 for every user: no account has a book of
    // its own, they hang on the user.
    m_bBookFetched = 1;
    return QV_S_OK;
}

int32_t CQvV4Account::GetAttributes(uint32_t* pdwAttribute) {
    int32_t code = SearchBook();
    if (code != QV_S_OK) return code;
    if (pdwAttribute != nullptr) *pdwAttribute = m_pBook != nullptr ? QV_ATTR_ACCOUNT_HAS_BOOK : 0;
    return QV_S_OK;
}

void* CQvV4Account::FolderHandle() const {
    if (m_hAccount != nullptr) return m_hAccount;
    CQvIObject* pParent = GetParent();
    return pParent != nullptr ? static_cast<CQvV4User*>(pParent)->m_hUser : nullptr;
}

int32_t CQvV4Account::FetchFolderCount() {
    if (m_hAccount == nullptr && GetParent() == nullptr) return QV_E_UNEXPECTED;
    return QvV4FetchCount(m_nFolderCount, -1, [&](CQvV4Analyzer* pAnalyzer, int32_t* pnCount) {
        return MailReader_GetFolderCount(pAnalyzer->m_hMailReader, FolderHandle(), pnCount);
    });
}

int32_t CQvV4Account::GetChildCount(int32_t nClass, int32_t* pnChildCount) {
    int32_t code;
    switch (nClass) {
    case QV_CLASS_MAILFOLDER:
        code = FetchFolderCount();
        if (code == QV_S_OK) *pnChildCount = m_nFolderCount;
        return code;
    case QV_CLASS_MAILMESSAGE:
        // No message stands directly in an account.
        *pnChildCount = 0;
        return QV_S_OK;
    case QV_CLASS_ADDRESSBOOK:
        code = SearchBook();
        if (code == QV_S_OK) *pnChildCount = m_pBook != nullptr ? 1 : 0;
        return code;
    default:
        return QV_E_INVALID_ARGUMENT;
    }
}

int32_t CQvV4Account::CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) {
    if (ppObjs == nullptr) return QV_E_INVALID_ARGUMENT;
    int32_t code;
    switch (nClass) {
    case QV_CLASS_MAILFOLDER: {
        code = FetchFolderCount();
        if (code != QV_S_OK) return code;
        auto* pObjs = new CQvV4AccountFolderObjects(this);
        pObjs->Init(m_nFolderCount);
        *ppObjs = pObjs;
        return QV_S_OK;
    }
    case QV_CLASS_MAILMESSAGE:
        *ppObjs = new CQvIEmptyObjects(this);
        return QV_S_OK;
    case QV_CLASS_ADDRESSBOOK:
        code = SearchBook();
        if (code != QV_S_OK) return code;
        *ppObjs = QvV4BookObjects(this, m_pBook);
        return QV_S_OK;
    default:
        return QV_E_INVALID_ARGUMENT;
    }
}

int32_t CQvV4Account::GetFolderAt(int32_t nIndex, CQvIObject** ppChild) {
    return QvV4FetchChild(
        m_ppFolders, m_nFolderCount, nIndex, ppChild, [&] { return FetchFolderCount(); },
        [&](int32_t i, void** phFolder) {
            return QvV4FetchHandle([&](CQvV4Analyzer* pAnalyzer) {
                return MailReader_GetFolder(pAnalyzer->m_hMailReader, FolderHandle(), i, phFolder);
            });
        },
        [&](void* hFolder, int32_t i) {
            auto* pFolder = new CQvV4MailFolder(this);
            pFolder->Bind(hFolder, i);
            return pFolder;
        });
}
