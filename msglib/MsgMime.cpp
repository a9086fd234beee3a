// MsgMime.cpp - the MIME walk: part headers, multipart bodies, leaves.
#include "MsgMime.h"

#include <cstring>
#include <utility>

#include "MsgCharset.h"
#include "MsgHeader.h"
#include "MsgParams.h"
#include "MsgText.h"
#include "MsgTransferCoding.h"
#include "sNqxMsgNet.h"

namespace msg {

namespace {

int EncodingCode(std::string_view raw) {
    const std::string_view name = TrimSpace(raw);
    if (name.empty() || EqualsNoCase(name, "7bit") || EqualsNoCase(name, "8bit") ||
        EqualsNoCase(name, "binary")) {
        return MT_ENC_NONE;
    }
    if (EqualsNoCase(name, "quoted-printable")) return MT_ENC_QP;
    if (EqualsNoCase(name, "base64")) return MT_ENC_BASE64;
    return MT_ENC_OTHER;
}

bool AtDelimiter(std::string_view line, std::string_view boundary, bool* close) {
    if (line.size() < boundary.size() + 2 || line[0] != '-' || line[1] != '-') return false;
    if (line.compare(2, boundary.size(), boundary) != 0) return false;
    std::string_view rest = line.substr(boundary.size() + 2);
    *close = rest.size() >= 2 && rest[0] == '-' && rest[1] == '-';
    if (*close) rest.remove_prefix(2);
    for (char c : rest) {
        if (!IsWsp(c)) return false;
    }
    return true;
}

}  // namespace

void SplitMultipart(std::string_view text, size_t begin, size_t end, std::string_view boundary,
                    std::vector<std::pair<size_t, size_t>>* parts) {
    parts->clear();
    const char* base = text.data();
    bool inPart = false;
    size_t partStart = 0;
    size_t pos = begin;
    while (pos < end) {
        const void* nl = std::memchr(base + pos, '\n', end - pos);
        size_t lineEnd = nl ? static_cast<size_t>(static_cast<const char*>(nl) - base) : end;
        size_t next = nl ? lineEnd + 1 : end;
        size_t contentEnd = lineEnd;
        if (contentEnd > pos && base[contentEnd - 1] == '\r') --contentEnd;
        bool close = false;
        if (AtDelimiter(std::string_view(base + pos, contentEnd - pos), boundary, &close)) {
            if (inPart) {
                size_t partEnd = pos;
                if (partEnd > partStart && base[partEnd - 1] == '\n') --partEnd;
                if (partEnd > partStart && base[partEnd - 1] == '\r') --partEnd;
                parts->emplace_back(partStart, partEnd);
            }
            if (close) return;
            inPart = true;
            partStart = next;
        }
        pos = next;
    }
    if (inPart) parts->emplace_back(partStart, end);
}

void MimeStructure::Clear() noexcept {
    m_main.clear();
    m_attachNames.clear();
    m_attachCount = 0;
    m_partHeader.Clear();  // its views are into the message that goes
}

void MimeStructure::Build(std::string_view text, const MsgHeader& top) {
    Clear();
    m_stack.clear();
    m_stack.push_back({0, text.size(), 0, false});
    int leafNumber = 0;
    for (bool first = true; !m_stack.empty(); first = false) {
        const Frame f = m_stack.back();
        m_stack.pop_back();
        // The message's own header is parsed already; a part's is parsed here.
        if (!first) m_partHeader.Parse(text.substr(f.begin, f.end - f.begin));
        const MsgHeader& header = first ? top : m_partHeader;
        const size_t bodyBegin = f.begin + header.BodyOffset();

        std::string_view raw;
        m_type.Parse(header.Find(Field::kContentType, &raw) ? UnfoldedView(raw, &m_room) : std::string_view());
        std::string contentType = m_type.Value();
        if (contentType.find('/') == std::string::npos || contentType.front() == '/' ||
            contentType.back() == '/') {
            contentType = f.inDigest ? "message/rfc822" : "text/plain";
        }

        std::string boundary;
        if (contentType.compare(0, 10, "multipart/") == 0 && m_type.Get("boundary", &boundary) &&
            !boundary.empty()) {
            if (f.depth < kMaxNesting) {
                SplitMultipart(text, bodyBegin, f.end, boundary, &m_children);
                bool digest = contentType == "multipart/digest";
                // Pushed last part first, so that the walk goes in the order of the text.
                for (size_t i = m_children.size(); i-- > 0;) {
                    m_stack.push_back({m_children[i].first, m_children[i].second, f.depth + 1, digest});
                }
            }
            continue;
        }
        MimeLeaf leaf;
        leaf.number = ++leafNumber;
        leaf.depth = f.depth;
        leaf.bodyBegin = bodyBegin;
        leaf.bodyEnd = f.end;
        leaf.contentType = std::move(contentType);
        AddLeaf(header, std::move(leaf));
    }
}

void MimeStructure::AddLeaf(const MsgHeader& header, MimeLeaf&& leaf) {
    std::string_view raw;
    if (m_type.Get("charset", &leaf.charset)) {
        for (char& c : leaf.charset) c = AsciiLower(c);
    }
    leaf.encoding = EncodingCode(header.Find(Field::kContentTransferEncoding, &raw)
                                     ? UnfoldedView(raw, &m_room)
                                     : std::string_view());
    leaf.hasDisposition = header.Find(Field::kContentDisposition, &raw);
    m_disposition.Parse(leaf.hasDisposition ? UnfoldedView(raw, &m_room) : std::string_view());
    leaf.disposition = m_disposition.Value();
    leaf.hasContentId = header.Find(Field::kContentId, &raw);
    if (leaf.hasContentId) leaf.contentId = UnfoldedView(raw, &m_room);

    std::u16string fileName;
    bool named = m_disposition.GetText("filename", &fileName) || m_type.GetText("name", &fileName);
    bool isText = leaf.contentType.compare(0, 5, "text/") == 0;
    if (isText && !named && leaf.disposition != "attachment") {
        if (m_main.size() < MT_MAX_MAIN_PARTS) m_main.push_back(std::move(leaf));
        return;
    }
    ++m_attachCount;
    if (m_attachNames.size() < MT_ATTACH_SLOTS) m_attachNames.push_back(WideToCp932(fileName));
}

std::string_view MimeStructure::DecodeBody(std::string_view text, const MimeLeaf& leaf, uint32_t codePage,
                                           TextRoom* room) {
    std::string_view raw = text.substr(leaf.bodyBegin, leaf.bodyEnd - leaf.bodyBegin);
    switch (leaf.encoding) {
        case MT_ENC_BASE64: room->decoded = DecodeBase64Body(raw); break;
        case MT_ENC_QP: room->decoded = DecodeQuotedPrintableBody(raw); break;
        default: return Cp932View(codePage, raw, room);  // most mail: converted from the message's own bytes
    }
    return Cp932View(codePage, room->decoded, room);
}

}  // namespace msg
