// OUTDIR/manifest.json (see Manifest.h).
#include "Manifest.h"

#include <cstdint>
#include <cstring>

namespace tqnralm {
namespace {

std::string Encode(const Json& value, int indent) {
    // Names and texts are UTF-8 already; anything else would still not stop the manifest.
    return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

// A value two levels in (a member of the top object): its later lines indented by two.
std::string Nested(const Json& value) {
    std::string text = Encode(value, 2), out;
    for (char c : text) {
        out.push_back(c);
        if (c == '\n') out += "  ";
    }
    return out;
}

// Past the well-formed UTF-8 sequence that starts at s[i] (a byte of 0x80 or
// more), or i when it is ill-formed: the ranges of Unicode's table 3-7,
// which nlohmann-json's decoder takes and no others.
size_t Utf8End(std::string_view s, size_t i) {
    const unsigned char b = static_cast<unsigned char>(s[i]);
    size_t more = 0;
    unsigned char low = 0x80, high = 0xBF;  // of the second byte
    if (b >= 0xC2 && b <= 0xDF) {
        more = 1;
    } else if (b >= 0xE0 && b <= 0xEF) {
        more = 2;
        low = b == 0xE0 ? 0xA0 : 0x80;
        high = b == 0xED ? 0x9F : 0xBF;
    } else if (b >= 0xF0 && b <= 0xF4) {
        more = 3;
        low = b == 0xF0 ? 0x90 : 0x80;
        high = b == 0xF4 ? 0x8F : 0xBF;
    } else {
        return i;
    }
    if (s.size() - i <= more) return i;
    for (size_t k = 1; k <= more; ++k) {
        const unsigned char c = static_cast<unsigned char>(s[i + k]);
        if (c < (k == 1 ? low : 0x80) || c > (k == 1 ? high : 0xBF)) return i;
    }
    return i + more + 1;
}

// The escape nlohmann-json writes for a byte below 0x20, '"' or '\\'.
void AppendEscape(std::string* out, unsigned char c) {
    static const char kShort[] = "btn\0fr";  // 0x08 to 0x0D; 0x0B has none
    out->push_back('\\');
    if (c == '"' || c == '\\') {
        out->push_back(static_cast<char>(c));
    } else if (c >= 0x08 && c <= 0x0D && c != 0x0B) {
        out->push_back(kShort[c - 0x08]);
    } else {
        static const char kHex[] = "0123456789abcdef";
        out->append("u00");
        out->push_back(kHex[c >> 4]);
        out->push_back(kHex[c & 0xF]);
    }
}

// Past the bytes from `i` on, eight at a time, that JSON takes as they are
// (printable ASCII but '"' and '\\'): most of a manifest's text.
// `high` is 0 where bytes of 0x80 or more are known to be well-formed
// UTF-8, which JSON takes as it is.
size_t PlainEnd(std::string_view text, size_t i, uint64_t high = 0x8080808080808080u) {
    constexpr uint64_t kOnes = 0x0101010101010101u, kHigh = 0x8080808080808080u;
    const auto hasZero = [](uint64_t v) { return ((v - kOnes) & ~v & kHigh) != 0; };
    for (; i + 8 <= text.size(); i += 8) {
        uint64_t w;
        std::memcpy(&w, text.data() + i, 8);
        // A byte of 0x80 or more, below 0x20, a '"' or a '\\' ends the run.
        if ((w & high) != 0 || (((w - 0x20 * kOnes) & ~w & kHigh) != 0) || hasZero(w ^ ('"' * kOnes)) ||
            hasZero(w ^ ('\\' * kOnes)))
            break;
    }
    return i;
}

}  // namespace

void AppendJsonString(std::string* out, std::string_view text) {
    const size_t start = out->size();
    out->push_back('"');
    size_t copied = 0;  // text before this is in `out`
    for (size_t i = PlainEnd(text, 0); i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c >= 0x80) {
            const size_t end = Utf8End(text, i);
            if (end == i) {  // what replaces invalid bytes is nlohmann-json's to say
                out->resize(start);
                out->append(Encode(Json(std::string(text)), -1));
                return;
            }
            i = end;
        } else if (c < 0x20 || c == '"' || c == '\\') {
            out->append(text.data() + copied, i - copied);
            AppendEscape(out, c);
            copied = ++i;
        } else {
            i = PlainEnd(text, i + 1);
        }
    }
    out->append(text.data() + copied, text.size() - copied);
    out->push_back('"');
}

void AppendJsonUtf8(std::string* out, std::string_view text) {
    out->push_back('"');
    size_t copied = 0;  // text before this is in `out`
    for (size_t i = PlainEnd(text, 0, 0); i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c < 0x20 || c == '"' || c == '\\') {
            out->append(text.data() + copied, i - copied);
            AppendEscape(out, c);
            copied = ++i;
        } else {
            i = PlainEnd(text, i + 1, 0);
        }
    }
    out->append(text.data() + copied, text.size() - copied);
    out->push_back('"');
}

const char* const Manifest::kFileName = "manifest.json";

bool Manifest::Open(const std::string& outDir, std::string* error) { return Resume(outDir, 0, false, error); }

bool Manifest::Resume(const std::string& outDir, uint64_t length, bool listed, std::string* error) {
    final_ = outDir + "/" + kFileName;
    temporary_ = final_ + ".partial";
    if (os::Exists(final_)) {
        *error = "'" + final_ + "' exists (nothing is overwritten)";
        return false;
    }
    length_ = length;
    if (length == 0) return file_.CreateOrEmpty(temporary_, error) && Emit("{");
    firstMember_ = false;
    firstElement_ = !listed;
    return file_.OpenAt(temporary_, length, error);
}

bool Manifest::Emit(const std::string& text) {
    buffer_ += text;
    if (buffer_.size() < (1 << 16)) return true;
    return Commit(nullptr);
}

bool Manifest::Key(const std::string& key) {
    bool ok = Emit(std::string(firstMember_ ? "\n  " : ",\n  ") + Encode(Json(key), -1) + ": ");
    firstMember_ = false;
    return ok;
}

bool Manifest::Put(const std::string& key, const Json& value) { return Key(key) && Emit(Nested(value)); }

bool Manifest::BeginArray(const std::string& key) {
    firstElement_ = true;
    return Key(key) && Emit("[");
}

bool Manifest::Append(const Json& element) { return AppendEncoded(Encode(element, -1)); }

bool Manifest::AppendEncoded(std::string_view element) {
    // One element per line: a large list stays readable and greppable.
    buffer_ += firstElement_ ? "\n    " : ",\n    ";
    buffer_ += element;
    firstElement_ = false;
    return buffer_.size() < (1 << 16) || Commit(nullptr);
}

bool Manifest::EndArray() { return Emit(firstElement_ ? "]" : "\n  ]"); }

bool Manifest::Commit(uint64_t* length) {
    if (!file_.Write(buffer_.data(), buffer_.size(), &error_)) return false;
    length_ += buffer_.size();
    buffer_.clear();
    if (length == nullptr) return true;
    *length = length_;
    return file_.Sync(&error_);
}

bool Manifest::Complete(uint64_t* length) {
    return Put("totals", totals_) && Emit("\n}\n") && Commit(length) && file_.Close(&error_);
}

bool Manifest::Publish() { return os::RenameNew(temporary_, final_, &error_); }

void Manifest::Abandon() {
    std::string ignored;
    file_.Close(&ignored);
}

}  // namespace tqnralm
