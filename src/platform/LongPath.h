// LongPath.h - the form of a path that Windows' wide file functions take at
// any length.
//
// Windows refuses a path of MAX_PATH (260) characters or more, and a folder
// path of 248 or more, unless it is absolute and written "\\?\C:\..." (or
// "\\?\UNC\server\share\..."). In that form nothing is interpreted: no '/',
// no "." or "..", no relative part. So every path is made absolute and
// normalised first, the way GetFullPathNameW does, and gets the prefix when it
// is long. The rules are plain text work, kept apart from the system so that
// they are tested on every platform (Wine does not enforce the limit).
#ifndef QV_PLATFORM_LONGPATH_H
#define QV_PLATFORM_LONGPATH_H

#include <string>

namespace qvp {

// From this length on a path gets the "\\?\" form.
constexpr size_t kLongPathFrom = 248;

// `path` made absolute against `cwd` (itself an absolute path such as
// GetCurrentDirectoryW gives), with '/' read as '\', empty and "." components
// dropped and ".." taking one back (never above the drive or the share);
// prefixed when kLongPathFrom characters or longer. A path that is prefixed
// already ("\\?\", "\\.\") is taken as it is.
std::u16string FullPath(const std::u16string& path, const std::u16string& cwd);

}  // namespace qvp

#endif  // QV_PLATFORM_LONGPATH_H
