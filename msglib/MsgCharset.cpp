// MsgCharset.cpp - charset names, the raw-byte guess, conversion through qvp.
#include "MsgCharset.h"

#include <algorithm>
#include <climits>

#include "MsgText.h"
#include "platform/platform.h"

namespace msg {

namespace {

const char kEsc = '\x1B';

// ASCII without the escape byte reads the same in every code page we name,
// but for those that write other text in ASCII bytes: UTF-16, UTF-7, HZ and
// the ISO-2022 forms of Korean and Chinese.
bool WritesInAscii(uint32_t codePage) {
    return codePage == qvp::kCpUtf16Le || codePage == qvp::kCpUtf16Be || codePage == 65000 ||
           codePage == 52936 || codePage == 50225 || codePage == 50227;
}

}  // namespace

bool IsPlainAscii(uint32_t codePage, std::string_view bytes) {
    if (WritesInAscii(codePage)) return false;
    for (char c : bytes) {
        if (static_cast<unsigned char>(c) >= 0x80 || c == kEsc) return false;
    }
    return true;
}

namespace {

// Shift_JIS as code page 932 writes it: single bytes 00-7F and A1-DF, lead
// bytes 81-9F and E0-FC before a trail byte 40-7E or 80-FC. 80, A0 and FD-FF
// are no Shift_JIS text (they are windows-1252 or another charset's).
// *leads counts the lead bytes 81-9F.
bool ScanShiftJis(std::string_view bytes, size_t* leads) {
    const size_t n = bytes.size();
    for (size_t i = 0; i < n; ++i) {
        const unsigned char b = static_cast<unsigned char>(bytes[i]);
        if (b < 0x80 || (b >= 0xA1 && b <= 0xDF)) continue;
        if (!((b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xFC)) || i + 1 == n) return false;
        const unsigned char t = static_cast<unsigned char>(bytes[++i]);
        if (t < 0x40 || t == 0x7F || t > 0xFC) return false;
        if (b <= 0x9F) ++*leads;
    }
    return true;
}

// EUC-JP: ASCII, pairs of A1-FE (JIS X 0208), 8E before A1-DF (kana), 8F
// before a pair of A1-FE (JIS X 0212). *pairs counts the pairs of A1-FE.
bool ScanEucJp(std::string_view bytes, size_t* pairs) {
    const auto high = [](char c) {
        const unsigned char u = static_cast<unsigned char>(c);
        return u >= 0xA1 && u != 0xFF;
    };
    const size_t n = bytes.size();
    for (size_t i = 0; i < n; ++i) {
        const unsigned char b = static_cast<unsigned char>(bytes[i]);
        if (b < 0x80) continue;
        if (b == 0x8E) {
            if (i + 1 == n || !high(bytes[i + 1]) || static_cast<unsigned char>(bytes[i + 1]) > 0xDF) return false;
            ++i;
        } else if (b == 0x8F) {
            if (n - i < 3 || !high(bytes[i + 1]) || !high(bytes[i + 2])) return false;
            i += 2;
        } else {
            if (!high(bytes[i]) || i + 1 == n || !high(bytes[i + 1])) return false;
            ++*pairs;
            ++i;
        }
    }
    return true;
}

bool HasEightBit(std::string_view bytes) {
    for (char c : bytes) {
        if (static_cast<unsigned char>(c) >= 0x80) return true;
    }
    return false;
}

// The characters that code page 932 lacks and that Windows' best-fit table
// for 932 writes in a close form, given here as the character of that form,
// so that every platform's converter gives it: the JIS characters that
// Microsoft's table maps elsewhere (what Mac and Unix mailers send), and the
// no-break space. The private-use characters that stand for the bytes A0 and
// FD-FF would go back to those bytes, which a strict reader refuses.
char16_t BestFit932(char16_t c) {
    switch (c) {
        case 0x00A0: return u' ';      // NO-BREAK SPACE
        case 0x00A2: return 0xFFE0;    // CENT SIGN: 0x8191
        case 0x00A3: return 0xFFE1;    // POUND SIGN: 0x8192
        case 0x00AC: return 0xFFE2;    // NOT SIGN: 0x81CA
        case 0x2014: return 0x2015;    // EM DASH: 0x815C
        case 0x2016: return 0x2225;    // DOUBLE VERTICAL LINE: 0x8161
        case 0x2212: return 0xFF0D;    // MINUS SIGN: 0x817C
        case 0x301C: return 0xFF5E;    // WAVE DASH: 0x8160
        case 0xF8F0: case 0xF8F1: case 0xF8F2: case 0xF8F3: return u'?';
        default: return c;
    }
}

void AppendWidened(std::string_view bytes, std::u16string* out) {
    for (char c : bytes) {
        unsigned char u = static_cast<unsigned char>(c);
        out->push_back(u < 0x80 ? static_cast<char16_t>(u) : u'?');
    }
}

void AppendConverted(uint32_t codePage, std::string_view bytes, std::u16string* out);

// A run of ASCII shorter than this is converted with its neighbours: the
// converter costs a call per piece.
constexpr size_t kMinAsciiRun = 32;

// From *pos on: the length of the run of bytes that read as the same ASCII
// in the code page and in CP932, and *pos past it; or 0, with *pos past the
// bytes that cannot be such a run. A run starts only where the converter
// would be in its first state, so that the pieces between runs convert as
// they would within the whole text. ISO-2022-JP keeps its mode (ASCII after
// "ESC ( B" or "ESC ( J", else two-byte or kana; SO/SI shift to kana) as the
// decoder does; UTF-8 has no state, and other code pages are converted whole.
size_t AsciiRunAt(uint32_t codePage, std::string_view bytes, size_t* pos) {
    const size_t n = bytes.size();
    size_t i = *pos;
    if (codePage == qvp::kCpUtf8) {
        const size_t start = i;
        while (i < n && static_cast<unsigned char>(bytes[i]) < 0x80) ++i;
        if (i == start) {
            while (i < n && static_cast<unsigned char>(bytes[i]) >= 0x80) ++i;
            *pos = i;
            return 0;
        }
        *pos = i;
        return i - start;
    }
    if (codePage != qvp::kCpIso2022Jp) {
        *pos = n;
        return 0;
    }
    // Only ever called in the first state (ASCII, not shifted): at the text's
    // start and right after a run.
    const auto plain = [](unsigned char b) { return b < 0x80 && b != 0x1B && b != 0x0E && b != 0x0F; };
    const size_t start = i;
    while (i < n && plain(static_cast<unsigned char>(bytes[i]))) ++i;
    if (i > start) {
        *pos = i;
        return i - start;
    }
    // Past the bytes until the decoder is back in its first state.
    bool ascii = true, shifted = false;
    do {
        const unsigned char b = static_cast<unsigned char>(bytes[i]);
        if (b == 0x1B && i + 2 < n && bytes[i + 1] == '(' && (bytes[i + 2] == 'B' || bytes[i + 2] == 'J')) {
            ascii = true;
            i += 3;
        } else if (b == 0x1B && i + 2 < n && (bytes[i + 1] == '(' || bytes[i + 1] == '$')) {
            ascii = false;  // kana, JIS X 0208 or 0212, or an escape the decoder takes as a byte
            i += 1;
        } else {
            if (b == 0x0E) shifted = true;
            if (b == 0x0F) shifted = false;
            i += 1;
        }
    } while (i < n && !(ascii && !shifted && plain(static_cast<unsigned char>(bytes[i]))));
    *pos = i;
    return 0;
}

}  // namespace

bool IsValidUtf8(std::string_view bytes) {
    const size_t n = bytes.size();
    size_t i = 0;
    while (i < n) {
        unsigned char c = static_cast<unsigned char>(bytes[i]);
        if (c < 0x80) {
            ++i;
            continue;
        }
        size_t len;
        uint32_t cp;
        if (c >= 0xC2 && c <= 0xDF) {
            len = 2;
            cp = c & 0x1F;
        } else if (c >= 0xE0 && c <= 0xEF) {
            len = 3;
            cp = c & 0x0F;
        } else if (c >= 0xF0 && c <= 0xF4) {
            len = 4;
            cp = c & 0x07;
        } else {
            return false;
        }
        if (n - i < len) return false;
        for (size_t k = 1; k < len; ++k) {
            unsigned char t = static_cast<unsigned char>(bytes[i + k]);
            if ((t & 0xC0) != 0x80) return false;
            cp = (cp << 6) | (t & 0x3F);
        }
        if ((len == 3 && cp < 0x800) || (len == 4 && cp < 0x10000) || cp > 0x10FFFF ||
            (cp >= 0xD800 && cp <= 0xDFFF)) {
            return false;
        }
        i += len;
    }
    return true;
}

uint32_t GuessCodePage(std::string_view bytes, uint32_t declared) {
    if (declared == qvp::kCpAscii) declared = kCpGuess;
    size_t ignored = 0;
    const bool japanese = declared == qvp::kCpIso2022Jp || declared == qvp::kCp932 ||
                          declared == qvp::kCpEucJp || declared == qvp::kCpUtf8;
    const bool escaped = bytes.find(kEsc) != std::string_view::npos;
    if (japanese && (!escaped || declared == qvp::kCpIso2022Jp)) {
        const bool valid = declared == qvp::kCpUtf8   ? IsValidUtf8(bytes)
                           : declared == qvp::kCp932  ? ScanShiftJis(bytes, &ignored)
                           : declared == qvp::kCpEucJp ? ScanEucJp(bytes, &ignored)
                                                       : !HasEightBit(bytes);
        if (valid) return declared;
    }
    if (escaped) return qvp::kCpIso2022Jp;
    if (!HasEightBit(bytes)) return qvp::kCpUtf8;
    if (IsValidUtf8(bytes)) return qvp::kCpUtf8;
    size_t sjisLeads = 0, eucPairs = 0;
    const bool sjis = ScanShiftJis(bytes, &sjisLeads);
    const bool euc = ScanEucJp(bytes, &eucPairs);
    if (sjis && euc) return eucPairs > sjisLeads ? qvp::kCpEucJp : qvp::kCp932;
    if (sjis || euc) return sjis ? qvp::kCp932 : qvp::kCpEucJp;
    if (declared != kCpGuess && !japanese && !WritesInAscii(declared)) return declared;
    return qvp::kCp1252;
}

void AppendWide(uint32_t codePage, std::string_view bytes, std::u16string* out) {
    if (bytes.empty()) return;
    if (IsPlainAscii(codePage, bytes)) {
        out->append(bytes.begin(), bytes.end());
        return;
    }
    // Mail that says US-ASCII and carries 8-bit or escaped text is old
    // Japanese mail that did not know better.
    if (codePage == kCpGuess || codePage == qvp::kCpAscii) codePage = GuessCodePage(bytes);
    AppendConverted(codePage, bytes, out);
}

namespace {

// Through the converter, whatever the bytes (an ISO-2022-JP piece without
// escapes may still shift to kana). False, with nothing appended, when the
// converter refuses the code page.
bool TryConverted(uint32_t codePage, std::string_view bytes, std::u16string* out) {
    const int len = static_cast<int>(bytes.size());
    const size_t old = out->size();
    // No code page we name gives more units than bytes: one call into room
    // for that many, and the measuring call only when it is refused.
    out->resize(old + bytes.size());
    int got = qvp::MultiByteToWideChar(codePage, 0, bytes.data(), len, &(*out)[old], len);
    if (got <= 0) {
        out->resize(old);
        const int need = qvp::MultiByteToWideChar(codePage, 0, bytes.data(), len, nullptr, 0);
        if (need <= 0) return false;
        out->resize(old + static_cast<size_t>(need));
        got = qvp::MultiByteToWideChar(codePage, 0, bytes.data(), len, &(*out)[old], need);
    }
    out->resize(got > 0 ? old + static_cast<size_t>(got) : old);
    return got > 0;
}

// A charset the system cannot convert is read as if undeclared.
void AppendConverted(uint32_t codePage, std::string_view bytes, std::u16string* out) {
    if (bytes.size() > static_cast<size_t>(INT_MAX / 2)) {
        AppendWidened(bytes, out);
        return;
    }
    if (TryConverted(codePage, bytes, out)) return;
    const uint32_t guess = GuessCodePage(bytes);
    if (guess == codePage || !TryConverted(guess, bytes, out)) AppendWidened(bytes, out);
}

}  // namespace

std::string WideToCp932(std::u16string_view text) {
    std::string out;
    bool ascii = true;
    std::u16string fitted;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] < 0x80) continue;
        ascii = false;
        const char16_t fit = BestFit932(text[i]);
        if (fit == text[i]) continue;
        if (fitted.empty()) fitted.assign(text);
        fitted[i] = fit;
    }
    const std::u16string_view wide = fitted.empty() ? text : std::u16string_view(fitted);
    if (ascii || wide.size() > static_cast<size_t>(INT_MAX / 4)) {
        out.reserve(wide.size());
        for (char16_t c : wide) out.push_back(c < 0x80 ? static_cast<char>(c) : '?');
        return out;
    }
    const int len = static_cast<int>(wide.size());
    // At most two bytes a unit: one call, and the measuring one only when refused.
    out.resize(wide.size() * 2);
    const int once = qvp::WideCharToMultiByte(qvp::kCp932, wide.data(), len, &out[0], len * 2);
    if (once > 0) {
        out.resize(static_cast<size_t>(once));
        return out;
    }
    int need = qvp::WideCharToMultiByte(qvp::kCp932, wide.data(), len, nullptr, 0);
    if (need > 0) {
        out.resize(static_cast<size_t>(need));
        int got = qvp::WideCharToMultiByte(qvp::kCp932, wide.data(), len, &out[0], need);
        if (got > 0) {
            out.resize(static_cast<size_t>(got));
            return out;
        }
    }
    out.clear();
    for (char16_t c : wide) out.push_back(c < 0x80 ? static_cast<char>(c) : '?');
    return out;
}

namespace {

// Any other charset goes through UTF-16, but for its long ASCII runs.
void ConvertThroughWide(uint32_t codePage, std::string_view bytes, std::string* out) {
    out->clear();
    out->reserve(bytes.size());
    std::u16string wide;
    const auto convert = [&](std::string_view piece) {
        if (piece.empty()) return;
        wide.clear();
        AppendConverted(codePage, piece, &wide);
        *out += WideToCp932(wide);
    };
    size_t done = 0;  // bytes before this are in out
    for (size_t i = 0; i < bytes.size();) {
        const size_t run = AsciiRunAt(codePage, bytes, &i);
        if (run < kMinAsciiRun) continue;
        convert(bytes.substr(done, i - run - done));
        out->append(bytes.data() + i - run, run);
        done = i;
    }
    convert(bytes.substr(done));
}

}  // namespace

char* TextRoom::Reserve(size_t n) {
    if (!m_data || n > m_size) {
        // Grown by half again, so that a walk of growing bodies does not
        // allocate for each; new char[] leaves the bytes unset.
        const size_t size = std::max({n, m_size + m_size / 2, size_t{64}});
        m_data.reset(new char[size]);
        m_size = size;
    }
    return m_data.get();
}

void TextRoom::Trim(size_t limit) {
    if (m_size > limit) {
        m_data.reset();
        m_size = 0;
    }
    if (text.capacity() > limit) std::string().swap(text);
    if (decoded.capacity() > limit) std::string().swap(decoded);
}

std::string_view Cp932View(uint32_t codePage, std::string_view bytes, TextRoom* room) {
    if (IsPlainAscii(codePage, bytes)) return bytes;
    if (codePage == kCpGuess || codePage == qvp::kCpAscii) codePage = GuessCodePage(bytes);
    if (codePage == qvp::kCp932) return bytes;
    // The charsets built on code page 932 go there in one pass.
    if (codePage == qvp::kCpIso2022Jp || codePage == qvp::kCpEucJp) {
        char* at = room->Reserve(2 * bytes.size());
        size_t written = 0;
        qvp::JapaneseToAnsi(codePage, bytes.data(), bytes.size(), at, &written);
        return {at, written};
    }
    ConvertThroughWide(codePage, bytes, &room->text);
    return room->text;
}

}  // namespace msg
