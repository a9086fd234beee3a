// AddrContainer.cpp - the groups and items of a book or a group.
#include "addressreader/AddrContainer.h"

#include <memory>

#include "addressreader/AddrGroup.h"

CAddrGroup* CAddrContainer::AddGroup(const char* pszName) {
    std::unique_ptr<CAddrGroup> group(new CAddrGroup(pszName));
    m_Groups.Append(group.get());
    return group.release();
}

int32_t CAddrContainer::GetItemCount(int32_t* pnCount) {
    *pnCount = m_Items.Count();
    return 0;
}

int32_t CAddrContainer::GetItem(int32_t nIndex, CAddrItem** ppItem) {
    if (nIndex >= m_Items.Count()) {
        *ppItem = nullptr;
        return -3;
    }
    *ppItem = m_Items.At(nIndex);
    return 0;
}

int32_t CAddrContainer::GetGroupCount(int32_t* pnCount) {
    *pnCount = m_Groups.Count();
    return 0;
}

int32_t CAddrContainer::GetGroup(int32_t nIndex, CAddrGroup** ppGroup) {
    if (nIndex >= m_Groups.Count()) return -3;
    *ppGroup = m_Groups.At(nIndex);
    return 0;
}
