// QvV4Account.h - a mail account (class 4) and the enumerator of its top
// folders. An account with handle 0 stands for a user without an account
// layer and lists that user's folders.
#ifndef QV_QVV4ACCOUNT_H
#define QV_QVV4ACCOUNT_H

#include "QvV4Wrapper/QvV4Lazy.h"

class CQvV4MailFolder;

class CQvV4Account : public CQvIAccount {
public:
    explicit CQvV4Account(CQvIObject* pParent);
    ~CQvV4Account() override;

    void OnChildDisposed(CQvIObject* pChild) override;
    int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetAttributes(uint32_t* pdwAttribute) override;
    int32_t GetChildCount(int32_t nClass, int32_t* pnChildCount) override;
    int32_t CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) override;

    void Bind(void* hAccount, int32_t nIndex) {
        m_hAccount = hAccount;
        m_nIndex = nIndex;
    }
    int32_t GetFolderAt(int32_t nIndex, CQvIObject** ppChild);

    void* m_hAccount = nullptr;
    int32_t m_bBookFetched = 0;
    CQvIObject* m_pBook = nullptr;  // never set: books hang on the user
    int32_t m_nIndex = -1;

private:
    template <typename ReaderName>
    int32_t FetchName(QvV4Value& val, QV_WCHAR* lpszName, uint32_t* lpcNameLen, ReaderName readerName);
    int32_t SearchBook();
    int32_t FetchFolderCount();
    void* FolderHandle() const;

    QvV4Value m_valName;
    QvV4Value m_valDisplayName;
    CQvV4MailFolder** m_ppFolders = nullptr;
    int32_t m_nFolderCount = -1;
};

using CQvV4AccountFolderObjects = CQvV4IndexObjects<CQvV4Account, &CQvV4Account::GetFolderAt>;

#endif  // QV_QVV4ACCOUNT_H
