// AddressFormsTest.cpp - the address export's pure parts: UIDs, cleaning,
// folding and escaping, where each field lands in the three forms, and how
// groups nest and merge. (check_addresses.py reads the sample store's export.)
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "AddressModel.h"
#include "AddressWriters.h"
#include "NameUuid.h"

namespace {

using namespace tqnralm;

// Python's uuid.uuid5 gives the same.
TEST(AddressForms, NameUuid) {
    EXPECT_EQ("886313e1-3b8a-5372-9b90-0c9aee199e5d", NameUuid("6ba7b810-9dad-11d1-80b4-00c04fd430c8", "python.org"));
    EXPECT_EQ("7d340f48-c165-55f5-8ac5-8d642da1c20d", NameUuid("6ba7b811-9dad-11d1-80b4-00c04fd430c8", "日本語"));
}

TEST(AddressForms, CleanText) {
    struct { const char* name; std::string in, out; } cases[] = {
        {"line ends become LF", "a\r\nb\rc\nd", "a\nb\nc\nd"},
        {"controls, DEL and C1 go, TAB stays", std::string("a\0b\x01\x1b\x7f\t\xc2\x85z", 11), "ab\tz"},
        {"only spaces", " \t \xe3\x80\x80 \r\n", ""},
        {"ends trimmed, inner kept", "\xe3\x80\x80 山田 太郎 ", "山田 太郎"},
        {"invalid UTF-8, overlong, surrogate", "a\xff\xc0\xaf\xed\xa0\x80", "a\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"
                                                                         "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"},
        {"four-byte sequence kept", "\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.out, CleanText(c.in)) << c.name;
}

TEST(AddressForms, VCardFoldAndEscape) {
    const std::string a74(74, 'a'), a75(75, 'a');
    struct { const char* name; std::string line, folded; } folds[] = {
        {"75 octets stay whole", a75, a75 + "\r\n"},
        {"76 octets fold", a75 + "b", a75 + "\r\n b\r\n"},
        {"a continuation holds 74 more", a75 + a74 + "c", a75 + "\r\n " + a74 + "\r\n c\r\n"},
        {"no split inside a character", a74 + "あ", a74 + "\r\n あ\r\n"},
        {"a character that just fits", std::string(72, 'a') + "あ", std::string(72, 'a') + "あ\r\n"},
    };
    for (const auto& c : folds) EXPECT_EQ(c.folded, VCardFold(c.line)) << c.name;
    // A single text value keeps ";" as it is; a component of N, ADR or ORG escapes it.
    EXPECT_EQ("a\\\\b\\,c;d\\ne:f", VCardEscape("a\\b,c;d\ne:f", false));
    EXPECT_EQ("a\\\\b\\,c\\;d\\ne:f", VCardEscape("a\\b,c;d\ne:f", true));
}

TEST(AddressForms, LdifValues) {
    struct { const char* name; std::string value, line; } cases[] = {
        {"safe ASCII", "Taro Yamada", "cn: Taro Yamada\n"}, {"empty", "", "cn:\n"},
        {"non-ASCII", "山田", "cn:: 5bGx55Sw\n"}, {"leading space", " a", "cn:: IGE=\n"},
        {"leading colon", ":a", "cn:: OmE=\n"}, {"leading less-than", "<a", "cn:: PGE=\n"},
        {"trailing space", "a ", "cn:: YSA=\n"}, {"line end", "a\nb", "cn:: YQpi\n"},
        {"colon inside is safe", "a:b", "cn: a:b\n"},
        {"folded at 76", std::string(80, 'x'), "cn: " + std::string(72, 'x') + "\n " + std::string(8, 'x') + "\n"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.line, LdifLine("cn", c.value)) << c.name;
}

// The cells of a CSV text (RFC 4180), rows of fields.
std::vector<std::vector<std::string>> ParseCsv(const std::string& text) {
    std::vector<std::vector<std::string>> rows(1, std::vector<std::string>(1));
    bool quoted = false;
    for (size_t i = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quoted && c == '"' && i + 1 < text.size() && text[i + 1] == '"') rows.back().back() += c, ++i;
        else if (c == '"') quoted = !quoted;
        else if (!quoted && c == ',') rows.back().emplace_back();
        else if (!quoted && c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') rows.emplace_back(1), ++i;
        else rows.back().back() += c;
    }
    if (rows.back().size() == 1 && rows.back()[0].empty()) rows.pop_back();
    return rows;
}

// The value of one CSV column in the first row.
std::string CsvCell(const std::string& csv, const std::string& column) {
    auto rows = ParseCsv(csv);
    for (size_t i = 0; rows.size() > 1 && i < rows[0].size(); ++i) {
        if (rows[0][i] == column) return i < rows[1].size() ? rows[1][i] : "<short row>";
    }
    return "<no column>";
}

AddressBook OneAddress(const Address& a) {
    AddressBook b;
    b.user = "u", b.name = "b", b.top.addresses.push_back(a);
    return b;
}

TEST(AddressForms, FieldPlaces) {
    // Each key alone holds "V"; "" means the form has no place of its own
    // for it (the notes take it, as the rows with "Notes" show).
    struct { AddressField field; const char* vcard; const char* ldif; const char* csv; } rows[] = {
        {kFN, "FN:V", "cn: V", "Display Name"},
        {kFamily, "N:V;;;;", "sn: V", "Last Name"},
        {kGiven, "N:;V;;;", "givenName: V", "First Name"},
        {kFamilyReading, "N;SORT-AS=\"V\":;;;;\r\nX-PHONETIC-LAST-NAME:V", "description: Phonetic Last Name: V",
         "Phonetic Last Name"},
        {kGivenReading, "N;SORT-AS=\",V\":;;;;\r\nX-PHONETIC-FIRST-NAME:V", "description: Phonetic First Name: V",
         "Phonetic First Name"},
        {kNickname, "NICKNAME:V", "mozillaNickname: V", "Nickname"},
        {kEmail, "EMAIL:V", "mail: V", "Primary Email"},
        {kTelHomeVoice, "TEL;TYPE=home,voice:V", "homePhone: V", "Home Phone"},
        {kTelHomeFax, "TEL;TYPE=home,fax:V", "facsimiletelephonenumber: V", "Fax Number"},
        {kTelWorkVoice, "TEL;TYPE=work,voice:V", "telephoneNumber: V", "Work Phone"},
        {kTelWorkFax, "TEL;TYPE=work,fax:V", "facsimiletelephonenumber: V", "Fax Number"},
        {kTelCellVoice, "TEL;TYPE=cell,voice:V", "mobile: V", "Mobile Number"},
        {kTelPagerVoice, "TEL;TYPE=pager:V", "pager: V", "Pager Number"},
        {kHomeExtended, "ADR;TYPE=home:;V;;;;;", "mozillaHomeStreet2: V", "Home Address 2"},
        {kHomeStreet, "ADR;TYPE=home:;;V;;;;", "mozillaHomeStreet: V", "Home Address"},
        {kHomeLocality, "ADR;TYPE=home:;;;V;;;", "mozillaHomeLocalityName: V", "Home City"},
        {kHomeRegion, "ADR;TYPE=home:;;;;V;;", "mozillaHomeState: V", "Home State"},
        {kHomePostalCode, "ADR;TYPE=home:;;;;;V;", "mozillaHomePostalCode: V", "Home ZipCode"},
        {kHomeCountry, "ADR;TYPE=home:;;;;;;V", "mozillaHomeCountryName: V", "Home Country"},
        {kWorkExtended, "ADR;TYPE=work:;V;;;;;", "mozillaWorkStreet2: V", "Work Address 2"},
        {kWorkStreet, "ADR;TYPE=work:;;V;;;;", "street: V", "Work Address"},
        {kWorkLocality, "ADR;TYPE=work:;;;V;;;", "l: V", "Work City"},
        {kWorkRegion, "ADR;TYPE=work:;;;;V;;", "st: V", "Work State"},
        {kWorkPostalCode, "ADR;TYPE=work:;;;;;V;", "postalCode: V", "Work ZipCode"},
        {kWorkCountry, "ADR;TYPE=work:;;;;;;V", "c: V", "Work Country"},
        {kOrganization, "ORG:V", "company: V", "Organization"},
        {kUnit, "ORG:;V", "department: V", "Department"},
        {kTitle, "TITLE:V", "title: V", "Job Title"},
        {kNote, "NOTE:V", "description: V", "Notes"},
    };
    ASSERT_EQ(static_cast<size_t>(kAddressFieldCount), sizeof rows / sizeof rows[0]);
    for (const auto& r : rows) {
        SCOPED_TRACE(kAddressKeys[r.field]);
        Address a;
        a[r.field] = "V";
        const BookLayout layout = LayOut(OneAddress(a));
        EXPECT_NE(std::string::npos, WriteVCard(layout).find("\r\n" + std::string(r.vcard) + "\r\n"));
        EXPECT_NE(std::string::npos, WriteLdif(layout).find("\n" + std::string(r.ldif) + "\n"));
        EXPECT_EQ("V", CsvCell(WriteCsv(layout), r.csv));
    }
}

TEST(AddressForms, CombinedFields) {
    Address a;
    a[kFamily] = "山田", a[kGiven] = "太郎", a[kFamilyReading] = "やまだ", a[kGivenReading] = "た,ろう";
    a[kTelHomeFax] = "1", a[kTelWorkFax] = "2", a[kNote] = "n";
    a.extras = {{"Birthday", "1月1日"}, {"誕生日", "x"}, {"x-mine", "y;z"}, {"empty", ""}};
    const BookLayout layout = LayOut(OneAddress(a));
    const std::string vcard = WriteVCard(layout), ldif = WriteLdif(layout), csv = WriteCsv(layout);
    struct { const std::string* text; std::string expected; } rows[] = {
        {&vcard, "\r\nFN:山田 太郎\r\n"},  // the name parts when there is no display name
        {&vcard, "\r\nN;SORT-AS=\"やまだ,た ろう\":山田;太郎;;;\r\n"}, {&vcard, "\r\nX-BIRTHDAY:1月1日\r\n"},
        {&vcard, "\r\nX-EXTRA;X-NAME=\"誕生日\":x\r\n"}, {&vcard, "\r\nX-MINE:y;z\r\n"},
        {&ldif, "\nfacsimiletelephonenumber: 2\n"},
        // The notes keep what Thunderbird has no field for.
        {&ldif, "\n" + LdifLine("description", "n\nPhonetic Last Name: やまだ\nPhonetic First Name: た,ろう\n"
                                               "Home Fax: 1\nBirthday: 1月1日\n誕生日: x\nx-mine: y;z")},
    };
    for (const auto& r : rows) EXPECT_NE(std::string::npos, r.text->find(r.expected)) << r.expected;
    EXPECT_EQ(std::string::npos, vcard.find("EMPTY"));
    EXPECT_EQ("n\nHome Fax: 1\nBirthday: 1月1日\n誕生日: x\nx-mine: y;z", CsvCell(csv, "Notes"));
    EXPECT_EQ("2", CsvCell(csv, "Fax Number"));
    EXPECT_EQ("た,ろう", CsvCell(csv, "Phonetic First Name"));
}

TEST(AddressForms, FormattedNameAndDn) {
    struct { const char* fn; const char* family; const char* email; const char* name; const char* dn; } rows[] = {
        {"Taro", "山田", "t@x", "Taro", "dn: cn=Taro,mail=t@x"},
        {"", "山田", "t@x", "山田", "dn:: Y2495bGx55SwLG1haWw9dEB4"}, {"", "", "t@x", "t@x", "dn: cn=t@x,mail=t@x"},
        {"a, b", "", "", "a, b", "dn: cn=a\\, b"},  // no address: no mail part
        {"", "", "", "", "dn: cn="},
    };
    for (const auto& r : rows) {
        Address a;
        a[kFN] = r.fn, a[kFamily] = r.family, a[kEmail] = r.email;
        EXPECT_EQ(r.name, FormattedName(a));
        EXPECT_EQ(0u, WriteLdif(LayOut(OneAddress(a))).find(std::string(r.dn) + "\n")) << r.dn;
    }
}

Address Named(const std::string& fn, const std::string& email) {
    Address a;
    a[kFN] = fn, a[kEmail] = email;
    return a;
}

// A compact picture of a layout: per list "name[path]:direct cards/all cards/sublists".
std::string Picture(const BookLayout& l) {
    std::string out = std::to_string(l.cards.size()) + " cards";
    for (const auto& list : l.lists) {
        out += " | " + list.name + "[" + list.path + "]:";
        for (size_t c : list.cards) out += l.cards[c].name;
        out += "/";
        for (size_t c : list.allCards) out += l.cards[c].name;
        out += "/" + std::to_string(list.sublists.size());
    }
    return out;
}

TEST(AddressForms, NestingAndMerging) {
    const Address a = Named("a", "a@x"), b = Named("b", "b@x");
    Address a2 = a;
    a2[kNote] = "differs";
    AddressGroup g1{"g", {a}, {AddressGroup{"h", {b}, {}}}};
    struct { const char* name; AddressGroup top; std::string picture; } rows[] = {
        {"parent lists its subgroups' cards", AddressGroup{"", {}, {g1}}, "2 cards | g[g]:a/ab/1 | h[g/h]:b/b/0"},
        {"equal addresses in two groups: one card",
         AddressGroup{"", {a}, {AddressGroup{"x", {a, a}, {}}, AddressGroup{"y", {a}, {}}}},
         "1 cards | x[x]:a/a/0 | y[y]:a/a/0"},
        {"one field differs: two cards", AddressGroup{"", {a, a2}, {}}, "2 cards"},
        {"a card in a parent and a child is listed once", AddressGroup{"", {}, {AddressGroup{"p", {a}, {g1}}}},
         "2 cards | p[p]:a/ab/1 | g[p/g]:a/ab/1 | h[p/g/h]:b/b/0"},
        {"repeated names take the path, then a number",
         AddressGroup{"", {}, {AddressGroup{"t", {}, {AddressGroup{"t", {}, {}}}}, AddressGroup{"t/t", {}, {}},
                               AddressGroup{"t", {}, {}}, AddressGroup{"", {}, {}}}},
         "0 cards | t[t]://1 | t/t[t/t]://0 | t/t (2)[t/t]://0 | t (2)[t]://0 | -[]://0"},
    };
    for (const auto& r : rows) {
        AddressBook book;
        book.top = r.top;
        EXPECT_EQ(r.picture, Picture(LayOut(book))) << r.name;
    }
}

// A group's card names its cards and its subgroups' group cards; the UIDs come
// from the book. The persons' file holds no group card. (The LDIF lists, the
// CSV groups and two exports alike are read back by check_addresses.py.)
TEST(AddressForms, GroupCardsAndUids) {
    AddressBook book;
    book.user = "u", book.name = "b";
    book.top.groups = {AddressGroup{"g", {Named("a", "a@x")}, {AddressGroup{"h", {}, {}}}}};
    const BookLayout l = LayOut(book);
    EXPECT_EQ(0u, WriteVCardGroups(l).find("BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nUID:urn:uuid:" +
                                           l.lists[0].uid + "\r\nFN:g\r\nMEMBER:urn:uuid:" + l.cards[0].uid +
                                           "\r\nMEMBER:urn:uuid:" + l.lists[1].uid + "\r\nEND:VCARD"));
    EXPECT_EQ(std::string::npos, WriteVCard(l).find("KIND"));
    book.top.groups.clear();
    EXPECT_EQ("", WriteVCardGroups(LayOut(book)));
    book.name = "c";
    book.top.addresses = {Named("a", "a@x")};
    EXPECT_NE(l.cards[0].uid, LayOut(book).cards[0].uid);
}

// The dn and member lines of a book's LDIF, in order, each ended by "|".
std::string DnLines(const std::string& ldif) {
    std::string out;
    for (size_t start = 0, end; start < ldif.size(); start = end + 1) {
        end = ldif.find('\n', start);
        const std::string line = ldif.substr(start, end - start);
        if (line.compare(0, 3, "dn:") == 0 || line.compare(0, 7, "member:") == 0) out += line + "|";
    }
    return out;
}

TEST(AddressForms, LdifNamesAreUnique) {
    Address noted = Named("a", "a@x");
    noted[kNote] = "other";
    struct { const char* name; AddressGroup top; std::string lines; } rows[] = {
        {"a list named like a person without address",
         AddressGroup{"", {Named("g", "")}, {AddressGroup{"g", {Named("g", "")}, {}}}},
         "dn: cn=g|dn: cn=g (2)|member: cn=g|"},
        {"two cards of one name and address", AddressGroup{"", {}, {AddressGroup{"l", {Named("a", "a@x"), noted}, {}}}},
         "dn: cn=a,mail=a@x|dn: cn=a (2),mail=a@x|dn: cn=l|member: cn=a,mail=a@x|member: cn=a (2),mail=a@x|"},
        {"names that differ in case only",
         AddressGroup{"", {Named("A", ""), Named("a", "")}, {AddressGroup{"A (2)", {}, {}}}},
         "dn: cn=A|dn: cn=a (2)|dn: cn=A (2) (2)|"},
        {"the same name with another address", AddressGroup{"", {Named("a", "a@x"), Named("a", "b@x")}, {}},
         "dn: cn=a,mail=a@x|dn: cn=a,mail=b@x|"},
    };
    for (const auto& r : rows) {
        AddressBook book;
        book.top = r.top;
        EXPECT_EQ(r.lines, DnLines(WriteLdif(LayOut(book)))) << r.name;
    }
}

// Equal content gives equal digests whatever the book is called, so a file
// listed twice is written once; any difference in content keeps both.
TEST(AddressForms, ContentDigest) {
    const AddressGroup base{"", {Named("a", "a@x")}, {AddressGroup{"g", {Named("b", "b@x")}, {}}}};
    AddressGroup renamedGroup = base, otherField = base, moved = base, extra = base;
    renamedGroup.groups[0].name = "h";
    otherField.groups[0].addresses[0][kNote] = "n";
    moved.addresses.swap(moved.groups[0].addresses);
    extra.addresses[0].extras = {{"k", "v"}};
    AddressBook first;
    first.user = "u", first.name = "標準のアドレス帳", first.top = base;
    struct { const char* name; AddressGroup top; const char* bookName; bool equal; } rows[] = {
        {"the same file under another name", base, "Address", true},
        {"a group renamed", renamedGroup, "Address", false}, {"a field differs", otherField, "Address", false},
        {"addresses in other groups", moved, "Address", false}, {"an extra pair", extra, "Address", false},
    };
    for (const auto& r : rows) {
        AddressBook b;
        b.user = "v", b.name = r.bookName, b.top = r.top;
        EXPECT_EQ(r.equal, b.ContentDigest() == first.ContentDigest()) << r.name;
    }
    EXPECT_EQ("", AddressBook().ContentDigest());
}

}  // namespace
