// BlockHash.cpp - the block framing and padding that SHA-1 and SHA-256 share.
#include "BlockHash.h"

#include <cstring>

namespace tqnralm {

void BlockHash::Reset() {
    std::memcpy(state_, initial_, words_ * sizeof *state_);
    buffered_ = 0;
    length_ = 0;
}

void BlockHash::Update(const void* data, size_t size) {
    const unsigned char* p = static_cast<const unsigned char*>(data);
    length_ += size;
    if (buffered_ > 0) {
        size_t take = 64 - buffered_ < size ? 64 - buffered_ : size;
        std::memcpy(buffer_ + buffered_, p, take);
        buffered_ += take;
        p += take;
        size -= take;
        if (buffered_ < 64) return;
        Blocks(buffer_, 1);
        buffered_ = 0;
    }
    Blocks(p, size / 64);
    p += size / 64 * 64;
    size %= 64;
    std::memcpy(buffer_, p, size);
    buffered_ = size;
}

std::string BlockHash::HexDigest() {
    std::string out;
    HexDigest(&out);
    return out;
}

void BlockHash::HexDigest(std::string* out) {
    // 0x80, zeros up to 56 bytes into a block, then the length in bits.
    const uint64_t bits = length_ * 8;
    unsigned char pad[72] = {0x80};
    size_t padLength = (buffered_ < 56 ? 56 : 120) - buffered_;
    for (int i = 0; i < 8; ++i) pad[padLength + i] = static_cast<unsigned char>(bits >> (56 - 8 * i));
    Update(pad, padLength + 8);
    static const char kHex[] = "0123456789abcdef";
    char hex[8 * 8];  // of the longest state, SHA-256's eight words
    for (size_t i = 0; i < words_; ++i) {
        for (int k = 0; k < 8; ++k) hex[8 * i + k] = kHex[(state_[i] >> (28 - 4 * k)) & 0xF];
    }
    out->assign(hex, 8 * words_);
    Reset();
}

}  // namespace tqnralm
