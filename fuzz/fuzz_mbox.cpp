// fuzz_mbox.cpp - the export's readers of message bytes and names over
// arbitrary bytes: the From line is one line, the mboxrd body reads back to
// the message, and a file name keeps the rules it promises in each style.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FileNames.h"
#include "Mbox.h"

namespace {

void Require(bool condition) {
    if (!condition) std::abort();
}

// What a reader of mboxrd gives back: one '>' less on each quoted From line.
std::string Unquote(const std::string& body) {
    std::string out;
    for (size_t pos = 0; pos < body.size();) {
        size_t end = body.find('\n', pos);
        end = end == std::string::npos ? body.size() : end + 1;
        std::string line = body.substr(pos, end - pos);
        size_t q = line.find_first_not_of('>');
        Require(line.compare(0, 5, "From ") != 0);  // no line may start a message
        if (q != 0 && q != std::string::npos && line.compare(q, 5, "From ") == 0) line.erase(0, 1);
        out += line;
        pos = end;
    }
    return out;
}

// The UTF-16 units of a name that is valid UTF-8 (no overlong forms); 0 for
// any other, whose length is not checked.
size_t Utf16Units(const std::string& s) {
    size_t units = 0;
    for (size_t i = 0; i < s.size();) {
        const unsigned char c = static_cast<unsigned char>(s[i]);
        const size_t n = c < 0x80 ? 1 : c >= 0xC2 && c < 0xE0 ? 2 : c >= 0xE0 && c < 0xF0 ? 3 : c >= 0xF0 && c < 0xF5 ? 4 : 0;
        if (n == 0 || i + n > s.size()) return 0;
        for (size_t k = 1; k < n; ++k) {
            if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80) return 0;
        }
        const unsigned char second = n > 1 ? static_cast<unsigned char>(s[i + 1]) : 0;
        if ((c == 0xE0 && second < 0xA0) || (c == 0xF0 && second < 0x90)) return 0;
        units += n == 4 ? 2 : 1;
        i += n;
    }
    return units;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* text = reinterpret_cast<const char*>(data);
    int64_t time = -1;
    const bool dated = tqnralm::MessageTime(text, size, &time);
    const std::string from = tqnralm::FromLine(text, size, dated ? time : -1);
    Require(from.compare(0, 5, "From ") == 0 && from.find('\n') == from.size() - 1);
    std::string value;
    if (tqnralm::HeaderValue(text, size, "Date", &value)) {
        Require(tqnralm::AsctimeUtc(value).size() == 24);
        // The quick reading of a common date gives what the general one gives.
        int64_t quick = 0, general = 0;
        tqnralm::QuickDates(false);
        const bool read = tqnralm::ParseDate(value, &general);
        tqnralm::QuickDates(true);
        Require(tqnralm::ParseDate(value, &quick) == read && (!read || quick == general));
    }

    std::string body;
    tqnralm::AppendMboxrd(text, size, body);
    Require(body.size() >= 1 && body.back() == '\n');
    std::string expected;
    for (size_t i = 0; i < size; ++i) {
        if (!(text[i] == '\r' && i + 1 < size && text[i + 1] == '\n')) expected.push_back(text[i]);
    }
    if (!expected.empty() && expected.back() != '\n') expected.push_back('\n');
    Require(Unquote(body.substr(0, body.size() - 1)) == expected);

    for (auto style : {tqnralm::NameStyle::kPlain, tqnralm::NameStyle::kThunderbird, tqnralm::NameStyle::kMaildir}) {
        const std::string name = tqnralm::SafeComponent(tqnralm::UnescapeName(std::string(text, size)), style);
        Require(!name.empty() && name.size() <= tqnralm::kMaxComponentBytes);
        Require(name.find_first_of("/\\:*?\"<>|") == std::string::npos);
        Require(name.back() != '.' && name.back() != ' ');
        if (style == tqnralm::NameStyle::kThunderbird) {
            Require(name.find_first_of("%#;") == std::string::npos && name[0] != '.' && name.back() != '~');
            Require(Utf16Units(name) <= tqnralm::kMaxThunderbirdUnits);
        }
        if (style == tqnralm::NameStyle::kMaildir) Require(name.find('.') == std::string::npos && name[0] != '~');
    }
    return 0;
}
