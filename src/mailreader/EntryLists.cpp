// EntryLists.cpp - the two message list line formats.
#include "mailreader/EntryLists.h"

#include <cstring>


bool ParseEntryListLine(const char* pszLine, std::string& name) {
    // "00000001=..." : eight bytes of file name, then "=".
    if (std::strlen(pszLine) < 9 || pszLine[8] != '=') return false;
    name.assign(pszLine, 8);
    name += ".alm";
    return true;
}

bool ParseIndexLine(const char* pszLine, std::string& name) {
    // "=" never occurs as the trail byte of a Shift-JIS character, so the
    // first "=" byte is the separator.
    const char* pEq = std::strchr(pszLine, '=');
    if (pEq == nullptr) return false;
    size_t n = static_cast<size_t>(pEq - pszLine);
    if (n > kIndexNameMax) n = kIndexNameMax;
    name.assign(pszLine, n);
    name += ".alm";
    return true;
}
