// EML: one directory per mail folder (subfolders inside it) and one file
// NNNNNN.eml per message, numbered from 1 by its position in the folder, with
// exactly the bytes the library gives, written as NNNNNN.eml.part and renamed
// when whole.
#include <cstdio>

#include "MailWriter.h"
#include "Sha256.h"

namespace tqnralm {
namespace {

// A subfolder must not take a message's name: "000001.eml" is reserved, and
// so is its temporary name "000001.eml.part" (`extension` in lower case).
bool IsMessageName(const std::string& folded, const std::string& extension) {
    size_t digits = 0;
    while (digits < folded.size() && folded[digits] >= '0' && folded[digits] <= '9') ++digits;
    return digits >= 6 && (folded.compare(digits, std::string::npos, "." + extension) == 0 ||
                           folded.compare(digits, std::string::npos, "." + extension + ".part") == 0);
}

class EmlWriter : public MailWriter {
public:
    using MailWriter::MailWriter;

    NameRules FolderNames() const override {
        const std::string extension = format_.extension;
        return {NameStyle::kPlain, {},
                [extension](const std::string& folded) { return IsMessageName(folded, extension); }};
    }

    std::string FolderTarget(const std::string& account, const std::vector<std::string>& names) const override {
        std::string target = account;
        for (const std::string& name : names) target += "/" + name;
        return target;
    }

    bool BeginFolder(Sink& sink, const std::string& target) override {
        folder_ = target;
        return sink.MakeDir(target);
    }

    bool WriteMessage(Sink& sink, int64_t position, const char* data, size_t size, WrittenMessage* written) override {
        char number[32];
        std::snprintf(number, sizeof number, "/%06lld.", static_cast<long long>(position + 1));
        written->file = folder_ + number + format_.extension;
        written->offset = 0;
        written->length = size;
        hash_.Update(data, size);
        hash_.HexDigest(&written->sha256);
        return sink.WriteNewFile(written->file + ".part", written->file, data, size, TimeOf(data, size));
    }

private:
    std::string folder_;
    Sha256 hash_;
};

}  // namespace

std::unique_ptr<MailWriter> MakeEmlWriter(const Format& format) { return std::make_unique<EmlWriter>(format); }

}  // namespace tqnralm
