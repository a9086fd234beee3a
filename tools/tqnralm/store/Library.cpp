// The host's side of the library: one session, references held by RAII,
// names and children through the usual calls.
#include "Library.h"

#include <cstdio>
#include <vector>

#include "Console.h"
#include "Os.h"
#include "Utf.h"

namespace tqnralm {

Ref& Ref::operator=(Ref&& other) noexcept {
    if (this != &other) {
        Reset();
        obj_ = other.obj_;
        other.obj_ = nullptr;
    }
    return *this;
}

void Ref::Reset() {
    if (obj_ != nullptr) QV_Object_Dispose(obj_);
    obj_ = nullptr;
}

int32_t GetName(QV_OBJ obj, bool display, std::string* out) {
    auto get = display ? QV_Object_GetDisplayName : QV_Object_GetName;
    // Most names fit a small buffer, and one call gives them (a subject is
    // decoded anew by every call); only a text that fills it is asked for
    // its length first.
    QV_WCHAR small[256] = {};  // traced as it is when the call fails
    uint32_t len = 255;
    int32_t code = get(obj, small, &len);
    if (code != QV_S_OK) return code;
    if (len < 255) {
        small[len] = 0;
        *out = Utf8(small);
        return code;
    }
    code = get(obj, nullptr, &len);
    if (code != QV_S_OK) return code;
    std::vector<QV_WCHAR> buf(len + 1);
    code = get(obj, buf.data(), &len);
    if (code == QV_S_OK) *out = Utf8(buf.data());
    return code;
}

std::string NameOrError(QV_OBJ obj, bool display) {
    std::string name;
    int32_t code = GetName(obj, display, &name);
    return code == QV_S_OK ? name : "<error " + std::to_string(code) + ">";
}

int32_t Children::Next(Ref* child) {
    if (ended_) return QV_E_NO_MORE_ITEMS;
    if (code_ != QV_S_OK) {
        ended_ = true;
        return code_;
    }
    const int32_t code = QV_Objects_GetNext(objs_.get(), child->out());
    if (code == QV_S_OK || code == QV_E_NO_MORE_ITEMS) return code;
    Ref failed;
    if (QV_Objects_GetNext(objs_.get(), failed.out()) != QV_S_OK) ended_ = true;  // still stuck on it
    return code;
}

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
        Print(stderr, "tqnralm: cannot open the log file '%s' (code %d)\n", options.logFile.c_str(),
              static_cast<int>(code));
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
            Print(stderr, "tqnralm: AL-Mail32 was not found on the Windows drive '%s' (code %d).\n",
                  drive.c_str(), static_cast<int>(code));
        else
            Print(stderr,
                  "tqnralm: AL-Mail32 was not found on this machine (code %d). Point WINEPREFIX at the Wine "
                  "prefix that holds it, or --windows at a copied Windows drive.\n",
                  static_cast<int>(code));
        return kExitNotInstalled;
    }
    if (QV_GetRootObject(root_.out()) != QV_S_OK) return kExitIncomplete;
    return kExitOk;
}

}  // namespace tqnralm
