// The mail pass of an export (see MailPass.h).
#include "MailPass.h"

#include <charconv>
#include <exception>
#include <thread>

#include "HeaderRewrite.h"
#include "Library.h"
#include "Sha256.h"

namespace tqnralm {

bool MailPass::Run(MailTotals* totals) {
    bool written = true;
    std::thread writer([&] { written = Write(totals); });
    try {
        Walk();
        Hand();
    } catch (...) {  // the writer is stopped and joined before the walker's failure goes on
        queue_.Stop();
        queue_.Close();
        writer.join();
        throw;
    }
    queue_.Close();
    writer.join();
    return written;
}

void MailPass::Walk() {
    for (UserPlan& user : plan_.users) {
        NextStep(Step::kUser).path = user.dir;
        for (AccountPlan& account : user.accounts) {
            if (!account.sameAs.empty()) continue;
            NextStep(Step::kAccount).path = account.dir;
            for (FolderPlan& folder : account.folders) {
                if (!Folder(folder)) return;
            }
        }
        if (!Hand()) return;
    }
}

bool MailPass::Folder(FolderPlan& folder) {
    if (!HandIfFull()) return false;
    NextStep(Step::kBeginFolder).path = folder.target;
    Children messages(folder.folder.get(), QV_CLASS_MAILMESSAGE);
    Ref message;
    int64_t position = 0, passed = 0;
    for (;; ++position) {
        int32_t code = messages.Next(&message);
        if (code == QV_E_NO_MORE_ITEMS) break;
        if (code != QV_S_OK) {
            plan_.problems.push_back({folder.index + "/" + std::to_string(position), "message", code});
            ++passed;
            continue;
        }
        if (os::StopRequested()) {
            stopped_ = true;
            return false;
        }
        Step& step = NextStep(Step::kMessage);
        step.path.assign(folder.index).push_back('/');  // in the step's kept buffer
        char digits[24];
        step.path.append(digits, std::to_chars(digits, digits + sizeof digits, position).ptr);
        step.position = position;
        if (walked_ > resumeSteps_) Fetch(message.get(), step);  // else written by the earlier run
        if (!HandIfFull()) return false;
    }
    // Messages passed over, and those the count promised but the list did not reach.
    NextStep(Step::kEndFolder).unread = passed + (position < folder.expected ? folder.expected - position : 0);
    return true;
}

void MailPass::Fetch(QV_OBJ message, Step& step) {
    step.hasId = GetName(message, false, &step.messageId) == QV_S_OK;
    QV_MAIL_DATA data;
    step.code = QV_MailMessage_GetData(message, &data);
    if (step.code == QV_S_OK) {
        step.data.Take(data);
    } else {  // the writer decodes the subject from the header; without one, the library's is all there is
        step.hasSubject = GetName(message, true, &step.subject) == QV_S_OK;
    }
    batch_.bytes += step.data.view().size() + step.subject.size() + step.messageId.size() + step.path.size();
}

MailPass::Step& MailPass::NextStep(Step::Kind kind) {
    if (batch_.count == batch_.steps.size()) batch_.steps.emplace_back();
    Step& step = batch_.steps[batch_.count++];
    ++walked_;
    step.kind = kind;
    step.path.clear();
    step.position = 0;
    step.hasId = step.hasSubject = false;
    step.messageId.clear();
    step.subject.clear();
    step.code = QV_S_OK;
    step.data.Reset();  // the block of the message the step held before
    step.unread = 0;
    batch_.bytes += 64;
    return step;
}

bool MailPass::HandIfFull() {
    return (batch_.count < kBatchSteps && batch_.bytes < kBatchBytes) || Hand();
}

bool MailPass::Hand() {
    if (batch_.count == 0) return true;
    const size_t bytes = batch_.bytes;
    const bool ok = queue_.Push(std::move(batch_), bytes);
    batch_ = Batch();
    std::lock_guard<std::mutex> lock(spareMutex_);
    if (!spare_.empty()) {
        batch_ = std::move(spare_.back());
        spare_.pop_back();
    }
    return ok;
}

namespace {

// Asks for the head of the next message while this one is written: the
// walker made it on another core, and the first pass over it otherwise
// waits for each line; past the head the processor's own prefetching
// keeps up.
void Prefetch(std::string_view text) {
    constexpr size_t kHead = 1024, kLine = 64;
    for (size_t i = 0; i < text.size() && i < kHead; i += kLine) __builtin_prefetch(text.data() + i);
}

}  // namespace

bool MailPass::Write(MailTotals* totals) {
    Batch batch;
    while (queue_.Pop(&batch)) {
        for (size_t i = 0; i < batch.count; ++i) {
            if (os::StopRequested()) {  // what waits in the queue is left for the rerun
                stopped_ = true;
                queue_.Stop();
                return Commit(*totals);
            }
            if (i + 1 < batch.count) Prefetch(batch.steps[i + 1].data.view());
            bool done = false;
            try {
                done = Do(batch.steps[i], totals);
            } catch (const std::exception& e) {
                sink_.Fail(e.what());
            }
            if (!done) {
                queue_.Stop();
                return false;
            }
        }
        GiveBack(std::move(batch));
        batch = Batch();
    }
    return Commit(*totals);
}

void MailPass::GiveBack(Batch batch) {
    for (Step& step : batch.steps) {
        if (step.data.view().size() > kKeptBuffer) step.data.Reset();  // a huge message is not kept waiting
    }
    batch.count = 0;
    batch.bytes = 0;
    std::lock_guard<std::mutex> lock(spareMutex_);
    if (spare_.size() < kSpareBatches) spare_.push_back(std::move(batch));
}

bool MailPass::Do(Step& step, MailTotals* totals) {
    if (done_ < resumeSteps_) {
        ++done_;
        return Replay(step);
    }
    ++done_;
    if (!resumeFolder_.empty()) {
        const std::string folder = std::move(resumeFolder_);
        resumeFolder_.clear();
        if (!writer_.ResumeFolder(sink_, folder, folder == state_.folder ? state_.folderLength : 0)) return false;
        writer_.RestoreFolderTimes(state_.lastTime, state_.newestTime);
    }
    switch (step.kind) {
    case Step::kUser: return sink_.MakeDir(step.path);
    case Step::kAccount: return writer_.BeginAccount(sink_, step.path);
    case Step::kBeginFolder:
        progress_.Folder(step.path);
        // A folder's new file (mbox) is counted before anything goes in.
        writer_.StartFolderTimes();
        return writer_.BeginFolder(sink_, step.path) && (sink_.openFile().empty() || Commit(*totals));
    case Step::kEndFolder:
        totals->unread += step.unread;
        return writer_.EndFolder(sink_) && Commit(*totals);
    case Step::kMessage: break;
    }
    if (!Message(step, totals)) return false;
    return sink_.bytes() - committedBytes_ < kCommitBytes || Commit(*totals);
}

bool MailPass::Replay(const Step& step) {
    if (step.kind == Step::kBeginFolder) {
        progress_.Folder(step.path);
        resumeFolder_ = step.path;
        writer_.StartFolderTimes();
    }
    if (step.kind == Step::kEndFolder) resumeFolder_.clear();
    if (step.kind == Step::kMessage) progress_.Step(0);
    return true;
}

namespace {

// One member of a manifest row, after the first. `key` comes with its
// comma, quotes and colon (",\"length\":"): a row is a dozen appends.
void Member(std::string* row, std::string_view key, std::string_view value) {
    row->append(key);
    AppendJsonString(row, value);
}

// A Message-ID or subject: UTF-8 of the host's conversions (Utf8, HeaderRewrite).
void Member(std::string* row, std::string_view key, bool has, std::string_view value) {
    row->append(key);
    if (has) AppendJsonUtf8(row, value);
    else row->append("null");
}

void Member(std::string* row, std::string_view key, uint64_t value) {
    char digits[24];
    row->append(key);
    row->append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

// A digest's hexadecimal digits need no escapes.
void HexMember(std::string* row, std::string_view key, const std::string& hex) {
    row->append(key);
    row->push_back('"');
    row->append(hex);
    row->push_back('"');
}

}  // namespace

// The message's manifest row: "index", "message_id", "subject", then where
// it went and its hashes, or "status" "failed" and the library's code.
bool MailPass::Message(Step& step, MailTotals* totals) {
    row_ = "{\"index\":";
    AppendJsonString(&row_, step.path);
    Member(&row_, ",\"message_id\":", step.hasId, step.messageId);
    if (step.code != QV_S_OK) {
        Member(&row_, ",\"subject\":", step.hasSubject, step.subject);
        row_ += ",\"status\":\"failed\",\"code\":" + std::to_string(step.code) + "}";
        ++totals->failed;
        progress_.Step(0);
        return manifest_ == nullptr || manifest_->AppendEncoded(row_) || sink_.Fail(manifest_->error());
    }
    const std::string_view library = step.data.view();
    const bool hasSubject = DecodeSubject(library, &subject_);
    Member(&row_, ",\"subject\":", hasSubject, subject_);
    const bool rewritten = !keepRaw_ && RewriteHeaders(library, &rewritten_);
    const std::string_view text = rewritten ? std::string_view(rewritten_) : library;
    WrittenMessage& written = written_;  // its buffers kept from message to message
    written.library = &library;
    written.librarySha256.clear();
    written.file.clear();
    written.shared = false;
    written.offset = written.length = 0;
    const uint64_t before = sink_.bytes();
    if (!writer_.WriteMessage(sink_, step.position, text.data(), text.size(), &written)) return false;
    if (!written.file.empty()) FileMember(written.file);
    if (written.shared) Member(&row_, ",\"offset\":", written.offset);
    Member(&row_, ",\"length\":", written.length);
    HexMember(&row_, ",\"sha256\":", written.sha256);
    if (!written.librarySha256.empty()) {
        HexMember(&row_, ",\"library_sha256\":", written.librarySha256);
    } else if (rewritten || written.shared) {
        Sha256 hash;
        hash.Update(library.data(), library.size());
        hash.HexDigest(&written.librarySha256);
        HexMember(&row_, ",\"library_sha256\":", written.librarySha256);
    } else {
        HexMember(&row_, ",\"library_sha256\":", written.sha256);  // the same bytes
    }
    row_ += rewritten ? ",\"headers_rewritten\":true" : ",\"headers_rewritten\":false";
    if (library.empty()) row_ += ",\"empty\":true";
    row_ += ",\"status\":\"written\"}";
    ++totals->written;
    totals->bytes += sink_.bytes() - before;
    progress_.Step(sink_.bytes() - before);
    return manifest_ == nullptr || manifest_->AppendEncoded(row_) || sink_.Fail(manifest_->error());
}

// An mbox folder's messages share their file: its member is encoded once.
void MailPass::FileMember(const std::string& file) {
    if (file != file_) {
        file_ = file;
        fileMember_.clear();
        Member(&fileMember_, ",\"file\":", file);
    }
    row_ += fileMember_;
}

bool MailPass::Commit(const MailTotals& totals) {
    committedBytes_ = sink_.bytes();
    if (!sink_.Commit()) return false;
    if (manifest_ != nullptr) {
        if (!manifest_->Commit(&state_.manifest)) return sink_.Fail(manifest_->error());
        state_.listed = manifest_->listed();
    }
    state_.steps = done_;
    state_.folder = sink_.openFile();
    state_.folderLength = sink_.offset();
    writer_.FolderTimes(&state_.lastTime, &state_.newestTime);
    state_.written = totals.written;
    state_.failed = totals.failed;
    state_.unread = totals.unread;
    state_.bytes = totals.bytes;
    return sink_.Checkpoint(state_);
}

}  // namespace tqnralm
