// OUTDIR/manifest.json.journal: how far an unfinished export got, so that
// the same command run again goes on from there and ends with the files
// and the manifest an uninterrupted export writes.
//
// A commit records the steps of the mail pass that are done, the length of
// manifest.json.partial that lists them, the length of the mbox file being
// filled, the times of the folder's messages so far, and the totals so far. It is written only after everything it
// counts is on the disk, as a new file that is flushed and renamed over the
// old one, so a power cut leaves either the old or the new journal. The
// journal goes when manifest.json is in place.
#ifndef TQNRALM_TOOL_JOURNAL_H
#define TQNRALM_TOOL_JOURNAL_H

#include <cstdint>
#include <string>

namespace tqnralm {

struct JournalState {
    std::string identity;     // SHA-256 of the store's plan and the options
    uint64_t steps = 0;       // steps of the mail pass done
    uint64_t manifest = 0;    // bytes of manifest.json.partial that hold them
    bool listed = false;      // the manifest lists a message already
    std::string folder;       // the mbox file being filled, relative to OUTDIR
    uint64_t folderLength = 0;
    int64_t lastTime = -1, newestTime = -1;  // of the folder's messages so far (MailWriter)
    int64_t written = 0, failed = 0, unread = 0;
    uint64_t bytes = 0;
    bool finished = false;    // manifest.json.partial is whole; its rename remains
    int exit = 0;             // the exit code of the finished export
};

class Journal {
public:
    static const char* const kFileName;  // "manifest.json.journal"

    explicit Journal(const std::string& outDir);

    enum class Found { kNone, kFound, kUnreadable };
    Found Load(JournalState* state, std::string* error) const;
    bool Save(const JournalState& state, std::string* error);
    // The export is finished: the journal goes.
    bool Remove(std::string* error);

private:
    std::string dir_, path_;
};

}  // namespace tqnralm

#endif
