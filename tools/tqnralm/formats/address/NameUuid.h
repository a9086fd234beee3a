// NameUuid.h - the name-based UUIDs (version 5) that give the exported
// cards their stable UIDs.
#ifndef TQNRALM_HOST_NAMEUUID_H
#define TQNRALM_HOST_NAMEUUID_H

#include <string>

namespace tqnralm {

// The version 5 UUID of a name within a namespace (RFC 9562), in its
// lower-case 8-4-4-4-12 form. The namespace is given in that form too.
std::string NameUuid(const std::string& namespaceUuid, const std::string& name);

}  // namespace tqnralm

#endif  // TQNRALM_HOST_NAMEUUID_H
