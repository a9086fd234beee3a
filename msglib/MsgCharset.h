// MsgCharset.h - the charset seam of the message library.
//
// Every conversion goes through the platform's converter with Windows code
// page numbers; this file only names charsets, guesses the charset of raw
// bytes, keeps ASCII off the converter and makes every text handed to the
// reader valid code page 932 (Windows' best-fit forms, else '?').
#ifndef QV_MSGLIB_MSGCHARSET_H
#define QV_MSGLIB_MSGCHARSET_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace msg {

// Not a code page: bytes whose charset is unknown or undeclared, decoded by
// GuessCodePage.
enum : uint32_t { kCpGuess = 0 };

// The code page of a MIME charset label (the WHATWG labels and mailers'
// aliases, in any case, '_' and '-' alike; an RFC 2231 "*language" suffix is
// ignored). kCpGuess for a label we do not know; the US-ASCII labels give
// qvp::kCpAscii, which the functions below treat as kCpGuess.
uint32_t CodePageOfCharset(std::string_view name);

// The code page to read raw bytes in: 8-bit header text outside encoded
// words, or a body whose charset is unknown. declared is the code page of the
// message's own top-level charset parameter (kCpGuess for none). In order:
//  1. declared, if it is ISO-2022-JP, Shift_JIS (932), EUC-JP or UTF-8 and
//     the bytes are valid in it (an escape byte is valid only in ISO-2022-JP);
//  2. ISO-2022-JP, if the bytes hold an escape byte;
//  3. UTF-8, if they are valid UTF-8 with at least one multi-byte sequence;
//  4. EUC-JP or Shift_JIS, whichever they are valid in; where both, EUC-JP
//     if its pairs of 0xA1-0xFE bytes outnumber Shift_JIS's lead bytes
//     0x81-0x9F, else Shift_JIS;
//  5. declared, if it is another charset that writes ASCII as ASCII (not
//     US-ASCII, which 8-bit mail never honours, nor UTF-16 or UTF-7);
//  6. windows-1252.
// Bytes with neither 8-bit bytes nor an escape read alike in all of those:
// UTF-8. Never kCpGuess. Each step looks at the bytes once; no conversion is
// made.
uint32_t GuessCodePage(std::string_view bytes, uint32_t declared = kCpGuess);

bool IsValidUtf8(std::string_view bytes);

// Whether bytes read as themselves in codePage (or kCpGuess) and in CP932:
// ASCII without the escape byte, in a code page that writes no other text
// in ASCII bytes.
bool IsPlainAscii(uint32_t codePage, std::string_view bytes);

// Appends the UTF-16 form of bytes in a code page (or kCpGuess). Invalid
// sequences do not fail: the converter's replacement stands in for them. A
// code page the system has no converter for reads as GuessCodePage says.
void AppendWide(uint32_t codePage, std::string_view bytes, std::u16string* out);

// UTF-16 to code page 932 that a strict reader takes: a character without a
// CP932 form becomes Windows' best-fit form (U+301C WAVE DASH as 0x8160, the
// no-break space as a space, ...), else '?'; the private-use characters of
// the bytes A0 and FD-FF become '?'.
std::string WideToCp932(std::u16string_view wide);

// Room that converted text is written into, kept from one text to the next.
// It grows without being filled first: the converter writes every byte it
// hands out.
class TextRoom {
public:
    // Room for n bytes; what it held before is lost.
    char* Reserve(size_t n);
    // Lets go of whatever is above limit bytes, so that one huge text's room
    // is not kept for the small ones after it.
    void Trim(size_t limit);

    std::string text;     // a conversion through UTF-16 is made here
    std::string decoded;  // a body with its transfer encoding undone

private:
    std::unique_ptr<char[]> m_data;
    size_t m_size = 0;
};

// Bytes in a code page (or kCpGuess) to CP932, as AppendWide and WideToCp932
// would give, but CP932 input is kept as it is (bodies keep their bytes).
// Without a copy: the bytes themselves where they need no change (plain
// ASCII, CP932), else a view into *room, valid until its next use.
std::string_view Cp932View(uint32_t codePage, std::string_view bytes, TextRoom* room);

}  // namespace msg

#endif  // QV_MSGLIB_MSGCHARSET_H
