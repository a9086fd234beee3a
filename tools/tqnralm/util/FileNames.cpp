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

// The UTF-16 units of the longest prefix of `text` that fits `maxUnits`.
std::string CutUnits(const std::string& text, size_t maxUnits) {
    size_t units = 0;
    for (size_t i = 0; i < text.size();) {
        size_t len = 1;
        units += Decode(text, i, &len) >= 0x10000 ? 2 : 1;
        if (units > maxUnits) return text.substr(0, i);
        i += len;
    }
    return text;
}

// Cut to the longest name of the style, less `room` for a suffix.
std::string Fit(const std::string& text, NameStyle style, size_t room) {
    std::string out = CutUtf8(text, kMaxComponentBytes - room);
    return style == NameStyle::kThunderbird ? CutUnits(out, kMaxThunderbirdUnits - room) : out;
}

// One character of a name as a component: "_" for what no file system
// takes, the style's form of what its reader takes otherwise.
void AppendCharacter(std::string& out, const std::string& name, size_t i, size_t len, uint32_t cp,
                     NameStyle style) {
    bool bad = cp < 0x20 || cp == 0x7F || (cp >= 0x80 && cp < 0xA0);
    for (const char* p = "/\\:*?\"<>|"; *p != 0 && !bad; ++p) bad = cp == static_cast<unsigned char>(*p);
    if (style == NameStyle::kMaildir && cp == '.') bad = true;
    if (bad) {
        out.push_back('_');
    } else if (style == NameStyle::kThunderbird && (cp == '%' || cp == '#' || cp == ';')) {
        AppendUtf8(out, cp - 0x20 + 0xFF00);  // the full-width form: U+FF05, U+FF03, U+FF1B
    } else {
        out.append(name, i, len);
    }
}

}  // namespace

std::string UnescapeName(const std::string& name) {
    std::string out;
    out.reserve(name.size());
    for (size_t i = 0; i < name.size(); ++i) {
        const std::string code = name.compare(i, 1, "%") == 0 ? name.substr(i + 1, 2) : "";
        const char c = code == "23" ? '#' : code == "2f" ? '/' : code == "5c" ? '\\' : 0;
        if (c != 0) {
            out.push_back(c);
            i += 2;
        } else {
            out.push_back(name[i]);
        }
    }
    return out;
}

std::string LastPathComponent(const std::string& path) {
    std::string trimmed = path;
    while (!trimmed.empty() && (trimmed.back() == '\\' || trimmed.back() == '/')) trimmed.pop_back();
    const size_t slash = trimmed.find_last_of("\\/");
    return slash == std::string::npos ? trimmed : trimmed.substr(slash + 1);
}

std::string CutUtf8(const std::string& text, size_t maxBytes) {
    if (text.size() <= maxBytes) return text;
    size_t end = maxBytes;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    return text.substr(0, end);
}

std::string SafeComponent(const std::string& name, NameStyle style) {
    std::string out;
    out.reserve(name.size());
    for (size_t i = 0; i < name.size();) {
        size_t len = 1;
        uint32_t cp = Decode(name, i, &len);
        AppendCharacter(out, name, i, len, cp, style);
        i += len;
    }
    if (out.empty()) out = "_";
    size_t dot = out.find('.');
    if (IsDeviceName(out.substr(0, dot))) out.insert(dot == std::string::npos ? out.size() : dot, "_");
    if ((style == NameStyle::kThunderbird && out[0] == '.') || (style == NameStyle::kMaildir && out[0] == '~'))
        out[0] = '_';
    out = Fit(out, style, 0);
    if (out.empty()) out = "_";  // only when the name was no UTF-8 at all
    if (out.back() == '.' || out.back() == ' ' || (style == NameStyle::kThunderbird && out.back() == '~'))
        out.back() = '_';
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
    auto taken = [&](const std::string& name) {
        const std::string key = FoldCase(name);
        return taken_.count(key) != 0 || (rules_.reserved != nullptr && rules_.reserved(key));
    };
    if (taken(candidate)) return false;
    for (const std::string& companion : rules_.companions) {
        if (taken(candidate + companion)) return false;
    }
    return true;
}

std::string SiblingNames::Claim(const std::string& name) {
    const std::string safe = SafeComponent(name, rules_.style);
    std::string candidate = safe;
    for (int n = 2; !Free(candidate); ++n) {
        const std::string suffix = " (" + std::to_string(n) + ")";
        candidate = Fit(safe, rules_.style, suffix.size()) + suffix;
    }
    taken_.insert(FoldCase(candidate));
    for (const std::string& companion : rules_.companions) taken_.insert(FoldCase(candidate + companion));
    return candidate;
}

}  // namespace tqnralm
