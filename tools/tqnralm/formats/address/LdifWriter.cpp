// LdifWriter.cpp - LDIF (RFC 2849) in the form Thunderbird's address book
// exports and imports.
//
// A person is "dn: cn=<name>,mail=<address>" with Thunderbird's object
// classes; a list is a groupOfNames whose members name persons by the same
// dn. Thunderbird's lists do not nest, so a list also names the addresses
// of all its subgroups, and each subgroup is a list of its own.
//
// Distinguished names are unique in a file (compared without regard to
// ASCII case, as LDAP compares cn and mail): a person or a list whose dn is
// taken already gets " (2)", " (3)", ... after the name in its dn, while its
// cn stays the name. Thunderbird matches a member to a card by the address
// in the member's dn, other readers by the whole dn; both find the entry.
#include <set>

#include "AddressWriter.h"
#include "AddressWriters.h"

namespace tqnralm {
namespace {

struct Attribute {
    const char* name;
    AddressField field;
};
// givenName, sn, cn and the fax come apart: see Person.
const Attribute kAttributes[] = {
    {"mozillaNickname", kNickname}, {"mail", kEmail}, {"telephoneNumber", kTelWorkVoice},
    {"homePhone", kTelHomeVoice}, {"pager", kTelPagerVoice}, {"mobile", kTelCellVoice},
    {"mozillaHomeStreet", kHomeStreet}, {"mozillaHomeStreet2", kHomeExtended},
    {"mozillaHomeLocalityName", kHomeLocality}, {"mozillaHomeState", kHomeRegion},
    {"mozillaHomePostalCode", kHomePostalCode}, {"mozillaHomeCountryName", kHomeCountry},
    {"street", kWorkStreet}, {"mozillaWorkStreet2", kWorkExtended}, {"l", kWorkLocality},
    {"st", kWorkRegion}, {"postalCode", kWorkPostalCode}, {"c", kWorkCountry},
    {"title", kTitle}, {"department", kUnit}, {"company", kOrganization}};

const char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string Base64(const std::string& bytes) {
    std::string out;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t v = static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])) << 16;
        if (i + 1 < bytes.size()) v |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8;
        if (i + 2 < bytes.size()) v |= static_cast<unsigned char>(bytes[i + 2]);
        out.push_back(kBase64[v >> 18]);
        out.push_back(kBase64[v >> 12 & 63]);
        out.push_back(i + 1 < bytes.size() ? kBase64[v >> 6 & 63] : '=');
        out.push_back(i + 2 < bytes.size() ? kBase64[v & 63] : '=');
    }
    return out;
}

// RFC 2849's SAFE-STRING, less a trailing space, which readers may drop.
bool Safe(const std::string& v) {
    if (v.empty()) return true;
    if (v[0] == ' ' || v[0] == ':' || v[0] == '<' || v.back() == ' ') return false;
    for (char c : v) {
        if (c == '\0' || c == '\n' || c == '\r' || static_cast<unsigned char>(c) >= 0x80) return false;
    }
    return true;
}

// An attribute value inside a distinguished name (RFC 4514).
std::string DnValue(const std::string& v) {
    std::string out;
    for (size_t i = 0; i < v.size(); ++i) {
        const char c = v[i];
        const bool edge = (i == 0 && (c == ' ' || c == '#')) || (i + 1 == v.size() && c == ' ');
        if (edge || c == '"' || c == '+' || c == ',' || c == ';' || c == '<' || c == '>' || c == '\\' || c == '=') {
            out.push_back('\\');
        }
        out.push_back(c);
    }
    return out;
}

// The dns given so far in one file.
class DnNames {
public:
    // "cn=<name><rest>", numbered when that is taken.
    std::string Claim(const std::string& name, const std::string& rest) {
        std::string dn = "cn=" + DnValue(name) + rest;
        for (int n = 2; !taken_.insert(Fold(dn)).second; ++n) {
            dn = "cn=" + DnValue(name + " (" + std::to_string(n) + ")") + rest;
        }
        return dn;
    }

private:
    static std::string Fold(std::string dn) {
        for (char& c : dn) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        return dn;
    }
    std::set<std::string> taken_;
};

std::string PersonDn(const BookLayout::Card& card, DnNames& names) {
    const std::string& mail = card.address[kEmail];
    return names.Claim(card.name, mail.empty() ? "" : ",mail=" + DnValue(mail));
}

void Put(std::string& out, const char* attribute, const std::string& value) {
    if (!value.empty()) out += LdifLine(attribute, value);
}

void Person(std::string& out, const BookLayout::Card& card, const std::string& dn) {
    const Address& a = card.address;
    out += LdifLine("dn", dn);
    for (const char* oc : {"top", "person", "organizationalPerson", "inetOrgPerson", "mozillaAbPersonAlpha"}) {
        out += LdifLine("objectclass", oc);
    }
    Put(out, "givenName", a[kGiven]);
    Put(out, "sn", a[kFamily]);
    out += LdifLine("cn", card.name);
    for (const Attribute& at : kAttributes) Put(out, at.name, a[at.field]);
    Put(out, "facsimiletelephonenumber", ThunderbirdFax(a));
    Put(out, "description", ThunderbirdNotes(a, true));
    out += "\n";
}

}  // namespace

const std::string& ThunderbirdFax(const Address& a) {
    return a[kTelWorkFax].empty() ? a[kTelHomeFax] : a[kTelWorkFax];
}

std::string ThunderbirdNotes(const Address& a, bool withReadings) {
    std::string notes = a[kNote];
    auto line = [&](const std::string& label, const std::string& value) {
        if (value.empty()) return;
        if (!notes.empty()) notes += '\n';
        notes += label + ": " + value;
    };
    if (withReadings) {
        line("Phonetic Last Name", a[kFamilyReading]);
        line("Phonetic First Name", a[kGivenReading]);
    }
    if (!a[kTelWorkFax].empty()) line("Home Fax", a[kTelHomeFax]);
    for (const auto& e : a.extras) line(e.first, e.second);
    return notes;
}

std::string LdifLine(const std::string& attribute, const std::string& value) {
    const std::string line =
        Safe(value) ? attribute + (value.empty() ? ":" : ": " + value) : attribute + ":: " + Base64(value);
    // Every byte here is ASCII, so any place is a character boundary.
    std::string out = line.substr(0, 76);
    for (size_t i = 76; i < line.size(); i += 75) out += "\n " + line.substr(i, 75);
    return out + "\n";
}

std::string WriteLdif(const BookLayout& book) {
    std::string out;
    DnNames names;
    std::vector<std::string> dns;
    for (const BookLayout::Card& card : book.cards) {
        dns.push_back(PersonDn(card, names));
        Person(out, card, dns.back());
    }
    for (const BookLayout::List& l : book.lists) {
        out += LdifLine("dn", names.Claim(l.name, ""));
        out += LdifLine("objectclass", "top");
        out += LdifLine("objectclass", "groupOfNames");
        out += LdifLine("cn", l.name);
        for (size_t c : l.allCards) out += LdifLine("member", dns[c]);
        out += "\n";
    }
    return out;
}

std::unique_ptr<AddressWriter> MakeLdifWriter(const Format& format) {
    return std::make_unique<OneFileWriter>(format, WriteLdif);
}

}  // namespace tqnralm
