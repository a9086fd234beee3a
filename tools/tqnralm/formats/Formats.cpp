// The table of forms (see Formats.h).
#include "Formats.h"

#include "AddressWriter.h"
#include "MailWriter.h"

namespace tqnralm {
namespace {

constexpr FormatKind kMail = FormatKind::kMail;
constexpr FormatKind kAddress = FormatKind::kAddress;

// The first mail form is the default; a list of address forms keeps this order.
const Format kFormats[] = {
    {"mbox", kMail, "mbox (Thunderbird's Local Folders)", "", MakeMboxWriter, nullptr},
    {"maildir", kMail, "Maildir++", "", MakeMaildirWriter, nullptr},
    {"eml", kMail, "EML", "eml", MakeEmlWriter, nullptr},
    {"vcard", kAddress, "vCard 4.0", "vcf", nullptr, MakeVCardWriter},
    {"ldif", kAddress, "LDIF", "ldif", nullptr, MakeLdifWriter},
    {"csv", kAddress, "CSV", "csv", nullptr, MakeCsvWriter},
};

}  // namespace

std::vector<const Format*> FormatsOf(FormatKind kind) {
    std::vector<const Format*> out;
    for (const Format& format : kFormats) {
        if (format.kind == kind) out.push_back(&format);
    }
    return out;
}

const Format& DefaultMailFormat() { return *FormatsOf(kMail).front(); }

const Format* FindFormat(FormatKind kind, const std::string& name) {
    for (const Format* format : FormatsOf(kind)) {
        if (name == format->name) return format;
    }
    return nullptr;
}

bool ParseFormatList(FormatKind kind, const std::string& list, std::vector<const Format*>* out) {
    std::vector<const Format*> chosen;
    for (size_t start = 0; start <= list.size();) {
        size_t end = list.find(',', start);
        if (end == std::string::npos) end = list.size();
        const Format* format = FindFormat(kind, list.substr(start, end - start));
        if (format == nullptr) return false;
        for (const Format* other : chosen) {
            if (other == format) return false;
        }
        chosen.push_back(format);
        start = end + 1;
    }
    out->clear();
    for (const Format* format : FormatsOf(kind)) {
        for (const Format* c : chosen) {
            if (c == format) out->push_back(format);
        }
    }
    return true;
}

std::vector<std::string> FormatNames(FormatKind kind) {
    std::vector<std::string> out;
    for (const Format* format : FormatsOf(kind)) out.push_back(format->name);
    return out;
}

std::vector<std::string> FormatDescriptions(FormatKind kind) {
    std::vector<std::string> out;
    for (const Format* format : FormatsOf(kind)) out.push_back(format->description);
    return out;
}

std::string JoinList(const std::vector<std::string>& items, const char* last) {
    std::string out;
    for (size_t i = 0; i < items.size(); ++i) {
        if (i > 0) out += i + 1 == items.size() ? last : ", ";
        out += items[i];
    }
    return out;
}

std::unique_ptr<MailWriter> MakeMailWriter(const Format& format) { return format.mail(format); }
std::unique_ptr<AddressWriter> MakeAddressWriter(const Format& format) { return format.address(format); }

}  // namespace tqnralm
