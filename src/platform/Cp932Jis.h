// Cp932Jis.h - code page 932 and the Japanese mail charsets built on it.
//
// Windows converts ISO-2022-JP (50220) and EUC-JP (51932) through the same
// table as code page 932, reached by the JIS row and cell. The table itself
// is the platform's: each side defines DecodeDouble and EncodeUnit (from
// glibc's CP932 on POSIX, from the system's code page 932 on Windows), and
// the codecs here are shared.
#ifndef QV_PLATFORM_CP932JIS_H
#define QV_PLATFORM_CP932JIS_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace qvp {
namespace cp932 {

// Table entries: 0 not yet asked, 1 no mapping, else kKnown | value.
constexpr uint32_t kUnknown = 0;
constexpr uint32_t kNone = 1;
constexpr uint32_t kKnown = 0x1000000;
// A best-fit form: Windows writes it, but the character is not exact.
constexpr uint32_t kBestFit = 0x2000000;

// The character that Windows substitutes for an invalid CP932 sequence.
constexpr char16_t kDefaultChar = 0x30FB;

// Defined by each platform. A double-byte code (lead, trail) to kKnown | its
// UTF-16 unit, or kNone.
uint32_t DecodeDouble(unsigned lead, unsigned trail);
// One UTF-16 unit (not a surrogate) to kKnown | (length << 16) | bytes, with
// kBestFit where the form is only a best fit, or kNone.
uint32_t EncodeUnit(char16_t unit);

inline bool IsLead(unsigned char byte) {
    return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}
inline bool IsTrail(unsigned char byte) { return byte >= 0x40 && byte <= 0xFC && byte != 0x7F; }

inline uint32_t Unit(uint32_t value) { return kKnown | value; }

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

// Walks UTF-16 text by units; the surrogates, paired or not, have no form
// in any code page here.
template <typename Sink>
void ForEachChar(const char16_t* units, size_t count, Sink sink) {
    for (size_t i = 0; i < count; ++i) {
        const char16_t u = units[i];
        if (u >= 0xD800 && u <= 0xDBFF && i + 1 < count && units[i + 1] >= 0xDC00 &&
            units[i + 1] <= 0xDFFF) {
            sink(0xFFFF, true);  // Windows writes one default character per unit
            sink(0xFFFF, true);
            ++i;
        } else {
            sink(u, u >= 0xD800 && u <= 0xDFFF);
        }
    }
}

// ISO-2022-JP and EUC-JP to UTF-16. Strict: an invalid sequence fails the
// whole conversion; lenient: it becomes kDefaultChar.
bool Iso2022JpToUtf16(const unsigned char* p, size_t n, bool strict, std::u16string* out);
bool EucJpToUtf16(const unsigned char* p, size_t n, bool strict, std::u16string* out);
// ISO-2022-JP or EUC-JP straight to code page 932, appended to *out: the
// lenient decoding above followed by the encoding of WideCharToMultiByte,
// without the UTF-16 text between. False for another code page.
bool JapaneseToCp932(uint32_t codePage, const unsigned char* p, size_t n, std::string* out);
// The same into out, which has room for 2 * n bytes; *written its length.
bool JapaneseToCp932(uint32_t codePage, const unsigned char* p, size_t n, char* out, size_t* written);
// ISO-8859-1 (limit 0xFF) and US-ASCII (limit 0x7F); a byte above the limit
// fails (strict) or becomes U+FFFD.
bool SingleByteToUtf16(const unsigned char* p, size_t n, unsigned limit, bool strict, std::u16string* out);
// UTF-16 text as bytes (kCpUtf16Le, kCpUtf16Be), which MultiByteToWideChar
// does not take: a leading byte order mark chooses the order and is dropped.
// An odd last byte fails (strict) or becomes U+FFFD.
bool Utf16BytesToUtf16(bool bigEndian, const unsigned char* p, size_t n, bool strict, std::u16string* out);
// UTF-16 to ISO-2022-JP or EUC-JP; a character without a form becomes '?'.
std::string Utf16ToJapanese(uint32_t codePage, const char16_t* units, size_t count);

// The rules of MultiByteToWideChar and WideCharToMultiByte for a finished
// conversion: a count of 0 asks for the size; a result that does not fit
// fails with 0; otherwise the units or bytes are copied and counted.
int CopyConverted(const std::u16string& out, char16_t* wide, int cchWide);
int CopyConverted(const std::string& out, char* multi, int cbMulti);
// The units that cchWide names: -1 is up to and including the NUL.
size_t WideCount(const char16_t* wide, int cchWide);

}  // namespace cp932
}  // namespace qvp

#endif  // QV_PLATFORM_CP932JIS_H
