// SHA-256 (FIPS 180-4), written here: no library that both the Linux and the
// Windows cross builds have offers it header-only, and the manifest needs
// nothing more than this one digest.
#ifndef TQNRALM_TOOL_SHA256_H
#define TQNRALM_TOOL_SHA256_H

#include <string>
#include <string_view>

#include "BlockHash.h"

namespace tqnralm {

class Sha256 : public BlockHash {
public:
    Sha256();

    // Whether blocks go through the processor's SHA instructions where it
    // has them (the default); false forces the portable rounds (tests).
    // Returns whether the instructions are used.
    static bool UseProcessorInstructions(bool use);

    // The digests of two texts, in lower-case hexadecimal. With the SHA
    // instructions the blocks of both go through them side by side, which
    // costs little more than one text alone: each round waits on the one
    // before it, and the other text's round fills the wait.
    static void Pair(std::string_view a, std::string_view b, std::string* hexA, std::string* hexB);

private:
    void Blocks(const unsigned char* blocks, size_t count) override;
    void Block(const unsigned char* block);

    uint32_t words_[8];
};

}  // namespace tqnralm

#endif
