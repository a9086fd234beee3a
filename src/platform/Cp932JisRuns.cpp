// Cp932JisRuns.cpp - the common stretches of Japanese mail text converted
// to code page 932 in one loop.
//
// Mail text is short lines of kana and kanji between escapes (ISO-2022-JP)
// or beside ASCII line ends (EUC-JP). The pairs of the arithmetic rows need
// no table, ASCII is copied, and the escapes between them only switch
// modes, so a body goes through here with few stops. With SSE2 sixteen
// pairs are tested and converted a step; other targets (i686) take the same
// tests a pair or a byte at a time.
#include "platform/Cp932JisRuns.h"

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
// Not on Windows: GCC spills 256-bit registers there with moves that need
// an alignment its stack does not keep.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(_WIN32)
#include <immintrin.h>
#define QV_RUNS_AVX2 1
#endif

namespace qvp {
namespace cp932 {
namespace {

constexpr unsigned char kEsc = 0x1B;

// Japanese lines of ISO-2022-JP mail end "ESC ( B CR LF" and the next one
// starts "ESC $ B": the line end is taken whole, staying in pairs.
constexpr char kLineBreak[] = "\x1B(B\r\n\x1B$B";

// ISO-2022-JP's ASCII stops at the bytes that switch modes, EUC-JP's only
// at the high bit.
inline bool PlainAscii(unsigned char b, bool iso) { return b < 0x80 && !(iso && (b == kEsc || b == 0x0E || b == 0x0F)); }

// Where the pairs stopped at p[*i]: an ISO-2022-JP line end (CR LF
// between its escapes back to ASCII and on to kanji) is written as CR LF,
// and the pairs go on after it; false when the stop is something else.
inline bool LineBreak(const unsigned char* p, size_t n, unsigned high, char* out, size_t* i, size_t* w) {
    if (high != 0 || n - *i <= 8 || std::memcmp(p + *i, kLineBreak, 8) != 0) return false;
    out[*w] = '\r';
    out[*w + 1] = '\n';
    *i += 8;
    *w += 2;
    return true;
}

#if defined(__SSE2__)

inline __m128i Bytes(int b) { return _mm_set1_epi8(static_cast<char>(b)); }

// Lanes all ones where a <= b, unsigned bytes.
inline __m128i AtMost(__m128i a, __m128i b) { return _mm_cmpeq_epi8(_mm_min_epu8(a, b), a); }

// The highest arithmetic cell of each row (JIS first byte), 0 for a row
// without one: IsArithmeticJis row by row, sixteen rows a step. The kanji
// rows 0x30-0x73 are whole but for 0x4F; the others are told one by one.
inline __m128i LastCell(__m128i row) {
    const __m128i kanji = AtMost(_mm_sub_epi8(row, Bytes(0x30)), Bytes(0x73 - 0x30));
    __m128i last = _mm_and_si128(kanji, Bytes(0x7E));
    last = _mm_sub_epi8(last, _mm_and_si128(_mm_cmpeq_epi8(row, Bytes(0x4F)), Bytes(0x7E - 0x53)));
    const int rows[][2] = {{0x21, 0x7E}, {0x22, 0x2E}, {0x24, 0x73}, {0x25, 0x76}, {0x74, 0x26}};
    for (const auto& r : rows) last = _mm_or_si128(last, _mm_and_si128(_mm_cmpeq_epi8(row, Bytes(r[0])), Bytes(r[1])));
    return last;
}

// JisToSjis on sixteen rows and cells (each below 0x80 where it counts):
// the lead is (j1 + 1) / 2 + 0x70, 0x40 more above row 0x5E; the trail is
// j2 + 0x7E in even rows, j2 + 0x1F (0x20 above cell 0x5F) in odd ones.
inline void ToSjis(__m128i j1, __m128i j2, __m128i* s1, __m128i* s2) {
    *s1 = _mm_add_epi8(_mm_avg_epu8(j1, Bytes(0xE0)), _mm_and_si128(_mm_cmpgt_epi8(j1, Bytes(0x5E)), Bytes(0x40)));
    const __m128i odd = _mm_cmpeq_epi8(_mm_and_si128(j1, Bytes(1)), Bytes(1));
    const __m128i oddAdd = _mm_sub_epi8(Bytes(0x1F), _mm_cmpgt_epi8(j2, Bytes(0x5F)));
    *s2 = _mm_add_epi8(j2, _mm_or_si128(_mm_and_si128(odd, oddAdd), _mm_andnot_si128(odd, Bytes(0x7E))));
}

// Sixteen pairs from p (each byte less high), or eight when !whole, to
// their JisToSjis forms in out; returns a mask of the pairs that are not
// arithmetic, a bit a pair. The forms before the first such pair are meant,
// no other. The pairs are split into a vector of rows and one of cells, so
// that each test takes sixteen at once.
template <bool whole>
inline unsigned PairBlock(const unsigned char* p, __m128i high, char* to) {
    const __m128i a = _mm_sub_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), high);
    const __m128i b = whole ? _mm_sub_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16)), high) : a;
    const __m128i low = _mm_set1_epi16(0xFF);
    const __m128i j1 = _mm_packus_epi16(_mm_and_si128(a, low), _mm_and_si128(b, low));
    const __m128i j2 = _mm_packus_epi16(_mm_srli_epi16(a, 8), _mm_srli_epi16(b, 8));
    // A cell from 0x21 up to its row's last cell; a row without one has 0.
    const __m128i ok = _mm_and_si128(AtMost(Bytes(0x21), j2), AtMost(j2, LastCell(j1)));
    __m128i s1, s2;
    ToSjis(j1, j2, &s1, &s2);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(s1, s2));
    if (whole) _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 16), _mm_unpackhi_epi8(s1, s2));
    return ~static_cast<unsigned>(_mm_movemask_epi8(ok)) & (whole ? 0xFFFFu : 0xFFu);
}

// The bytes of p[0, 16) where runs of pairs mostly end: escapes
// (ISO-2022-JP) or ASCII (EUC-JP).
inline unsigned Ends(const unsigned char* p, unsigned high) {
    const __m128i raw = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    return high == 0 ? static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(raw, Bytes(kEsc))))
                     : ~static_cast<unsigned>(_mm_movemask_epi8(raw)) & 0xFFFF;
}

// Where a block's run ends, given its mask of pairs that are not arithmetic
// (a bit a pair; not 0) and ends, its Ends. That end is found on a shorter
// path than the whole test, and taken when the mask agrees (the lowest bad
// pair, k, is the byte bit 2k, its bit squared), so that the next step need
// not wait for the test.
template <typename Mask>
inline size_t Stop(Mask bad, Mask ends) {
    const Mask lowest = bad & (0 - bad);
    if (__builtin_expect(ends != 0 && (ends & (0 - ends)) == lowest * lowest, 1)) {
        return static_cast<size_t>(__builtin_ctzll(ends));
    }
    return 2 * static_cast<size_t>(__builtin_ctzll(bad));
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

#endif

#if QV_RUNS_AVX2

// The same on processors with AVX2, thirty-two pairs a step, and the line
// ends between them taken in the same loop, so that most lines of a body
// cost one step. The 256-bit packs and unpacks work in each 128-bit half,
// so the pairs come back out in their order; only the mask's quarters need
// putting in order.
#define QV_AVX2 __attribute__((target("avx2")))

// The vectors of one byte repeated, and of 0x00FF words, from memory: built
// from immediates, as the compiler would, they cost three instructions each
// in every step, as a step needs more of them than there are registers.
struct Splats {
    alignas(32) unsigned char bytes[256][32];
    alignas(32) uint16_t low[16];
};
Splats g_splats;

QV_AVX2 inline __m256i Bytes32(int b) {
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(g_splats.bytes[b & 0xFF]));
}

QV_AVX2 inline __m256i AtMost32(__m256i a, __m256i b) { return _mm256_cmpeq_epi8(_mm256_min_epu8(a, b), a); }

QV_AVX2 inline __m256i LastCell32(__m256i row) {
    const __m256i kanji = AtMost32(_mm256_sub_epi8(row, Bytes32(0x30)), Bytes32(0x73 - 0x30));
    __m256i last = _mm256_and_si256(kanji, Bytes32(0x7E));
    last = _mm256_sub_epi8(last, _mm256_and_si256(_mm256_cmpeq_epi8(row, Bytes32(0x4F)), Bytes32(0x7E - 0x53)));
    const int rows[][2] = {{0x21, 0x7E}, {0x22, 0x2E}, {0x24, 0x73}, {0x25, 0x76}, {0x74, 0x26}};
    for (const auto& r : rows) {
        last = _mm256_or_si256(last, _mm256_and_si256(_mm256_cmpeq_epi8(row, Bytes32(r[0])), Bytes32(r[1])));
    }
    return last;
}

QV_AVX2 inline unsigned PairBlock32(const unsigned char* p, __m256i high, char* to) {
    const __m256i a = _mm256_sub_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)), high);
    const __m256i b = _mm256_sub_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 32)), high);
    const __m256i low = _mm256_load_si256(reinterpret_cast<const __m256i*>(g_splats.low));
    // Each half: eight pairs of a, then eight of b.
    const __m256i j1 = _mm256_packus_epi16(_mm256_and_si256(a, low), _mm256_and_si256(b, low));
    const __m256i j2 = _mm256_packus_epi16(_mm256_srli_epi16(a, 8), _mm256_srli_epi16(b, 8));
    const __m256i ok = _mm256_and_si256(AtMost32(Bytes32(0x21), j2), AtMost32(j2, LastCell32(j1)));
    const __m256i s1 = _mm256_add_epi8(_mm256_avg_epu8(j1, Bytes32(0xE0)),
                                       _mm256_and_si256(_mm256_cmpgt_epi8(j1, Bytes32(0x5E)), Bytes32(0x40)));
    const __m256i odd = _mm256_cmpeq_epi8(_mm256_and_si256(j1, Bytes32(1)), Bytes32(1));
    const __m256i oddAdd = _mm256_sub_epi8(Bytes32(0x1F), _mm256_cmpgt_epi8(j2, Bytes32(0x5F)));
    const __m256i s2 = _mm256_add_epi8(j2, _mm256_blendv_epi8(Bytes32(0x7E), oddAdd, odd));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm256_unpacklo_epi8(s1, s2));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + 32), _mm256_unpackhi_epi8(s1, s2));
    return ~static_cast<unsigned>(_mm256_movemask_epi8(_mm256_permute4x64_epi64(ok, 0xD8)));
}

// Ends for p[0, 64).
QV_AVX2 inline uint64_t Ends64(const unsigned char* p, unsigned high) {
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 32));
    if (high == 0) {
        const __m256i esc = Bytes32(kEsc);
        return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(a, esc))) |
               static_cast<uint64_t>(static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(b, esc)))) << 32;
    }
    return ~(static_cast<uint32_t>(_mm256_movemask_epi8(a)) |
             static_cast<uint64_t>(static_cast<uint32_t>(_mm256_movemask_epi8(b))) << 32);
}

// Pairs from p[*in], written from out[*written], while 64 bytes are left;
// true when a pair that is not arithmetic (nor an ISO-2022-JP line end)
// stopped them there.
QV_AVX2 bool PairsAvx2(const unsigned char* p, size_t n, unsigned high, char* out, size_t* in, size_t* written) {
    const __m256i less = Bytes32(static_cast<int>(high));
    size_t i = *in, w = *written;
    bool stopped = false;
    while (i + 64 <= n) {
        const unsigned bad = PairBlock32(p + i, less, out + w);
        const size_t k = bad == 0 ? 64 : Stop<uint64_t>(bad, Ends64(p + i, high));
        i += k;
        w += k;
        if (bad == 0) continue;
        if (!LineBreak(p, n, high, out, &i, &w)) {
            stopped = true;
            break;
        }
    }
    *in = i;
    *written = w;
    return stopped;
}

bool HasAvx2() {
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("avx2")) return false;
    for (int b = 0; b < 256; ++b) std::memset(g_splats.bytes[b], b, sizeof g_splats.bytes[b]);
    for (uint16_t& word : g_splats.low) word = 0xFF;
    return true;
}

const bool g_hasAvx2 = HasAvx2();
bool g_avx2 = g_hasAvx2;

#endif

#if defined(__SSE2__)

// Pairs from p[*in], written from out[*written], while 32 bytes are left,
// ISO-2022-JP's line ends taken between them; true when a pair that is not
// arithmetic (nor a line end) stopped them there. A whole block steps on by
// 32 whatever its bytes, so that the next load need not wait for this one's
// test; its stores stay below out + n, as the writing never passes the
// reading.
bool PairsSse2(const unsigned char* p, size_t n, unsigned high, char* out, size_t* in, size_t* written) {
    const __m128i less = Bytes(static_cast<int>(high));
    size_t i = *in, w = *written;
    bool stopped = false;
    while (i + 32 <= n) {
        const unsigned bad = PairBlock<true>(p + i, less, out + w);
        const size_t k = bad == 0 ? 32 : Stop(bad, Ends(p + i, high) | Ends(p + i + 16, high) << 16);
        i += k;
        w += k;
        if (bad == 0) continue;
        if (!LineBreak(p, n, high, out, &i, &w)) {
            stopped = true;
            break;
        }
    }
    *in = i;
    *written = w;
    return stopped;
}

#endif

// The arithmetic pairs at the start of p[0, n), fewer than 32 bytes after
// the wider steps, converted: the bytes taken.
size_t Pairs(const unsigned char* p, size_t n, unsigned high, char* out) {
    size_t i = 0;
#if defined(__SSE2__)
    if (i + 16 <= n) {
        const unsigned bad = PairBlock<false>(p + i, Bytes(static_cast<int>(high)), out + i);
        if (bad != 0) return i + Stop(bad, Ends(p + i, high));
        i += 16;
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

// Whether a run of pairs at p stops at once (at a character from the table,
// the escape after it): told by its first pair, without a step's work.
bool StopsAtOnce(const unsigned char* p, size_t n, unsigned high) {
    return n < 2 || !IsArithmeticJis(((p[0] - high) & 0xFF) << 8 | ((p[1] - high) & 0xFF));
}

// Whether p[i] starts the ISO-2022-JP escape that leaves pairs for ASCII
// ("ESC ( B", "ESC ( J") or ASCII for pairs ("ESC $ B", "ESC $ @").
bool Leaves(const unsigned char* p, size_t n, size_t i, bool pairs) {
    if (i + 2 >= n || p[i] != kEsc) return false;
    return pairs ? p[i + 1] == '(' && (p[i + 2] == 'B' || p[i + 2] == 'J')
                 : p[i + 1] == '$' && (p[i + 2] == 'B' || p[i + 2] == '@');
}

}  // namespace

bool AllowWideSteps(bool allow) {
#if QV_RUNS_AVX2
    const bool before = g_avx2;
    g_avx2 = allow && g_hasAvx2;
    return before;
#else
    (void)allow;
    return false;
#endif
}

void JapaneseRun(const unsigned char* p, size_t n, unsigned high, char* out, RunState* state) {
    const bool iso = high == 0;
    size_t i = 0, w = 0;
    bool pairs = state->pairs;
    while (i < n) {
        bool stopped = pairs && StopsAtOnce(p + i, n - i, high);
#if QV_RUNS_AVX2
        if (pairs && !stopped && g_avx2) stopped = PairsAvx2(p, n, high, out, &i, &w);
#endif
#if defined(__SSE2__)
        if (pairs && !stopped) stopped = PairsSse2(p, n, high, out, &i, &w);
#endif
        size_t taken = 0;
        if (!stopped) taken = pairs ? Pairs(p + i, n - i, high, out + w) : Ascii(p + i, n - i, iso, out + w);
        i += taken;
        w += taken;
        if (i >= n) break;
        if (pairs && LineBreak(p, n, high, out, &i, &w)) continue;
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
