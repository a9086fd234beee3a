// MsgEncodedWords.h - RFC 2047 encoded words in unstructured header text.
#ifndef QV_MSGLIB_MSGENCODEDWORDS_H
#define QV_MSGLIB_MSGENCODEDWORDS_H

#include <cstdint>
#include <string>
#include <string_view>

#include "MsgCharset.h"

namespace msg {

// Decodes an unfolded header value into UTF-16: encoded words in the B and Q
// forms, blanks between two adjacent encoded words dropped, adjacent words of
// one charset joined before conversion (a character may be split between
// them). Text outside encoded words is read in the code page GuessCodePage
// gives for it and declared (the message's top-level charset, or kCpGuess).
// A malformed encoded word stays as its literal text.
std::u16string DecodeHeaderText(std::string_view value, uint32_t declared = kCpGuess);

}  // namespace msg

#endif  // QV_MSGLIB_MSGENCODEDWORDS_H
