// QvV4User.h - a user of the mail client (class 3): its accounts and the
// address book that it owns, and the enumerator of its accounts.
#ifndef QV_QVV4USER_H
#define QV_QVV4USER_H

#include "QvV4Wrapper/QvV4Lazy.h"

class CQvV4Account;
class CQvV4AddressBook;

class CQvV4User : public CQvIUser {
public:
    explicit CQvV4User(CQvIObject* pParent);
    ~CQvV4User() override;

    void OnChildDisposed(CQvIObject* pChild) override;
    int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetChildCount(int32_t nClass, int32_t* pnChildCount) override;
    int32_t CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) override;

    void Bind(void* hUser, int32_t nIndex) {
        m_hUser = hUser;
        m_nIndex = nIndex;
    }
    int32_t GetAccountAt(int32_t nIndex, CQvIObject** ppChild);

    void* m_hUser = nullptr;
    int32_t m_bBookFetched = 0;
    CQvV4AddressBook* m_pBook = nullptr;
    int32_t m_nIndex = -1;

private:
    int32_t FetchAccountCount();
    int32_t SearchBook();
    // -1 from the reader: no account layer; one account stands for the user.
    int32_t VisibleAccountCount() const { return m_nAccountCount == -1 ? 1 : m_nAccountCount; }

    QvV4Value m_valName;
    CQvV4Account** m_ppAccounts = nullptr;
    int32_t m_nAccountCount = -2;
};

using CQvV4AccountObjects = CQvV4IndexObjects<CQvV4User, &CQvV4User::GetAccountAt>;

#endif  // QV_QVV4USER_H
