// fuzz_uninst.cpp - the uninstall file's two passes from any bytes: the
// Start menu's shortcut lines and the "[Mailboxes]" section.
#include "FuzzCheck.h"

#include <cstring>

#include "mailreader/Discovery.h"
#include "mailreader/LineSource.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string prefix = "C:\\windows\\\xBD\xC0\xB0\xC4\x20\xD2\xC6\xAD\xB0";
    CMemoryLineSource shortcuts(data, size);
    qvdisc::ReadShortcutLines(shortcuts, prefix, [&](const char* link) {
        // The path keeps the prefix and ends before "=" and the line end.
        if (qvdisc::StrNICmp(link, prefix.c_str(), prefix.size()) != 0) std::abort();
        if (std::strlen(link) > 268) std::abort();
    });
    CMemoryLineSource mailboxes(data, size);
    const int32_t result = qvdisc::ReadMailboxLines(mailboxes, [](const char* directory) {
        // What is left of "<directory>\Mailbox=": the directory and "\Mailbox".
        const size_t n = std::strlen(directory);
        if (n < 8 || qvdisc::StrNICmp(directory + n - 8, "\\Mailbox", 8) != 0) std::abort();
    });
    if (result != 0 && result != 100) std::abort();
    return 0;
}
