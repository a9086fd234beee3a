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
    const std::string prefix = EnvironmentText("WINEPREFIX");
    if (!prefix.empty()) return prefix;
    const std::string home = EnvironmentText("HOME");
    return home.empty() ? home : home + "/.wine";
}

}  // namespace posix
}  // namespace qvp
