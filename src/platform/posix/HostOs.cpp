// The host's seam to a POSIX system (see HostOs.h; win32/HostOs.cpp is the Windows
// one). Names
// are bytes here, UTF-8 as the tool keeps them.
#include "platform/HostOs.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/DriveHives.h"
#include "platform/posix/HostPath.h"
#include "platform/posix/Machine.h"

namespace fs = std::filesystem;

namespace tqnralm {
namespace os {
namespace {

fs::path PathOf(const std::string& utf8) { return fs::u8path(utf8); }

std::string Describe(const std::string& path, const std::string& reason) { return "'" + path + "': " + reason; }

std::string Errno() { return std::strerror(errno); }

}  // namespace

std::vector<std::string> ProgramArguments(int argc, char** argv) { return std::vector<std::string>(argv, argv + argc); }

void UseBinaryStreams() {}

void WriteText(std::FILE* stream, const std::string& utf8) { std::fwrite(utf8.data(), 1, utf8.size(), stream); }

std::string DisplayPath(const std::string& path) { return path; }

bool StderrIsTerminal() { return isatty(STDERR_FILENO) != 0; }

char MaildirInfoSeparator() { return ':'; }

Created NewFile::Create(const std::string& path, std::string* error) {
    path_ = path;
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0) {
        Created result = errno == EEXIST ? Created::kExists : Created::kFailed;
        *error = Describe(path, Errno());
        return result;
    }
    handle_ = fd;
    return Created::kNew;
}

bool NewFile::Write(const char* data, size_t size, std::string* error) {
    while (size > 0) {
        ssize_t done = write(static_cast<int>(handle_), data, size);
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) {
            if (done == 0) errno = ENOSPC;
            *error = Describe(path_, Errno());
            return false;
        }
        data += done;
        size -= static_cast<size_t>(done);
    }
    return true;
}

bool NewFile::Sync(std::string* error) {
    if (fsync(static_cast<int>(handle_)) == 0) return true;
    *error = Describe(path_, Errno());
    return false;
}

bool NewFile::SetTime(int64_t seconds, std::string* error) {
    struct timespec times[2];
    times[0].tv_sec = times[1].tv_sec = static_cast<time_t>(seconds);
    times[0].tv_nsec = times[1].tv_nsec = 0;
    if (futimens(static_cast<int>(handle_), times) == 0) return true;
    *error = Describe(path_, Errno());
    return false;
}

bool NewFile::Close(std::string* error) {
    if (handle_ == -1) return true;
    int rc = close(static_cast<int>(handle_));
    handle_ = -1;
    if (rc != 0) *error = Describe(path_, Errno());
    return rc == 0;
}

NewFile::~NewFile() {
    if (handle_ != -1) close(static_cast<int>(handle_));
}

Created MakeDirectory(const std::string& path, std::string* error) {
    if (mkdir(path.c_str(), 0755) == 0) return Created::kNew;
    if (errno == EEXIST) {
        struct stat st;
        if (stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) return Created::kExists;
        *error = Describe(path, "a file of this name is in the way");
        return Created::kFailed;
    }
    *error = Describe(path, Errno());
    return Created::kFailed;
}

bool RenameNew(const std::string& from, const std::string& to, std::string* error) {
    // rename() would replace `to`; a hard link fails on an existing name.
    if (link(from.c_str(), to.c_str()) == 0) {
        unlink(from.c_str());
        return true;
    }
    if (errno == EEXIST) {
        *error = Describe(to, Errno());
        return false;
    }
    // File systems without hard links (FAT on a USB stick): test, then rename.
    struct stat st;
    if (lstat(to.c_str(), &st) == 0) {
        *error = Describe(to, "exists");
        return false;
    }
    if (rename(from.c_str(), to.c_str()) == 0) return true;
    *error = Describe(to, Errno());
    return false;
}

void RemoveFile(const std::string& path) { unlink(path.c_str()); }

std::string SourceDescription() {
    const std::string drive = qvp::posix::WindowsRoot();
    if (!drive.empty()) return "copied Windows drive " + AbsolutePath(drive);
    return "Wine prefix " + AbsolutePath(qvp::posix::PrefixRoot());
}

std::vector<StoreFolder> StoreFolders(const std::vector<std::string>& accountFolders) {
    // The prefix or the drive holds the whole Windows machine; an account on
    // another drive ("D:\Mail") lies where the library finds that drive.
    const std::string drive = qvp::posix::WindowsRoot();
    std::vector<StoreFolder> out{{std::string(), drive.empty() ? qvp::posix::PrefixRoot() : drive}};
    for (const std::string& folder : accountFolders) {
        std::string host;
        const int mapped = qvp::posix::MapUtf8Path(folder, &host);
        if (mapped == qvp::posix::kMapFound || mapped == qvp::posix::kMapMissing) out.push_back({folder, host});
    }
    return out;
}

const StoreFolder* FolderHolding(const std::vector<StoreFolder>& folders, const std::string& path) {
    const std::string inner = AbsolutePath(path);
    for (const StoreFolder& folder : folders) {
        if (qvp::posix::IsWithin(inner, AbsolutePath(folder.hostPath))) return &folder;
    }
    return nullptr;
}

void ReadCopiedDrive(const std::string& root, const std::string& user) { qvp::posix::UseCopiedDrive(root, user); }

std::string CopiedDrive() { return qvp::posix::WindowsRoot(); }

DriveLayout InspectCopiedDrive() {
    const qvp::posix::DriveFolders folders = qvp::posix::LocateDriveFolders();
    DriveLayout out;
    out.hasSoftware = folders.hasSoftware;
    out.software = folders.software;
    out.users = folders.users;
    out.oldUsers = folders.oldUsers;
    for (const qvp::posix::DriveProfile& profile : qvp::posix::DriveProfiles())
        out.profiles.push_back({profile.name, profile.hive});
    qvp::posix::DriveProfile named;
    out.hasNamed = qvp::posix::NamedProfile(&named);
    out.named = {named.name, named.hive};
    return out;
}

Hive ProbeHive(const std::string& path, const std::string& key, std::string* error) {
    bool has = false;
    int cause = 0;
    if (qvp::posix::HiveHasKey(path, key, &has, &cause)) return has ? Hive::kHasKey : Hive::kNoKey;
    *error = Describe(path, cause == EISDIR || cause == ENODEV ? "not a file"
                            : cause == EINVAL                  ? "not a registry hive (damaged or cut short)"
                                                               : std::strerror(cause));
    return Hive::kUnreadable;
}

bool MakeDirectories(const std::string& path, std::string* error) {
    std::error_code ec;
    fs::create_directories(PathOf(path), ec);
    if (!ec) return true;
    *error = Describe(path, ec.message());
    return false;
}

Folder InspectFolder(const std::string& path) {
    std::error_code ec;
    fs::file_status status = fs::status(PathOf(path), ec);
    if (!fs::exists(status)) return Folder::kMissing;
    if (!fs::is_directory(status)) return Folder::kNotAFolder;
    return fs::directory_iterator(PathOf(path), ec) == fs::directory_iterator() && !ec ? Folder::kEmpty
                                                                                        : Folder::kNotEmpty;
}

bool Exists(const std::string& path) {
    std::error_code ec;
    return fs::exists(fs::symlink_status(PathOf(path), ec));
}

std::string AbsolutePath(const std::string& path) {
    std::error_code ec;
    fs::path p = fs::weakly_canonical(fs::absolute(PathOf(path), ec), ec);
    std::string out = p.u8string();
    while (out.size() > 1 && (out.back() == '/' || out.back() == '\\')) out.pop_back();
    return out;
}

// What a stopped export needs: files reopened and cut back, the journal's
// replacing rename, flushes to the disk, the stop signals, the tests' kill.
namespace {

void OnStopSignal(int signal) {
    RequestStop();
    std::signal(signal, SIG_DFL);  // a second one ends the process
}

}  // namespace

OutDirLock::Result OutDirLock::Acquire(const std::string& dir, std::string* error) {
    tried_ = true;
    const int fd = open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) == 0) {
        handle_ = fd;
        return Result::kHeld;
    }
    const int cause = errno;
    if (fd >= 0) close(fd);
    *error = Describe(dir, std::strerror(cause));
    return cause == EWOULDBLOCK ? Result::kBusy : Result::kUnavailable;
}

OutDirLock::~OutDirLock() {
    if (handle_ != -1) close(static_cast<int>(handle_));
}

bool NewFile::CreateOrEmpty(const std::string& path, std::string* error) {
    path_ = path;
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0644);
    if (fd < 0) {
        *error = Describe(path, Errno());
        return false;
    }
    handle_ = fd;
    return true;
}

bool NewFile::OpenAt(const std::string& path, uint64_t length, std::string* error) {
    path_ = path;
    int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) {
        *error = Describe(path, Errno());
        return false;
    }
    handle_ = fd;
    struct stat st;
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        *error = Describe(path, "not a file");
        return false;
    }
    if (static_cast<uint64_t>(st.st_size) < length) {
        *error = Describe(path, "shorter than the journal says was written");
        return false;
    }
    return Truncate(length, error);
}

bool NewFile::Truncate(uint64_t length, std::string* error) {
    const int fd = static_cast<int>(handle_);
    if (ftruncate(fd, static_cast<off_t>(length)) == 0 && lseek(fd, 0, SEEK_END) >= 0) return true;
    *error = Describe(path_, Errno());
    return false;
}

void NewFile::StartWriteBack(uint64_t offset, uint64_t size) {
#if defined(SYNC_FILE_RANGE_WRITE)
    // Linux: the mbox file's bytes go to the disk while the export writes
    // on, and the commit's fsync then mostly waits for the file system's
    // own journal.
    sync_file_range(static_cast<int>(handle_), static_cast<off_t>(offset), static_cast<off_t>(size),
                    SYNC_FILE_RANGE_WRITE);
#else
    (void)offset;
    (void)size;
#endif
}

bool RenameOver(const std::string& from, const std::string& to, std::string* error) {
    if (rename(from.c_str(), to.c_str()) == 0) return true;
    *error = Describe(to, Errno());
    return false;
}

bool SyncDirectory(const std::string& path, std::string* error) {
    int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    bool ok = fd >= 0 && fsync(fd) == 0;
    if (!ok) *error = Describe(path, Errno());
    if (fd >= 0) close(fd);
    return ok;
}

bool SyncFiles(const std::vector<std::string>& paths, std::string* error) {
    if (paths.empty()) return true;
    // One syncfs for the batch: an fsync per file would cost a disk commit
    // per message.
    int fd = open(paths.front().c_str(), O_RDONLY | O_CLOEXEC);
    bool ok = fd >= 0 && syncfs(fd) == 0;
    if (!ok) *error = Describe(paths.front(), Errno());
    if (fd >= 0) close(fd);
    return ok;
}

void CatchStopSignals() {
    std::signal(SIGINT, OnStopSignal);
    std::signal(SIGTERM, OnStopSignal);
}

void RaiseStop() { raise(SIGINT); }

void KillSelf() {
    raise(SIGKILL);
    for (;;) pause();
}

}  // namespace os
}  // namespace tqnralm
