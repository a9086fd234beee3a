// The host's one seam to the operating system (see Os.h): a POSIX branch and
// a Windows branch, and what std::filesystem does the same way on both.
#include "Os.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <hivex.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace tqnralm {
namespace os {
namespace {

fs::path PathOf(const std::string& utf8) { return fs::u8path(utf8); }

std::string Describe(const std::string& path, const std::string& reason) { return "'" + path + "': " + reason; }

}  // namespace

#if defined(_WIN32)

namespace {

std::wstring Wide(const std::string& utf8) {
    int n = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
    std::wstring out(static_cast<size_t>(n), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), &out[0], n);
    // Past MAX_PATH the calls need the absolute "\\?\" form.
    if (out.size() >= 240) {
        DWORD len = GetFullPathNameW(out.c_str(), 0, nullptr, nullptr);
        std::wstring full(len, L'\0');
        len = GetFullPathNameW(out.c_str(), len, &full[0], nullptr);
        full.resize(len);
        if (full.rfind(L"\\\\", 0) == 0) return L"\\\\?\\UNC\\" + full.substr(2);
        return L"\\\\?\\" + full;
    }
    return out;
}

std::string LastError() {
    DWORD code = GetLastError();
    char text[256] = "";
    FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0, text, sizeof text,
                   nullptr);
    size_t n = std::strlen(text);
    while (n > 0 && (text[n - 1] == '\n' || text[n - 1] == '\r' || text[n - 1] == '.')) text[--n] = 0;
    return std::string(text) + " (error " + std::to_string(code) + ")";
}

HANDLE H(intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

}  // namespace

// For OsDurable.cpp, the other half of this seam.
std::wstring WidePath(const std::string& utf8) { return Wide(utf8); }
std::string SystemError() { return LastError(); }

bool StderrIsTerminal() { return _isatty(_fileno(stderr)) != 0; }

char MaildirInfoSeparator() { return '!'; }

Created NewFile::Create(const std::string& path, std::string* error) {
    path_ = path;
    HANDLE h = CreateFileW(Wide(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) {
        DWORD code = GetLastError();
        *error = Describe(path, LastError());
        return code == ERROR_FILE_EXISTS || code == ERROR_ALREADY_EXISTS ? Created::kExists : Created::kFailed;
    }
    handle_ = reinterpret_cast<intptr_t>(h);
    return Created::kNew;
}

bool NewFile::Write(const char* data, size_t size, std::string* error) {
    while (size > 0) {
        DWORD chunk = size > (1u << 30) ? (1u << 30) : static_cast<DWORD>(size), done = 0;
        if (!WriteFile(H(handle_), data, chunk, &done, nullptr) || done == 0) {
            *error = Describe(path_, LastError());
            return false;
        }
        data += done;
        size -= done;
    }
    return true;
}

bool NewFile::Sync(std::string* error) {
    if (FlushFileBuffers(H(handle_))) return true;
    *error = Describe(path_, LastError());
    return false;
}

bool NewFile::SetTime(int64_t seconds, std::string* error) {
    // FILETIME counts 100 ns from 1601.
    const uint64_t ticks = static_cast<uint64_t>(seconds + 11644473600LL) * 10000000ULL;
    FILETIME time;
    time.dwLowDateTime = static_cast<DWORD>(ticks);
    time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    if (SetFileTime(H(handle_), nullptr, &time, &time)) return true;
    *error = Describe(path_, LastError());
    return false;
}

bool NewFile::Close(std::string* error) {
    if (handle_ == -1) return true;
    bool ok = CloseHandle(H(handle_)) != 0;
    handle_ = -1;
    if (!ok) *error = Describe(path_, LastError());
    return ok;
}

NewFile::~NewFile() {
    if (handle_ != -1) CloseHandle(H(handle_));
}

Created MakeDirectory(const std::string& path, std::string* error) {
    if (CreateDirectoryW(Wide(path).c_str(), nullptr)) return Created::kNew;
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        DWORD attr = GetFileAttributesW(Wide(path).c_str());
        if (attr != INVALID_FILE_ATTRIBUTES && (attr & FILE_ATTRIBUTE_DIRECTORY)) return Created::kExists;
        *error = Describe(path, "a file of this name is in the way");
        return Created::kFailed;
    }
    *error = Describe(path, LastError());
    return Created::kFailed;
}

bool RenameNew(const std::string& from, const std::string& to, std::string* error) {
    // Without MOVEFILE_REPLACE_EXISTING the move fails when `to` exists.
    if (MoveFileExW(Wide(from).c_str(), Wide(to).c_str(), MOVEFILE_WRITE_THROUGH)) return true;
    *error = Describe(to, LastError());
    return false;
}

void RemoveFile(const std::string& path) { DeleteFileW(Wide(path).c_str()); }

std::string SourceDescription() { return "this machine"; }

std::vector<std::string> StoreFolders(const std::vector<std::string>& accountFolders) { return accountFolders; }

bool IsInside(const std::string& path, const std::string& folder) {
    // Windows compares paths without regard to case.
    if (path.size() < folder.size() || _strnicmp(path.c_str(), folder.c_str(), folder.size()) != 0) return false;
    return path.size() == folder.size() || path[folder.size()] == '\\' || path[folder.size()] == '/' ||
           folder.back() == '\\';
}

void SetEnvironment(const char* name, const std::string& value) { _putenv_s(name, value.c_str()); }

// The Windows build reads the running machine's own registry.
Hive ProbeHive(const std::string&, const std::string&, std::string* error) {
    *error = "the Windows build reads this machine's registry only; read a copied drive with the Linux build";
    return Hive::kUnsupported;
}

#else

namespace {

std::string Errno() { return std::strerror(errno); }

std::string WinePrefix() {
    const char* prefix = std::getenv("WINEPREFIX");
    if (prefix != nullptr && *prefix != 0) return prefix;
    const char* home = std::getenv("HOME");
    return std::string(home != nullptr ? home : "") + "/.wine";
}

}  // namespace

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
    if (const char* drive = std::getenv("TQNRALM_WINDOWS_ROOT"); drive != nullptr && *drive != 0)
        return "copied Windows drive " + AbsolutePath(drive);
    return "Wine prefix " + AbsolutePath(WinePrefix());
}

std::vector<std::string> StoreFolders(const std::vector<std::string>& accountFolders) {
    // The prefix holds the whole Windows machine; an account on another drive
    // ("D:\Mail") lies where that drive's link in dosdevices points. A copied
    // drive is C:, and other letters are where TQNRALM_DRIVE_<LETTER> says.
    const char* copied = std::getenv("TQNRALM_WINDOWS_ROOT");
    const bool drive = copied != nullptr && *copied != 0;
    const std::string prefix = drive ? copied : WinePrefix();
    std::vector<std::string> out{prefix};
    for (const std::string& folder : accountFolders) {
        if (folder.size() < 3 || folder[1] != ':') continue;
        const char letter = static_cast<char>(std::tolower(folder[0]));
        const char* mapped = std::getenv((std::string("TQNRALM_DRIVE_") + static_cast<char>(std::toupper(letter))).c_str());
        std::string path = !drive ? prefix + "/dosdevices/" + letter + ":"
                           : letter == 'c' ? prefix
                                           : std::string(mapped != nullptr ? mapped : "");
        if (path.empty()) continue;
        for (size_t i = 2; i < folder.size(); ++i) path += folder[i] == '\\' ? '/' : folder[i];
        out.push_back(path);
    }
    return out;
}

void SetEnvironment(const char* name, const std::string& value) { setenv(name, value.c_str(), 1); }

Hive ProbeHive(const std::string& path, const std::string& key, std::string* error) {
    // Only a regular file: a pipe or a device would block the read.
    struct stat st;
    if (stat(path.c_str(), &st) != 0) {
        *error = Describe(path, Errno());
        return Hive::kUnreadable;
    }
    if (!S_ISREG(st.st_mode)) {
        *error = Describe(path, "not a file");
        return Hive::kUnreadable;
    }
    hive_h* hive = hivex_open(path.c_str(), 0);
    if (hive == nullptr) {
        *error = Describe(path, errno == EACCES || errno == EPERM ? Errno() : "not a registry hive (damaged or cut short)");
        return Hive::kUnreadable;
    }
    hive_node_h node = hivex_root(hive);
    for (size_t start = 0; node != 0 && start <= key.size();) {
        size_t end = key.find('\\', start);
        if (end == std::string::npos) end = key.size();
        node = hivex_node_get_child(hive, node, key.substr(start, end - start).c_str());  // ASCII in any case
        start = end + 1;
    }
    hivex_close(hive);
    return node != 0 ? Hive::kHasKey : Hive::kNoKey;
}

bool IsInside(const std::string& path, const std::string& folder) {
    if (path.compare(0, folder.size(), folder) != 0) return false;
    return path.size() == folder.size() || path[folder.size()] == '/' || folder.back() == '/';
}

#endif

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

}  // namespace os
}  // namespace tqnralm
