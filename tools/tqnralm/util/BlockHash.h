// BlockHash.h - what the two hashes of the host share (SHA-1 for the cards'
// name-based UUIDs, SHA-256 for the manifest): input fed in parts and cut
// into 64-byte blocks, the padding with the message's bit length, and the
// digest read out of the state as big-endian words in hexadecimal.
#ifndef TQNRALM_TOOL_BLOCKHASH_H
#define TQNRALM_TOOL_BLOCKHASH_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace tqnralm {

class BlockHash {
public:
    void Update(const void* data, size_t size);
    // The digest in lower-case hexadecimal; the object starts over.
    std::string HexDigest();
    // The same into `out`, whose buffer is kept (one digest per message).
    void HexDigest(std::string* out);

protected:
    // `state` (of `words` words, owned by the hash) starts as `initial`.
    BlockHash(uint32_t* state, const uint32_t* initial, size_t words)
        : state_(state), initial_(initial), words_(words) {}
    virtual ~BlockHash() = default;
    BlockHash(const BlockHash&) = delete;
    BlockHash& operator=(const BlockHash&) = delete;

    void Reset();
    // Runs the compression over `count` whole blocks.
    virtual void Blocks(const unsigned char* blocks, size_t count) = 0;
    // Counts `bytes` of whole blocks that went into the state directly,
    // while nothing was buffered.
    void Counted(uint64_t bytes) { length_ += bytes; }

    uint32_t* const state_;

private:
    const uint32_t* const initial_;
    const size_t words_;
    unsigned char buffer_[64];
    size_t buffered_ = 0;
    uint64_t length_ = 0;
};

// A big-endian 32-bit word of a block.
inline uint32_t LoadBigEndian32(const unsigned char* p) {
    return (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | uint32_t(p[3]);
}

}  // namespace tqnralm

#endif
