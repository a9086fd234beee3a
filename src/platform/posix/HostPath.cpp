// HostPath.cpp - Windows paths of the Wine prefix to host paths.
//
// Drive X: is the link $WINEPREFIX/dosdevices/x: (c: -> ../drive_c,
// z: -> /). A missing c: link falls back to drive_c, a missing z: link to
// the host root, since the current and temporary folders are handed out
// through Z:. A path without a drive is relative to the current directory;
// one that starts with a backslash starts at the root of the current drive,
// which is Z:.
#include "platform/posix/HostPath.h"

#include "platform/posix/PosixText.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace qvp {
namespace posix {
namespace {

bool NameExists(const std::string& path) {
    struct stat st;
    return lstat(path.c_str(), &st) == 0;
}

bool IsDirectory(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// The drive's folder on the host, or false when the drive is not there.
bool DriveRoot(char letter, std::string* root) {
    const std::string prefix = PrefixRoot();
    if (!prefix.empty()) {
        const std::string link = prefix + "/dosdevices/" + letter + ":";
        if (NameExists(link)) {
            *root = link;
            return IsDirectory(link);
        }
        if (letter == 'c') {
            *root = prefix + "/drive_c";
            return IsDirectory(*root);
        }
    }
    if (letter == 'z') {
        *root = "/";
        return true;
    }
    return false;
}

// The entry of `dir` whose name equals `name` without regard to case, else
// the one whose short name does. Among several (a host file system can hold
// "A" and "a"), the least by byte order, so that every machine picks the same
// one.
bool FindInsensitive(const std::string& dir, const std::string& name, std::string* found) {
    std::u16string wanted;
    Utf8ToUtf16(name.data(), name.size(), false, &wanted);
    wanted = Fold(std::move(wanted));
    const bool maybeShort = wanted.size() <= 12 && wanted.find(u'~') != std::u16string::npos;
    DIR* d = opendir(dir.c_str());
    if (d == nullptr) return false;
    std::string byShortName;
    std::u16string candidate;
    found->clear();
    while (struct dirent* entry = readdir(d)) {
        const char* entryName = entry->d_name;
        const size_t length = std::strlen(entryName);
        Utf8ToUtf16(entryName, length, false, &candidate);
        std::string* slot = nullptr;
        if (candidate.size() == wanted.size() && Fold(candidate) == wanted) {
            slot = found;
        } else if (maybeShort && found->empty() && !IsDosName(candidate) && Fold(ShortName(candidate)) == wanted) {
            slot = &byShortName;
        }
        if (slot != nullptr && (slot->empty() || std::strcmp(entryName, slot->c_str()) < 0))
            slot->assign(entryName, length);
    }
    closedir(d);
    if (found->empty()) found->swap(byShortName);
    return !found->empty();
}

std::string JoinHost(const std::string& dir, const std::string& name) {
    if (!dir.empty() && dir.back() == '/') return dir + name;
    return dir + "/" + name;
}

}  // namespace

std::string PrefixRoot() {
    const char* prefix = std::getenv("WINEPREFIX");
    if (prefix != nullptr && *prefix != 0) return prefix;
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home != 0) return std::string(home) + "/.wine";
    return std::string();
}

int MapUtf8Path(const std::string& windows, std::string* host) {
    host->clear();
    if (windows.empty()) return kMapBadPath;
    auto isSep = [](char c) { return c == '\\' || c == '/'; };
    std::string base;
    size_t pos = 0;
    const unsigned char first = static_cast<unsigned char>(windows[0]);
    if (windows.size() >= 2 && windows[1] == ':' &&
        ((first >= 'A' && first <= 'Z') || (first >= 'a' && first <= 'z'))) {
        if (!DriveRoot(static_cast<char>(first | 0x20), &base)) return kMapBadPath;
        pos = 2;
    } else if (isSep(windows[0])) {
        if (windows.size() >= 2 && isSep(windows[1])) return kMapBadPath;  // UNC: no network here
        if (!DriveRoot('z', &base)) return kMapBadPath;
    }

    // Split into components; "." and empty ones (doubled separators) vanish,
    // ".." steps back but never above the drive's root.
    std::vector<std::string> parts;
    if (base.empty()) {
        // Relative: the current directory's components come first, so that
        // ".." can leave it.
        char cwd[4096];
        if (getcwd(cwd, sizeof cwd) == nullptr) return kMapBadPath;
        base = "/";
        const std::string dir = cwd;
        size_t from = 0;
        for (size_t i = 0; i <= dir.size(); ++i) {
            if (i < dir.size() && dir[i] != '/') continue;
            if (i > from) parts.push_back(dir.substr(from, i - from));
            from = i + 1;
        }
    }
    size_t start = pos;
    for (size_t i = pos; i <= windows.size(); ++i) {
        if (i < windows.size() && !isSep(windows[i])) continue;
        const std::string part = windows.substr(start, i - start);
        start = i + 1;
        if (part.empty() || part == ".") continue;
        if (part == "..") {
            if (!parts.empty()) parts.pop_back();
            continue;
        }
        if (part.find('\0') != std::string::npos) return kMapBadPath;
        parts.push_back(part);
    }

    std::string current = base;
    for (size_t i = 0; i < parts.size(); ++i) {
        const std::string exact = JoinHost(current, parts[i]);
        if (NameExists(exact)) {
            current = exact;
            continue;
        }
        std::string found;
        if (FindInsensitive(current, parts[i], &found)) {
            current = JoinHost(current, found);
            continue;
        }
        // Missing: the rest is spelled as given.
        current = exact;
        for (size_t j = i + 1; j < parts.size(); ++j) current = JoinHost(current, parts[j]);
        *host = current;
        return i + 1 == parts.size() ? kMapMissing : kMapBadPath;
    }
    *host = current;
    return kMapFound;
}

int MapPath(const char* windowsCp932, std::string* host) {
    host->clear();
    if (windowsCp932 == nullptr) return kMapBadPath;
    std::string utf8;
    if (!Cp932ToUtf8(windowsCp932, &utf8)) return kMapBadPath;
    return MapUtf8Path(utf8, host);
}

bool ReadWholeFile(const std::string& host, size_t maxBytes, std::string* bytes) {
    bytes->clear();
    int fd;
    do {
        fd = open(host.c_str(), O_RDONLY | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) return false;
    struct stat st;
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || static_cast<unsigned long long>(st.st_size) > maxBytes) {
        close(fd);
        return false;
    }
    bytes->reserve(static_cast<size_t>(st.st_size));
    char buffer[65536];
    bool ok = true;
    for (;;) {
        const ssize_t got = read(fd, buffer, sizeof buffer);
        if (got < 0) {
            if (errno == EINTR) continue;
            ok = false;
            break;
        }
        if (got == 0) break;
        if (bytes->size() + static_cast<size_t>(got) > maxBytes) {
            ok = false;  // the file grew past the limit while being read
            break;
        }
        bytes->append(buffer, static_cast<size_t>(got));
    }
    close(fd);
    if (!ok) bytes->clear();
    return ok;
}

}  // namespace posix
}  // namespace qvp
