// MsgHeader.h - the header block of a message or of a MIME part.
//
// Only the fields the library reads are kept, as views into the text they
// were parsed from, so the text must outlive the header. Each is told by its
// name once, while the header is read; the first field of a name wins, as
// readers of mail have always done.
#ifndef QV_MSGLIB_MSGHEADER_H
#define QV_MSGLIB_MSGHEADER_H

#include <cstddef>
#include <string>
#include <string_view>

namespace msg {

// The fields the library reads.
enum class Field { kSubject, kMessageId, kContentType, kContentTransferEncoding, kContentDisposition, kContentId };

class MsgHeader {
public:
    // Reads the fields at the start of text up to the first empty line; the
    // body follows that line. Text without an empty line is all header.
    void Parse(std::string_view text);
    // Forgets the fields.
    void Clear() noexcept {
        for (std::string_view& v : m_values) v = std::string_view();
        m_bodyOffset = 0;
    }

    // Where the body starts, as an offset into the parsed text (its size when
    // there is no body).
    size_t BodyOffset() const { return m_bodyOffset; }

    // The raw value of the first field of that name (any case), folding and
    // all, without the colon. False when no such field.
    bool Find(Field field, std::string_view* raw) const {
        const std::string_view v = m_values[static_cast<int>(field)];
        if (!v.data()) return false;
        *raw = v;
        return true;
    }

private:
    static constexpr int kFields = 6;
    // A field's value, or no data for none (a field present with an empty
    // value points into the text).
    std::string_view m_values[kFields];
    size_t m_bodyOffset = 0;
};

// A field value unfolded (its line breaks removed, the blanks after them kept)
// and trimmed of blanks at both ends.
std::string UnfoldValue(std::string_view raw);
// The same as a view: into raw itself when the value is on one line (most
// are), else into *room, which it replaces.
std::string_view UnfoldedView(std::string_view raw, std::string* room);

}  // namespace msg

#endif  // QV_MSGLIB_MSGHEADER_H
