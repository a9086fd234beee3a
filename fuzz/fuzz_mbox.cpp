// fuzz_mbox.cpp - the export's readers of message bytes and names over
// arbitrary bytes: the From line is one line, the mboxrd body reads back to
// the message, and a file name keeps the rules it promises.
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* text = reinterpret_cast<const char*>(data);
    const std::string from = tqnralm::FromLine(text, size);
    Require(from.compare(0, 5, "From ") == 0 && from.find('\n') == from.size() - 1);
    std::string value;
    if (tqnralm::HeaderValue(text, size, "Date", &value)) Require(tqnralm::AsctimeUtc(value).size() == 24);

    std::string body;
    tqnralm::AppendMboxrd(text, size, body);
    Require(body.size() >= 1 && body.back() == '\n');
    std::string expected;
    for (size_t i = 0; i < size; ++i) {
        if (!(text[i] == '\r' && i + 1 < size && text[i + 1] == '\n')) expected.push_back(text[i]);
    }
    if (!expected.empty() && expected.back() != '\n') expected.push_back('\n');
    Require(Unquote(body.substr(0, body.size() - 1)) == expected);

    const std::string name = tqnralm::SafeComponent(std::string(text, size));
    Require(!name.empty() && name.size() <= tqnralm::kMaxComponentBytes);
    Require(name.find_first_of("/\\:*?\"<>|") == std::string::npos);
    Require(name.back() != '.' && name.back() != ' ');
    return 0;
}
