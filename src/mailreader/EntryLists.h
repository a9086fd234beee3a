// EntryLists.h - the line formats of a folder's message lists, apart from I/O.
//
// "Entry.lst" (a folder's own list) and the index file "trash.box" (a list of
// messages kept in other folders) are text files read line by line through a
// 512-byte buffer, as the client does: a longer line goes on as a new line at
// that point.
#ifndef QV_MAILREADER_ENTRYLISTS_H
#define QV_MAILREADER_ENTRYLISTS_H

#include <cstddef>
#include <string>

#include "mailreader/LineSource.h"

// Size of the line buffer of both lists.
enum : int { kEntryLineSize = 512 };
// Longest message path of an index file line, in bytes.
enum : size_t { kIndexNameMax = 255 };

// One "Entry.lst" line: an entry when its ninth byte is "=", and then its
// first eight bytes name the message. Gives the file name with ".alm".
bool ParseEntryListLine(const char* pszLine, std::string& name);

// One index file line: an entry when it holds "=", and then the text before
// the first "=" (at most 255 bytes) is the message's path relative to the
// mailbox directory. Gives that path with ".alm".
bool ParseIndexLine(const char* pszLine, std::string& name);

// Reads every line of the source and hands each entry's name to add(name).
template <typename Parse, typename Add>
void ReadEntryLines(CLineSource& source, Parse parse, Add add) {
    char szLine[kEntryLineSize];
    std::string name;
    while (source.Gets(szLine, kEntryLineSize) != nullptr) {
        if (parse(szLine, name)) add(name);
    }
}

#endif  // QV_MAILREADER_ENTRYLISTS_H
