// The second half of the host's seam to the operating system (see Os.h):
// what an export needs to survive being stopped. Files of its own reopened
// and cut back, the journal's replacing rename, flushing files and
// directories to the disk, the stop signals, and the tests' kill.
#include "Os.h"

#include <atomic>
#include <csignal>
#include <cstring>

#if defined(_WIN32)
#include <windows.h>
// <windows.h> makes ReplaceFile a macro for ReplaceFileW; here it is os::ReplaceFile.
#undef ReplaceFile
#else
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace tqnralm {
namespace os {
namespace {

std::atomic<bool> stopRequested{false};

std::string Describe(const std::string& path, const std::string& reason) {
    return "'" + DisplayPath(path) + "': " + reason;
}

}  // namespace

bool StopRequested() { return stopRequested.load(std::memory_order_relaxed); }
void ClearStopRequest() { stopRequested.store(false); }

#if defined(_WIN32)

std::wstring WidePath(const std::string& utf8);  // Os.cpp
std::string SystemError();

namespace {

BOOL WINAPI OnConsoleEvent(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT && event != CTRL_CLOSE_EVENT) return FALSE;
    if (stopRequested.exchange(true)) return FALSE;  // the second one: the default, which ends the process
    // Closing the console ends the process when this returns; wait for the
    // export to reach its summary (Windows allows about five seconds).
    if (event == CTRL_CLOSE_EVENT) Sleep(5000);
    return TRUE;
}

}  // namespace

bool NewFile::CreateOrEmpty(const std::string& path, std::string* error) {
    path_ = path;
    HANDLE h = CreateFileW(WidePath(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                           nullptr);
    if (h == INVALID_HANDLE_VALUE) {
        *error = Describe(path, SystemError());
        return false;
    }
    handle_ = reinterpret_cast<intptr_t>(h);
    return true;
}

bool NewFile::OpenAt(const std::string& path, uint64_t length, std::string* error) {
    path_ = path;
    HANDLE h = CreateFileW(WidePath(path).c_str(), GENERIC_WRITE | GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) {
        *error = Describe(path, SystemError());
        return false;
    }
    handle_ = reinterpret_cast<intptr_t>(h);
    LARGE_INTEGER size;
    if (!GetFileSizeEx(h, &size)) {
        *error = Describe(path, SystemError());
        return false;
    }
    if (static_cast<uint64_t>(size.QuadPart) < length) {
        *error = Describe(path, "shorter than the journal says was written");
        return false;
    }
    return Truncate(length, error);
}

bool NewFile::Truncate(uint64_t length, std::string* error) {
    LARGE_INTEGER at;
    at.QuadPart = static_cast<LONGLONG>(length);
    HANDLE h = reinterpret_cast<HANDLE>(handle_);
    if (SetFilePointerEx(h, at, nullptr, FILE_BEGIN) && SetEndOfFile(h)) return true;
    *error = Describe(path_, SystemError());
    return false;
}

// Windows writes back on its own; FlushFileBuffers waits for what is left.
void NewFile::StartWriteBack(uint64_t, uint64_t) {}

bool RenameOver(const std::string& from, const std::string& to, std::string* error) {
    if (MoveFileExW(WidePath(from).c_str(), WidePath(to).c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return true;
    *error = Describe(to, SystemError());
    return false;
}

// NTFS keeps its names in its own journal; a directory cannot be flushed.
bool SyncDirectory(const std::string&, std::string*) { return true; }

bool SyncFiles(const std::vector<std::string>& paths, std::string* error) {
    for (const std::string& path : paths) {
        HANDLE h = CreateFileW(WidePath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
        const bool ok = h != INVALID_HANDLE_VALUE && FlushFileBuffers(h);
        if (!ok) *error = Describe(path, SystemError());
        if (h != INVALID_HANDLE_VALUE) CloseHandle(h);
        if (!ok) return false;
    }
    return true;
}

void CatchStopSignals() { SetConsoleCtrlHandler(OnConsoleEvent, TRUE); }

void RaiseStop() { OnConsoleEvent(CTRL_C_EVENT); }

void KillSelf() {
    TerminateProcess(GetCurrentProcess(), 137);
    for (;;) Sleep(INFINITE);
}

#else

namespace {

void OnStopSignal(int signal) {
    stopRequested.store(true);
    std::signal(signal, SIG_DFL);  // a second one ends the process
}

std::string Errno() { return std::strerror(errno); }

}  // namespace

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

#endif

}  // namespace os
}  // namespace tqnralm
