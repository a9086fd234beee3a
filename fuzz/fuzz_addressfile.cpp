// fuzz_addressfile.cpp - the address file parser over arbitrary bytes, then
// a walk of the book through the flat functions with both text kinds.
#include "FuzzCheck.h"

#include <vector>

#include "addressreader/AddrBook.h"
#include "mailreader/LineSource.h"
#include "addressreader/AddrReader.h"

namespace {

void Fetch(ADDROBJECT_HANDLE hItem, int32_t nProperty, uint32_t nKind) {
    QvV4Value value;
    QvV4Value_Init(&value);
    QvV4Value_SetKind(&value, nKind);
    AddrReader_GetItemProperty(nullptr, hItem, nProperty, &value);
    QvV4Value_Release(&value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CAddrBook book("C:\\fuzz");
    CMemoryLineSource source(data, size);
    book.ReadFile("F", source);

    // Every item's book index is its position, and the groups at all depths
    // hold exactly the book's items.
    int32_t nItems = 0;
    AddrReader_GetItemCount(nullptr, static_cast<IAddrNamed*>(&book), &nItems);
    for (int32_t i = 0; i < nItems; ++i) {
        ADDROBJECT_HANDLE hItem = nullptr;
        if (AddrReader_GetItem(nullptr, static_cast<IAddrNamed*>(&book), i, &hItem) != 0) std::abort();
        if (static_cast<CAddrItem*>(hItem)->BookIndex() != i) std::abort();
        Fetch(hItem, i % 2, 1 + static_cast<uint32_t>(i % 3 == 0));
    }
    int64_t nSum = 0;
    std::vector<ADDROBJECT_HANDLE> pending;
    pending.push_back(static_cast<IAddrNamed*>(book.GroupAt(0)));
    while (!pending.empty()) {
        ADDROBJECT_HANDLE hGroup = pending.back();
        pending.pop_back();
        int32_t nCount = 0;
        AddrReader_GetItemCount(nullptr, hGroup, &nCount);
        nSum += nCount;
        QvV4Value name;
        QvV4Value_Init(&name);
        QvV4Value_SetKind(&name, 2);
        AddrReader_GetName(nullptr, hGroup, &name);
        QvV4Value_Release(&name);
        AddrReader_GetGroupCount(nullptr, hGroup, &nCount);
        for (int32_t i = 0; i < nCount; ++i) {
            ADDROBJECT_HANDLE hSub = nullptr;
            if (AddrReader_GetGroup(nullptr, hGroup, i, &hSub) != 0 || hSub == nullptr) std::abort();
            pending.push_back(hSub);
        }
    }
    if (nSum != nItems) std::abort();
    return 0;
}
