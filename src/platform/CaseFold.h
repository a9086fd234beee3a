// CaseFold.h - the case folding by which registry and file names match.
//
// Windows matches key, value and file names without regard to case. Both
// platform layers fold names the same way, so that a name the Wine prefix
// finds is the one a copied drive's hive finds on Windows.
#ifndef QV_PLATFORM_CASEFOLD_H
#define QV_PLATFORM_CASEFOLD_H

#include <string>

namespace qvp {

// Simple case folding (to upper case) of one UTF-16 unit: ASCII, Latin-1,
// Greek, Cyrillic and the full-width Latin letters.
char16_t FoldUnit(char16_t unit);
std::u16string Fold(std::u16string text);
// The same letters the other way, to lower case.
char16_t LowerUnit(char16_t unit);

}  // namespace qvp

#endif  // QV_PLATFORM_CASEFOLD_H
