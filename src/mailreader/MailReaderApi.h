// MailReaderApi.h - internals of the flat mail reader functions that tests
// reach directly: the handle record and the escaping of names.
#ifndef QV_MAILREADER_MAILREADERAPI_H
#define QV_MAILREADER_MAILREADERAPI_H

#include <cstdint>
#include <string>

class CMailReader;

// What a reader handle points at.
struct MailReaderHandle {
    CMailReader* pReader;
    char* pszTag;          // "CMLNOA User Handle", zeroed allocation of length + 5
    intptr_t nRootToken;   // always -1
};

// The tag that a record handle may point at in place of a record.
extern const char kMailHandleTag[];

// Names go out with "#", "/" and "\" written as "%23", "%2f" and "%5c", so
// that a host may use them as path components. A double-byte character is
// copied whole, whatever its trail byte; "%" stays as it is. Throws
// std::bad_alloc.
std::string EscapeRecordName(const std::string& name);

#endif  // QV_MAILREADER_MAILREADERAPI_H
