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
        // Made where the sink keeps it until it goes out (Sink::Staging).
        std::string& text = sink.Staging();
        const size_t from = text.size();
        AppendFromLine(data, size, TimeOf(data, size), text);
        // Thunderbird shows a message without this field as unread; 0001 is
        // read, as the Maildir's "S".
        if (!raw()) text += "X-Mozilla-Status: 0001\n";
        // Text that does not begin with a header: Thunderbird takes a From
        // line that no field but its own X-Mozilla-Status follows for no
        // message at all. A field of ours and a blank line before it make
        // the whole text the body.
        if (size > 0 && !BeginsWithHeader(data, size)) text += "X-Tqnralm-No-Header: 1\n\n";
        // A message of no bytes would be a bare From line, which readers take
        // for the end of the message before it: it gets a header of one field.
        if (size == 0) text += "X-Tqnralm-Empty: 1\n\n";
        AppendMboxrd(data, size, text);
        const std::string_view message(text.data() + from, text.size() - from);
        written->file = file_;
        written->shared = true;
        written->offset = sink.offset();
        written->length = message.size();
        if (written->library != nullptr) {
            Sha256::Pair(message, *written->library, &written->sha256, &written->librarySha256);
        } else {
            hash_.Update(message.data(), message.size());
            hash_.HexDigest(&written->sha256);
        }
        return sink.WriteStaged(from);
    }

    // The one file of a folder is flushed to the disk before the manifest
    // says it is complete. Its time is that of its newest message.
    bool EndFolder(Sink& sink) override { return sink.CloseFile(true, newestTime()); }

private:
    std::string file_;
    Sha256 hash_;
};

}  // namespace

std::unique_ptr<MailWriter> MakeMboxWriter(const Format& format) { return std::make_unique<MboxWriter>(format); }

}  // namespace tqnralm
