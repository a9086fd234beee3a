// QvV4AddressBook.h - the address side of the tree: a user's address book
// (class 7, owned by its user), groups (class 8) and addresses (class 9),
// with their enumerators and the table of address property keys.
#ifndef QV_QVV4ADDRESSBOOK_H
#define QV_QVV4ADDRESSBOOK_H

#include "QvV4Wrapper/QvV4Lazy.h"

class CQvV4AddressGroup;
class CQvV4Address;

// The system's vocabulary of address data: 29 keys, named by index.
enum : int32_t { QV_V4_PROPERTY_COUNT = 29, QV_V4_PROPERTY_FN = 0, QV_V4_PROPERTY_EMAIL = 6 };
extern const char16_t* const g_apszQvV4PropertyKeys[QV_V4_PROPERTY_COUNT];

class CQvV4AddressBook : public CQvIAddressBook {
public:
    explicit CQvV4AddressBook(CQvIObject* pParent);
    ~CQvV4AddressBook() override;

    void OnChildDisposed(CQvIObject* pChild) override;
    int32_t GetChildCount(int32_t nClass, int32_t* pnChildCount) override;
    int32_t CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) override;
    // The user owns the book: its last release leaves it standing.
    void OnFinalRelease() override {}

    void Bind(void* hAddrUser, int32_t nBookId) {
        m_hAddrUser = hAddrUser;
        m_nBookId = nBookId;
    }
    int32_t OpenBook();
    void ResolveProperties();
    int32_t GetPropertyIndex(int32_t nKeyIndex);
    int32_t GetGroupAt(int32_t nIndex, CQvIObject** ppChild);

private:
    int32_t FetchGroupCount();

    void* m_hAddrUser = nullptr;
    int32_t m_nBookId = 0;
    void* m_hBook = nullptr;
    int32_t m_bBookOpened = 0;
    CQvV4AddressGroup** m_ppGroups = nullptr;
    int32_t m_nGroupCount = -1;
    int32_t m_anPropIndex[QV_V4_PROPERTY_COUNT];
    int32_t m_bPropsResolved = 0;
};

class CQvV4AddressGroup : public CQvIAddressGroup {
public:
    CQvV4AddressGroup(CQvIObject* pParent, CQvV4AddressBook* pBook);
    ~CQvV4AddressGroup() override;

    void OnChildDisposed(CQvIObject* pChild) override;
    int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetChildCount(int32_t nClass, int32_t* pnChildCount) override;
    int32_t CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) override;

    void Bind(void* hGroup, int32_t nIndex) {
        m_hGroup = hGroup;
        m_nIndex = nIndex;
    }
    int32_t GetGroupAt(int32_t nIndex, CQvIObject** ppChild);
    int32_t GetAddressAt(int32_t nIndex, CQvIObject** ppChild);

    CQvV4AddressBook* m_pBook;
    void* m_hGroup = nullptr;
    int32_t m_nIndex = -1;

private:
    int32_t FetchGroupCount();
    int32_t FetchAddressCount();

    QvV4Value m_valName;
    CQvV4AddressGroup** m_ppGroups = nullptr;
    int32_t m_nGroupCount = -1;
    CQvV4Address** m_ppAddresses = nullptr;
    int32_t m_nAddressCount = -1;
};

class CQvV4Address : public CQvIAddress {
public:
    CQvV4Address(CQvIObject* pParent, CQvV4AddressBook* pBook);
    ~CQvV4Address() override;

    int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetData(QV_ADDRESS_DATA* pAddressData) override;

    void Bind(void* hItem, int32_t nIndex) {
        m_hItem = hItem;
        m_nIndex = nIndex;
    }

    void* m_hItem = nullptr;
    CQvV4AddressBook* m_pBook;
    int32_t m_nIndex = -1;

private:
    int32_t FetchProperty(QvV4Value& val, int32_t nKeyIndex, QV_WCHAR* lpszName, uint32_t* lpcNameLen);
    void FetchField(QV_WCHAR*& pszField, int32_t nKeyIndex);

    QvV4Value m_valName;
    QvV4Value m_valDisplayName;
};

// The release function that an address data record carries.
void QvV4ReleaseAddressData(QV_ADDRESS_DATA* pAddressData);

using CQvV4BookGroupObjects = CQvV4IndexObjects<CQvV4AddressBook, &CQvV4AddressBook::GetGroupAt>;
using CQvV4GroupChildObjects =
    CQvV4KindObjects<CQvV4AddressGroup, &CQvV4AddressGroup::GetGroupAt, &CQvV4AddressGroup::GetAddressAt>;

#endif  // QV_QVV4ADDRESSBOOK_H
