// HostPath.cpp - Windows paths of the Wine prefix or a copied drive to host
// paths.
//
// In a prefix drive X: is the link $WINEPREFIX/dosdevices/x: (c: ->
// ../drive_c, z: -> /), and a missing c: link falls back to drive_c. On a
// copied drive C: is its folder. A missing Z: is the host root, since the
// current and temporary folders are handed out through it. A path without a
// drive is relative to the current directory; one that starts with a
// backslash starts at the root of the current drive, which is Z:.
//
// Mapping a path one component at a time costs a stat per component, and a
// walk opens every message of a folder by a path that differs only in its
// last part. So the process remembers the host folder each Windows folder
// resolved to (DirCache), and a file in a known folder is tried there by its
// exact name first: the open itself is the test. Only when that fails is
// the folder asked again: through an index of its names folded to one case,
// built from one listing and rebuilt when the folder's time stamp moves, so
// a missing file costs a stat of its folder and a lookup. A cached folder
// that has gone (renamed, removed) falls back to the full resolve from the
// drive, so a store that changes between two walks reads as it is.
#include "platform/posix/HostPath.h"

#include "platform/posix/DirCache.h"
#include "platform/posix/DirStream.h"
#include "platform/posix/PosixText.h"

#include <atomic>

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
    if (lstat(path.c_str(), &st) == 0) return true;
    ThrowIfNoMemory(errno);
    return false;
}

bool IsDirectory(const std::string& path) {
    struct stat st;
    if (stat(path.c_str(), &st) == 0) return S_ISDIR(st.st_mode);
    ThrowIfNoMemory(errno);
    return false;
}

// The drive's folder on the host, or false when the drive is not there.
// Everything below a drive is found from here. On a copied drive C: is its
// folder and any other letter the folder that DriveFolder names
// (a client whose data lay on D:); in a prefix a letter is its link in
// dosdevices. Either way Z: without a mapping of its own is the host's root.
bool DriveRoot(char letter, std::string* root) {
    const std::string copied = WindowsRoot();
    if (!copied.empty()) {
        const std::string mapped = letter == 'c' ? copied : DriveFolder(letter);
        if (!mapped.empty()) {
            *root = mapped;
            return IsDirectory(*root);
        }
    } else if (const std::string prefix = PrefixRoot(); !prefix.empty()) {
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

// What DriveRoot maps a letter through, without a look at the disk: the
// cache's keys begin with it, so that the folders of one prefix or drive are
// never taken for another's.
void DriveSourceInto(char letter, std::string* out) {
    out->clear();
    // WindowsRoot, without a copy of the environment's text.
    std::string named;
    const char* copied = NamedWindowsRoot(&named) ? named.c_str() : std::getenv("TQNRALM_WINDOWS_ROOT");
    if (copied == nullptr || copied[0] == '\0') {
        AppendPrefixRoot(out);
        return;
    }
    *out += "drive ";
    *out += copied;
    *out += '|';
    if (letter != 'c') *out += DriveFolder(letter);
}

std::string DriveSource(char letter) {
    std::string source;
    DriveSourceInto(letter, &source);
    return source;
}

std::u16string Folded(const std::string& utf8) {
    std::u16string wide;
    Utf8ToUtf16(utf8.data(), utf8.size(), false, &wide);
    return Fold(std::move(wide));
}

// The entry of `dir` whose short name is `folded` (a name of at most 12
// characters with a '~'); the least by byte order among several, so that
// every machine picks the same one.
bool FindShortName(const std::string& dir, const std::u16string& folded, std::string* found) {
    if (folded.size() > 12 || folded.find(u'~') == std::u16string::npos) return false;
    DirStream d(dir);
    found->clear();
    std::u16string candidate;
    while (const char* name = d.Next()) {
        const size_t length = std::strlen(name);
        Utf8ToUtf16(name, length, false, &candidate);
        if (IsDosName(candidate) || Fold(ShortName(candidate)) != folded) continue;
        if (found->empty() || std::strcmp(name, found->c_str()) < 0) found->assign(name, length);
    }
    if (d.Failed()) found->clear();
    return !found->empty();
}

// The entry of `dir` whose name equals `name` without regard to case, else
// the one whose short name does. kFolderGone when `dir` is no folder.
DirCache::Lookup FindInsensitive(const std::string& dir, const std::string& name, std::string* found) {
    const std::u16string folded = Folded(name);
    const DirCache::Lookup result = DirCache::Instance().FindName(dir, folded, found);
    if (result == DirCache::kNameMissing && FindShortName(dir, folded, found)) return DirCache::kNameFound;
    return result;
}

std::string JoinHost(const std::string& dir, const std::string& name) {
    if (!dir.empty() && dir.back() == '/') return dir + name;
    return dir + "/" + name;
}

// A Windows path taken apart: its drive ('a' to 'z'; 0 for a path relative
// to the current directory, whose components then come first, from the host
// root) and its components, "." and empty ones gone and ".." applied, never
// above the drive's root.
struct Split {
    char drive = 0;
    std::vector<std::string> parts;
};

bool SplitPath(const std::string& windows, Split* split) {
    if (windows.empty()) return false;
    auto isSep = [](char c) { return c == '\\' || c == '/'; };
    size_t pos = 0;
    const unsigned char first = static_cast<unsigned char>(windows[0]);
    if (windows.size() >= 2 && windows[1] == ':' &&
        ((first >= 'A' && first <= 'Z') || (first >= 'a' && first <= 'z'))) {
        split->drive = static_cast<char>(first | 0x20);
        pos = 2;
    } else if (isSep(windows[0])) {
        if (windows.size() >= 2 && isSep(windows[1])) return false;  // UNC: no network here
        split->drive = 'z';
    } else {
        char cwd[4096];
        if (getcwd(cwd, sizeof cwd) == nullptr) return false;
        const std::string dir = cwd;
        size_t from = 0;
        for (size_t i = 0; i <= dir.size(); ++i) {
            if (i < dir.size() && dir[i] != '/') continue;
            if (i > from) split->parts.push_back(dir.substr(from, i - from));
            from = i + 1;
        }
    }
    size_t start = pos;
    for (size_t i = pos; i <= windows.size(); ++i) {
        if (i < windows.size() && !isSep(windows[i])) continue;
        std::string part = windows.substr(start, i - start);
        start = i + 1;
        if (part.empty() || part == ".") continue;
        if (part == "..") {
            if (!split->parts.empty()) split->parts.pop_back();
            continue;
        }
        if (part.find('\0') != std::string::npos) return false;
        split->parts.push_back(std::move(part));
    }
    return true;
}

// How the folder made of the first `count` components is asked for, in
// this prefix or drive; the cache's key is that spelling folded.
std::string FolderSpelling(const Split& split, size_t count) {
    std::string spelling = DriveSource(split.drive);
    spelling += '|';
    spelling += split.drive != 0 ? split.drive : '.';
    for (size_t i = 0; i < count; ++i) {
        spelling += '\\';
        spelling += split.parts[i];
    }
    return spelling;
}

void FolderKey(const Split& split, size_t count, std::u16string* key, std::string* spelling) {
    *spelling = FolderSpelling(split, count);
    *key = Folded(*spelling);
}

// The host folder cached for the first `count` components (count > 0).
bool CachedFolder(const Split& split, size_t count, std::u16string* key, std::string* host) {
    const std::string spelling = FolderSpelling(split, count);
    if (DirCache::Instance().FindLast(spelling, key, host)) return true;
    *key = Folded(spelling);
    return DirCache::Instance().Find(*key, spelling, host);
}

// Maps every component from the drive's root on: each tried with its exact
// case, then through its folder's folded index. Each folder on the way is
// remembered.
int FullResolve(const Split& split, std::string* host) {
    std::string current;
    if (split.drive == 0) {
        current = "/";
    } else if (!DriveRoot(split.drive, &current)) {
        for (const std::string& part : split.parts) current = current.empty() ? current : JoinHost(current, part);
        *host = current;
        return kMapBadPath;
    }
    std::u16string key;
    std::string spelling;
    for (size_t i = 0; i < split.parts.size(); ++i) {
        const std::string exact = JoinHost(current, split.parts[i]);
        std::string found;
        if (NameExists(exact)) {
            current = exact;
        } else if (FindInsensitive(current, split.parts[i], &found) == DirCache::kNameFound) {
            current = JoinHost(current, found);
        } else {
            // Missing: the rest is spelled as given.
            current = exact;
            for (size_t j = i + 1; j < split.parts.size(); ++j) current = JoinHost(current, split.parts[j]);
            *host = current;
            return i + 1 == split.parts.size() ? kMapMissing : kMapBadPath;
        }
        if (i + 1 < split.parts.size()) {
            FolderKey(split, i + 1, &key, &spelling);
            DirCache::Instance().Remember(key, spelling, current);
        }
    }
    *host = current;
    return kMapFound;
}

}  // namespace

int MapUtf8Path(const std::string& windows, std::string* host) {
    host->clear();
    Split split;
    if (!SplitPath(windows, &split)) return kMapBadPath;
    const size_t n = split.parts.size();
    std::u16string key;
    std::string dir;
    if (n >= 2 && CachedFolder(split, n - 1, &key, &dir)) {
        const std::string exact = JoinHost(dir, split.parts[n - 1]);
        std::string found;
        if (NameExists(exact)) {
            *host = exact;
            return kMapFound;
        }
        switch (FindInsensitive(dir, split.parts[n - 1], &found)) {
            case DirCache::kNameFound: *host = JoinHost(dir, found); return kMapFound;
            case DirCache::kNameMissing: *host = exact; return kMapMissing;
            case DirCache::kFolderGone: DirCache::Instance().Forget(key); break;
        }
    }
    return FullResolve(split, host);
}

namespace {

std::vector<std::string> HostParts(const std::string& path) {
    std::vector<std::string> parts;
    size_t from = 0;
    for (size_t i = 0; i <= path.size(); ++i) {
        if (i < path.size() && path[i] != '/') continue;
        if (i > from) parts.push_back(path.substr(from, i - from));
        from = i + 1;
    }
    return parts;
}

// A name given for a name on disk: the same in any case, or its short name.
bool NamesMatch(const std::string& given, const std::string& onDisk) {
    if (given == onDisk) return true;
    const std::u16string folded = Folded(given);
    if (folded == Folded(onDisk)) return true;
    std::u16string wide;
    Utf8ToUtf16(onDisk.data(), onDisk.size(), false, &wide);
    return !IsDosName(wide) && folded == Fold(ShortName(wide));
}

}  // namespace

bool IsWithin(const std::string& path, const std::string& folder) {
    const std::vector<std::string> inner = HostParts(path), outer = HostParts(folder);
    if (inner.size() < outer.size()) return false;
    for (size_t i = 0; i < outer.size(); ++i) {
        if (!NamesMatch(inner[i], outer[i])) return false;
    }
    return true;
}

int MapPath(const char* windowsCp932, std::string* host) {
    host->clear();
    if (windowsCp932 == nullptr) return kMapBadPath;
    std::string utf8;
    if (!Cp932ToUtf8(windowsCp932, &utf8)) return kMapBadPath;
    return MapUtf8Path(utf8, host);
}

namespace {

// A path "X:\...\name" taken apart without a look at the disk: its
// folder as spelled, after its drive's source, and its last name. False for
// any other path (a relative one depends on the current directory).
bool SpelledFolder(const std::string& utf8, std::string* spelled, std::string* name) {
    if (utf8.size() < 3 || utf8[1] != ':') return false;
    const unsigned char letter = static_cast<unsigned char>(utf8[0]);
    if (!((letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z'))) return false;
    size_t cut = utf8.size() - 1;  // the last separator
    while (cut > 2 && utf8[cut] != '\\' && utf8[cut] != '/') --cut;
    if (utf8[cut] != '\\' && utf8[cut] != '/') return false;
    name->assign(utf8, cut + 1, std::string::npos);
    if (name->empty() || *name == "." || *name == "..") return false;
    *spelled = DriveSource(static_cast<char>(letter | 0x20));
    *spelled += '|';
    spelled->append(utf8, 0, cut);
    return true;
}

// The first step of OpenMapped: a path in the folder a caller named last,
// by the same bytes, opened in it without the path's conversion. The
// drive's source is built into a string each thread keeps.
bool OpenInRawFolder(const char* windowsCp932, OpenAt open, int* fd, std::string* dir, std::string* name) {
    const unsigned char letter = static_cast<unsigned char>(windowsCp932[0]);
    if (!((letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z')) || windowsCp932[1] != ':') {
        return false;
    }
    thread_local std::string source;
    DriveSourceInto(static_cast<char>(letter | 0x20), &source);
    return DirCache::Instance().OpenRaw(windowsCp932, source, open, fd, dir, name);
}

// Notes the CP932 form of the folder that `spelled` names, when the name
// after it is plain ASCII (so that its bytes end the path as they end the
// UTF-8 form).
void NoteRawFolder(const char* windowsCp932, const std::string& spelled, const std::string& name) {
    for (char c : name) {
        if (static_cast<unsigned char>(c) >= 0x80) return;
    }
    const size_t length = std::strlen(windowsCp932);
    if (length < name.size() + 1) return;
    const size_t folder = length - name.size();
    if (windowsCp932[folder - 1] != '\\' && windowsCp932[folder - 1] != '/') return;
    const unsigned char letter = static_cast<unsigned char>(windowsCp932[0]);
    DirCache::Instance().NoteRaw(spelled, windowsCp932, folder, DriveSource(static_cast<char>(letter | 0x20)));
}

}  // namespace

int OpenMapped(const char* windowsCp932, OpenAt open, int* mapped) {
    *mapped = kMapBadPath;
    if (windowsCp932 == nullptr) return -1;
    std::string name, dir;
    int fd = -1;
    errno = 0;
    bool cached = OpenInRawFolder(windowsCp932, open, &fd, &dir, &name);
    int error = errno;
    if (cached && (fd >= 0 || (error != ENOENT && error != ENOTDIR))) {
        *mapped = kMapFound;
        return fd;
    }
    std::string utf8;
    if (!Cp932ToUtf8(windowsCp932, &utf8)) return -1;
    // A walk asks for every file of a folder by one spelling of the folder:
    // once that spelling led to the folder last resolved, it leads there
    // again without the path being taken apart.
    std::string spelled;
    const bool plain = SpelledFolder(utf8, &spelled, &name);
    if (!cached && plain) {
        errno = 0;
        cached = DirCache::Instance().OpenSpelled(spelled, name, open, &fd, &dir);
        error = errno;
        if (cached) NoteRawFolder(windowsCp932, spelled, name);
    }
    Split split;
    std::u16string key;
    if (!cached) {
        if (!SplitPath(utf8, &split)) return -1;
        const size_t n = split.parts.size();
        cached = n >= 2 && CachedFolder(split, n - 1, &key, &dir);
        if (cached) {
            name = split.parts[n - 1];
            if (plain) DirCache::Instance().NoteSpelled(spelled, dir);
            errno = 0;
            fd = DirCache::Instance().OpenInLast(dir, name, open);
            error = errno;
        }
    }
    if (cached) {
        *mapped = kMapFound;
        if (fd >= 0 || (error != ENOENT && error != ENOTDIR)) {
            errno = error;
            return fd;
        }
        std::string found;
        switch (FindInsensitive(dir, name, &found)) {
            case DirCache::kNameFound: return open(AT_FDCWD, JoinHost(dir, found));
            case DirCache::kNameMissing: *mapped = kMapMissing; return -1;
            case DirCache::kFolderGone: break;
        }
        if (split.parts.empty() && !SplitPath(utf8, &split)) return -1;
        std::string folder;
        if (key.empty()) FolderKey(split, split.parts.size() - 1, &key, &folder);
        DirCache::Instance().Forget(key);
    }
    std::string host;
    *mapped = FullResolve(split, &host);
    return *mapped == kMapFound ? open(AT_FDCWD, host) : -1;
}

int CauseFromErrno(int error, bool creating) {
    switch (error) {
        case ENOENT: return creating ? kCauseBadPath : kCauseFileNotFound;
        case ENOTDIR:
        case ENAMETOOLONG:
        case ELOOP: return kCauseBadPath;
        case EMFILE:
        case ENFILE: return kCauseTooManyOpenFiles;
        case EACCES:
        case EPERM:
        case EISDIR:
        case ENXIO:  // a socket, or a device without its driver
        case EROFS: return kCauseAccessDenied;
        case EIO: return kCauseHardIo;
        case ENOSPC:
        case EDQUOT: return kCauseDiskFull;
        default: return kCauseGeneric;
    }
}

int OpenForReading(const std::string& host) { return OpenForReadingAt(AT_FDCWD, host); }

int OpenForReadingAt(int dir, const std::string& path) {
    if (InjectedFailure()) {
        ThrowIfNoMemory(errno);
        return -1;
    }
    // Reading the store leaves its access times as they were, where the
    // system lets us: O_NOATIME needs the file's owner (or CAP_FOWNER), and
    // once it is refused it is not asked for again.
#ifdef O_NOATIME
    constexpr int kNoAtime = O_NOATIME;
#else
    constexpr int kNoAtime = 0;
#endif
    static std::atomic<bool> noAtime{kNoAtime != 0};
    int fd;
    do {
        const bool keep = noAtime.load(std::memory_order_relaxed);
        fd = openat(dir, path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | (keep ? kNoAtime : 0));
        if (fd < 0 && errno == EPERM && keep) {
            noAtime.store(false, std::memory_order_relaxed);
            errno = EINTR;  // once more without it
        }
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) ThrowIfNoMemory(errno);
    return fd;
}

bool KeepRegular(int fd, long long* size, int* cause) {
    struct stat st;
    if (fstat(fd, &st) != 0) {
        *cause = CauseFromErrno(errno);
    } else if (!S_ISREG(st.st_mode)) {
        *cause = kCauseAccessDenied;
    } else {
        *size = static_cast<long long>(st.st_size);
        *cause = kCauseNone;
        return true;
    }
    close(fd);
    return false;
}

int OpenRegular(const std::string& host, long long* size, int* cause) {
    const int fd = OpenForReading(host);
    if (fd < 0) {
        *cause = CauseFromErrno(errno);
        return -1;
    }
    return KeepRegular(fd, size, cause) ? fd : -1;
}

bool ReadWholeFile(const std::string& host, size_t maxBytes, std::string* bytes, int* cause) {
    int ignored;
    int& why = cause != nullptr ? *cause : ignored;
    bytes->clear();
    long long size = 0;
    const int fd = OpenRegular(host, &size, &why);
    if (fd < 0) return false;
    // The descriptor goes back also when the string cannot grow.
    struct Closer {
        int fd;
        ~Closer() { close(fd); }
    } closer{fd};
    if (static_cast<unsigned long long>(size) > maxBytes) {
        why = kCauseAccessDenied;
        return false;
    }
    bytes->reserve(static_cast<size_t>(size));
    char buffer[65536];
    why = kCauseNone;
    for (;;) {
        const ssize_t got = InjectedFailure() ? -1 : read(fd, buffer, sizeof buffer);
        if (got < 0) {
            if (errno == EINTR) continue;
            ThrowIfNoMemory(errno);
            why = CauseFromErrno(errno);
            break;
        }
        if (got == 0) break;
        if (bytes->size() + static_cast<size_t>(got) > maxBytes) {
            why = kCauseAccessDenied;  // the file grew past the limit while being read
            break;
        }
        bytes->append(buffer, static_cast<size_t>(got));
    }
    if (why != kCauseNone) bytes->clear();
    return why == kCauseNone;
}

}  // namespace posix
}  // namespace qvp
