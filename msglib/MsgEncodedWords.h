// MsgEncodedWords.h - RFC 2047 encoded words in unstructured header text.
#ifndef QV_MSGLIB_MSGENCODEDWORDS_H
#define QV_MSGLIB_MSGENCODEDWORDS_H

#include <string>
#include <string_view>

namespace msg {

// Decodes an unfolded header value into UTF-16: encoded words in the B and Q
// forms, blanks between two adjacent encoded words dropped, adjacent words of
// one charset joined before conversion (a character may be split between
// them). Text outside encoded words may be raw ISO-2022-JP, UTF-8 or
// Shift-JIS. A malformed encoded word stays as its literal text.
std::u16string DecodeHeaderText(std::string_view value);

}  // namespace msg

#endif  // QV_MSGLIB_MSGENCODEDWORDS_H
