// A form an export writes mail in (the forms are listed in Formats.h). A
// writer lays out the folders of one account and writes each message of a
// folder in turn, into the sink it is given (Sink.h): it names the
// directories and files and makes the bytes, the sink keeps them.
#ifndef TQNRALM_TOOL_MAILWRITER_H
#define TQNRALM_TOOL_MAILWRITER_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "FileNames.h"
#include "Formats.h"
#include "Mbox.h"
#include "Sink.h"

namespace tqnralm {

// Where one message went: its file in the destination (empty where the
// destination names none), the range of the file that holds it, and the
// SHA-256 of those bytes.
struct WrittenMessage {
    // In: the library's bytes of the message. A writer whose own bytes
    // differ from them may hash both side by side (Sha256::Pair) and give
    // their digest in librarySha256, else the caller hashes them.
    const std::string_view* library = nullptr;
    std::string librarySha256;
    std::string file;
    bool shared = false;  // the file holds other messages too (mbox): offset and length tell which bytes
    uint64_t offset = 0;
    uint64_t length = 0;
    std::string sha256;
};

class MailWriter {
public:
    explicit MailWriter(const Format& format) : format_(format) {}
    virtual ~MailWriter() = default;

    // The rules for the names of the folders of one parent, and of the
    // accounts of one user.
    virtual NameRules FolderNames() const { return {}; }
    virtual NameRules AccountNames() const { return {}; }
    // The name of the folder path that stands for the account's inbox, where
    // the form keeps one apart (kept free by FolderNames); empty where not.
    virtual std::string InboxName() const { return ""; }
    // A folder's target relative to OUTDIR, from the account's folder and the
    // folder's safe names from the top down.
    virtual std::string FolderTarget(const std::string& account, const std::vector<std::string>& names) const = 0;
    // Called once per account before its folders.
    virtual bool BeginAccount(Sink& sink, const std::string& account) { return sink.MakeDir(account); }
    // Called for each folder in tree order, parents before their subfolders.
    virtual bool BeginFolder(Sink& sink, const std::string& target) = 0;
    // Goes on with a folder that an earlier run began and did not finish;
    // `length` is what the journal counted of its file (mbox).
    virtual bool ResumeFolder(Sink& sink, const std::string& target, uint64_t length) {
        (void)length;
        return BeginFolder(sink, target);
    }
    // Writes the message at `position` (from 0) of the current folder.
    virtual bool WriteMessage(Sink& sink, int64_t position, const char* data, size_t size,
                              WrittenMessage* written) = 0;
    virtual bool EndFolder(Sink& sink) {
        (void)sink;
        return true;
    }

    // Messages exactly as the library gives them: no marks of the writer's own.
    void KeepRaw(bool raw) { raw_ = raw; }
    // The times of a folder's messages start anew (before BeginFolder).
    void StartFolderTimes() { lastTime_ = newest_ = -1; }
    // The folder's times so far, kept by the journal, and given back to
    // the writer when a rerun goes on inside the folder: the messages an
    // earlier run wrote still count for those after them.
    void FolderTimes(int64_t* last, int64_t* newest) const {
        *last = lastTime_;
        *newest = newest_;
    }
    void RestoreFolderTimes(int64_t last, int64_t newest) {
        lastTime_ = last;
        newest_ = newest;
    }

protected:
    // The time of a message, for its file and its From line: its own
    // (MessageTime), else that of the message before it in the folder, as the
    // client lists a folder's messages in the order they came; -1 while none
    // is known.
    int64_t TimeOf(const char* data, size_t size) {
        int64_t time = 0;
        if (MessageTime(data, size, &time)) {
            lastTime_ = time;
            if (time > newest_) newest_ = time;
        }
        return lastTime_;
    }
    // The newest time of the folder's messages so far; -1 while none is known.
    int64_t newestTime() const { return newest_; }
    bool raw() const { return raw_; }

    const Format& format_;

private:
    bool raw_ = false;
    int64_t lastTime_ = -1;
    int64_t newest_ = -1;
};

std::unique_ptr<MailWriter> MakeMboxWriter(const Format& format);
std::unique_ptr<MailWriter> MakeMaildirWriter(const Format& format);
std::unique_ptr<MailWriter> MakeEmlWriter(const Format& format);

}  // namespace tqnralm

#endif
