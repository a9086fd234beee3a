// AddressModel.cpp - text cleaning and the layout of a book for the writers.
#include "AddressModel.h"

#include <functional>
#include <map>
#include <set>

#include "NameUuid.h"
#include "Sha1.h"
#include "Utf.h"

namespace tqnralm {

const char* const kAddressKeys[kAddressFieldCount] = {
    "FN", "N-1", "N-2", "N-S1", "N-S2", "NICKNAME", "EMAIL;INTERNET",
    "TEL;HOME;VOICE", "TEL;HOME;FAX", "TEL;WORK;VOICE", "TEL;WORK;FAX", "TEL;CELL;VOICE", "TEL;PAGER;VOICE",
    "ADR;HOME-2", "ADR;HOME-3", "ADR;HOME-4", "ADR;HOME-5", "ADR;HOME-6", "ADR;HOME-7",
    "ADR;WORK-2", "ADR;WORK-3", "ADR;WORK-4", "ADR;WORK-5", "ADR;WORK-6", "ADR;WORK-7",
    "ADR;ORG-1", "ADR;ORG-2", "TITLE", "NOTE"};

namespace {

// The namespace of the cards' UIDs: the URL namespace of RFC 9562.
const char kUidNamespace[] = "6ba7b811-9dad-11d1-80b4-00c04fd430c8";

int CountGroups(const AddressGroup& g) {
    int n = static_cast<int>(g.groups.size());
    for (const AddressGroup& s : g.groups) n += CountGroups(s);
    return n;
}

int CountAddresses(const AddressGroup& g) {
    int n = static_cast<int>(g.addresses.size());
    for (const AddressGroup& s : g.groups) n += CountAddresses(s);
    return n;
}

// One code point from UTF-8 at i; an invalid sequence is one byte of U+FFFD.
uint32_t NextCodePoint(const std::string& s, size_t& i) {
    const unsigned char c = static_cast<unsigned char>(s[i]);
    size_t n = c < 0x80 ? 1 : (c & 0xE0) == 0xC0 ? 2 : (c & 0xF0) == 0xE0 ? 3 : (c & 0xF8) == 0xF0 ? 4 : 0;
    uint32_t cp = n == 1 ? c : n == 2 ? c & 0x1F : n == 3 ? c & 0x0F : c & 0x07;
    bool ok = n != 0 && i + n <= s.size();
    for (size_t k = 1; ok && k < n; ++k) {
        const unsigned char t = static_cast<unsigned char>(s[i + k]);
        ok = (t & 0xC0) == 0x80;
        cp = cp << 6 | (t & 0x3F);
    }
    // Overlong forms, surrogates and values beyond U+10FFFF are invalid too.
    static const uint32_t kMin[] = {0, 0, 0x80, 0x800, 0x10000};
    if (!ok || cp < kMin[n] || (cp >= 0xD800 && cp < 0xE000) || cp > 0x10FFFF) {
        ++i;
        return 0xFFFD;
    }
    i += n;
    return cp;
}

// A group in a form that tells its structure: cleaned texts hold no
// control characters but tab and line feed, so 1, 2 and 3 mark a group's
// start and end and an address, and 0 ends every text.
void Serialise(const AddressGroup& g, std::string& out) {
    for (const Address& a : g.addresses) {
        out += '\3';
        for (const std::string& f : a.fields) out += f + '\0';
        for (const auto& e : a.extras) out += e.first + '\0' + e.second + '\0';
    }
    for (const AddressGroup& sub : g.groups) {
        out += '\1' + sub.name + '\0';
        Serialise(sub, out);
        out += '\2';
    }
}

bool IsSpace(uint32_t cp) { return cp == ' ' || cp == '\t' || cp == '\n' || cp == 0x3000; }

}  // namespace

int AddressBook::GroupCount() const { return CountGroups(top); }
int AddressBook::AddressCount() const { return CountAddresses(top); }

std::string AddressBook::ContentDigest() const {
    std::string text;
    Serialise(top, text);
    if (text.empty()) return "";
    Sha1 sha;
    sha.Update(text.data(), text.size());
    return sha.HexDigest();
}

std::string CleanText(const std::string& utf8) {
    std::vector<uint32_t> cps;
    for (size_t i = 0; i < utf8.size();) {
        uint32_t cp = NextCodePoint(utf8, i);
        if (cp == '\r') {
            // CR LF and a lone CR are both one line end.
            if (i < utf8.size() && utf8[i] == '\n') ++i;
            cp = '\n';
        }
        // C0 and C1 controls and DEL carry nothing a contact program shows.
        if ((cp < 0x20 && cp != '\t' && cp != '\n') || (cp >= 0x7F && cp < 0xA0)) continue;
        cps.push_back(cp);
    }
    size_t begin = 0, end = cps.size();
    while (begin < end && IsSpace(cps[begin])) ++begin;
    while (end > begin && IsSpace(cps[end - 1])) --end;
    std::string out;
    for (size_t i = begin; i < end; ++i) AppendUtf8(out, cps[i]);
    return out;
}

std::string FormattedName(const Address& a) {
    if (!a[kFN].empty()) return a[kFN];
    std::string joined = a[kFamily];
    if (!joined.empty() && !a[kGiven].empty()) joined += ' ';
    joined += a[kGiven];
    return joined.empty() ? a[kEmail] : joined;
}

BookLayout LayOut(const AddressBook& book) {
    BookLayout out;
    const std::string base = book.user + '\n' + book.name + '\n';
    // Equal addresses are found by a key of all their texts, each ended by a
    // zero byte (which no cleaned text holds).
    std::map<std::string, size_t> byKey;
    std::set<std::string> names;
    auto cardOf = [&](const Address& a, const std::string& place) {
        std::string key;
        for (const std::string& f : a.fields) key += f + '\0';
        for (const auto& e : a.extras) key += e.first + '\0' + e.second + '\0';
        auto found = byKey.find(key);
        if (found != byKey.end()) return found->second;
        BookLayout::Card card;
        card.address = a;
        card.uid = NameUuid(kUidNamespace, base + place);
        card.name = FormattedName(a);
        out.cards.push_back(card);
        return byKey[key] = out.cards.size() - 1;
    };
    for (size_t i = 0; i < book.top.addresses.size(); ++i) {
        out.cards[cardOf(book.top.addresses[i], "a" + std::to_string(i))].inTop = true;
    }
    // Groups depth first; a list's allCards is complete once its subgroups are.
    std::function<size_t(const AddressGroup&, const std::string&, std::string)> visit =
        [&](const AddressGroup& g, const std::string& place, std::string parentPath) {
            const size_t index = out.lists.size();
            out.lists.emplace_back();
            {
                BookLayout::List& l = out.lists.back();
                l.uid = NameUuid(kUidNamespace, base + place);
                l.path = parentPath.empty() ? g.name : parentPath + "/" + g.name;
                // Thunderbird's lists go by name: a repeated name takes the
                // group's path, and a repeated path a number.
                std::string name = g.name.empty() ? "-" : g.name;
                if (names.count(name) != 0) name = l.path;
                for (int n = 2; names.count(name) != 0; ++n) name = l.path + " (" + std::to_string(n) + ")";
                names.insert(name);
                l.name = name;
            }
            std::set<size_t> seen;
            for (size_t i = 0; i < g.addresses.size(); ++i) {
                const size_t c = cardOf(g.addresses[i], place + "/a" + std::to_string(i));
                if (!seen.insert(c).second) continue;
                out.lists[index].cards.push_back(c);
                out.lists[index].allCards.push_back(c);
                out.cards[c].lists.push_back(index);
            }
            for (size_t i = 0; i < g.groups.size(); ++i) {
                const size_t sub = visit(g.groups[i], place + "/g" + std::to_string(i), out.lists[index].path);
                out.lists[index].sublists.push_back(sub);
                for (size_t c : std::vector<size_t>(out.lists[sub].allCards)) {
                    if (seen.insert(c).second) out.lists[index].allCards.push_back(c);
                }
            }
            return index;
        };
    for (size_t i = 0; i < book.top.groups.size(); ++i) visit(book.top.groups[i], "g" + std::to_string(i), "");
    return out;
}

}  // namespace tqnralm
