// DriveHives.cpp - the copied drive's rules over Windows paths and the
// hand-written hive reader.
#include "platform/win32/DriveHives.h"

#include "platform/CaseFold.h"
#include "platform/win32/Causes.h"
#include "platform/win32/WidePath.h"

#include <windows.h>

#include <algorithm>

namespace qvp {

// The process's own environment block, wide: the C runtime's copy may be
// another DLL's, and the ANSI one loses what the code page lacks.
std::string EnvironmentText(const char* name) {
    const std::wstring wide = win32::WideFromUtf8(name);
    std::wstring value(256, L'\0');
    DWORD n = ::GetEnvironmentVariableW(wide.c_str(), &value[0], static_cast<DWORD>(value.size()));
    if (n >= value.size()) {
        value.resize(n);
        n = ::GetEnvironmentVariableW(wide.c_str(), &value[0], n);
    }
    value.resize(n < value.size() ? n : 0);
    return win32::Utf8FromWide(value);
}

namespace win32 {
namespace {

// The host's own path as the wide calls take it: absolute, long when long.
std::wstring HostWide(const std::string& host) { return WidePath(WideFromUtf8(host).c_str()); }

struct DriveAccess {
    using File = HiveFile;
    static constexpr char kSeparator = '\\';
    static bool Map(const std::string& windowsUtf8, std::string* host) {
        std::wstring wide;
        if (!DrivePath(WideFromUtf8(windowsUtf8), &wide)) return false;
        while (wide.size() > 3 && wide.back() == L'\\') wide.pop_back();  // a folder without its last separator
        *host = Utf8FromWide(wide);
        if (::GetFileAttributesW(HostWide(*host).c_str()) == INVALID_FILE_ATTRIBUTES) return false;
        // Spelled as on the disk, as the Linux build spells it.
        std::wstring spelled(::GetLongPathNameW(wide.c_str(), nullptr, 0), L'\0');
        const DWORD n = spelled.empty() ? 0 : ::GetLongPathNameW(wide.c_str(), &spelled[0], spelled.size());
        if (n > 0 && n < spelled.size()) *host = Utf8FromWide(spelled.substr(0, n));
        return true;
    }
    static std::vector<std::string> Names(const std::string& host) {
        std::vector<std::string> out;
        WIN32_FIND_DATAW found;
        std::wstring pattern = HostWide(host);
        if (!pattern.empty() && pattern.back() != L'\\') pattern += L'\\';
        const HANDLE find = ::FindFirstFileW((pattern + L"*").c_str(), &found);
        if (find == INVALID_HANDLE_VALUE) return out;
        do {
            const std::wstring name = found.cFileName;
            if (name != L"." && name != L"..") out.push_back(Utf8FromWide(name));
        } while (::FindNextFileW(find, &found));
        ::FindClose(find);
        return out;
    }
};

}  // namespace

std::wstring WideFromUtf8(const std::string& utf8) {
    if (utf8.empty()) return std::wstring();
    const int n = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
    std::wstring wide(static_cast<size_t>(n > 0 ? n : 0), L'\0');
    if (n > 0) ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), &wide[0], n);
    return wide;
}

std::string Utf8FromWide(const std::wstring& wide) {
    if (wide.empty()) return std::string();
    const int size = static_cast<int>(wide.size());
    const int n = ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<size_t>(n > 0 ? n : 0), '\0');
    if (n > 0) ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, &utf8[0], n, nullptr, nullptr);
    return utf8;
}

bool DrivePath(const std::wstring& path, std::wstring* host) {
    const wchar_t first = path.empty() ? 0 : path[0] | 0x20;  // ASCII letters in lower case
    const bool lettered = path.size() >= 2 && path[1] == L':' && first >= L'a' && first <= L'z';
    if (!lettered) {
        *host = path;
        return true;
    }
    const char letter = static_cast<char>(first);
    std::wstring root = WideFromUtf8(letter == 'c' ? WindowsRoot() : DriveFolder(letter));
    if (root.empty()) return false;
    while (!root.empty() && (root.back() == L'\\' || root.back() == L'/')) root.pop_back();
    const std::wstring rest = path.substr(2);
    *host = root + (rest.empty() || rest[0] == L'\\' || rest[0] == L'/' ? rest : L"\\" + rest);
    return true;
}

bool HiveFile::Open(const std::string& hostPath, uint32_t* error) {
    uint32_t ignored = 0;
    uint32_t& cause = error != nullptr ? *error : ignored;
    cause = ERROR_SUCCESS;
    // Sharing for writing too: a hive another program holds is still read.
    const HANDLE file = ::CreateFileW(HostWide(hostPath).c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        cause = ::GetLastError();
        ThrowIfNoMemory(cause);
        // A folder cannot be opened so: Windows says access denied.
        const DWORD attributes = ::GetFileAttributesW(HostWide(hostPath).c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
            cause = ERROR_DIRECTORY;
        return false;
    }
    LARGE_INTEGER size = {};
    std::string bytes;
    const bool regular = ::GetFileType(file) == FILE_TYPE_DISK && ::GetFileSizeEx(file, &size);
    bool read = regular && size.QuadPart <= static_cast<LONGLONG>(kMaxBytes);
    if (read) {
        bytes.resize(static_cast<size_t>(size.QuadPart));
        DWORD got = 0;
        for (size_t at = 0; read && at < bytes.size(); at += got)
            read = ::ReadFile(file, &bytes[at], static_cast<DWORD>(std::min<size_t>(bytes.size() - at, 1u << 24)), &got,
                              nullptr) &&
                   got > 0;
        if (!read) cause = ::GetLastError() != ERROR_SUCCESS ? ::GetLastError() : ERROR_HANDLE_EOF;
    } else {
        cause = regular ? ERROR_BAD_FORMAT : ERROR_DIRECTORY;
    }
    ::CloseHandle(file);
    if (!read) return false;
    if (!Load(std::move(bytes))) cause = ERROR_BAD_FORMAT;
    return cause == ERROR_SUCCESS;
}

std::vector<DriveProfile> DriveProfiles() { return drive::Profiles<DriveAccess>(); }

bool NamedProfile(DriveProfile* out) { return drive::Named<DriveAccess>(out); }

DriveFolders LocateDriveFolders() { return drive::Folders<DriveAccess>(); }

std::unique_ptr<HiveFile> OpenDriveHive(Hive hive, const std::u16string& foldedKey) {
    return drive::OpenHive<DriveAccess>(hive, foldedKey);
}

bool HiveHasKey(const std::string& hostPath, const std::string& key, bool* has, uint32_t* error) {
    HiveFile hive;
    if (!hive.Open(hostPath, error)) return false;
    const std::wstring wide = WideFromUtf8(key);
    *has = hive.HasKey(Fold(std::u16string(wide.begin(), wide.end())));
    return true;
}

}  // namespace win32
}  // namespace qvp
