// The assistant's one window: four steps (found, where and how, export,
// done) shown in turn, with Next and Cancel at the bottom. A test run walks
// the steps by itself with given answers (Walk).
#ifndef TQNRALM_GUI_WINDOW_H
#define TQNRALM_GUI_WINDOW_H

#include "WindowsApi.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "Engine.h"
#include "Options.h"

namespace tqnralm {
namespace gui {

// The answers of a test run: the destination and format, and a folder where
// the window writes "stepN.ready" when step N is shown and settled, and
// goes on when "stepN.go" appears there (the test takes its screenshot in
// between).
struct Walk {
    bool on = false;
    std::wstring outDir, shots;
    size_t format = 0;  // the mail form's place among FormatsOf(FormatKind::kMail), as the buttons stand
    bool cancel = false;  // Cancel as soon as the export has begun
};

class Window {
public:
    explicit Window(const Walk& walk) : walk_(walk) {}
    bool Create(HINSTANCE instance, int show);
    HWND hwnd() const { return hwnd_; }
    // The export's exit code; without one, the search's.
    int exitCode() const { return exportExit_ >= 0 ? exportExit_ : findExit_; }

private:
    enum Step { kFound, kWhere, kExport, kDone };
    enum Id { kIdNext = IDOK, kIdCancel = IDCANCEL, kIdBrowse = 100, kIdDest, kIdMbox, kIdMaildir, kIdEml,
              kIdAddresses, kIdOpen, kIdProblems, kIdTree };
    static constexpr UINT_PTR kWalkTimer = 1;
    static LRESULT CALLBACK Proc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
    void MakeControls();
    HWND Control(const wchar_t* cls, const std::string& text, DWORD style, int id);
    void Layout();
    void SetFont();
    void Show(Step step);
    void OnCommand(int id, int code);
    void OnNext();
    void OnFound(int exit);
    void OnProgress();
    void OnExported(int exit);
    void ShowFreeSpace();
    void Browse();
    void OpenFolder();
    std::wstring OutDir() const;
    void WalkTick();

    Walk walk_;
    HWND hwnd_ = nullptr;
    std::unique_ptr<Engine> engine_;
    Step step_ = kFound;
    bool searched_ = false, found_ = false, exporting_ = false;
    int findExit_ = -1;
    int exportExit_ = -1;
    int walkReady_ = -1;  // the step whose ready file was written
    std::chrono::steady_clock::time_point started_;
    HFONT font_ = nullptr, bold_ = nullptr;
    UINT dpi_ = 96;
    // Controls: the heading and the buttons, then each step's own.
    HWND heading_, next_, cancel_;
    HWND readOnly_, tree_, foundTotals_;
    HWND destLabel_, dest_, browse_, formatBox_, radios_[3], hints_[3], addresses_, space_;
    HWND progress_, progressText_;
    HWND doneTotals_, doneState_, problems_, openFolder_;
    std::vector<HWND> pages_[4];
};

}  // namespace gui
}  // namespace tqnralm

#endif
