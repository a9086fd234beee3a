// Machine.cpp - the machine a host named, else the environment's.
#include "platform/posix/Machine.h"

#include <cstdlib>
#include <mutex>

namespace qvp {
namespace posix {
namespace {

struct Named {
    std::mutex mutex;
    bool set = false;
    std::string root, user;
};

Named& Chosen() {
    static Named named;
    return named;
}

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

void UseCopiedDrive(const std::string& root, const std::string& user) {
    Named& named = Chosen();
    std::lock_guard<std::mutex> lock(named.mutex);
    named.set = true;
    named.root = root;
    named.user = user;
}

std::string PrefixRoot() {
    const std::string prefix = Variable("WINEPREFIX");
    if (!prefix.empty()) return prefix;
    const std::string home = Variable("HOME");
    return home.empty() ? home : home + "/.wine";
}

std::string WindowsRoot() {
    Named& named = Chosen();
    std::lock_guard<std::mutex> lock(named.mutex);
    return named.set ? named.root : Variable("TQNRALM_WINDOWS_ROOT");
}

std::string WindowsUser() {
    Named& named = Chosen();
    std::lock_guard<std::mutex> lock(named.mutex);
    return named.set ? named.user : Variable("TQNRALM_WINDOWS_USER");
}

std::string DriveFolder(char letter) {
    return Variable((std::string("TQNRALM_DRIVE_") + static_cast<char>(letter - 'a' + 'A')).c_str());
}

}  // namespace posix
}  // namespace qvp
