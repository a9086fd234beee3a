// MsgParseRoot.cpp - one parsed message and its decoded texts.
#include "MsgParseRoot.h"

#include <algorithm>

#include "MsgCharset.h"
#include "MsgEncodedWords.h"
#include "MsgParams.h"

namespace msg {
namespace {

constexpr size_t kKeptBody = 1 << 20;

}  // namespace

void MsgParseRoot::Clear() noexcept {
    m_header.Clear();
    m_mime.Clear();
    m_text.clear();
}

void MsgParseRoot::Parse(const char* text, size_t size) {
    Clear();
    try {
        if (size > 0) m_text.assign(text, size);
        m_header.Parse(m_text);
        m_mime.Build(m_text, m_header);
    } catch (...) {
        Clear();
        throw;
    }
}

uint32_t MsgParseRoot::Declared(std::string_view value) const {
    // Only 8-bit text is read by it: most subjects need no look at Content-Type.
    const auto high = [](char c) { return static_cast<unsigned char>(c) >= 0x80; };
    if (std::none_of(value.begin(), value.end(), high)) return kCpGuess;
    std::string_view type;
    std::string charset;
    if (!m_header.Find(Field::kContentType, &type)) return kCpGuess;
    MsgParams params;
    params.Parse(UnfoldValue(type));
    return params.Get("charset", &charset) ? CodePageOfCharset(charset) : kCpGuess;
}

bool MsgParseRoot::Subject(std::string* out) const {
    std::string_view raw;
    if (!m_header.Find(Field::kSubject, &raw)) return false;
    const std::string value = UnfoldValue(raw);
    *out = WideToCp932(DecodeHeaderText(value, Declared(value)));
    return true;
}

bool MsgParseRoot::MessageId(std::string* out) const {
    std::string_view raw;
    if (!m_header.Find(Field::kMessageId, &raw)) return false;
    std::string room;
    const std::string_view value = UnfoldedView(raw, &room);
    // Such ASCII reads as itself in every guess and in CP932.
    if (IsPlainAscii(kCpGuess, value)) {
        out->assign(value);
        return true;
    }
    std::u16string wide;
    AppendWide(GuessCodePage(value, Declared(value)), value, &wide);
    *out = WideToCp932(wide);
    return true;
}

std::string_view MsgParseRoot::MainPartBody(size_t index) const {
    const MimeLeaf& leaf = m_mime.MainParts().at(index);
    m_body.Trim(kKeptBody);
    if (leaf.charset != m_charset) {
        const uint32_t codePage = CodePageOfCharset(leaf.charset);
        m_charset = leaf.charset;  // first, so that a throw leaves the pair as it was
        m_codePage = codePage;
    }
    return MimeStructure::DecodeBody(m_text, leaf, m_codePage, &m_body);
}

}  // namespace msg
