// CsvWriter.cpp - CSV (RFC 4180) as Thunderbird's address book exports it
// in English: its 37 columns in its order, which its import maps by name,
// and a UTF-8 BOM, which settles its guess of the charset. Thunderbird has
// no lists in CSV, so two reading columns and "Groups" follow its columns.
#include "AddressWriter.h"
#include "AddressWriters.h"

namespace tqnralm {
namespace {

const char kHeader[] =
    "First Name,Last Name,Display Name,Nickname,Primary Email,Secondary Email,Screen Name,Work Phone,Home Phone,"
    "Fax Number,Pager Number,Mobile Number,Home Address,Home Address 2,Home City,Home State,Home ZipCode,"
    "Home Country,Work Address,Work Address 2,Work City,Work State,Work ZipCode,Work Country,Job Title,Department,"
    "Organization,Web Page 1,Web Page 2,Birth Year,Birth Month,Birth Day,Custom 1,Custom 2,Custom 3,Custom 4,Notes,"
    "Phonetic Last Name,Phonetic First Name,Groups\r\n";

std::string Field(const std::string& v) {
    if (v.find_first_of(",\"\r\n") == std::string::npos) return v;
    std::string out = "\"";
    for (char c : v) {
        if (c == '"') out += "\"\"";
        else out.push_back(c);
    }
    return out + "\"";
}

}  // namespace

std::string WriteCsv(const BookLayout& book) {
    std::string out = "\xEF\xBB\xBF";
    out += kHeader;
    const std::string none;
    for (const BookLayout::Card& card : book.cards) {
        const Address& a = card.address;
        std::string groups;
        for (size_t l : card.lists) groups += (groups.empty() ? "" : "; ") + book.lists[l].path;
        const std::string* row[] = {
            &a[kGiven], &a[kFamily], &card.name, &a[kNickname], &a[kEmail], &none, &none,
            &a[kTelWorkVoice], &a[kTelHomeVoice], &ThunderbirdFax(a), &a[kTelPagerVoice], &a[kTelCellVoice],
            &a[kHomeStreet], &a[kHomeExtended], &a[kHomeLocality], &a[kHomeRegion], &a[kHomePostalCode],
            &a[kHomeCountry], &a[kWorkStreet], &a[kWorkExtended], &a[kWorkLocality], &a[kWorkRegion],
            &a[kWorkPostalCode], &a[kWorkCountry], &a[kTitle], &a[kUnit], &a[kOrganization],
            &none, &none, &none, &none, &none, &none, &none, &none, &none};
        std::string line;
        for (const std::string* v : row) line += Field(*v) + ",";
        line += Field(ThunderbirdNotes(a, false)) + "," + Field(a[kFamilyReading]) + "," +
                Field(a[kGivenReading]) + "," + Field(groups) + "\r\n";
        out += line;
    }
    return out;
}

std::unique_ptr<AddressWriter> MakeCsvWriter(const Format& format) {
    return std::make_unique<OneFileWriter>(format, WriteCsv);
}

}  // namespace tqnralm
