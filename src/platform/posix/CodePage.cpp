// CodePage.cpp - code page conversion on POSIX.
//
// Code page 932 comes from glibc's "CP932" (never "SHIFT_JIS": that one maps
// 0x5C to U+00A5 and lacks the NEC and IBM rows). glibc is asked one
// character at a time and the answer is kept in a table, so a conversion is
// a linear walk with table look-ups and the strict and lenient rules of
// MultiByteToWideChar can be applied per sequence. Where glibc and Windows
// part (the single bytes A0, FD-FF, the best-fit forms Windows writes for
// Latin-1 letters), Windows is followed. UTF-8, ISO-8859-1 and US-ASCII are
// direct; UTF-16 bytes are shared with Windows, other code pages go to iconv.
#include "platform/platform.h"
#include "platform/Cp932Jis.h"
#include "platform/Faults.h"
#include "platform/Utf8.h"
#include "platform/posix/DirStream.h"
#include "platform/posix/PosixText.h"

#include <iconv.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstring>
#include <mutex>

namespace qvp {
namespace cp932 {
namespace {

std::atomic<uint32_t> g_decode[65536];  // double-byte code -> UTF-16 unit
std::atomic<uint32_t> g_encode[65536];  // UTF-16 unit -> (length << 16) | bytes
std::mutex g_iconvMutex;
iconv_t g_toUtf16 = reinterpret_cast<iconv_t>(-1);
iconv_t g_fromUtf16 = reinterpret_cast<iconv_t>(-1);

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

iconv_t OpenConverter(const char* to, const char* from) {
    const iconv_t cd = posix::InjectedFailure() ? reinterpret_cast<iconv_t>(-1) : iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1)) posix::ThrowIfNoMemory(errno);
    return cd;
}

// Opens what is not open yet; the caller holds g_iconvMutex. A converter
// that fails to open is asked for again next time: for want of a descriptor
// one failure costs the conversion that met it, nothing after it; for want
// of memory, std::bad_alloc goes up.
bool OpenConverters() {
    if (g_toUtf16 == reinterpret_cast<iconv_t>(-1)) g_toUtf16 = OpenConverter("UTF-16LE", "CP932");
    if (g_fromUtf16 == reinterpret_cast<iconv_t>(-1)) g_fromUtf16 = OpenConverter("CP932", "UTF-16LE");
    return g_toUtf16 != reinterpret_cast<iconv_t>(-1) &&
           g_fromUtf16 != reinterpret_cast<iconv_t>(-1);
}

// Convert's answer when glibc could not be asked: nothing is learnt.
constexpr size_t kUnasked = static_cast<size_t>(-1);

// One character, two bytes in, through glibc: the bytes out, 0 when it has
// no form, or kUnasked.
size_t Convert(iconv_t& converter, const char (&in)[2], unsigned char* out, size_t size) {
    std::lock_guard<std::mutex> lock(g_iconvMutex);
    if (!OpenConverters()) return kUnasked;
    char* inPtr = const_cast<char*>(in);
    char* outPtr = reinterpret_cast<char*>(out);
    size_t inLeft = 2, outLeft = size;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    if (iconv(converter, &inPtr, &inLeft, &outPtr, &outLeft) == static_cast<size_t>(-1) || inLeft != 0) return 0;
    return size - outLeft;
}

// What Windows writes for characters that code page 932 lacks: best-fit
// forms, and the private-use characters of the single bytes A0 and FD-FF.
struct BestFit {
    char16_t unit;
    uint16_t bytes;  // one byte, or lead << 8 | trail
};
constexpr BestFit kBestFit932[] = {
    {0x00a1, 0x21},   {0x00a6, 0x7c},   {0x00a9, 0x63}, {0x00aa, 0x61}, {0x00ab, 0x81e1}, {0x00ad, 0x2d},
    {0x00ae, 0x52},   {0x00af, 0x8150}, {0x00b2, 0x32}, {0x00b3, 0x33}, {0x00b5, 0x83ca}, {0x00b7, 0x8145},
    {0x00b8, 0x8143}, {0x00b9, 0x31},   {0x00ba, 0x6f}, {0x00bb, 0x81e2}, {0x00c0, 0x41}, {0x00c1, 0x41},
    {0x00c2, 0x41},   {0x00c3, 0x41},   {0x00c4, 0x41}, {0x00c5, 0x41}, {0x00c6, 0x41},   {0x00c7, 0x43},
    {0x00c8, 0x45},   {0x00c9, 0x45},   {0x00ca, 0x45}, {0x00cb, 0x45}, {0x00cc, 0x49},   {0x00cd, 0x49},
    {0x00ce, 0x49},   {0x00cf, 0x49},   {0x00d0, 0x44}, {0x00d1, 0x4e}, {0x00d2, 0x4f},   {0x00d3, 0x4f},
    {0x00d4, 0x4f},   {0x00d5, 0x4f},   {0x00d6, 0x4f}, {0x00d8, 0x4f}, {0x00d9, 0x55},   {0x00da, 0x55},
    {0x00db, 0x55},   {0x00dc, 0x55},   {0x00dd, 0x59}, {0x00de, 0x54}, {0x00df, 0x73},   {0x00e0, 0x61},
    {0x00e1, 0x61},   {0x00e2, 0x61},   {0x00e3, 0x61}, {0x00e4, 0x61}, {0x00e5, 0x61},   {0x00e6, 0x61},
    {0x00e7, 0x63},   {0x00e8, 0x65},   {0x00e9, 0x65}, {0x00ea, 0x65}, {0x00eb, 0x65},   {0x00ec, 0x69},
    {0x00ed, 0x69},   {0x00ee, 0x69},   {0x00ef, 0x69}, {0x00f0, 0x64}, {0x00f1, 0x6e},   {0x00f2, 0x6f},
    {0x00f3, 0x6f},   {0x00f4, 0x6f},   {0x00f5, 0x6f}, {0x00f6, 0x6f}, {0x00f8, 0x6f},   {0x00f9, 0x75},
    {0x00fa, 0x75},   {0x00fb, 0x75},   {0x00fc, 0x75}, {0x00fd, 0x79}, {0x00fe, 0x74},   {0x00ff, 0x79},
    {0x3094, 0x8394}, {0xf8f0, 0xa0},   {0xf8f1, 0xfd}, {0xf8f2, 0xfe}, {0xf8f3, 0xff},
};

uint32_t LookUpBestFit(char16_t unit) {
    constexpr size_t kCount = sizeof kBestFit932 / sizeof kBestFit932[0];
    size_t lo = 0, hi = kCount;
    while (lo < hi) {
        const size_t mid = (lo + hi) / 2;
        if (kBestFit932[mid].unit < unit) lo = mid + 1;
        else hi = mid;
    }
    if (lo == kCount || kBestFit932[lo].unit != unit) return kNone;
    const uint16_t bytes = kBestFit932[lo].bytes;
    const bool exact = unit >= 0xF8F0;  // the single bytes decode back to these
    return kKnown | (exact ? 0 : kBestFit) | ((bytes > 0xFF ? 2u : 1u) << 16) | bytes;
}

}  // namespace

// A double-byte code to its UTF-16 unit, or kNone.
uint32_t DecodeDouble(unsigned lead, unsigned trail) {
    const unsigned code = (lead << 8) | trail;
    uint32_t entry = g_decode[code].load(std::memory_order_relaxed);
    if (entry != kUnknown) return entry;
    const char in[2] = {static_cast<char>(lead), static_cast<char>(trail)};
    unsigned char out[8];
    const size_t length = Convert(g_toUtf16, in, out, sizeof out);
    if (length == kUnasked) return kNone;  // not kept: the next call asks again
    entry = length == 2 ? kKnown | (out[0] | (out[1] << 8)) : kNone;
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
    entry = LookUpBestFit(unit);
    if (entry == kNone) {
        const char in[2] = {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
        unsigned char out[8];
        const size_t length = Convert(g_fromUtf16, in, out, sizeof out);
        if (length == kUnasked) return kNone;
        if (length == 1) entry = kKnown | (1u << 16) | out[0];
        if (length == 2) entry = kKnown | (2u << 16) | (out[0] << 8) | out[1];
    }
    g_encode[unit].store(entry, std::memory_order_relaxed);
    return entry;
}

}  // namespace cp932

namespace posix {

using namespace cp932;

bool Cp932ToUtf16(const char* bytes, size_t count, bool strict, std::u16string* out) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes);
    out->clear();
    out->reserve(count);
    Decoder d(strict, kDefaultChar, out);
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
        } else if (IsLead(b)) {
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
            // A0, FD, FE, FF: private-use characters, and invalid to a strict reader.
            if (strict) return false;
            out->push_back(static_cast<char16_t>(b == 0xA0 ? 0xF8F0 : 0xF8F1 + (b - 0xFD)));
            ++i;
        }
    }
    return true;
}

std::string Utf16ToCp932(const char16_t* units, size_t count, bool* exact) {
    std::string out;
    out.reserve(count * 2);
    bool all = true;
    // Code page 932 has no form for any surrogate: Wine writes one '?' for
    // each half of a pair, as for a lone one.
    for (size_t i = 0; i < count; ++i) {
        const char16_t u = units[i];
        const uint32_t entry = (u >= 0xD800 && u <= 0xDFFF) ? kNone : EncodeUnit(u);
        if (entry == kNone || (entry & kBestFit) != 0) all = false;
        if (entry == kNone) {
            out.push_back('?');
        } else if (((entry >> 16) & 0xFF) == 2) {
            out.push_back(static_cast<char>((entry >> 8) & 0xFF));
            out.push_back(static_cast<char>(entry & 0xFF));
        } else {
            out.push_back(static_cast<char>(entry & 0xFF));
        }
    }
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
        // The second byte of E0, ED, F0 and F4 has a narrower range; one
        // outside it ends the sequence with itself.
        const unsigned char second = i + 1 < count ? p[i + 1] : 0;
        const bool narrow = (b == 0xE0 && second < 0xA0) || (b == 0xED && second > 0x9F) ||
                            (b == 0xF0 && second < 0x90) || (b == 0xF4 && second > 0x8F);
        if (length && narrow && (second & 0xC0) == 0x80) {
            length = 0;
            j = 2;
        } else if (length) {
            for (; j < length && i + j < count && (p[i + j] & 0xC0) == 0x80; ++j)
                cp = (cp << 6) | (p[i + j] & 0x3F);
        }
        if (length == 0 || j < length || cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
            // Windows gives one U+FFFD for a lead byte and the continuation
            // bytes that follow it, however the sequence went wrong.
            if (strict) return false;
            out->push_back(0xFFFD);
            i += j;
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
        AppendUtf8(out, cp);
    }
    return out;
}

bool Cp932ToUtf8(const std::string& cp932, std::string* utf8) {
    // ASCII reads the same in both, and most paths (every message's) are ASCII.
    const auto ascii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (std::all_of(cp932.begin(), cp932.end(), ascii)) {
        *utf8 = cp932;
        return true;
    }
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
        case kCpUtf16Le:
        case kCpUtf16Be: ok = Utf16BytesToUtf16(codePage == kCpUtf16Be, p, count, strict, &out); break;
        default: ok = IconvToUtf16(codePage, multi, count, strict, &out); break;
    }
    return ok ? CopyConverted(out, wide, cchWide) : 0;
}

int WideCharToMultiByte(uint32_t codePage, const char16_t* wide, int cchWide, char* multi,
                        int cbMulti) {
    if (wide == nullptr || cchWide == 0 || cchWide < -1 || cbMulti < 0) return 0;
    if (cbMulti > 0 && multi == nullptr) return 0;
    const size_t count = WideCount(wide, cchWide);
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
                if (!surrogate && u <= limit) {
                    out.push_back(static_cast<char>(u));
                    return;
                }
                // US-ASCII takes the best-fit letters that code page 932 has.
                const uint32_t entry = surrogate || limit != 0x7F ? kNone : EncodeUnit(u);
                const bool ascii = entry != kNone && ((entry >> 16) & 0xFF) == 1 && (entry & 0xFF) < 0x80;
                out.push_back(ascii ? static_cast<char>(entry & 0xFF) : '?');
            });
            break;
        }
        default: return 0;
    }
    return CopyConverted(out, multi, cbMulti);
}

bool IsDBCSLeadByte(unsigned char byte) { return cp932::IsLead(byte); }

}  // namespace qvp
