// NameUuid.cpp - SHA-1 and version 5 UUIDs.
//
// SHA-1 is written out here because the host builds for Linux and for
// Windows (mingw) with header-only libraries beside the standard one, and a
// crypto library on both sides would be a large dependency for fifty lines.
// It serves identifiers only, never security: a version 5 UUID is defined
// over SHA-1. The code follows FIPS 180-4 step by step.
#include "NameUuid.h"

#include <cstdio>

namespace tqnralm {
namespace {

uint32_t Rotl(uint32_t x, int n) { return (x << n) | (x >> (32 - n)); }

void Block(std::array<uint32_t, 5>& h, const uint8_t* p) {
    uint32_t w[80];
    for (int i = 0; i < 16; ++i) {
        w[i] = static_cast<uint32_t>(p[4 * i]) << 24 | static_cast<uint32_t>(p[4 * i + 1]) << 16 |
               static_cast<uint32_t>(p[4 * i + 2]) << 8 | p[4 * i + 3];
    }
    for (int i = 16; i < 80; ++i) w[i] = Rotl(w[i - 3] ^ w[i - 8] ^ w[i - 14] ^ w[i - 16], 1);
    uint32_t a = h[0], b = h[1], c = h[2], d = h[3], e = h[4];
    for (int i = 0; i < 80; ++i) {
        uint32_t f, k;
        if (i < 20) f = (b & c) | (~b & d), k = 0x5A827999;
        else if (i < 40) f = b ^ c ^ d, k = 0x6ED9EBA1;
        else if (i < 60) f = (b & c) | (b & d) | (c & d), k = 0x8F1BBCDC;
        else f = b ^ c ^ d, k = 0xCA62C1D6;
        uint32_t t = Rotl(a, 5) + f + e + k + w[i];
        e = d, d = c, c = Rotl(b, 30), b = a, a = t;
    }
    h[0] += a, h[1] += b, h[2] += c, h[3] += d, h[4] += e;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

std::array<uint8_t, 20> Sha1(const std::string& bytes) {
    std::array<uint32_t, 5> h = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    // The message, a 0x80 byte, zeros to 56 mod 64, and the length in bits.
    std::string tail = bytes.substr(bytes.size() - bytes.size() % 64);
    tail.push_back(static_cast<char>(0x80));
    while (tail.size() % 64 != 56) tail.push_back('\0');
    const uint64_t bits = static_cast<uint64_t>(bytes.size()) * 8;
    for (int i = 7; i >= 0; --i) tail.push_back(static_cast<char>(bits >> (8 * i)));
    const size_t whole = bytes.size() - bytes.size() % 64;
    for (size_t i = 0; i < whole; i += 64) Block(h, reinterpret_cast<const uint8_t*>(bytes.data() + i));
    for (size_t i = 0; i < tail.size(); i += 64) Block(h, reinterpret_cast<const uint8_t*>(tail.data() + i));
    std::array<uint8_t, 20> out;
    for (int i = 0; i < 20; ++i) out[i] = static_cast<uint8_t>(h[i / 4] >> (24 - 8 * (i % 4)));
    return out;
}

std::string NameUuid(const std::string& namespaceUuid, const std::string& name) {
    std::string input;
    for (size_t i = 0; i + 1 < namespaceUuid.size(); ++i) {
        int hi = HexDigit(namespaceUuid[i]), lo = HexDigit(namespaceUuid[i + 1]);
        if (hi < 0) continue;  // a hyphen
        input.push_back(static_cast<char>(hi << 4 | lo));
        ++i;
    }
    std::array<uint8_t, 20> d = Sha1(input + name);
    d[6] = static_cast<uint8_t>((d[6] & 0x0F) | 0x50);  // version 5
    d[8] = static_cast<uint8_t>((d[8] & 0x3F) | 0x80);  // the RFC's variant
    std::string out;
    char hex[3];
    for (int i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out.push_back('-');
        std::snprintf(hex, sizeof hex, "%02x", d[i]);
        out += hex;
    }
    return out;
}

}  // namespace tqnralm
