// CopiedDrive.cpp - the copied drive a host named, else the environment's.
#include "platform/CopiedDrive.h"

#include <atomic>
#include <mutex>

namespace qvp {
namespace {

struct Named {
    std::mutex mutex;
    std::atomic<bool> set{false};  // read without the lock: once set, it stays
    std::string root, user;
};

Named& Chosen() {
    static Named named;
    return named;
}

}  // namespace

void UseCopiedDrive(const std::string& root, const std::string& user) {
    Named& named = Chosen();
    std::lock_guard<std::mutex> lock(named.mutex);
    named.set = true;
    named.root = root;
    named.user = user;
}

std::string WindowsRoot() {
    Named& named = Chosen();
    std::lock_guard<std::mutex> lock(named.mutex);
    return named.set ? named.root : EnvironmentText("TQNRALM_WINDOWS_ROOT");
}

bool NamedWindowsRoot(std::string* root) {
    Named& named = Chosen();
    if (!named.set.load()) return false;
    std::lock_guard<std::mutex> lock(named.mutex);
    *root = named.root;
    return true;
}

std::string WindowsUser() {
    Named& named = Chosen();
    std::lock_guard<std::mutex> lock(named.mutex);
    return named.set ? named.user : EnvironmentText("TQNRALM_WINDOWS_USER");
}

std::string DriveFolder(char letter) {
    return EnvironmentText((std::string("TQNRALM_DRIVE_") + static_cast<char>(letter - 'a' + 'A')).c_str());
}

std::string RegistryWindowsDirectory() {
    std::string directory = "C:\\windows";
    RegKey* key = nullptr;
    if (RegOpen(Hive::LocalMachine, "Software\\Microsoft\\Windows NT\\CurrentVersion", &key)) {
        char value[260] = {};
        uint32_t bytes = sizeof value;
        if (RegQueryString(key, "SystemRoot", value, &bytes) && value[0] != 0) directory = value;
        RegCloseKey(key);
    }
    return directory;
}

namespace drive {

const char kSoftwareHive[] = "C:\\Windows\\System32\\config\\SOFTWARE";
const char* const kProfileFolders[2] = {"C:\\Users\\", "C:\\Documents and Settings\\"};

bool UnderSoftware(const std::u16string& foldedKey) {
    static const std::u16string kSoftware = u"SOFTWARE";
    return foldedKey.compare(0, kSoftware.size(), kSoftware) == 0 &&
           (foldedKey.size() == kSoftware.size() || foldedKey[kSoftware.size()] == u'\\');
}

}  // namespace drive
}  // namespace qvp
