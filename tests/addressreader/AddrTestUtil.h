// AddrTestUtil.h - helpers of the address reader tests.
#ifndef QV_TESTS_ADDRTESTUTIL_H
#define QV_TESTS_ADDRTESTUTIL_H

#include <memory>
#include <string>
#include <vector>

#include "addressreader/AddrBook.h"
#include "addressreader/AddrLineSource.h"

namespace addrtest {

// A book holding one top group "F" read from the bytes.
struct Parsed {
    std::unique_ptr<CAddrBook> book{new CAddrBook("C:\\mb")};
    CAddrGroup* file = book->AddGroup("F");
    int32_t result = 0;
};
inline Parsed Parse(const std::string& bytes) {
    Parsed p;
    CAddrMemoryLineSource source(bytes.data(), bytes.size());
    p.result = p.file->ParseFile(source, *p.book);
    return p;
}

// "name{key=value|sub{...}}": items first, then subgroups.
inline std::string Dump(const CAddrGroup* group) {
    std::string out = std::string(group->Name()) + "{";
    const char* sep = "";
    for (int32_t i = 0; i < group->ItemCount(); ++i, sep = "|") {
        out += sep + std::string(group->ItemAt(i)->Key()) + "=" + group->ItemAt(i)->Value();
    }
    for (int32_t i = 0; i < group->GroupCount(); ++i, sep = "|") out += sep + Dump(group->GroupAt(i));
    return out + "}";
}

// The book's flat list, "key=value;key=value;".
inline std::string Flat(const CAddrBook& book) {
    std::string out;
    for (int32_t i = 0; i < book.ItemCount(); ++i) {
        out += std::string(book.ItemAt(i)->Key()) + "=" + book.ItemAt(i)->Value() + ";";
    }
    return out;
}

// Every item's book index is its position, and the book's count is the sum
// over all groups at all depths (walked without recursion). "" when so.
inline std::string CheckInvariants(const CAddrBook& book) {
    for (int32_t i = 0; i < book.ItemCount(); ++i) {
        if (book.ItemAt(i)->BookIndex() != i) return "book index of item " + std::to_string(i);
    }
    int64_t sum = 0;
    std::vector<const CAddrGroup*> pending;
    for (int32_t i = 0; i < book.GroupCount(); ++i) pending.push_back(book.GroupAt(i));
    while (!pending.empty()) {
        const CAddrGroup* group = pending.back();
        pending.pop_back();
        sum += group->ItemCount();
        for (int32_t i = 0; i < group->GroupCount(); ++i) pending.push_back(group->GroupAt(i));
    }
    return sum == book.ItemCount() ? "" : "items in groups " + std::to_string(sum);
}

}  // namespace addrtest

#endif  // QV_TESTS_ADDRTESTUTIL_H
