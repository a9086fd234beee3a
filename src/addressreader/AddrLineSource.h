// AddrLineSource.h - where the address file parser gets its lines from.
//
// The parser asks for lines the way fgets gives them on a stream opened in
// text mode ("rt"): at most n-1 bytes, the line feed kept, a carriage return
// before a line feed dropped, a Ctrl-Z (0x1A) ending the file. A file on disk
// and a buffer in memory (tests, fuzzing) behave alike.
#ifndef QV_ADDRLINESOURCE_H
#define QV_ADDRLINESOURCE_H

#include <cstddef>

#include "platform/platform.h"

class CAddrLineSource {
public:
    virtual ~CAddrLineSource() = default;
    // fgets: the buffer, or null when the source has ended before a byte was
    // read. n must be at least 2.
    virtual char* Gets(char* pBuffer, int n) = 0;
};

// An open text stream of the platform; the caller keeps it and closes it.
class CAddrFileLineSource : public CAddrLineSource {
public:
    explicit CAddrFileLineSource(qvp::File* pFile) : m_pFile(pFile) {}
    char* Gets(char* pBuffer, int n) override;

private:
    qvp::File* m_pFile;
};

// Bytes in memory, read as a text-mode stream would read them from a file.
// The bytes are not copied and must outlive the source.
class CAddrMemoryLineSource : public CAddrLineSource {
public:
    CAddrMemoryLineSource(const void* pData, size_t cb)
        : m_pData(static_cast<const unsigned char*>(pData)), m_cb(cb), m_pos(0) {}
    char* Gets(char* pBuffer, int n) override;

private:
    const unsigned char* m_pData;
    size_t m_cb;
    size_t m_pos;
};

#endif  // QV_ADDRLINESOURCE_H
