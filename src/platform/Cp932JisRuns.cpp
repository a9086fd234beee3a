// Cp932JisRuns.cpp - the common stretches of Japanese mail text converted
// to code page 932 in one loop.
//
// Mail text is short lines of kana and kanji between escapes (ISO-2022-JP)
// or beside ASCII line ends (EUC-JP). The pairs of the arithmetic rows need
// no table, ASCII is copied, and the escapes between them only switch
// modes, so a body goes through here with few stops. With SSE2 sixteen
// bytes are tested and converted a step; other targets (i686) take the same
// tests a pair or a byte at a time.
#include "platform/Cp932JisRuns.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qvp {
namespace cp932 {
namespace {

constexpr unsigned char kEsc = 0x1B;

// ISO-2022-JP's ASCII stops at the bytes that switch modes, EUC-JP's only
// at the high bit.
inline bool PlainAscii(unsigned char b, bool iso) { return b < 0x80 && !(iso && (b == kEsc || b == 0x0E || b == 0x0F)); }

#if defined(__SSE2__)

// 16-bit lanes all ones where (x - first) > span, unsigned, and no lane all
// ones where it is within: the lanes outside every range are those all ones
// in the AND of the answers for each.
inline __m128i Beyond(__m128i x, unsigned first, unsigned span) {
    const __m128i off = _mm_sub_epi16(x, _mm_set1_epi16(static_cast<short>(first)));
    return _mm_adds_epu16(off, _mm_set1_epi16(static_cast<short>(0xFFFE - span)));
}

// Eight pairs from p (each byte less high) to their JisToSjis forms in out;
// returns a mask of the bytes of the pairs that are not arithmetic. The
// forms before the first such pair are meant, no other.
inline unsigned PairBlock(const unsigned char* p, __m128i high, char* to) {
    const __m128i v = _mm_sub_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), high);
    const __m128i j1 = _mm_and_si128(v, _mm_set1_epi16(0xFF));  // lanes: j1 | j2 << 8
    const __m128i j2 = _mm_srli_epi16(v, 8);
    // IsArithmeticJis, lane by lane: a cell outside 0x21-0x7E makes the
    // code 0xFFFF, beyond every range.
    const __m128i cellOut = _mm_cmpeq_epi16(Beyond(j2, 0x21, 0x7E - 0x21), _mm_set1_epi16(-1));
    const __m128i code = _mm_or_si128(_mm_or_si128(_mm_slli_epi16(j1, 8), j2), cellOut);
    __m128i out = _mm_and_si128(Beyond(code, 0x2121, 0x222E - 0x2121), Beyond(code, 0x2421, 0x2473 - 0x2421));
    out = _mm_and_si128(out, Beyond(code, 0x2521, 0x2576 - 0x2521));
    out = _mm_and_si128(out, Beyond(code, 0x3021, 0x4F53 - 0x3021));
    out = _mm_and_si128(out, Beyond(code, 0x5021, 0x7426 - 0x5021));
    // JisToSjis, lane by lane: s1 is (j1 + 1) / 2 + 0x70, 0x40 more above
    // row 0x5E; s2 is j2 + 0x7E, less 0x5F (0x5E above cell 0x5F) in odd rows.
    __m128i s1 = _mm_avg_epu16(j1, _mm_set1_epi16(0xE0));
    s1 = _mm_add_epi16(s1, _mm_and_si128(_mm_cmpgt_epi16(j1, _mm_set1_epi16(0x5E)), _mm_set1_epi16(0x40)));
    const __m128i odd = _mm_srai_epi16(_mm_slli_epi16(v, 15), 15);
    const __m128i less = _mm_sub_epi16(_mm_set1_epi16(-0x5F), _mm_cmpgt_epi16(j2, _mm_set1_epi16(0x5F)));
    const __m128i s2 = _mm_add_epi16(_mm_add_epi16(j2, _mm_set1_epi16(0x7E)), _mm_and_si128(odd, less));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_or_si128(s1, _mm_slli_epi16(s2, 8)));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(out, _mm_set1_epi16(-1))));
}

// Sixteen bytes copied from p to out; returns a mask of those that are not
// plain ASCII.
inline unsigned AsciiBlock(const unsigned char* p, bool iso, char* out) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), v);
    unsigned stop = static_cast<unsigned>(_mm_movemask_epi8(v));
    if (iso) {
        const __m128i shifts = _mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8(0x0E)), _mm_cmpeq_epi8(v, _mm_set1_epi8(0x0F)));
        stop |= static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(shifts, _mm_cmpeq_epi8(v, _mm_set1_epi8(kEsc)))));
    }
    return stop;
}

// Where a block's run ends, given its mask of bytes that are not arithmetic.
// Runs mostly end at an escape (ISO-2022-JP) or an ASCII byte (EUC-JP):
// that byte is found on a shorter path than the whole test, and taken when
// the mask agrees, so that the next step need not wait for the test.
inline unsigned Stop(const unsigned char* p, unsigned high, unsigned bad) {
    const __m128i raw = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const unsigned ends = high == 0 ? static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(raw, _mm_set1_epi8(kEsc))))
                                    : ~static_cast<unsigned>(_mm_movemask_epi8(raw)) & 0xFFFF;
    if (__builtin_expect(ends != 0 && (ends & (0u - ends)) == (bad & (0u - bad)), 1))
        return static_cast<unsigned>(__builtin_ctz(ends));
    return static_cast<unsigned>(__builtin_ctz(bad)) & ~1u;
}

#endif

// The arithmetic pairs at the start of p[0, n), converted: the bytes taken.
// A whole block steps on by 16 whatever its bytes, so that the next load
// need not wait for this one's test; its stores stay below out + n.
size_t Pairs(const unsigned char* p, size_t n, unsigned high, char* out) {
    size_t i = 0;
#if defined(__SSE2__)
    const __m128i less = _mm_set1_epi8(static_cast<char>(high));
    for (; i + 16 <= n; i += 16) {
        const unsigned bad = PairBlock(p + i, less, out + i);
        if (bad != 0) return i + Stop(p + i, high, bad);
    }
#endif
    for (; i + 1 < n; i += 2) {
        const unsigned j1 = (p[i] - high) & 0xFF, j2 = (p[i + 1] - high) & 0xFF;
        if (!IsArithmeticJis(j1 << 8 | j2)) break;
        const unsigned sjis = JisToSjis(j1, j2);
        out[i] = static_cast<char>(sjis >> 8);
        out[i + 1] = static_cast<char>(sjis & 0xFF);
    }
    return i;
}

// The plain ASCII bytes at the start of p[0, n), copied: the bytes taken.
size_t Ascii(const unsigned char* p, size_t n, bool iso, char* out) {
    size_t i = 0;
#if defined(__SSE2__)
    for (; i + 16 <= n; i += 16) {
        const unsigned stop = AsciiBlock(p + i, iso, out + i);
        if (stop != 0) return i + static_cast<unsigned>(__builtin_ctz(stop));
    }
#endif
    for (; i < n && PlainAscii(p[i], iso); ++i) out[i] = static_cast<char>(p[i]);
    return i;
}

// Whether p[i] starts the ISO-2022-JP escape that leaves pairs for ASCII
// ("ESC ( B", "ESC ( J") or ASCII for pairs ("ESC $ B", "ESC $ @").
bool Leaves(const unsigned char* p, size_t n, size_t i, bool pairs) {
    if (i + 2 >= n || p[i] != kEsc) return false;
    return pairs ? p[i + 1] == '(' && (p[i + 2] == 'B' || p[i + 2] == 'J')
                 : p[i + 1] == '$' && (p[i + 2] == 'B' || p[i + 2] == '@');
}

// Japanese lines of ISO-2022-JP mail end "ESC ( B CR LF" and the next one
// starts "ESC $ B": the line end is taken whole, staying in pairs.
constexpr char kLineBreak[] = "\x1B(B\r\n\x1B$B";

}  // namespace

void JapaneseRun(const unsigned char* p, size_t n, unsigned high, char* out, RunState* state) {
    const bool iso = high == 0;
    size_t i = 0, w = 0;
    bool pairs = state->pairs;
    while (i < n) {
        const size_t taken = pairs ? Pairs(p + i, n - i, high, out + w) : Ascii(p + i, n - i, iso, out + w);
        i += taken;
        w += taken;
        if (i >= n) break;
        if (iso && pairs && n - i > 8 && std::memcmp(p + i, kLineBreak, 8) == 0) {
            out[w++] = '\r';
            out[w++] = '\n';
            i += 8;
            continue;
        }
        if (iso) {
            if (!Leaves(p, n, i, pairs)) break;
            i += 3;
        } else if ((p[i] >= 0x80) == pairs) {
            break;  // EUC-JP: a pair that is not arithmetic, or cut by the end
        }
        pairs = !pairs;
    }
    state->in = i;
    state->out = w;
    state->pairs = pairs;
}

}  // namespace cp932
}  // namespace qvp
