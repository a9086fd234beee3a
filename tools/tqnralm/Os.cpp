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
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/DriveHives.h"
#include "platform/posix/HostPath.h"
#include "platform/posix/Machine.h"
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

std::vector<StoreFolder> StoreFolders(const std::vector<std::string>& accountFolders) {
    std::vector<StoreFolder> out;
    for (const std::string& folder : accountFolders) out.push_back({folder, folder});
    return out;
}

const StoreFolder* FolderHolding(const std::vector<StoreFolder>& folders, const std::string& path) {
    const std::string inner = AbsolutePath(path);
    for (const StoreFolder& store : folders) {
        // Windows compares paths without regard to case.
        const std::string folder = AbsolutePath(store.hostPath);
        if (inner.size() < folder.size() || _strnicmp(inner.c_str(), folder.c_str(), folder.size()) != 0) continue;
        if (inner.size() == folder.size() || inner[folder.size()] == '\\' || inner[folder.size()] == '/' ||
            folder.back() == '\\')
            return &store;
    }
    return nullptr;
}

namespace {
std::string g_copiedDrive;
}  // namespace

// The Windows build reads the running machine's own registry; a copied drive
// is only looked at far enough to say so.
void ReadCopiedDrive(const std::string& root, const std::string&) { g_copiedDrive = root; }

std::string CopiedDrive() { return std::string(); }

DriveLayout InspectCopiedDrive() {
    DriveLayout out;
    const fs::path root = PathOf(g_copiedDrive);
    out.software = (root / "Windows" / "System32" / "config" / "SOFTWARE").u8string();
    out.users = (root / "Users").u8string();
    out.oldUsers = (root / "Documents and Settings").u8string();
    std::error_code ec;
    out.hasSoftware = fs::exists(PathOf(out.software), ec);
    return out;
}

Hive ProbeHive(const std::string&, const std::string&, std::string* error) {
    *error = "the Windows build reads this machine's registry only; read a copied drive with the Linux build";
    return Hive::kUnsupported;
}

#else

namespace {

std::string Errno() { return std::strerror(errno); }

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
