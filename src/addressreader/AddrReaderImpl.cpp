// AddrReaderImpl.cpp - the address reader: discovery and users.
#include "addressreader/AddrReaderImpl.h"

#include <memory>

CAddrReader::CAddrReader() : CDiscovery(kAddressDiscoveryProfile) {}

CAddrReader::~CAddrReader() {
    for (const auto* p = m_Users.Head(); p != nullptr; p = p->pNext) delete p->pEntry;
}

int32_t CAddrReader::Discover() {
    // The address profile runs the user discovery at the end of this call and
    // takes no notice of its result.
    int32_t nResult = DiscoverInstallPath();
    if (nResult < 0) return -1;
    return m_Users.Count() == 0 ? -2 : 0;
}

int32_t CAddrReader::GetUser(int32_t nIndex, CAddrUser** ppUser) const {
    if (nIndex < 0 || nIndex >= m_Users.Count()) return -3;
    *ppUser = m_Users.At(nIndex);
    return 0;
}

int32_t CAddrReader::AddUser(const char* pszDirectory) {
    std::unique_ptr<CAddrUser> user(new CAddrUser(pszDirectory, ClaimShortcut(pszDirectory)));
    user->FillName();
    m_Users.Append(user.get());
    user.release();
    return 0;
}
