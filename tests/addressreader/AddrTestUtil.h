// AddrTestUtil.h - helpers of the address reader tests.
#ifndef QV_TESTS_ADDRTESTUTIL_H
#define QV_TESTS_ADDRTESTUTIL_H

#include <memory>
#include <string>

#include "addressreader/AddrBook.h"
#include "mailreader/LineSource.h"
#include "addressreader/AddrReader.h"
#include "support/WinePrefix.h"

namespace addrtest {

// A book holding one top group "F" read from the bytes.
struct Parsed {
    std::unique_ptr<CAddrBook> book{new CAddrBook("C:\\mb")};
    CAddrGroup* file = book->AddGroup("F");
    int32_t result = 0;
};
inline Parsed Parse(const std::string& bytes) {
    Parsed p;
    CMemoryLineSource source(bytes.data(), bytes.size());
    p.result = p.file->ParseFile(source, *p.book);
    return p;
}

// "name{key=value|sub{...}}": items first, then subgroups.
inline std::string Dump(const CAddrGroup* group) {
    std::string out = std::string(group->Name()) + "{";
    const char* sep = "";
    for (int32_t i = 0; i < group->ItemCount(); ++i, sep = "|")
        out += sep + std::string(group->ItemAt(i)->Key()) + "=" + group->ItemAt(i)->Value();
    for (int32_t i = 0; i < group->GroupCount(); ++i, sep = "|") out += sep + Dump(group->GroupAt(i));
    return out + "}";
}

// The book's flat list, "key=value;key=value;".
inline std::string Flat(const CAddrBook& book) {
    std::string out;
    for (int32_t i = 0; i < book.ItemCount(); ++i)
        out += std::string(book.ItemAt(i)->Key()) + "=" + book.ItemAt(i)->Value() + ";";
    return out;
}

// A text given out in UTF-8, "<null>", or "<untouched>" (still the sentinel).
inline std::string Text(const QvV4Value& v, const void* sentinel = nullptr) {
    if (v.pData == nullptr) return "<null>";
    if (v.pData == sentinel) return "<untouched>";
    return v.nKind == 1 ? qvt::Utf8(static_cast<const char*>(v.pData))
                        : qvt::Utf8(std::u16string(static_cast<const char16_t*>(v.pData)));
}

}  // namespace addrtest

#endif  // QV_TESTS_ADDRTESTUTIL_H
