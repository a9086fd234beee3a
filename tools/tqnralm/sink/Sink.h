// Where the bytes of an export go. The writers of the forms name
// directories and files below the destination and hand over their bytes; a
// sink makes them (DirectorySink), only counts them (DryRunSink, the dry
// run), or could keep them elsewhere than in a folder. Every sink counts
// alike, so a dry run's totals are the export's.
//
// A destination gets two kinds of file: one that grows by whole messages
// (an mbox, one open at a time) and one written whole (a Maildir or EML
// message, an address book). Commit makes what was given last, and
// Checkpoint then records how far the export got, for a rerun.
#ifndef TQNRALM_TOOL_SINK_H
#define TQNRALM_TOOL_SINK_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "Journal.h"

namespace tqnralm {

class Sink {
public:
    virtual ~Sink() = default;

    // A directory below the destination; one that exists already is fine.
    bool MakeDir(const std::string& path) { return DoMakeDir(path); }
    // Opens a new growing file; one of that name is a failure.
    bool OpenFile(const std::string& path);
    // Opens a growing file of this export again, cut to the `length` bytes
    // that the journal counted.
    bool ReopenFile(const std::string& path, uint64_t length);
    // The open file's next message is made in place, where the sink keeps
    // the bytes it has not yet written out, and costs no copy: the writer
    // appends the whole message to Staging() (leaving what the string holds
    // already as it is), then gives it with WriteStaged, passing the size
    // the string had before.
    std::string& Staging() { return DoStaging(); }
    bool WriteStaged(size_t from);
    // The same for a message made elsewhere: its bytes are copied.
    bool Write(const char* data, size_t size);
    bool Write(const std::string& text) { return Write(text.data(), text.size()); }
    // Closes the open file; `sync` flushes it to the disk first; a `time`
    // of 0 or more (seconds since 1970, UTC) becomes its time of change.
    bool CloseFile(bool sync, int64_t time = -1);
    // A file that holds just these bytes, changed at `time` as CloseFile
    // says: it stands as `temporary` until the next Commit, then as `final`
    // (a sink that keeps no half-made files needs only `final`).
    bool WriteNewFile(const std::string& temporary, const std::string& final, const char* data, size_t size,
                      int64_t time = -1);
    // A file under its final name at once, and lasting when this returns.
    bool WriteWholeFile(const std::string& path, const std::string& data);
    // Makes what was given so far last (flushed, renamed into place).
    virtual bool Commit() = 0;
    // After a Commit: records `state` for a rerun that goes on from here.
    virtual bool Checkpoint(const JournalState& state) = 0;

    // The open file (empty when none) and the bytes written to it so far.
    const std::string& openFile() const { return openFile_; }
    uint64_t offset() const { return offset_; }
    // Bytes given to all files.
    uint64_t bytes() const { return bytes_; }
    // Keeps the first failure for the message; always false.
    bool Fail(const std::string& error);
    const std::string& error() const { return error_; }

protected:
    virtual bool DoMakeDir(const std::string& path) = 0;
    virtual bool DoOpenFile(const std::string& path) = 0;
    virtual bool DoReopenFile(const std::string& path, uint64_t length) = 0;
    virtual std::string& DoStaging() = 0;
    virtual bool DoWriteStaged(size_t from) = 0;
    virtual bool DoCloseFile(bool sync, int64_t time) = 0;
    virtual bool DoWriteNewFile(const std::string& temporary, const std::string& final, const char* data, size_t size,
                                int64_t time) = 0;
    virtual bool DoWriteWholeFile(const std::string& path, const std::string& data) = 0;

private:
    std::string openFile_;
    uint64_t offset_ = 0;
    uint64_t bytes_ = 0;
    std::string error_;
};

}  // namespace tqnralm

#endif
