// Causes.h - the system's error numbers as the file causes of the library's
// failures: one mapping for every call of the Windows layer that reports why,
// and the test for a call that failed for want of memory, which must go up as
// std::bad_alloc rather than read as a key, file or folder that is not there.
#ifndef QV_PLATFORM_WIN32_CAUSES_H
#define QV_PLATFORM_WIN32_CAUSES_H

#include <windows.h>

#include <cerrno>
#include <new>

#include "platform/platform.h"

namespace qvp {
namespace win32 {

inline int CauseFromError(DWORD error) {
    switch (error) {
        case ERROR_SUCCESS: return kCauseNone;
        case ERROR_FILE_NOT_FOUND: return kCauseFileNotFound;
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_INVALID_DRIVE:
        case ERROR_DIRECTORY: return kCauseBadPath;
        case ERROR_TOO_MANY_OPEN_FILES: return kCauseTooManyOpenFiles;
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT: return kCauseAccessDenied;
        case ERROR_INVALID_HANDLE: return kCauseInvalidFile;
        case ERROR_SHARING_VIOLATION: return kCauseSharingViolation;
        case ERROR_LOCK_VIOLATION: return kCauseLockViolation;
        case ERROR_HANDLE_DISK_FULL:
        case ERROR_DISK_FULL: return kCauseDiskFull;
        case ERROR_HANDLE_EOF: return kCauseEndOfFile;
        default: return kCauseGeneric;
    }
}

// Throws std::bad_alloc for the system's out-of-memory errors. Called where
// nothing is held that the throw would leak.
inline void ThrowIfNoMemory(DWORD error) {
    if (error == ERROR_NOT_ENOUGH_MEMORY || error == ERROR_OUTOFMEMORY) throw std::bad_alloc();
}
inline void ThrowIfComNoMemory(HRESULT result) {
    if (result == E_OUTOFMEMORY) throw std::bad_alloc();
}
// The C runtime's calls: errno, and the system's own reason beside it.
inline void ThrowIfRuntimeNoMemory() {
    if (errno == ENOMEM) throw std::bad_alloc();
    ThrowIfNoMemory(static_cast<DWORD>(_doserrno));
}

}  // namespace win32
}  // namespace qvp

#endif  // QV_PLATFORM_WIN32_CAUSES_H
