// EntryLists.h - the line formats of a folder's message lists, apart from I/O.
//
// "Entry.lst" (a folder's own list) and the index file "trash.box" (a list of
// messages kept in other folders) are text files read line by line through a
// 512-byte buffer, as the client does: a longer line goes on as a new line at
// that point. A line source gives those lines from a file or from memory, so
// the parsers run the same on a disk file, in a test and in a fuzzer.
#ifndef QV_MAILREADER_ENTRYLISTS_H
#define QV_MAILREADER_ENTRYLISTS_H

#include <cstddef>
#include <string>

namespace qvp {
struct File;
}

// Size of the line buffer of both lists.
enum : int { kEntryLineSize = 512 };
// Longest message path of an index file line, in bytes.
enum : size_t { kIndexNameMax = 255 };

class CLineSource {
public:
    virtual ~CLineSource() = default;
    // fgets: at most n-1 bytes, the newline kept, always terminated. Null at
    // the end.
    virtual char* Gets(char* pBuffer, int n) = 0;
};

// Lines of an open text-mode file; the file stays the caller's.
class CFileLineSource : public CLineSource {
public:
    explicit CFileLineSource(qvp::File* pFile) : m_pFile(pFile) {}
    char* Gets(char* pBuffer, int n) override;

private:
    qvp::File* m_pFile;
};

// Lines of a byte buffer, as fgets would give them from a file holding those
// bytes (text-mode translation is the platform's and is not repeated here).
class CMemoryLineSource : public CLineSource {
public:
    CMemoryLineSource(const char* pData, size_t nSize) : m_pData(pData), m_nSize(nSize), m_nPos(0) {}
    char* Gets(char* pBuffer, int n) override;

private:
    const char* m_pData;
    size_t m_nSize;
    size_t m_nPos;
};

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
