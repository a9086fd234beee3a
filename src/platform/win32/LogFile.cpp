// LogFile.cpp - the trace log's file and the local clock on Windows.
//
// The file is opened for writing, shared for reading and writing, created
// if missing and never truncated; every append moves to the end first.
// System errors become the cause codes that a file exception carries.
#include "platform/platform.h"
#include "platform/win32/Causes.h"
#include "platform/win32/WidePath.h"

#include <windows.h>

#include <new>

namespace qvp {

struct LogFile {
    HANDLE handle;
};

using win32::CauseFromError;

int LogFileOpen(const char16_t* path, LogFile** out) {
    if (out == nullptr) return kCauseGeneric;
    *out = nullptr;
    if (path == nullptr) return kCauseBadPath;
    const std::wstring wide = win32::WidePath(reinterpret_cast<const wchar_t*>(path));
    if (wide.empty()) return kCauseBadPath;
    const HANDLE handle = ::CreateFileW(wide.c_str(), GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        const DWORD error = ::GetLastError();
        win32::ThrowIfNoMemory(error);
        return CauseFromError(error);
    }
    LogFile* file = new (std::nothrow) LogFile{handle};
    if (file == nullptr) {
        ::CloseHandle(handle);
        throw std::bad_alloc();
    }
    *out = file;
    return 0;
}

int LogFileAppend(LogFile* file, const void* data, size_t bytes) {
    if (file == nullptr) return kCauseGeneric;
    LARGE_INTEGER zero;
    zero.QuadPart = 0;
    if (!::SetFilePointerEx(file->handle, zero, nullptr, FILE_END)) return CauseFromError(::GetLastError());
    const char* p = static_cast<const char*>(data);
    while (bytes > 0) {
        const DWORD chunk = bytes > 0x40000000u ? 0x40000000u : static_cast<DWORD>(bytes);
        DWORD written = 0;
        if (!::WriteFile(file->handle, p, chunk, &written, nullptr)) return CauseFromError(::GetLastError());
        if (written == 0) return 13;
        p += written;
        bytes -= written;
    }
    return 0;
}

int LogFileFlush(LogFile* file) {
    if (file == nullptr) return kCauseGeneric;
    return ::FlushFileBuffers(file->handle) ? 0 : CauseFromError(::GetLastError());
}

int LogFileClose(LogFile* file) {
    if (file == nullptr) return kCauseGeneric;
    const int result = ::CloseHandle(file->handle) ? 0 : CauseFromError(::GetLastError());
    delete file;
    return result;
}

void LocalTimeNow(LocalTime* out) {
    if (out == nullptr) return;
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    out->year = now.wYear;
    out->month = now.wMonth;
    out->day = now.wDay;
    out->hour = now.wHour;
    out->minute = now.wMinute;
    out->second = now.wSecond;
    out->milliseconds = now.wMilliseconds;
}

}  // namespace qvp
