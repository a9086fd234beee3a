// fuzz_entrylist.cpp - a folder's "Entry.lst" message list from any bytes.
#include "FuzzCheck.h"

#include "mailreader/EntryLists.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CMemoryLineSource source(reinterpret_cast<const char*>(data), size);
    size_t count = 0;
    ReadEntryLines(source, ParseEntryListLine, [&count](const std::string& name) {
        // Eight bytes of name and ".alm", always.
        if (name.size() != 12 || name.compare(8, 4, ".alm") != 0) std::abort();
        ++count;
    });
    // At most one entry per line piece of at least nine bytes.
    if (count > size / 9) std::abort();
    return 0;
}
