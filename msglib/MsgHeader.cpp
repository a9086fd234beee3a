// MsgHeader.cpp - header block parsing: fields, folding, the end of the header.
#include "MsgHeader.h"

#include <algorithm>
#include <cstring>

#include "MsgText.h"

namespace msg {

namespace {

// The field a name stands for (the name without blanks before its colon),
// or -1. Names are told apart by their length first.
int FieldOf(std::string_view name) {
    switch (name.size()) {
        case 7: return EqualsNoCase(name, "Subject") ? static_cast<int>(Field::kSubject) : -1;
        case 10:
            if (EqualsNoCase(name, "Message-ID")) return static_cast<int>(Field::kMessageId);
            return EqualsNoCase(name, "Content-ID") ? static_cast<int>(Field::kContentId) : -1;
        case 12: return EqualsNoCase(name, "Content-Type") ? static_cast<int>(Field::kContentType) : -1;
        case 19: return EqualsNoCase(name, "Content-Disposition") ? static_cast<int>(Field::kContentDisposition) : -1;
        case 25:
            return EqualsNoCase(name, "Content-Transfer-Encoding") ? static_cast<int>(Field::kContentTransferEncoding)
                                                                    : -1;
        default: return -1;
    }
}

}  // namespace

// A field name is printable ASCII without blanks or a colon; blanks before the
// colon are the obsolete form and are dropped. The names read are such names,
// so a line whose name is none of them (an mbox "From " line, which has a
// colon only in its time, a broken line) is passed over, its continuation
// lines with it.
void MsgHeader::Parse(std::string_view text) {
    Clear();
    m_bodyOffset = text.size();
    const char* base = text.data();
    const size_t n = text.size();
    std::string_view* extending = nullptr;  // the field that continuation lines join
    size_t pos = 0;
    while (pos < n) {
        const void* nl = std::memchr(base + pos, '\n', n - pos);
        size_t lineEnd = nl ? static_cast<size_t>(static_cast<const char*>(nl) - base) : n;
        size_t next = nl ? lineEnd + 1 : n;
        size_t contentEnd = lineEnd;
        if (contentEnd > pos && base[contentEnd - 1] == '\r') --contentEnd;
        if (contentEnd == pos) {  // the empty line ends the header
            m_bodyOffset = next;
            return;
        }
        if (IsWsp(base[pos])) {
            if (extending) {
                *extending = std::string_view(extending->data(), static_cast<size_t>(base + contentEnd - extending->data()));
            }
        } else {
            extending = nullptr;
            size_t colon = pos;
            while (colon < contentEnd && base[colon] != ':') ++colon;
            if (colon < contentEnd) {
                std::string_view name(base + pos, colon - pos);
                while (!name.empty() && IsWsp(name.back())) name.remove_suffix(1);
                const int field = FieldOf(name);
                if (field >= 0 && !m_values[field].data()) {
                    extending = &m_values[field];
                    *extending = std::string_view(base + colon + 1, contentEnd - colon - 1);
                }
            }
        }
        pos = next;
    }
}

std::string_view UnfoldedView(std::string_view raw, std::string* room) {
    // Everything outside the trimmed value is blanks and line ends, so a
    // trimmed value without a line end is already the unfolded one.
    const std::string_view trimmed = TrimSpace(raw);
    const auto lineEnd = [](char c) { return c == '\r' || c == '\n'; };
    if (std::none_of(trimmed.begin(), trimmed.end(), lineEnd)) return trimmed;
    room->clear();
    for (size_t i = 0; i < trimmed.size(); ++i) {
        char c = trimmed[i];
        if (c == '\n') continue;
        if (c == '\r' && i + 1 < trimmed.size() && trimmed[i + 1] == '\n') continue;
        room->push_back(c);
    }
    return TrimSpace(*room);
}

std::string UnfoldValue(std::string_view raw) {
    std::string room;
    return std::string(UnfoldedView(raw, &room));
}

}  // namespace msg
