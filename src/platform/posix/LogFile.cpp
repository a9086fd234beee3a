// LogFile.cpp - the trace log's file and the local clock on POSIX.
//
// The log is written with plain write(2) calls on a descriptor: nothing is
// held in user space, so a flush has nothing left to push and a crash of the
// host loses no record that was appended. Every append seeks to the end
// first, since another process may share the file.
#include "platform/platform.h"
#include "platform/posix/HostPath.h"
#include "platform/posix/PosixText.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <new>
#include <string>

namespace qvp {

struct LogFile {
    int fd;
};

using posix::CauseFromErrno;

int LogFileOpen(const char16_t* path, LogFile** out) {
    if (out == nullptr) return kCauseGeneric;
    *out = nullptr;
    if (path == nullptr) return kCauseBadPath;
    size_t length = 0;
    while (path[length] != 0) ++length;
    const std::string hostPath = posix::Utf16ToUtf8(path, length);
    int fd;
    do {
        fd = open(hostPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) return CauseFromErrno(errno, true);
    LogFile* file = new (std::nothrow) LogFile{fd};
    if (file == nullptr) {
        close(fd);
        throw std::bad_alloc();
    }
    *out = file;
    return 0;
}

int LogFileAppend(LogFile* file, const void* data, size_t bytes) {
    if (file == nullptr) return kCauseGeneric;
    if (lseek(file->fd, 0, SEEK_END) < 0) return CauseFromErrno(errno, false);
    const char* p = static_cast<const char*>(data);
    while (bytes > 0) {
        const ssize_t written = write(file->fd, p, bytes);
        if (written < 0) {
            if (errno == EINTR) continue;
            return CauseFromErrno(errno, false);
        }
        if (written == 0) return kCauseDiskFull;
        p += written;
        bytes -= static_cast<size_t>(written);
    }
    return 0;
}

int LogFileFlush(LogFile* file) {
    // Every append went straight to the system; there is nothing to push.
    return file == nullptr ? kCauseGeneric : kCauseNone;
}

int LogFileClose(LogFile* file) {
    if (file == nullptr) return kCauseGeneric;
    const int result = close(file->fd) == 0 ? 0 : CauseFromErrno(errno, false);
    delete file;
    return result;
}

void LocalTimeNow(LocalTime* out) {
    if (out == nullptr) return;
    struct timespec now {};
    clock_gettime(CLOCK_REALTIME, &now);
    struct tm local {};
    const time_t seconds = now.tv_sec;
    localtime_r(&seconds, &local);
    out->year = static_cast<uint16_t>(local.tm_year + 1900);
    out->month = static_cast<uint16_t>(local.tm_mon + 1);
    out->day = static_cast<uint16_t>(local.tm_mday);
    out->hour = static_cast<uint16_t>(local.tm_hour);
    out->minute = static_cast<uint16_t>(local.tm_min);
    out->second = static_cast<uint16_t>(local.tm_sec > 59 ? 59 : local.tm_sec);
    out->milliseconds = static_cast<uint16_t>(now.tv_nsec / 1000000 % 1000);
}

}  // namespace qvp
