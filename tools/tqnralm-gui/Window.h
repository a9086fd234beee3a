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

// The answers of a test run: the destination, format and users, and a
// folder where the window writes "stepN.ready" when step N is shown and
// settled, and goes on when "stepN.go" appears there (the test takes its
// screenshot in between).
struct Walk {
    bool on = false;
    std::wstring outDir, shots;
    size_t format = 0;  // the mail form's place among FormatsOf(FormatKind::kMail), as the buttons stand
    std::vector<int> users;     // the users left checked; empty: all
    bool cancel = false;        // Cancel as soon as the export has begun
    bool showProblem = false;   // double-click the first problem at the end
    // Folders picked in turn on the first step once this computer was
    // searched, each read as an old disk; "" goes back to this computer.
    std::vector<std::wstring> picks;
    std::wstring driveUser;     // the profile to choose when the disk asks for one
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
              kIdAddresses, kIdOpen, kIdProblems, kIdTree, kIdUsers, kIdThunderbird, kIdDrive, kIdProfiles,
              kIdReadProfile, kIdBack };
    // The walk's stages that show the profiles of a disk to choose from, and
    // the first step before the walk's pick N (kWalkPick + N).
    static constexpr int kWalkProfiles = 9;
    static constexpr int kWalkPick = 10;
    static constexpr UINT_PTR kWalkTimer = 1;
    static LRESULT CALLBACK Proc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
    void MakeControls();
    void MakeWherePage();
    void MakeDriveControls();
    HWND Control(const wchar_t* cls, const std::string& text, DWORD style, int id);
    void Layout();
    void SetFont();
    void Show(Step step);
    void OnCommand(int id, int code);
    void OnNext();
    void OnFound(int exit);
    void OnProgress();
    void OnExported(int exit);
    void OnPlanned();
    void OnUsersChanged(const NMHDR* header);
    void FillUsers();
    std::vector<int> CheckedUsers(bool* all) const;
    ExportOptions Chosen() const;
    void RequestPlan();
    void ShowSpace();
    void Browse();
    std::wstring PickFolder(const std::string& title);
    void ChooseDrive();
    void ReadDrive(const std::wstring& root, const std::string& user);
    void ReadChosenProfile();
    void ReadHere();
    void StartSearch(bool onDrive, const std::string& line);
    void ShowDrive();
    void ShowFoundState();
    void OpenFolder();
    void ShowProblem(int item);
    void ToggleSteps();
    std::wstring OutDir() const;
    int WalkStage() const;
    void WalkTick();
    void WalkOn();

    Walk walk_;
    HWND hwnd_ = nullptr;
    std::unique_ptr<Engine> engine_;
    Step step_ = kFound;
    bool searched_ = false, found_ = false, exporting_ = false, onDrive_ = false;
    bool planDirty_ = false, filling_ = false, showingSteps_ = false, problemShown_ = false;
    std::string driveUser_;  // the profile asked of the disk; "" the one that used the client
    bool installedHere_ = false;  // this computer's search found the mail client
    size_t picked_ = 0;           // the walk's picks made
    int findExit_ = -1;
    int exportExit_ = -1;
    int walkReady_ = -1;  // the stage whose ready file was written
    std::chrono::steady_clock::time_point started_, shownAt_;
    HFONT font_ = nullptr, bold_ = nullptr;
    UINT dpi_ = 96;
    // Controls: the heading and the buttons, then each step's own.
    HWND heading_, next_, cancel_;
    HWND readOnly_, tree_, foundTotals_;
    HWND driveButton_, backButton_, driveNote_, profiles_, readProfile_, driveDetails_;
    HWND destLabel_, dest_, browse_, formatBox_, radios_[3], hints_[3], usersLabel_, users_, addresses_, space_;
    HWND progress_, progressText_, folderNow_;
    HWND doneTotals_, doneState_, problems_, steps_, openFolder_, thunderbird_;
    std::vector<std::string> problemPaths_;  // beside each line of problems_
    std::vector<HWND> pages_[4];
};

}  // namespace gui
}  // namespace tqnralm

#endif
