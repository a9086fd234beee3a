// QvV4MailFolder.cpp - folders, their subfolders and messages, and the
// delivery of a message's text to the host.
#include "QvV4Wrapper/QvV4MailFolder.h"

#include <cstdlib>
#include <cstring>

#include "QvV4Value/QvTextBlocks.h"
#include "mailreader/MailReader.h"
#include "platform/platform.h"

namespace {
// The release function that a mail data record carries: the reader's whole
// texts are text blocks, and 0 is accepted.
void QvV4FreeMailText(char* pszMailText) { QvTextBlock_Free(pszMailText); }
}  // namespace

CQvV4MailFolder::CQvV4MailFolder(CQvIObject* pParent) : CQvIMailFolder(pParent) {
    QvV4Value_Init(&m_valName);
    QvV4Value_SetKind(&m_valName, QV_V4_KIND_TEXT16);
}

CQvV4MailFolder::~CQvV4MailFolder() {
    delete m_pSpareMessage;
    delete[] m_ppFolders;
    delete[] m_ppMessages;
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (m_bMessagesOpen && pAnalyzer != nullptr) MailReader_CloseMessages(pAnalyzer->m_hMailReader, m_hFolder);
    QvV4Value_Release(&m_valName);
}

void CQvV4MailFolder::OnChildDisposed(CQvIObject* pChild) {
    int32_t nClass = 0;
    if (pChild->GetClass(&nClass) != QV_S_OK) return;
    if (nClass == QV_CLASS_MAILFOLDER) {
        QvV4ClearSlot(m_ppFolders, m_nFolderCount, pChild, static_cast<CQvV4MailFolder*>(pChild)->m_nIndex);
    } else if (nClass == QV_CLASS_MAILMESSAGE) {
        QvV4ClearSlot(m_ppMessages, m_nMessageCount, pChild, static_cast<CQvV4MailMessage*>(pChild)->m_nIndex);
    }
}

int32_t CQvV4MailFolder::GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return QvV4FetchText(m_valName, lpszName, lpcNameLen, [&](CQvV4Analyzer* pAnalyzer) {
        return MailReader_GetName(pAnalyzer->m_hMailReader, m_hFolder, &m_valName);
    });
}

int32_t CQvV4MailFolder::GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return GetName(lpszName, lpcNameLen);
}

int32_t CQvV4MailFolder::GetAttributes(uint32_t* pdwAttribute) {
    if (pdwAttribute != nullptr) *pdwAttribute = QV_ATTR_MAILFOLDER;
    return QV_S_OK;
}

int32_t CQvV4MailFolder::OpenMessages() {
    if (m_bMessagesOpen) return QV_S_OK;
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (pAnalyzer == nullptr) return QV_E_UNEXPECTED;
    int32_t result = MailReader_OpenMessages(pAnalyzer->m_hMailReader, m_hFolder);
    if (result != 0) return QvV4MapError(result);
    m_bMessagesOpen = 1;
    return QV_S_OK;
}

int32_t CQvV4MailFolder::FetchFolderCount() {
    return QvV4FetchCount(m_nFolderCount, -1, [&](CQvV4Analyzer* pAnalyzer, int32_t* pnCount) {
        return MailReader_GetFolderCount(pAnalyzer->m_hMailReader, m_hFolder, pnCount);
    });
}

int32_t CQvV4MailFolder::FetchMessageCount() {
    if (m_nMessageCount != -1) return QV_S_OK;
    if (QvV4GetAnalyzer() == nullptr) return QV_E_UNEXPECTED;
    int32_t code = OpenMessages();
    if (code != QV_S_OK) return code;
    return QvV4FetchCount(m_nMessageCount, -1, [&](CQvV4Analyzer* pAnalyzer, int32_t* pnCount) {
        return MailReader_GetMessageCount(pAnalyzer->m_hMailReader, m_hFolder, pnCount);
    });
}

int32_t CQvV4MailFolder::GetChildCount(int32_t nClass, int32_t* pnChildCount) {
    int32_t code;
    switch (nClass) {
    case QV_CLASS_MAILFOLDER:
        code = FetchFolderCount();
        if (code == QV_S_OK) *pnChildCount = m_nFolderCount;
        return code;
    case QV_CLASS_MAILMESSAGE:
        code = FetchMessageCount();
        if (code == QV_S_OK) *pnChildCount = m_nMessageCount;
        return code;
    default:
        return QV_E_INVALID_ARGUMENT;
    }
}

int32_t CQvV4MailFolder::CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) {
    if (ppObjs == nullptr) return QV_E_INVALID_ARGUMENT;
    if (nClass != QV_CLASS_MAILFOLDER && nClass != QV_CLASS_MAILMESSAGE) return QV_E_INVALID_ARGUMENT;
    const bool bFolders = nClass == QV_CLASS_MAILFOLDER;
    int32_t code = bFolders ? FetchFolderCount() : FetchMessageCount();
    if (code != QV_S_OK) return code;
    auto* pObjs = new CQvV4FolderChildObjects(this);
    pObjs->Init(bFolders ? 1 : 0, bFolders ? m_nFolderCount : m_nMessageCount);
    *ppObjs = pObjs;
    return QV_S_OK;
}

int32_t CQvV4MailFolder::GetFolderAt(int32_t nIndex, CQvIObject** ppChild) {
    return QvV4FetchChild(
        m_ppFolders, m_nFolderCount, nIndex, ppChild, [&] { return FetchFolderCount(); },
        [&](int32_t i, void** phFolder) {
            // The reader opens the folder on disk at its first request.
            return QvV4FetchHandle([&](CQvV4Analyzer* pAnalyzer) {
                return MailReader_GetFolder(pAnalyzer->m_hMailReader, m_hFolder, i, phFolder);
            });
        },
        [&](void* hFolder, int32_t i) {
            auto* pFolder = new CQvV4MailFolder(this);
            pFolder->Bind(hFolder, i);
            return pFolder;
        });
}

int32_t CQvV4MailFolder::GetMessageAt(int32_t nIndex, CQvIObject** ppChild) {
    // Making a message object reads nothing: it holds only its index.
    return QvV4FetchChild(
        m_ppMessages, m_nMessageCount, nIndex, ppChild, [&] { return FetchMessageCount(); },
        [](int32_t, void**) { return QV_S_OK; },
        [&](void*, int32_t i) {
            CQvV4MailMessage* pMessage = m_pSpareMessage != nullptr ? m_pSpareMessage : new CQvV4MailMessage(this);
            m_pSpareMessage = nullptr;
            pMessage->Bind(i);
            return pMessage;
        });
}

CQvV4MailMessage::CQvV4MailMessage(CQvIObject* pParent) : CQvIMailMessage(pParent) {
    for (QvV4Value* pVal : {&m_valMessageId, &m_valSubject}) {
        QvV4Value_Init(pVal);
        QvV4Value_SetKind(pVal, QV_V4_KIND_TEXT16);
    }
}

CQvV4MailMessage::~CQvV4MailMessage() {
    QvV4Value_Release(&m_valMessageId);
    QvV4Value_Release(&m_valSubject);
}

void CQvV4MailMessage::OnFinalRelease() {
    CQvV4MailFolder* pFolder = Folder();
    pFolder->OnChildDisposed(this);
    if (pFolder->m_pSpareMessage != nullptr) {
        delete this;
        return;
    }
    // As new: no texts, no index.
    for (QvV4Value* pVal : {&m_valMessageId, &m_valSubject}) {
        QvV4Value_Release(pVal);
        QvV4Value_Init(pVal);
        QvV4Value_SetKind(pVal, QV_V4_KIND_TEXT16);
    }
    m_nIndex = -1;
    pFolder->m_pSpareMessage = this;
}

template <typename ReaderText>
int32_t CQvV4MailMessage::FetchText(QvV4Value& val, QV_WCHAR* lpszName, uint32_t* lpcNameLen,
                                    ReaderText readerText) {
    if (val.pData == nullptr) {
        if (QvV4GetAnalyzer() == nullptr) return QV_E_UNEXPECTED;
        int32_t code = Folder()->OpenMessages();
        if (code != QV_S_OK) return code;
    }
    return QvV4FetchText(val, lpszName, lpcNameLen, [&](CQvV4Analyzer* pAnalyzer) {
        return readerText(pAnalyzer->m_hMailReader, Folder()->m_hFolder, m_nIndex, &val);
    });
}

int32_t CQvV4MailMessage::GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return FetchText(m_valMessageId, lpszName, lpcNameLen, MailReader_GetMessageId);
}

int32_t CQvV4MailMessage::GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return FetchText(m_valSubject, lpszName, lpcNameLen, MailReader_GetSubject);
}

int32_t CQvV4MailMessage::GetData(QV_MAIL_DATA* pMailData) {
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (pAnalyzer == nullptr) return QV_E_UNEXPECTED;
    int32_t code = Folder()->OpenMessages();
    if (code != QV_S_OK) return code;
    // The text is never cached: each call hands the host a new copy.
    QvV4Value val;
    QvV4Value_Init(&val);
    QvV4Value_SetKind(&val, QV_V4_KIND_TEXT8);
    int32_t result = MailReader_GetMessageText(pAnalyzer->m_hMailReader, Folder()->m_hFolder, m_nIndex, &val);
    if (result != 0) {
        QvV4Value_Release(&val);
        return QvV4MapError(result);
    }
    char* pszText = static_cast<char*>(val.pData);
    pMailData->pszMailText = pszText;
    // The reader's whole text holds no zero byte: its size is its length,
    // but for the empty text, whose record is two zero bytes.
    pMailData->nMailTextLen = pszText[0] == '\0' ? 0 : val.nSize;
    pMailData->pfnFree = QvV4FreeMailText;
    // The text belongs to the host now.
    val.pData = nullptr;
    val.pfnFree = nullptr;
    return QV_S_OK;
}
