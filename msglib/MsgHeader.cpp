// MsgHeader.cpp - header block parsing: fields, folding, the end of the header.
#include "MsgHeader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "MsgText.h"

namespace msg {

namespace {

// Whether a word of a name is the same word of a name in lower case (letters
// and '-'), in any case: a letter's byte (bit 0x40 set) may differ from it
// only in its case bit, any other byte not at all.
template <typename Word>
bool SameWord(const char* name, const char* lower) {
    Word x, y;
    std::memcpy(&x, name, sizeof x);
    std::memcpy(&y, lower, sizeof y);
    const Word caseBits = static_cast<Word>((y & static_cast<Word>(0x4040404040404040ull)) >> 1);
    return (x | caseBits) == y;
}

// EqualsNoCase for a name of 4 bytes or more and its lower-case form of the
// same size, a word at a time (the last word may overlap the one before).
bool IsName(std::string_view name, std::string_view lower) {
    const char* a = name.data();
    const char* b = lower.data();
    const size_t n = lower.size();
    if (n < 8) return SameWord<uint32_t>(a, b) && SameWord<uint32_t>(a + n - 4, b + n - 4);
    for (size_t i = 0; i + 8 < n; i += 8) {
        if (!SameWord<uint64_t>(a + i, b + i)) return false;
    }
    return SameWord<uint64_t>(a + n - 8, b + n - 8);
}

// The first colon in base[pos, end), or end: on little-endian machines
// eight bytes a step while there are eight (the lowest zero byte of the word
// xor colons is the first colon; a borrow marks only bytes above it).
size_t Colon(const char* base, size_t pos, size_t end) {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    constexpr uint64_t kOnes = 0x0101010101010101ull, kHigh = 0x8080808080808080ull;
    for (; pos + 8 <= end; pos += 8) {
        uint64_t word;
        std::memcpy(&word, base + pos, sizeof word);
        word ^= kOnes * ':';
        const uint64_t zero = (word - kOnes) & ~word & kHigh;
        if (zero != 0) return pos + static_cast<size_t>(__builtin_ctzll(zero) / 8);
    }
#endif
    while (pos < end && base[pos] != ':') ++pos;
    return pos;
}

// The field a name stands for (the name without blanks before its colon),
// or -1. Names are told apart by their length first.
int FieldOf(std::string_view name) {
    const auto is = [name](std::string_view lower, Field field) {
        return IsName(name, lower) ? static_cast<int>(field) : -1;
    };
    switch (name.size()) {
        case 7: return is("subject", Field::kSubject);
        case 10:
            return IsName(name, "message-id") ? static_cast<int>(Field::kMessageId)
                                              : is("content-id", Field::kContentId);
        case 12: return is("content-type", Field::kContentType);
        case 19: return is("content-disposition", Field::kContentDisposition);
        case 25: return is("content-transfer-encoding", Field::kContentTransferEncoding);
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
                const size_t size = static_cast<size_t>(base + contentEnd - extending->data());
                *extending = std::string_view(extending->data(), size);
            }
        } else {
            extending = nullptr;
            const size_t colon = Colon(base, pos, contentEnd);
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
