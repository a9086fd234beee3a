// Files.cpp - files, directory listings and system folders on POSIX.
//
// Text mode follows the Windows C runtime: CR LF is read as LF, a lone CR
// stays, and a Ctrl-Z byte (0x1A) ends the file. Listings follow Wine: "."
// and ".." first, then the names sorted without regard to case (ties by
// byte order), so that every machine lists in one order. A pattern matches
// a long name or its short 8.3 name, so "*.box" finds "beta.boxes" too.
// Names come back in code page 932 as Wine gives them: a character without a
// CP932 form (each half of a surrogate pair, a byte that is no UTF-8) becomes
// '?', so such a name is listed but names nothing when opened.
#include "platform/platform.h"
#include "platform/posix/DirStream.h"
#include "platform/posix/HostPath.h"
#include "platform/posix/PosixText.h"

#include <dirent.h>
#include <errno.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace qvp {

// A file read through its descriptor: a binary read goes straight into the
// caller's buffer (a message of known size costs one read), and only lines
// and text mode go through a buffer of the file's own, taken on first need
// and no larger than the file.
struct File {
    int fd;
    long long size;  // taken by the fstat of the open
    bool text;
    bool error;  // a read failed: what was read is not the whole file
    bool eof;    // a read has met the end
    bool ctrlZ;  // text mode: the end was a Ctrl-Z byte
    char* buffer;
    size_t capacity, pos, end;  // buffer[pos, end) is read and not yet given out
};

struct FindHandle {
    std::vector<FindData> entries;
    size_t next;
};

namespace {

constexpr int kEnd = -1;
constexpr int kCtrlZ = 0x1A;

constexpr size_t kMaxBuffer = 65536;

// read(2), again when interrupted: the bytes read, 0 at the end, -1 on error.
ssize_t ReadFd(int fd, void* out, size_t bytes) {
    ssize_t got;
    do {
        got = read(fd, out, bytes);
    } while (got < 0 && errno == EINTR);
    return got;
}

// The next byte, or kEnd at the end; a failed read is noted as an error and
// ends the file there. No buffer to be had is no error of the file: it
// throws std::bad_alloc.
int NextByte(File* file) {
    if (file->pos == file->end) {
        if (file->buffer == nullptr) {
            // One more than the file's size, so that its end shows in the first read.
            const unsigned long long wanted = static_cast<unsigned long long>(file->size) + 1;
            file->capacity = wanted < kMaxBuffer ? static_cast<size_t>(wanted) : kMaxBuffer;
            file->buffer = static_cast<char*>(Malloc(file->capacity));
            if (file->buffer == nullptr) throw std::bad_alloc();
        }
        const ssize_t got = ReadFd(file->fd, file->buffer, file->capacity);
        if (got <= 0) {
            if (got < 0) file->error = true;
            return kEnd;
        }
        file->pos = 0;
        file->end = static_cast<size_t>(got);
    }
    return static_cast<unsigned char>(file->buffer[file->pos++]);
}

int TextGet(File* file) {
    if (file->ctrlZ) return kEnd;
    const int c = NextByte(file);
    if (c == kCtrlZ) {
        file->ctrlZ = true;
        return kEnd;
    }
    if (c == '\r') {
        const int next = NextByte(file);
        if (next == '\n') return '\n';
        if (next != kEnd) --file->pos;  // the byte stays in the buffer
    }
    return c;
}

int Get(File* file) {
    const int c = file->text ? TextGet(file) : NextByte(file);
    if (c == kEnd) file->eof = true;
    return c;
}

// Wildcard match of folded UTF-16 text: '*' any run, '?' one unit. The walk
// backs up only to the last '*', so it stays within pattern x name steps.
bool Match(const std::u16string& pattern, const std::u16string& name) {
    size_t p = 0, n = 0, star = std::u16string::npos, mark = 0;
    while (n < name.size()) {
        if (p < pattern.size() && (pattern[p] == u'?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (p < pattern.size() && pattern[p] == u'*') {
            star = p++;
            mark = n;
        } else if (star != std::u16string::npos) {
            p = star + 1;
            n = ++mark;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == u'*') ++p;
    return p == pattern.size();
}

// Windows lets "x.*" match "x" as well: an extension of ".*" may be absent.
bool MatchName(const std::u16string& pattern, const std::u16string& name) {
    if (Match(pattern, name)) return true;
    const size_t n = pattern.size();
    return n >= 2 && pattern[n - 2] == u'.' && pattern[n - 1] == u'*' &&
           name.find(u'.') == std::u16string::npos && Match(pattern.substr(0, n - 2), name);
}

// The folded pattern against a name: its folded long form, else the short
// name of a name that is no DOS name.
bool MatchLongOrShort(const std::u16string& pattern, const std::u16string& wide, const std::u16string& folded) {
    if (MatchName(pattern, folded)) return true;
    return !posix::IsDosName(wide) && MatchName(pattern, posix::Fold(posix::ShortName(wide)));
}

std::u16string FoldedWide(const std::string& utf8) {
    std::u16string wide;
    posix::Utf8ToUtf16(utf8.data(), utf8.size(), false, &wide);
    return posix::Fold(std::move(wide));
}

// A host path seen through Z:, in CP932: "/tmp" -> "Z:\tmp".
bool ThroughZ(const std::string& hostPath, std::string* out) {
    std::string windows = "Z:";
    for (char c : hostPath) windows += c == '/' ? '\\' : c;
    while (windows.size() > 3 && windows.back() == '\\') windows.pop_back();
    if (windows.size() == 2) windows += '\\';
    return posix::Utf8ToCp932Exact(windows, out);
}

// Copies text and its NUL as the Win32 folder calls do: the length without
// NUL when it fits, else the size needed with the NUL.
uint32_t CopyOut(const std::string& text, char* buffer, uint32_t size) {
    if (buffer == nullptr || size < text.size() + 1) return static_cast<uint32_t>(text.size() + 1);
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return static_cast<uint32_t>(text.size());
}

}  // namespace

using posix::MapPath;

// ------------------------------------------------------------- folders ----

// The machine's own answer, as Wine gives it to GetWindowsDirectory.
uint32_t WindowsDirectory(char* buffer, uint32_t size) { return CopyOut(RegistryWindowsDirectory(), buffer, size); }

uint32_t TempPath(uint32_t size, char* buffer) {
    const char* tmp = std::getenv("TMPDIR");
    std::string windows;
    if (tmp == nullptr || tmp[0] != '/' || !ThroughZ(tmp, &windows)) ThroughZ("/tmp", &windows);
    if (windows.back() != '\\') windows += '\\';
    return CopyOut(windows, buffer, size);
}

char* GetCwd(char* buffer, int size) {
    char cwd[4096];
    std::string windows;
    if (getcwd(cwd, sizeof cwd) == nullptr || !ThroughZ(cwd, &windows)) return nullptr;
    if (buffer == nullptr) {
        // _getcwd allocates when given no buffer: at least `size` bytes.
        const size_t bytes = std::max(static_cast<size_t>(size > 0 ? size : 0), windows.size() + 1);
        buffer = static_cast<char*>(std::malloc(bytes));
        if (buffer == nullptr) return nullptr;
    } else if (size <= 0 || static_cast<size_t>(size) < windows.size() + 1) {
        return nullptr;
    }
    std::memcpy(buffer, windows.c_str(), windows.size() + 1);
    return buffer;
}

// --------------------------------------------------------------- files ----

int Access(const char* path) {
    std::string host;
    struct stat st;
    if (MapPath(path, &host) != posix::kMapFound) return -1;
    if (stat(host.c_str(), &st) == 0) return 0;
    posix::ThrowIfNoMemory(errno);
    return -1;
}

int Remove(const char* path) {
    std::string host;
    if (MapPath(path, &host) != posix::kMapFound) return -1;
    return unlink(host.c_str()) == 0 ? 0 : -1;
}

File* FileOpen(const char* path, const char* mode, int* cause) {
    int ignored;
    int& why = cause != nullptr ? *cause : ignored;
    why = kCauseGeneric;
    if (mode == nullptr || mode[0] != 'r' || std::strpbrk(mode, "wa+") != nullptr) return nullptr;
    int mapped = posix::kMapBadPath;
    const int fd = posix::OpenMapped(path, posix::OpenForReadingAt, &mapped);
    if (fd < 0) {
        why = mapped == posix::kMapFound ? posix::CauseFromErrno(errno) : mapped;
        return nullptr;
    }
    long long size = 0;
    if (!posix::KeepRegular(fd, &size, &why)) return nullptr;
    File* file = new (std::nothrow)
        File{fd, size, std::strchr(mode, 'b') == nullptr, false, false, false, nullptr, 0, 0, 0};
    if (file == nullptr) {
        close(fd);
        throw std::bad_alloc();
    }
    why = kCauseNone;
    return file;
}

// A read that fails ends the file there and is noted; one that fails for
// want of memory throws, and the file stays as it was.
bool ReadFails(File* file) {
    if (file->error) return true;
    if (!posix::InjectedFailure()) return false;
    posix::ThrowIfNoMemory(errno);
    file->error = file->eof = true;
    return true;
}

char* FileGets(char* buffer, int n, File* file) {
    if (buffer == nullptr || file == nullptr || n <= 0 || ReadFails(file)) return nullptr;
    int stored = 0;
    bool ended = false;
    while (stored < n - 1) {
        // A run of bytes that need no care (no line end, no CR, no Ctrl-Z)
        // goes from the buffer at once; the byte after it goes through Get.
        if (!file->ctrlZ && file->pos < file->end) {
            const char* from = file->buffer + file->pos;
            const size_t room = std::min(file->end - file->pos, static_cast<size_t>(n - 1 - stored));
            size_t run = 0;
            while (run < room && from[run] != '\n' && from[run] != '\r' && from[run] != kCtrlZ) ++run;
            std::memcpy(buffer + stored, from, run);
            stored += static_cast<int>(run);
            file->pos += run;
            if (stored == n - 1) break;
        }
        const int c = Get(file);
        if (c == kEnd) {
            ended = true;
            break;
        }
        buffer[stored++] = static_cast<char>(c);
        if (c == '\n') break;
    }
    buffer[stored] = 0;
    if (stored == 0 && ended) return nullptr;
    return buffer;
}

size_t FileRead(void* buffer, size_t bytes, File* file) {
    if (buffer == nullptr || file == nullptr || ReadFails(file)) return 0;
    char* out = static_cast<char*>(buffer);
    size_t got = 0;
    if (file->text) {
        while (got < bytes) {
            const int c = Get(file);
            if (c == kEnd) break;
            out[got++] = static_cast<char>(c);
        }
        return got;
    }
    // What lines left in the buffer first, then straight from the file.
    const size_t buffered = std::min(bytes, file->end - file->pos);
    if (buffered > 0) std::memcpy(out, file->buffer + file->pos, buffered);
    file->pos += buffered;
    got = buffered;
    while (got < bytes) {
        const ssize_t n = ReadFd(file->fd, out + got, bytes - got);
        if (n <= 0) {
            if (n < 0) file->error = true;
            file->eof = true;
            break;
        }
        got += static_cast<size_t>(n);
    }
    return got;
}

bool FileEof(File* file) { return file == nullptr || file->eof; }

bool FileError(File* file) { return file == nullptr || file->error; }

void FileRewind(File* file) {
    if (file == nullptr) return;
    lseek(file->fd, 0, SEEK_SET);
    file->pos = file->end = 0;
    file->eof = file->error = false;
    file->ctrlZ = false;
}

long FileLength(File* file) { return file == nullptr ? -1 : static_cast<long>(file->size); }

void FileClose(File* file) {
    if (file == nullptr) return;
    close(file->fd);
    Free(file->buffer);
    delete file;
}

// ------------------------------------------------------------ listings ----

FindHandle* FindFirst(const char* pattern, FindData* data) {
    if (pattern == nullptr || data == nullptr) return nullptr;
    std::string utf8;
    if (!posix::Cp932ToUtf8(pattern, &utf8)) return nullptr;
    size_t cut = utf8.find_last_of("\\/");
    if (cut == std::string::npos && utf8.size() >= 2 && utf8[1] == ':') cut = 1;
    const std::string dirPart = cut == std::string::npos ? std::string(".") : utf8.substr(0, cut + 1);
    const std::string namePattern = cut == std::string::npos ? utf8 : utf8.substr(cut + 1);
    if (namePattern.empty()) return nullptr;

    std::string hostDir;
    if (posix::MapUtf8Path(dirPart, &hostDir) != posix::kMapFound) return nullptr;
    posix::DirStream dir(hostDir);
    if (!dir.IsOpen()) return nullptr;

    struct Entry {
        std::u16string folded;
        FindData data;
    };
    const std::u16string folded = FoldedWide(namePattern);
    std::vector<Entry> entries;
    while (const char* entryName = dir.Next()) {
        const std::string name = entryName;
        if (name == "." || name == "..") continue;
        std::u16string wide;
        posix::Utf8ToUtf16(name.data(), name.size(), false, &wide);
        const std::string cp932 = posix::Utf16ToCp932(wide.data(), wide.size());
        if (cp932.size() >= sizeof data->name) continue;
        std::u16string key = posix::Fold(wide);
        if (!MatchLongOrShort(folded, wide, key)) continue;
        struct stat st;
        const std::string host = hostDir + (hostDir.back() == '/' ? "" : "/") + name;
        if (stat(host.c_str(), &st) != 0) {
            posix::ThrowIfNoMemory(errno);
            continue;  // a dangling link names nothing
        }
        Entry e{std::move(key), FindData{}};
        e.data.attrib = S_ISDIR(st.st_mode) ? kAttribDirectory : kAttribArchive;
        std::memcpy(e.data.name, cp932.c_str(), cp932.size() + 1);
        entries.push_back(std::move(e));
    }
    // A listing cut short by a failed read is no listing: what it would
    // leave out must not read as gone.
    if (dir.Failed()) return nullptr;
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        if (a.folded != b.folded) return a.folded < b.folded;
        return std::strcmp(a.data.name, b.data.name) < 0;
    });

    std::unique_ptr<FindHandle> handle(new FindHandle);
    handle->next = 0;
    for (const char* dot : {".", ".."}) {
        if (!MatchName(folded, FoldedWide(dot))) continue;
        FindData d{};
        d.attrib = kAttribDirectory;
        std::strcpy(d.name, dot);
        handle->entries.push_back(d);
    }
    handle->entries.reserve(handle->entries.size() + entries.size());
    for (const Entry& e : entries) handle->entries.push_back(e.data);
    if (handle->entries.empty()) return nullptr;
    *data = handle->entries[0];
    handle->next = 1;
    return handle.release();
}

bool FindNext(FindHandle* handle, FindData* data) {
    if (handle == nullptr || data == nullptr || handle->next >= handle->entries.size()) return false;
    *data = handle->entries[handle->next++];
    return true;
}

void FindClose(FindHandle* handle) { delete handle; }

}  // namespace qvp
