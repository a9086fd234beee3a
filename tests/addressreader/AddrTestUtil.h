// AddrTestUtil.h - small helpers of the address reader tests: parse bytes
// into a book, and write a book's shape as one comparable text.
#ifndef QV_TESTS_ADDRTESTUTIL_H
#define QV_TESTS_ADDRTESTUTIL_H

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "addressreader/AddrBook.h"

namespace addrtest {

// A book holding one top group "F" read from the bytes.
struct Parsed {
    std::unique_ptr<CAddrBook> book;
    CAddrGroup* file = nullptr;
    int32_t result = 0;
};
Parsed Parse(const std::string& bytes);

// "name{key=value|key=value|sub{...}}": items first, then subgroups.
std::string Dump(const CAddrGroup* group);
// The book's flat list, "key=value;key=value;".
std::string Flat(const CAddrBook& book);

// Checks the invariants of a book: every item's book index is its position,
// and the book's count is the sum over all groups at all depths (walked
// without recursion). Returns an empty text or what is wrong.
std::string CheckInvariants(const CAddrBook& book);

// A test name made of a case's description.
std::string CaseName(const char* description);
template <class Info>
std::string ParamName(const Info& info) {
    return CaseName(info.param.name);
}

// The text of a record, kind 1, released afterwards.
std::string Text8(QvV4Value& value);

}  // namespace addrtest

#endif  // QV_TESTS_ADDRTESTUTIL_H
