// DirCache.cpp - the remembered folders and the folded name indexes.
//
// An index answers "no such name" for a folder as long as the folder's time
// stamp, device and inode are what they were when it was listed. A time
// stamp only moves at the file system's granularity (a second on some), so
// a listing taken within two seconds of the folder's last change is "racy":
// its answers hold for the lookup that built it, and the next miss lists the
// folder again. Both maps are bounded: past the limits they start afresh.
#include "platform/posix/DirCache.h"

#include "platform/posix/DirStream.h"
#include "platform/posix/PosixText.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <unistd.h>
#include <sys/stat.h>
#include <time.h>

#include <cstring>
#include <utility>

namespace qvp {
namespace posix {
namespace {

constexpr size_t kMaxFolders = 4096;
constexpr size_t kMaxIndexedNames = 1 << 20;
constexpr long long kRacySeconds = 2;

}  // namespace

DirCache& DirCache::Instance() {
    static DirCache* cache = new DirCache;  // never destroyed: threads may still map paths at exit
    return *cache;
}

bool DirCache::Find(const std::u16string& key, const std::string& spelling, std::string* host) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_folders.find(key);
    if (it == m_folders.end() || it->second.spelling != spelling) return false;
    *host = it->second.host;
    if (m_last.spelling != spelling) {
        ForgetLast();
        m_last = it->second;
        m_lastKey = key;
    }
    return true;
}

bool DirCache::FindLast(const std::string& spelling, std::u16string* key, std::string* host) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_last.spelling.empty() || m_last.spelling != spelling) return false;
    *key = m_lastKey;
    *host = m_last.host;
    return true;
}

bool DirCache::OpenSpelled(const std::string& spelled, const std::string& name,
                           OpenAt open, int* fd, std::string* host) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_lastSpelled.empty() || m_lastSpelled != spelled) return false;
    *fd = OpenInLastLocked(m_last.host, name, open);
    if (*fd < 0) {
        const int error = errno;
        *host = m_last.host;
        errno = error;
    }
    return true;
}

bool DirCache::OpenRaw(const char* path, const std::string& source, OpenAt open, int* fd, std::string* host,
                       std::string* name) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const size_t n = m_lastRaw.size();
    if (n == 0 || std::strncmp(path, m_lastRaw.c_str(), n) != 0 || source != m_lastRawSource) return false;
    // The rest must be one name of plain ASCII, which reads the same in
    // code page 932 and UTF-8.
    const char* rest = path + n;
    size_t length = 0;
    for (; rest[length] != '\0'; ++length) {
        const unsigned char c = static_cast<unsigned char>(rest[length]);
        if (c >= 0x80 || c == '\\' || c == '/') return false;
    }
    if (length == 0 || (rest[0] == '.' && (length == 1 || (length == 2 && rest[1] == '.')))) return false;
    name->assign(rest, length);
    *fd = OpenInLastLocked(m_last.host, *name, open);
    if (*fd < 0) {
        const int error = errno;
        *host = m_last.host;
        errno = error;
    }
    return true;
}

void DirCache::NoteRaw(const std::string& spelled, const char* path, size_t folderLength, const std::string& source) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_lastSpelled.empty() || m_lastSpelled != spelled) return;
    m_lastRaw.assign(path, folderLength);
    m_lastRawSource = source;
}

void DirCache::NoteSpelled(const std::string& spelled, const std::string& host) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_last.spelling.empty() || m_last.host != host || m_lastSpelled == spelled) return;
    m_lastSpelled = spelled;
    m_lastRaw.clear();
    m_lastRawSource.clear();
}

// Under the lock. The strings give their memory back: the tests count the
// blocks the library holds once its folders are forgotten.
void DirCache::ForgetLast() {
    if (m_lastHandle != -1) close(m_lastHandle);
    m_lastHandle = -1;
    std::string().swap(m_last.spelling);
    std::string().swap(m_last.host);
    std::u16string().swap(m_lastKey);
    std::string().swap(m_lastSpelled);
    std::string().swap(m_lastRaw);
    std::string().swap(m_lastRawSource);
}

int DirCache::OpenInLast(const std::string& dir, const std::string& name,
                         OpenAt open) {
    std::lock_guard<std::mutex> lock(m_mutex);
    return OpenInLastLocked(dir, name, open);
}

int DirCache::OpenInLastLocked(const std::string& dir, const std::string& name,
                               OpenAt open) {
    const auto joined = [&] { return !dir.empty() && dir.back() == '/' ? dir + name : dir + "/" + name; };
    if (dir != m_last.host || dir.empty()) return open(AT_FDCWD, joined());
    if (m_lastHandle == -1) {
#ifdef O_PATH
        constexpr int kPathOnly = O_PATH;
#else
        constexpr int kPathOnly = O_RDONLY;
#endif
        m_lastHandle = ::open(dir.c_str(), kPathOnly | O_DIRECTORY | O_CLOEXEC);
        // Without a handle (no descriptor left) the joined path still opens.
        if (m_lastHandle == -1) return open(AT_FDCWD, joined());
    }
    const int fd = open(m_lastHandle, name);
    // A folder deleted (and perhaps made anew) since: the next open takes a
    // handle of what stands under the name now.
    struct stat st;
    if (fd < 0 && errno == ENOENT && fstat(m_lastHandle, &st) == 0 && st.st_nlink == 0) {
        close(m_lastHandle);
        m_lastHandle = -1;
        errno = ENOENT;
    }
    return fd;
}

void DirCache::Remember(const std::u16string& key, const std::string& spelling, const std::string& host) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_folders.size() >= kMaxFolders && m_folders.count(key) == 0) m_folders.clear();
    ForgetLast();
    Folder& folder = m_folders[key];
    folder.spelling = spelling;
    folder.host = host;
}

void DirCache::Forget(const std::u16string& key) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_folders.erase(key);
    ForgetLast();
}

void DirCache::Clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_folders.clear();
    ForgetLast();
    m_indexes.clear();
    m_indexedNames = 0;
}

DirCache::Lookup DirCache::FindName(const std::string& hostDir, const std::u16string& folded, std::string* found) {
    struct stat st;
    if (stat(hostDir.c_str(), &st) != 0) {
        ThrowIfNoMemory(errno);
        return kFolderGone;
    }
    if (!S_ISDIR(st.st_mode)) return kFolderGone;
    const auto answer = [&](const Index& index) {
        auto name = index.names.find(folded);
        if (name == index.names.end()) return kNameMissing;
        *found = name->second;
        return kNameFound;
    };
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_indexes.find(hostDir);
        if (it != m_indexes.end() && !it->second.racy && it->second.seconds == st.st_mtim.tv_sec &&
            it->second.nanoseconds == st.st_mtim.tv_nsec && it->second.device == st.st_dev &&
            it->second.inode == st.st_ino)
            return answer(it->second);
    }
    // List the folder outside the lock; the last listing stored wins.
    Index index;
    index.seconds = st.st_mtim.tv_sec;
    index.nanoseconds = st.st_mtim.tv_nsec;
    index.device = st.st_dev;
    index.inode = st.st_ino;
    DirStream dir(hostDir);
    std::u16string wide;
    while (const char* name = dir.Next()) {
        const size_t length = std::strlen(name);
        Utf8ToUtf16(name, length, false, &wide);
        std::string& slot = index.names[Fold(std::move(wide))];
        if (slot.empty() || std::strcmp(name, slot.c_str()) < 0) slot.assign(name, length);
    }
    // A listing that could not be read whole is not kept, nor taken to say
    // that a name is missing: the caller resolves the path afresh.
    if (dir.Failed()) return kFolderGone;
    struct timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    index.racy = now.tv_sec - index.seconds < kRacySeconds;
    const Lookup result = answer(index);
    std::lock_guard<std::mutex> lock(m_mutex);
    auto old = m_indexes.find(hostDir);
    if (old != m_indexes.end()) {
        m_indexedNames -= old->second.names.size();
        m_indexes.erase(old);
    }
    if (m_indexedNames + index.names.size() > kMaxIndexedNames) {
        m_indexes.clear();
        m_indexedNames = 0;
    }
    m_indexedNames += index.names.size();
    m_indexes.emplace(hostDir, std::move(index));
    return result;
}

}  // namespace posix
}  // namespace qvp
