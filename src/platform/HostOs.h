// The host's one seam to the operating system: the terminal test, files
// created only when new, directories, the rename that never replaces,
// where the mail client's store lies, a copied Windows drive (the library's
// platform layer reads it and answers for it), and on Windows the
// UTF-16 command line and console. Paths are UTF-8 with '/' (Windows also
// takes '\'), converted only here; nothing else in the tool knows the
// platform. posix/HostOs.cpp is the POSIX side, win32/HostOs.cpp the Windows one.
#ifndef TQNRALM_TOOL_OS_H
#define TQNRALM_TOOL_OS_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace tqnralm {
namespace os {

// The program's arguments in UTF-8. On Windows they come from the UTF-16
// command line: argv holds them in the ANSI code page, which has no form for
// many names (a Chinese folder, an emoji).
std::vector<std::string> ProgramArguments(int argc, char** argv);
// stdout and stderr take bytes as they are: on Windows no CR is added before
// each LF, so the raw text of a message leaves unchanged.
void UseBinaryStreams();
// Text for a person on stdout or stderr: a console shows it as characters
// (on Windows through WriteConsoleW, whatever the console's code page); a
// file or a pipe receives the UTF-8 bytes.
void WriteText(std::FILE* stream, const std::string& utf8);
// A path as this platform writes it for a person: '\' between the names on
// Windows.
std::string DisplayPath(const std::string& path);

// Whether stderr is a terminal (on Windows: a console), for the status line.
bool StderrIsTerminal();

// What stands between a Maildir file's unique part and its flags: ':', and
// '!' on Windows, whose file names cannot hold a colon.
char MaildirInfoSeparator();

// The outcome of creating something that must be new.
enum class Created { kNew, kExists, kFailed };

// A file opened for writing that did not exist before (O_EXCL, CREATE_NEW).
// Every failure gives a message in `error` (the path and the system's reason).
class NewFile {
public:
    NewFile() = default;
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    Created Create(const std::string& path, std::string* error);
    // A file of this export's own (a temporary name): made, or emptied
    // when an earlier run that stopped left it.
    bool CreateOrEmpty(const std::string& path, std::string* error);
    // Opens a file that exists for adding to it, cut to `length` bytes
    // first; false when it is shorter than that.
    bool OpenAt(const std::string& path, uint64_t length, std::string* error);
    // Cuts the open file to `length` bytes; later writes go to its end.
    bool Truncate(uint64_t length, std::string* error);
    // Lets the system start writing these bytes to the disk now, so that a
    // later Sync waits less (posix/HostOs.cpp; where there is no such call,
    // nothing).
    void StartWriteBack(uint64_t offset, uint64_t size);
    bool Write(const char* data, size_t size, std::string* error);
    // Flushes the file to the disk.
    bool Sync(std::string* error);
    // Sets the time of the last change (seconds since 1970, UTC), after the
    // last write.
    bool SetTime(int64_t seconds, std::string* error);
    bool Close(std::string* error);
    bool IsOpen() const { return handle_ != -1; }

private:
    intptr_t handle_ = -1;
    std::string path_;
};

// Holds OUTDIR while one export writes into it, so that a second export
// into the same folder (another tqnralm, the assistant) is refused before it
// writes anything. The system drops the lock when the process ends, also
// when it is killed or the power goes, and no trace of it stays in the
// finished folder: on POSIX an flock on the folder itself; on Windows the
// file manifest.json.lock in it, opened for no one else and deleted by the
// system when its handle closes (InspectFolder does not count it).
class OutDirLock {
public:
    // kUnavailable: the folder's file system has no locks (`error` says
    // why); the export goes on without one.
    enum class Result { kHeld, kBusy, kUnavailable };

    OutDirLock() = default;
    OutDirLock(const OutDirLock&) = delete;
    OutDirLock& operator=(const OutDirLock&) = delete;
    ~OutDirLock();

    Result Acquire(const std::string& dir, std::string* error);
    // Whether Acquire was called, whatever it answered.
    bool tried() const { return tried_; }

private:
    intptr_t handle_ = -1;
    bool tried_ = false;
};

// One directory: kNew when made, kExists when a directory was there already.
Created MakeDirectory(const std::string& path, std::string* error);
// A directory and its missing parents.
bool MakeDirectories(const std::string& path, std::string* error);

enum class Folder { kMissing, kEmpty, kNotEmpty, kNotAFolder };
Folder InspectFolder(const std::string& path);
bool Exists(const std::string& path);

// Renames `from` to `to` only when `to` does not exist.
bool RenameNew(const std::string& from, const std::string& to, std::string* error);
// Removes a file this run created (the unfinished manifest).
void RemoveFile(const std::string& path);

// Durability and stopping (each platform's half; the stop flag in HostStop.cpp).
// Renames `from` over `to` in one step (the journal only, never mail).
bool RenameOver(const std::string& from, const std::string& to, std::string* error);
// Makes the names made or renamed in a directory last through a power cut.
bool SyncDirectory(const std::string& path, std::string* error);
// Flushes the files just written (and closed) to the disk; `paths` all lie
// on the file system of the first one.
bool SyncFiles(const std::vector<std::string>& paths, std::string* error);
// From now on SIGINT and SIGTERM (Ctrl+C, Ctrl+Break, closing the console)
// only ask the export to stop; a second one ends the process at once.
void CatchStopSignals();
// Asks the export to stop; true when it had been asked already.
bool RequestStop();
bool StopRequested();
// Forgets a stop asked for, before another export in the same process.
void ClearStopRequest();
// Sends this process the stop signal (SIGINT; on Windows it only asks).
void RaiseStop();
// Ends the process at once, as SIGKILL does (the tests' kill points).
[[noreturn]] void KillSelf();

// The absolute form of a path with the links of its existing part resolved
// (on Windows: short names made long), for comparing two paths.
std::string AbsolutePath(const std::string& path);

// Where the library reads the mail client's machine, for the manifest: the
// Wine prefix, or "this machine".
std::string SourceDescription();

// A folder that holds the mail client's store: as the client names it
// ("C:\AL-Mail\Mailbox\Account1"; empty for the whole machine) and the host
// folder the library reads it from.
struct StoreFolder {
    std::string windowsPath, hostPath;
};
// The folders of the store, an export must write below none of them: on a
// Wine prefix or a copied drive the whole machine, and each account folder
// (from the account's name) where the library finds it; on Windows the
// installation folder, the mailbox folders and the account folders.
std::vector<StoreFolder> StoreFolders(const std::vector<std::string>& accountFolders);
// The store folder that holds `path`, by the library's path rules (names in
// any case, short names); nullptr when none does.
const StoreFolder* FolderHolding(const std::vector<StoreFolder>& folders, const std::string& path);

// A copied Windows system drive: the library reads the drive at
// `root` and the profile `user` (empty: the one that used the client) from
// the call on; CopiedDrive() is that root, empty for a Wine prefix.
void ReadCopiedDrive(const std::string& root, const std::string& user);
std::string CopiedDrive();

// Where the drive keeps its registry and profiles, as host paths (as far as
// they exist, then as named), found as the library finds them.
struct DriveProfile {
    std::string name, hive;  // the profile folder's name, its NTUSER.DAT
};
struct DriveLayout {
    bool hasSoftware = false;
    std::string software, users, oldUsers;  // Software hive, Users, Documents and Settings
    std::vector<DriveProfile> profiles;      // those with an NTUSER.DAT, by path
    bool hasNamed = false;                   // the user named to ReadCopiedDrive has a profile:
    DriveProfile named;                      // this one (its name in any case, or its short name)
};
DriveLayout InspectCopiedDrive();

// Whether a registry hive file holds a key (a path of names separated by
// backslashes, matched in any case). kUnreadable: the file cannot be read or
// is no hive, `error` says why.
enum class Hive { kHasKey, kNoKey, kUnreadable };
Hive ProbeHive(const std::string& path, const std::string& key, std::string* error);

}  // namespace os
}  // namespace tqnralm

#endif
