// fuzz_entrylines.cpp - the same bytes as a folder's "Entry.lst" message list
// and as an index file ("trash.box").
#include "FuzzCheck.h"

#include "mailreader/EntryLists.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CMemoryLineSource list(data, size), index(data, size);
    size_t entries = 0, indexed = 0;
    ReadEntryLines(list, ParseEntryListLine, [&entries](const std::string& name) {
        // Eight bytes of name and ".alm", always.
        fuzzcheck::Check(name.size() == 12 && name.compare(8, 4, ".alm") == 0);
        ++entries;
    });
    ReadEntryLines(index, ParseIndexLine, [&indexed](const std::string& name) {
        fuzzcheck::Check(name.size() <= kIndexNameMax + 4 && name.size() >= 4 && name.find('=') == std::string::npos &&
                         name.compare(name.size() - 4, 4, ".alm") == 0);
        ++indexed;
    });
    // At most one entry per line piece of at least nine bytes.
    fuzzcheck::Check(entries <= size / 9 && indexed <= size);
    return 0;
}
