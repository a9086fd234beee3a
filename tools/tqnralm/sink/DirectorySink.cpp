// The sink of an export into a folder (see DirectorySink.h).
#include "DirectorySink.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "KillPoint.h"

namespace tqnralm {
namespace {

// Bytes of the open file gathered before they are written out.
constexpr size_t kBufferSize = 1 << 20;

std::string Parent(const std::string& path) { return path.substr(0, path.rfind('/')); }

uint64_t SizeOf(const std::string& path) {
    std::error_code ec;
    const uintmax_t size = std::filesystem::file_size(std::filesystem::u8path(path), ec);
    return ec ? UINT64_MAX : size;
}

}  // namespace

bool SameFileContent(const std::string& a, const std::string& b) {
    if (SizeOf(a) != SizeOf(b) || SizeOf(a) == UINT64_MAX) return false;

    std::ifstream fa(std::filesystem::u8path(a), std::ios::binary), fb(std::filesystem::u8path(b), std::ios::binary);
    char ba[1 << 16], bb[1 << 16];
    while (fa && fb) {
        fa.read(ba, sizeof ba);
        fb.read(bb, sizeof bb);
        if (fa.gcount() != fb.gcount() || std::char_traits<char>::compare(ba, bb, fa.gcount()) != 0) return false;
    }
    return fa.eof() && fb.eof();
}

void DirectorySink::Touched(const std::string& relative) { dirtyDirs_.insert(Parent(root_ + "/" + relative)); }

bool DirectorySink::DoMakeDir(const std::string& relative) {
    std::string error;
    switch (os::MakeDirectory(root_ + "/" + relative, &error)) {
    case os::Created::kNew: Touched(relative); return true;
    case os::Created::kExists: return true;
    default: return Fail(error);
    }
}

bool DirectorySink::DoOpenFile(const std::string& relative) {
    onDisk_ = 0;
    std::string error;
    switch (file_.Create(root_ + "/" + relative, &error)) {
    case os::Created::kNew: Touched(relative); return true;
    case os::Created::kExists:
        // An export stopped between making the file and its next commit.
        if (resuming_ && SizeOf(root_ + "/" + relative) == 0) return DoReopenFile(relative, 0);
        return Fail(error + " (exists; nothing is overwritten)");
    default: return Fail(error);
    }
}

bool DirectorySink::DoReopenFile(const std::string& relative, uint64_t length) {
    onDisk_ = length;
    std::string error;
    return file_.OpenAt(root_ + "/" + relative, length, &error) || Fail(error);
}

bool DirectorySink::Flush() {
    buffer_.resize(whole_);  // a message that failed halfway through its making is not written
    if (buffer_.empty()) return true;
    const bool ok = WriteThrough(buffer_.data(), buffer_.size());
    buffer_.clear();
    whole_ = 0;
    if (buffer_.capacity() > 4 * kBufferSize) std::string().swap(buffer_);  // a huge message keeps no memory
    return ok;
}

bool DirectorySink::WriteThrough(const char* data, size_t size) {
    std::string error;
    if (file_.Write(data, size, &error)) {
        file_.StartWriteBack(onDisk_, size);
        onDisk_ += size;
        return true;
    }
    // A full disk: the file keeps its whole messages only.
    std::string ignored;
    file_.Truncate(onDisk_, &ignored);
    return Fail(error);
}

void DirectorySink::KillHalfway(const char* data, size_t size) {
    Flush();
    std::string ignored;
    file_.Write(data, size / 2, &ignored);
    os::KillSelf();
}

bool DirectorySink::DoWriteStaged(size_t from) {
    if (KillPointReached(KillPoint::kMidMessage)) {
        const std::string message = buffer_.substr(from);
        buffer_.resize(whole_ = from);
        KillHalfway(message.data(), message.size());
    }
    whole_ = buffer_.size();
    // The buffer goes out once it holds enough, whole messages only.
    if (buffer_.size() >= kBufferSize && !Flush()) return false;
    KillAt(KillPoint::kMessage);
    return true;
}

bool DirectorySink::DoCloseFile(bool sync, int64_t time) {
    std::string error;
    bool ok = Flush() && (!sync || file_.Sync(&error) || Fail(error)) &&
              (time < 0 || file_.SetTime(time, &error) || Fail(error));
    if (!file_.Close(&error) && ok) return Fail(error);
    return ok;
}

bool DirectorySink::DoWriteNewFile(const std::string& temporary, const std::string& final, const char* data,
                                   size_t size, int64_t time) {
    std::string error;
    os::NewFile file;
    if (!file.CreateOrEmpty(root_ + "/" + temporary, &error)) return Fail(error);
    if (KillPointReached(KillPoint::kMidMessage)) {
        file.Write(data, size / 2, &error);
        os::KillSelf();
    }
    if (!file.Write(data, size, &error) || (time >= 0 && !file.SetTime(time, &error)) || !file.Close(&error)) {
        file.Close(&error);
        os::RemoveFile(root_ + "/" + temporary);
        return Fail(error);
    }
    waiting_.emplace_back(temporary, final);
    KillAt(KillPoint::kMessage);
    return true;
}

bool DirectorySink::DoWriteWholeFile(const std::string& relative, const std::string& data) {
    const std::string temporary = relative + ".part";
    std::string error;
    os::NewFile file;
    if (!file.CreateOrEmpty(root_ + "/" + temporary, &error) || !file.Write(data.data(), data.size(), &error) ||
        !file.Sync(&error) || !file.Close(&error)) {
        file.Close(&error);
        os::RemoveFile(root_ + "/" + temporary);
        return Fail(error);
    }
    if (!Place(temporary, relative)) return false;
    KillAt(KillPoint::kFile);
    return true;
}

bool DirectorySink::Place(const std::string& temporary, const std::string& final) {
    const std::string from = root_ + "/" + temporary, to = root_ + "/" + final;
    std::string error;
    Touched(final);
    if (os::RenameNew(from, to, &error)) return true;
    // An earlier run that stopped renamed it before its journal counted it.
    if (resuming_ && SameFileContent(from, to)) {
        os::RemoveFile(from);
        return true;
    }
    os::RemoveFile(from);
    return Fail(error + " (exists; nothing is overwritten)");
}

bool DirectorySink::Commit() {
    std::string error;
    if (file_.IsOpen() && !Flush()) return false;
    if (file_.IsOpen() && !file_.Sync(&error)) return Fail(error);
    std::vector<std::string> paths;
    for (const auto& file : waiting_) paths.push_back(root_ + "/" + file.first);
    if (!os::SyncFiles(paths, &error)) return Fail(error);
    for (const auto& file : waiting_) {
        if (!Place(file.first, file.second)) return false;
    }
    waiting_.clear();
    for (const std::string& dir : dirtyDirs_) {
        if (!os::SyncDirectory(dir, &error)) return Fail(error);
    }
    dirtyDirs_.clear();
    return true;
}

bool DirectorySink::Checkpoint(const JournalState& state) {
    KillAt(KillPoint::kJournal);
    std::string error;
    return journal_.Save(state, &error) || Fail(error);
}

}  // namespace tqnralm
