// DirStream.h - the I/O fault seam of the POSIX layer, and a folder's listing that closes itself, so that no exception
// on the way (out of memory while names are collected) leaves a directory
// handle and its descriptor behind, and that tells a failed read from the
// end of the listing.
#ifndef QV_PLATFORM_POSIX_DIRSTREAM_H
#define QV_PLATFORM_POSIX_DIRSTREAM_H

#include <dirent.h>
#include <errno.h>

#include <new>
#include <string>

#include "platform/Faults.h"

namespace qvp {
namespace posix {

// A system call that failed for want of memory: the layer's callers must not
// take that for a file or folder that is not there, so it goes up as
// std::bad_alloc. Called where nothing is held that the throw would leak.
inline void ThrowIfNoMemory(int error) {
    if (error == ENOMEM) throw std::bad_alloc();
}

// Counts one call of the I/O seam; when it must fail, errno says why.
inline bool InjectedFailure() {
    faults::IoError error;
    if (!faults::IoFails(&error)) return false;
    switch (error) {
        case faults::IoError::kTooManyFiles: errno = EMFILE; break;
        case faults::IoError::kDenied: errno = EACCES; break;
        case faults::IoError::kNoMemory: errno = ENOMEM; break;
        default: errno = EIO; break;
    }
    return true;
}

class DirStream {
public:
    explicit DirStream(const std::string& hostDir) {
        if (InjectedFailure()) {
            ThrowIfNoMemory(errno);
            m_failed = true;
            return;
        }
        m_dir = opendir(hostDir.c_str());
        m_failed = m_dir == nullptr;
        if (m_failed) ThrowIfNoMemory(errno);
    }
    ~DirStream() {
        if (m_dir != nullptr) closedir(m_dir);
    }
    DirStream(const DirStream&) = delete;
    DirStream& operator=(const DirStream&) = delete;

    bool IsOpen() const { return m_dir != nullptr; }
    // The next name, or nullptr at the end or on a failed read (Failed()).
    const char* Next() {
        if (m_dir == nullptr) return nullptr;
        errno = 0;
        struct dirent* entry = readdir(m_dir);
        if (entry == nullptr) {
            m_failed = errno != 0;
            return nullptr;
        }
        return entry->d_name;
    }
    // The folder could not be opened, or a read of it failed.
    bool Failed() const { return m_failed; }

private:
    DIR* m_dir = nullptr;
    bool m_failed = false;
};

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_DIRSTREAM_H
