// Files.cpp - files, directory listings and system folders on Windows.
//
// These are the C runtime's and the system's own calls: text mode, the
// listing order and the matching of patterns are whatever Windows does.
#include "platform/platform.h"
#include "platform/win32/Causes.h"

#include <windows.h>
#include <direct.h>
#include <io.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace qvp {

struct File {
    FILE* stream;
};

struct FindHandle {
    intptr_t handle;
};

namespace {

void Fill(const _finddata_t& found, FindData* data) {
    data->attrib = (found.attrib & _A_SUBDIR) != 0 ? kAttribDirectory : kAttribArchive;
    std::strncpy(data->name, found.name, sizeof data->name - 1);
    data->name[sizeof data->name - 1] = 0;
}

}  // namespace

uint32_t WindowsDirectory(char* buffer, uint32_t size) { return ::GetWindowsDirectoryA(buffer, size); }

uint32_t TempPath(uint32_t size, char* buffer) { return ::GetTempPathA(size, buffer); }

char* GetCwd(char* buffer, int size) { return ::_getcwd(buffer, size); }

int Access(const char* path) { return path != nullptr && ::_access(path, 0) == 0 ? 0 : -1; }

int Remove(const char* path) { return path != nullptr && std::remove(path) == 0 ? 0 : -1; }

File* FileOpen(const char* path, const char* mode, int* cause) {
    int ignored;
    int& why = cause != nullptr ? *cause : ignored;
    why = kCauseGeneric;
    if (path == nullptr || mode == nullptr || mode[0] != 'r' || std::strpbrk(mode, "wa+") != nullptr)
        return nullptr;
    FILE* stream = std::fopen(path, mode);
    if (stream == nullptr) {
        // The runtime keeps the system's own reason beside errno: ENOENT
        // stands for a missing file and for a missing folder on the way.
        why = win32::CauseFromError(static_cast<DWORD>(_doserrno));
        if (why == kCauseNone) why = errno == EMFILE ? kCauseTooManyOpenFiles : kCauseGeneric;
        return nullptr;
    }
    File* file = new (std::nothrow) File{stream};
    if (file == nullptr) {
        std::fclose(stream);
        return nullptr;
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

// GetPrivateProfileStringA.
uint32_t ProfileString(const char* section, const char* key, const char* defaultValue, char* buffer,
                       uint32_t size, const char* fileName) {
    return ::GetPrivateProfileStringA(section, key, defaultValue, buffer, size, fileName);
}

FindHandle* FindFirst(const char* pattern, FindData* data) {
    if (pattern == nullptr || data == nullptr) return nullptr;
    _finddata_t found;
    const intptr_t handle = ::_findfirst(pattern, &found);
    if (handle == -1) return nullptr;
    FindHandle* result = new (std::nothrow) FindHandle{handle};
    if (result == nullptr) {
        ::_findclose(handle);
        return nullptr;
    }
    Fill(found, data);
    return result;
}

bool FindNext(FindHandle* handle, FindData* data) {
    if (handle == nullptr || data == nullptr) return false;
    _finddata_t found;
    if (::_findnext(handle->handle, &found) != 0) return false;
    Fill(found, data);
    return true;
}

void FindClose(FindHandle* handle) {
    if (handle == nullptr) return;
    ::_findclose(handle->handle);
    delete handle;
}

}  // namespace qvp
