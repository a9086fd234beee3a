// LineSource.cpp - the file and memory line sources.
#include "mailreader/LineSource.h"

#include "QvV4Value/QvExceptions.h"

#include "platform/platform.h"

char* CFileLineSource::Gets(char* pBuffer, int n) {
    char* p = qvp::FileGets(pBuffer, n, m_pFile);
    // A failed read is not the end of the list: what follows it is unknown.
    if (p == nullptr && qvp::FileError(m_pFile)) throw CFileException(qvp::kCauseHardIo);
    return p;
}

char* CMemoryLineSource::Gets(char* pBuffer, int n) {
    if (n <= 0) return nullptr;
    int nStored = 0;
    while (nStored < n - 1 && m_pos < m_cb) {
        unsigned char byte = m_pData[m_pos];
        if (byte == 0x1A) {
            // Text mode ends the file at Ctrl-Z, for good.
            m_pos = m_cb;
            break;
        }
        ++m_pos;
        if (byte == '\r' && m_pos < m_cb && m_pData[m_pos] == '\n') continue;
        pBuffer[nStored++] = static_cast<char>(byte);
        if (byte == '\n') break;
    }
    if (nStored == 0) return nullptr;
    pBuffer[nStored] = '\0';
    return pBuffer;
}
