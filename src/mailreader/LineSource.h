// LineSource.h - lines of a text file, from disk or from memory.
//
// The readers ask for lines the way fgets gives them on a stream opened in
// text mode ("rt"): at most n-1 bytes, the line feed kept, a carriage return
// before a line feed dropped, a Ctrl-Z (0x1A) ending the file. A file on disk
// and a buffer in memory (tests, fuzzing) behave alike, so the parsers of the
// message lists and of the address files run the same on both.
#ifndef QV_MAILREADER_LINESOURCE_H
#define QV_MAILREADER_LINESOURCE_H

#include <cstddef>

namespace qvp {
struct File;
}

class CLineSource {
public:
    virtual ~CLineSource() = default;
    // fgets: the buffer, always terminated, or null when the source has
    // ended before a byte was read.
    virtual char* Gets(char* pBuffer, int n) = 0;
};

// An open text-mode file of the platform; the file stays the caller's.
class CFileLineSource : public CLineSource {
public:
    explicit CFileLineSource(qvp::File* pFile) : m_pFile(pFile) {}
    char* Gets(char* pBuffer, int n) override;

private:
    qvp::File* m_pFile;
};

// Bytes in memory, read as a text-mode stream would read them from a file.
// The bytes are not copied and must outlive the source.
class CMemoryLineSource : public CLineSource {
public:
    CMemoryLineSource(const void* pData, size_t cb)
        : m_pData(static_cast<const unsigned char*>(pData)), m_cb(cb), m_pos(0) {}
    char* Gets(char* pBuffer, int n) override;

private:
    const unsigned char* m_pData;
    size_t m_cb;
    size_t m_pos;
};

#endif  // QV_MAILREADER_LINESOURCE_H
