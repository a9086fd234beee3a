// Machine.cpp - the Wine prefix, and the environment in UTF-8.
#include "platform/posix/Machine.h"

#include <cstdlib>

namespace qvp {

// Linux keeps the environment in UTF-8 already.
std::string EnvironmentText(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

namespace posix {

std::string PrefixRoot() {
    std::string prefix;
    AppendPrefixRoot(&prefix);
    return prefix;
}

void AppendPrefixRoot(std::string* out) {
    const char* winePrefix = std::getenv("WINEPREFIX");
    if (winePrefix != nullptr && winePrefix[0] != '\0') {
        out->append(winePrefix);
        return;
    }
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] != '\0') {
        out->append(home);
        out->append("/.wine");
    }
}

}  // namespace posix
}  // namespace qvp
