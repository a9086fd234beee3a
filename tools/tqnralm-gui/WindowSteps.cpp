// The assistant's window going from step to step (Window.h): the buttons,
// the engine's messages, and the walk of a test run.
#include "Window.h"

#include "WindowsApi.h"

#include "Strings.h"
#include "Wide.h"

namespace tqnralm {
namespace gui {

namespace {

void AddRows(HWND tree, const Found& found) {
    std::vector<HTREEITEM> parents;
    for (const FoundRow& row : found.rows) {
        parents.resize(row.depth);
        const std::wstring text = Wide(Label(row));
        TVINSERTSTRUCTW item = {};
        item.hParent = parents.empty() ? TVI_ROOT : parents.back();
        item.hInsertAfter = TVI_LAST;
        item.item.mask = TVIF_TEXT;
        item.item.pszText = const_cast<wchar_t*>(text.c_str());
        parents.push_back(reinterpret_cast<HTREEITEM>(SendMessageW(tree, TVM_INSERTITEMW, 0,
                                                                   reinterpret_cast<LPARAM>(&item))));
        if (item.hParent != TVI_ROOT) TreeView_Expand(tree, item.hParent, TVE_EXPAND);
    }
    TreeView_Select(tree, TreeView_GetRoot(tree), TVGN_FIRSTVISIBLE);
}

}  // namespace

LRESULT CALLBACK Window::Proc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* self = static_cast<Window*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        self->hwnd_ = hwnd;
        SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* self = reinterpret_cast<Window*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    return self != nullptr ? self->Handle(message, wParam, lParam) : DefWindowProcW(hwnd, message, wParam, lParam);
}

LRESULT Window::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_COMMAND: OnCommand(LOWORD(wParam), HIWORD(wParam)); return 0;
    case kFoundMessage: OnFound(static_cast<int>(wParam)); return 0;
    case kProgressMessage: OnProgress(); return 0;
    case kExportedMessage: OnExported(static_cast<int>(wParam)); return 0;
    case kPlannedMessage: OnPlanned(); return 0;
    case WM_NOTIFY: OnUsersChanged(reinterpret_cast<const NMHDR*>(lParam)); return 0;
    case WM_TIMER: WalkTick(); return 0;
    case WM_DPICHANGED: {
        dpi_ = HIWORD(wParam);
        const RECT* r = reinterpret_cast<const RECT*>(lParam);
        SetWindowPos(hwnd_, nullptr, r->left, r->top, r->right - r->left, r->bottom - r->top, SWP_NOZORDER);
        SetFont();
        Layout();
        return 0;
    }
    case WM_CLOSE:
        if (exporting_) {  // stop first; the window closes when the export has stopped
            OnCommand(IDCANCEL, BN_CLICKED);
            return 0;
        }
        DestroyWindow(hwnd_);
        return 0;
    case WM_DESTROY: PostQuitMessage(0); return 0;
    default: return DefWindowProcW(hwnd_, message, wParam, lParam);
    }
}

void Window::OnCommand(int id, int code) {
    if (id == kIdNext) return OnNext();
    if (id == kIdBrowse) return Browse();
    if (id == kIdDrive) return ChooseDrive();
    if (id == kIdBack) return ReadHere();
    if (id == kIdReadProfile || (id == kIdProfiles && code == LBN_DBLCLK)) return ReadChosenProfile();
    if (id == kIdOpen) return OpenFolder();
    if (id == kIdThunderbird) return ToggleSteps();
    if (id == kIdProblems && code == LBN_DBLCLK)
        return ShowProblem(static_cast<int>(SendMessageW(problems_, LB_GETCURSEL, 0, 0)));
    if (id == kIdDest && code == EN_CHANGE) return ShowSpace();
    if (id >= kIdMbox && id <= kIdAddresses && code == BN_CLICKED) return RequestPlan();
    if (id != kIdCancel) return;
    if (exporting_) {
        SetText(progressText_, Str(Text::kStopping));
        EnableWindow(cancel_, FALSE);
        engine_->Cancel();
        return;
    }
    DestroyWindow(hwnd_);
}

void Window::OnNext() {
    // On the first step, when nothing was found, Enter reads the profile
    // chosen of a disk, else chooses an old disk.
    if (step_ == kFound) {
        if (found_) return Show(kWhere);
        if (IsWindowVisible(profiles_)) return ReadChosenProfile();
        return ChooseDrive();
    }
    if (step_ != kWhere) return;
    const std::wstring outDir = OutDir();
    if (outDir.empty()) {
        MessageBoxW(hwnd_, Wide(Str(Text::kNeedFolder)).c_str(), Wide(Str(Text::kTitle)).c_str(), MB_ICONWARNING);
        SetFocus(dest_);
        return;
    }
    bool all = false;
    if (CheckedUsers(&all).empty()) {
        MessageBoxW(hwnd_, Wide(Str(Text::kNoUsers)).c_str(), Wide(Str(Text::kTitle)).c_str(), MB_ICONWARNING);
        SetFocus(users_);
        return;
    }
    ExportOptions options = Chosen();
    // Starting again on the folder of a stopped export goes on with it; a
    // folder that holds other files gets the export added (nothing is
    // overwritten).
    options.force = true;
    exporting_ = true;
    started_ = std::chrono::steady_clock::now();
    SendMessageW(progress_, PBM_SETPOS, 0, 0);
    SetText(progressText_, ProgressLine(0, engine_->found().messages, 0, 0));
    SetText(folderNow_, "");
    Show(kExport);
    EnableWindow(next_, FALSE);
    engine_->Export(options);
    if (walk_.cancel) OnCommand(kIdCancel, BN_CLICKED);
}

void Window::OnFound(int exit) {
    searched_ = true;
    findExit_ = exit;
    found_ = exit == kExitOk;
    const Found& found = engine_->found();
    TreeView_DeleteAllItems(tree_);
    ListView_DeleteAllItems(users_);
    if (onDrive_) {
        ShowDrive();
    } else {
        installedHere_ = exit != kExitNotInstalled;
        SetText(readOnly_, Str(exit == kExitNotInstalled ? Text::kNotInstalled : Text::kReadOnly));
        SetText(driveNote_, Str(Text::kNotInstalledHint));
    }
    if (found_) {
        AddRows(tree_, found);
        SetText(foundTotals_, Format(Text::kFoundTotals, {std::to_string(found.users), std::to_string(found.folders),
                                                          std::to_string(found.messages), std::to_string(found.books),
                                                          std::to_string(found.addresses)}));
        FillUsers();
    }
    SetText(driveButton_, Str(!found_ ? Text::kReadDisk : onDrive_ ? Text::kReadOtherDisk : Text::kReadDiskInstead));
    Layout();
    if (step_ == kFound) Show(kFound);
}

void Window::OnProgress() {
    engine_->Taken();
    const int64_t done = engine_->done(), total = engine_->total();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
    SendMessageW(progress_, PBM_SETPOS, total > 0 ? static_cast<WPARAM>(done * 1000 / total) : 0, 0);
    SetText(progressText_, ProgressLine(done, total, engine_->bytes(), seconds));
    std::string folder = engine_->folder();
    for (char& c : folder) c = c == '/' ? '\\' : c;
    SetText(folderNow_, folder.empty() ? std::string() : Format(Text::kFolderNow, {folder}));
}

void Window::OnExported(int exit) {
    exporting_ = false;
    exportExit_ = exit;
    EnableWindow(cancel_, TRUE);
    OnProgress();
    const DoneTotals totals = TotalsFromManifest(ReadAll(OutDir() + L"\\manifest.json"));
    // A stopped or failed export has no manifest yet: no totals to show.
    SetText(doneTotals_, totals.read ? Format(Text::kDoneTotals, {std::to_string(totals.written),
                                                                  std::to_string(totals.failed),
                                                                  std::to_string(totals.unread)})
                                     : std::string());
    SetText(doneState_, exit == kExitOk          ? Str(Text::kDoneOk)
                        : exit == kExitIncomplete ? Str(Text::kDoneProblems)
                        : exit == kExitStopped    ? Str(Text::kDoneStopped)
                        : exit == kExitOutput     ? Str(Text::kDoneOutput)
                                                  : Format(Text::kDoneFailed, {std::to_string(exit)}));
    SendMessageW(problems_, LB_RESETCONTENT, 0, 0);
    problemPaths_.clear();
    for (const DoneProblem& problem : totals.problems) {
        SendMessageW(problems_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(problem.text).c_str()));
        problemPaths_.push_back(problem.path);
    }
    // A failed write leaves no manifest: the export's own words say why.
    for (const std::string& line : exit == kExitOutput ? engine_->messages() : std::vector<std::string>()) {
        std::string text = line.substr(line.rfind("tqnralm: ", 0) == 0 ? 9 : 0);
        if (!text.empty() && text.back() == '\n') text.pop_back();
        SendMessageW(problems_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(text).c_str()));
        problemPaths_.push_back(std::string());
    }
    SetText(steps_, Format(Text::kThunderbirdSteps, {Utf8(OutDir())}));
    // A test run shows the export's last state until its screenshot is taken.
    if (!walk_.on) Show(kDone);
}

// The system's folder picker; "" when nothing was chosen.
std::wstring Window::PickFolder(const std::string& title) {
    IFileOpenDialog* dialog = nullptr;
    if (FAILED(CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER, IID_IFileOpenDialog,
                                reinterpret_cast<void**>(&dialog)))) {
        return std::wstring();
    }
    DWORD flags = 0;
    dialog->GetOptions(&flags);
    dialog->SetOptions(flags | FOS_PICKFOLDERS | FOS_FORCEFILESYSTEM);
    if (!title.empty()) dialog->SetTitle(Wide(title).c_str());
    IShellItem* item = nullptr;
    wchar_t* path = nullptr;
    std::wstring chosen;
    if (SUCCEEDED(dialog->Show(hwnd_)) && SUCCEEDED(dialog->GetResult(&item)) &&
        SUCCEEDED(item->GetDisplayName(SIGDN_FILESYSPATH, &path))) {
        chosen = path;
        CoTaskMemFree(path);
    }
    if (item != nullptr) item->Release();
    dialog->Release();
    return chosen;
}

void Window::Browse() {
    const std::wstring path = PickFolder(std::string());
    if (!path.empty()) SetWindowTextW(dest_, path.c_str());
}

void Window::OpenFolder() { ShellExecuteW(hwnd_, L"open", OutDir().c_str(), nullptr, nullptr, SW_SHOWNORMAL); }

// A problem's place: Explorer with the file or folder written above it
// selected (an mbox file, a Maildir or EML folder), else the destination.
void Window::ShowProblem(int item) {
    if (item < 0 || static_cast<size_t>(item) >= problemPaths_.size() || problemPaths_[item].empty())
        return OpenFolder();
    std::wstring path = OutDir() + L"\\" + Wide(problemPaths_[item]);
    for (wchar_t& c : path) c = c == L'/' ? L'\\' : c;
    const std::wstring args = L"/select,\"" + path + L"\"";
    ShellExecuteW(hwnd_, nullptr, L"explorer.exe", args.c_str(), nullptr, SW_SHOWNORMAL);
}

// The Thunderbird steps in place of the problems, and back.
void Window::ToggleSteps() {
    showingSteps_ = !showingSteps_;
    ShowWindow(steps_, showingSteps_ ? SW_SHOW : SW_HIDE);
    ShowWindow(problems_, showingSteps_ || problemPaths_.empty() ? SW_HIDE : SW_SHOW);
}

// A test run: stage N settled writes stepN.ready, stepN.go moves on. The
// last step is stage 4, stage 5 has the Thunderbird steps shown and stage 6
// Explorer open on the first problem (with --show-problem); the last
// stage's go closes the window. The first step is shown before each pick
// of a folder too (step1-pickN, N picks made).
int Window::WalkStage() const {
    if (step_ == kFound && picked_ < walk_.picks.size()) return kWalkPick + static_cast<int>(picked_);
    if (step_ == kFound && IsWindowVisible(profiles_)) return kWalkProfiles;
    if (step_ != kDone) return static_cast<int>(step_);
    return problemShown_ ? 5 : showingSteps_ ? 4 : 3;
}

void Window::WalkTick() {
    const int stage = WalkStage();
    const bool ready = stage == 0 || stage >= kWalkPick ? searched_
                       : stage == 1 ? !engine_->planning() && !planDirty_
                       : stage == 2 ? exportExit_ >= 0
                       : stage == 5 ? std::chrono::steady_clock::now() - shownAt_ > std::chrono::seconds(3)
                                    : true;
    const std::wstring name = stage == kWalkProfiles ? L"step1-profiles"
                              : stage >= kWalkPick   ? L"step1-pick" + std::to_wstring(stage - kWalkPick)
                                                     : L"step" + std::to_wstring(stage + 1);
    const std::wstring base = walk_.shots + L"\\" + name;
    if (ready && walkReady_ != stage) {
        if (FILE* f = _wfopen((base + L".ready").c_str(), L"wb")) std::fclose(f);
        walkReady_ = stage;
    }
    if (walkReady_ != stage || !FileExists(base + L".go")) return;
    WalkOn();
}

void Window::WalkOn() {
    const int stage = WalkStage();
    if (stage >= kWalkPick) {
        const std::wstring pick = walk_.picks[picked_++];
        return pick.empty() ? ReadHere() : ReadDrive(pick, std::string());
    }
    switch (stage) {
    case 0:
        if (found_) OnNext();
        else DestroyWindow(hwnd_);  // nothing to export: the run ends here
        break;
    case 1: OnNext(); break;
    case 2: Show(kDone); break;
    case kWalkProfiles: {
        const LRESULT line = SendMessageW(profiles_, LB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                          reinterpret_cast<LPARAM>(walk_.driveUser.c_str()));
        if (walk_.driveUser.empty() || line == LB_ERR) return (void)DestroyWindow(hwnd_);
        SendMessageW(profiles_, LB_SETCURSEL, static_cast<WPARAM>(line), 0);
        ReadChosenProfile();
        break;
    }
    case 3: ToggleSteps(); break;
    case 4:
        if (walk_.showProblem && !problemPaths_.empty()) {
            ToggleSteps();
            SendMessageW(problems_, LB_SETCURSEL, 0, 0);
            ShowProblem(0);
            problemShown_ = true;
            shownAt_ = std::chrono::steady_clock::now();
            break;
        }
        DestroyWindow(hwnd_);
        break;
    default: DestroyWindow(hwnd_); break;
    }
}

}  // namespace gui
}  // namespace tqnralm
