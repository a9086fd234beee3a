// The sink of an export into a folder: directories and new files below
// OUTDIR, one growing file open at a time behind a buffer, and the journal
// (Journal.h) by which a rerun goes on where an export stopped.
//
// No file stands under its final name before it is whole. A file of its own
// (a message in Maildir or EML, an address book) is written under a
// temporary name and renamed at the next commit, after the disk holds its
// bytes; the one open file (an mbox) grows by whole messages only, and a
// failed write cuts it back to the last one. Commit flushes all of that to
// the disk, so the journal may then count it.
//
// The tests' kill points (KillPoint.h) that count messages are here, where
// the bytes go: each WriteStaged and WriteNewFile is one message.
#ifndef TQNRALM_TOOL_DIRECTORYSINK_H
#define TQNRALM_TOOL_DIRECTORYSINK_H

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Journal.h"
#include "platform/HostOs.h"
#include "Sink.h"

namespace tqnralm {

class DirectorySink : public Sink {
public:
    explicit DirectorySink(std::string root) : root_(std::move(root)), journal_(root_) {}

    // A rerun that goes on with an unfinished export: a file that is there
    // already under a final name is taken when it holds what would be
    // written (an empty one where a file is to be filled).
    void SetResuming() { resuming_ = true; }
    // Flushes the open file and the waiting files to the disk, renames the
    // waiting files and makes the new names last.
    bool Commit() override;
    // Saves the journal.
    bool Checkpoint(const JournalState& state) override;
    Journal& journal() { return journal_; }

protected:
    bool DoMakeDir(const std::string& relative) override;
    bool DoOpenFile(const std::string& relative) override;
    bool DoReopenFile(const std::string& relative, uint64_t length) override;
    std::string& DoStaging() override { return buffer_; }
    bool DoWriteStaged(size_t from) override;
    bool DoCloseFile(bool sync, int64_t time) override;
    bool DoWriteNewFile(const std::string& temporary, const std::string& final, const char* data, size_t size,
                        int64_t time) override;
    bool DoWriteWholeFile(const std::string& relative, const std::string& data) override;

private:
    bool Flush();
    bool WriteThrough(const char* data, size_t size);
    bool Place(const std::string& temporary, const std::string& final);
    void Touched(const std::string& relative);
    void KillHalfway(const char* data, size_t size);

    std::string root_;
    Journal journal_;
    bool resuming_ = false;
    os::NewFile file_;
    std::string buffer_;  // whole messages of the open file, and the one being made at its end
    size_t whole_ = 0;    // of the buffer: the bytes of whole messages
    uint64_t onDisk_ = 0;  // of the open file: whole messages only
    std::vector<std::pair<std::string, std::string>> waiting_;  // temporary, final
    std::set<std::string> dirtyDirs_;  // where names were made since the last commit
};

// Whether two files hold the same bytes.
bool SameFileContent(const std::string& a, const std::string& b);

}  // namespace tqnralm

#endif
