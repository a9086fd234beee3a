// The sink of a dry run: it makes nothing and keeps nothing, and counts
// what an export would write as every sink does.
#ifndef TQNRALM_TOOL_DRYRUNSINK_H
#define TQNRALM_TOOL_DRYRUNSINK_H

#include "Sink.h"

namespace tqnralm {

class DryRunSink : public Sink {
public:
    bool Commit() override { return true; }
    bool Checkpoint(const JournalState&) override { return true; }

protected:
    bool DoMakeDir(const std::string&) override { return true; }
    bool DoOpenFile(const std::string&) override { return true; }
    bool DoReopenFile(const std::string&, uint64_t) override { return true; }
    std::string& DoStaging() override { return staging_; }
    bool DoWriteStaged(size_t) override {
        staging_.clear();
        return true;
    }
    bool DoCloseFile(bool, int64_t) override { return true; }
    bool DoWriteNewFile(const std::string&, const std::string&, const char*, size_t, int64_t) override { return true; }
    bool DoWriteWholeFile(const std::string&, const std::string&) override { return true; }

private:
    std::string staging_;  // one message at a time
};

}  // namespace tqnralm

#endif
