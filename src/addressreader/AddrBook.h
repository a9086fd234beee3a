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

#include "addressreader/AddrContainer.h"
#include "addressreader/AddrGroup.h"
#include "addressreader/AddrInterfaces.h"
#include "addressreader/AddrItem.h"
#include "mailreader/LineSource.h"

// The names of the book and of the default file's group, in Shift-JIS:
// "アドレス帳" and "標準のアドレス帳".
extern const char kAddrBookName[];
extern const char kAddrDefaultGroupName[];

class CAddrBook : public IAddrNamed, public CAddrContainer {
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
    // Takes the item into the flat list; it stays owned by its group.
    int32_t AddItem(CAddrItem* pItem);

    int32_t GetName(QvV4Value* pValue) override;

private:
    void ReadPath(const char* pszPath, const char* pszGroupName);

    std::unique_ptr<char[]> m_pszDirectory;
    // m_Groups: the top groups, owned; m_Items: every item, owned by their groups.
};

#endif  // QV_ADDRBOOK_H
