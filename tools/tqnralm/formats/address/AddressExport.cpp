// AddressExport.cpp - one user's books through the walk, the layout and the forms' writers.
#include "AddressExport.h"

#include "AddressWalk.h"

namespace tqnralm {

UserAddressOutput ExportUserAddresses(QV_OBJ user, const std::string& userName, const AddressWriters& writers) {
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
        for (const auto& writer : writers) writer->Write(layout, &b.files);
        out.books.push_back(std::move(b));
    }
    return out;
}

}  // namespace tqnralm
