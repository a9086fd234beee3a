// AddrUser.h - one mailbox directory seen from the address side, and the
// books that can be built from it.
//
// A user is named by its start-menu shortcut; without one, by the Title of
// section [Property] in "<directory>\Account1\Account.ini"; without that,
// "AL-Mail User".
#ifndef QV_ADDRUSER_H
#define QV_ADDRUSER_H

#include <cstdint>
#include <memory>

#include "addressreader/AddrBook.h"
#include "addressreader/AddrInterfaces.h"

class CAddrUser : public IAddrNamed {
public:
    // Size of the buffer that the account title is read into.
    static constexpr uint32_t kTitleBufferSize = 512;

    // Copies the directory and the title, which may be null.
    CAddrUser(const char* pszDirectory, const char* pszTitle);

    // Sets the name from the account file or the fallback if it is still
    // null; a shortcut's name wins and the account file is not opened. 0.
    int32_t FillName();
    int32_t GetName(QvV4Value* pValue) override;

    // A new book built from the directory as it stands now; the caller owns
    // it. 0; running out of memory throws, and no book is left behind.
    int32_t OpenBook(CAddrBook** ppBook) const;
    // Destroys the book if it is not null. 0.
    static int32_t CloseBook(CAddrBook* pBook);

    const char* Name() const { return m_pszName.get(); }

private:
    std::unique_ptr<char[]> m_pszName;
    std::unique_ptr<char[]> m_szDirectory;  // without a trailing backslash
};

#endif  // QV_ADDRUSER_H
