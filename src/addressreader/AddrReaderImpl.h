// AddrReaderImpl.h - the object behind an address reader handle: the
// address side's run of the installation discovery and its users.
#ifndef QV_ADDRREADERIMPL_H
#define QV_ADDRREADERIMPL_H

#include <cstdint>

#include "addressreader/AddrList.h"
#include "addressreader/AddrUser.h"
#include "mailreader/Discovery.h"

class CAddrReader : public CDiscovery {
public:
    CAddrReader();
    ~CAddrReader() override;

    // Reads InstallPath and finds the users: 0 with at least one user; -1
    // InstallPath can't be read; -2 no user.
    int32_t Discover();

    // The user at that position; out of range: -3, output untouched.
    int32_t GetUser(int32_t nIndex, CAddrUser** ppUser) const;
    int32_t UserCount() const { return m_Users.Count(); }

protected:
    // Claims the first unclaimed shortcut with this directory for the name.
    int32_t AddUser(const char* pszDirectory) override;

private:
    CAddrList<CAddrUser> m_Users;  // owned, in the order of discovery
};

#endif  // QV_ADDRREADERIMPL_H
