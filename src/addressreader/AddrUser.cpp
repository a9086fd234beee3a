// AddrUser.cpp - a mailbox directory of the address side.
#include "addressreader/AddrUser.h"

#include <string>

#include "platform/platform.h"

CAddrUser::CAddrUser(const char* pszDirectory, const char* pszTitle)
    : m_pszName(pszTitle != nullptr ? AddrCopyText(pszTitle) : nullptr),
      m_szDirectory(AddrCopyText(pszDirectory)) {}

int32_t CAddrUser::FillName() {
    if (m_pszName != nullptr) return 0;
    const std::string ini = std::string(m_szDirectory.get()) + "\\Account1\\Account.ini";
    char szTitle[kTitleBufferSize] = {};
    uint32_t cb = qvp::ProfileString("Property", "Title", "", szTitle, kTitleBufferSize, ini.c_str());
    szTitle[kTitleBufferSize - 1] = '\0';
    m_pszName = AddrCopyText(cb >= 1 && szTitle[0] != '\0' ? szTitle : "AL-Mail User");
    return 0;
}

int32_t CAddrUser::GetName(QvV4Value* pValue) {
    // Only a name that a failed FillName left null can be missing here.
    return QvV4Value_FromText(pValue, m_pszName != nullptr ? m_pszName.get() : "");
}

int32_t CAddrUser::OpenBook(CAddrBook** ppBook) const {
    std::unique_ptr<CAddrBook> book(new CAddrBook(m_szDirectory.get()));
    book->Load();
    *ppBook = book.release();
    return 0;
}

int32_t CAddrUser::CloseBook(CAddrBook* pBook) {
    delete pBook;
    return 0;
}
