// mbox in Thunderbird's "Local Folders" layout: folder X is the mbox file X
// (no extension) and its subfolders lie in the directory X.sbd. Each
// message is mboxrd (Mbox.h), marked read for Thunderbird.
#include "MailWriter.h"
#include "Mbox.h"
#include "Sha256.h"

namespace tqnralm {
namespace {

class MboxWriter : public MailWriter {
public:
    using MailWriter::MailWriter;

    // "X" also takes "X.sbd" and "X.msf", so no sibling's file lands on that
    // directory or on the summary Thunderbird writes. An account's folder
    // becomes a folder of Local Folders when it is copied in.
    NameRules FolderNames() const override { return {NameStyle::kThunderbird, {".sbd", ".msf"}, nullptr}; }
    NameRules AccountNames() const override { return {NameStyle::kThunderbird, {}, nullptr}; }

    std::string FolderTarget(const std::string& account, const std::vector<std::string>& names) const override {
        std::string target = account;
        for (size_t i = 0; i < names.size(); ++i) target += (i == 0 ? "/" : ".sbd/") + names[i];
        return target;
    }

    bool BeginFolder(Sink& sink, const std::string& target) override {
        file_ = target;
        // The parent's .sbd directory (or the account's folder, made already).
        const std::string parent = target.substr(0, target.rfind('/'));
        return sink.MakeDir(parent) && sink.OpenFile(target);
    }

    bool ResumeFolder(Sink& sink, const std::string& target, uint64_t length) override {
        file_ = target;
        return sink.ReopenFile(target, length);
    }

    bool WriteMessage(Sink& sink, int64_t, const char* data, size_t size, WrittenMessage* written) override {
        const int64_t time = TimeOf(data, size);
        text_.clear();
        AppendFromLine(data, size, time, text_);
        // Thunderbird shows a message without this field as unread; 0001 is
        // read, as the Maildir's "S".
        if (!raw()) text_ += "X-Mozilla-Status: 0001\n";
        // Text that does not begin with a header: Thunderbird takes a From
        // line that no field but its own X-Mozilla-Status follows for no
        // message at all. A field of ours and a blank line before it make
        // the whole text the body.
        if (size > 0 && !BeginsWithHeader(data, size)) text_ += "X-Tqnralm-No-Header: 1\n\n";
        // A message of no bytes would be a bare From line, which readers take
        // for the end of the message before it: it gets a header of one field.
        if (size == 0) text_ += "X-Tqnralm-Empty: 1\n\n";
        AppendMboxrd(data, size, text_);
        written->file = file_;
        written->shared = true;
        written->offset = sink.offset();
        written->length = text_.size();
        if (written->library != nullptr) {
            Sha256::Pair(text_, *written->library, &written->sha256, &written->librarySha256);
        } else {
            hash_.Update(text_.data(), text_.size());
            hash_.HexDigest(&written->sha256);
        }
        return sink.Write(text_);
    }

    // The one file of a folder is flushed to the disk before the manifest
    // says it is complete. Its time is that of its newest message.
    bool EndFolder(Sink& sink) override { return sink.CloseFile(true, newestTime()); }

private:
    std::string file_;
    std::string text_;  // one message at a time, its capacity kept
    Sha256 hash_;
};

}  // namespace

std::unique_ptr<MailWriter> MakeMboxWriter(const Format& format) { return std::make_unique<MboxWriter>(format); }

}  // namespace tqnralm
