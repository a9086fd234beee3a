// DirCache.h - what the process remembers of the prefix's folders: the host
// folder each Windows folder resolved to, and an index of a host folder's
// names folded to one case.
//
// Both are process-wide and safe across threads. Neither is ever trusted
// for an answer the disk can contradict cheaply: a cached folder is used
// only as long as the file opened in it is there, and an index only as long
// as its folder's time stamp has not moved since it was listed.
#ifndef QV_PLATFORM_POSIX_DIRCACHE_H
#define QV_PLATFORM_POSIX_DIRCACHE_H

#include <mutex>
#include <string>
#include <unordered_map>

namespace qvp {
namespace posix {

class DirCache {
public:
    // Opens a host path relative to a folder descriptor, as openat(2) does.
    using OpenAt = int (*)(int dir, const std::string& path);

    static DirCache& Instance();

    // The host folder remembered under a folded key, when it was resolved
    // from the same spelling: two host folders whose names differ only in
    // case stay apart, as the full resolve keeps them.
    bool Find(const std::u16string& key, const std::string& spelling, std::string* host);
    // What Find gave last, when asked by that spelling again (and its key):
    // a walk opens every message of a folder, and the folded key of a long
    // path costs more to make than the open.
    bool FindLast(const std::string& spelling, std::u16string* key, std::string* host);
    // OpenInLast in the folder Find gave last, when a file was found in it
    // before by the same spelling of its folder as given (NoteSpelled): the
    // taking apart of the path and its folded key are spared. False, and
    // nothing opened, for another spelling; *host is the folder when the
    // open failed.
    bool OpenSpelled(const std::string& spelled, const std::string& name,
                     OpenAt open, int* fd, std::string* host);
    void NoteSpelled(const std::string& spelled, const std::string& host);
    // The same from the path as the caller gave it, in code page 932: when
    // it is a folder noted as spelled (NoteRaw), then a separator and a
    // plain ASCII name, and the drive's source is still `source`, the name
    // is opened in that folder (*name and, when the open failed, *host are
    // set). Neither the path's conversion nor its spelling is made again.
    bool OpenRaw(const char* path, const std::string& source, OpenAt open, int* fd, std::string* host,
                 std::string* name);
    // Notes the first folderLength bytes of `path` as the CP932 form of the
    // spelled folder, when that is the spelling noted last.
    void NoteRaw(const std::string& spelled, const char* path, size_t folderLength, const std::string& source);
    void Remember(const std::u16string& key, const std::string& spelling, const std::string& host);
    // Opens `name` in the host folder `dir` through `open`: relative to a
    // handle of the folder when it is the one Find gave last (the handle is
    // kept until that changes), which spares the kernel the walk of the
    // whole path for each message; else by the joined path. A folder moved
    // while its handle is kept is read where it went, as an open folder is.
    int OpenInLast(const std::string& dir, const std::string& name,
                   OpenAt open);
    void Forget(const std::u16string& key);
    // Forgets every folder and index (the tests that count the blocks the
    // library holds between two walks).
    void Clear();

    enum Lookup { kNameFound, kNameMissing, kFolderGone };
    // The name on disk, in the host folder, of a name given folded to upper
    // case (the least in byte order when several fold alike). kFolderGone
    // when the host folder is no longer a folder.
    Lookup FindName(const std::string& hostDir, const std::u16string& folded, std::string* found);

private:
    struct Index {
        long long seconds = 0, nanoseconds = 0;  // the folder's time stamp when listed
        unsigned long long device = 0, inode = 0;
        bool racy = false;  // listed too soon after a change to be sure of it
        std::unordered_map<std::u16string, std::string> names;
    };
    struct Folder {
        std::string spelling;
        std::string host;
    };

    void ForgetLast();
    int OpenInLastLocked(const std::string& dir, const std::string& name,
                         OpenAt open);

    std::mutex m_mutex;
    Folder m_last;  // Find's last answer, by its spelling; empty when none
    int m_lastHandle = -1;  // of m_last.host, once a file was opened in it
    std::u16string m_lastKey;
    std::string m_lastSpelled;  // a spelling as given that led to m_last
    std::string m_lastRaw;  // that folder as a caller gave it (CP932), with its separator
    std::string m_lastRawSource;  // and the drive's source then
    std::unordered_map<std::u16string, Folder> m_folders;
    std::unordered_map<std::string, Index> m_indexes;  // by host folder
    size_t m_indexedNames = 0;
};

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_DIRCACHE_H
