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
        const std::wstring text = Wide(row.text + " (" + std::to_string(row.messages) + ")");
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
    if (id == kIdOpen) return OpenFolder();
    if (id == kIdDest && code == EN_CHANGE) return ShowFreeSpace();
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
    if (step_ == kFound) return Show(kWhere);
    if (step_ != kWhere) return;
    const std::wstring outDir = OutDir();
    if (outDir.empty()) {
        MessageBoxW(hwnd_, Wide(Str(Text::kNeedFolder)).c_str(), Wide(Str(Text::kTitle)).c_str(), MB_ICONWARNING);
        SetFocus(dest_);
        return;
    }
    ExportOptions options;
    options.outDir = Utf8(outDir);
    for (size_t i = 0; i < 3; ++i) {
        if (SendMessageW(radios_[i], BM_GETCHECK, 0, 0) == BST_CHECKED) {
            options.format = FormatsOf(FormatKind::kMail)[i];
        }
    }
    options.addresses = SendMessageW(addresses_, BM_GETCHECK, 0, 0) == BST_CHECKED;
    // Starting again on the folder of a stopped export goes on with it; a
    // folder that holds other files gets the export added (nothing is
    // overwritten).
    options.force = true;
    exporting_ = true;
    started_ = std::chrono::steady_clock::now();
    SendMessageW(progress_, PBM_SETPOS, 0, 0);
    SetText(progressText_, ProgressLine(0, engine_->found().messages, 0, 0));
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
    SetText(readOnly_, Str(exit == kExitNotInstalled ? Text::kNotInstalled : Text::kReadOnly));
    if (found_) {
        AddRows(tree_, found);
        SetText(foundTotals_, Format(Text::kFoundTotals, {std::to_string(found.users), std::to_string(found.folders),
                                                          std::to_string(found.messages)}));
    }
    if (step_ == kFound) Show(kFound);
}

void Window::OnProgress() {
    engine_->Taken();
    const int64_t done = engine_->done(), total = engine_->total();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
    SendMessageW(progress_, PBM_SETPOS, total > 0 ? static_cast<WPARAM>(done * 1000 / total) : 0, 0);
    SetText(progressText_, ProgressLine(done, total, engine_->bytes(), seconds));
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
                                                  : Format(Text::kDoneFailed, {std::to_string(exit)}));
    SendMessageW(problems_, LB_RESETCONTENT, 0, 0);
    for (const std::string& problem : totals.problems) {
        SendMessageW(problems_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(problem).c_str()));
    }
    // A test run shows the export's last state until its screenshot is taken.
    if (!walk_.on) Show(kDone);
}

// The system's folder picker.
void Window::Browse() {
    IFileOpenDialog* dialog = nullptr;
    if (FAILED(CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER, IID_IFileOpenDialog,
                                reinterpret_cast<void**>(&dialog)))) {
        return;
    }
    DWORD flags = 0;
    dialog->GetOptions(&flags);
    dialog->SetOptions(flags | FOS_PICKFOLDERS | FOS_FORCEFILESYSTEM);
    IShellItem* item = nullptr;
    wchar_t* path = nullptr;
    if (SUCCEEDED(dialog->Show(hwnd_)) && SUCCEEDED(dialog->GetResult(&item)) &&
        SUCCEEDED(item->GetDisplayName(SIGDN_FILESYSPATH, &path))) {
        SetWindowTextW(dest_, path);
        CoTaskMemFree(path);
    }
    if (item != nullptr) item->Release();
    dialog->Release();
}

void Window::OpenFolder() { ShellExecuteW(hwnd_, L"open", OutDir().c_str(), nullptr, nullptr, SW_SHOWNORMAL); }

// A test run: step N settled writes stepN.ready, stepN.go moves on (the last
// step's closes the window).
void Window::WalkTick() {
    const bool ready = step_ == kFound ? searched_ : step_ != kExport || exportExit_ >= 0;
    const std::wstring base = walk_.shots + L"\\step" + std::to_wstring(static_cast<int>(step_) + 1);
    if (ready && walkReady_ != step_) {
        if (FILE* f = _wfopen((base + L".ready").c_str(), L"wb")) std::fclose(f);
        walkReady_ = step_;
    }
    if (walkReady_ != step_ || !FileExists(base + L".go")) return;
    switch (step_) {
    case kFound:
        if (found_) OnNext();
        else DestroyWindow(hwnd_);  // nothing to export: the run ends here
        break;
    case kWhere: OnNext(); break;
    case kExport: Show(kDone); break;
    case kDone: DestroyWindow(hwnd_); break;
    }
}

}  // namespace gui
}  // namespace tqnralm
