// HostPath.h - Windows paths of the Wine prefix or a copied drive to host paths.
//
// A path in code page 932 with a drive letter and backslashes names a file
// below $WINEPREFIX/dosdevices/<drive>:, or below the folder that holds a
// copied Windows system drive (Machine.h). Wine names files in UTF-8 and the
// client spells its own file names in different cases, so each component is
// tried with its exact case first and then by a scan of its directory.
#ifndef QV_PLATFORM_POSIX_HOSTPATH_H
#define QV_PLATFORM_POSIX_HOSTPATH_H

#include <cstddef>
#include <string>

#include "platform/platform.h"
#include "platform/posix/Machine.h"

namespace qvp {
namespace posix {

// Results of a mapping, in the file cause codes of the library.
enum MapResult { kMapFound = 0, kMapMissing = 2, kMapBadPath = 3 };

// Maps a Windows path given in UTF-8. kMapFound: every component exists
// (the host path spells them as they are on disk); kMapMissing: only the last
// component is missing (the host path ends in it as given); kMapBadPath: a
// drive or a folder on the way is missing, or the path is malformed.
// kMapBadPath because the drive is missing gives its host path all the same.
int MapUtf8Path(const std::string& windowsUtf8, std::string* host);

// Whether the host path `path` is `folder` or lies below it, by the rules
// that map Windows paths: a component matches without regard to case, or by
// its short name. Both absolute, with '/' and their links resolved.
bool IsWithin(const std::string& path, const std::string& folder);

// The same for a path in code page 932.
int MapPath(const char* windowsCp932, std::string* host);

// Opens a host path as openat(2) does: relative to the folder `dir` (a
// descriptor, or AT_FDCWD). A descriptor, or -1 with errno set.
using OpenAt = int (*)(int dir, const std::string& path);

// Opens a file by its Windows path (CP932): `open` is called with the host
// path, or with the name alone in the folder last resolved. A file in a
// folder the process has resolved before costs that one open (the exact
// name in the cached folder); the full mapping runs only when it fails.
// *mapped is kMapFound when `open` was called on the file's host path (its
// own failure then stands), else why the path names nothing.
int OpenMapped(const char* windowsCp932, OpenAt open, int* mapped);


// errno to a file cause code (platform.h). `creating`: the open had O_CREAT,
// so ENOENT means a folder on the way is missing.
int CauseFromErrno(int error, bool creating = false);

// Opens a host file for reading with O_NONBLOCK, so that a FIFO does not
// wait for a writer: the descriptor, or -1 with errno set.
int OpenForReading(const std::string& host);
int OpenForReadingAt(int dir, const std::string& path);
// fstat of a descriptor just opened: only a regular file stays open. true
// and its size, else the descriptor is closed and *cause says why.
bool KeepRegular(int fd, long long* size, int* cause);
// Both: the descriptor and its size, or -1 and the cause.
int OpenRegular(const std::string& host, long long* size, int* cause);

// Reads a whole regular file of at most maxBytes bytes. On failure, *cause
// (when given) says why; a file over the limit is kCauseAccessDenied.
bool ReadWholeFile(const std::string& host, size_t maxBytes, std::string* bytes, int* cause = nullptr);

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_HOSTPATH_H
