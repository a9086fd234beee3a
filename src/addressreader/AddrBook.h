// AddrBook.h - the address book of one mailbox directory: one top group per
// address file that could be read, and a flat list of every item of every
// file in file order.
//
// Files of a book, in this order: "<directory>\Address" (top group
// "標準のアドレス帳"), then each file that the key AddressFile of section
// [Property] in "<directory>\Mailbox.ini" lists, separated by ";" (top group
// named by the entry's file name and extension). A missing or unreadable file
// has no group.
#ifndef QV_ADDRBOOK_H
#define QV_ADDRBOOK_H

#include <cstdint>
#include <memory>

#include "addressreader/AddrGroup.h"
#include "addressreader/AddrInterfaces.h"
#include "addressreader/AddrItem.h"
#include "mailreader/LineSource.h"
#include "addressreader/AddrList.h"

// The names of the book and of the default file's group, in Shift-JIS:
// "アドレス帳" and "標準のアドレス帳".
extern const char kAddrBookName[];
extern const char kAddrDefaultGroupName[];

class CAddrBook : public IAddrNamed, public IAddrContainer {
public:
    // Buffers of the AddressFile value: the usual one, and the one that a
    // value which fills it is read again into.
    static constexpr uint32_t kListBufferSize = 2600;
    static constexpr uint32_t kLargeListBufferSize = 65536;

    explicit CAddrBook(const char* pszDirectory);
    ~CAddrBook() override;
    CAddrBook(const CAddrBook&) = delete;
    CAddrBook& operator=(const CAddrBook&) = delete;

    // Builds the book from the files of its directory. Always 0; running out
    // of memory throws.
    int32_t Load();
    // Appends a top group and reads one file into it.
    CAddrGroup* ReadFile(const char* pszGroupName, CLineSource& source);
    CAddrGroup* AddGroup(const char* pszName);
    // Takes the item into the flat list; it stays owned by its group.
    int32_t AddItem(CAddrItem* pItem);

    int32_t GetName(QvV4Value* pValue) override;
    int32_t GetItemCount(int32_t* pnCount) override;
    int32_t GetItem(int32_t nIndex, CAddrItem** ppItem) override;
    int32_t GetGroupCount(int32_t* pnCount) override;
    int32_t GetGroup(int32_t nIndex, CAddrGroup** ppGroup) override;

    int32_t ItemCount() const { return m_Items.Count(); }
    int32_t GroupCount() const { return m_Groups.Count(); }
    CAddrItem* ItemAt(int32_t nIndex) const { return m_Items.At(nIndex); }
    CAddrGroup* GroupAt(int32_t nIndex) const { return m_Groups.At(nIndex); }

private:
    void ReadPath(const char* pszPath, const char* pszGroupName);

    std::unique_ptr<char[]> m_pszDirectory;
    CAddrList<CAddrGroup> m_Groups;  // top groups, owned
    CAddrList<CAddrItem> m_Items;    // every item; owned by their groups
};

#endif  // QV_ADDRBOOK_H
