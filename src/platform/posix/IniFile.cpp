// IniFile.cpp - GetPrivateProfileStringA over the Wine prefix.
//
// What Windows (and Wine) do with an initialisation file:
// - lines end in CR LF, LF or CR; blanks, tabs, CR and 0x1A are trimmed
//   from both ends of keys and values;
// - "[name]" opens a section (up to the last ']' of the line); a ';' in the
//   first column is a comment, anywhere else it is text; a line without '='
//   is a key without a value, and gives the default;
// - sections and keys match with ASCII letters in any case (not full-width
//   ones); the first key of a name wins, and only the first section of a
//   name is searched;
// - a value wrapped in one matching pair of '"' or '\'' loses the pair; the
//   default loses only its trailing blanks; the result is cut to the
//   buffer's size minus one.
#include "platform/posix/IniFile.h"

#include "platform/platform.h"
#include "platform/posix/HostPath.h"
#include "platform/posix/PosixText.h"

#include <cstring>

namespace qvp {
namespace posix {
namespace {

constexpr size_t kMaxProfileBytes = 256u << 20;

bool IsProfileSpace(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u'\v' || c == u'\f' || c == 0x1A;
}

// [begin, end) trimmed of profile blanks.
void Trim(const char16_t* text, size_t* begin, size_t* end) {
    while (*begin < *end && IsProfileSpace(text[*begin])) ++*begin;
    while (*end > *begin && IsProfileSpace(text[*end - 1])) --*end;
}

std::u16string Trimmed(const std::u16string& s) {
    size_t b = 0, e = s.size();
    Trim(s.data(), &b, &e);
    return s.substr(b, e - b);
}

char16_t FoldAscii(char16_t c) { return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c; }

std::u16string FoldAscii(std::u16string s) {
    for (char16_t& c : s) c = FoldAscii(c);
    return s;
}

bool EqualFolded(const char16_t* a, size_t aLength, const std::u16string& folded) {
    if (aLength != folded.size()) return false;
    for (size_t i = 0; i < aLength; ++i)
        if (FoldAscii(a[i]) != folded[i]) return false;
    return true;
}

std::u16string StripQuotes(std::u16string value) {
    if (value.size() >= 2 && (value[0] == u'"' || value[0] == u'\'') && value.back() == value[0])
        return value.substr(1, value.size() - 2);
    return value;
}

std::u16string Decode(const char* data, size_t size) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(data);
    std::u16string text;
    if (size >= 2 && ((p[0] == 0xFF && p[1] == 0xFE) || (p[0] == 0xFE && p[1] == 0xFF))) {
        const bool little = p[0] == 0xFF;
        text.reserve(size / 2);
        for (size_t i = 2; i + 1 < size; i += 2)
            text.push_back(static_cast<char16_t>(little ? (p[i] | (p[i + 1] << 8)) : ((p[i] << 8) | p[i + 1])));
    } else if (size >= 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF) {
        Utf8ToUtf16(data + 3, size - 3, false, &text);
    } else {
        Cp932ToUtf16(data, size, false, &text);
    }
    return text;
}

std::u16string Wide(const char* cp932) {
    std::u16string wide;
    Cp932ToUtf16(cp932, std::strlen(cp932), false, &wide);
    return wide;
}

}  // namespace

void IniFile::Load(const char* data, size_t size) { text_ = Decode(data, size); }

bool IniFile::Find(const std::u16string& section, const std::u16string& key, std::u16string* value) const {
    const std::u16string wantSection = FoldAscii(Trimmed(section));
    const std::u16string wantKey = FoldAscii(Trimmed(key));
    const char16_t* t = text_.data();
    const size_t size = text_.size();
    bool inSection = wantSection.empty();  // keys before any header form the nameless section
    bool sectionSeen = inSection;
    size_t lineStart = 0;
    while (lineStart < size) {
        size_t lineEnd = lineStart;
        while (lineEnd < size && t[lineEnd] != u'\n' && t[lineEnd] != u'\r') ++lineEnd;
        const size_t next = lineEnd + 1;
        const size_t first = lineStart;
        size_t b = lineStart, e = lineEnd;
        Trim(t, &b, &e);
        lineStart = next;
        if (b == e || t[first] == u';') continue;
        if (t[b] == u'[') {
            size_t close = e;
            while (close > b + 1 && t[close - 1] != u']') --close;
            if (close > b + 1) {
                if (sectionSeen) return false;  // only the first section of the name counts
                inSection = EqualFolded(t + b + 1, close - 1 - (b + 1), wantSection);
                sectionSeen = inSection;
                continue;
            }
            // "[" without "]": read as a key line, as Wine does.
        }
        if (!inSection) continue;
        size_t eq = b;
        while (eq < e && t[eq] != u'=') ++eq;
        size_t nameEnd = eq, valueStart = eq == e ? e : eq + 1;
        const bool hasValue = eq != e;
        size_t nameBegin = b, valueEnd = e;
        Trim(t, &nameBegin, &nameEnd);
        Trim(t, &valueStart, &valueEnd);
        if (!EqualFolded(t + nameBegin, nameEnd - nameBegin, wantKey)) continue;
        if (!hasValue) return false;  // the key is there without a value: the default
        *value = StripQuotes(std::u16string(t + valueStart, valueEnd - valueStart));
        return true;
    }
    return false;
}

uint32_t ProfileStringFromBytes(const char* data, size_t size, const char* section, const char* key,
                                const char* defaultValue, char* buffer, uint32_t bufferSize) {
    if (buffer == nullptr || bufferSize == 0) return 0;
    std::u16string value;
    bool found = false;
    if (data != nullptr && section != nullptr && key != nullptr) {
        IniFile file;
        file.Load(data, size);
        found = file.Find(Wide(section), Wide(key), &value);
    }
    if (!found) {
        value = Wide(defaultValue != nullptr ? defaultValue : "");
        while (!value.empty() && IsProfileSpace(value.back())) value.pop_back();
    }
    // The value is handed out as a C string: it ends at a NUL in the file.
    const size_t nul = value.find(u'\0');
    if (nul != std::u16string::npos) value.resize(nul);
    std::string ansi = Utf16ToCp932(value.data(), value.size());
    if (ansi.size() > bufferSize - 1) ansi.resize(bufferSize - 1);
    std::memcpy(buffer, ansi.data(), ansi.size());
    buffer[ansi.size()] = 0;
    return static_cast<uint32_t>(ansi.size());
}

}  // namespace posix

uint32_t ProfileString(const char* section, const char* key, const char* defaultValue, char* buffer,
                       uint32_t size, const char* fileName) {
    std::string bytes;
    bool present = false;
    if (fileName != nullptr) {
        // A bare file name lies in the Windows directory.
        std::string windowsName = fileName;
        if (windowsName.find_first_of("\\/:") == std::string::npos) windowsName = "C:\\windows\\" + windowsName;
        std::string host;
        present = posix::MapPath(windowsName.c_str(), &host) == posix::kMapFound &&
                  posix::ReadWholeFile(host, posix::kMaxProfileBytes, &bytes);
    }
    return posix::ProfileStringFromBytes(present ? bytes.data() : nullptr, bytes.size(), section, key,
                                         defaultValue, buffer, size);
}

}  // namespace qvp
