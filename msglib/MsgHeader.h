// MsgHeader.h - the header block of a message or of a MIME part.
//
// The fields are kept as views into the text they were parsed from, so the
// text must outlive the header. Lookups walk the short field list; the first
// field of a name wins, as readers of mail have always done.
#ifndef QV_MSGLIB_MSGHEADER_H
#define QV_MSGLIB_MSGHEADER_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace msg {

class MsgHeader {
public:
    // Reads the fields at the start of text up to the first empty line; the
    // body follows that line. Text without an empty line is all header.
    void Parse(std::string_view text);
    // Forgets the fields; their table keeps its room for the next header.
    void Clear() noexcept {
        m_fields.clear();
        m_bodyOffset = 0;
    }

    // Where the body starts, as an offset into the parsed text (its size when
    // there is no body).
    size_t BodyOffset() const { return m_bodyOffset; }

    // The raw value of the first field of that name (any case), folding and
    // all, without the colon. False when no such field.
    bool Find(std::string_view name, std::string_view* raw) const;

private:
    struct Field {
        std::string_view name;
        std::string_view value;
    };
    std::vector<Field> m_fields;
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
