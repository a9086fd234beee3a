// AddressExport.cpp - one user's books through the walk, the layout and the writers.
#include "AddressExport.h"

#include "AddressWalk.h"
#include "AddressWriters.h"

namespace tqnralm {

bool ParseAddressForms(const std::string& list, AddressForms* out) {
    AddressForms forms{false, false, false};
    for (size_t start = 0; start <= list.size();) {
        size_t end = list.find(',', start);
        if (end == std::string::npos) end = list.size();
        const std::string form = list.substr(start, end - start);
        bool* flag = form == "vcard" ? &forms.vcard : form == "ldif" ? &forms.ldif : form == "csv" ? &forms.csv : nullptr;
        if (flag == nullptr || *flag) return false;
        *flag = true;
        start = end + 1;
    }
    *out = forms;
    return true;
}

UserAddressOutput ExportUserAddresses(QV_OBJ user, const std::string& userName, const AddressForms& forms) {
    UserAddressOutput out;
    UserAddressBooks read = ReadAddressBooks(user, userName);
    out.failedBooks = read.failedBooks;
    for (const AddressBook& book : read.books) {
        const BookLayout layout = LayOut(book);
        AddressBookOutput b;
        b.name = book.name;
        b.groups = book.GroupCount();
        b.addresses = book.AddressCount();
        b.failedGroups = book.failedGroups;
        b.failedAddresses = book.failedAddresses;
        b.cards = static_cast<int>(layout.cards.size());
        if (book.failedGroups == 0 && book.failedAddresses == 0) b.digest = book.ContentDigest();
        if (forms.vcard) b.files.push_back({"vcf", WriteVCard(layout)});
        // The group cards stand apart: a contact program that imports the
        // persons' file must not meet them.
        if (forms.vcard && !layout.lists.empty()) b.files.push_back({"groups.vcf", WriteVCardGroups(layout)});
        if (forms.ldif) b.files.push_back({"ldif", WriteLdif(layout)});
        if (forms.csv) b.files.push_back({"csv", WriteCsv(layout)});
        out.books.push_back(std::move(b));
    }
    return out;
}

}  // namespace tqnralm
