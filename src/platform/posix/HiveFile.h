// HiveFile.h - one registry hive of a Windows disk, read through hivex.
//
// A copied system drive keeps its registry as hive files: the machine's
// Software in Windows/System32/config/SOFTWARE, each user's own keys in the
// profile's NTUSER.DAT. The hive is opened read-only; key and value names
// are matched without regard to case, as the registry matches them, and the
// first match wins.
#ifndef QV_PLATFORM_POSIX_HIVEFILE_H
#define QV_PLATFORM_POSIX_HIVEFILE_H

#include "platform/posix/RegistryFile.h"

#include <string>

struct hive_h;  // hivex's handle

namespace qvp {
namespace posix {

class HiveFile {
public:
    HiveFile() = default;
    ~HiveFile();
    HiveFile(const HiveFile&) = delete;
    HiveFile& operator=(const HiveFile&) = delete;

    // Opens a regular file as a hive. false when it cannot be read or is no
    // hive; *error then says why: the errno of a failed stat or open, EISDIR
    // or ENODEV for a folder or another file that is not regular, EINVAL for
    // a file that is no hive (damaged, cut short) or too large for one.
    bool Open(const std::string& hostPath, int* error = nullptr);

    // Paths are folded, relative to the hive's root, components separated by
    // one backslash; the empty path is the root.
    bool HasKey(const std::u16string& foldedPath) const;

    // A value in the form the Wine registry files give it: the string types
    // (REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ) as text without one final NUL,
    // every other type as its bytes.
    bool Find(const std::u16string& foldedPath, const std::u16string& foldedName, RegistryFile::Value* out) const;

private:
    // The node of a key, 0 when there is none.
    size_t Node(const std::u16string& foldedPath) const;

    ::hive_h* hive_ = nullptr;
};

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_HIVEFILE_H
