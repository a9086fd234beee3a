// IniFile.h - an initialisation file, parsed as GetPrivateProfileString reads it.
//
// The parser takes the file's bytes: a UTF-16 or UTF-8 byte order mark
// selects that encoding, otherwise the bytes are code page 932. The text is
// kept in UTF-16, where sections and keys are matched without regard to
// case. Nothing here touches a disk.
#ifndef QV_PLATFORM_POSIX_INIFILE_H
#define QV_PLATFORM_POSIX_INIFILE_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace qvp {
namespace posix {

class IniFile {
public:
    void Load(const char* data, size_t size);

    // The value of the key in the first section of that name, trimmed and
    // with one matching pair of quotes removed. false when there is none.
    bool Find(const std::u16string& section, const std::u16string& key, std::u16string* value) const;

private:
    std::u16string text_;
};

// GetPrivateProfileStringA over the file's bytes (`data` nullptr: no file),
// with section, key and default in code page 932.
uint32_t ProfileStringFromBytes(const char* data, size_t size, const char* section, const char* key,
                                const char* defaultValue, char* buffer, uint32_t bufferSize);

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_INIFILE_H
