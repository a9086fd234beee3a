// AddrGroup.h - a group of an address book: a file's top group, a "Group"
// block of a file, or the subgroup that an entry with several addresses
// makes. It owns its subgroups and its items.
//
// The address file, line by line, after leading white space (keywords in any
// case, and only as prefixes):
//   "Group" ...        opens a subgroup named by the text from the line's
//                      seventh byte on (the sixth, normally a blank, is passed)
//   "End Group" ...    closes the current group
//   "Separator" ...    nothing
//   key: value         an entry; the key ends at the first colon that a blank
//                      follows; no such colon: the whole line is the key and
//                      the value is empty. A value with commas makes a
//                      subgroup named by the key, one item per piece.
// Lines are read in pieces of at most 5,119 bytes; a zero byte ends a line.
#ifndef QV_ADDRGROUP_H
#define QV_ADDRGROUP_H

#include <cstdint>
#include <memory>

#include "addressreader/AddrContainer.h"
#include "addressreader/AddrInterfaces.h"
#include "addressreader/AddrItem.h"
#include "mailreader/LineSource.h"

class CAddrBook;

class CAddrGroup : public IAddrNamed, public CAddrContainer {
public:
    // Size of the line buffer: a line arrives in pieces of at most 5,119 bytes.
    static constexpr int kLineBufferSize = 5120;

    explicit CAddrGroup(const char* pszName);
    ~CAddrGroup() override;
    CAddrGroup(const CAddrGroup&) = delete;
    CAddrGroup& operator=(const CAddrGroup&) = delete;

    // Reads lines into this group until it ends: 0 at its "End Group", -1 at
    // the end of the source, which also ends every group still open inside.
    // Nesting costs no stack: open groups are kept on a list of their own.
    int32_t ParseFile(CLineSource& source, CAddrBook& book);
    // The entry of one line. The value may be cut in place at its commas.
    int32_t AddEntry(const char* pszKey, char* pszValue, CAddrBook& book);

    int32_t GetName(QvV4Value* pValue) override;

    const char* Name() const { return m_pszName.get(); }

private:
    void AddItem(const char* pszKey, const char* pszValue, CAddrBook& book);

    std::unique_ptr<char[]> m_pszName;
    // m_Groups: the direct subgroups, owned; m_Items: the direct items, owned.
};

#endif  // QV_ADDRGROUP_H
