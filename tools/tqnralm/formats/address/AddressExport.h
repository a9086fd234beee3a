// AddressExport.h - the address half of `tqnralm export`: each book of a
// user in the chosen forms, as bytes for the caller to name and write.
#ifndef TQNRALM_HOST_ADDRESSEXPORT_H
#define TQNRALM_HOST_ADDRESSEXPORT_H

#include <string>
#include <vector>

#include "tqnralm.h"

namespace tqnralm {

struct AddressForms {
    bool vcard = true, ldif = true, csv = true;
};
// "vcard,ldif,csv" or any part of it, each form once; false for anything else.
bool ParseAddressForms(const std::string& list, AddressForms* out);

struct AddressBookOutput {
    std::string name;  // the top group's name, before the file name rules
    struct File {
        const char* extension;  // "vcf", "groups.vcf", "ldif", "csv"
        std::string bytes;
    };
    std::vector<File> files;
    // Groups and addresses at every place in the book, and those that
    // could not be read; cards counts the addresses after merging.
    int groups = 0, failedGroups = 0, addresses = 0, failedAddresses = 0, cards = 0;
    // AddressBook::ContentDigest, kept only for a book read without failures.
    std::string digest;
};

struct UserAddressOutput {
    std::vector<AddressBookOutput> books;
    int failedBooks = 0;  // books that could not be listed or read at all
};

UserAddressOutput ExportUserAddresses(QV_OBJ user, const std::string& userName, const AddressForms& forms);

}  // namespace tqnralm

#endif  // TQNRALM_HOST_ADDRESSEXPORT_H
