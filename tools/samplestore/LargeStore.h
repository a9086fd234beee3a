// LargeStore.h - a generated store of many messages, for benchmarks and
// for trying the library on the size of years of mail.
#ifndef QV_TOOLS_SAMPLESTORE_LARGESTORE_H
#define QV_TOOLS_SAMPLESTORE_LARGESTORE_H

#include <string>

namespace qvt {

struct LargeStoreShape {
    long messages = 0;       // in all folders together
    int folders = 1;         // messages are spread evenly, the first folders taking the remainder
    long messageBytes = 2048;  // about this size each, never less than the header
};

// Writes a Wine prefix to hostDir (replaced): the client installed, one user
// (the registry's mailbox C:\AL-Mail\Mailbox), one account "Account1", the
// folders "00000001.box"... with Japanese titles, and the messages as the
// client stores them (CR LF, ISO-2022-JP subjects, Japanese text). false
// with a reason when it cannot.
bool WriteLargeStore(const std::string& hostDir, const LargeStoreShape& shape, std::string* error);

}  // namespace qvt

#endif  // QV_TOOLS_SAMPLESTORE_LARGESTORE_H
