// SHA-256 (FIPS 180-4); see Sha256.h for why it is written here. On x86
// processors with the SHA extensions the blocks go through those
// instructions (four to five times faster: hashing was a fifth of an
// export's time), else through the portable rounds.
#include "Sha256.h"

#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#include <immintrin.h>
#define TQNRALM_SHA_X86 1
#endif

namespace tqnralm {
namespace {

const uint32_t kRound[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

inline uint32_t Rotr(uint32_t x, int n) { return (x >> n) | (x << (32 - n)); }

#if TQNRALM_SHA_X86
bool CpuHasSha() {
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (!__get_cpuid(1, &a, &b, &c, &d) || !(c & (1u << 9)) || !(c & (1u << 19))) return false;  // SSSE3, SSE4.1
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & (1u << 29)) != 0;                    // SHA
}

// One text's state as ABEF and CDGH halves (the layout the instructions
// work on), the four words of the message schedule in use, and its blocks.
struct Lane {
    __m128i state0, state1, save0, save1;
    __m128i w[4];
    const unsigned char* p;
};

__attribute__((target("sha,sse4.1,ssse3"))) Lane LoadLane(const uint32_t* state, const unsigned char* p) {
    Lane lane;
    const __m128i tmp = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state)), 0xB1);
    const __m128i cdgh = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state + 4)), 0x1B);
    lane.state0 = _mm_alignr_epi8(tmp, cdgh, 8);
    lane.state1 = _mm_blend_epi16(cdgh, tmp, 0xF0);
    lane.p = p;
    return lane;
}

__attribute__((target("sha,sse4.1,ssse3"))) void StoreLane(const Lane& lane, uint32_t* state) {
    const __m128i tmp = _mm_shuffle_epi32(lane.state0, 0x1B);
    const __m128i state1 = _mm_shuffle_epi32(lane.state1, 0xB1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_blend_epi16(tmp, state1, 0xF0));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state + 4), _mm_alignr_epi8(state1, tmp, 8));
}

// Four rounds of the lane's block; quad 0 starts it, quad 15 adds it in and
// moves the lane on to its next block.
__attribute__((target("sha,sse4.1,ssse3"), always_inline)) inline void Quad(Lane& lane, int quad) {
    const __m128i kBigEndian = _mm_set_epi64x(0x0c0d0e0f08090a0bULL, 0x0405060700010203ULL);
    if (quad == 0) {
        lane.save0 = lane.state0;
        lane.save1 = lane.state1;
    }
    __m128i& words = lane.w[quad % 4];
    if (quad < 4) {
        words = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(lane.p + 16 * quad)), kBigEndian);
    } else {
        // W[t] from W[t-16], W[t-15], W[t-7] and W[t-2], four at a time.
        const __m128i& last = lane.w[(quad + 3) % 4];
        words = _mm_sha256msg2_epu32(
            _mm_add_epi32(_mm_sha256msg1_epu32(words, lane.w[(quad + 1) % 4]),
                          _mm_alignr_epi8(last, lane.w[(quad + 2) % 4], 4)),
            last);
    }
    const __m128i msg = _mm_add_epi32(words, _mm_loadu_si128(reinterpret_cast<const __m128i*>(kRound + 4 * quad)));
    lane.state1 = _mm_sha256rnds2_epu32(lane.state1, lane.state0, msg);
    lane.state0 = _mm_sha256rnds2_epu32(lane.state0, lane.state1, _mm_shuffle_epi32(msg, 0x0E));
    if (quad == 15) {
        lane.state0 = _mm_add_epi32(lane.state0, lane.save0);
        lane.state1 = _mm_add_epi32(lane.state1, lane.save1);
        lane.p += 64;
    }
}

__attribute__((target("sha,sse4.1,ssse3"))) void BlocksSha(uint32_t* state, const unsigned char* p, size_t n) {
    Lane lane = LoadLane(state, p);
    for (; n > 0; --n) {
        // Unrolled, the schedule's words stay in registers and the steps of
        // the first and last quad are no branches.
#pragma GCC unroll 16
        for (int quad = 0; quad < 16; ++quad) Quad(lane, quad);
    }
    StoreLane(lane, state);
}

// `n` blocks of each of two texts, their rounds interleaved.
__attribute__((target("sha,sse4.1,ssse3"))) void BlocksSha2(uint32_t* stateA, const unsigned char* a,
                                                          uint32_t* stateB, const unsigned char* b, size_t n) {
    Lane laneA = LoadLane(stateA, a), laneB = LoadLane(stateB, b);
    for (; n > 0; --n) {
#pragma GCC unroll 16
        for (int quad = 0; quad < 16; ++quad) {
            Quad(laneA, quad);
            Quad(laneB, quad);
        }
    }
    StoreLane(laneA, stateA);
    StoreLane(laneB, stateB);
}

bool g_useSha = CpuHasSha();
#endif

}  // namespace

bool Sha256::UseProcessorInstructions(bool use) {
#if TQNRALM_SHA_X86
    g_useSha = use && CpuHasSha();
    return g_useSha;
#else
    (void)use;
    return false;
#endif
}

static const uint32_t kInitial[8] = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                     0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

Sha256::Sha256() : BlockHash(words_, kInitial, 8) { Reset(); }

void Sha256::Pair(std::string_view a, std::string_view b, std::string* hexA, std::string* hexB) {
    Sha256 x, y;
#if TQNRALM_SHA_X86
    const size_t both = (a.size() < b.size() ? a.size() : b.size()) / 64;
    if (g_useSha && both > 0) {
        BlocksSha2(x.words_, reinterpret_cast<const unsigned char*>(a.data()), y.words_,
                   reinterpret_cast<const unsigned char*>(b.data()), both);
        x.Counted(both * 64);
        y.Counted(both * 64);
        a.remove_prefix(both * 64);
        b.remove_prefix(both * 64);
    }
#endif
    x.Update(a.data(), a.size());
    y.Update(b.data(), b.size());
    x.HexDigest(hexA);
    y.HexDigest(hexB);
}

void Sha256::Blocks(const unsigned char* p, size_t n) {
#if TQNRALM_SHA_X86
    if (g_useSha) {
        BlocksSha(state_, p, n);
        return;
    }
#endif
    for (; n > 0; --n, p += 64) Block(p);
}


void Sha256::Block(const unsigned char* p) {
    uint32_t w[64];
    for (int i = 0; i < 16; ++i) w[i] = LoadBigEndian32(p + 4 * i);
    for (int i = 16; i < 64; ++i) {
        uint32_t s0 = Rotr(w[i - 15], 7) ^ Rotr(w[i - 15], 18) ^ (w[i - 15] >> 3);
        uint32_t s1 = Rotr(w[i - 2], 17) ^ Rotr(w[i - 2], 19) ^ (w[i - 2] >> 10);
        w[i] = w[i - 16] + s0 + w[i - 7] + s1;
    }
    uint32_t a = state_[0], b = state_[1], c = state_[2], d = state_[3];
    uint32_t e = state_[4], f = state_[5], g = state_[6], h = state_[7];
    for (int i = 0; i < 64; ++i) {
        uint32_t t1 = h + (Rotr(e, 6) ^ Rotr(e, 11) ^ Rotr(e, 25)) + ((e & f) ^ (~e & g)) + kRound[i] + w[i];
        uint32_t t2 = (Rotr(a, 2) ^ Rotr(a, 13) ^ Rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    }
    state_[0] += a;
    state_[1] += b;
    state_[2] += c;
    state_[3] += d;
    state_[4] += e;
    state_[5] += f;
    state_[6] += g;
    state_[7] += h;
}


}  // namespace tqnralm
