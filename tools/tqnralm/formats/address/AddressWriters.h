// AddressWriters.h - the three forms of an exported book, each a pure
// function from the laid-out book to the bytes of its file: vCard 4.0,
// LDIF for Thunderbird's address book, and CSV with Thunderbird's header.
#ifndef TQNRALM_HOST_ADDRESSWRITERS_H
#define TQNRALM_HOST_ADDRESSWRITERS_H

#include <string>

#include "AddressModel.h"

namespace tqnralm {

// vCard 4.0 (RFC 6350), UTF-8, CR LF: one card per merged address.
std::string WriteVCard(const BookLayout& book);
// The book's groups in the same form: one KIND:group card per group whose
// MEMBERs are the UIDs of its addresses (in WriteVCard's file) and of its
// subgroups. Empty for a book without groups.
std::string WriteVCardGroups(const BookLayout& book);
// A value with \ , and line ends escaped; a component of a compound value
// (N, ADR, ORG) also escapes ";".
std::string VCardEscape(const std::string& text, bool component);
// One content line folded at 75 octets on character boundaries, with its CR LF.
std::string VCardFold(const std::string& line);

// LDIF as Thunderbird imports it: persons, then one groupOfNames per group
// that names the addresses of the group and of all its subgroups.
std::string WriteLdif(const BookLayout& book);
// "attr: value", or "attr:: base64" for a value that is not safe ASCII,
// folded at 76 octets, with its LF.
std::string LdifLine(const std::string& attribute, const std::string& value);

// CSV (RFC 4180) with a UTF-8 BOM: Thunderbird's 37 English columns, the
// two readings, and "Groups" with the group paths of each address.
std::string WriteCsv(const BookLayout& book);

// What Thunderbird's fields have no place for, as lines of "label: value"
// behind the note: the home fax when there is a work fax too, the extra
// pairs, and the readings where withReadings is set.
std::string ThunderbirdNotes(const Address& a, bool withReadings);
// Thunderbird has one fax number: the work fax, else the home fax.
const std::string& ThunderbirdFax(const Address& a);

}  // namespace tqnralm

#endif  // TQNRALM_HOST_ADDRESSWRITERS_H
