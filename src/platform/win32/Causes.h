// Causes.h - the system's error numbers as the file causes of the library's
// failures: one mapping for every call of the Windows layer that reports why.
#ifndef QV_PLATFORM_WIN32_CAUSES_H
#define QV_PLATFORM_WIN32_CAUSES_H

#include <windows.h>

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

}  // namespace win32
}  // namespace qvp

#endif  // QV_PLATFORM_WIN32_CAUSES_H
