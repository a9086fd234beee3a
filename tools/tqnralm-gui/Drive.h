// What the assistant says of an old disk (a copied Windows drive): the
// folder to read when the person picked the disk's "Windows" folder itself,
// and the Found step's lines for a disk read or one that cannot be. The
// checks are the host's (WindowsDrive.h); only their wording is here.
#ifndef TQNRALM_GUI_DRIVE_H
#define TQNRALM_GUI_DRIVE_H

#include <string>

#include "WindowsDrive.h"

namespace tqnralm {
namespace gui {

// The folder above `picked` when `picked` is a folder named "Windows" (in
// any case): the button asks for the disk's Windows folder, and a person
// may take that to mean the folder of that name. "" otherwise. A drive's
// root keeps its backslash: "E:\Windows" gives "E:\".
std::string ParentOfWindowsFolder(const std::string& picked);

// The line above the Found tree of a disk read: which disk and profile,
// and that the disk is only read.
std::string DriveReadLine(const std::string& root, const std::string& user);

// What is wrong with the disk in plain words, and what to pick instead
// (two lines for the top of the Found step).
struct DriveProblemText {
    std::string what, hint;
};
DriveProblemText DriveProblem(const DriveCheck& check, const std::string& root, const std::string& user);

}  // namespace gui
}  // namespace tqnralm

#endif
