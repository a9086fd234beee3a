// fuzz_registry.cpp - Wine registry file bytes through the parser, then a
// few look-ups of what it kept.
#include "FuzzCheck.h"
#include "platform/posix/RegistryFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qvp::posix::RegistryFile file;
    if (!file.Parse(reinterpret_cast<const char*>(data), size)) return 0;
    file.HasKey(u"SOFTWARE\\CREAR\\AL-MAIL");
    file.HasKey(u"SOFTWARE\\WOW6432NODE\\CREAR\\AL-MAIL");
    const qvp::posix::RegistryFile::Value* value = file.Find(u"SOFTWARE\\CREAR\\AL-MAIL", u"INSTALLPATH");
    if (value != nullptr && value->isText && !value->text.empty()) {
        volatile char16_t first = value->text[0];
        (void)first;
    }
    return 0;
}
