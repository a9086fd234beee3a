// MsgHeader.cpp - header block parsing: fields, folding, the end of the header.
#include "MsgHeader.h"

#include <algorithm>
#include <cstring>

#include "MsgText.h"

namespace msg {

namespace {

// A field name is printable ASCII without blanks or a colon; blanks before the
// colon are the obsolete form and are dropped. An mbox "From " line, which
// has a colon only in its time, is no field.
bool ValidFieldName(std::string_view name) {
    if (name.empty()) return false;
    for (char c : name) {
        unsigned char u = static_cast<unsigned char>(c);
        if (u <= 0x20 || u >= 0x7F || c == ':') return false;
    }
    return true;
}

}  // namespace

void MsgHeader::Parse(std::string_view text) {
    m_fields.clear();
    m_bodyOffset = text.size();
    const char* base = text.data();
    const size_t n = text.size();
    bool inField = false;
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
            if (inField) {
                Field& f = m_fields.back();
                f.value = std::string_view(f.value.data(),
                                           static_cast<size_t>(base + contentEnd - f.value.data()));
            }
        } else {
            std::string_view line(base + pos, contentEnd - pos);
            size_t colon = line.find(':');
            inField = false;
            if (colon != std::string_view::npos) {
                std::string_view name = line.substr(0, colon);
                while (!name.empty() && IsWsp(name.back())) name.remove_suffix(1);
                if (ValidFieldName(name)) {
                    m_fields.push_back({name, line.substr(colon + 1)});
                    inField = true;
                }
            }
        }
        pos = next;
    }
}

bool MsgHeader::Find(std::string_view name, std::string_view* raw) const {
    for (const Field& f : m_fields) {
        if (EqualsNoCase(f.name, name)) {
            *raw = f.value;
            return true;
        }
    }
    return false;
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
