// SHA-256 (FIPS 180-4), written here: no library that both the Linux and the
// Windows cross builds have offers it header-only, and the manifest needs
// nothing more than this one digest.
#ifndef TQNRALM_TOOL_SHA256_H
#define TQNRALM_TOOL_SHA256_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace tqnralm {

class Sha256 {
public:
    Sha256() { Reset(); }
    void Reset();
    void Update(const void* data, size_t size);
    // The digest as 64 lower-case hexadecimal digits; the object starts over.
    std::string HexDigest();

    // Whether blocks go through the processor's SHA instructions where it
    // has them (the default); false forces the portable rounds (tests).
    // Returns whether the instructions are used.
    static bool UseProcessorInstructions(bool use);

private:
    void Block(const unsigned char* block);
    void Blocks(const unsigned char* blocks, size_t count);

    uint32_t state_[8];
    unsigned char buffer_[64];
    size_t buffered_;
    uint64_t length_;
};

}  // namespace tqnralm

#endif
