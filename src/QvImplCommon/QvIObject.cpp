// QvIObject.cpp - reference counts, the parent chain and the class frames.
#include "QvImplCommon/QvIObject.h"

#include "QvImplCommon/QvIAnalyzer.h"
#include "QvImplCommon/QvITraceRecord.h"

#define QV_SOURCE "QvImplCommon\\QvIObject"

namespace {
void TraceCount(const CQvIObject* pObject, int32_t nOld, int32_t nNew, int nLine) {
    CQvITraceRecord(QV_SOURCE, nLine, QV_TRACE_REFCOUNT)
        .Text(u"オブジェクト ")
        .Pointer(pObject)
        .Text(u" : 参照カウンタ = ")
        .Signed(nOld)
        .Text(u" → ")
        .Signed(nNew)
        .Write();
}

int32_t StoreClass(int32_t* pnClass, int32_t nClass) {
    *pnClass = nClass;
    return QV_S_OK;
}
}  // namespace

void CQvIObject::AddRef() {
    // The first reference takes the one reference on the parent.
    if (m_nRefCount == 0 && m_pParent != nullptr) m_pParent->AddRef();
    TraceCount(this, m_nRefCount, m_nRefCount + 1, __LINE__);
    ++m_nRefCount;
}

void CQvIObject::Release() {
    TraceCount(this, m_nRefCount, m_nRefCount - 1, __LINE__);
    if (--m_nRefCount != 0) return;
    CQvIObject* pParent = m_pParent;
    OnFinalRelease();
    // The object may be gone now; the parent's reference goes last.
    if (pParent != nullptr) pParent->Release();
}

void CQvIObject::OnChildDisposed(CQvIObject*) {}

int32_t CQvIObject::GetAttributes(uint32_t* pdwAttribute) {
    if (pdwAttribute != nullptr) *pdwAttribute = 0;
    return QV_S_OK;
}

int32_t CQvIObject::GetChildObjects(int32_t nClass, CQvIObject** ppObjs) {
    CQvIObject* pObjs = nullptr;
    int32_t code = CreateChildObjects(nClass, &pObjs);
    if (code != QV_S_OK) return code;
    if (pObjs == nullptr) return QV_E_UNEXPECTED;
    *ppObjs = pObjs;
    pObjs->AddRef();
    return QV_S_OK;
}

int32_t CQvIObject::HasPassword(QV_BOOL* pbHasPassword) {
    if (pbHasPassword == nullptr) return QV_E_INVALID_ARGUMENT;
    *pbHasPassword = 0;
    return QV_S_OK;
}

int32_t CQvIObject::Logon(const QV_WCHAR*) { return QV_S_OK; }

int32_t CQvIObject::Dispose() {
    Release();
    return QV_S_OK;
}

void CQvIObject::OnFinalRelease() {
    if (m_pParent != nullptr) m_pParent->OnChildDisposed(this);
    delete this;
}

int32_t CQvIObject::GetEmptyText(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    if (lpszName != nullptr && *lpcNameLen >= 2) lpszName[0] = 0;
    *lpcNameLen = 0;
    return QV_S_OK;
}

int32_t CQvIRoot::GetClass(int32_t* pnClass) { return StoreClass(pnClass, QV_CLASS_ROOT); }
int32_t CQvIRoot::GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) { return GetEmptyText(lpszName, lpcNameLen); }
void CQvIRoot::OnFinalRelease() {
    if (CQvIAnalyzer* pAnalyzer = CQvIAnalyzer::GetInstance()) pAnalyzer->OnChildDisposed(this);
    CQvIObject::OnFinalRelease();
}

int32_t CQvIUser::GetClass(int32_t* pnClass) { return StoreClass(pnClass, QV_CLASS_USER); }
int32_t CQvIAccount::GetClass(int32_t* pnClass) { return StoreClass(pnClass, QV_CLASS_ACCOUNT); }
int32_t CQvIMailFolder::GetClass(int32_t* pnClass) { return StoreClass(pnClass, QV_CLASS_MAILFOLDER); }

int32_t CQvIMailMessage::GetClass(int32_t* pnClass) { return StoreClass(pnClass, QV_CLASS_MAILMESSAGE); }
int32_t CQvIMailMessage::GetChildCount(int32_t, int32_t*) { return QV_E_INVALID_ARGUMENT; }
int32_t CQvIMailMessage::CreateChildObjects(int32_t, CQvIObject**) { return QV_E_INVALID_ARGUMENT; }

int32_t CQvIAddressBook::GetClass(int32_t* pnClass) { return StoreClass(pnClass, QV_CLASS_ADDRESSBOOK); }
int32_t CQvIAddressBook::GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return GetEmptyText(lpszName, lpcNameLen);
}
int32_t CQvIAddressBook::GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return GetEmptyText(lpszName, lpcNameLen);
}

int32_t CQvIAddressGroup::GetClass(int32_t* pnClass) { return StoreClass(pnClass, QV_CLASS_ADDRESSGROUP); }

int32_t CQvIAddress::GetClass(int32_t* pnClass) { return StoreClass(pnClass, QV_CLASS_ADDRESS); }
int32_t CQvIAddress::GetChildCount(int32_t, int32_t*) { return QV_E_INVALID_ARGUMENT; }
int32_t CQvIAddress::CreateChildObjects(int32_t, CQvIObject**) { return QV_E_INVALID_ARGUMENT; }
