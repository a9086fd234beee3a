// tqnralm-gui - the migration assistant: one window that finds the mail
// client's data on this machine, shows it, exports it with the host's own
// export and says what arrived. For a test run:
//   tqnralm-gui.exe --walk OUTDIR --shots DIR [--format mbox|maildir|eml] [--users 0,2]
//                   [--cancel] [--show-problem] [--drive DIR | --back]... [--drive-user NAME]
// walks the steps with these answers (Window.h) and exits with the export's
// code. Once this computer was searched, each --drive reads the folder DIR
// as an old disk, as if it had been picked, and each --back goes back to
// this computer, in the order given; --drive-user is the profile chosen
// when the disk asks for one.
#include "WindowsApi.h"

#include <cwchar>
#include <string>
#include <vector>

#include "Strings.h"
#include "Window.h"

namespace {

tqnralm::gui::Walk ParseWalk() {
    tqnralm::gui::Walk walk;
    int argc = 0;
    wchar_t** argv = CommandLineToArgvW(GetCommandLineW(), &argc);
    for (int i = 1; argv != nullptr && i < argc; ++i) {
        const std::wstring arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == L"--walk" && hasValue) {
            walk.on = true;
            walk.outDir = argv[++i];
        } else if (arg == L"--shots" && hasValue) {
            walk.shots = argv[++i];
        } else if (arg == L"--format" && hasValue) {
            const std::wstring f = argv[++i];
            const std::vector<std::string> names = tqnralm::FormatNames(tqnralm::FormatKind::kMail);
            for (size_t n = 0; n < names.size(); ++n) {
                if (f == std::wstring(names[n].begin(), names[n].end())) walk.format = n;
            }
        } else if (arg == L"--users" && hasValue) {
            for (const wchar_t* p = argv[++i]; *p != L'\0';) {
                wchar_t* end = nullptr;
                walk.users.push_back(static_cast<int>(std::wcstol(p, &end, 10)));
                p = *end == L',' ? end + 1 : end + (*end != L'\0');
            }
        } else if (arg == L"--drive" && hasValue) {
            walk.picks.push_back(argv[++i]);
        } else if (arg == L"--back") {
            walk.picks.push_back(std::wstring());
        } else if (arg == L"--drive-user" && hasValue) {
            walk.driveUser = argv[++i];
        } else if (arg == L"--show-problem") {
            walk.showProblem = true;
        } else if (arg == L"--cancel") {
            walk.cancel = true;
        }
    }
    LocalFree(argv);
    return walk;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int show) {
    tqnralm::gui::ChooseLanguage(GetUserDefaultUILanguage());
    INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_TREEVIEW_CLASSES | ICC_LISTVIEW_CLASSES | ICC_PROGRESS_CLASS |
                                                         ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);  // the folder picker
    tqnralm::gui::Window window(ParseWalk());
    if (!window.Create(instance, show)) return 1;
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        // Tab, Enter, Esc and the mnemonics as in a dialog.
        if (IsDialogMessageW(window.hwnd(), &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    CoUninitialize();
    return window.exitCode();
}
