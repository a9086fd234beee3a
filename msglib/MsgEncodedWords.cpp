// MsgEncodedWords.cpp - RFC 2047 decoding of unstructured header text.
//
// Each try at an encoded word scans at most up to its third '?', and every
// "=?" holds a '?', so a value full of broken words is still read in linear
// time.
#include "MsgEncodedWords.h"

#include <cstdint>

#include "MsgCharset.h"
#include "MsgText.h"
#include "MsgTransferCoding.h"

namespace msg {

namespace {

struct EncodedWord {
    std::string_view charset;
    char encoding;
    std::string_view text;
    size_t end;  // just past the closing "?="
};

bool EndsToken(char c) {
    return c == '?' || static_cast<unsigned char>(c) <= 0x20 || c == 0x7F;
}

// "=?charset?B?text?=" at s[at]; s[at] and s[at+1] are "=?".
bool ParseEncodedWord(std::string_view s, size_t at, EncodedWord* w) {
    const size_t n = s.size();
    size_t p = at + 2;
    size_t q = p;
    while (q < n && !EndsToken(s[q])) ++q;
    if (q == p || q >= n || s[q] != '?') return false;
    w->charset = s.substr(p, q - p);
    p = q + 1;
    if (p + 1 >= n || s[p + 1] != '?') return false;
    w->encoding = AsciiLower(s[p]);
    if (w->encoding != 'b' && w->encoding != 'q') return false;
    p += 2;
    q = p;
    while (q < n && !EndsToken(s[q])) ++q;
    if (q + 1 >= n || s[q] != '?' || s[q + 1] != '=') return false;
    w->text = s.substr(p, q - p);
    w->end = q + 2;
    return true;
}

bool AllBlank(std::string_view s) {
    for (char c : s) {
        if (!IsWsp(c)) return false;
    }
    return true;
}

}  // namespace

std::u16string DecodeHeaderText(std::string_view s, uint32_t declared) {
    std::u16string out;
    out.reserve(s.size());
    std::string pending;  // decoded bytes of adjacent words of one charset
    uint32_t pendingCp = kCpGuess;
    bool havePending = false;
    auto flush = [&]() {
        if (havePending) {
            AppendWide(pendingCp, pending, &out);
            pending.clear();
            havePending = false;
        }
    };
    const auto appendRaw = [&](std::string_view raw) { AppendWide(GuessCodePage(raw, declared), raw, &out); };

    std::string decoded;
    size_t rawStart = 0;
    bool lastWasWord = false;
    size_t i = 0;
    while (i + 1 < s.size()) {
        if (s[i] != '=' || s[i + 1] != '?') {
            ++i;
            continue;
        }
        EncodedWord w;
        bool ok = ParseEncodedWord(s, i, &w);
        if (ok) {
            ok = w.encoding == 'b' ? DecodeBase64Word(w.text, &decoded)
                                   : DecodeQWord(w.text, &decoded);
        }
        if (!ok) {
            i += 2;  // the "=?" stays in the raw text
            continue;
        }
        std::string_view raw = s.substr(rawStart, i - rawStart);
        if (!(lastWasWord && AllBlank(raw))) {
            flush();
            appendRaw(raw);
        }
        uint32_t cp = CodePageOfCharset(w.charset);
        if (havePending && cp != pendingCp) flush();
        pending += decoded;
        pendingCp = cp;
        havePending = true;
        lastWasWord = true;
        i = w.end;
        rawStart = i;
    }
    flush();
    appendRaw(s.substr(rawStart));
    return out;
}

}  // namespace msg
