// AddressWalk.cpp - the address side of the tree into the export's model.
// Every field comes from QV_Address_GetData, the heading from
// QV_Object_GetDisplayName; texts are cleaned once here, so the writers see
// valid UTF-8 only.
#include "AddressWalk.h"

#include <functional>

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

// A name by the usual pair of calls: the length, then the text.
bool Name(QV_OBJ obj, bool display, std::string& out) {
    auto get = display ? QV_Object_GetDisplayName : QV_Object_GetName;
    uint32_t len = 0;
    if (get(obj, nullptr, &len) != QV_S_OK) return false;
    std::vector<QV_WCHAR> buf(static_cast<size_t>(len) + 1, 0);
    if (get(obj, buf.data(), &len) != QV_S_OK) return false;
    out = CleanText(Utf8(buf.data()));
    return true;
}

// Calls take(child) for each child of a class; take returns whether it
// keeps the child's reference. The result is the number of children that
// were announced but could not be had (a failed count or enumerator counts
// as one). A child that fails is passed over: the enumerator stays on it and
// hands it out as it stands on the next call, which is dropped; only a
// second failure ends the list there.
int ForEachChild(QV_OBJ obj, int32_t nClass, const std::function<bool(QV_OBJ)>& take) {
    int32_t count = 0;
    QV_OBJ objs = nullptr;
    if (QV_Object_GetChildCount(obj, nClass, &count) != QV_S_OK) count = 1;
    if (QV_Object_GetChildObjects(obj, nClass, &objs) != QV_S_OK) return count > 0 ? count : 1;
    int position = 0, missing = 0;
    for (;; ++position) {
        QV_OBJ item = nullptr;
        if (const int32_t code = QV_Objects_GetNext(objs, &item); code == QV_E_NO_MORE_ITEMS) {
            break;
        } else if (code != QV_S_OK) {
            ++missing;
            if (QV_Objects_GetNext(objs, &item) != QV_S_OK) {
                missing += count > position + 1 ? count - position - 1 : 0;
                break;
            }
            QV_Object_Dispose(item);
        } else if (!take(item)) {
            QV_Object_Dispose(item);
        }
    }
    QV_Object_Dispose(objs);
    return missing;
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
        book.failedAddresses += ForEachChild(group, QV_CLASS_ADDRESS, [&](QV_OBJ item) {
            Address a;
            if (ReadAddress(item, a)) into.addresses.push_back(std::move(a));
            else ++book.failedAddresses;
            return false;
        });
    }

    void Children(QV_OBJ group, AddressGroup& into, int depth) {
        Addresses(group, into);
        if (depth < kMaxGroupDepth) {
            book.failedGroups += ForEachChild(group, QV_CLASS_ADDRESSGROUP, [&](QV_OBJ sub) {
                AddressGroup g;
                if (!Name(sub, false, g.name)) {
                    ++book.failedGroups;
                    return false;
                }
                Children(sub, g, depth + 1);
                into.groups.push_back(std::move(g));
                return false;
            });
            return;
        }
        // Below the deepest level kept, the addresses of the whole subtree
        // stand in this group; a work list instead of recursion.
        std::vector<QV_OBJ> pending;
        auto keep = [&](QV_OBJ sub) { return pending.push_back(sub), true; };
        book.failedGroups += ForEachChild(group, QV_CLASS_ADDRESSGROUP, keep);
        while (!pending.empty()) {
            QV_OBJ sub = pending.back();
            pending.pop_back();
            Addresses(sub, into);
            book.failedGroups += ForEachChild(sub, QV_CLASS_ADDRESSGROUP, keep);
            QV_Object_Dispose(sub);
        }
    }
};

}  // namespace

UserAddressBooks ReadAddressBooks(QV_OBJ user, const std::string& userName) {
    UserAddressBooks out;
    out.failedBooks += ForEachChild(user, QV_CLASS_ADDRESSBOOK, [&](QV_OBJ bookObj) {
        out.failedBooks += ForEachChild(bookObj, QV_CLASS_ADDRESSGROUP, [&](QV_OBJ top) {
            AddressBook book;
            book.user = userName;
            if (!Name(top, false, book.name)) {
                ++out.failedBooks;
                return false;
            }
            Walk{book}.Children(top, book.top, 1);
            out.books.push_back(std::move(book));
            return false;
        });
        return false;
    });
    return out;
}

}  // namespace tqnralm
