// SHA-1 (FIPS 180-4); see Sha1.h for why it is written here.
#include "Sha1.h"

#include <cstring>

namespace tqnralm {
namespace {

inline uint32_t Rotl(uint32_t x, int n) { return (x << n) | (x >> (32 - n)); }

}  // namespace

void Sha1::Reset() {
    static const uint32_t kInitial[5] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};
    std::memcpy(state_, kInitial, sizeof state_);
    buffered_ = 0;
    length_ = 0;
}

void Sha1::Block(const unsigned char* p) {
    uint32_t w[80];
    for (int i = 0; i < 16; ++i) {
        w[i] = (uint32_t(p[4 * i]) << 24) | (uint32_t(p[4 * i + 1]) << 16) | (uint32_t(p[4 * i + 2]) << 8) |
               uint32_t(p[4 * i + 3]);
    }
    for (int i = 16; i < 80; ++i) w[i] = Rotl(w[i - 3] ^ w[i - 8] ^ w[i - 14] ^ w[i - 16], 1);
    uint32_t a = state_[0], b = state_[1], c = state_[2], d = state_[3], e = state_[4];
    for (int i = 0; i < 80; ++i) {
        uint32_t f, k;
        if (i < 20) {
            f = (b & c) | (~b & d), k = 0x5a827999;
        } else if (i < 40) {
            f = b ^ c ^ d, k = 0x6ed9eba1;
        } else if (i < 60) {
            f = (b & c) | (b & d) | (c & d), k = 0x8f1bbcdc;
        } else {
            f = b ^ c ^ d, k = 0xca62c1d6;
        }
        const uint32_t t = Rotl(a, 5) + f + e + k + w[i];
        e = d;
        d = c;
        c = Rotl(b, 30);
        b = a;
        a = t;
    }
    state_[0] += a;
    state_[1] += b;
    state_[2] += c;
    state_[3] += d;
    state_[4] += e;
}

void Sha1::Update(const void* data, size_t size) {
    const unsigned char* p = static_cast<const unsigned char*>(data);
    length_ += size;
    if (buffered_ > 0) {
        size_t take = 64 - buffered_ < size ? 64 - buffered_ : size;
        std::memcpy(buffer_ + buffered_, p, take);
        buffered_ += take;
        p += take;
        size -= take;
        if (buffered_ < 64) return;
        Block(buffer_);
        buffered_ = 0;
    }
    for (; size >= 64; p += 64, size -= 64) Block(p);
    std::memcpy(buffer_, p, size);
    buffered_ = size;
}

std::string Sha1::HexDigest() {
    const uint64_t bits = length_ * 8;
    unsigned char pad[72] = {0x80};
    size_t padLength = (buffered_ < 56 ? 56 : 120) - buffered_;
    for (int i = 0; i < 8; ++i) pad[padLength + i] = static_cast<unsigned char>(bits >> (56 - 8 * i));
    Update(pad, padLength + 8);
    static const char kHex[] = "0123456789abcdef";
    std::string out;
    for (uint32_t word : state_) {
        for (int shift = 28; shift >= 0; shift -= 4) out.push_back(kHex[(word >> shift) & 0xF]);
    }
    Reset();
    return out;
}

}  // namespace tqnralm
