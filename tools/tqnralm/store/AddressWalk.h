// AddressWalk.h - reads the address books of one user through the public
// interface into the export's model.
#ifndef TQNRALM_HOST_ADDRESSWALK_H
#define TQNRALM_HOST_ADDRESSWALK_H

#include <string>
#include <vector>

#include "AddressModel.h"
#include "tqnralm.h"

namespace tqnralm {

struct UserAddressBooks {
    std::vector<AddressBook> books;
    // Books that could not be listed or read at all.
    int failedBooks = 0;
};

// Each top group of the user's address data is one book, named by the
// group. Failures of single groups and addresses are counted in their book,
// and the walk goes on. Groups nest to kMaxGroupDepth in the model; deeper
// groups give their addresses to the group at that depth.
constexpr int kMaxGroupDepth = 64;
UserAddressBooks ReadAddressBooks(QV_OBJ user, const std::string& userName);

}  // namespace tqnralm

#endif  // TQNRALM_HOST_ADDRESSWALK_H
