// MsgTransferCoding.h - base64 and quoted-printable, for bodies and for the
// B and Q forms of encoded words in headers.
#ifndef QV_MSGLIB_MSGTRANSFERCODING_H
#define QV_MSGLIB_MSGTRANSFERCODING_H

#include <string>
#include <string_view>

namespace msg {

// A body in base64: bytes outside the alphabet (line ends, blanks, junk) are
// skipped and the first '=' ends the data, as mail readers do. Never fails.
std::string DecodeBase64Body(std::string_view in);

// A body in quoted-printable: "=XX" is a byte, "=" before a line end (after
// optional blanks) is a soft break, any other "=" stays as it is.
std::string DecodeQuotedPrintableBody(std::string_view in);

// The text of a B encoded word: alphabet only, '=' padding only at the end.
// False on anything else, so that the word can stay as its literal text.
bool DecodeBase64Word(std::string_view in, std::string* out);

// The text of a Q encoded word: "_" is a space, "=XX" a byte; a "=" without
// two hexadecimal digits makes the word malformed (false).
bool DecodeQWord(std::string_view in, std::string* out);

}  // namespace msg

#endif  // QV_MSGLIB_MSGTRANSFERCODING_H
