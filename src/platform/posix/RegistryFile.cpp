// RegistryFile.cpp - the parser of Wine's registry text files.
//
// The format, as Wine's server writes it:
//   WINE REGISTRY Version 2            (line 1, exactly)
//   #arch=win64                        (options start with '#', comments ';')
//   [Software\\Foo\\Bar] 1700000000    (a key, then an optional time)
//   #time=1d9f0c2a3b4c5d6
//   "Name"="text"                      (REG_SZ; also str:"..")
//   @=str(2):"%SystemRoot%"            (default value, REG_EXPAND_SZ)
//   "Multi"=str(7):"a\0b\0"            (REG_MULTI_SZ)
//   "Count"=dword:0000002a
//   "Blob"=hex:01,02,\                 (a hex list goes on after a '\')
//     03
//   "Wide"=hex(2):41,00,00,00          (a string type written as bytes)
// Names and strings use C escapes, octal \0-\7 (up to 3 digits) and \x with
// up to 4 hex digits (one UTF-16 unit); other escaped characters stand for
// themselves. Raw bytes 0x80 and above are UTF-8.
#include "platform/posix/RegistryFile.h"

#include "platform/HexDigit.h"
#include "platform/posix/PosixText.h"

#include <cstring>

namespace qvp {
namespace posix {
namespace {

// The next line from `p`: its length without the line end (and a trailing
// CR), and where the line after it starts.
size_t NextLine(const char* p, const char* end, const char** next) {
    const char* eol = static_cast<const char*>(std::memchr(p, '\n', static_cast<size_t>(end - p)));
    if (eol == nullptr) eol = end;
    *next = eol < end ? eol + 1 : end;
    size_t length = static_cast<size_t>(eol - p);
    if (length > 0 && p[length - 1] == '\r') --length;
    return length;
}

bool StartsWith(const char* p, size_t length, const char* prefix) {
    const size_t n = std::strlen(prefix);
    return length >= n && std::memcmp(p, prefix, n) == 0;
}

void SkipBlanks(const char* p, size_t length, size_t* i) {
    while (*i < length && (p[*i] == ' ' || p[*i] == '\t')) ++*i;
}

// A list of hex bytes "01,02,..." that may go on over several lines, each
// ending in '\'. `*next` moves past the lines that were joined.
bool ParseHexList(const char* p, size_t length, const char* end, const char** next, std::string* out) {
    size_t i = 0;
    for (;;) {
        SkipBlanks(p, length, &i);
        if (i >= length) return true;
        if (p[i] == '\\') {
            if (*next >= end) return true;
            p = *next;
            length = NextLine(p, end, next);
            i = 0;
            continue;
        }
        const int high = HexDigit(p[i]);
        if (high < 0) return false;
        int value = high;
        ++i;
        if (i < length && HexDigit(p[i]) >= 0) value = value * 16 + HexDigit(p[i++]);
        out->push_back(static_cast<char>(value));
        SkipBlanks(p, length, &i);
        if (i < length && p[i] == ',') ++i;
    }
}

// "(N):" after "str" or "hex": the type number, or -1.
long ParseTypeSuffix(const char* p, size_t length, size_t* i) {
    if (*i < length && p[*i] == ':') {
        ++*i;
        return 0;  // no number: the caller's default type
    }
    if (*i >= length || p[*i] != '(') return -1;
    ++*i;
    long type = 0;
    size_t digits = 0;
    while (*i < length && HexDigit(p[*i]) >= 0 && digits < 8) {
        type = type * 16 + HexDigit(p[(*i)++]);
        ++digits;
    }
    if (digits == 0 || *i + 1 >= length || p[*i] != ')' || p[*i + 1] != ':') return -1;
    *i += 2;
    return type;
}

}  // namespace

size_t UnescapeRegistry(const char* p, size_t length, char delim, std::u16string* out) {
    out->clear();
    std::string raw;  // bytes not yet decoded from UTF-8
    std::u16string decoded;
    auto flush = [&]() {
        if (raw.empty()) return;
        Utf8ToUtf16(raw.data(), raw.size(), false, &decoded);
        out->append(decoded);
        raw.clear();
    };
    auto unit = [&](unsigned value) {
        flush();
        out->push_back(static_cast<char16_t>(value));
    };
    size_t i = 0;
    while (i < length) {
        const char c = p[i];
        if (c == delim) {
            flush();
            return i + 1;
        }
        if (c != '\\') {
            raw.push_back(c);
            ++i;
            continue;
        }
        if (i + 1 >= length) break;
        const char e = p[i + 1];
        i += 2;
        switch (e) {
            case 'a': unit(0x07); break;
            case 'b': unit(0x08); break;
            case 'e': unit(0x1B); break;
            case 'f': unit(0x0C); break;
            case 'n': unit(0x0A); break;
            case 'r': unit(0x0D); break;
            case 't': unit(0x09); break;
            case 'v': unit(0x0B); break;
            case 'x': {
                unsigned value = 0;
                for (int k = 0; k < 4 && i < length && HexDigit(p[i]) >= 0; ++k)
                    value = value * 16 + static_cast<unsigned>(HexDigit(p[i++]));
                unit(value);
                break;
            }
            case '0': case '1': case '2': case '3': case '4': case '5': case '6': case '7': {
                unsigned value = static_cast<unsigned>(e - '0');
                for (int k = 1; k < 3 && i < length && p[i] >= '0' && p[i] <= '7'; ++k)
                    value = value * 8 + static_cast<unsigned>(p[i++] - '0');
                unit(value);
                break;
            }
            default: raw.push_back(e); break;  // "\\", "\"", "\[", "\]", ...
        }
    }
    flush();
    return length + 1;
}

bool RegistryFile::Parse(const char* data, size_t size) {
    keys_.clear();
    index_.clear();
    current_ = -1;
    win64_ = false;
    const char* end = data + size;
    const char* next = nullptr;
    size_t length = NextLine(data, end, &next);
    static const char kVersion[] = "WINE REGISTRY Version 2";
    if (length != sizeof kVersion - 1 || std::memcmp(data, kVersion, length) != 0) return false;

    std::u16string path;
    for (const char* p = next; p < end; p = next) {
        length = NextLine(p, end, &next);
        if (length == 0) continue;
        if (p[0] == '[') {
            current_ = -1;
            if (UnescapeRegistry(p + 1, length - 1, ']', &path) > length - 1) continue;
            path = Fold(std::move(path));
            const auto found = index_.find(path);
            if (found != index_.end()) {
                current_ = static_cast<long>(found->second);
            } else {
                index_.emplace(path, keys_.size());
                current_ = static_cast<long>(keys_.size());
                keys_.push_back(Key{path, {}});
            }
        } else if (p[0] == '#') {
            if (keys_.empty() && StartsWith(p, length, "#arch="))
                win64_ = StartsWith(p, length, "#arch=win64");
        } else if ((p[0] == '"' || p[0] == '@') && current_ >= 0) {
            ParseValueLine(p, length, end, &next);
        }
    }
    return true;
}

void RegistryFile::ParseValueLine(const char* p, size_t length, const char* end, const char** next) {
    Value value{};
    size_t i = 1;
    if (p[0] == '"') {
        i = 1 + UnescapeRegistry(p + 1, length - 1, '"', &value.name);
        if (i > length) return;
        value.name = Fold(std::move(value.name));
    }
    SkipBlanks(p, length, &i);
    if (i >= length || p[i] != '=') return;
    ++i;
    SkipBlanks(p, length, &i);
    const char* data = p + i;
    const size_t rest = length - i;

    size_t j = 0;
    long type = -1;
    bool hex = false;
    if (rest > 0 && data[0] == '"') {
        type = 1;
    } else if (StartsWith(data, rest, "str")) {
        j = 3;
        type = ParseTypeSuffix(data, rest, &j);
        if (type == 0) type = 1;
        if (j >= rest || data[j] != '"') type = -1;
    } else if (StartsWith(data, rest, "dword:")) {
        uint32_t number = 0;
        size_t digits = 0;
        for (j = 6; j < rest && HexDigit(data[j]) >= 0 && digits < 8; ++j, ++digits)
            number = number * 16 + static_cast<uint32_t>(HexDigit(data[j]));
        if (digits == 0) return;
        for (int k = 0; k < 4; ++k) value.bytes.push_back(static_cast<char>((number >> (8 * k)) & 0xFF));
        type = 4;
    } else if (StartsWith(data, rest, "hex")) {
        j = 3;
        type = ParseTypeSuffix(data, rest, &j);
        if (type == 0) type = 3;
        hex = true;
    }
    if (type < 0) return;

    if (hex) {
        if (!ParseHexList(data + j, rest - j, end, next, &value.bytes)) return;
        if (type == 1 || type == 2 || type == 7) {
            // A string type written as bytes: UTF-16LE, the terminator included.
            value.isText = true;
            for (size_t k = 0; k + 1 < value.bytes.size(); k += 2)
                value.text.push_back(static_cast<char16_t>(static_cast<unsigned char>(value.bytes[k]) |
                                                           (static_cast<unsigned char>(value.bytes[k + 1]) << 8)));
            if (!value.text.empty() && value.text.back() == 0) value.text.pop_back();
            value.bytes.clear();
        }
    } else if (type != 4) {
        if (1 + UnescapeRegistry(data + j + 1, rest - j - 1, '"', &value.text) > rest - j) return;
        value.isText = true;
    }
    keys_[static_cast<size_t>(current_)].values.push_back(std::move(value));
}

bool RegistryFile::HasKey(const std::u16string& path) const {
    if (path.empty() || index_.count(path) != 0) return true;
    // Keys that only hold subkeys are not written: look for one below.
    for (const Key& key : keys_) {
        if (key.path.size() > path.size() && key.path[path.size()] == u'\\' &&
            key.path.compare(0, path.size(), path) == 0)
            return true;
    }
    return false;
}

const RegistryFile::Value* RegistryFile::Find(const std::u16string& path, const std::u16string& name) const {
    const auto found = index_.find(path);
    if (found == index_.end()) return nullptr;
    for (const Value& value : keys_[found->second].values)
        if (value.name == name) return &value;
    return nullptr;
}

}  // namespace posix
}  // namespace qvp
