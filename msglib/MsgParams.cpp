// MsgParams.cpp - MIME parameter lists, RFC 2045 syntax with RFC 2231.
#include "MsgParams.h"

#include <algorithm>
#include <cstdint>

#include "MsgCharset.h"
#include "MsgEncodedWords.h"
#include "MsgText.h"

namespace msg {

namespace {

// Skips blanks, line ends and (possibly nested) comments.
size_t SkipCfws(std::string_view s, size_t p) {
    const size_t n = s.size();
    while (p < n) {
        char c = s[p];
        if (IsWsp(c) || c == '\r' || c == '\n') {
            ++p;
        } else if (c == '(') {
            int depth = 0;
            while (p < n) {
                char d = s[p];
                if (d == '\\') {
                    p += 2;
                    continue;
                }
                ++p;
                if (d == '(') {
                    ++depth;
                } else if (d == ')' && --depth == 0) {
                    break;
                }
            }
        } else {
            break;
        }
    }
    return std::min(p, n);
}

// A Shift-JIS lead byte: the byte after it is its second half, even when
// that is a backslash, which raw Japanese file names leave unescaped.
bool IsSjisLead(unsigned char c) { return (c >= 0x81 && c <= 0x9F) || (c >= 0xE0 && c <= 0xFC); }

std::string PercentDecode(std::string_view s) {
    std::string out;
    out.reserve(s.size());
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '%' && i + 2 < s.size() && HexDigit(s[i + 1]) >= 0 && HexDigit(s[i + 2]) >= 0) {
            out.push_back(static_cast<char>(HexDigit(s[i + 1]) * 16 + HexDigit(s[i + 2])));
            i += 2;
        } else {
            out.push_back(s[i]);
        }
    }
    return out;
}

// "charset'language'text" of the first extended section: the charset, and
// the text after the second quote. Without two quotes it is all text.
std::string_view SplitCharset(std::string_view v, std::string_view* charset) {
    size_t a = v.find('\'');
    if (a == std::string_view::npos) return v;
    size_t b = v.find('\'', a + 1);
    if (b == std::string_view::npos) return v;
    *charset = v.substr(0, a);
    return v.substr(b + 1);
}

// The part before the first ';' into *value, comments removed, trimmed and
// in lower case; where that part ends.
size_t LeadingValue(std::string_view s, std::string* value) {
    const size_t n = s.size();
    size_t p = 0;
    while (p < n && s[p] != ';' && s[p] != '(') ++p;
    if (p == n || s[p] == ';') {  // no comment: the value is one piece
        value->assign(TrimSpace(s.substr(0, p)));
        for (char& c : *value) c = AsciiLower(c);
        return p;
    }
    p = 0;
    while (p < n && s[p] != ';') {
        if (s[p] == '(') {
            p = SkipCfws(s, p);
            continue;
        }
        value->push_back(AsciiLower(s[p]));
        ++p;
    }
    *value = std::string(TrimSpace(*value));
    return p;
}

}  // namespace

void MsgParams::Parse(std::string_view value) {
    // The copy's room serves the next value, unless one huge value made it.
    constexpr size_t kKeptRoom = 1 << 16;
    if (m_text.capacity() > kKeptRoom && value.size() <= kKeptRoom) std::string().swap(m_text);
    m_text.assign(value.data(), value.size());
    m_value.clear();
    m_params.clear();
    const std::string_view s = value;
    const size_t n = s.size();
    size_t p = LeadingValue(s, &m_value);
    while (p < n) {
        p = SkipCfws(s, p);
        if (p >= n) break;
        if (s[p] == ';') {
            ++p;
            continue;
        }
        Param prm{p, 0, 0, 0};
        while (p < n && s[p] != '=' && s[p] != ';' && !IsWsp(s[p]) && s[p] != '(' && s[p] != '\r' &&
               s[p] != '\n') {
            ++p;
        }
        prm.nameSize = p - prm.nameBegin;
        p = SkipCfws(s, p);
        if (p >= n || s[p] != '=') {
            while (p < n && s[p] != ';') ++p;
            continue;
        }
        p = SkipCfws(s, p + 1);
        if (p < n && s[p] == '"') {
            p = Quoted(p + 1, n, &prm);
        } else {
            const size_t valueBegin = p;
            while (p < n && s[p] != ';') ++p;
            const std::string_view v = TrimSpace(s.substr(valueBegin, p - valueBegin));
            prm.valueBegin = v.empty() ? valueBegin : static_cast<size_t>(v.data() - s.data());
            prm.valueSize = v.size();
        }
        if (prm.nameSize > 0) m_params.push_back(prm);
    }
}

size_t MsgParams::Quoted(size_t p, size_t n, Param* param) {
    // A Shift-JIS lead byte takes the backslash after it as its second half;
    // another backslash quotes the byte after it. Most quoted strings hold no
    // quoted pair, and their value is their bytes.
    size_t end = p;
    bool pairs = false;
    for (; end < n && m_text[end] != '"'; ++end) {
        const unsigned char c = static_cast<unsigned char>(m_text[end]);
        if (end + 1 < n && ((IsSjisLead(c) && m_text[end + 1] == '\\') || c == '\\')) {
            pairs = pairs || c == '\\';
            ++end;
        }
    }
    param->valueBegin = p;
    param->valueSize = end - p;
    if (pairs) {
        param->valueBegin = m_text.size();
        for (size_t i = p; i < end; ++i) {
            const unsigned char c = static_cast<unsigned char>(m_text[i]);
            if (IsSjisLead(c) && i + 1 < end && m_text[i + 1] == '\\') {
                m_text.push_back(m_text[i]);
                m_text.push_back(m_text[++i]);
            } else {
                if (c == '\\' && i + 1 < end) ++i;
                m_text.push_back(m_text[i]);
            }
        }
        param->valueSize = m_text.size() - param->valueBegin;
    }
    return end < n ? end + 1 : end;  // past the closing quote
}

bool MsgParams::Get(std::string_view name, std::string_view* value) const {
    for (const Param& prm : m_params) {
        if (EqualsNoCase(Name(prm), name)) {
            *value = Value(prm);
            return true;
        }
    }
    return false;
}

bool MsgParams::Get(std::string_view name, std::string* value) const {
    std::string_view v;
    if (!Get(name, &v)) return false;
    value->assign(v.data(), v.size());
    return true;
}

bool MsgParams::GetText(std::string_view name, std::u16string* text) const {
    text->clear();
    struct Section {
        long number;
        bool extended;
        std::string_view value;
    };
    std::vector<Section> sections;
    std::string_view single;  // "name*"
    bool hasSingle = false;
    for (const Param& prm : m_params) {
        std::string_view pn = Name(prm);
        if (pn.size() <= name.size() || !EqualsNoCase(pn.substr(0, name.size()), name) ||
            pn[name.size()] != '*') {
            continue;
        }
        std::string_view rest = pn.substr(name.size() + 1);
        if (rest.empty()) {
            if (!hasSingle) single = Value(prm);
            hasSingle = true;
            continue;
        }
        bool extended = rest.back() == '*';
        if (extended) rest.remove_suffix(1);
        if (rest.empty() || rest.size() > 6) continue;
        long number = 0;
        bool digits = true;
        for (char c : rest) {
            if (c < '0' || c > '9') digits = false;
            number = number * 10 + (c - '0');
        }
        if (digits) sections.push_back({number, extended, Value(prm)});
    }

    if (hasSingle || !sections.empty()) {
        std::string_view charset;
        std::string bytes;
        if (hasSingle) {
            bytes = PercentDecode(SplitCharset(single, &charset));
        } else {
            std::stable_sort(sections.begin(), sections.end(),
                             [](const Section& a, const Section& b) { return a.number < b.number; });
            long expect = 0;
            for (const Section& sec : sections) {
                if (sec.number != expect) {
                    if (sec.number < expect) continue;  // a repeated section
                    break;                              // a gap ends the value
                }
                std::string_view v = sec.value;
                if (sec.extended) {
                    if (expect == 0) v = SplitCharset(v, &charset);
                    bytes += PercentDecode(v);
                } else {
                    bytes += v;
                }
                ++expect;
            }
            if (expect == 0) return false;
        }
        AppendWide(CodePageOfCharset(charset), bytes, text);
        return true;
    }

    std::string_view plain;
    if (!Get(name, &plain)) return false;
    *text = DecodeHeaderText(plain);
    return true;
}

}  // namespace msg
