// MsgTransferCoding.cpp - base64 and quoted-printable decoders.
#include "MsgTransferCoding.h"

#include "MsgText.h"

namespace msg {

namespace {

int Base64Value(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    if (c == '/') return 63;
    return -1;
}

// Collects 6-bit groups into bytes; a trailing group of fewer than 8 bits is
// padding and is dropped.
class Base64Sink {
public:
    explicit Base64Sink(std::string* out) : m_out(out) {}
    void Put(int v) {
        m_acc = (m_acc << 6) | static_cast<unsigned>(v);
        m_bits += 6;
        if (m_bits >= 8) {
            m_bits -= 8;
            m_out->push_back(static_cast<char>((m_acc >> m_bits) & 0xFF));
        }
    }

private:
    std::string* m_out;
    unsigned m_acc = 0;
    int m_bits = 0;
};

}  // namespace

std::string DecodeBase64Body(std::string_view in) {
    std::string out;
    out.reserve(in.size() / 4 * 3 + 3);
    Base64Sink sink(&out);
    for (char c : in) {
        if (c == '=') break;
        int v = Base64Value(c);
        if (v >= 0) sink.Put(v);
    }
    return out;
}

std::string DecodeQuotedPrintableBody(std::string_view in) {
    std::string out;
    out.reserve(in.size());
    const size_t n = in.size();
    size_t i = 0;
    while (i < n) {
        char c = in[i];
        if (c != '=') {
            out.push_back(c);
            ++i;
            continue;
        }
        if (i + 2 < n && HexDigit(in[i + 1]) >= 0 && HexDigit(in[i + 2]) >= 0) {
            out.push_back(static_cast<char>(HexDigit(in[i + 1]) * 16 + HexDigit(in[i + 2])));
            i += 3;
            continue;
        }
        // A soft line break: "=", optional blanks, then CR LF, LF or the end.
        size_t j = i + 1;
        while (j < n && IsWsp(in[j])) ++j;
        if (j == n) {
            i = n;
        } else if (in[j] == '\n') {
            i = j + 1;
        } else if (in[j] == '\r' && j + 1 < n && in[j + 1] == '\n') {
            i = j + 2;
        } else {
            out.push_back('=');
            ++i;
        }
    }
    return out;
}

bool DecodeBase64Word(std::string_view in, std::string* out) {
    out->clear();
    size_t end = in.size();
    size_t pad = 0;
    while (end > 0 && in[end - 1] == '=' && pad < 2) {
        --end;
        ++pad;
    }
    if (pad > 0 && (end + pad) % 4 != 0) return false;
    if (end % 4 == 1) return false;  // six bits cannot make a byte
    Base64Sink sink(out);
    for (size_t i = 0; i < end; ++i) {
        int v = Base64Value(in[i]);
        if (v < 0) return false;
        sink.Put(v);
    }
    return true;
}

bool DecodeQWord(std::string_view in, std::string* out) {
    out->clear();
    out->reserve(in.size());
    for (size_t i = 0; i < in.size(); ++i) {
        char c = in[i];
        if (c == '_') {
            out->push_back(' ');
        } else if (c == '=') {
            if (i + 2 >= in.size()) return false;
            int hi = HexDigit(in[i + 1]);
            int lo = HexDigit(in[i + 2]);
            if (hi < 0 || lo < 0) return false;
            out->push_back(static_cast<char>(hi * 16 + lo));
            i += 2;
        } else {
            out->push_back(c);
        }
    }
    return true;
}

}  // namespace msg
