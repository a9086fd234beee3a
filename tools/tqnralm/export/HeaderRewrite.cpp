// The header rewriting of an export (see HeaderRewrite.h).
//
// The charset of raw bytes is the message library's to tell
// (msg::GuessCodePage, the message's own charset parameter first), and so is
// the decoding of encoded words; what is written here is the field grammar
// (text, address lists), the encoding as RFC 2047 B words and the folding:
// Debian has no C++ library that writes encoded words.
#include "HeaderRewrite.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "MsgCharset.h"
#include "MsgEncodedWords.h"
#include "MsgHeader.h"
#include "MsgParams.h"
#include "MsgText.h"
#include "Utf.h"

namespace tqnralm {
namespace {

constexpr size_t kFoldColumn = 78;
constexpr size_t kWordOverhead = 12;  // "=?UTF-8?B?" and "?="
constexpr size_t kMaxWordBytes = 45;  // 60 base64 characters: a word of 72, within RFC 2047's 75
// Windows code page numbers, as the message library names charsets.
constexpr uint32_t kShiftJis = 932;

bool IsRaw(char c) { return static_cast<unsigned char>(c) >= 0x80 || c == '\x1B'; }

// Many bytes at a time: every message's header passes through here.
bool HasRaw(std::string_view s) {
    constexpr uint64_t kOnes = 0x0101010101010101u, kHigh = 0x8080808080808080u, kEsc = 0x1B * kOnes;
    size_t i = 0;
#if defined(__SSE2__)
    const __m128i esc = _mm_set1_epi8(0x1B);
    for (; i + 16 <= s.size(); i += 16) {  // sixteen at a time where the CPU has SSE2
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s.data() + i));
        if (_mm_movemask_epi8(_mm_or_si128(block, _mm_cmpeq_epi8(block, esc))) != 0) return true;
    }
#endif
    for (; i + 8 <= s.size(); i += 8) {
        uint64_t w;
        std::memcpy(&w, s.data() + i, 8);
        const uint64_t esc = w ^ kEsc;  // a zero byte where w holds an escape
        if ((w & kHigh) != 0 || ((esc - kOnes) & ~esc & kHigh) != 0) return true;
    }
    return std::any_of(s.begin() + static_cast<std::ptrdiff_t>(i), s.end(), IsRaw);
}

// One line group of the header block: a field with its continuation lines,
// or a line that is neither (kept as it is).
struct Field {
    bool field = false;
    std::string_view name;   // trimmed of blanks before the colon
    std::string_view value;  // after the colon, folding included, up to the last line's end
    std::string_view bytes;  // everything, the last line end included
};

std::vector<Field> SplitHeader(std::string_view m) {
    std::vector<Field> fields;
    for (size_t pos = 0; pos < m.size();) {
        const size_t nl = m.find('\n', pos);
        const size_t next = nl == std::string_view::npos ? m.size() : nl + 1;
        size_t end = nl == std::string_view::npos ? m.size() : nl;
        if (end > pos && m[end - 1] == '\r') --end;
        if (end == pos) break;  // the empty line that ends the header
        if (msg::IsWsp(m[pos]) && !fields.empty() && fields.back().field) {
            Field& f = fields.back();
            f.value = std::string_view(f.value.data(), static_cast<size_t>(m.data() + end - f.value.data()));
            f.bytes = std::string_view(f.bytes.data(), static_cast<size_t>(m.data() + next - f.bytes.data()));
        } else {
            Field f;
            f.bytes = m.substr(pos, next - pos);
            const std::string_view line = m.substr(pos, end - pos);
            const size_t colon = line.find(':');
            std::string_view name = line.substr(0, colon == std::string_view::npos ? 0 : colon);
            while (!name.empty() && msg::IsWsp(name.back())) name.remove_suffix(1);
            f.field = !name.empty() && std::none_of(name.begin(), name.end(), [](char c) {
                return static_cast<unsigned char>(c) <= 0x20 || static_cast<unsigned char>(c) >= 0x7F;
            });
            if (f.field) {
                f.name = name;
                f.value = line.substr(colon + 1);
            }
            fields.push_back(f);
        }
        pos = next;
    }
    return fields;
}

// The raw value of the first field of that name in the header block (up to
// its last line's end; the block ends at its empty line), without making a
// list of the fields: the subject of every message is looked up this way.
bool FindField(std::string_view header, std::string_view name, std::string_view* value) {
    const char first = msg::AsciiLower(name[0]);
    for (size_t pos = 0; pos < header.size() && header[pos] != '\n' && header.substr(pos, 2) != "\r\n";) {
        size_t next = header.find('\n', pos);
        next = next == std::string_view::npos ? header.size() : next + 1;
        const bool named = msg::AsciiLower(header[pos]) == first && msg::EqualsNoCase(header.substr(pos, name.size()), name);
        size_t colon = pos + name.size();
        while (named && colon < next && msg::IsWsp(header[colon])) ++colon;
        if (named && colon < next && header[colon] == ':') {
            while (next < header.size() && msg::IsWsp(header[next])) {  // continuation lines
                const size_t nl = header.find('\n', next);
                next = nl == std::string_view::npos ? header.size() : nl + 1;
            }
            size_t end = next;
            if (end > colon && header[end - 1] == '\n') --end;
            if (end > colon && header[end - 1] == '\r') --end;
            *value = header.substr(colon + 1, end - colon - 1);
            return true;
        }
        pos = next;
    }
    return false;
}

// The code page of the message's top-level charset parameter.
uint32_t DeclaredCodePage(std::string_view message) {
    std::string_view raw;
    if (!FindField(message, "Content-Type", &raw)) return msg::kCpGuess;
    msg::MsgParams params;
    params.Parse(msg::UnfoldValue(raw));
    std::string charset;
    return params.Get("charset", &charset) ? msg::CodePageOfCharset(charset) : msg::kCpGuess;
}

uint32_t Detect(std::string_view bytes, uint32_t declared) { return msg::GuessCodePage(bytes, declared); }

// Written in place: a unit takes three bytes at most, a surrogate pair four.
void AppendUtf8Of(std::u16string_view wide, std::string& out) {
    const size_t from = out.size();
    out.resize(from + wide.size() * 3);
    char* o = &out[from];
    const auto put = [&o](uint32_t byte) { *o++ = static_cast<char>(byte); };
    for (size_t i = 0; i < wide.size(); ++i) {
        uint32_t u = wide[i];
        if (u < 0x80) {
            put(u);
            continue;
        }
        if (u >= 0xD800 && u < 0xDC00 && i + 1 < wide.size() && wide[i + 1] >= 0xDC00 && wide[i + 1] < 0xE000) {
            u = 0x10000 + ((u - 0xD800) << 10) + (wide[++i] - 0xDC00);
            put(0xF0 | (u >> 18));
            put(0x80 | ((u >> 12) & 0x3F));
        } else {
            if (u >= 0xD800 && u < 0xE000) u = 0xFFFD;
            if (u < 0x800) {
                put(0xC0 | (u >> 6));
                put(0x80 | (u & 0x3F));
                continue;
            }
            put(0xE0 | (u >> 12));
        }
        put(0x80 | ((u >> 6) & 0x3F));
        put(0x80 | (u & 0x3F));
    }
    out.resize(static_cast<size_t>(o - out.data()));
}

std::string Utf8Of(std::u16string_view wide) {
    std::string out;
    AppendUtf8Of(wide, out);
    return out;
}

// Header text, encoded words and raw bytes alike, as UTF-8.
std::string Decode(std::string_view text, uint32_t declared) {
    return Utf8Of(msg::DecodeHeaderText(text, declared));
}

// Past the character at v[i]: a Shift_JIS pair (whose second byte may look
// like '\\' or '@'), an ISO-2022-JP escape, or a two-byte run up to the next
// escape (its bytes may look like '"' or '('), else one byte.
size_t CharEnd(std::string_view v, size_t i, uint32_t cp) {
    const unsigned char b = static_cast<unsigned char>(v[i]);
    if (cp == kShiftJis && ((b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xFC)) && i + 1 < v.size()) return i + 2;
    if (b == 0x1B && i + 1 < v.size() && v[i + 1] == '$') return std::min(v.find('\x1B', i + 2), v.size());
    if (b == 0x1B) return std::min(i + 3, v.size());
    return i + 1;
}

// One piece of a rewritten field: the blanks before it (where a fold may
// go) and literal bytes, or UTF-8 text to write as encoded words.
struct Piece {
    std::string_view sep;
    std::string text;
    bool encode = false;
};

bool IsEncodedWord(std::string_view w) {
    return w.size() >= 8 && w.substr(0, 2) == "=?" && w.substr(w.size() - 2) == "?=" && !HasRaw(w);
}

// Unstructured text: each run of raw words becomes encoded words. Encoded
// words next to a raw run join it, so that the blanks between them (which
// a reader drops between two encoded words) are kept or dropped as before.
std::vector<Piece> TextPieces(std::string_view v, uint32_t declared) {
    struct Word {
        std::string_view sep, word;
        bool raw, encoded;
    };
    std::vector<Word> words;
    for (size_t i = 0; i < v.size();) {
        const size_t start = i;
        while (i < v.size() && msg::IsWsp(v[i])) ++i;
        const size_t word = i;
        while (i < v.size() && !msg::IsWsp(v[i])) ++i;
        const std::string_view w = v.substr(word, i - word);
        words.push_back({v.substr(start, word - start), w, HasRaw(w), IsEncodedWord(w)});
    }
    std::vector<Piece> pieces;
    for (size_t i = 0; i < words.size();) {
        size_t j = i;
        bool raw = false;
        while (j < words.size() && (words[j].raw || words[j].encoded)) raw |= words[j++].raw;
        if (!raw) {
            j = std::max(j, i + 1);
            for (; i < j; ++i) pieces.push_back({words[i].sep, std::string(words[i].word), false});
            continue;
        }
        const char* begin = words[i].word.data();
        const char* end = words[j - 1].word.data() + words[j - 1].word.size();
        pieces.push_back({words[i].sep, Decode(std::string_view(begin, static_cast<size_t>(end - begin)), declared), true});
        i = j;
    }
    return pieces;
}

enum class Lex { kSpace, kComment, kQuoted, kAngle, kSpecial, kAtom };

struct Lexeme {
    Lex kind;
    std::string_view text;
    bool raw;
};

// Past the end of the comment (nested), quoted string or angle address that
// starts at v[i]; the value's end when it is never closed.
size_t Delimited(std::string_view v, size_t i, uint32_t cp) {
    const char open = v[i], close = open == '(' ? ')' : open == '<' ? '>' : '"';
    int depth = 1;
    for (++i; i < v.size();) {
        const char c = v[i];
        if (c == '\\' && open != '<') {
            i = i + 1 < v.size() ? CharEnd(v, i + 1, cp) : v.size();
            continue;
        }
        if (c == close && --depth == 0) return i + 1;
        if (c == '(' && open == '(') ++depth;
        i = CharEnd(v, i, cp);
    }
    return i;
}

std::vector<Lexeme> LexAddresses(std::string_view v, uint32_t cp) {
    std::vector<Lexeme> out;
    for (size_t i = 0; i < v.size();) {
        const size_t start = i;
        const char c = v[i];
        Lex kind = Lex::kAtom;
        if (msg::IsWsp(c)) {
            kind = Lex::kSpace;
            while (i < v.size() && msg::IsWsp(v[i])) ++i;
        } else if (c == '(' || c == '"' || c == '<') {
            kind = c == '(' ? Lex::kComment : c == '"' ? Lex::kQuoted : Lex::kAngle;
            i = Delimited(v, i, cp);
        } else if (c == ',' || c == ':' || c == ';') {
            kind = Lex::kSpecial;
            ++i;
        } else {  // at least one byte: a stray ')' or '>' is an atom of its own
            do {
                i = CharEnd(v, i, cp);
            } while (i < v.size() && !msg::IsWsp(v[i]) && std::string_view("()<>\",:;").find(v[i]) == std::string_view::npos);
        }
        out.push_back({kind, v.substr(start, i - start), HasRaw(v.substr(start, i - start))});
    }
    return out;
}

// The inside of a quoted string or comment, its quoted pairs undone.
std::string Inner(std::string_view text, char close, uint32_t cp) {
    text.remove_prefix(1);
    if (!text.empty() && text.back() == close) text.remove_suffix(1);
    std::string out;
    for (size_t i = 0; i < text.size();) {
        if (text[i] == '\\' && i + 1 < text.size()) ++i;
        const size_t end = CharEnd(text, i, cp);
        out.append(text.substr(i, end - i));
        i = end;
    }
    return out;
}

// Which lexemes form a display name: the words of an address before its
// '<' (a mailbox) or ':' (a group).
std::vector<bool> PhraseWords(const std::vector<Lexeme>& lex) {
    std::vector<bool> phrase(lex.size(), false);
    size_t start = 0;
    for (size_t i = 0; i < lex.size(); ++i) {
        const bool angle = lex[i].kind == Lex::kAngle, colon = lex[i].text == ":";
        if (angle || colon) {
            for (size_t k = start; k < i; ++k) {
                phrase[k] = lex[k].kind == Lex::kAtom || lex[k].kind == Lex::kQuoted;
            }
        }
        if (angle || lex[i].kind == Lex::kSpecial) start = i + 1;
    }
    return phrase;
}

// An address list: raw display names and comments become encoded words;
// addresses, and everything else, stay as they are.
std::vector<Piece> AddressPieces(std::string_view v, uint32_t declared) {
    const uint32_t cp = Detect(v, declared);
    const std::vector<Lexeme> lex = LexAddresses(v, cp);
    const std::vector<bool> phrase = PhraseWords(lex);
    std::vector<Piece> pieces;
    std::string_view sep;
    for (size_t i = 0; i < lex.size();) {
        const Lexeme& l = lex[i];
        if (l.kind == Lex::kSpace) {
            sep = l.text;
            ++i;
            continue;
        }
        size_t last = i;  // a display name's last word
        bool raw = l.raw;
        for (size_t j = i; phrase[i] && j < lex.size() && (phrase[j] || lex[j].kind == Lex::kSpace); ++j) {
            if (phrase[j]) raw |= lex[j].raw, last = j;
        }
        if (l.kind == Lex::kComment && raw) {
            pieces.push_back({sep, "(", false});
            pieces.push_back({{}, Decode(Inner(l.text, ')', cp), declared), true});
            pieces.push_back({{}, ")", false});
        } else if (phrase[i] && raw) {
            std::string name;
            for (size_t k = i; k <= last; ++k) {
                name += lex[k].kind == Lex::kQuoted ? Inner(lex[k].text, '"', cp) : std::string(lex[k].text);
            }
            pieces.push_back({sep, Decode(name, declared), true});
        } else {  // the whole display name at once, so that a long one costs one pass
            for (size_t k = i; k <= last; ++k) {
                if (lex[k].kind == Lex::kSpace) {
                    sep = lex[k].text;
                    continue;
                }
                pieces.push_back({sep, std::string(lex[k].text), false});
                sep = {};
            }
        }
        sep = {};
        i = last + 1;
    }
    return pieces;
}

void AppendBase64(std::string_view bytes, std::string* out) {
    static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t n = static_cast<unsigned char>(bytes[i]) << 16;
        if (i + 1 < bytes.size()) n |= static_cast<unsigned char>(bytes[i + 1]) << 8;
        if (i + 2 < bytes.size()) n |= static_cast<unsigned char>(bytes[i + 2]);
        out->push_back(kDigits[(n >> 18) & 63]);
        out->push_back(kDigits[(n >> 12) & 63]);
        out->push_back(i + 1 < bytes.size() ? kDigits[(n >> 6) & 63] : '=');
        out->push_back(i + 2 < bytes.size() ? kDigits[n & 63] : '=');
    }
}

// How many bytes of text from pos, in whole UTF-8 characters, make a word
// of at most `room` columns (0: not even one character).
size_t WordBytes(std::string_view text, size_t pos, size_t room) {
    if (room < kWordOverhead + 4) return 0;
    size_t end = std::min(text.size(), pos + std::min(kMaxWordBytes, 3 * ((room - kWordOverhead) / 4)));
    while (end > pos && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    return end - pos;
}

// Writes pieces after "Name:", folding before a blank where a line would
// pass 78 columns. A literal longer than a line stays whole.
class Folder {
public:
    Folder(std::string_view name, std::string_view eol) : out_(name), eol_(eol) { out_ += ':'; }

    void Literal(std::string_view sep, std::string_view text) {
        if (!sep.empty() && lineUsed_ && Column() + sep.size() + text.size() > kFoldColumn) Fold();
        out_.append(sep);
        out_.append(text);
        lineUsed_ = true;
    }

    void Encoded(std::string_view sep, std::string_view text) {
        for (size_t pos = 0; pos < text.size(); sep = " ") {
            // A text that one word holds is not split to fill a line: some
            // readers put a blank between two words of a display name.
            size_t take = WordBytes(text, pos, kFoldColumn - std::min(kFoldColumn, Column() + sep.size()));
            const size_t fresh = WordBytes(text, pos, kFoldColumn - sep.size()), rest = text.size() - pos;
            if (take < rest && !sep.empty() && lineUsed_ && (take == 0 || fresh == rest)) {
                Fold();
                take = fresh;
            }
            if (take == 0) take = WordBytes(text, pos, kWordOverhead + 4 * (kMaxWordBytes / 3));  // glued to "("
            out_.append(sep);
            out_ += "=?UTF-8?B?";
            AppendBase64(text.substr(pos, take), &out_);
            out_ += "?=";
            pos += take;
            lineUsed_ = true;
        }
    }

    std::string& text() { return out_; }

private:
    size_t Column() const { return out_.size() - lineStart_; }
    void Fold() {
        out_.append(eol_);
        lineStart_ = out_.size();
        lineUsed_ = false;
    }

    std::string out_;
    std::string_view eol_;
    size_t lineStart_ = 0;
    bool lineUsed_ = false;  // the line holds a piece: a fold before the next one leaves no empty line
};

enum class Kind { kText, kAddress, kStructured };

Kind KindOf(std::string_view name) {
    static const char* const kAddress[] = {
        "From", "To", "Cc", "Bcc", "Reply-To", "Sender", "Resent-From", "Resent-To", "Resent-Cc", "Resent-Bcc",
        "Resent-Sender", "Resent-Reply-To", "Disposition-Notification-To", "Return-Receipt-To", "Errors-To",
        "Mail-Followup-To", "Mail-Reply-To"};
    static const char* const kStructured[] = {
        "Message-ID", "In-Reply-To", "References", "Resent-Message-ID", "Date", "Resent-Date", "Received",
        "Return-Path", "Content-Type", "Content-Disposition", "Content-Transfer-Encoding", "Content-ID",
        "MIME-Version", "DKIM-Signature", "Authentication-Results"};
    for (const char* n : kAddress) {
        if (msg::EqualsNoCase(name, n)) return Kind::kAddress;
    }
    for (const char* n : kStructured) {
        if (msg::EqualsNoCase(name, n)) return Kind::kStructured;
    }
    return Kind::kText;
}

std::string RewriteField(const Field& f, uint32_t declared) {
    const size_t valueEnd = static_cast<size_t>(f.value.data() + f.value.size() - f.bytes.data());
    const std::string_view lineEnd = f.bytes.substr(valueEnd);
    const Kind kind = KindOf(f.name);
    if (kind == Kind::kStructured) {
        std::u16string wide;
        msg::AppendWide(Detect(f.value, declared), f.value, &wide);
        return std::string(f.bytes.substr(0, static_cast<size_t>(f.value.data() - f.bytes.data()))) + Utf8Of(wide) +
               std::string(lineEnd);
    }
    const std::string value = msg::UnfoldValue(f.value);
    const std::vector<Piece> pieces = kind == Kind::kAddress ? AddressPieces(value, declared) : TextPieces(value, declared);
    Folder folder(f.name, lineEnd.empty() ? std::string_view("\n") : lineEnd);
    for (size_t i = 0; i < pieces.size(); ++i) {
        const std::string_view sep = i == 0 ? std::string_view(" ") : pieces[i].sep;
        if (pieces[i].encode) folder.Encoded(sep, pieces[i].text);
        else folder.Literal(sep, pieces[i].text);
    }
    return folder.text() + std::string(lineEnd);
}

// Where the header block ends: at its empty line, else the message's end.
size_t HeaderEnd(std::string_view m) {
    for (size_t pos = 0;;) {
        if (m.substr(pos, 1) == "\n" || m.substr(pos, 2) == "\r\n") return pos;
        const size_t nl = m.find('\n', pos);
        if (nl == std::string_view::npos) return m.size();
        pos = nl + 1;
    }
}

}  // namespace

bool RewriteHeaders(std::string_view message, std::string* out) {
    const std::string_view header = message.substr(0, HeaderEnd(message));
    if (!HasRaw(header)) return false;
    const uint32_t declared = DeclaredCodePage(header);
    std::string text;
    text.reserve(message.size() + message.size() / 4);
    for (const Field& f : SplitHeader(header)) {
        if (f.field && HasRaw(f.bytes)) text += RewriteField(f, declared);
        else text.append(f.bytes);
    }
    if (text.size() == header.size() && message.compare(0, header.size(), text) == 0) return false;  // raw bytes in no field
    text.append(message.substr(header.size()));
    *out = std::move(text);
    return true;
}

bool DecodeSubject(std::string_view message, std::string* subject) {
    std::string_view raw;
    if (!FindField(message, "Subject", &raw)) return false;
    // A value of one line is unfolded by trimming it (msg::UnfoldValue).
    std::string unfolded;
    const std::string_view value =
        raw.find('\n') == std::string_view::npos ? msg::TrimSpace(raw) : (unfolded = msg::UnfoldValue(raw));
    // Encoded words name their charsets; only raw bytes need the message's.
    // ASCII without them reads as it is.
    const bool hasRaw = HasRaw(value);
    if (!hasRaw && value.find("=?") == std::string_view::npos) {
        subject->assign(value);
        return true;
    }
    subject->clear();  // its buffer kept from message to message
    AppendUtf8Of(msg::DecodeHeaderText(value, hasRaw ? DeclaredCodePage(message) : msg::kCpGuess), *subject);
    return true;
}

}  // namespace tqnralm
