// fuzz_shortcut.cpp - .lnk bytes through the shell link reader.
#include "FuzzCheck.h"
#include "platform/posix/ShellLinkFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qvp::posix::ShellLinkFile file;
    const bool ok = file.Parse(reinterpret_cast<const char*>(data), size);
    if (!ok && !file.Arguments().empty()) __builtin_trap();
    if (file.Arguments().size() > size) __builtin_trap();
    return 0;
}
