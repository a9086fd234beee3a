// Where an export writes (see Output.h).
#include "Output.h"

namespace tqnralm {
namespace {

// Bigger writes go straight to the file.
constexpr size_t kBufferSize = 1 << 20;

}  // namespace

bool Output::Fail(const std::string& error) {
    if (error_.empty()) error_ = error;
    return false;
}

bool Output::MakeDir(const std::string& relative) {
    if (dryRun_) return true;
    std::string error;
    return os::MakeDirectory(root_ + "/" + relative, &error) != os::Created::kFailed || Fail(error);
}

bool Output::OpenFile(const std::string& relative) {
    offset_ = 0;
    if (dryRun_) return true;
    std::string error;
    switch (file_.Create(root_ + "/" + relative, &error)) {
    case os::Created::kNew: return true;
    case os::Created::kExists: return Fail(error + " (exists; nothing is overwritten)");
    default: return Fail(error);
    }
}

bool Output::Flush() {
    std::string error;
    if (!buffer_.empty() && !file_.Write(buffer_.data(), buffer_.size(), &error)) return Fail(error);
    buffer_.clear();
    return true;
}

bool Output::Write(const char* data, size_t size) {
    offset_ += size;
    bytes_ += size;
    if (dryRun_) return true;
    if (buffer_.size() + size <= kBufferSize) {
        buffer_.append(data, size);
        return true;
    }
    if (!Flush()) return false;
    if (size < kBufferSize) {
        buffer_.append(data, size);
        return true;
    }
    std::string error;
    return file_.Write(data, size, &error) || Fail(error);
}

bool Output::CloseFile(bool sync) {
    if (dryRun_) return true;
    std::string error;
    bool ok = Flush() && (!sync || file_.Sync(&error) || Fail(error));
    if (!file_.Close(&error) && ok) return Fail(error);
    return ok;
}

}  // namespace tqnralm
