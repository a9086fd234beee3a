// File names made from the mail client's names (see FileNames.h).
#include "FileNames.h"

#include <cstdint>

#include "Utf.h"

namespace tqnralm {
namespace {

bool IsDeviceName(std::string base) {
    for (char& c : base) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
    if (base == "CON" || base == "PRN" || base == "AUX" || base == "NUL") return true;
    return base.size() == 4 && (base.compare(0, 3, "COM") == 0 || base.compare(0, 3, "LPT") == 0) &&
           base[3] >= '1' && base[3] <= '9';
}

// The code point at `i` and its length; a byte that starts no UTF-8
// sequence stands alone.
uint32_t Decode(const std::string& s, size_t i, size_t* len) {
    unsigned char c = static_cast<unsigned char>(s[i]);
    size_t n = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
    if (i + n > s.size()) n = 1;
    for (size_t k = 1; k < n; ++k) {
        if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80) n = 1;  // not UTF-8: one byte alone
    }
    uint32_t cp = n == 1 ? c : n == 2 ? (c & 0x1F) : n == 3 ? (c & 0x0F) : (c & 0x07);
    for (size_t k = 1; k < n; ++k) cp = (cp << 6) | (static_cast<unsigned char>(s[i + k]) & 0x3F);
    *len = n;
    return cp;
}

uint32_t FoldCodePoint(uint32_t cp) {
    if (cp >= 'A' && cp <= 'Z') return cp + 32;
    if (cp >= 0xC0 && cp <= 0xDE && cp != 0xD7) return cp + 32;                   // Latin-1
    if (cp >= 0x100 && cp <= 0x17F && cp != 0x130 && cp != 0x131 && cp != 0x138 && cp != 0x149 &&
        cp != 0x178) {
        // Latin Extended-A pairs: even upper, odd lower, except 0x139-0x148 and 0x179-0x17E.
        bool oddUpper = (cp >= 0x139 && cp <= 0x148) || (cp >= 0x179 && cp <= 0x17E);
        return (cp % 2 == (oddUpper ? 1u : 0u)) ? cp + 1 : cp;
    }
    if (cp >= 0x391 && cp <= 0x3AB && cp != 0x3A2) return cp + 32;                // Greek
    if (cp >= 0x410 && cp <= 0x42F) return cp + 32;                               // Cyrillic
    if (cp >= 0x400 && cp <= 0x40F) return cp + 80;
    if (cp >= 0xFF21 && cp <= 0xFF3A) return cp + 32;                             // full-width Latin
    return cp;
}

}  // namespace

std::string CutUtf8(const std::string& text, size_t maxBytes) {
    if (text.size() <= maxBytes) return text;
    size_t end = maxBytes;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    return text.substr(0, end);
}

std::string SafeComponent(const std::string& name) {
    std::string out;
    out.reserve(name.size());
    for (size_t i = 0; i < name.size();) {
        size_t len = 1;
        uint32_t cp = Decode(name, i, &len);
        bool bad = cp < 0x20 || cp == 0x7F || (cp >= 0x80 && cp < 0xA0);
        for (const char* p = "/\\:*?\"<>|"; *p != 0 && !bad; ++p) bad = cp == static_cast<unsigned char>(*p);
        if (bad) {
            out.push_back('_');
        } else {
            out.append(name, i, len);
        }
        i += len;
    }
    if (out.empty()) out = "_";
    size_t dot = out.find('.');
    if (IsDeviceName(out.substr(0, dot))) out.insert(dot == std::string::npos ? out.size() : dot, "_");
    out = CutUtf8(out, kMaxComponentBytes);
    if (out.empty()) out = "_";  // only when the name was no UTF-8 at all
    if (out.back() == '.' || out.back() == ' ') out.back() = '_';
    return out;
}

std::string FoldCase(const std::string& name) {
    std::string out;
    out.reserve(name.size());
    for (size_t i = 0; i < name.size();) {
        size_t len = 1;
        uint32_t cp = Decode(name, i, &len);
        uint32_t folded = FoldCodePoint(cp);
        if (folded == cp) {
            out.append(name, i, len);
        } else {
            AppendUtf8(out, folded);
        }
        i += len;
    }
    return out;
}

bool SiblingNames::Free(const std::string& candidate) const {
    const std::string key = FoldCase(candidate);
    if (taken_.count(key) != 0 || (reserved_ != nullptr && reserved_(key))) return false;
    if (companion_.empty()) return true;
    const std::string companion = FoldCase(candidate + companion_);
    return taken_.count(companion) == 0 && (reserved_ == nullptr || !reserved_(companion));
}

std::string SiblingNames::Claim(const std::string& name) {
    const std::string safe = SafeComponent(name);
    std::string candidate = safe;
    for (int n = 2; !Free(candidate); ++n) {
        const std::string suffix = " (" + std::to_string(n) + ")";
        candidate = CutUtf8(safe, kMaxComponentBytes - suffix.size()) + suffix;
    }
    taken_.insert(FoldCase(candidate));
    if (!companion_.empty()) taken_.insert(FoldCase(candidate + companion_));
    return candidate;
}

}  // namespace tqnralm
