// The assistant's window (Window.h): controls laid out in 96-dpi units and
// scaled to the monitor's DPI, the steps shown by hiding the others' controls.
#include "Window.h"

#include "WindowsApi.h"

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
                            560, 440, nullptr, nullptr, instance, this);
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
    pages_[kFound] = {readOnly_, tree_, foundTotals_};

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
    addresses_ = Control(L"BUTTON", Str(Text::kAddressBooks), WS_TABSTOP | WS_GROUP | BS_AUTOCHECKBOX, kIdAddresses);
    SendMessageW(addresses_, BM_SETCHECK, BST_CHECKED, 0);
    space_ = Control(L"STATIC", "", SS_LEFT, -1);
    pages_[kWhere] = {destLabel_, dest_, browse_, formatBox_, radios_[0], radios_[1], radios_[2],
                      hints_[0],  hints_[1], hints_[2], addresses_, space_};

    progress_ = Control(PROGRESS_CLASSW, "", 0, -1);
    SendMessageW(progress_, PBM_SETRANGE32, 0, 1000);
    progressText_ = Control(L"STATIC", "", SS_LEFT, -1);
    pages_[kExport] = {progress_, progressText_};

    doneTotals_ = Control(L"STATIC", "", SS_LEFT, -1);
    doneState_ = Control(L"STATIC", "", SS_LEFT, -1);
    problems_ = CreateWindowExW(WS_EX_CLIENTEDGE, L"LISTBOX", L"", WS_CHILD | WS_TABSTOP | WS_VSCROLL | LBS_NOTIFY,
                                0, 0, 0, 0, hwnd_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(kIdProblems)),
                                nullptr, nullptr);
    openFolder_ = Control(L"BUTTON", Str(Text::kOpenFolder), WS_TABSTOP | BS_PUSHBUTTON, kIdOpen);
    pages_[kDone] = {doneTotals_, doneState_, problems_, openFolder_};

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
    RECT client = {0, 0, MulDiv(560, static_cast<int>(dpi_), 96), MulDiv(440, static_cast<int>(dpi_), 96)};
    AdjustWindowRectEx(&client, GetWindowLongW(hwnd_, GWL_STYLE), FALSE, GetWindowLongW(hwnd_, GWL_EXSTYLE));
    SetWindowPos(hwnd_, nullptr, 0, 0, client.right - client.left, client.bottom - client.top,
                 SWP_NOMOVE | SWP_NOZORDER);
    at(heading_, 16, 12, 528, 26);
    at(readOnly_, 16, 46, 528, 20), at(tree_, 16, 70, 528, 290), at(foundTotals_, 16, 366, 528, 20);
    at(destLabel_, 16, 48, 528, 20), at(dest_, 16, 70, 420, 26), at(browse_, 444, 69, 100, 28);
    at(formatBox_, 16, 106, 528, 180);
    for (int i = 0; i < 3; ++i) at(radios_[i], 32, 128 + i * 52, 500, 22), at(hints_[i], 52, 150 + i * 52, 480, 20);
    at(addresses_, 16, 296, 528, 24), at(space_, 16, 328, 528, 44);
    at(progress_, 16, 80, 528, 24), at(progressText_, 16, 114, 528, 44);
    at(doneTotals_, 16, 48, 528, 20), at(doneState_, 16, 72, 528, 40), at(problems_, 16, 116, 528, 200);
    at(openFolder_, 16, 326, 220, 30);
    at(next_, 336, 396, 100, 30), at(cancel_, 444, 396, 100, 30);
}

void Window::Show(Step step) {
    step_ = step;
    for (int page = kFound; page <= kDone; ++page) {
        for (HWND control : pages_[page]) ShowWindow(control, page == step ? SW_SHOW : SW_HIDE);
    }
    const Text headings[4] = {Text::kStepFound, Text::kStepWhere, Text::kStepExport, Text::kStepDone};
    SetText(heading_, Str(headings[step]));
    EnableWindow(next_, step == kFound ? found_ : step == kWhere);
    ShowWindow(next_, step == kDone ? SW_HIDE : SW_SHOW);
    SetText(cancel_, Str(step == kDone ? Text::kClose : Text::kCancel));
    if (step == kWhere) ShowFreeSpace();
    SetFocus(step == kWhere ? dest_ : step == kDone ? openFolder_ : step == kExport ? cancel_ : next_);
}

std::wstring Window::OutDir() const {
    std::wstring text(GetWindowTextLengthW(dest_), L'\0');
    GetWindowTextW(dest_, &text[0], static_cast<int>(text.size()) + 1);
    return text;
}

// The free space where the folder is (or will be): its nearest existing parent.
void Window::ShowFreeSpace() {
    std::wstring path = OutDir();
    ULARGE_INTEGER free = {};
    while (!path.empty() && !GetDiskFreeSpaceExW(path.c_str(), &free, nullptr, nullptr)) {
        const size_t slash = path.find_last_of(L"\\/");
        path = slash == std::wstring::npos ? std::wstring() : path.substr(0, slash);
    }
    const int64_t messages = engine_ ? engine_->found().messages : 0;
    SetText(space_, path.empty() ? Str(Text::kChooseFolder)
                                 : Format(Text::kFreeSpace, {std::to_string(messages),
                                                             std::to_string(free.QuadPart / 1000000)}));
}

}  // namespace gui
}  // namespace tqnralm
