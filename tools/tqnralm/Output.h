// Where an export writes: directories and new files below OUTDIR, one file
// open at a time behind a buffer. In a dry run nothing is touched and only
// the bytes are counted. The first failure is kept for the message.
#ifndef TQNRALM_TOOL_OUTPUT_H
#define TQNRALM_TOOL_OUTPUT_H

#include <cstdint>
#include <string>

#include "Os.h"

namespace tqnralm {

class Output {
public:
    Output(std::string root, bool dryRun) : root_(std::move(root)), dryRun_(dryRun) {}

    bool dryRun() const { return dryRun_; }
    // A directory below the root; one that exists already is fine.
    bool MakeDir(const std::string& relative);
    // Opens a new file below the root; a file of that name is a failure.
    bool OpenFile(const std::string& relative);
    bool Write(const char* data, size_t size);
    bool Write(const std::string& text) { return Write(text.data(), text.size()); }
    // Closes the open file; `sync` flushes it to the disk first.
    bool CloseFile(bool sync);
    // A new file that holds just these bytes.
    bool WriteNewFile(const std::string& relative, const char* data, size_t size) {
        return OpenFile(relative) && Write(data, size) && CloseFile(false);
    }
    // Bytes written to the open file so far.
    uint64_t offset() const { return offset_; }
    // Bytes written to all files.
    uint64_t bytes() const { return bytes_; }
    const std::string& error() const { return error_; }
    // Keeps the first failure for the message; always false.
    bool Fail(const std::string& error);

private:
    bool Flush();

    std::string root_;
    bool dryRun_;
    os::NewFile file_;
    std::string buffer_;
    uint64_t offset_ = 0;
    uint64_t bytes_ = 0;
    std::string error_;
};

}  // namespace tqnralm

#endif
