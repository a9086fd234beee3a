// OUTDIR/manifest.json (see Manifest.h).
#include "Manifest.h"

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

}  // namespace

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

bool Manifest::Append(const Json& element) {
    // One element per line: a large list stays readable and greppable.
    bool ok = Emit(std::string(firstElement_ ? "\n    " : ",\n    ") + Encode(element, -1));
    firstElement_ = false;
    return ok;
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
