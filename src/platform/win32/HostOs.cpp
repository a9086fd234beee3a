// The host's seam to Windows (see HostOs.h). Paths arrive in UTF-8 and reach the
// wide file functions in the long form of LongPath.h, so that a Japanese
// name and a path past MAX_PATH both work; arguments come from the UTF-16
// command line; text for a person goes to a console through WriteConsoleW.
#include "platform/HostOs.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>
#include <shellapi.h>

#include <algorithm>
#include <cstring>
#include <cwchar>

#include "platform/LongPath.h"
#include "platform/CopiedDrive.h"
#include "platform/win32/DriveHives.h"

namespace tqnralm {
namespace os {
namespace {

std::wstring WideText(const std::string& utf8) {
    if (utf8.empty()) return std::wstring();
    const int size = static_cast<int>(utf8.size());
    const int n = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
    std::wstring out(static_cast<size_t>(n), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, &out[0], n);
    return out;
}

std::string Utf8Text(const wchar_t* wide, size_t count) {
    if (count == 0) return std::string();
    const int size = static_cast<int>(count);
    const int n = WideCharToMultiByte(CP_UTF8, 0, wide, size, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(n), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide, size, &out[0], n, nullptr, nullptr);
    return out;
}

std::string Utf8Text(const std::wstring& wide) { return Utf8Text(wide.data(), wide.size()); }

// Every path the host opens or creates: absolute, normalised, "\\?\" when long.
std::wstring Native(const std::string& utf8) {
    std::wstring cwd(MAX_PATH, L'\0');
    DWORD n = GetCurrentDirectoryW(static_cast<DWORD>(cwd.size()), &cwd[0]);
    if (n >= cwd.size()) {
        cwd.resize(n);
        n = GetCurrentDirectoryW(n, &cwd[0]);
    }
    cwd.resize(n);
    const std::wstring path = WideText(utf8);
    const std::u16string full = qvp::FullPath(std::u16string(path.begin(), path.end()),
                                              std::u16string(cwd.begin(), cwd.end()));
    return std::wstring(full.begin(), full.end());
}

// The full path without the "\\?\" that only the file functions need.
std::wstring Plain(std::wstring path) {
    if (path.rfind(L"\\\\?\\UNC\\", 0) == 0) return L"\\" + path.substr(7);
    if (path.rfind(L"\\\\?\\", 0) == 0) return path.substr(4);
    return path;
}

std::string LastError() {
    const DWORD code = GetLastError();
    wchar_t* text = nullptr;
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                   code, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::wstring reason = text != nullptr ? text : L"";
    LocalFree(text);
    while (!reason.empty() && (reason.back() == L'\n' || reason.back() == L'\r' || reason.back() == L'.' ||
                               reason.back() == L' ' || reason.back() == L'\x3002'))
        reason.pop_back();
    return Utf8Text(reason) + " (error " + std::to_string(code) + ")";
}

std::string Describe(const std::string& path, const std::string& reason) {
    return "'" + DisplayPath(path) + "': " + reason;
}

// The file that holds OUTDIR (OutDirLock); it lives only while its export runs.
const wchar_t* const kLockName = L"manifest.json.lock";

HANDLE H(intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

bool IsConsole(HANDLE handle) {
    DWORD mode = 0;
    return handle != nullptr && handle != INVALID_HANDLE_VALUE && GetConsoleMode(handle, &mode) != 0;
}

std::string Parent(const std::string& path) {
    const size_t cut = path.find_last_of("\\/");
    return cut == std::string::npos || cut < 3 ? std::string() : path.substr(0, cut);
}

DWORD Attributes(const std::string& path) { return GetFileAttributesW(Native(path).c_str()); }

}  // namespace


std::vector<std::string> ProgramArguments(int argc, char** argv) {
    std::vector<std::string> out;
    int count = 0;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (wide == nullptr) return std::vector<std::string>(argv, argv + argc);
    for (int i = 0; i < count; ++i) out.push_back(Utf8Text(wide[i], std::wcslen(wide[i])));
    LocalFree(wide);
    return out;
}

void UseBinaryStreams() {
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
}

void WriteText(std::FILE* stream, const std::string& utf8) {
    const HANDLE console = stream == stdout   ? GetStdHandle(STD_OUTPUT_HANDLE)
                           : stream == stderr ? GetStdHandle(STD_ERROR_HANDLE)
                                              : nullptr;
    if (!IsConsole(console)) {
        std::fwrite(utf8.data(), 1, utf8.size(), stream);
        return;
    }
    std::fflush(stream);
    const std::wstring text = WideText(utf8);
    for (size_t done = 0; done < text.size();) {
        DWORD chunk = static_cast<DWORD>(std::min<size_t>(text.size() - done, 8192)), written = 0;
        if (!WriteConsoleW(console, text.data() + done, chunk, &written, nullptr) || written == 0) return;
        done += written;
    }
}

std::string DisplayPath(const std::string& path) {
    std::string out = path;
    for (char& c : out) {
        if (c == '/') c = '\\';
    }
    return out;
}

bool StderrIsTerminal() { return IsConsole(GetStdHandle(STD_ERROR_HANDLE)); }

char MaildirInfoSeparator() { return '!'; }

Created NewFile::Create(const std::string& path, std::string* error) {
    path_ = path;
    HANDLE h = CreateFileW(Native(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
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
    if (CreateDirectoryW(Native(path).c_str(), nullptr)) return Created::kNew;
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        DWORD attr = Attributes(path);
        if (attr != INVALID_FILE_ATTRIBUTES && (attr & FILE_ATTRIBUTE_DIRECTORY)) return Created::kExists;
        *error = Describe(path, "a file of this name is in the way");
        return Created::kFailed;
    }
    *error = Describe(path, LastError());
    return Created::kFailed;
}

bool MakeDirectories(const std::string& path, std::string* error) {
    const std::string full = Utf8Text(Plain(Native(path)));
    const std::string parent = Parent(full);
    if (!parent.empty() && !Exists(parent) && !MakeDirectories(parent, error)) return false;
    return MakeDirectory(full, error) != Created::kFailed;
}

Folder InspectFolder(const std::string& path) {
    const DWORD attr = Attributes(path);
    if (attr == INVALID_FILE_ATTRIBUTES) return Folder::kMissing;
    if ((attr & FILE_ATTRIBUTE_DIRECTORY) == 0) return Folder::kNotAFolder;
    WIN32_FIND_DATAW found;
    HANDLE find = FindFirstFileW((Native(path) + L"\\*").c_str(), &found);
    if (find == INVALID_HANDLE_VALUE) return Folder::kNotEmpty;
    Folder result = Folder::kEmpty;
    do {
        if (std::wcscmp(found.cFileName, L".") != 0 && std::wcscmp(found.cFileName, L"..") != 0 &&
            std::wcscmp(found.cFileName, kLockName) != 0) {
            result = Folder::kNotEmpty;
            break;
        }
    } while (FindNextFileW(find, &found));
    FindClose(find);
    return result;
}

bool Exists(const std::string& path) { return Attributes(path) != INVALID_FILE_ATTRIBUTES; }

bool RenameNew(const std::string& from, const std::string& to, std::string* error) {
    // Without MOVEFILE_REPLACE_EXISTING the move fails when `to` exists.
    if (MoveFileExW(Native(from).c_str(), Native(to).c_str(), MOVEFILE_WRITE_THROUGH)) return true;
    *error = Describe(to, LastError());
    return false;
}

void RemoveFile(const std::string& path) { DeleteFileW(Native(path).c_str()); }

std::string AbsolutePath(const std::string& path) {
    // Short names ("MAILBO~1") of the part that exists become long ones, so
    // that two spellings of one folder compare equal.
    std::wstring full = Plain(Native(path)), rest;
    while (true) {
        DWORD n = GetLongPathNameW(full.c_str(), nullptr, 0);
        if (n > 0) {
            std::wstring resolved(n, L'\0');
            n = GetLongPathNameW(full.c_str(), &resolved[0], n);
            resolved.resize(n);
            full = resolved;
            break;
        }
        const size_t cut = full.rfind(L'\\');
        if (cut == std::wstring::npos || cut < 3 || full[cut - 1] == L'\\' || full[cut - 1] == L':') break;
        rest = full.substr(cut) + rest;
        full.resize(cut);
    }
    std::string out = Utf8Text(full + rest);
    while (out.size() > 3 && out.back() == '\\') out.pop_back();
    return out;
}

std::string SourceDescription() {
    const std::string drive = qvp::WindowsRoot();
    return drive.empty() ? "this machine" : "copied Windows drive " + AbsolutePath(drive);
}

namespace {

// A string value of the mail client's key, from the 32-bit view (the client is
// a 32-bit program) or else the native one; empty when there is none.
std::string ClientValue(HKEY root, const wchar_t* name) {
    const wchar_t* const key = L"Software\\CREAR\\AL-Mail";
    wchar_t value[1024] = {};
    for (DWORD view : {DWORD(RRF_SUBKEY_WOW6432KEY), DWORD(0)}) {
        DWORD size = sizeof value - sizeof(wchar_t);
        if (RegGetValueW(root, key, name, RRF_RT_REG_SZ | view, nullptr, value, &size) == ERROR_SUCCESS)
            return Utf8Text(value, std::wcslen(value));
    }
    return std::string();
}

// On a copied drive the drive holds the whole Windows machine; an account
// on another drive ("D:\Mail") lies where the library finds that drive.
std::vector<StoreFolder> DriveStoreFolders(const std::string& drive, const std::vector<std::string>& accountFolders) {
    std::vector<StoreFolder> out{{std::string(), drive}};
    for (const std::string& folder : accountFolders) {
        std::wstring host;
        if (qvp::win32::DrivePath(WideText(folder), &host)) out.push_back({folder, Utf8Text(host)});
    }
    return out;
}

}  // namespace

std::vector<StoreFolder> StoreFolders(const std::vector<std::string>& accountFolders) {
    const std::string drive = qvp::WindowsRoot();
    if (!drive.empty()) return DriveStoreFolders(drive, accountFolders);
    // InstallPath names the program file in the installation folder;
    // MailboxPath holds this Windows user's "Mailbox" folder. Other users'
    // mailbox folders are the account folders' parents that hold Mailbox.ini.
    std::vector<std::string> paths = accountFolders;
    const std::string install = Parent(ClientValue(HKEY_LOCAL_MACHINE, L"InstallPath"));
    if (!install.empty()) paths.push_back(install);
    std::string mailbox = ClientValue(HKEY_CURRENT_USER, L"MailboxPath");
    while (!mailbox.empty() && mailbox.back() == '\\') mailbox.pop_back();
    if (!mailbox.empty()) paths.push_back(mailbox + "\\Mailbox");
    for (const std::string& account : accountFolders) {
        const std::string parent = Parent(account);
        if (!parent.empty() && Exists(parent + "\\Mailbox.ini")) paths.push_back(parent);
    }
    std::vector<StoreFolder> out;
    for (const std::string& path : paths) out.push_back({path, path});
    return out;
}

const StoreFolder* FolderHolding(const std::vector<StoreFolder>& folders, const std::string& path) {
    // Windows compares names without regard to case, in every script; both
    // sides have their short names made long.
    const std::wstring inner = WideText(AbsolutePath(path));
    for (const StoreFolder& store : folders) {
        const std::wstring folder = WideText(AbsolutePath(store.hostPath));
        const int n = static_cast<int>(folder.size());
        if (folder.empty() || inner.size() < folder.size() ||
            CompareStringOrdinal(inner.data(), n, folder.data(), n, TRUE) != CSTR_EQUAL)
            continue;
        if (inner.size() == folder.size() || inner[folder.size()] == L'\\' || folder.back() == L'\\') return &store;
    }
    return nullptr;
}

// A copied drive is read by this process (InspectCopiedDrive, ProbeHive)
// and by the library, which keeps a platform layer of its own inside its
// DLL: the library learns the drive from the environment it reads.
void ReadCopiedDrive(const std::string& root, const std::string& user) {
    const std::string absolute = root.empty() ? root : AbsolutePath(root);
    qvp::UseCopiedDrive(absolute, user);
    SetEnvironmentVariableW(L"TQNRALM_WINDOWS_ROOT", absolute.empty() ? nullptr : WideText(absolute).c_str());
    SetEnvironmentVariableW(L"TQNRALM_WINDOWS_USER", user.empty() ? nullptr : WideText(user).c_str());
}

std::string CopiedDrive() { return qvp::WindowsRoot(); }

DriveLayout InspectCopiedDrive() {
    const qvp::DriveFolders folders = qvp::win32::LocateDriveFolders();
    DriveLayout out;
    out.hasSoftware = folders.hasSoftware;
    out.software = folders.software;
    out.users = folders.users;
    out.oldUsers = folders.oldUsers;
    for (const qvp::DriveProfile& profile : qvp::win32::DriveProfiles())
        out.profiles.push_back({profile.name, profile.hive});
    qvp::DriveProfile named;
    out.hasNamed = qvp::win32::NamedProfile(&named);
    out.named = {named.name, named.hive};
    return out;
}

Hive ProbeHive(const std::string& path, const std::string& key, std::string* error) {
    bool has = false;
    uint32_t cause = 0;
    if (qvp::win32::HiveHasKey(path, key, &has, &cause)) return has ? Hive::kHasKey : Hive::kNoKey;
    SetLastError(cause);
    *error = Describe(path, cause == ERROR_DIRECTORY    ? "not a file"
                            : cause == ERROR_BAD_FORMAT ? "not a registry hive (damaged or cut short)"
                                                        : LastError());
    return Hive::kUnreadable;
}

// What a stopped export needs: files reopened and cut back, the journal's
// replacing rename, flushes to the disk, the stop signals, the tests' kill.
namespace {

BOOL WINAPI OnConsoleEvent(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT && event != CTRL_CLOSE_EVENT) return FALSE;
    if (RequestStop()) return FALSE;  // the second one: the default, which ends the process
    // Closing the console ends the process when this returns; wait for the
    // export to reach its summary (Windows allows about five seconds).
    if (event == CTRL_CLOSE_EVENT) Sleep(5000);
    return TRUE;
}

}  // namespace

bool NewFile::CreateOrEmpty(const std::string& path, std::string* error) {
    path_ = path;
    HANDLE h = CreateFileW(Native(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                           nullptr);
    if (h == INVALID_HANDLE_VALUE) {
        *error = Describe(path, LastError());
        return false;
    }
    handle_ = reinterpret_cast<intptr_t>(h);
    return true;
}

bool NewFile::OpenAt(const std::string& path, uint64_t length, std::string* error) {
    path_ = path;
    HANDLE h = CreateFileW(Native(path).c_str(), GENERIC_WRITE | GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) {
        *error = Describe(path, LastError());
        return false;
    }
    handle_ = reinterpret_cast<intptr_t>(h);
    LARGE_INTEGER size;
    if (!GetFileSizeEx(h, &size)) {
        *error = Describe(path, LastError());
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
    *error = Describe(path_, LastError());
    return false;
}

// Windows writes back on its own; FlushFileBuffers waits for what is left.
void NewFile::StartWriteBack(uint64_t, uint64_t) {}

bool RenameOver(const std::string& from, const std::string& to, std::string* error) {
    if (MoveFileExW(Native(from).c_str(), Native(to).c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return true;
    *error = Describe(to, LastError());
    return false;
}

// NTFS keeps its names in its own journal; a directory cannot be flushed.
OutDirLock::Result OutDirLock::Acquire(const std::string& dir, std::string* error) {
    tried_ = true;
    // No sharing: a second export's open fails while this handle lives.
    // The system closes the handle when the process ends, however it ends,
    // and then deletes the file.
    const std::wstring path = Native(dir) + L"\\" + kLockName;
    HANDLE h = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                           FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (h != INVALID_HANDLE_VALUE) {
        handle_ = reinterpret_cast<intptr_t>(h);
        return Result::kHeld;
    }
    const bool busy = GetLastError() == ERROR_SHARING_VIOLATION;
    *error = Describe(dir, LastError());
    return busy ? Result::kBusy : Result::kUnavailable;
}

OutDirLock::~OutDirLock() {
    if (handle_ != -1) CloseHandle(H(handle_));
}

bool SyncDirectory(const std::string&, std::string*) { return true; }

bool SyncFiles(const std::vector<std::string>& paths, std::string* error) {
    for (const std::string& path : paths) {
        HANDLE h = CreateFileW(Native(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
        const bool ok = h != INVALID_HANDLE_VALUE && FlushFileBuffers(h);
        if (!ok) *error = Describe(path, LastError());
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

}  // namespace os
}  // namespace tqnralm
