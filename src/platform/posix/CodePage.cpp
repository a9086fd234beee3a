// CodePage.cpp - code page conversion on POSIX.
//
// Code page 932 comes from glibc's "CP932" (never "SHIFT_JIS": that one maps
// 0x5C to U+00A5 and lacks the NEC and IBM rows). glibc is asked one
// character at a time and the answer is kept in a table, so a conversion is
// a linear walk with table look-ups and the strict and lenient rules of
// MultiByteToWideChar can be applied per sequence. ISO-2022-JP (50220) and
// EUC-JP (51932) are the same table reached through the JIS row and cell,
// as Windows builds them. UTF-8, ISO-8859-1 and US-ASCII are direct.
#include "platform/platform.h"
#include "platform/posix/PosixText.h"

#include <iconv.h>

#include <atomic>
#include <climits>
#include <cstring>
#include <mutex>

namespace qvp {
namespace posix {
namespace {

// Table entries: 0 not yet asked, 1 no mapping, else kKnown | value.
constexpr uint32_t kUnknown = 0;
constexpr uint32_t kNone = 1;
constexpr uint32_t kKnown = 0x1000000;

std::atomic<uint32_t> g_decode[65536];  // double-byte code -> UTF-16 unit
std::atomic<uint32_t> g_encode[65536];  // UTF-16 unit -> (length << 16) | bytes
std::mutex g_iconvMutex;
iconv_t g_toUtf16 = reinterpret_cast<iconv_t>(-1);
iconv_t g_fromUtf16 = reinterpret_cast<iconv_t>(-1);
bool g_opened = false;

// The converters go with the module: at exit, or when a library that holds
// this code is unloaded.
struct ConverterCloser {
    ~ConverterCloser() {
        std::lock_guard<std::mutex> lock(g_iconvMutex);
        if (g_toUtf16 != reinterpret_cast<iconv_t>(-1)) iconv_close(g_toUtf16);
        if (g_fromUtf16 != reinterpret_cast<iconv_t>(-1)) iconv_close(g_fromUtf16);
        g_toUtf16 = g_fromUtf16 = reinterpret_cast<iconv_t>(-1);
    }
} g_closer;

// Asks glibc once; the caller holds g_iconvMutex.
bool OpenConverters() {
    if (!g_opened) {
        g_opened = true;
        g_toUtf16 = iconv_open("UTF-16LE", "CP932");
        g_fromUtf16 = iconv_open("CP932", "UTF-16LE");
    }
    return g_toUtf16 != reinterpret_cast<iconv_t>(-1) &&
           g_fromUtf16 != reinterpret_cast<iconv_t>(-1);
}

bool IsTrail(unsigned char byte) {
    return byte >= 0x40 && byte <= 0xFC && byte != 0x7F;
}

// A double-byte code to its UTF-16 unit, or kNone.
uint32_t DecodeDouble(unsigned lead, unsigned trail) {
    const unsigned code = (lead << 8) | trail;
    uint32_t entry = g_decode[code].load(std::memory_order_relaxed);
    if (entry != kUnknown) return entry;
    entry = kNone;
    {
        std::lock_guard<std::mutex> lock(g_iconvMutex);
        if (OpenConverters()) {
            char in[2] = {static_cast<char>(lead), static_cast<char>(trail)};
            unsigned char out[8];
            char* inPtr = in;
            char* outPtr = reinterpret_cast<char*>(out);
            size_t inLeft = 2, outLeft = sizeof out;
            iconv(g_toUtf16, nullptr, nullptr, nullptr, nullptr);
            if (iconv(g_toUtf16, &inPtr, &inLeft, &outPtr, &outLeft) != static_cast<size_t>(-1) &&
                inLeft == 0 && sizeof out - outLeft == 2) {
                entry = kKnown | (out[0] | (out[1] << 8));
            }
        }
    }
    g_decode[code].store(entry, std::memory_order_relaxed);
    return entry;
}

// One UTF-16 unit (not a surrogate) to CP932: (length << 16) | bytes, or kNone.
uint32_t EncodeUnit(char16_t unit) {
    if (unit < 0x80) return kKnown | (1u << 16) | unit;
    if (unit == 0x80) return kKnown | (1u << 16) | 0x80;
    // glibc maps these; Windows has no form for them and writes '?'.
    if (unit == 0x301C || unit == 0x2212 || unit == 0x2016 || unit == 0x2014 || unit == 0x203E)
        return kNone;
    uint32_t entry = g_encode[unit].load(std::memory_order_relaxed);
    if (entry != kUnknown) return entry;
    entry = kNone;
    {
        std::lock_guard<std::mutex> lock(g_iconvMutex);
        if (OpenConverters()) {
            char in[2] = {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
            unsigned char out[8];
            char* inPtr = in;
            char* outPtr = reinterpret_cast<char*>(out);
            size_t inLeft = 2, outLeft = sizeof out;
            iconv(g_fromUtf16, nullptr, nullptr, nullptr, nullptr);
            if (iconv(g_fromUtf16, &inPtr, &inLeft, &outPtr, &outLeft) != static_cast<size_t>(-1) &&
                inLeft == 0) {
                const size_t length = sizeof out - outLeft;
                if (length == 1) entry = kKnown | (1u << 16) | out[0];
                if (length == 2) entry = kKnown | (2u << 16) | (out[0] << 8) | out[1];
            }
        }
    }
    g_encode[unit].store(entry, std::memory_order_relaxed);
    return entry;
}

// JIS X 0208 row and cell (0x21-0x7E each) to a Shift-JIS code and back.
unsigned JisToSjis(unsigned j1, unsigned j2) {
    const unsigned s1 = ((j1 + 1) >> 1) + (j1 <= 0x5E ? 0x70 : 0xB0);
    const unsigned s2 = j2 + ((j1 & 1) ? (j2 <= 0x5F ? 0x1F : 0x20) : 0x7E);
    return (s1 << 8) | s2;
}
// 0 when the code lies outside the JIS rows (user-defined area, IBM rows).
unsigned SjisToJis(unsigned s1, unsigned s2) {
    if (s1 >= 0xF0) return 0;
    const unsigned j1 = ((s1 - (s1 <= 0x9F ? 0x70 : 0xB0)) << 1) - (s2 < 0x9F ? 1 : 0);
    const unsigned j2 = s2 - (s2 < 0x9F ? (s2 >= 0x80 ? 0x20 : 0x1F) : 0x7E);
    if (j1 < 0x21 || j1 > 0x7E || j2 < 0x21 || j2 > 0x7E) return 0;
    return (j1 << 8) | j2;
}

// Decodes a CP932 code that came through JIS: kNone when it has no form.
uint32_t DecodeJis(unsigned j1, unsigned j2) {
    if (j1 < 0x21 || j1 > 0x7E || j2 < 0x21 || j2 > 0x7E) return kNone;
    const unsigned sjis = JisToSjis(j1, j2);
    return DecodeDouble(sjis >> 8, sjis & 0xFF);
}

class Decoder {
public:
    Decoder(bool strict, char16_t defaultChar, std::u16string* out)
        : strict_(strict), default_(defaultChar), out_(out) {}
    // Appends a unit; false when the conversion has failed.
    bool Put(uint32_t entry) {
        if (entry == kNone) {
            if (strict_) return false;
            out_->push_back(default_);
        } else {
            out_->push_back(static_cast<char16_t>(entry & 0xFFFF));
        }
        return true;
    }
    bool Bad() { return Put(kNone); }

private:
    bool strict_;
    char16_t default_;
    std::u16string* out_;
};

uint32_t Unit(uint32_t value) { return kKnown | value; }

bool Iso2022JpToUtf16(const unsigned char* p, size_t n, bool strict, std::u16string* out) {
    enum { kAscii, kJis0208, kKana } mode = kAscii;
    bool shifted = false;  // SO ... SI: half-width katakana
    Decoder d(strict, kCp932DefaultChar, out);
    size_t i = 0;
    while (i < n) {
        const unsigned char b = p[i];
        if (b == 0x1B) {
            if (i + 2 < n && p[i + 1] == '(' && (p[i + 2] == 'B' || p[i + 2] == 'J')) {
                mode = kAscii;
                i += 3;
            } else if (i + 2 < n && p[i + 1] == '(' && p[i + 2] == 'I') {
                mode = kKana;
                i += 3;
            } else if (i + 2 < n && p[i + 1] == '$' && (p[i + 2] == '@' || p[i + 2] == 'B')) {
                mode = kJis0208;
                i += 3;
            } else if (i + 3 < n && p[i + 1] == '$' && p[i + 2] == '(' && p[i + 3] == 'D') {
                // JIS X 0212 has no CP932 form; its pairs decode as invalid.
                mode = kJis0208;
                i += 4;
            } else {
                if (!d.Put(Unit(b))) return false;
                ++i;
            }
            continue;
        }
        if (b == 0x0E) { shifted = true; ++i; continue; }
        if (b == 0x0F) { shifted = false; ++i; continue; }
        if (b >= 0x80) {
            if (!d.Bad()) return false;
            ++i;
            continue;
        }
        if ((shifted || mode == kKana) && b >= 0x21 && b <= 0x5F) {
            if (!d.Put(Unit(0xFF61 + (b - 0x21)))) return false;
            ++i;
            continue;
        }
        if (mode == kJis0208 && b >= 0x21 && b <= 0x7E) {
            if (i + 1 >= n) {
                if (!d.Bad()) return false;
                ++i;
                continue;
            }
            if (!d.Put(DecodeJis(b, p[i + 1]))) return false;
            i += 2;
            continue;
        }
        if (!d.Put(Unit(b))) return false;
        ++i;
    }
    return true;
}

bool EucJpToUtf16(const unsigned char* p, size_t n, bool strict, std::u16string* out) {
    Decoder d(strict, kCp932DefaultChar, out);
    size_t i = 0;
    while (i < n) {
        const unsigned char b = p[i];
        if (b < 0x80) {
            if (!d.Put(Unit(b))) return false;
            ++i;
        } else if (b == 0x8E) {
            if (i + 1 < n && p[i + 1] >= 0xA1 && p[i + 1] <= 0xDF) {
                if (!d.Put(Unit(0xFF61 + (p[i + 1] - 0xA1)))) return false;
                i += 2;
            } else {
                if (!d.Bad()) return false;
                i += (i + 1 < n && p[i + 1] >= 0x80) ? 2 : 1;
            }
        } else if (b == 0x8F) {
            // JIS X 0212: three bytes, no CP932 form.
            if (!d.Bad()) return false;
            size_t take = 1;
            while (take < 3 && i + take < n && p[i + take] >= 0xA1) ++take;
            i += take;
        } else if (b >= 0xA1 && b <= 0xFE) {
            if (i + 1 < n && p[i + 1] >= 0xA1 && p[i + 1] <= 0xFE) {
                if (!d.Put(DecodeJis(b & 0x7F, p[i + 1] & 0x7F))) return false;
                i += 2;
            } else {
                if (!d.Bad()) return false;
                ++i;
            }
        } else {
            if (!d.Bad()) return false;
            ++i;
        }
    }
    return true;
}

bool SingleByteToUtf16(const unsigned char* p, size_t n, unsigned limit, bool strict,
                       std::u16string* out) {
    for (size_t i = 0; i < n; ++i) {
        if (p[i] > limit) {
            if (strict) return false;
            out->push_back(0xFFFD);
        } else {
            out->push_back(p[i]);
        }
    }
    return true;
}

// Walks UTF-16 text by characters: a surrogate pair is one character, which
// no code page here has a form for.
template <typename Sink>
void ForEachChar(const char16_t* units, size_t count, Sink sink) {
    for (size_t i = 0; i < count; ++i) {
        const char16_t u = units[i];
        if (u >= 0xD800 && u <= 0xDBFF && i + 1 < count && units[i + 1] >= 0xDC00 &&
            units[i + 1] <= 0xDFFF) {
            sink(0xFFFF, true);
            ++i;
        } else {
            sink(u, u >= 0xD800 && u <= 0xDFFF);
        }
    }
}

std::string Utf16ToJapanese(uint32_t codePage, const char16_t* units, size_t count) {
    std::string out;
    bool twoByte = false;  // ISO-2022-JP: inside ESC $ B
    bool kana = false;     // ISO-2022-JP: inside ESC ( I
    ForEachChar(units, count, [&](char16_t u, bool surrogate) {
        uint32_t entry = surrogate ? kNone : EncodeUnit(u);
        unsigned jis = 0;
        const bool isDouble = entry != kNone && ((entry >> 16) & 0xFF) == 2;
        if (isDouble) {
            jis = SjisToJis((entry >> 8) & 0xFF, entry & 0xFF);
            if (jis == 0) entry = kNone;
        }
        const bool isKana = entry != kNone && !isDouble && (entry & 0xFF) >= 0xA1 &&
                            (entry & 0xFF) <= 0xDF;
        if (entry != kNone && !isDouble && !isKana && (entry & 0xFF) >= 0x80) entry = kNone;
        if (codePage == kCpEucJp) {
            if (entry == kNone) {
                out.push_back('?');
            } else if (isDouble) {
                out.push_back(static_cast<char>((jis >> 8) | 0x80));
                out.push_back(static_cast<char>((jis & 0xFF) | 0x80));
            } else if (isKana) {
                out.push_back(static_cast<char>(0x8E));
                out.push_back(static_cast<char>(entry & 0xFF));
            } else {
                out.push_back(static_cast<char>(entry & 0xFF));
            }
            return;
        }
        if (entry != kNone && isDouble) {
            if (!twoByte) out.append("\x1B$B");
            twoByte = true;
            kana = false;
            out.push_back(static_cast<char>(jis >> 8));
            out.push_back(static_cast<char>(jis & 0xFF));
        } else if (entry != kNone && isKana) {
            if (!kana) out.append("\x1B(I");
            kana = true;
            twoByte = false;
            out.push_back(static_cast<char>((entry & 0xFF) - 0x80));
        } else {
            if (twoByte || kana) out.append("\x1B(B");
            twoByte = kana = false;
            out.push_back(entry == kNone ? '?' : static_cast<char>(entry & 0xFF));
        }
    });
    if (twoByte || kana) out.append("\x1B(B");
    return out;
}

}  // namespace

bool Cp932ToUtf16(const char* bytes, size_t count, bool strict, std::u16string* out) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes);
    out->clear();
    out->reserve(count);
    Decoder d(strict, kCp932DefaultChar, out);
    size_t i = 0;
    while (i < count) {
        const unsigned char b = p[i];
        if (b < 0x80) {
            out->push_back(b);
            ++i;
        } else if (b == 0x80) {
            out->push_back(0x80);  // Windows: U+0080; glibc would refuse it
            ++i;
        } else if (b >= 0xA1 && b <= 0xDF) {
            out->push_back(static_cast<char16_t>(0xFF61 + (b - 0xA1)));
            ++i;
        } else if (IsCp932Lead(b)) {
            if (i + 1 >= count || p[i + 1] == 0) {
                // A lead byte at the end, or before the terminator, stands alone.
                if (!d.Bad()) return false;
                ++i;
            } else {
                const unsigned char t = p[i + 1];
                if (!d.Put(IsTrail(t) ? DecodeDouble(b, t) : kNone)) return false;
                i += 2;
            }
        } else {
            if (!d.Bad()) return false;  // A0, FD, FE, FF
            ++i;
        }
    }
    return true;
}

std::string Utf16ToCp932(const char16_t* units, size_t count, bool* exact) {
    std::string out;
    out.reserve(count * 2);
    bool all = true;
    ForEachChar(units, count, [&](char16_t u, bool surrogate) {
        const uint32_t entry = surrogate ? kNone : EncodeUnit(u);
        if (entry == kNone) {
            out.push_back('?');
            all = false;
        } else if (((entry >> 16) & 0xFF) == 2) {
            out.push_back(static_cast<char>((entry >> 8) & 0xFF));
            out.push_back(static_cast<char>(entry & 0xFF));
        } else {
            out.push_back(static_cast<char>(entry & 0xFF));
        }
    });
    if (exact) *exact = all;
    return out;
}

bool Utf8ToUtf16(const char* bytes, size_t count, bool strict, std::u16string* out) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes);
    out->clear();
    out->reserve(count);
    size_t i = 0;
    while (i < count) {
        const unsigned char b = p[i];
        if (b < 0x80) {
            out->push_back(b);
            ++i;
            continue;
        }
        size_t length = 0;
        uint32_t cp = 0, min = 0;
        if (b >= 0xC2 && b <= 0xDF) { length = 2; cp = b & 0x1F; min = 0x80; }
        else if (b >= 0xE0 && b <= 0xEF) { length = 3; cp = b & 0x0F; min = 0x800; }
        else if (b >= 0xF0 && b <= 0xF4) { length = 4; cp = b & 0x07; min = 0x10000; }
        size_t j = 1;
        if (length) {
            for (; j < length && i + j < count && (p[i + j] & 0xC0) == 0x80; ++j)
                cp = (cp << 6) | (p[i + j] & 0x3F);
        }
        if (length == 0 || j < length || cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
            if (strict) return false;
            out->push_back(0xFFFD);
            ++i;
            continue;
        }
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out->push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
            out->push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
        } else {
            out->push_back(static_cast<char16_t>(cp));
        }
        i += length;
    }
    return true;
}

std::string Utf16ToUtf8(const char16_t* units, size_t count) {
    std::string out;
    out.reserve(count * 3);
    for (size_t i = 0; i < count; ++i) {
        uint32_t cp = units[i];
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < count && units[i + 1] >= 0xDC00 &&
            units[i + 1] <= 0xDFFF) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (units[i + 1] - 0xDC00);
            ++i;
        } else if (cp >= 0xD800 && cp <= 0xDFFF) {
            cp = 0xFFFD;
        }
        if (cp < 0x80) {
            out.push_back(static_cast<char>(cp));
        } else if (cp < 0x800) {
            out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        } else if (cp < 0x10000) {
            out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        }
    }
    return out;
}

bool Cp932ToUtf8(const std::string& cp932, std::string* utf8) {
    std::u16string wide;
    if (!Cp932ToUtf16(cp932.data(), cp932.size(), true, &wide)) return false;
    *utf8 = Utf16ToUtf8(wide.data(), wide.size());
    return true;
}

bool Utf8ToCp932Exact(const std::string& utf8, std::string* cp932) {
    std::u16string wide;
    if (!Utf8ToUtf16(utf8.data(), utf8.size(), true, &wide)) return false;
    bool exact = false;
    *cp932 = Utf16ToCp932(wide.data(), wide.size(), &exact);
    return exact;
}

char16_t FoldUnit(char16_t u) {
    if (u < 0x80) return (u >= 'a' && u <= 'z') ? static_cast<char16_t>(u - 32) : u;
    if ((u >= 0xE0 && u <= 0xFE && u != 0xF7) ||  // Latin-1
        (u >= 0x3B1 && u <= 0x3C9 && u != 0x3C2) ||  // Greek
        (u >= 0x430 && u <= 0x44F))                  // Cyrillic
        return static_cast<char16_t>(u - 32);
    if (u >= 0x450 && u <= 0x45F) return static_cast<char16_t>(u - 80);
    if (u >= 0xFF41 && u <= 0xFF5A) return static_cast<char16_t>(u - 32);  // full-width
    return u;
}

std::u16string Fold(std::u16string text) {
    for (char16_t& u : text) u = FoldUnit(u);
    return text;
}

}  // namespace posix

using namespace posix;

int MultiByteToWideChar(uint32_t codePage, uint32_t flags, const char* multi, int cbMulti,
                        char16_t* wide, int cchWide) {
    if (multi == nullptr || cbMulti == 0 || cbMulti < -1 || cchWide < 0) return 0;
    if (cchWide > 0 && wide == nullptr) return 0;
    const size_t count = cbMulti == -1 ? std::strlen(multi) + 1 : static_cast<size_t>(cbMulti);
    const bool strict = (flags & kMbErrInvalidChars) != 0;
    const unsigned char* p = reinterpret_cast<const unsigned char*>(multi);
    std::u16string out;
    bool ok = false;
    switch (codePage) {
        case kCpAcp:
        case kCp932: ok = Cp932ToUtf16(multi, count, strict, &out); break;
        case kCpUtf8: ok = Utf8ToUtf16(multi, count, strict, &out); break;
        case kCpIso2022Jp: ok = Iso2022JpToUtf16(p, count, strict, &out); break;
        case kCpEucJp: ok = EucJpToUtf16(p, count, strict, &out); break;
        case kCpLatin1: ok = SingleByteToUtf16(p, count, 0xFF, strict, &out); break;
        case kCpAscii: ok = SingleByteToUtf16(p, count, 0x7F, strict, &out); break;
        default: return 0;
    }
    if (!ok || out.size() > static_cast<size_t>(INT_MAX)) return 0;
    const int needed = static_cast<int>(out.size());
    if (cchWide == 0) return needed;
    if (needed > cchWide) return 0;
    std::memcpy(wide, out.data(), out.size() * sizeof(char16_t));
    return needed;
}

int WideCharToMultiByte(uint32_t codePage, const char16_t* wide, int cchWide, char* multi,
                        int cbMulti) {
    if (wide == nullptr || cchWide == 0 || cchWide < -1 || cbMulti < 0) return 0;
    if (cbMulti > 0 && multi == nullptr) return 0;
    size_t count = 0;
    if (cchWide == -1) {
        while (wide[count] != 0) ++count;
        ++count;
    } else {
        count = static_cast<size_t>(cchWide);
    }
    std::string out;
    switch (codePage) {
        case kCpAcp:
        case kCp932: out = Utf16ToCp932(wide, count); break;
        case kCpUtf8: out = Utf16ToUtf8(wide, count); break;
        case kCpIso2022Jp:
        case kCpEucJp: out = Utf16ToJapanese(codePage, wide, count); break;
        case kCpLatin1:
        case kCpAscii: {
            const unsigned limit = codePage == kCpLatin1 ? 0xFF : 0x7F;
            ForEachChar(wide, count, [&](char16_t u, bool surrogate) {
                out.push_back(!surrogate && u <= limit ? static_cast<char>(u) : '?');
            });
            break;
        }
        default: return 0;
    }
    if (out.size() > static_cast<size_t>(INT_MAX)) return 0;
    const int needed = static_cast<int>(out.size());
    if (cbMulti == 0) return needed;
    if (needed > cbMulti) return 0;
    std::memcpy(multi, out.data(), out.size());
    return needed;
}

bool IsDBCSLeadByte(unsigned char byte) { return IsCp932Lead(byte); }

}  // namespace qvp
