// MsgMime.h - the MIME structure of one message: its main parts and its
// attachments.
//
// The walk keeps its own stack, so nesting in the input never nests calls;
// multiparts deeper than kMaxNesting are not opened. Each level scans its own
// body once for boundaries, so the work is at most kMaxNesting passes over
// the text. Only what the library hands out is kept: the first
// MT_MAX_MAIN_PARTS main parts, the first MT_ATTACH_SLOTS attachment names
// and the number of attachments.
#ifndef QV_MSGLIB_MSGMIME_H
#define QV_MSGLIB_MSGMIME_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "MsgHeader.h"
#include "MsgParams.h"

namespace msg {

class TextRoom;

struct MimeLeaf {
    size_t bodyBegin = 0;  // offsets of the raw body in the message text
    size_t bodyEnd = 0;
    int number = 0;  // 1 for the first leaf of the message
    int depth = 0;   // multiparts around the leaf
    std::string contentType;  // "type/subtype", lower case
    std::string charset;      // lower case, empty if none
    int encoding = 0;         // MT_ENC_...
    bool hasDisposition = false;
    std::string disposition;  // lower case
    bool hasContentId = false;
    std::string contentId;
};

class MimeStructure {
public:
    static constexpr int kMaxNesting = 32;

    // Walks the message, whose own header top already holds; text must
    // outlive the structure.
    void Build(std::string_view text, const MsgHeader& top);
    void Clear() noexcept;

    const std::vector<MimeLeaf>& MainParts() const { return m_main; }
    size_t AttachmentCount() const { return m_attachCount; }
    // CP932 file names of the first attachments, "" for one without a name.
    const std::vector<std::string>& AttachmentNames() const { return m_attachNames; }

    // The body of a part, transfer encoding undone and converted to CP932
    // from codePage, its charset's. A view of text where it needs no change,
    // else of *room.
    static std::string_view DecodeBody(std::string_view text, const MimeLeaf& leaf, uint32_t codePage,
                                       TextRoom* room);

private:
    struct Frame {
        size_t begin;
        size_t end;
        int depth;
        bool inDigest;  // in multipart/digest a part without a type is a message
    };

    void AddLeaf(const MsgHeader& header, MimeLeaf&& leaf);

    std::vector<MimeLeaf> m_main;
    std::vector<std::string> m_attachNames;
    size_t m_attachCount = 0;
    // The walk's working state, kept so that its room serves the next message.
    std::vector<Frame> m_stack;
    std::vector<std::pair<size_t, size_t>> m_children;
    MsgHeader m_partHeader;
    MsgParams m_type;
    MsgParams m_disposition;
    std::string m_room;  // a folded value, unfolded
};

// The body parts of a multipart body, as offsets into text, in order. The
// line end before each delimiter belongs to the delimiter; the preamble and
// the epilogue are not parts. A body cut short before its close delimiter
// still gives its last part.
void SplitMultipart(std::string_view text, size_t begin, size_t end, std::string_view boundary,
                    std::vector<std::pair<size_t, size_t>>* parts);

}  // namespace msg

#endif  // QV_MSGLIB_MSGMIME_H
