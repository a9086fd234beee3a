// AddressWalk.cpp - the address side of the tree into the export's model.
// Every field comes from QV_Address_GetData, the heading from
// QV_Object_GetDisplayName; texts are cleaned once here, so the writers see
// valid UTF-8 only.
#include "AddressWalk.h"

#include <functional>

#include "Tree.h"
#include "Utf.h"

namespace tqnralm {
namespace {

// The record's field of each property, FN excepted: the heading is the
// address's display name.
QV_WCHAR* QV_ADDRESS_DATA::* const kFieldMembers[kAddressFieldCount] = {
    nullptr, &QV_ADDRESS_DATA::lpszN1, &QV_ADDRESS_DATA::lpszN2, &QV_ADDRESS_DATA::lpszNS1,
    &QV_ADDRESS_DATA::lpszNS2, &QV_ADDRESS_DATA::lpszNickName, &QV_ADDRESS_DATA::lpszEmailInternet,
    &QV_ADDRESS_DATA::lpszTelHomeVoice, &QV_ADDRESS_DATA::lpszTelHomeFax, &QV_ADDRESS_DATA::lpszTelWorkVoice,
    &QV_ADDRESS_DATA::lpszTelWorkFax, &QV_ADDRESS_DATA::lpszTelCellVoice, &QV_ADDRESS_DATA::lpszTelPagerVoice,
    &QV_ADDRESS_DATA::lpszAdrHome2, &QV_ADDRESS_DATA::lpszAdrHome3, &QV_ADDRESS_DATA::lpszAdrHome4,
    &QV_ADDRESS_DATA::lpszAdrHome5, &QV_ADDRESS_DATA::lpszAdrHome6, &QV_ADDRESS_DATA::lpszAdrHome7,
    &QV_ADDRESS_DATA::lpszAdrWork2, &QV_ADDRESS_DATA::lpszAdrWork3, &QV_ADDRESS_DATA::lpszAdrWork4,
    &QV_ADDRESS_DATA::lpszAdrWork5, &QV_ADDRESS_DATA::lpszAdrWork6, &QV_ADDRESS_DATA::lpszAdrWork7,
    &QV_ADDRESS_DATA::lpszAdrOrg1, &QV_ADDRESS_DATA::lpszAdrOrg2, &QV_ADDRESS_DATA::lpszTitle,
    &QV_ADDRESS_DATA::lpszNote};

// A name cleaned for the writers; false when the library cannot give it.
bool Name(QV_OBJ obj, bool display, std::string& out) {
    std::string name;
    if (GetName(obj, display, &name) != QV_S_OK) return false;
    out = CleanText(name);
    return true;
}

// Calls take(child) for each child of a class that can be had; the result
// is the number of children that could not be (one for a list that could
// not be had, and every child announced past a failure that ended it).
int ForEachChild(QV_OBJ obj, int32_t nClass, const std::function<void(Ref&)>& take) {
    Children children(obj, nClass);
    Ref item;
    int missing = 0;
    for (int32_t code; (code = children.Next(&item)) != QV_E_NO_MORE_ITEMS;) {
        if (code == QV_S_OK) take(item);
        else ++missing;
    }
    return missing + children.Unreached();
}

bool ReadAddress(QV_OBJ obj, Address& a) {
    QV_ADDRESS_DATA d;
    if (QV_Address_GetData(obj, &d) != QV_S_OK) return false;
    for (int f = 0; f < kAddressFieldCount; ++f) {
        if (kFieldMembers[f] != nullptr) a.fields[f] = CleanText(Utf8(d.*kFieldMembers[f]));
    }
    for (int32_t i = 0; d.pExtra != nullptr && i < d.nExtraCount; ++i) {
        std::string name = CleanText(Utf8(d.pExtra[2 * i])), value = CleanText(Utf8(d.pExtra[2 * i + 1]));
        if (!name.empty() || !value.empty()) a.extras.emplace_back(name, value);
    }
    d.pfnRelease(&d);
    return Name(obj, true, a[kFN]);
}

struct Walk {
    AddressBook& book;

    void Addresses(QV_OBJ group, AddressGroup& into) {
        book.failedAddresses += ForEachChild(group, QV_CLASS_ADDRESS, [&](Ref& item) {
            Address a;
            if (ReadAddress(item.get(), a)) into.addresses.push_back(std::move(a));
            else ++book.failedAddresses;
        });
    }

    void Children(QV_OBJ group, AddressGroup& into, int depth) {
        Addresses(group, into);
        if (depth < kMaxGroupDepth) {
            book.failedGroups += ForEachChild(group, QV_CLASS_ADDRESSGROUP, [&](Ref& sub) {
                AddressGroup g;
                if (!Name(sub.get(), false, g.name)) {
                    ++book.failedGroups;
                    return;
                }
                Children(sub.get(), g, depth + 1);
                into.groups.push_back(std::move(g));
            });
            return;
        }
        // Below the deepest level kept, the addresses of the whole subtree
        // stand in this group; a work list instead of recursion.
        std::vector<Ref> pending;
        auto keep = [&](Ref& sub) { pending.push_back(std::move(sub)); };
        book.failedGroups += ForEachChild(group, QV_CLASS_ADDRESSGROUP, keep);
        while (!pending.empty()) {
            Ref sub = std::move(pending.back());
            pending.pop_back();
            Addresses(sub.get(), into);
            book.failedGroups += ForEachChild(sub.get(), QV_CLASS_ADDRESSGROUP, keep);
        }
    }
};

}  // namespace

UserAddressBooks ReadAddressBooks(QV_OBJ user, const std::string& userName) {
    UserAddressBooks out;
    out.failedBooks += ForEachChild(user, QV_CLASS_ADDRESSBOOK, [&](Ref& bookObj) {
        out.failedBooks += ForEachChild(bookObj.get(), QV_CLASS_ADDRESSGROUP, [&](Ref& top) {
            AddressBook book;
            book.user = userName;
            if (!Name(top.get(), false, book.name)) {
                ++out.failedBooks;
                return;
            }
            Walk{book}.Children(top.get(), book.top, 1);
            out.books.push_back(std::move(book));
        });
    });
    return out;
}

}  // namespace tqnralm
