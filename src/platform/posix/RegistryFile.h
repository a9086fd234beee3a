// RegistryFile.h - one of Wine's registry files (system.reg, user.reg), parsed.
//
// The parser takes the file's bytes and keeps every key with its values;
// names are kept folded to upper case, since the registry matches key and
// value names without regard to case. Nothing here touches a disk.
#ifndef QV_PLATFORM_POSIX_REGISTRYFILE_H
#define QV_PLATFORM_POSIX_REGISTRYFILE_H

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace qvp {
namespace posix {

class RegistryFile {
public:
    struct Value {
        std::u16string name;  // folded; empty for the default value "@"
        bool isText;          // a string type: the text is in `text`
        std::u16string text;  // the string, without its terminator
        std::string bytes;    // the data of other types, as stored
    };

    // false when the bytes are no registry file (a wrong first line). Lines
    // that cannot be read are passed over, as Wine does.
    bool Parse(const char* data, size_t size);

    // "#arch=win64" stood before the first key.
    bool Win64() const { return win64_; }

    // A key exists when it was written or when a written key lies below it.
    // The path is folded, its components separated by one backslash.
    bool HasKey(const std::u16string& foldedPath) const;

    // The first value of that name in the key, or nullptr.
    const Value* Find(const std::u16string& foldedPath, const std::u16string& foldedName) const;

    size_t KeyCount() const { return keys_.size(); }

private:
    struct Key {
        std::u16string path;
        std::vector<Value> values;
    };
    void ParseValueLine(const char* line, size_t length, const char* end, const char** next);

    std::vector<Key> keys_;
    std::unordered_map<std::u16string, size_t> index_;
    long current_ = -1;
    bool win64_ = false;
};

// Registry string escapes: the text from `p` up to the unescaped delimiter.
// Returns the offset just past the delimiter, or `length` + 1 when there is
// none (an unterminated string).
size_t UnescapeRegistry(const char* p, size_t length, char delim, std::u16string* out);

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_REGISTRYFILE_H
