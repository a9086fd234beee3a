// AddressExport.h - the address half of `tqnralm export`: each book of a
// user through the chosen forms' writers, as bytes for the caller to name
// and write.
#ifndef TQNRALM_HOST_ADDRESSEXPORT_H
#define TQNRALM_HOST_ADDRESSEXPORT_H

#include <memory>
#include <string>
#include <vector>

#include "AddressWriter.h"
#include "tqnralm.h"

namespace tqnralm {

struct AddressBookOutput {
    std::string name;  // the top group's name, before the file name rules
    std::vector<AddressFile> files;
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

using AddressWriters = std::vector<std::unique_ptr<AddressWriter>>;

UserAddressOutput ExportUserAddresses(QV_OBJ user, const std::string& userName, const AddressWriters& writers);

}  // namespace tqnralm

#endif  // TQNRALM_HOST_ADDRESSEXPORT_H
