// The header block of an exported message made readable by every client.
//
// Old Japanese mail often carries raw Shift_JIS, EUC-JP, ISO-2022-JP or UTF-8
// bytes in its header fields instead of RFC 2047 words; a new client takes
// them for UTF-8 or ASCII and shows (and indexes) mojibake. The export
// rewrites each such field as RFC 2047 UTF-8 words, folded at 78 columns;
// every other byte of the message, the body included, stays as it was.
#ifndef TQNRALM_TOOL_HEADERREWRITE_H
#define TQNRALM_TOOL_HEADERREWRITE_H

#include <string>
#include <string_view>

namespace tqnralm {

// True when a field of the message's header holds 8-bit bytes or escapes
// outside RFC 2047 words: *out is then the message with those fields
// rewritten. False (and *out untouched) when the message is fine as it is;
// an all-ASCII header costs one scan of its bytes.
//
// A text field (Subject, Comments, X-...) gets its raw runs encoded; an
// address field keeps its structure: display names and comments are
// encoded, addresses never change. Other structured fields (Message-ID,
// Received, Content-Type, ...) cannot hold encoded words: their raw bytes
// are given as UTF-8, as RFC 6532 allows.
bool RewriteHeaders(std::string_view message, std::string* out);

// The first Subject field, decoded to UTF-8 (encoded words and raw bytes
// alike). False when the message has no Subject field.
bool DecodeSubject(std::string_view message, std::string* subject);

}  // namespace tqnralm

#endif
