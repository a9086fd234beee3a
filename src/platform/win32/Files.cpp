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

}  // namespace

// A copied drive's Windows folder is the one its registry names.
uint32_t WindowsDirectory(char* buffer, uint32_t size) {
    if (!WindowsRoot().empty()) return CopyOut(RegistryWindowsDirectory(), buffer, size);
    return ::GetWindowsDirectoryA(buffer, size);
}

uint32_t TempPath(uint32_t size, char* buffer) { return ::GetTempPathA(size, buffer); }

char* GetCwd(char* buffer, int size) { return ::_getcwd(buffer, size); }

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

std::wstring FromAnsi(const char* text) {
    const int n = ::MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    std::wstring out(n > 0 ? static_cast<size_t>(n) : 1, L'\0');
    if (n > 0) ::MultiByteToWideChar(CP_ACP, 0, text, -1, &out[0], n);
    out.resize(std::wcslen(out.c_str()));
    return out;
}

}  // namespace

// GetPrivateProfileStringA; a file whose path is long, or that lies on a
// copied drive, is read by the wide call, and the value given back in ANSI,
// cut as the ANSI call cuts it.
uint32_t ProfileString(const char* section, const char* key, const char* defaultValue, char* buffer,
                       uint32_t size, const char* fileName) {
    const std::wstring file = win32::WidePath(fileName);
    const bool wide = file.compare(0, 4, L"\\\\?\\") == 0 || !WindowsRoot().empty();
    if (!wide || buffer == nullptr || size == 0) {
        ::SetLastError(ERROR_SUCCESS);
        const DWORD n = ::GetPrivateProfileStringA(section, key, defaultValue, buffer, size, fileName);
        if (n == 0) win32::ThrowIfNoMemory(::GetLastError());
        return n;
    }
    std::wstring value(size, L'\0');
    const DWORD n = ::GetPrivateProfileStringW(FromAnsi(section).c_str(), FromAnsi(key).c_str(),
                                               FromAnsi(defaultValue).c_str(), &value[0], size, file.c_str());
    value.resize(n);
    win32::AnsiName(value.c_str(), buffer, static_cast<int>(size));
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
