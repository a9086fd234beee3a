// AddressModel.h - the address books of one user as the export sees them:
// each book (a top group of the user's address data) holds addresses and
// nested groups, every text in UTF-8. BookLayout arranges a book for the
// writers: equal addresses merged into one card, groups as lists with
// stable UIDs and unique names.
#ifndef TQNRALM_HOST_ADDRESSMODEL_H
#define TQNRALM_HOST_ADDRESSMODEL_H

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tqnralm {

// The fields of an address in the order of the library's property keys
// (kAddressKeys). N-1 is the family name, N-2 the given name, N-S1 and N-S2
// their readings; ADR;HOME-k and ADR;WORK-k are the k-th parts of an ADR
// value (2 extended address, 3 street, 4 locality, 5 region, 6 postal code,
// 7 country); ADR;ORG-1 and -2 the organisation and its unit.
enum AddressField {
    kFN, kFamily, kGiven, kFamilyReading, kGivenReading, kNickname, kEmail,
    kTelHomeVoice, kTelHomeFax, kTelWorkVoice, kTelWorkFax, kTelCellVoice, kTelPagerVoice,
    kHomeExtended, kHomeStreet, kHomeLocality, kHomeRegion, kHomePostalCode, kHomeCountry,
    kWorkExtended, kWorkStreet, kWorkLocality, kWorkRegion, kWorkPostalCode, kWorkCountry,
    kOrganization, kUnit, kTitle, kNote,
    kAddressFieldCount
};
extern const char* const kAddressKeys[kAddressFieldCount];

struct Address {
    std::array<std::string, kAddressFieldCount> fields;
    // The extra name and value pairs of the record, in its order.
    std::vector<std::pair<std::string, std::string>> extras;

    const std::string& operator[](AddressField f) const { return fields[f]; }
    std::string& operator[](AddressField f) { return fields[f]; }
    bool operator==(const Address& o) const { return fields == o.fields && extras == o.extras; }
};

struct AddressGroup {
    std::string name;
    std::vector<Address> addresses;
    std::vector<AddressGroup> groups;
};

// One book: a top group of a user's address data.
struct AddressBook {
    std::string user;
    std::string name;
    AddressGroup top;
    // What the walk could not read: groups and addresses whose calls failed.
    int failedGroups = 0;
    int failedAddresses = 0;
    // The count of groups and addresses (each place counted) in the book.
    int GroupCount() const;
    int AddressCount() const;
    // A digest of what the book holds, its own name aside: every group name
    // and address in order. Equal for a file read twice, under whatever
    // spelling of its path; empty for a book that holds nothing.
    std::string ContentDigest() const;
};

// A text as the writers take it: valid UTF-8, line ends as LF, no other
// control character but TAB, no white space (ASCII or ideographic) at
// either end. Invalid UTF-8 becomes U+FFFD.
std::string CleanText(const std::string& utf8);

// The name a card goes by: the display name, else the family and given
// names joined, else the e-mail address.
std::string FormattedName(const Address& a);

struct BookLayout {
    struct Card {
        Address address;
        std::string uid;   // lower-case UUID without "urn:uuid:"
        std::string name;  // FormattedName
        std::vector<size_t> lists;  // the lists that name it directly
        bool inTop = false;         // it also stands directly in the book
    };
    struct List {
        std::string uid;
        std::string name;  // unique within the book
        std::string path;  // the group names from the book down, joined by "/"
        std::vector<size_t> cards;     // direct addresses, merged
        std::vector<size_t> sublists;  // direct subgroups
        std::vector<size_t> allCards;  // its own and its subgroups' cards, each once
    };
    std::vector<Card> cards;  // in the order of first appearance
    std::vector<List> lists;  // depth first, parents before children
};

// Arranges a book. Addresses equal in every field become one card; the
// UIDs are version 5 UUIDs of the user, the book and the place of the item
// (its first place, for a merged card), so two exports are identical.
BookLayout LayOut(const AddressBook& book);

}  // namespace tqnralm

#endif  // TQNRALM_HOST_ADDRESSMODEL_H
