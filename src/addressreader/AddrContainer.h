// AddrContainer.h - what an address book and a group share: a list of groups
// and a list of items, in file order, and the container face over them.
//
// The lists do not own their entries: a group frees its subgroups and items,
// a book its top groups (its items belong to their groups).
#ifndef QV_ADDRCONTAINER_H
#define QV_ADDRCONTAINER_H

#include <cstdint>

#include "addressreader/AddrInterfaces.h"
#include "addressreader/AddrList.h"

class CAddrContainer : public IAddrContainer {
public:
    // Appends a new empty group and returns it.
    CAddrGroup* AddGroup(const char* pszName);

    int32_t GetItemCount(int32_t* pnCount) override;
    int32_t GetItem(int32_t nIndex, CAddrItem** ppItem) override;
    int32_t GetGroupCount(int32_t* pnCount) override;
    int32_t GetGroup(int32_t nIndex, CAddrGroup** ppGroup) override;

    int32_t ItemCount() const { return m_Items.Count(); }
    int32_t GroupCount() const { return m_Groups.Count(); }
    CAddrItem* ItemAt(int32_t nIndex) const { return m_Items.At(nIndex); }
    CAddrGroup* GroupAt(int32_t nIndex) const { return m_Groups.At(nIndex); }

protected:
    CAddrList<CAddrGroup> m_Groups;
    CAddrList<CAddrItem> m_Items;
};

#endif  // QV_ADDRCONTAINER_H
