// SHA-1 (FIPS 180-4); see Sha1.h for why it is written here.
#include "Sha1.h"

namespace tqnralm {
namespace {

inline uint32_t Rotl(uint32_t x, int n) { return (x << n) | (x >> (32 - n)); }

const uint32_t kInitial[5] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};

}  // namespace

Sha1::Sha1() : BlockHash(words_, kInitial, 5) { Reset(); }

void Sha1::Blocks(const unsigned char* p, size_t count) {
    for (; count > 0; --count, p += 64) Block(p);
}

void Sha1::Block(const unsigned char* p) {
    uint32_t w[80];
    for (int i = 0; i < 16; ++i) w[i] = LoadBigEndian32(p + 4 * i);
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


}  // namespace tqnralm
