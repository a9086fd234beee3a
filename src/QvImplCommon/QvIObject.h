// QvIObject.h - the base of every object a host can hold, and the nine class
// frames, one per class number.
//
// An object owns a link to its parent and a reference count. A referenced
// object holds exactly one reference on its parent, so every live object
// keeps its chain up to the root alive; parents remember their children only
// by plain pointers. The order of the virtual operations is fixed: the
// exported functions call through it.
#ifndef QV_QVIOBJECT_H
#define QV_QVIOBJECT_H

#include <cstdint>

#include "tqnralm.h"

class CQvIObject {
public:
    explicit CQvIObject(CQvIObject* pParent) : m_pParent(pParent), m_nRefCount(0) {}
    virtual ~CQvIObject() = default;

    virtual void AddRef();
    virtual void Release();
    virtual void OnChildDisposed(CQvIObject* pChild);
    virtual int32_t GetClass(int32_t* pnClass) = 0;
    virtual int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) = 0;
    virtual int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) = 0;
    virtual int32_t GetAttributes(uint32_t* pdwAttribute);
    virtual int32_t GetChildCount(int32_t nClass, int32_t* pnChildCount) = 0;
    virtual int32_t GetChildObjects(int32_t nClass, CQvIObject** ppObjs);
    virtual int32_t HasPassword(QV_BOOL* pbHasPassword);
    virtual int32_t Logon(const QV_WCHAR* lpszPassword);
    virtual int32_t Dispose();
    virtual void OnFinalRelease();
    virtual int32_t CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) = 0;

    CQvIObject* GetParent() const { return m_pParent; }

protected:
    // The shared operation of objects without a name: a terminator only when
    // the buffer's count is at least 2; the length is 0.
    static int32_t GetEmptyText(QV_WCHAR* lpszName, uint32_t* lpcNameLen);

private:
    CQvIObject* m_pParent;
    int32_t m_nRefCount;

    CQvIObject(const CQvIObject&) = delete;
    CQvIObject& operator=(const CQvIObject&) = delete;
};

class CQvIRoot : public CQvIObject {
public:
    CQvIRoot() : CQvIObject(nullptr) {}
    int32_t GetClass(int32_t* pnClass) override;
    int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    void OnFinalRelease() override;
};

class CQvIUser : public CQvIObject {
public:
    using CQvIObject::CQvIObject;
    int32_t GetClass(int32_t* pnClass) override;
};

class CQvIAccount : public CQvIObject {
public:
    using CQvIObject::CQvIObject;
    int32_t GetClass(int32_t* pnClass) override;
};

class CQvIMailFolder : public CQvIObject {
public:
    using CQvIObject::CQvIObject;
    int32_t GetClass(int32_t* pnClass) override;
};

class CQvIMailMessage : public CQvIObject {
public:
    using CQvIObject::CQvIObject;
    int32_t GetClass(int32_t* pnClass) override;
    int32_t GetChildCount(int32_t nClass, int32_t* pnChildCount) override;
    int32_t CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) override;
    virtual int32_t GetData(QV_MAIL_DATA* pMailData) = 0;
};

class CQvIAddressBook : public CQvIObject {
public:
    using CQvIObject::CQvIObject;
    int32_t GetClass(int32_t* pnClass) override;
    int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
};

class CQvIAddressGroup : public CQvIObject {
public:
    using CQvIObject::CQvIObject;
    int32_t GetClass(int32_t* pnClass) override;
};

class CQvIAddress : public CQvIObject {
public:
    using CQvIObject::CQvIObject;
    int32_t GetClass(int32_t* pnClass) override;
    int32_t GetChildCount(int32_t nClass, int32_t* pnChildCount) override;
    int32_t CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) override;
    virtual int32_t GetData(QV_ADDRESS_DATA* pAddressData) = 0;
};

#endif  // QV_QVIOBJECT_H
