// Cp932Jis.cpp - ISO-2022-JP and EUC-JP through the code page 932 table.
#include "platform/Cp932Jis.h"

#include "platform/Cp932JisRuns.h"
#include "platform/platform.h"

#include <atomic>
#include <climits>
#include <cstring>

namespace qvp {
namespace cp932 {
namespace {

// A Shift-JIS code to its JIS X 0208 row and cell (JisToSjis backwards); 0 when the code lies outside the JIS rows (user-defined area, IBM rows).
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

// The two decoders hand each character to a sink: Put with a table entry
// (kNone for an invalid sequence), Jis with a JIS X 0208 row and cell. A sink
// that returns false ends the conversion.
template <typename Sink>
bool DecodeIso2022Jp(const unsigned char* p, size_t n, Sink& sink) {
    enum { kAscii, kJis0208, kKana } mode = kAscii;
    bool shifted = false;  // SO ... SI: half-width katakana
    size_t i = 0;
    while (i < n) {
        // The runs that make up most mail: pairs after "ESC $ B", and ASCII
        // bytes other than ESC, SO and SI after "ESC ( B", each read as the
        // steps below would; the fast sink takes the common ones first.
        if (!shifted && (mode == kJis0208 || mode == kAscii)) {
            bool pairs = mode == kJis0208;
            sink.Fast(p, n, &i, 0, &pairs);
            mode = pairs ? kJis0208 : kAscii;
        }
        if (!shifted && mode == kJis0208) {
            if (!sink.Pairs(p, n, &i)) return false;
        } else if (!shifted && mode == kAscii) {
            const size_t start = i;
            while (i < n && p[i] < 0x80 && p[i] != 0x1B && p[i] != 0x0E && p[i] != 0x0F) ++i;
            if (!sink.Ascii(p + start, i - start)) return false;
        }
        if (i >= n) break;
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
                if (!sink.Put(Unit(b))) return false;
                ++i;
            }
            continue;
        }
        if (b == 0x0E) { shifted = true; ++i; continue; }
        if (b == 0x0F) { shifted = false; ++i; continue; }
        if (b >= 0x80) {
            if (!sink.Put(kNone)) return false;
            ++i;
            continue;
        }
        if ((shifted || mode == kKana) && b >= 0x21 && b <= 0x5F) {
            if (!sink.Put(Unit(0xFF61 + (b - 0x21)))) return false;
            ++i;
            continue;
        }
        if (mode == kJis0208 && b >= 0x21 && b <= 0x7E) {
            if (i + 1 >= n) {
                if (!sink.Put(kNone)) return false;
                ++i;
                continue;
            }
            if (!sink.Jis(b, p[i + 1])) return false;
            i += 2;
            continue;
        }
        if (!sink.Put(Unit(b))) return false;
        ++i;
    }
    return true;
}

template <typename Sink>
bool DecodeEucJp(const unsigned char* p, size_t n, Sink& sink) {
    size_t i = 0;
    while (i < n) {
        // ASCII and arithmetic pairs go in runs; the steps below take the rest.
        const bool pair = p[i] >= 0xA1 && i + 1 < n && p[i + 1] >= 0xA1;
        if (p[i] < 0x80 || (pair && IsArithmeticJis((p[i] - 0x80u) << 8 | (p[i + 1] - 0x80u)))) {
            bool pairs = p[i] >= 0x80;
            sink.Fast(p, n, &i, 0x80, &pairs);
            if (i >= n) break;
        }
        const unsigned char b = p[i];
        if (b < 0x80) {
            if (!sink.Put(Unit(b))) return false;
            ++i;
        } else if (b == 0x8E) {
            if (i + 1 < n && p[i + 1] >= 0xA1 && p[i + 1] <= 0xDF) {
                if (!sink.Put(Unit(0xFF61 + (p[i + 1] - 0xA1)))) return false;
                i += 2;
            } else {
                if (!sink.Put(kNone)) return false;
                i += (i + 1 < n && p[i + 1] >= 0x80) ? 2 : 1;
            }
        } else if (b == 0x8F) {
            // JIS X 0212: three bytes, no CP932 form.
            if (!sink.Put(kNone)) return false;
            size_t take = 1;
            while (take < 3 && i + take < n && p[i + take] >= 0xA1) ++take;
            i += take;
        } else if (b >= 0xA1 && b <= 0xFE) {
            if (i + 1 < n && p[i + 1] >= 0xA1 && p[i + 1] <= 0xFE) {
                if (!sink.Jis(b & 0x7F, p[i + 1] & 0x7F)) return false;
                i += 2;
            } else {
                if (!sink.Put(kNone)) return false;
                ++i;
            }
        } else {
            if (!sink.Put(kNone)) return false;
            ++i;
        }
    }
    return true;
}

// Decodes into UTF-16 text.
class WideSink {
public:
    WideSink(bool strict, std::u16string* out) : d_(strict, kDefaultChar, out) {}
    bool Put(uint32_t entry) { return d_.Put(entry); }
    bool Jis(unsigned j1, unsigned j2) { return d_.Put(DecodeJis(j1, j2)); }
    bool Pairs(const unsigned char* p, size_t n, size_t* i) {
        for (; *i + 1 < n && p[*i] >= 0x21 && p[*i] <= 0x7E; *i += 2) {
            if (!Jis(p[*i], p[*i + 1])) return false;
        }
        return true;
    }
    bool Ascii(const unsigned char* p, size_t n) {
        for (size_t i = 0; i < n; ++i) {
            if (!d_.Put(Unit(p[i]))) return false;
        }
        return true;
    }
    void Fast(const unsigned char*, size_t, size_t*, unsigned, bool*) {}

private:
    Decoder d_;
};

// A JIS X 0208 code's form in code page 932, by row and cell from 0x21: 0
// not yet asked, else an EncodeUnit entry. Only known forms are kept, so a
// failed look-up is asked again next time, as the tables below do.
std::atomic<uint32_t> g_jisForm[94 * 94];

// Writes each character in code page 932 as WideCharToMultiByte writes it
// after a lenient decoding: an invalid sequence as the default character,
// a character without a form as '?'. No input byte gives more than two
// bytes, so the caller makes room for twice the input and the sink writes
// through a pointer.
class AnsiSink {
public:
    explicit AnsiSink(char* at) : at_(at) {}
    char* End() const { return at_; }

    bool Put(uint32_t entry) {
        const char16_t unit = entry == kNone ? kDefaultChar : static_cast<char16_t>(entry & 0xFFFF);
        if (unit < 0x80) {
            *at_++ = static_cast<char>(unit);
            return true;
        }
        const uint32_t form = (unit >= 0xD800 && unit <= 0xDFFF) ? kNone : EncodeUnit(unit);
        if (form == kNone) *at_++ = '?';
        else Write(form);
        return true;
    }

    bool Ascii(const unsigned char* p, size_t n) {
        if (n != 0) std::memcpy(at_, p, n);
        at_ += n;
        return true;
    }

    // Mail text is mostly JIS pairs: each code is decoded and encoded once.
    bool Jis(unsigned j1, unsigned j2) {
        if (j1 < 0x21 || j1 > 0x7E || j2 < 0x21 || j2 > 0x7E) return Put(kNone);
        std::atomic<uint32_t>& slot = g_jisForm[(j1 - 0x21) * 94 + (j2 - 0x21)];
        uint32_t form = slot.load(std::memory_order_relaxed);
        if (form == kUnknown) {
            const uint32_t entry = DecodeJis(j1, j2);
            const char16_t unit = static_cast<char16_t>(entry & 0xFFFF);
            if (entry == kNone || unit < 0x80 || (unit >= 0xD800 && unit <= 0xDFFF)) return Put(entry);
            form = EncodeUnit(unit);
            if (form == kNone) return Put(entry);
            slot.store(form, std::memory_order_relaxed);
        }
        Write(form);
        return true;
    }

    // The pairs from *i on while their first byte is a JIS row and their
    // code is not arithmetic (Fast takes those), as Jis would take them.
    bool Pairs(const unsigned char* p, size_t n, size_t* i) {
        for (; *i + 1 < n && p[*i] - 0x21u <= 0x5D && !IsArithmeticJis(p[*i] << 8 | p[*i + 1]); *i += 2)
            Jis(p[*i], p[*i + 1]);
        return true;
    }

    // The common stretches from *i on. The room made for twice the input
    // holds what the run may write, as the write position never passes
    // twice the read one.
    void Fast(const unsigned char* p, size_t n, size_t* i, unsigned high, bool* pairs) {
        RunState run;
        run.pairs = *pairs;
        JapaneseRun(p + *i, n - *i, high, at_, &run);
        *i += run.in;
        at_ += run.out;
        *pairs = run.pairs;
    }

private:
    void Write(uint32_t form) {
        if (((form >> 16) & 0xFF) == 2) *at_++ = static_cast<char>((form >> 8) & 0xFF);
        *at_++ = static_cast<char>(form & 0xFF);
    }

    char* at_;
};

}  // namespace

bool Iso2022JpToUtf16(const unsigned char* p, size_t n, bool strict, std::u16string* out) {
    WideSink sink(strict, out);
    return DecodeIso2022Jp(p, n, sink);
}

bool EucJpToUtf16(const unsigned char* p, size_t n, bool strict, std::u16string* out) {
    WideSink sink(strict, out);
    return DecodeEucJp(p, n, sink);
}

bool JapaneseToCp932(uint32_t codePage, const unsigned char* p, size_t n, char* out, size_t* written) {
    if (codePage != kCpIso2022Jp && codePage != kCpEucJp) return false;
    AnsiSink sink(out);
    if (codePage == kCpIso2022Jp) DecodeIso2022Jp(p, n, sink);
    else DecodeEucJp(p, n, sink);
    *written = static_cast<size_t>(sink.End() - out);
    return true;
}

bool JapaneseToCp932(uint32_t codePage, const unsigned char* p, size_t n, std::string* out) {
    if (codePage != kCpIso2022Jp && codePage != kCpEucJp) return false;
    const size_t old = out->size();
    out->resize(old + 2 * n);
    size_t written = 0;
    JapaneseToCp932(codePage, p, n, &(*out)[0] + old, &written);
    out->resize(old + written);
    return true;
}

bool SingleByteToUtf16(const unsigned char* p, size_t n, unsigned limit, bool strict,
                       std::u16string* out) {
    for (size_t i = 0; i < n; ++i) {
        if (limit == 0x7F) {
            out->push_back(p[i] & 0x7F);  // US-ASCII drops the high bit, as Windows does
        } else if (p[i] > limit) {
            if (strict) return false;
            out->push_back(0xFFFD);
        } else {
            out->push_back(p[i]);
        }
    }
    return true;
}

bool Utf16BytesToUtf16(bool bigEndian, const unsigned char* p, size_t n, bool strict, std::u16string* out) {
    if (n >= 2 && ((p[0] == 0xFE && p[1] == 0xFF) || (p[0] == 0xFF && p[1] == 0xFE))) {
        bigEndian = p[0] == 0xFE;
        p += 2;
        n -= 2;
    }
    for (size_t i = 0; i + 1 < n; i += 2)
        out->push_back(static_cast<char16_t>(bigEndian ? (p[i] << 8) | p[i + 1] : (p[i + 1] << 8) | p[i]));
    if (n % 2 == 0) return true;
    if (strict) return false;
    out->push_back(0xFFFD);
    return true;
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

namespace {

template <typename Text, typename Unit>
int CopyOut(const Text& out, Unit* to, int capacity) {
    if (out.size() > static_cast<size_t>(INT_MAX)) return 0;
    const int needed = static_cast<int>(out.size());
    if (capacity == 0) return needed;
    if (needed > capacity) return 0;
    std::memcpy(to, out.data(), out.size() * sizeof(Unit));
    return needed;
}

}  // namespace

int CopyConverted(const std::u16string& out, char16_t* wide, int cchWide) { return CopyOut(out, wide, cchWide); }

int CopyConverted(const std::string& out, char* multi, int cbMulti) { return CopyOut(out, multi, cbMulti); }

size_t WideCount(const char16_t* wide, int cchWide) {
    if (cchWide != -1) return static_cast<size_t>(cchWide);
    size_t count = 0;
    while (wide[count] != 0) ++count;
    return count + 1;
}

}  // namespace cp932

bool JapaneseToAnsi(uint32_t codePage, const char* multi, size_t count, std::string* out) {
    return cp932::JapaneseToCp932(codePage, reinterpret_cast<const unsigned char*>(multi), count, out);
}

bool JapaneseToAnsi(uint32_t codePage, const char* multi, size_t count, char* out, size_t* written) {
    return cp932::JapaneseToCp932(codePage, reinterpret_cast<const unsigned char*>(multi), count, out, written);
}

}  // namespace qvp
