// CopiedDrive.cpp - on Windows the machine is the running one: a copied
// drive is read only by the Linux build.
#include "support/SampleStore.h"

namespace qvt {

bool WriteCopiedDrive(const WinePrefix&, const std::string&, const std::string&, const std::string&) { return false; }

}  // namespace qvt
