// SHA-1 (FIPS 180-4), written here beside Sha256 and in its form: no library
// that both the Linux and the Windows cross builds have offers it
// header-only. It serves the name-based UUIDs of the exported cards
// (version 5 is defined over SHA-1), never security.
#ifndef TQNRALM_TOOL_SHA1_H
#define TQNRALM_TOOL_SHA1_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace tqnralm {

class Sha1 {
public:
    Sha1() { Reset(); }
    void Reset();
    void Update(const void* data, size_t size);
    // The digest as 40 lower-case hexadecimal digits; the object starts over.
    std::string HexDigest();

private:
    void Block(const unsigned char* block);

    uint32_t state_[5];
    unsigned char buffer_[64];
    size_t buffered_;
    uint64_t length_;
};

}  // namespace tqnralm

#endif
