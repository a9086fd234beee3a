// fuzz_mbox.cpp - the export's readers of message bytes and names over
// arbitrary bytes: the From line is one line, the mboxrd body reads back to
// the message, and a file name keeps the rules it promises in each style.
#include "FuzzCheck.h"

#include "FileNames.h"
#include "Mbox.h"

namespace {

using fuzzcheck::Check;

// What a reader of mboxrd gives back: one '>' less on each quoted From line.
std::string Unquote(const std::string& body) {
    std::string out;
    for (size_t pos = 0; pos < body.size();) {
        size_t end = body.find('\n', pos);
        end = end == std::string::npos ? body.size() : end + 1;
        std::string line = body.substr(pos, end - pos);
        size_t q = line.find_first_not_of('>');
        Check(line.compare(0, 5, "From ") != 0);  // no line may start a message
        if (q != 0 && q != std::string::npos && line.compare(q, 5, "From ") == 0) line.erase(0, 1);
        out += line;
        pos = end;
    }
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* text = reinterpret_cast<const char*>(data);
    int64_t time = -1;
    const bool dated = tqnralm::MessageTime(text, size, &time);
    const std::string from = tqnralm::FromLine(text, size, dated ? time : -1);
    Check(from.compare(0, 5, "From ") == 0 && from.find('\n') == from.size() - 1);
    std::string value;
    if (tqnralm::HeaderValue(text, size, "Date", &value)) {
        Check(tqnralm::AsctimeUtc(value).size() == 24);
        // The quick reading of a common date gives what the general one gives.
        int64_t quick = 0, general = 0;
        tqnralm::QuickDates(false);
        const bool read = tqnralm::ParseDate(value, &general);
        tqnralm::QuickDates(true);
        Check(tqnralm::ParseDate(value, &quick) == read && (!read || quick == general));
    }

    std::string body;
    tqnralm::AppendMboxrd(text, size, body);
    Check(body.size() >= 1 && body.back() == '\n');
    std::string expected;
    for (size_t i = 0; i < size; ++i) {
        if (!(text[i] == '\r' && i + 1 < size && text[i + 1] == '\n')) expected.push_back(text[i]);
    }
    if (!expected.empty() && expected.back() != '\n') expected.push_back('\n');
    Check(Unquote(body.substr(0, body.size() - 1)) == expected);

    for (auto style : {tqnralm::NameStyle::kPlain, tqnralm::NameStyle::kThunderbird, tqnralm::NameStyle::kMaildir}) {
        const std::string name = tqnralm::SafeComponent(tqnralm::UnescapeName(std::string(text, size)), style);
        Check(!name.empty() && name.size() <= tqnralm::kMaxComponentBytes);
        Check(name.find_first_of("/\\:*?\"<>|") == std::string::npos);
        Check(name.back() != '.' && name.back() != ' ');
        if (style == tqnralm::NameStyle::kThunderbird) {
            Check(name.find_first_of("%#;") == std::string::npos && name[0] != '.' && name.back() != '~');
            size_t units = 0;  // a name that is no UTF-8 is not measured
            if (fuzzcheck::Utf16Units(name, &units)) Check(units <= tqnralm::kMaxThunderbirdUnits);
        }
        if (style == tqnralm::NameStyle::kMaildir) Check(name.find('.') == std::string::npos && name[0] != '~');
    }
    return 0;
}
