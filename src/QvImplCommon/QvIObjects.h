// QvIObjects.h - enumerators: the frame of class 2 and the variants shared
// by several classes (empty, single object, index-based).
//
// An enumerator's parent is the object whose children it walks; the objects
// it delivers have that same parent, so they outlive the enumerator. Each
// enumerator makes one pass and moves only on a successful delivery.
#ifndef QV_QVIOBJECTS_H
#define QV_QVIOBJECTS_H

#include "QvImplCommon/QvIObject.h"

class CQvIObjects : public CQvIObject {
public:
    using CQvIObject::CQvIObject;
    int32_t GetClass(int32_t* pnClass) override;
    int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetChildCount(int32_t nClass, int32_t* pnChildCount) override;
    int32_t CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) override;

    virtual int32_t HasNext(QV_BOOL* pbHasNext) = 0;
    // The next child with a reference for the caller.
    virtual int32_t GetNext(CQvIObject** ppChild);
    // The next child without a reference.
    virtual int32_t CreateNext(CQvIObject** ppChild) = 0;
};

class CQvIEmptyObjects : public CQvIObjects {
public:
    using CQvIObjects::CQvIObjects;
    int32_t HasNext(QV_BOOL* pbHasNext) override;
    int32_t CreateNext(CQvIObject** ppChild) override;
};

// Delivers one object, held by a plain pointer: its owner keeps it alive.
class CQvISingleObjects : public CQvIObjects {
public:
    CQvISingleObjects(CQvIObject* pParent, CQvIObject* pItem) : CQvIObjects(pParent), m_pItem(pItem) {}
    int32_t HasNext(QV_BOOL* pbHasNext) override;
    int32_t CreateNext(CQvIObject** ppChild) override;

private:
    CQvIObject* m_pItem;
};

// Walks a parent's children by position; a concrete enumerator fetches the
// child at an index from its parent.
class CQvIIndexObjects : public CQvIObjects {
public:
    using CQvIObjects::CQvIObjects;
    void Init(int32_t nCount) {
        m_nCount = nCount;
        m_nPos = 0;
    }
    int32_t HasNext(QV_BOOL* pbHasNext) override;
    int32_t CreateNext(CQvIObject** ppChild) override;

protected:
    // The parent's child at nIndex, without a reference.
    virtual int32_t FetchAt(int32_t nIndex, CQvIObject** ppChild) = 0;

    int32_t m_nCount = 0;
    int32_t m_nPos = 0;
};

#endif  // QV_QVIOBJECTS_H
