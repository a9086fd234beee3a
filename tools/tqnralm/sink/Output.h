// Where an export writes: directories and new files below OUTDIR, one file
// open at a time behind a buffer. In a dry run nothing is touched and only
// the bytes are counted. The first failure is kept for the message.
//
// No file stands under its final name before it is whole. A file of its own
// (a message in Maildir or EML, an address book) is written under a
// temporary name and renamed at the next commit, after the disk holds its
// bytes; the one open file (an mbox) grows by whole messages only, and a
// failed write cuts it back to the last one. Commit flushes all of that to
// the disk, so the journal may then count it.
#ifndef TQNRALM_TOOL_OUTPUT_H
#define TQNRALM_TOOL_OUTPUT_H

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Os.h"

namespace tqnralm {

class Output {
public:
    Output(std::string root, bool dryRun) : root_(std::move(root)), dryRun_(dryRun) {}

    bool dryRun() const { return dryRun_; }
    // A rerun that goes on with an unfinished export: a file that is there
    // already under a final name is taken when it holds what would be
    // written (an empty one where a file is to be filled).
    void SetResuming() { resuming_ = true; }
    // A directory below the root; one that exists already is fine.
    bool MakeDir(const std::string& relative);
    // Opens a new file below the root; a file of that name is a failure.
    bool OpenFile(const std::string& relative);
    // Opens a file of this export again, cut to the `length` bytes that the
    // journal counted.
    bool ReopenFile(const std::string& relative, uint64_t length);
    // Appends to the open file; the bytes of one call are one whole message.
    bool Write(const char* data, size_t size);
    bool Write(const std::string& text) { return Write(text.data(), text.size()); }
    // Closes the open file; `sync` flushes it to the disk first; a `time`
    // of 0 or more (seconds since 1970, UTC) becomes its time of change.
    bool CloseFile(bool sync, int64_t time = -1);
    // A file that holds just these bytes, changed at `time` as CloseFile
    // says: written as `temporary` and renamed to `final` at the next Commit.
    bool WriteNewFile(const std::string& temporary, const std::string& final, const char* data, size_t size,
                      int64_t time = -1);
    // The same, renamed at once.
    bool WriteWholeFile(const std::string& relative, const std::string& data);
    // Flushes the open file and the waiting files to the disk, renames the
    // waiting files and makes the new names last.
    bool Commit();
    // The open file, relative to the root (empty when none), and the bytes
    // written to it so far.
    const std::string& openFile() const { return openFile_; }
    uint64_t offset() const { return offset_; }
    // Bytes written to all files.
    uint64_t bytes() const { return bytes_; }
    const std::string& error() const { return error_; }
    // Keeps the first failure for the message; always false.
    bool Fail(const std::string& error);
    // The next Write or WriteNewFile puts half its bytes on the disk and
    // ends the process (the tests' kill point in the middle of a message).
    void KillInNextWrite() { killInWrite_ = true; }

private:
    bool Flush();
    bool WriteThrough(const char* data, size_t size);
    bool Place(const std::string& temporary, const std::string& final);
    void Touched(const std::string& relative);
    void KillHalfway(const char* data, size_t size);

    std::string root_;
    bool dryRun_;
    bool resuming_ = false;
    os::NewFile file_;
    std::string openFile_;
    std::string buffer_;
    uint64_t offset_ = 0;
    uint64_t onDisk_ = 0;  // of the open file: whole messages only
    uint64_t bytes_ = 0;
    std::vector<std::pair<std::string, std::string>> waiting_;  // temporary, final
    std::set<std::string> dirtyDirs_;  // where names were made since the last commit
    bool killInWrite_ = false;
    std::string error_;
};

// Whether two files hold the same bytes.
bool SameFileContent(const std::string& a, const std::string& b);

}  // namespace tqnralm

#endif
