// CodePage.cpp - code page conversion on Windows.
//
// Every code page is the system's own conversion but these, and the ANSI
// code page is 932 whatever the system's is: ISO-2022-JP
// (50220) and EUC-JP (51932) are not offered by MultiByteToWideChar
// everywhere; they go through the shared JIS codecs, with the system's code
// page 932 as the table. UTF-16 as bytes (1200, 1201), which only managed
// code converts on Windows, is shared too. Out of UTF-16 only the code pages
// of the readers are written.
#include "platform/platform.h"
#include "platform/win32/Causes.h"
#include "platform/Cp932Jis.h"

#include <windows.h>

#include <atomic>
#include <climits>
#include <cstring>
#include <string>

namespace qvp {
namespace cp932 {
namespace {

std::atomic<uint32_t> g_decode[65536];  // double-byte code -> UTF-16 unit
std::atomic<uint32_t> g_encode[65536];  // UTF-16 unit -> (length << 16) | bytes

}  // namespace

uint32_t DecodeDouble(unsigned lead, unsigned trail) {
    const unsigned code = ((lead & 0xFF) << 8) | (trail & 0xFF);
    uint32_t entry = g_decode[code].load(std::memory_order_relaxed);
    if (entry != kUnknown) return entry;
    const char in[2] = {static_cast<char>(lead), static_cast<char>(trail)};
    wchar_t out[2];
    entry = ::MultiByteToWideChar(932, MB_ERR_INVALID_CHARS, in, 2, out, 2) == 1
                ? kKnown | static_cast<uint16_t>(out[0])
                : kNone;
    g_decode[code].store(entry, std::memory_order_relaxed);
    return entry;
}

uint32_t EncodeUnit(char16_t unit) {
    uint32_t entry = g_encode[unit].load(std::memory_order_relaxed);
    if (entry != kUnknown) return entry;
    const wchar_t in[1] = {static_cast<wchar_t>(unit)};
    unsigned char out[4];
    BOOL usedDefault = FALSE;
    const int n = ::WideCharToMultiByte(932, 0, in, 1, reinterpret_cast<char*>(out), sizeof out,
                                        nullptr, &usedDefault);
    entry = kNone;
    if (!usedDefault && n == 1) entry = kKnown | (1u << 16) | out[0];
    if (!usedDefault && n == 2) entry = kKnown | (2u << 16) | (out[0] << 8) | out[1];
    if (entry != kNone) {
        // A form that does not decode back to the character is a best fit.
        wchar_t back[2];
        if (::MultiByteToWideChar(932, 0, reinterpret_cast<char*>(out), n, back, 2) != 1 || back[0] != in[0])
            entry |= kBestFit;
    }
    g_encode[unit].store(entry, std::memory_order_relaxed);
    return entry;
}

}  // namespace cp932

namespace {

// The readers' ANSI code page is the mail client's, not this machine's.
uint32_t Actual(uint32_t codePage) { return codePage == kCpAcp ? kCp932 : codePage; }

bool Native(uint32_t codePage) {
    return codePage == kCpAcp || codePage == kCp932 || codePage == kCpUtf8 || codePage == kCpLatin1 ||
           codePage == kCpAscii;
}

}  // namespace

int MultiByteToWideChar(uint32_t codePage, uint32_t flags, const char* multi, int cbMulti,
                        char16_t* wide, int cchWide) {
    if (multi == nullptr || cbMulti == 0 || cbMulti < -1 || cchWide < 0) return 0;
    codePage = Actual(codePage);
    if (cchWide > 0 && wide == nullptr) return 0;
    const bool strict = (flags & kMbErrInvalidChars) != 0;
    const bool shared = codePage == kCpIso2022Jp || codePage == kCpEucJp || codePage == kCpUtf16Le ||
                        codePage == kCpUtf16Be;
    if (!shared) {
        // The stateful code pages and UTF-7 refuse the flag; their strict
        // conversion is not offered.
        const bool flagless = (codePage >= 50220 && codePage <= 50229) || codePage == 52936 || codePage == 65000;
        if (strict && flagless) return 0;
        const int n = ::MultiByteToWideChar(codePage, strict ? MB_ERR_INVALID_CHARS : 0, multi, cbMulti,
                                            reinterpret_cast<wchar_t*>(wide), cchWide);
        // An invalid sequence fails the call; so may a lack of memory, which
        // must not read as one.
        if (n == 0) win32::ThrowIfNoMemory(::GetLastError());
        return n;
    }
    const size_t count = cbMulti == -1 ? std::strlen(multi) + 1 : static_cast<size_t>(cbMulti);
    const unsigned char* p = reinterpret_cast<const unsigned char*>(multi);
    std::u16string out;
    bool ok = false;
    if (codePage == kCpIso2022Jp) ok = cp932::Iso2022JpToUtf16(p, count, strict, &out);
    else if (codePage == kCpEucJp) ok = cp932::EucJpToUtf16(p, count, strict, &out);
    else ok = cp932::Utf16BytesToUtf16(codePage == kCpUtf16Be, p, count, strict, &out);
    return ok ? cp932::CopyConverted(out, wide, cchWide) : 0;
}

int WideCharToMultiByte(uint32_t codePage, const char16_t* wide, int cchWide, char* multi,
                        int cbMulti) {
    if (wide == nullptr || cchWide == 0 || cchWide < -1 || cbMulti < 0) return 0;
    codePage = Actual(codePage);
    if (cbMulti > 0 && multi == nullptr) return 0;
    if (Native(codePage)) {
        return ::WideCharToMultiByte(codePage, 0, reinterpret_cast<const wchar_t*>(wide), cchWide, multi,
                                     cbMulti, nullptr, nullptr);
    }
    if (codePage != kCpIso2022Jp && codePage != kCpEucJp) return 0;
    return cp932::CopyConverted(cp932::Utf16ToJapanese(codePage, wide, cp932::WideCount(wide, cchWide)), multi,
                                cbMulti);
}

bool IsDBCSLeadByte(unsigned char byte) { return ::IsDBCSLeadByteEx(kCp932, byte) != 0; }

}  // namespace qvp
