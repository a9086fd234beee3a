// Machine.h - the Windows machine this process reads: a Wine prefix, or a
// copied Windows system drive (CopiedDrive.h), which wins over the prefix.
//
// Without a drive the machine is WINEPREFIX (else ~/.wine).
#ifndef QV_PLATFORM_POSIX_MACHINE_H
#define QV_PLATFORM_POSIX_MACHINE_H

#include "platform/CopiedDrive.h"

#include <string>

namespace qvp {
namespace posix {

using qvp::DriveFolder;
using qvp::UseCopiedDrive;
using qvp::WindowsRoot;
using qvp::WindowsUser;

// The prefix: WINEPREFIX, else $HOME/.wine; empty when neither is known.
std::string PrefixRoot();
// The same appended to *out: a caller that asks for every file it opens
// keeps one string for it.
void AppendPrefixRoot(std::string* out);

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_MACHINE_H
