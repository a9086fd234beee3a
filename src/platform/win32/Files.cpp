// Files.cpp - files, directory listings and system folders on Windows.
//
// These are the C runtime's and the system's own calls: text mode, the
// listing order and the matching of patterns are whatever Windows does.
// Paths reach the wide calls through WidePath, so that their length is no limit.
#include "platform/platform.h"
#include "platform/CopiedDrive.h"
#include "platform/win32/Causes.h"
#include "platform/win32/WidePath.h"

#include <windows.h>
#include <direct.h>
#include <io.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <new>
#include <string>

namespace qvp {

struct File {
    FILE* stream;
};

struct FindHandle {
    intptr_t handle;
};

namespace {

void Fill(const _wfinddata_t& found, FindData* data) {
    data->attrib = (found.attrib & _A_SUBDIR) != 0 ? kAttribDirectory : kAttribArchive;
    win32::AnsiName(found.name, data->name, sizeof data->name);
}

// Copies text and its NUL as the Win32 folder calls do: the length without
// NUL when it fits, else the size needed with the NUL.
uint32_t CopyOut(const std::string& text, char* buffer, uint32_t size) {
    if (buffer == nullptr || size < text.size() + 1) return static_cast<uint32_t>(text.size() + 1);
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return static_cast<uint32_t>(text.size());
}

// A folder from a wide system call in the readers' ANSI code page, copied
// out as the folder calls do; 0 when the call fails.
uint32_t CopyOutWide(const wchar_t* wide, DWORD length, char* buffer, uint32_t size) {
    if (length == 0) return 0;
    const int n = ::WideCharToMultiByte(win32::kAnsiCodePage, 0, wide, static_cast<int>(length), nullptr, 0,
                                        "?", nullptr);
    if (n <= 0) return 0;
    std::string ansi(static_cast<size_t>(n), '\0');
    ::WideCharToMultiByte(win32::kAnsiCodePage, 0, wide, static_cast<int>(length), &ansi[0], n, "?", nullptr);
    return CopyOut(ansi, buffer, size);
}

}  // namespace

// A copied drive's Windows folder is the one its registry names.
uint32_t WindowsDirectory(char* buffer, uint32_t size) {
    if (!WindowsRoot().empty()) return CopyOut(RegistryWindowsDirectory(), buffer, size);
    wchar_t wide[MAX_PATH + 1] = {};
    const UINT n = ::GetWindowsDirectoryW(wide, MAX_PATH + 1);
    return n <= MAX_PATH ? CopyOutWide(wide, n, buffer, size) : 0;
}

uint32_t TempPath(uint32_t size, char* buffer) {
    wchar_t wide[MAX_PATH + 1] = {};
    const DWORD n = ::GetTempPathW(MAX_PATH + 1, wide);
    return n <= MAX_PATH ? CopyOutWide(wide, n, buffer, size) : 0;
}

char* GetCwd(char* buffer, int size) {
    if (buffer == nullptr || size <= 0) return nullptr;
    wchar_t* wide = ::_wgetcwd(nullptr, 0);
    if (wide == nullptr) return nullptr;
    const uint32_t n = CopyOutWide(wide, static_cast<DWORD>(std::wcslen(wide)), buffer, static_cast<uint32_t>(size));
    std::free(wide);
    if (n == 0 || n >= static_cast<uint32_t>(size)) {
        errno = ERANGE;
        return nullptr;
    }
    return buffer;
}

int Access(const char* path) {
    const std::wstring wide = win32::WidePath(path);
    if (wide.empty()) return -1;
    if (::_waccess(wide.c_str(), 0) == 0) return 0;
    win32::ThrowIfRuntimeNoMemory();
    return -1;
}

int Remove(const char* path) {
    const std::wstring wide = win32::WidePath(path);
    return !wide.empty() && ::_wremove(wide.c_str()) == 0 ? 0 : -1;
}

File* FileOpen(const char* path, const char* mode, int* cause) {
    int ignored;
    int& why = cause != nullptr ? *cause : ignored;
    why = kCauseGeneric;
    if (path == nullptr || mode == nullptr || mode[0] != 'r' || std::strpbrk(mode, "wa+") != nullptr)
        return nullptr;
    const std::wstring wide = win32::WidePath(path);
    if (wide.empty()) {
        why = kCauseBadPath;
        return nullptr;
    }
    const std::wstring wideMode(mode, mode + std::strlen(mode));
    errno = 0;
    _doserrno = 0;
    FILE* stream = ::_wfopen(wide.c_str(), wideMode.c_str());
    if (stream == nullptr) {
        win32::ThrowIfRuntimeNoMemory();
        // The runtime keeps the system's own reason beside errno: ENOENT
        // stands for a missing file and for a missing folder on the way.
        why = win32::CauseFromError(static_cast<DWORD>(_doserrno));
        if (why == kCauseNone) why = errno == EMFILE ? kCauseTooManyOpenFiles : kCauseGeneric;
        return nullptr;
    }
    File* file = new (std::nothrow) File{stream};
    if (file == nullptr) {
        std::fclose(stream);
        throw std::bad_alloc();
    }
    why = kCauseNone;
    return file;
}

char* FileGets(char* buffer, int n, File* file) {
    if (buffer == nullptr || file == nullptr || n <= 0) return nullptr;
    return std::fgets(buffer, n, file->stream);
}

size_t FileRead(void* buffer, size_t bytes, File* file) {
    if (buffer == nullptr || file == nullptr) return 0;
    return std::fread(buffer, 1, bytes, file->stream);
}

bool FileEof(File* file) { return file == nullptr || std::feof(file->stream) != 0; }

bool FileError(File* file) { return file == nullptr || std::ferror(file->stream) != 0; }

void FileRewind(File* file) {
    if (file != nullptr) std::rewind(file->stream);
}

long FileLength(File* file) { return file == nullptr ? -1 : ::_filelength(::_fileno(file->stream)); }

void FileClose(File* file) {
    if (file == nullptr) return;
    std::fclose(file->stream);
    delete file;
}

namespace {

// The profile calls read a file without a byte-order mark in this machine's
// own ANSI code page, whatever the file is: the readers' bytes go in and come
// back through that same code page, so that they pass unchanged. A file with
// a mark is Unicode, and its text is given in code page 932.
UINT ProfileCodePage(const std::wstring& file) {
    unsigned char mark[3] = {};
    const long n = win32::ReadHead(file, mark, sizeof mark);
    if (n < 0) return CP_ACP;
    const bool utf8 = n == 3 && mark[0] == 0xEF && mark[1] == 0xBB && mark[2] == 0xBF;
    const bool utf16 = n >= 2 && ((mark[0] == 0xFF && mark[1] == 0xFE) || (mark[0] == 0xFE && mark[1] == 0xFF));
    return utf8 || utf16 ? win32::kAnsiCodePage : CP_ACP;
}

std::wstring Wide(UINT codePage, const char* text) {
    const int n = ::MultiByteToWideChar(codePage, 0, text, -1, nullptr, 0);
    std::wstring out(n > 0 ? static_cast<size_t>(n) : 1, L'\0');
    if (n > 0) ::MultiByteToWideChar(codePage, 0, text, -1, &out[0], n);
    out.resize(std::wcslen(out.c_str()));
    return out;
}

// Cut at a whole character when longer than the buffer, as the ANSI call cuts.
void Narrow(UINT codePage, const std::wstring& wide, char* out, uint32_t size) {
    const int room = static_cast<int>(size);
    out[0] = 0;
    std::wstring part = wide;
    while (::WideCharToMultiByte(codePage, 0, part.c_str(), -1, out, room, "?", nullptr) <= 0 && !part.empty())
        part.pop_back();
    out[size - 1] = 0;
}

}  // namespace

// GetPrivateProfileStringA, but with the file named by the wide call: its
// path is code page 932 text (WidePath.h), which the ANSI call would read in
// this machine's code page.
uint32_t ProfileString(const char* section, const char* key, const char* defaultValue, char* buffer,
                       uint32_t size, const char* fileName) {
    if (buffer == nullptr || size == 0) return 0;
    const std::wstring file = win32::WidePath(fileName);
    if (file.empty()) {
        Narrow(win32::kAnsiCodePage, win32::AnsiToWide(defaultValue), buffer, size);
        return static_cast<uint32_t>(std::strlen(buffer));
    }
    const UINT codePage = ProfileCodePage(file);
    std::wstring value(size, L'\0');
    ::SetLastError(ERROR_SUCCESS);
    const DWORD n = ::GetPrivateProfileStringW(Wide(codePage, section).c_str(), Wide(codePage, key).c_str(),
                                               Wide(codePage, defaultValue).c_str(), &value[0], size, file.c_str());
    if (n == 0) win32::ThrowIfNoMemory(::GetLastError());
    value.resize(n);
    Narrow(codePage, value, buffer, size);
    return static_cast<uint32_t>(std::strlen(buffer));
}

FindHandle* FindFirst(const char* pattern, FindData* data) {
    if (pattern == nullptr || data == nullptr) return nullptr;
    const std::wstring wide = win32::WidePath(pattern);
    _wfinddata_t found;
    if (wide.empty()) return nullptr;
    errno = 0;
    _doserrno = 0;
    const intptr_t handle = ::_wfindfirst(wide.c_str(), &found);
    if (handle == -1) {
        win32::ThrowIfRuntimeNoMemory();
        return nullptr;
    }
    FindHandle* result = new (std::nothrow) FindHandle{handle};
    if (result == nullptr) {
        ::_findclose(handle);
        throw std::bad_alloc();
    }
    Fill(found, data);
    return result;
}

bool FindNext(FindHandle* handle, FindData* data) {
    if (handle == nullptr || data == nullptr) return false;
    _wfinddata_t found;
    errno = 0;
    _doserrno = 0;
    if (::_wfindnext(handle->handle, &found) != 0) {
        win32::ThrowIfRuntimeNoMemory();
        return false;
    }
    Fill(found, data);
    return true;
}

void FindClose(FindHandle* handle) {
    if (handle == nullptr) return;
    ::_findclose(handle->handle);
    delete handle;
}

}  // namespace qvp
