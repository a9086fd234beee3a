// The assistant's second step (Window.h): the users to export, and the dry
// run of the chosen export, made again whenever a choice changes, whose
// totals stand against the destination's free space.
#include "Window.h"

#include "WindowsApi.h"

#include "Formats.h"
#include "Strings.h"
#include "Wide.h"

namespace tqnralm {
namespace gui {

// The destination, the forms with a line each, the users, the address books
// and the line of sizes, in the tab order of the screen.
void Window::MakeWherePage() {
    destLabel_ = Control(L"STATIC", Str(Text::kDestination), SS_LEFT, -1);
    dest_ = CreateWindowExW(WS_EX_CLIENTEDGE, L"EDIT", walk_.outDir.c_str(), WS_CHILD | WS_TABSTOP | ES_AUTOHSCROLL,
                            0, 0, 0, 0, hwnd_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(kIdDest)), nullptr,
                            nullptr);
    browse_ = Control(L"BUTTON", Str(Text::kBrowse), WS_TABSTOP | BS_PUSHBUTTON, kIdBrowse);
    formatBox_ = Control(L"BUTTON", Str(Text::kFormat), BS_GROUPBOX, -1);
    const Text names[3] = {Text::kFormatMbox, Text::kFormatMaildir, Text::kFormatEml};
    const Text hints[3] = {Text::kFormatMboxHint, Text::kFormatMaildirHint, Text::kFormatEmlHint};
    for (int i = 0; i < 3; ++i) {
        radios_[i] = Control(L"BUTTON", Str(names[i]), BS_AUTORADIOBUTTON | (i == 0 ? WS_GROUP | WS_TABSTOP : 0),
                             kIdMbox + i);
        hints_[i] = Control(L"STATIC", Str(hints[i]), SS_LEFT, -1);
    }
    SendMessageW(radios_[walk_.format < 3 ? walk_.format : 0], BM_SETCHECK, BST_CHECKED, 0);
    usersLabel_ = Control(L"STATIC", Str(Text::kUsers), SS_LEFT, -1);
    users_ = CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"",
                             WS_CHILD | WS_TABSTOP | WS_GROUP | LVS_REPORT | LVS_NOCOLUMNHEADER | LVS_SINGLESEL |
                                 LVS_SHOWSELALWAYS,
                             0, 0, 0, 0, hwnd_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(kIdUsers)), nullptr,
                             nullptr);
    ListView_SetExtendedListViewStyle(users_, LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT);
    LVCOLUMNW column = {};  // one, as wide as the list (Layout)
    SendMessageW(users_, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    // In the tab order as on the screen: the users, then the address books.
    addresses_ = Control(L"BUTTON", Str(Text::kAddressBooks), WS_TABSTOP | WS_GROUP | BS_AUTOCHECKBOX, kIdAddresses);
    SendMessageW(addresses_, BM_SETCHECK, BST_CHECKED, 0);
    space_ = Control(L"STATIC", "", SS_LEFT, -1);
    pages_[kWhere] = {destLabel_, dest_,      browse_,     formatBox_, radios_[0], radios_[1], radios_[2],
                      hints_[0],  hints_[1], hints_[2], usersLabel_, users_,     addresses_, space_};
}

// One checked line per user, in the order `tree` gives them; a test run's
// answers uncheck the others.
void Window::FillUsers() {
    filling_ = true;
    ListView_DeleteAllItems(users_);
    int line = 0;
    for (const FoundRow& row : engine_->found().rows) {
        if (row.kind != FoundRow::kUser) continue;
        const std::wstring text = Wide(Label(row));
        LVITEMW item = {};
        item.mask = LVIF_TEXT | LVIF_PARAM;
        item.iItem = line;
        item.pszText = const_cast<wchar_t*>(text.c_str());
        item.lParam = std::stoi(row.index);
        SendMessageW(users_, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
        bool checked = walk_.users.empty();
        for (int user : walk_.users) checked = checked || user == item.lParam;
        ListView_SetCheckState(users_, line, checked);
        ++line;
    }
    filling_ = false;
}

std::vector<int> Window::CheckedUsers(bool* all) const {
    std::vector<int> users;
    const int count = ListView_GetItemCount(users_);
    for (int line = 0; line < count; ++line) {
        if (!ListView_GetCheckState(users_, line)) continue;
        LVITEMW item = {};
        item.mask = LVIF_PARAM;
        item.iItem = line;
        SendMessageW(users_, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
        users.push_back(static_cast<int>(item.lParam));
    }
    *all = static_cast<int>(users.size()) == count;
    return users;
}

// What the dry run sizes and the export writes: the same options for both.
ExportOptions Window::Chosen() const {
    ExportOptions options;
    options.outDir = Utf8(OutDir());
    for (size_t i = 0; i < 3; ++i) {
        if (SendMessageW(radios_[i], BM_GETCHECK, 0, 0) == BST_CHECKED) {
            options.format = FormatsOf(FormatKind::kMail)[i];
        }
    }
    options.addresses = SendMessageW(addresses_, BM_GETCHECK, 0, 0) == BST_CHECKED;
    bool all = false;
    options.users = CheckedUsers(&all);
    if (all) options.users.clear();  // every user, as the command line without --user
    return options;
}

// One dry run at a time: a change while one runs asks for another after it.
void Window::RequestPlan() {
    bool all = false;
    if (!found_ || exporting_ || CheckedUsers(&all).empty()) return ShowSpace();
    if (engine_->planning()) {
        planDirty_ = true;
    } else {
        planDirty_ = false;
        engine_->Plan(Chosen());
    }
    ShowSpace();
}

void Window::OnPlanned() {
    if (planDirty_ && step_ == kWhere && !exporting_) return RequestPlan();
    planDirty_ = false;
    ShowSpace();
}

void Window::OnUsersChanged(const NMHDR* header) {
    if (header->hwndFrom != users_ || header->code != LVN_ITEMCHANGED || filling_) return;
    const auto* change = reinterpret_cast<const NMLISTVIEW*>(header);
    // A check box is the item's state image.
    if ((change->uChanged & LVIF_STATE) && ((change->uOldState ^ change->uNewState) & LVIS_STATEIMAGEMASK))
        RequestPlan();
}

}  // namespace gui
}  // namespace tqnralm
