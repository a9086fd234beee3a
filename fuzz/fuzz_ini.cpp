// fuzz_ini.cpp - initialisation file bytes through GetPrivateProfileStringA's
// parser; the first bytes choose the buffer size.
#include "FuzzCheck.h"
#include "platform/posix/IniFile.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const uint32_t bufferSize = data[0] % 70;
    const char* text = reinterpret_cast<const char*>(data + 1);
    char buffer[70];
    std::memset(buffer, 0, sizeof buffer);
    const uint32_t n = qvp::posix::ProfileStringFromBytes(text, size - 1, "Property", "Title", "'AL-Mail User'",
                                                          buffer, bufferSize);
    if (bufferSize > 0 && (n >= bufferSize || std::strlen(buffer) != n)) __builtin_trap();
    qvp::posix::ProfileStringFromBytes(text, size - 1, "", "", "", buffer, sizeof buffer);
    return 0;
}
