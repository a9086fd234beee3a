// The assistant's words for an old disk (Drive.h).
#include "Drive.h"

#include "Strings.h"

namespace tqnralm {
namespace gui {

std::string ParentOfWindowsFolder(const std::string& picked) {
    std::string path = picked;
    while (!path.empty() && (path.back() == '\\' || path.back() == '/')) path.pop_back();
    const size_t slash = path.find_last_of("\\/");
    const std::string name = path.substr(slash == std::string::npos ? 0 : slash + 1);
    static const char kWindows[] = "windows";
    if (slash == std::string::npos || name.size() != sizeof kWindows - 1) return std::string();
    for (size_t i = 0; i < name.size(); ++i) {
        const char c = name[i] >= 'A' && name[i] <= 'Z' ? static_cast<char>(name[i] - 'A' + 'a') : name[i];
        if (c != kWindows[i]) return std::string();
    }
    std::string parent = path.substr(0, slash);
    // "E:" alone is the folder current on E:, not its root.
    if (parent.empty() || parent.back() == ':') parent += path[slash];
    return parent;
}

std::string DriveReadLine(const std::string& root, const std::string& user) {
    return Format(Text::kDriveReading, {root, user});
}

DriveProblemText DriveProblem(const DriveCheck& check, const std::string& root, const std::string& user) {
    switch (check.problem) {
    case DriveCheck::kReadable: return {};
    case DriveCheck::kNotADrive: return {Format(Text::kDriveNotADrive, {root}), Str(Text::kDriveHintRoot)};
    case DriveCheck::kNoSuchUser: return {Format(Text::kDriveNoSuchUser, {user}), Str(Text::kDriveHintUser)};
    case DriveCheck::kSeveralUsers: return {Str(Text::kDriveSeveral), Str(Text::kDriveHintSeveral)};
    case DriveCheck::kNoUser: return {Str(Text::kDriveNoUser), Str(Text::kDriveHintOtherDisk)};
    case DriveCheck::kUserUnreadable:
    case DriveCheck::kMachineUnreadable: return {Str(Text::kDriveUnreadable), Str(Text::kDriveHintDamaged)};
    }
    return {};
}

}  // namespace gui
}  // namespace tqnralm
