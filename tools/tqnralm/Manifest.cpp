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

bool Manifest::Open(const std::string& outDir, std::string* error) {
    final_ = outDir + "/" + kFileName;
    temporary_ = final_ + ".partial";
    if (os::Exists(final_)) {
        *error = "'" + final_ + "' exists (nothing is overwritten)";
        return false;
    }
    if (file_.Create(temporary_, error) != os::Created::kNew) return false;
    created_ = true;
    return Emit("{");
}

bool Manifest::Emit(const std::string& text) {
    buffer_ += text;
    if (buffer_.size() < (1 << 16)) return true;
    bool ok = file_.Write(buffer_.data(), buffer_.size(), &error_);
    buffer_.clear();
    return ok;
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

bool Manifest::Finish() {
    if (!Put("totals", totals_) || !Emit("\n}\n")) return false;
    if (!file_.Write(buffer_.data(), buffer_.size(), &error_) || !file_.Sync(&error_) || !file_.Close(&error_))
        return false;
    buffer_.clear();
    if (!os::RenameNew(temporary_, final_, &error_)) return false;
    created_ = false;
    return true;
}

void Manifest::Abandon() {
    std::string ignored;
    file_.Close(&ignored);
    if (created_) os::RemoveFile(temporary_);
    created_ = false;
}

}  // namespace tqnralm
