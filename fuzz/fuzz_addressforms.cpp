// fuzz_addressforms.cpp - the address writers over any texts (cut at zero
// bytes: fields in turn, 0x01 opens a group, 0x02 closes one, 0x03 an extra
// pair), cleaned as the export cleans them: vCard lines of at most 75 octets
// in UTF-8 ended by CR LF, LDIF in ASCII lines of at most 76 with no dn
// twice, CSV quotes balanced.
#include "FuzzCheck.h"

#include <set>
#include <vector>

#include "AddressModel.h"
#include "AddressWriters.h"

namespace {

using namespace tqnralm;

using fuzzcheck::Check;

bool ValidUtf8(const std::string& s) { size_t units = 0; return fuzzcheck::Utf16Units(s, &units); }

std::vector<std::string> Lines(const std::string& text, const std::string& end) {
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        size_t at = text.find(end, start);
        Check(at != std::string::npos);  // the last line is ended too
        lines.push_back(text.substr(start, at - start));
        start = at + end.size();
    }
    return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    AddressBook book;
    book.user = "u";
    book.name = "b";
    std::vector<AddressGroup*> open{&book.top};
    Address address;
    int field = 0;
    const std::string input = fuzzcheck::Text(data, size);
    for (size_t start = 0; start <= input.size();) {
        size_t end = input.find('\0', start);
        if (end == std::string::npos) end = input.size();
        const std::string text = input.substr(start, end - start);
        start = end + 1;
        if (!text.empty() && text[0] == '\x01' && open.size() < 16) {
            open.back()->groups.push_back(AddressGroup{CleanText(text.substr(1)), {}, {}});
            open.push_back(&open.back()->groups.back());
        } else if (!text.empty() && text[0] == '\x02' && open.size() > 1) {
            open.pop_back();
        } else if (!text.empty() && text[0] == '\x03') {
            address.extras.emplace_back(CleanText(text.substr(1)), CleanText(text.substr(text.size() / 2)));
        } else {
            address.fields[field] = CleanText(text);
            if (++field == kAddressFieldCount) field = 0;
            open.back()->addresses.push_back(address);
        }
    }
    const BookLayout layout = LayOut(book);

    for (const std::string& vcard : {WriteVCard(layout), WriteVCardGroups(layout)}) {
        Check(ValidUtf8(vcard));
        for (const std::string& line : Lines(vcard, "\r\n")) {
            Check(line.size() <= 75 && line.find_first_of("\r\n") == std::string::npos);
        }
    }
    // The dn lines unfolded: each one once.
    std::set<std::string> dns;
    std::string* last = nullptr;
    std::string dn;
    for (const std::string& line : Lines(WriteLdif(layout), "\n")) {
        Check(line.size() <= 76);
        for (char c : line) Check(static_cast<unsigned char>(c) < 0x80 && c != '\r');
        if (last != nullptr && !line.empty() && line[0] == ' ') {
            *last += line.substr(1);
            continue;
        }
        if (last != nullptr) Check(dns.insert(*last).second);
        last = line.compare(0, 3, "dn:") == 0 ? &(dn = line) : nullptr;
    }
    const std::string csv = WriteCsv(layout);
    Check(ValidUtf8(csv));
    // Outside quotes, CR LF ends a row; a row's quotes pair up.
    bool quoted = false;
    for (char c : csv) quoted = c == '"' ? !quoted : quoted;
    Check(!quoted);
    return 0;
}
