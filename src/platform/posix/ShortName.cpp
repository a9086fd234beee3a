// ShortName.cpp - the short 8.3 names Wine gives long names.
//
// Every name that is no DOS name also answers to a short name, both in a
// listing pattern ("*.box" finds "beta.boxes") and in a path
// ("C:\\Long~ZAT\\x.txt"). Wine makes the short name from a hash of the long
// one rather than numbering them as Windows does, so the prefix needs no
// record of them.
#include "platform/posix/PosixText.h"

#include <cstdint>

namespace qvp {
namespace posix {

namespace {

bool OneOf(const char16_t* set, char16_t c) {
    for (; *set != 0; ++set)
        if (*set == c) return true;
    return false;
}

}  // namespace

// Whether a name is already a DOS name: at most eight characters, a dot and
// three, all ASCII and none of the characters DOS forbids; "." and ".."
// only as themselves. Lower case is allowed.
bool IsDosName(const std::u16string& name) {
    if (name.size() > 12) return false;
    if (!name.empty() && name[0] == u'.') return name == u"." || name == u"..";
    size_t dot = std::u16string::npos;
    for (size_t i = 0; i < name.size(); ++i) {
        if (name[i] > 0x7F || OneOf(u"*?<>|\"+=,;[] :/\\", name[i])) return false;
        if (name[i] != u'.') continue;
        if (dot != std::u16string::npos) return false;
        dot = i;
    }
    if (dot == std::u16string::npos) return name.size() <= 8;
    return dot <= 8 && name.size() - dot > 1 && name.size() - dot < 5;
}

// The short name Wine gives a name that is no DOS name: up to four of its
// first characters, '~' up to the fifth place, three characters of a hash of
// the name (taken in lower case), then a dot and up to three characters of
// the extension; a character DOS cannot hold becomes '_'. "beta.boxes" is
// "beta~RAG.box".
std::u16string ShortName(const std::u16string& name) {
    if (name.empty()) return name;
    static const char kHash[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ012345";
    const auto dosChar = [](char16_t c) { return c > 0x7F || OneOf(u"*?<>|\"+=,;[] ~.", c) ? u'_' : c; };
    uint16_t hash = 0xBEEF;
    for (size_t i = 0; i + 1 < name.size(); ++i)
        hash = static_cast<uint16_t>((hash << 3) ^ (hash >> 5) ^ LowerUnit(name[i]) ^
                                     (LowerUnit(name[i + 1]) << 8));
    hash = static_cast<uint16_t>((hash << 3) ^ (hash >> 5) ^ LowerUnit(name.back()));
    size_t ext = std::u16string::npos;  // the last dot, neither first nor last
    for (size_t i = 1; i + 1 < name.size(); ++i)
        if (name[i] == u'.') ext = i;
    std::u16string out;
    for (size_t i = 0; i < 4 && i < name.size() && i != ext; ++i) out += dosChar(name[i]);
    out.append(5 - out.size(), u'~');
    for (int shift : {10, 5, 0}) out += static_cast<char16_t>(kHash[(hash >> shift) & 0x1F]);
    if (ext != std::u16string::npos) {
        out += u'.';
        for (size_t i = ext + 1; i < name.size() && i <= ext + 3; ++i) out += dosChar(name[i]);
    }
    return out;
}

}  // namespace posix
}  // namespace qvp
