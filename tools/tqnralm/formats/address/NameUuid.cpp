// NameUuid.cpp - version 5 UUIDs: the SHA-1 of the namespace's 16 bytes and
// the name, cut to 16 bytes, with the version and the variant set.
#include "NameUuid.h"

#include "Sha1.h"
#include "platform/HexDigit.h"

namespace tqnralm {
namespace {

using qvp::HexDigit;

// The bytes of hexadecimal digits; anything else (the hyphens) is passed over.
std::string Bytes(const std::string& hex) {
    std::string out;
    for (size_t i = 0; i + 1 < hex.size(); ++i) {
        const int hi = HexDigit(hex[i]), lo = HexDigit(hex[i + 1]);
        if (hi < 0 || lo < 0) continue;
        out.push_back(static_cast<char>(hi << 4 | lo));
        ++i;
    }
    return out;
}

}  // namespace

std::string NameUuid(const std::string& namespaceUuid, const std::string& name) {
    Sha1 sha;
    const std::string space = Bytes(namespaceUuid);
    sha.Update(space.data(), space.size());
    sha.Update(name.data(), name.size());
    std::string hex = sha.HexDigest().substr(0, 32);
    static const char kHex[] = "0123456789abcdef";
    hex[12] = '5';                                  // version 5
    hex[16] = kHex[(HexDigit(hex[16]) & 0x3) | 0x8];  // the RFC's variant
    return hex.substr(0, 8) + "-" + hex.substr(8, 4) + "-" + hex.substr(12, 4) + "-" + hex.substr(16, 4) + "-" +
           hex.substr(20);
}

}  // namespace tqnralm
