// QvV4Root.cpp - the root: the mail client's name and its users.
#include "QvV4Wrapper/QvV4Root.h"

#include "QvV4Wrapper/QvV4User.h"
#include "mailreader/MailReader.h"

CQvV4Root::CQvV4Root() {
    QvV4Value_Init(&m_valDisplayName);
    QvV4Value_SetKind(&m_valDisplayName, QV_V4_KIND_TEXT16);
}

CQvV4Root::~CQvV4Root() {
    delete[] m_ppUsers;
    QvV4Value_Release(&m_valDisplayName);
}

void CQvV4Root::OnChildDisposed(CQvIObject* pChild) {
    int32_t nClass = 0;
    if (pChild->GetClass(&nClass) != QV_S_OK || nClass != QV_CLASS_USER) return;
    QvV4ClearSlot(m_ppUsers, m_nUserCount, pChild, static_cast<CQvV4User*>(pChild)->m_nIndex);
}

int32_t CQvV4Root::GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return QvV4FetchText(m_valDisplayName, lpszName, lpcNameLen, [&](CQvV4Analyzer* pAnalyzer) {
        return MailReader_GetMailerName(pAnalyzer->m_hMailReader, &m_valDisplayName);
    });
}

int32_t CQvV4Root::FetchUserCount() {
    return QvV4FetchCount(m_nUserCount, -1, [](CQvV4Analyzer* pAnalyzer, int32_t* pnCount) {
        return MailReader_GetUserCount(pAnalyzer->m_hMailReader, pnCount);
    });
}

int32_t CQvV4Root::GetChildCount(int32_t nClass, int32_t* pnChildCount) {
    if (nClass != QV_CLASS_USER) return QV_E_INVALID_ARGUMENT;
    int32_t code = FetchUserCount();
    if (code == QV_S_OK) *pnChildCount = m_nUserCount;
    return code;
}

int32_t CQvV4Root::CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) {
    if (nClass != QV_CLASS_USER || ppObjs == nullptr) return QV_E_INVALID_ARGUMENT;
    int32_t code = FetchUserCount();
    if (code != QV_S_OK) return code;
    auto* pObjs = new CQvV4UserObjects(this);
    pObjs->Init(m_nUserCount);
    *ppObjs = pObjs;
    return QV_S_OK;
}

int32_t CQvV4Root::GetUserAt(int32_t nIndex, CQvIObject** ppChild) {
    return QvV4FetchChild(
        m_ppUsers, m_nUserCount, nIndex, ppChild, [&] { return FetchUserCount(); },
        [](int32_t i, void** phUser) {
            return QvV4FetchHandle([&](CQvV4Analyzer* pAnalyzer) {
                return MailReader_GetUser(pAnalyzer->m_hMailReader, i, phUser);
            });
        },
        [&](void* hUser, int32_t i) {
            auto* pUser = new CQvV4User(this);
            pUser->Bind(hUser, i);
            return pUser;
        });
}
