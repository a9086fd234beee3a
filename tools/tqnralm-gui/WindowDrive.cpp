// The assistant's first step reading an old disk (Window.h): the button that
// picks the disk's folder, the line naming the disk and profile read, the
// profiles to choose from, what is wrong with a folder that cannot be read,
// with the host's own words below it, and the way back to this computer.
#include "Window.h"

#include "WindowsApi.h"

#include "Drive.h"
#include "Strings.h"
#include "Wide.h"

namespace tqnralm {
namespace gui {

void Window::MakeDriveControls() {
    driveNote_ = Control(L"STATIC", "", SS_LEFT, -1);
    driveButton_ = Control(L"BUTTON", Str(Text::kReadDisk), WS_TABSTOP | BS_PUSHBUTTON | WS_DISABLED, kIdDrive);
    backButton_ = Control(L"BUTTON", Str(Text::kReadHere), WS_TABSTOP | BS_PUSHBUTTON, kIdBack);
    profiles_ = CreateWindowExW(WS_EX_CLIENTEDGE, L"LISTBOX", L"", WS_CHILD | WS_TABSTOP | WS_VSCROLL | LBS_NOTIFY,
                                0, 0, 0, 0, hwnd_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(kIdProfiles)),
                                nullptr, nullptr);
    readProfile_ = Control(L"BUTTON", Str(Text::kReadProfile), WS_TABSTOP | BS_PUSHBUTTON, kIdReadProfile);
    driveDetails_ = CreateWindowExW(WS_EX_CLIENTEDGE, L"EDIT", L"",
                                    WS_CHILD | WS_TABSTOP | WS_VSCROLL | ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL,
                                    0, 0, 0, 0, hwnd_, nullptr, nullptr, nullptr);
}

// Which of the first step's controls stand: the tree once something was
// found; else why not, what to pick, a disk's profiles or the host's words.
void Window::ShowFoundState() {
    const DriveCheck& check = engine_->drive();
    const bool missing = searched_ && !found_;
    const bool several = missing && onDrive_ && check.problem == DriveCheck::kSeveralUsers;
    SetText(heading_, Str(!searched_ ? Text::kStepSearching
                          : found_   ? Text::kStepFound
                          : several  ? Text::kStepChooseUser
                                     : Text::kStepNotFound));
    ShowWindow(tree_, found_ ? SW_SHOW : SW_HIDE);
    ShowWindow(foundTotals_, found_ ? SW_SHOW : SW_HIDE);
    ShowWindow(driveNote_, missing ? SW_SHOW : SW_HIDE);
    ShowWindow(driveButton_, searched_ || onDrive_ ? SW_SHOW : SW_HIDE);
    EnableWindow(driveButton_, searched_);
    // Back only where this computer has the client: else there is nothing
    // to go back to.
    ShowWindow(backButton_, onDrive_ && installedHere_ ? SW_SHOW : SW_HIDE);
    EnableWindow(backButton_, searched_);
    ShowWindow(profiles_, several ? SW_SHOW : SW_HIDE);
    ShowWindow(readProfile_, several ? SW_SHOW : SW_HIDE);
    ShowWindow(driveDetails_, missing && onDrive_ && !several && !check.message.empty() ? SW_SHOW : SW_HIDE);
}

void Window::ChooseDrive() {
    if (!searched_ || exporting_) return;
    const std::wstring root = PickFolder(Str(Text::kDrivePickerTitle));
    if (!root.empty()) ReadDrive(root, std::string());
}

// A new search empties the step: nothing of the last one stands while it
// runs, so that what the step shows is what an export would read.
void Window::StartSearch(bool onDrive, const std::string& line) {
    onDrive_ = onDrive;
    searched_ = found_ = false;
    TreeView_DeleteAllItems(tree_);
    ListView_DeleteAllItems(users_);
    SendMessageW(profiles_, LB_RESETCONTENT, 0, 0);
    SetText(readOnly_, line);
    EnableWindow(next_, FALSE);
    Layout();
    if (step_ == kFound) ShowFoundState();
}

// From here on the library reads the disk (Engine::FindDrive); the tree and
// the users are those of the disk once its walk is done.
void Window::ReadDrive(const std::wstring& root, const std::string& user) {
    driveUser_ = user;
    StartSearch(true, Format(Text::kDriveSearching, {Utf8(root)}));
    engine_->FindDrive(Utf8(root), user);
}

// Back from a disk: the library reads this computer again.
void Window::ReadHere() {
    if (!searched_ || exporting_ || !onDrive_) return;
    driveUser_.clear();
    StartSearch(false, Str(Text::kSearching));
    engine_->Find();
}

void Window::ReadChosenProfile() {
    const LRESULT line = SendMessageW(profiles_, LB_GETCURSEL, 0, 0);
    const std::vector<std::string>& users = engine_->drive().users;
    if (!searched_ || line < 0 || static_cast<size_t>(line) >= users.size()) return;
    ReadDrive(Wide(engine_->driveRoot()), users[static_cast<size_t>(line)]);
}

// The lines of a disk's search: the disk and profile read, or what is wrong.
void Window::ShowDrive() {
    const DriveCheck& check = engine_->drive();
    const std::string& root = engine_->driveRoot();
    if (found_) return SetText(readOnly_, DriveReadLine(root, check.user));
    DriveProblemText text = DriveProblem(check, root, driveUser_);
    if (check.problem == DriveCheck::kReadable) text = {Str(Text::kDriveNotFound), Str(Text::kDriveHintOtherDisk)};
    SetText(readOnly_, text.what);
    SetText(driveNote_, text.hint);
    SendMessageW(profiles_, LB_RESETCONTENT, 0, 0);
    for (const std::string& user : check.users)
        SendMessageW(profiles_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(user).c_str()));
    SendMessageW(profiles_, LB_SETCURSEL, 0, 0);
    std::wstring details;  // an edit control breaks lines at CR LF only
    for (wchar_t c : Wide(Format(Text::kDriveDetails, {check.message})))
        details += c == L'\n' ? std::wstring(L"\r\n") : std::wstring(1, c);
    SetWindowTextW(driveDetails_, details.c_str());
}

}  // namespace gui
}  // namespace tqnralm
