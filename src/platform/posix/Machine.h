// Machine.h - the Windows machine this process reads: a Wine prefix, or a
// copied Windows system drive and the profile on it whose mail is read.
//
// A host may name a copied drive before its first call of the library; one
// that names none gets the machine from the environment: TQNRALM_WINDOWS_ROOT
// and TQNRALM_WINDOWS_USER for a drive, else WINEPREFIX (else ~/.wine). The
// process holds one machine, in the shared platform layer, so what the host
// names is what the library reads.
#ifndef QV_PLATFORM_POSIX_MACHINE_H
#define QV_PLATFORM_POSIX_MACHINE_H

#include <string>

namespace qvp {
namespace posix {

// Reads the copied drive at `root` from now on; `user` names its profile
// (empty: the one profile that used the client).
void UseCopiedDrive(const std::string& root, const std::string& user);

// The prefix: WINEPREFIX, else $HOME/.wine; empty when neither is known.
std::string PrefixRoot();

// The copied Windows system drive, which wins over the prefix; empty when
// the machine is a Wine prefix.
std::string WindowsRoot();

// The profile named for the copied drive; empty when none is.
std::string WindowsUser();

// Where a copied drive's other letter lies (a client whose data lay on D:):
// TQNRALM_DRIVE_<LETTER>; empty when it is not mounted. `letter` in 'a'-'z'.
std::string DriveFolder(char letter);

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_MACHINE_H
