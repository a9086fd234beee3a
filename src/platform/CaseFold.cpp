// CaseFold.cpp - upper and lower case of the letters names are matched by.
#include "platform/CaseFold.h"

namespace qvp {

char16_t FoldUnit(char16_t u) {
    if (u < 0x80) return (u >= 'a' && u <= 'z') ? static_cast<char16_t>(u - 32) : u;
    if ((u >= 0xE0 && u <= 0xFE && u != 0xF7) ||  // Latin-1
        (u >= 0x3B1 && u <= 0x3C9 && u != 0x3C2) ||  // Greek
        (u >= 0x430 && u <= 0x44F))                  // Cyrillic
        return static_cast<char16_t>(u - 32);
    if (u >= 0x450 && u <= 0x45F) return static_cast<char16_t>(u - 80);
    if (u >= 0xFF41 && u <= 0xFF5A) return static_cast<char16_t>(u - 32);  // full-width
    return u;
}

char16_t LowerUnit(char16_t u) {
    if (u < 0x80) return (u >= 'A' && u <= 'Z') ? static_cast<char16_t>(u + 32) : u;
    if ((u >= 0xC0 && u <= 0xDE && u != 0xD7) ||    // Latin-1
        (u >= 0x391 && u <= 0x3A9 && u != 0x3A2) ||  // Greek
        (u >= 0x410 && u <= 0x42F))                  // Cyrillic
        return static_cast<char16_t>(u + 32);
    if (u >= 0x400 && u <= 0x40F) return static_cast<char16_t>(u + 80);
    if (u >= 0xFF21 && u <= 0xFF3A) return static_cast<char16_t>(u + 32);  // full-width
    return u;
}

std::u16string Fold(std::u16string text) {
    for (char16_t& u : text) u = FoldUnit(u);
    return text;
}

}  // namespace qvp
