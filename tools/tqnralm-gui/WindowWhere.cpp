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
