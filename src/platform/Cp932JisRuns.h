// Cp932JisRuns.h - the common stretches of ISO-2022-JP and EUC-JP text
// converted to code page 932 without the table: pairs whose form is plain
// Shift-JIS arithmetic, ASCII, and the escapes between them.
#ifndef QV_PLATFORM_CP932JISRUNS_H
#define QV_PLATFORM_CP932JISRUNS_H

#include <cstddef>

namespace qvp {
namespace cp932 {

// A JIS X 0208 row and cell (0x21-0x7E each) to the Shift-JIS code that
// sits at the same place: lead << 8 | trail.
inline unsigned JisToSjis(unsigned j1, unsigned j2) {
    const unsigned s1 = ((j1 + 1) >> 1) + (j1 <= 0x5E ? 0x70 : 0xB0);
    const unsigned s2 = j2 + ((j1 & 1) ? (j2 <= 0x5F ? 0x1F : 0x20) : 0x7E);
    return (s1 << 8) | s2;
}

// Whether the code page 932 form of JIS code (row << 8 | cell) is JisToSjis's
// two bytes: symbols (row 1 and the start of row 2), hiragana, katakana and
// both kanji levels decode to characters that encode back to the same
// place. The NEC row 13 duplicates of row 2, the NEC-selected IBM rows and
// unassigned cells do not.
inline bool IsArithmeticJis(unsigned code) {
    const unsigned cell = code & 0xFF;
    if (cell < 0x21 || cell > 0x7E) return false;
    return (code >= 0x2121 && code <= 0x222E) || (code >= 0x2421 && code <= 0x2473) ||
           (code >= 0x2521 && code <= 0x2576) || (code >= 0x3021 && code <= 0x4F53) ||
           (code >= 0x5021 && code <= 0x7426);
}

// A run's end: the input taken and output written, and whether the text
// is in pairs there (ISO-2022-JP after "ESC $ B", EUC-JP at a byte above
// 0x7F) or in ASCII, as it was at the start.
struct RunState {
    size_t in = 0;
    size_t out = 0;
    bool pairs = false;
};

// Converts p[0, n) from its start, in the mode state->pairs names, while the text is arithmetic pairs or
// ASCII, switching between them at "ESC ( B", "ESC ( J", "ESC $ B" and
// "ESC $ @" (ISO-2022-JP, high 0) or at the high bit (EUC-JP, high 0x80,
// where a pair's bytes are the JIS ones plus 0x80). Stops where the full
// decoder must take a step: another escape, a shift, a stray byte, a pair
// without an arithmetic form, a pair cut by the end. Writes to out, which
// must have room for n bytes: no step writes more than it reads, and a step
// may write there beyond its count.
void JapaneseRun(const unsigned char* p, size_t n, unsigned high, char* out, RunState* state);

// Whether runs take 32 pairs a step where the processor has AVX2 (they do
// unless told not to, which the tests do to check the narrower steps too).
// Returns whether they did before.
bool AllowWideSteps(bool allow);

}  // namespace cp932
}  // namespace qvp

#endif  // QV_PLATFORM_CP932JISRUNS_H
