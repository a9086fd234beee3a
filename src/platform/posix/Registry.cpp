// Registry.cpp - RegOpenKeyExA and RegQueryValueExA over the Wine prefix or
// the hives of a copied drive.
//
// In a prefix HKEY_LOCAL_MACHINE is system.reg, HKEY_CURRENT_USER is
// user.reg. Wine rewrites both while it runs, so they are only ever read, and
// read afresh at each open. A copied drive keeps hive files (DriveHives.h).
// The 32-bit view is looked at first (KeyPaths.h).
#include "platform/platform.h"
#include "platform/KeyPaths.h"
#include "platform/posix/DriveHives.h"
#include "platform/posix/HiveFile.h"
#include "platform/posix/HostPath.h"
#include "platform/posix/PosixText.h"
#include "platform/posix/RegistryFile.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace qvp {

struct RegKey {
    std::unique_ptr<posix::RegistryFile> file;  // a prefix's text file, or
    std::unique_ptr<posix::HiveFile> hive;      // a copied drive's hive
    std::vector<std::u16string> paths;          // folded, in the order they are searched
};

namespace {

constexpr size_t kMaxRegistryBytes = 256u << 20;

std::u16string FoldedName(const char* cp932) {
    std::u16string wide;
    if (cp932 != nullptr) posix::Cp932ToUtf16(cp932, std::strlen(cp932), false, &wide);
    return posix::Fold(std::move(wide));
}

// A sub key as RegOpenKeyEx takes it: components separated by backslashes;
// trailing separators are dropped.
std::u16string KeyPath(const char* subKey) {
    std::u16string path = FoldedName(subKey);
    while (!path.empty() && path.back() == u'\\') path.pop_back();
    return path;
}

bool OpenPrefixKey(Hive hive, const std::u16string& path, RegKey* key) {
    const std::string prefix = posix::PrefixRoot();
    if (prefix.empty()) return false;
    std::string bytes;
    const char* name = hive == Hive::LocalMachine ? "/system.reg" : "/user.reg";
    if (!posix::ReadWholeFile(prefix + name, kMaxRegistryBytes, &bytes)) return false;
    key->file = std::make_unique<posix::RegistryFile>();
    if (!key->file->Parse(bytes.data(), bytes.size())) return false;
    const posix::RegistryFile& file = *key->file;
    key->paths = KeyPaths(hive, file.Win64(), path, [&](const std::u16string& p) { return file.HasKey(p); });
    return !key->paths.empty();
}

bool OpenDriveKey(Hive hive, const std::u16string& path, RegKey* key) {
    key->hive = posix::OpenDriveHive(hive, path);
    if (key->hive == nullptr) return false;
    key->paths = HivePaths(hive, *key->hive, path);
    return !key->paths.empty();
}

}  // namespace

bool RegOpen(Hive hive, const char* subKey, RegKey** out) {
    if (out == nullptr) return false;
    *out = nullptr;
    const std::u16string path = KeyPath(subKey);
    if (!path.empty() && path.front() == u'\\') return false;
    // Out of memory is no missing key: std::bad_alloc goes up to the reader's
    // barrier, or discovery would go on without the user the key names.
    auto key = std::make_unique<RegKey>();
    const bool opened = posix::WindowsRoot().empty() ? OpenPrefixKey(hive, path, key.get())
                                                     : OpenDriveKey(hive, path, key.get());
    if (!opened) return false;
    *out = key.release();
    return true;
}

bool RegQueryString(RegKey* key, const char* valueName, char* data, uint32_t* pcbData) {
    if (key == nullptr || pcbData == nullptr) return false;
    const std::u16string name = FoldedName(valueName);
    const posix::RegistryFile::Value* value = nullptr;
    posix::RegistryFile::Value fromHive;
    for (const std::u16string& path : key->paths) {
        if (key->hive != nullptr)
            value = key->hive->Find(path, name, &fromHive) ? &fromHive : nullptr;
        else
            value = key->file->Find(path, name);
        if (value != nullptr) break;
    }
    if (value == nullptr) return false;
    std::string ansi = value->isText ? posix::Utf16ToCp932(value->text.data(), value->text.size())
                                     : value->bytes;
    ansi.push_back('\0');
    if (ansi.size() > UINT32_MAX) return false;
    const uint32_t needed = static_cast<uint32_t>(ansi.size());
    // No size query: Windows' side refuses a null buffer as well.
    if (data == nullptr) return false;
    if (*pcbData < needed) {
        *pcbData = needed;
        return false;
    }
    std::memcpy(data, ansi.data(), ansi.size());
    *pcbData = needed;
    return true;
}

void RegCloseKey(RegKey* key) { delete key; }

}  // namespace qvp
