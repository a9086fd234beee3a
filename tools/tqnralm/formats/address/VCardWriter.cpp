// VCardWriter.cpp - vCard 4.0 (RFC 6350).
//
// Content lines end in CR LF and fold at 75 octets: a continuation line
// begins with one space, which counts, and no UTF-8 sequence is split.
// A single text value (FN, NOTE) escapes only backslash, comma and line
// ends, as RFC 6350's grammar of text says; Thunderbird shows any other
// escape as it stands. The components of N, ADR and ORG escape ";" too.
// Group cards go to a file of their own, since Thunderbird's import makes
// each of them an empty contact.
// Readings go twice: as SORT-AS on N, which RFC 6350 defines, and as
// X-PHONETIC-LAST-NAME and X-PHONETIC-FIRST-NAME, which Apple's and
// Google's contacts read.
#include "AddressWriter.h"
#include "AddressWriters.h"

namespace tqnralm {
namespace {

struct TelPlace {
    AddressField field;
    const char* types;
};
const TelPlace kTels[] = {{kTelHomeVoice, "home,voice"}, {kTelHomeFax, "home,fax"},
                          {kTelWorkVoice, "work,voice"}, {kTelWorkFax, "work,fax"},
                          {kTelCellVoice, "cell,voice"}, {kTelPagerVoice, "pager"}};

// A parameter value in double quotes, with RFC 6868's caret escapes for
// what a quoted value cannot hold.
std::string QuotedParam(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '^') out += "^^";
        else if (c == '"') out += "^'";
        else if (c == '\n') out += "^n";
        else out.push_back(c);
    }
    return out + "\"";
}

// An extra pair's name as a property name: letters and digits kept, upper
// case, every other run of bytes one hyphen. The name as written goes into
// an X-NAME parameter when the property name does not keep it.
std::string ExtraProperty(const std::string& name) {
    std::string safe;
    for (char c : name) {
        const bool alnum = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
        if (alnum) safe.push_back(c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c);
        else if (!safe.empty() && safe.back() != '-') safe.push_back('-');
    }
    while (!safe.empty() && safe.back() == '-') safe.pop_back();
    if (safe.compare(0, 2, "X-") == 0) safe.erase(0, 2);
    if (safe.empty()) safe = "EXTRA";
    std::string property = "X-" + safe;
    std::string plain;
    for (char c : name) plain.push_back(c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c);
    if (plain != safe && plain != property) property += ";X-NAME=" + QuotedParam(name);
    return property;
}

struct Card {
    std::string text;
    void Add(const std::string& line) { text += VCardFold(line); }
    void Text(const std::string& property, const std::string& value) {
        if (!value.empty()) Add(property + ":" + VCardEscape(value, false));
    }
};

void Person(Card& out, const BookLayout::Card& card) {
    const Address& a = card.address;
    out.Add("UID:urn:uuid:" + card.uid);
    out.Add("FN:" + VCardEscape(card.name, false));
    if (!a[kFamily].empty() || !a[kGiven].empty() || !a[kFamilyReading].empty() || !a[kGivenReading].empty()) {
        std::string n = "N";
        if (!a[kFamilyReading].empty() || !a[kGivenReading].empty()) {
            // SORT-AS lists one value per component, separated by commas:
            // a comma within a reading becomes a space.
            auto noComma = [](std::string r) {
                for (char& c : r) c = c == ',' ? ' ' : c;
                return r;
            };
            std::string sort = noComma(a[kFamilyReading]);
            if (!a[kGivenReading].empty()) sort += "," + noComma(a[kGivenReading]);
            n += ";SORT-AS=" + QuotedParam(sort);
        }
        out.Add(n + ":" + VCardEscape(a[kFamily], true) + ";" + VCardEscape(a[kGiven], true) + ";;;");
    }
    out.Text("X-PHONETIC-LAST-NAME", a[kFamilyReading]);
    out.Text("X-PHONETIC-FIRST-NAME", a[kGivenReading]);
    out.Text("NICKNAME", a[kNickname]);
    out.Text("EMAIL", a[kEmail]);
    for (const TelPlace& t : kTels) out.Text(std::string("TEL;TYPE=") + t.types, a[t.field]);
    for (int home = 1; home >= 0; --home) {
        const int first = home ? kHomeExtended : kWorkExtended;
        std::string parts;
        bool any = false;
        for (int k = 0; k < 6; ++k) {
            parts += ";" + VCardEscape(a.fields[first + k], true);
            any = any || !a.fields[first + k].empty();
        }
        // The first part, the post office box, stays empty.
        if (any) out.Add(std::string("ADR;TYPE=") + (home ? "home" : "work") + ":" + parts);
    }
    if (!a[kOrganization].empty() || !a[kUnit].empty()) {
        std::string org = "ORG:" + VCardEscape(a[kOrganization], true);
        if (!a[kUnit].empty()) org += ";" + VCardEscape(a[kUnit], true);
        out.Add(org);
    }
    out.Text("TITLE", a[kTitle]);
    out.Text("NOTE", a[kNote]);
    for (const auto& e : a.extras) {
        if (!e.second.empty()) out.Add(ExtraProperty(e.first) + ":" + VCardEscape(e.second, false));
    }
}

}  // namespace

std::string VCardEscape(const std::string& text, bool component) {
    std::string out;
    for (char c : text) {
        if (c == '\\' || c == ',' || (component && c == ';')) out += '\\', out += c;
        else if (c == '\n') out += "\\n";
        else out.push_back(c);
    }
    return out;
}

std::string VCardFold(const std::string& line) {
    std::string out;
    size_t width = 0;
    for (size_t i = 0; i < line.size();) {
        size_t n = 1;
        while (i + n < line.size() && (static_cast<unsigned char>(line[i + n]) & 0xC0) == 0x80) ++n;
        if (width + n > 75) {
            out += "\r\n ";
            width = 1;
        }
        out.append(line, i, n);
        width += n;
        i += n;
    }
    return out + "\r\n";
}

std::string WriteVCard(const BookLayout& book) {
    std::string out;
    for (const BookLayout::Card& c : book.cards) {
        Card card;
        card.Add("BEGIN:VCARD");
        card.Add("VERSION:4.0");
        Person(card, c);
        card.Add("END:VCARD");
        out += card.text;
    }
    return out;
}

std::string WriteVCardGroups(const BookLayout& book) {
    std::string out;
    for (const BookLayout::List& l : book.lists) {
        Card card;
        card.Add("BEGIN:VCARD");
        card.Add("VERSION:4.0");
        card.Add("KIND:group");
        card.Add("UID:urn:uuid:" + l.uid);
        card.Add("FN:" + VCardEscape(l.name, false));
        for (size_t c : l.cards) card.Add("MEMBER:urn:uuid:" + book.cards[c].uid);
        for (size_t s : l.sublists) card.Add("MEMBER:urn:uuid:" + book.lists[s].uid);
        card.Add("END:VCARD");
        out += card.text;
    }
    return out;
}

namespace {

// The persons' file, and the groups' beside it: a contact program that
// imports the persons' file must not meet the group cards.
class VCardForm : public AddressWriter {
public:
    using AddressWriter::AddressWriter;
    void Write(const BookLayout& book, std::vector<AddressFile>* files) const override {
        files->push_back(File(WriteVCard(book)));
        if (!book.lists.empty()) {
            files->push_back({format_.name + std::string("-groups"), Groups(), WriteVCardGroups(book)});
        }
    }
    std::vector<std::string> Extensions() const override { return {format_.extension, Groups()}; }

private:
    std::string Groups() const { return std::string("groups.") + format_.extension; }
};

}  // namespace

std::unique_ptr<AddressWriter> MakeVCardWriter(const Format& format) { return std::make_unique<VCardForm>(format); }

}  // namespace tqnralm
