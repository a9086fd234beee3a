// fuzz_indexfile.cpp - an index file ("trash.box") from any bytes.
#include "FuzzCheck.h"

#include "mailreader/EntryLists.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CMemoryLineSource source(reinterpret_cast<const char*>(data), size);
    size_t count = 0;
    ReadEntryLines(source, ParseIndexLine, [&count](const std::string& name) {
        if (name.size() > kIndexNameMax + 4 || name.size() < 4) std::abort();
        if (name.compare(name.size() - 4, 4, ".alm") != 0) std::abort();
        if (name.find('=') != std::string::npos) std::abort();
        ++count;
    });
    if (count > size) std::abort();
    return 0;
}
