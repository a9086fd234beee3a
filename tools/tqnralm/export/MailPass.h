// The mail pass of an export: every message of the plan through one writer,
// each listed in the manifest as it is written.
//
// Two threads share the work. The calling thread walks the store through the
// library (which is for one thread at a time; no other thread calls it), and
// a writer thread hashes, quotes and writes each message and lists it. Steps
// pass between them in batches through a bounded queue, in tree order, so
// the output is what one thread would write; the writer hands the emptied
// batches back, so that their steps are reused and not made anew. A
// message's text stays in the library's block, which the writer reads where
// it lies; the walker gives the block back when it reuses the step.
//
// The writer commits (the sink's Commit and Checkpoint) after each folder ends, after an mbox file
// is made, and after every few megabytes: the syncs are batched, not paid
// per message. A rerun that resumes counts the same steps again: the walker
// fetches no message that the journal counts, and the writer does nothing
// for those steps but find the folder it goes on with (its file's length
// and its messages' times come from the journal).
#ifndef TQNRALM_TOOL_MAILPASS_H
#define TQNRALM_TOOL_MAILPASS_H

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ExportPlan.h"
#include "Journal.h"
#include "MailWriter.h"
#include "Manifest.h"
#include "Progress.h"
#include "Sink.h"
#include "StepQueue.h"

namespace tqnralm {

struct MailTotals {
    int64_t written = 0;
    int64_t failed = 0;
    int64_t unread = 0;  // expected, but passed over or never reached by the enumeration
    uint64_t bytes = 0;
};

class MailPass {
public:
    // `manifest` is null where nothing is listed (a dry run); `resume` is
    // where the journal of an earlier run left off (its identity is kept in
    // checkpoints).
    MailPass(MailWriter& writer, Sink& sink, Manifest* manifest, const JournalState& resume, Progress& progress,
             ExportPlan& plan)
        : writer_(writer), sink_(sink), manifest_(manifest), state_(resume),
          resumeSteps_(resume.steps), progress_(progress), plan_(plan), queue_(kQueueBytes) {}

    // Writes each message exactly as the library gives it, not with its raw
    // 8-bit header fields made into encoded words (HeaderRewrite.h).
    void KeepRawHeaders(bool raw) {
        keepRaw_ = raw;
        writer_.KeepRaw(raw);
    }

    // False when the output failed (the export stops); read failures are
    // counted in the totals and listed in the plan's problems. `totals`
    // starts from the journal's. A stop asked for (os::StopRequested) ends
    // the walk early; what was written is committed.
    bool Run(MailTotals* totals);
    bool stopped() const { return stopped_; }

private:
    // Message bytes that may wait between the two threads; the steps and
    // bytes of one hand-over (each costs the two threads a lock); the
    // emptied batches kept for reuse, and the largest text a kept step may
    // hold until the walker reuses it.
    static constexpr size_t kQueueBytes = 8 << 20;
    static constexpr size_t kBatchSteps = 64;
    static constexpr size_t kBatchBytes = 256 << 10;
    static constexpr size_t kSpareBatches = kQueueBytes / kBatchBytes + 2;
    static constexpr size_t kKeptBuffer = 1 << 20;
    // Bytes written between two commits at most (about).
    static constexpr uint64_t kCommitBytes = 8 << 20;

    // The library's block of one message's text, given back with the
    // library's pfnFree when the step is reused or dropped.
    class MailText {
    public:
        MailText() = default;
        MailText(MailText&& other) noexcept : data_(other.data_) { other.data_ = QV_MAIL_DATA(); }
        MailText& operator=(MailText&& other) noexcept {
            std::swap(data_, other.data_);
            return *this;
        }
        ~MailText() { Reset(); }
        // Takes the block that QV_MailMessage_GetData filled.
        void Take(const QV_MAIL_DATA& data) {
            Reset();
            data_ = data;
        }
        void Reset() {
            if (data_.pszMailText != nullptr && data_.pfnFree != nullptr) data_.pfnFree(data_.pszMailText);
            data_ = QV_MAIL_DATA();
        }
        std::string_view view() const {
            return data_.pszMailText == nullptr ? std::string_view() : std::string_view(data_.pszMailText, data_.nMailTextLen);
        }

    private:
        QV_MAIL_DATA data_ = QV_MAIL_DATA();
    };

    // One step, made by the walker and done by the writer.
    struct Step {
        enum Kind { kUser, kAccount, kBeginFolder, kMessage, kEndFolder } kind = kMessage;
        std::string path;  // the user's or account's folder, the folder's target, or the message's index
        int64_t position = 0;
        bool hasId = false, hasSubject = false;
        std::string messageId, subject;
        int32_t code = 0;  // of the data: a message that cannot be fetched has no bytes
        MailText data;
        int64_t unread = 0;  // kEndFolder
    };
    struct Batch {
        std::vector<Step> steps;  // the first `count` are in use; the rest keep their buffers
        size_t count = 0;
        size_t bytes = 0;
    };

    // The walker's side.
    void Walk();
    bool Folder(FolderPlan& folder);
    void Fetch(QV_OBJ message, Step& step);
    Step& NextStep(Step::Kind kind);
    bool Hand();  // false when the writer has stopped
    bool HandIfFull();
    // The writer's side.
    bool Write(MailTotals* totals);
    bool Do(Step& step, MailTotals* totals);
    bool Replay(const Step& step);
    bool Message(Step& step, MailTotals* totals);
    void FileMember(const std::string& file);
    bool Commit(const MailTotals& totals);
    void GiveBack(Batch batch);

    MailWriter& writer_;
    Sink& sink_;
    Manifest* manifest_;
    JournalState state_;  // of the last commit
    const uint64_t resumeSteps_;
    uint64_t walked_ = 0, done_ = 0;  // steps made by the walker, done by the writer
    std::string resumeFolder_;  // begun by the earlier run, not yet ended
    uint64_t committedBytes_ = 0;
    std::atomic<bool> stopped_{false};
    Progress& progress_;
    ExportPlan& plan_;
    Batch batch_;
    StepQueue<Batch> queue_;
    std::mutex spareMutex_;
    std::vector<Batch> spare_;
    bool keepRaw_ = false;
    std::string rewritten_;  // the writer's copy of a message whose header it rewrote
    std::string subject_, row_;  // the writer's, their buffers kept from message to message
    WrittenMessage written_;
    std::string file_, fileMember_;  // the last message's file and its manifest member
};

}  // namespace tqnralm

#endif
