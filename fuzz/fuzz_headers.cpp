// fuzz_headers.cpp - the export's header rewriting over arbitrary bytes: the
// body (everything after the header's empty line) comes out byte for byte,
// and the decoded subject is valid UTF-8.
#include "FuzzCheck.h"

#include <string_view>

#include "HeaderRewrite.h"
#include "MsgCharset.h"

namespace {

// The body with its empty line, as the rewriting must keep it.
std::string_view Body(std::string_view m) {
    for (size_t pos = 0;;) {
        if (m.substr(pos, 1) == "\n" || m.substr(pos, 2) == "\r\n") return m.substr(pos);
        const size_t nl = m.find('\n', pos);
        if (nl == std::string_view::npos) return {};
        pos = nl + 1;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view message(reinterpret_cast<const char*>(data), size);
    std::string out;
    if (tqnralm::RewriteHeaders(message, &out)) {
        const std::string_view body = Body(message);
        fuzzcheck::Check(out.size() >= body.size() && out.compare(out.size() - body.size(), body.size(), body) == 0);
    }
    std::string subject;
    if (tqnralm::DecodeSubject(message, &subject)) fuzzcheck::Check(msg::IsValidUtf8(subject));
    return 0;
}
