// What every sink counts (see Sink.h).
#include "Sink.h"

namespace tqnralm {

bool Sink::OpenFile(const std::string& path) {
    openFile_ = path;
    offset_ = 0;
    return DoOpenFile(path);
}

bool Sink::ReopenFile(const std::string& path, uint64_t length) {
    openFile_ = path;
    offset_ = length;
    return DoReopenFile(path, length);
}

bool Sink::Write(const char* data, size_t size) {
    std::string& staging = DoStaging();
    const size_t from = staging.size();
    staging.append(data, size);
    return WriteStaged(from);
}

bool Sink::WriteStaged(size_t from) {
    const size_t size = DoStaging().size() - from;
    offset_ += size;
    bytes_ += size;
    return DoWriteStaged(from);
}

bool Sink::CloseFile(bool sync, int64_t time) {
    openFile_.clear();
    return DoCloseFile(sync, time);
}

bool Sink::WriteNewFile(const std::string& temporary, const std::string& final, const char* data, size_t size,
                        int64_t time) {
    bytes_ += size;
    return DoWriteNewFile(temporary, final, data, size, time);
}

bool Sink::WriteWholeFile(const std::string& path, const std::string& data) {
    bytes_ += data.size();
    return DoWriteWholeFile(path, data);
}

bool Sink::Fail(const std::string& error) {
    if (error_.empty()) error_ = error;
    return false;
}

}  // namespace tqnralm
