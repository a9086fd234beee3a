// KeyPaths.h - the paths of a registry key as a 32-bit program sees it.
//
// The mail client is a 32-bit program: on a 64-bit machine its
// HKLM\Software\X is Software\Wow6432Node\X when that key exists. Windows
// opens one key: the 32-bit view's when it exists, and a value missing there
// is missing, even when the native key holds it. Both platform layers ask
// their registry (a Wine prefix's files, a copied drive's hives) this way.
#ifndef QV_PLATFORM_KEYPATHS_H
#define QV_PLATFORM_KEYPATHS_H

#include "platform/platform.h"

#include <string>
#include <vector>

namespace qvp {

// `path` folded; `hasKey` tells which paths exist. Empty when none does.
template <class HasKey>
std::vector<std::u16string> KeyPaths(Hive hive, bool win64, const std::u16string& path, HasKey hasKey) {
    static const std::u16string kSoftware = u"SOFTWARE\\";
    static const std::u16string kWow = u"SOFTWARE\\WOW6432NODE";
    auto startsWith = [&](const std::u16string& prefix) { return path.compare(0, prefix.size(), prefix) == 0; };
    if (hive == Hive::LocalMachine && win64 && startsWith(kSoftware) &&
        !(startsWith(kWow) && (path.size() == kWow.size() || path[kWow.size()] == u'\\'))) {
        const std::u16string redirected = kWow + path.substr(kSoftware.size() - 1);
        if (hasKey(redirected)) return {redirected};
    }
    if (hasKey(path)) return {path};
    return {};
}

// The paths of a key in a copied drive's hive: the SOFTWARE hive's root is
// HKLM\Software, NTUSER.DAT's root is HKCU. The machine is 64-bit when its
// Software holds Wow6432Node.
template <class File>
std::vector<std::u16string> HivePaths(Hive hive, const File& file, const std::u16string& path) {
    const size_t skip = hive == Hive::LocalMachine ? 9 : 0;  // "SOFTWARE\\"
    auto inHive = [&](const std::u16string& p) { return p.size() > skip ? p.substr(skip) : std::u16string(); };
    auto hasKey = [&](const std::u16string& p) { return file.HasKey(inHive(p)); };
    std::vector<std::u16string> paths =
        KeyPaths(hive, hive == Hive::LocalMachine && file.HasKey(u"WOW6432NODE"), path, hasKey);
    for (std::u16string& p : paths) p = inHive(p);
    return paths;
}

}  // namespace qvp

#endif  // QV_PLATFORM_KEYPATHS_H
