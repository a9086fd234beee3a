// The host's side of the library: one session (see Library.h).
#include "Library.h"

#include <vector>

#include "platform/HostOs.h"
#include "Utf.h"

namespace tqnralm {

Session::~Session() {
    root_.Reset();
    if (initialised_) {
        QV_ExitLibrary();
    } else if (logging_) {
        QV_EndLogging();
    }
}

int Session::StartLog(const GlobalOptions& options) {
    if (options.logFile.empty()) return kExitOk;
    std::vector<QV_WCHAR> path = Utf16(options.logFile);
    int32_t code = QV_StartLogging(path.data());
    if (code != QV_S_OK) {
        report_.Say(Channel::kMessage, "tqnralm: cannot open the log file '%s' (code %d)\n",
                    options.logFile.c_str(), static_cast<int>(code));
        return kExitIncomplete;
    }
    logging_ = true;
    return kExitOk;
}

int Session::Open() {
    QV_BOOL installed = 0;
    int32_t code = QV_IsMailerInstalled(&installed);
    initialised_ = true;  // QV_ExitLibrary also ends the log, as before any failed start
    if (code != QV_S_OK || !installed || QV_InitLibrary() != QV_S_OK) {
        const std::string drive = os::CopiedDrive();
        if (!drive.empty())
            report_.Say(Channel::kMessage, "tqnralm: AL-Mail32 was not found on the Windows drive '%s' (code %d).\n",
                        drive.c_str(), static_cast<int>(code));
        else
            report_.Say(Channel::kMessage,
                        "tqnralm: AL-Mail32 was not found on this machine (code %d). Point WINEPREFIX at the Wine "
                        "prefix that holds it, or --windows at a copied Windows drive.\n",
                        static_cast<int>(code));
        return kExitNotInstalled;
    }
    if (QV_GetRootObject(root_.out()) != QV_S_OK) return kExitIncomplete;
    return kExitOk;
}

}  // namespace tqnralm
