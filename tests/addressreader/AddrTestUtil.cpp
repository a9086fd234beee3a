// AddrTestUtil.cpp - helpers of the address reader tests.
#include "AddrTestUtil.h"

#include <cstdint>

#include "addressreader/AddrLineSource.h"

namespace addrtest {

Parsed Parse(const std::string& bytes) {
    Parsed parsed;
    parsed.book.reset(new CAddrBook("C:\\mb"));
    parsed.file = parsed.book->AddGroup("F");
    CAddrMemoryLineSource source(bytes.data(), bytes.size());
    parsed.result = parsed.file->ParseFile(source, *parsed.book);
    return parsed;
}

std::string Dump(const CAddrGroup* group) {
    std::string out = std::string(group->Name()) + "{";
    const char* sep = "";
    for (int32_t i = 0; i < group->ItemCount(); ++i, sep = "|") {
        out += sep;
        out += std::string(group->ItemAt(i)->Key()) + "=" + group->ItemAt(i)->Value();
    }
    for (int32_t i = 0; i < group->GroupCount(); ++i, sep = "|") {
        out += sep;
        out += Dump(group->GroupAt(i));
    }
    return out + "}";
}

std::string Flat(const CAddrBook& book) {
    std::string out;
    for (int32_t i = 0; i < book.ItemCount(); ++i) {
        out += std::string(book.ItemAt(i)->Key()) + "=" + book.ItemAt(i)->Value() + ";";
    }
    return out;
}

std::string CheckInvariants(const CAddrBook& book) {
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
    if (sum != book.ItemCount()) {
        return "items in groups " + std::to_string(sum) + ", in the book " + std::to_string(book.ItemCount());
    }
    return "";
}

std::string CaseName(const char* description) {
    std::string name;
    for (const char* p = description; *p != '\0'; ++p) {
        char c = *p;
        name += (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ? c : '_';
    }
    return name;
}

std::string Text8(QvV4Value& value) {
    std::string text = value.pData != nullptr ? static_cast<const char*>(value.pData) : "<null>";
    QvV4Value_Release(&value);
    return text;
}

}  // namespace addrtest
