// RegfHive.h - a registry hive file (regf), read from its bytes.
//
// A copied system drive keeps its registry as hive files: the machine's
// Software in Windows\System32\config\SOFTWARE, each user's own keys in the
// profile's NTUSER.DAT. The Windows build reads them with this reader, the
// Linux build with hivex (posix/HiveFile.h); both give the same answers. Key
// and value names are matched without regard to case, as the registry
// matches them, and the first match wins.
#ifndef QV_PLATFORM_WIN32_REGFHIVE_H
#define QV_PLATFORM_WIN32_REGFHIVE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qvp {
namespace win32 {

class RegfHive {
public:
    // A value as the registry files of a Wine prefix give it: the string
    // types (REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ) as text without one final
    // NUL, every other type as its bytes.
    struct Value {
        uint32_t type = 0;
        bool isText = false;
        std::u16string text;
        std::string bytes;
    };

    // No hive is larger: nothing the client left needs more.
    static constexpr size_t kMaxBytes = size_t(1) << 30;

    // Takes a hive file's bytes. false when they are no hive: no "regf"
    // base block, a wrong checksum, bins that do not tile the file, no root key.
    bool Load(std::string bytes);

    // Paths are folded (CaseFold.h), relative to the hive's root, components
    // separated by backslashes; the empty path is the root.
    bool HasKey(const std::u16string& foldedPath) const;

    // false when the key or the value is missing, or its data is damaged.
    bool Find(const std::u16string& foldedPath, const std::u16string& foldedName, Value* out) const;

private:
    // A cell by its offset from the first bin: its data and its length, or
    // nullptr when no cell in use starts there.
    const unsigned char* Cell(uint32_t offset, size_t* length) const;
    uint32_t Child(uint32_t node, const std::u16string& foldedName) const;
    uint32_t ChildInList(uint32_t list, const std::u16string& foldedName, int depth) const;
    uint32_t Node(const std::u16string& foldedPath) const;
    bool Data(const unsigned char* vk, std::string* out) const;

    std::string bytes_;
    std::vector<bool> cells_;  // a cell in use starts here, by 4-byte units of the bins
    uint32_t root_ = 0;
    bool loaded_ = false;
};

}  // namespace win32
}  // namespace qvp

#endif  // QV_PLATFORM_WIN32_REGFHIVE_H
