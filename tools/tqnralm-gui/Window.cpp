// The assistant's window (Window.h): controls laid out in 96-dpi units and
// scaled to the monitor's DPI, the steps shown by hiding the others' controls.
#include "Window.h"

#include "WindowsApi.h"

#include "Font.h"
#include "Strings.h"
#include "Wide.h"

namespace tqnralm {
namespace gui {

namespace {

const wchar_t kClass[] = L"TqnralmAssistant";

}  // namespace

bool Window::Create(HINSTANCE instance, int show) {
    WNDCLASSEXW wc = {};
    wc.cbSize = sizeof wc;
    wc.lpfnWndProc = Proc;
    wc.hInstance = instance;
    wc.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // IDC_ARROW
    wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    wc.hIcon = LoadIconW(nullptr, MAKEINTRESOURCEW(32512));  // IDI_APPLICATION
    wc.lpszClassName = kClass;
    if (!RegisterClassExW(&wc)) return false;
    hwnd_ = CreateWindowExW(WS_EX_CONTROLPARENT, kClass, Wide(Str(Text::kTitle)).c_str(),
                            WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX, CW_USEDEFAULT, CW_USEDEFAULT,
                            600, 500, nullptr, nullptr, instance, this);
    if (hwnd_ == nullptr) return false;
    dpi_ = GetDpiForWindow(hwnd_);
    MakeControls();
    SetFont();
    Layout();
    Show(kFound);
    ShowWindow(hwnd_, show);
    engine_.reset(new Engine(hwnd_));
    engine_->Find();
    if (walk_.on) SetTimer(hwnd_, kWalkTimer, 100, nullptr);
    return true;
}

HWND Window::Control(const wchar_t* cls, const std::string& text, DWORD style, int id) {
    return CreateWindowExW(0, cls, Wide(text).c_str(), WS_CHILD | style, 0, 0, 0, 0, hwnd_,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
}

void Window::MakeControls() {
    heading_ = Control(L"STATIC", "", SS_LEFT, -1);
    readOnly_ = Control(L"STATIC", Str(Text::kSearching), SS_LEFT, -1);
    tree_ = CreateWindowExW(WS_EX_CLIENTEDGE, WC_TREEVIEWW, L"",
                            WS_CHILD | WS_TABSTOP | TVS_HASLINES | TVS_LINESATROOT | TVS_HASBUTTONS, 0, 0, 0, 0,
                            hwnd_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(kIdTree)), nullptr, nullptr);
    foundTotals_ = Control(L"STATIC", "", SS_LEFT, -1);
    MakeDriveControls();
    pages_[kFound] = {readOnly_,  tree_,     foundTotals_,  driveButton_, backButton_,
                      driveNote_, profiles_, readProfile_, driveDetails_};

    MakeWherePage();

    progress_ = Control(PROGRESS_CLASSW, "", 0, -1);
    SendMessageW(progress_, PBM_SETRANGE32, 0, 1000);
    progressText_ = Control(L"STATIC", "", SS_LEFT, -1);
    folderNow_ = Control(L"STATIC", "", SS_LEFT | SS_PATHELLIPSIS, -1);
    pages_[kExport] = {progress_, progressText_, folderNow_};

    doneTotals_ = Control(L"STATIC", "", SS_LEFT, -1);
    doneState_ = Control(L"STATIC", "", SS_LEFT, -1);
    problems_ = CreateWindowExW(WS_EX_CLIENTEDGE, L"LISTBOX", L"", WS_CHILD | WS_TABSTOP | WS_VSCROLL | LBS_NOTIFY,
                                0, 0, 0, 0, hwnd_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(kIdProblems)),
                                nullptr, nullptr);
    steps_ = CreateWindowExW(WS_EX_CLIENTEDGE, L"EDIT", L"",
                             WS_CHILD | WS_TABSTOP | WS_VSCROLL | ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL, 0, 0,
                             0, 0, hwnd_, nullptr, nullptr, nullptr);
    openFolder_ = Control(L"BUTTON", Str(Text::kOpenFolder), WS_TABSTOP | BS_PUSHBUTTON, kIdOpen);
    thunderbird_ = Control(L"BUTTON", Str(Text::kThunderbird), WS_TABSTOP | BS_PUSHBUTTON, kIdThunderbird);
    pages_[kDone] = {doneTotals_, doneState_, problems_, openFolder_, thunderbird_};

    next_ = Control(L"BUTTON", Str(Text::kNext), WS_TABSTOP | BS_DEFPUSHBUTTON | WS_VISIBLE | WS_DISABLED, kIdNext);
    cancel_ = Control(L"BUTTON", Str(Text::kCancel), WS_TABSTOP | BS_PUSHBUTTON | WS_VISIBLE, kIdCancel);
    ShowWindow(heading_, SW_SHOW);
}

// The message font of the system at the window's DPI, and a bold one for
// the heading.
void Window::SetFont() {
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    LOGFONTW face = metrics.lfMessageFont;
    face.lfHeight = -MulDiv(9, static_cast<int>(dpi_), 72);
    face = FaceForJapanese(hwnd_, face);
    if (font_ != nullptr) DeleteObject(font_);
    if (bold_ != nullptr) DeleteObject(bold_);
    font_ = CreateFontIndirectW(&face);
    face.lfWeight = FW_BOLD;
    face.lfHeight = -MulDiv(12, static_cast<int>(dpi_), 72);
    bold_ = CreateFontIndirectW(&face);
    for (HWND child = GetWindow(hwnd_, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(child == heading_ ? bold_ : font_), TRUE);
    }
}

void Window::Layout() {
    const auto at = [this](HWND control, int x, int y, int w, int h) {
        const int d = static_cast<int>(dpi_);
        MoveWindow(control, MulDiv(x, d, 96), MulDiv(y, d, 96), MulDiv(w, d, 96), MulDiv(h, d, 96), TRUE);
    };
    RECT client = {0, 0, MulDiv(600, static_cast<int>(dpi_), 96), MulDiv(500, static_cast<int>(dpi_), 96)};
    AdjustWindowRectEx(&client, GetWindowLongW(hwnd_, GWL_STYLE), FALSE, GetWindowLongW(hwnd_, GWL_EXSTYLE));
    SetWindowPos(hwnd_, nullptr, 0, 0, client.right - client.left, client.bottom - client.top,
                 SWP_NOMOVE | SWP_NOZORDER);
    at(heading_, 16, 12, 568, 26);
    // Found: the tree with the old disk's button (and the way back to this
    // computer) beside Next; without one, why not, what to pick, the
    // buttons, and a disk's profiles or details.
    at(readOnly_, 16, 46, 568, 36), at(tree_, 16, 86, 568, 292), at(foundTotals_, 16, 384, 568, 36);
    if (found_ && onDrive_ && installedHere_) at(backButton_, 16, 456, 176, 30), at(driveButton_, 200, 456, 168, 30);
    else if (found_) at(driveButton_, 16, 456, 300, 30);
    else at(driveButton_, 16, 152, 380, 32), at(backButton_, 404, 152, 180, 32);
    at(driveNote_, 16, 86, 568, 60), at(profiles_, 16, 194, 300, 100), at(readProfile_, 324, 194, 220, 30);
    at(driveDetails_, 16, 194, 568, 248);  // where the profiles stand when a disk asks for one
    at(destLabel_, 16, 46, 568, 20), at(dest_, 16, 68, 460, 26), at(browse_, 484, 67, 100, 28);
    at(formatBox_, 16, 100, 568, 158);
    for (int i = 0; i < 3; ++i) at(radios_[i], 32, 118 + i * 46, 540, 22), at(hints_[i], 52, 139 + i * 46, 520, 20);
    at(usersLabel_, 16, 266, 568, 20), at(users_, 16, 286, 568, 70);
    ListView_SetColumnWidth(users_, 0, LVSCW_AUTOSIZE_USEHEADER);
    at(addresses_, 16, 360, 568, 24), at(space_, 16, 388, 568, 60);
    at(progress_, 16, 80, 568, 24), at(progressText_, 16, 114, 568, 44), at(folderNow_, 16, 162, 568, 22);
    at(doneTotals_, 16, 46, 568, 20), at(doneState_, 16, 68, 568, 40);
    at(problems_, 16, 112, 568, 290), at(steps_, 16, 112, 568, 290);
    at(openFolder_, 16, 410, 220, 30), at(thunderbird_, 244, 410, 260, 30);
    at(next_, 376, 456, 100, 30), at(cancel_, 484, 456, 100, 30);
}

void Window::Show(Step step) {
    step_ = step;
    for (int page = kFound; page <= kDone; ++page) {
        for (HWND control : pages_[page]) ShowWindow(control, page == step ? SW_SHOW : SW_HIDE);
    }
    // The first step's heading follows its search (ShowFoundState); the
    // last one says how the export ended.
    const Text done = exportExit_ == kExitOk || exportExit_ == kExitIncomplete ? Text::kStepDone
                      : exportExit_ == kExitStopped                            ? Text::kStepStopped
                                                                               : Text::kStepNotFinished;
    if (step != kFound)
        SetText(heading_, Str(step == kWhere ? Text::kStepWhere : step == kExport ? Text::kStepExport : done));
    EnableWindow(next_, step == kFound ? found_ : step == kWhere);
    ShowWindow(next_, step == kDone ? SW_HIDE : SW_SHOW);
    SetText(cancel_, Str(step == kDone ? Text::kClose : Text::kCancel));
    ShowWindow(steps_, step == kDone && showingSteps_ ? SW_SHOW : SW_HIDE);
    if (step == kDone && (showingSteps_ || problemPaths_.empty())) ShowWindow(problems_, SW_HIDE);
    if (step == kFound) ShowFoundState();
    if (step == kWhere) RequestPlan();
    SetFocus(step == kWhere  ? dest_
             : step == kDone ? openFolder_
             : step == kExport ? cancel_
             : found_ || !searched_ ? next_
             : IsWindowVisible(profiles_) ? profiles_
                                          : driveButton_);
}

std::wstring Window::OutDir() const {
    std::wstring text(GetWindowTextLengthW(dest_), L'\0');
    GetWindowTextW(dest_, &text[0], static_cast<int>(text.size()) + 1);
    return text;
}

// The export's size from the dry run, against the free space where the
// folder is (or will be: its nearest existing parent).
void Window::ShowSpace() {
    bool all = false;
    if (CheckedUsers(&all).empty()) return SetText(space_, Str(Text::kNoUsers));
    std::wstring path = OutDir();
    ULARGE_INTEGER free = {};
    while (!path.empty() && !GetDiskFreeSpaceExW(path.c_str(), &free, nullptr, nullptr)) {
        const size_t slash = path.find_last_of(L"\\/");
        path = slash == std::wstring::npos ? std::wstring() : path.substr(0, slash);
    }
    if (OutDir().empty()) return SetText(space_, Str(Text::kChooseFolder));
    PlanTotals plan = engine_->planned();
    if (engine_->planning() || planDirty_) plan.exit = -1;
    SetText(space_, CheckSpace(plan, !path.empty(), free.QuadPart).line);
}

}  // namespace gui
}  // namespace tqnralm
