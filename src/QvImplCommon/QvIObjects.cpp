// QvIObjects.cpp - the enumerator frame and its shared variants.
#include "QvImplCommon/QvIObjects.h"

int32_t CQvIObjects::GetClass(int32_t* pnClass) {
    *pnClass = QV_CLASS_OBJECTS;
    return QV_S_OK;
}

int32_t CQvIObjects::GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) { return GetEmptyText(lpszName, lpcNameLen); }

int32_t CQvIObjects::GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    return GetEmptyText(lpszName, lpcNameLen);
}

int32_t CQvIObjects::GetChildCount(int32_t, int32_t*) { return QV_E_INVALID_ARGUMENT; }

int32_t CQvIObjects::CreateChildObjects(int32_t, CQvIObject**) { return QV_E_INVALID_ARGUMENT; }

int32_t CQvIObjects::GetNext(CQvIObject** ppChild) {
    CQvIObject* pChild = nullptr;
    int32_t code = CreateNext(&pChild);
    if (code != QV_S_OK) return code;
    if (pChild == nullptr) return QV_E_UNEXPECTED;
    *ppChild = pChild;
    pChild->AddRef();
    return QV_S_OK;
}

int32_t CQvIEmptyObjects::HasNext(QV_BOOL* pbHasNext) {
    if (pbHasNext == nullptr) return QV_E_INVALID_ARGUMENT;
    *pbHasNext = 0;
    return QV_S_OK;
}

int32_t CQvIEmptyObjects::CreateNext(CQvIObject**) { return QV_E_NO_MORE_ITEMS; }

int32_t CQvISingleObjects::HasNext(QV_BOOL* pbHasNext) {
    if (pbHasNext == nullptr) return QV_E_INVALID_ARGUMENT;
    *pbHasNext = m_pItem != nullptr ? 1 : 0;
    return QV_S_OK;
}

int32_t CQvISingleObjects::CreateNext(CQvIObject** ppChild) {
    if (ppChild == nullptr) return QV_E_INVALID_ARGUMENT;
    if (m_pItem == nullptr) return QV_E_NO_MORE_ITEMS;
    *ppChild = m_pItem;
    m_pItem = nullptr;
    return QV_S_OK;
}

int32_t CQvIIndexObjects::HasNext(QV_BOOL* pbHasNext) {
    if (pbHasNext == nullptr) return QV_E_INVALID_ARGUMENT;
    *pbHasNext = m_nPos < m_nCount ? 1 : 0;
    return QV_S_OK;
}

int32_t CQvIIndexObjects::CreateNext(CQvIObject** ppChild) {
    if (ppChild == nullptr) return QV_E_INVALID_ARGUMENT;
    if (m_nPos >= m_nCount) return QV_E_NO_MORE_ITEMS;
    // A failure keeps the position, so the next call asks for the same child.
    int32_t code = FetchAt(m_nPos, ppChild);
    if (code != QV_S_OK) return code;
    ++m_nPos;
    return QV_S_OK;
}
