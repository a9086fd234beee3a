// Maildir++ as Dovecot and Courier read it: OUTDIR/<user>/<account>/Maildir
// with cur, new and tmp, and each folder beside them as ".Folder.Sub" with
// its own three. Folder names stay UTF-8 (Dovecot's ":UTF-8" option), made
// by the Maildir rules of FileNames.h. Each message is
// the file cur/NNNNNN.<hash>:2,S: its position in the folder from 1 and the
// start of its SHA-256, so two exports name it alike, seen ("S") so that
// Dovecot takes it as old mail. It is written in tmp/ and renamed into cur/
// when whole.
#include <cstdio>

#include "MailWriter.h"
#include "platform/HostOs.h"
#include "Sha256.h"

namespace tqnralm {
namespace {

bool MakeMaildir(Sink& sink, const std::string& dir) {
    return sink.MakeDir(dir) && sink.MakeDir(dir + "/cur") && sink.MakeDir(dir + "/new") && sink.MakeDir(dir + "/tmp");
}

// Dovecot takes a folder "INBOX", in any case, for the inbox itself.
bool IsInboxName(const std::string& folded) { return folded == "inbox"; }

class MaildirWriter : public MailWriter {
public:
    using MailWriter::MailWriter;

    NameRules FolderNames() const override { return {NameStyle::kMaildir, {}, IsInboxName}; }
    // The inbox is the Maildir itself, its subfolders ".INBOX.Sub".
    std::string InboxName() const override { return "INBOX"; }

    std::string FolderTarget(const std::string& account, const std::vector<std::string>& names) const override {
        std::string target = account + "/Maildir";
        if (names.size() == 1 && names[0] == InboxName()) return target;
        target += '/';
        for (const std::string& name : names) target += "." + name;
        return target;
    }

    bool BeginAccount(Sink& sink, const std::string& account) override {
        return sink.MakeDir(account) && MakeMaildir(sink, account + "/Maildir");
    }

    bool BeginFolder(Sink& sink, const std::string& target) override {
        folder_ = target;
        return MakeMaildir(sink, target);
    }

    bool WriteMessage(Sink& sink, int64_t position, const char* data, size_t size,
                      WrittenMessage* written) override {
        hash_.Update(data, size);
        hash_.HexDigest(&written->sha256);
        // Written in tmp/ and moved into cur/ when whole, as Maildir wants.
        char name[64];
        const int unique = std::snprintf(name, sizeof name, "%06lld.%.16s", static_cast<long long>(position + 1),
                                         written->sha256.c_str());
        std::snprintf(name + unique, sizeof name - unique, "%c2,S", os::MaildirInfoSeparator());
        written->file = folder_ + "/cur/" + name;
        written->offset = 0;
        written->length = size;
        // Dovecot and mu take the file's time as the time the message came.
        return sink.WriteNewFile(folder_ + "/tmp/" + std::string(name, unique), written->file, data, size,
                                    TimeOf(data, size));
    }

private:
    std::string folder_;
    Sha256 hash_;
};

}  // namespace

std::unique_ptr<MailWriter> MakeMaildirWriter(const Format& format) {
    return std::make_unique<MaildirWriter>(format);
}

}  // namespace tqnralm
