// SHA-1 (FIPS 180-4), written here beside Sha256 and in its form: no library
// that both the Linux and the Windows cross builds have offers it
// header-only. It serves the name-based UUIDs of the exported cards
// (version 5 is defined over SHA-1), never security.
#ifndef TQNRALM_TOOL_SHA1_H
#define TQNRALM_TOOL_SHA1_H

#include "BlockHash.h"

namespace tqnralm {

class Sha1 : public BlockHash {
public:
    Sha1();

private:
    void Blocks(const unsigned char* blocks, size_t count) override;
    void Block(const unsigned char* block);

    uint32_t words_[5];
};

}  // namespace tqnralm

#endif
