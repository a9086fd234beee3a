// MsgParseRoot.h - what MT_Init hands out: one parsed message at a time.
//
// The root keeps its own copy of the text, since the caller's buffer may go
// before the next parse; the header and the structure are views into it.
// Texts are decoded on demand.
#ifndef QV_MSGLIB_MSGPARSEROOT_H
#define QV_MSGLIB_MSGPARSEROOT_H

#include <cstddef>
#include <string>

#include "MsgCharset.h"
#include "MsgHeader.h"
#include "MsgMime.h"

namespace msg {

class MsgParseRoot {
public:
    // Replaces the message held. On an exception the root is left empty.
    void Parse(const char* text, size_t size);
    // Forgets the message held.
    void Clear() noexcept;

    // CP932 subject, RFC 2047 words and raw 8-bit text decoded (the raw text
    // by GuessCodePage with the top-level charset). False when the message
    // has no Subject field.
    bool Subject(std::string* out) const;
    // The Message-ID value, unfolded and trimmed, in CP932 (8-bit bytes read
    // as the subject's are). False when there is none.
    bool MessageId(std::string* out) const;

    const MimeStructure& Structure() const { return m_mime; }
    // Room for a text on its way out, kept so that handing out an id or a
    // subject longer than a short string does not allocate each time.
    std::string& OutRoom() const { return m_out; }
    // The part's body, valid until the next call or the next message. Its
    // room is kept for the next body, so that a folder's walk does not
    // allocate one per message.
    std::string_view MainPartBody(size_t index) const;

private:
    std::string m_text;
    mutable TextRoom m_body;  // MainPartBody's last answer, unless a view of m_text
    // The last body's charset and its code page: a folder's mail mostly
    // shares one, and the label's lookup is a search of many.
    mutable std::string m_charset;
    mutable uint32_t m_codePage = kCpGuess;
    mutable std::string m_out;
    MsgHeader m_header;
    MimeStructure m_mime;

    // The code page of the top-level charset parameter for reading a field
    // value, or kCpGuess (also for a value without 8-bit bytes).
    uint32_t Declared(std::string_view value) const;
};

}  // namespace msg

#endif  // QV_MSGLIB_MSGPARSEROOT_H
