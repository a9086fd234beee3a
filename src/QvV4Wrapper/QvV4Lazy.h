// QvV4Lazy.h - the pattern every parent of the tree follows: counts behind a
// sentinel, child arrays made on first use, children that keep their parents
// alive, parents that only remember their children.
#ifndef QV_QVV4LAZY_H
#define QV_QVV4LAZY_H

#include <cstdint>

#include "QvImplCommon/QvIObjects.h"
#include "QvV4Value/QvV4Value.h"
#include "QvV4Wrapper/QvV4Analyzer.h"
#include "QvV4Wrapper/QvV4Utils.h"

// A text fetch: the cached record, or one reader call that fills it; then
// the delivery into the host's buffer. A failed fetch empties the record, so
// the next call asks again.
template <typename ReaderCall>
int32_t QvV4FetchText(QvV4Value& val, QV_WCHAR* lpszName, uint32_t* lpcNameLen, ReaderCall call) {
    if (val.pData == nullptr) {
        CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
        if (pAnalyzer == nullptr) return QV_E_UNEXPECTED;
        int32_t result = call(pAnalyzer);
        if (result != 0) {
            QvV4Value_Release(&val);
            return QvV4MapError(result);
        }
    }
    return QvV4CopyTextOut(static_cast<const char16_t*>(val.pData), lpszName, lpcNameLen);
}

// A count fetch: while the sentinel stands, one reader call into a local;
// the member takes the value only on success.
template <typename ReaderCall>
int32_t QvV4FetchCount(int32_t& nCount, int32_t nSentinel, ReaderCall call) {
    if (nCount != nSentinel) return QV_S_OK;
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (pAnalyzer == nullptr) return QV_E_UNEXPECTED;
    int32_t nValue = nSentinel;
    int32_t result = call(pAnalyzer, &nValue);
    if (result == 0) nCount = nValue;
    return QvV4MapError(result);
}

// The child fetch. fetchCount fills nCount; fetchHandle asks the reader for
// the child's handle (nullptr: no reader call); make builds and binds the
// child. The child is delivered without a reference.
template <typename Child, typename CountFetch, typename HandleFetch, typename Make>
int32_t QvV4FetchChild(Child**& ppArray, int32_t& nCount, int32_t nIndex, CQvIObject** ppChild,
                       CountFetch fetchCount, HandleFetch fetchHandle, Make make) {
    if (ppArray == nullptr) {
        int32_t code = fetchCount();
        if (code != QV_S_OK) return code;
        int32_t nSlots = nCount > 0 ? nCount : 1;
        ppArray = new Child*[static_cast<size_t>(nSlots)]();
    }
    if (nIndex < 0 || nIndex >= nCount) return QV_E_UNEXPECTED;
    if (ppArray[nIndex] == nullptr) {
        void* hChild = nullptr;
        int32_t code = fetchHandle(nIndex, &hChild);
        if (code != QV_S_OK) return code;
        ppArray[nIndex] = make(hChild, nIndex);
    }
    *ppChild = ppArray[nIndex];
    return QV_S_OK;
}

// A reader call for a child's handle, with the analyzer test and the mapping.
template <typename ReaderCall>
int32_t QvV4FetchHandle(ReaderCall call) {
    CQvV4Analyzer* pAnalyzer = QvV4GetAnalyzer();
    if (pAnalyzer == nullptr) return QV_E_UNEXPECTED;
    return QvV4MapError(call(pAnalyzer));
}

// Clears the slot of a dying child in one of a parent's arrays.
template <typename Child>
void QvV4ClearSlot(Child** ppArray, int32_t nCount, CQvIObject* pChild, int32_t nIndex) {
    if (ppArray != nullptr && nIndex >= 0 && nIndex < (nCount > 0 ? nCount : 1) &&
        ppArray[nIndex] == pChild) {
        ppArray[nIndex] = nullptr;
    }
}

// The enumerator of a parent's address book: the book where there is one.
inline CQvIObjects* QvV4BookObjects(CQvIObject* pParent, CQvIObject* pBook) {
    if (pBook != nullptr) return new CQvISingleObjects(pParent, pBook);
    return new CQvIEmptyObjects(pParent);
}

// An enumerator that asks its parent for the child at each position.
template <typename Parent, int32_t (Parent::*Fetch)(int32_t, CQvIObject**)>
class CQvV4IndexObjects : public CQvIIndexObjects {
public:
    using CQvIIndexObjects::CQvIIndexObjects;

protected:
    int32_t FetchAt(int32_t nIndex, CQvIObject** ppChild) override {
        return (static_cast<Parent*>(GetParent())->*Fetch)(nIndex, ppChild);
    }
};

// The same for a parent with two child classes, chosen by a kind flag.
template <typename Parent, int32_t (Parent::*FetchFirst)(int32_t, CQvIObject**),
          int32_t (Parent::*FetchSecond)(int32_t, CQvIObject**)>
class CQvV4KindObjects : public CQvIIndexObjects {
public:
    using CQvIIndexObjects::CQvIIndexObjects;
    void Init(int32_t bFirst, int32_t nCount) {
        m_bFirst = bFirst;
        CQvIIndexObjects::Init(nCount);
    }

protected:
    int32_t FetchAt(int32_t nIndex, CQvIObject** ppChild) override {
        Parent* pParent = static_cast<Parent*>(GetParent());
        return m_bFirst ? (pParent->*FetchFirst)(nIndex, ppChild) : (pParent->*FetchSecond)(nIndex, ppChild);
    }

private:
    int32_t m_bFirst = 0;
};

#endif  // QV_QVV4LAZY_H
