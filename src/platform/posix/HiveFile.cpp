// HiveFile.cpp - a registry hive read through hivex.
//
// hivex gives names in UTF-8 and data as stored: strings in UTF-16LE, usually
// with their terminator. Names are compared here, folded as the Wine registry
// files' names are, rather than by hivex's own look-up, which folds ASCII only.
#include "platform/posix/HiveFile.h"

#include "platform/posix/PosixText.h"

#include <errno.h>
#include <hivex.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <memory>

namespace qvp {
namespace posix {
namespace {

// A hive larger than this is no registry the client could have left.
constexpr off_t kMaxHiveBytes = off_t(1) << 30;

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};

bool NameIs(const char* utf8, const std::u16string& folded) {
    if (utf8 == nullptr) return false;
    std::u16string name;
    Utf8ToUtf16(utf8, std::char_traits<char>::length(utf8), false, &name);
    return name.size() == folded.size() && Fold(std::move(name)) == folded;
}

}  // namespace

HiveFile::~HiveFile() {
    if (hive_ != nullptr) hivex_close(hive_);
}

bool HiveFile::Open(const std::string& hostPath, int* error) {
    int ignored = 0;
    int& cause = error != nullptr ? *error : ignored;
    cause = 0;
    // A named pipe or a device would block hivex's read: only regular files.
    struct stat st;
    if (stat(hostPath.c_str(), &st) != 0) {
        cause = errno;
        return false;
    }
    if (!S_ISREG(st.st_mode)) {
        cause = S_ISDIR(st.st_mode) ? EISDIR : ENODEV;
        return false;
    }
    if (st.st_size > kMaxHiveBytes) {
        cause = EINVAL;
        return false;
    }
    errno = 0;
    hive_ = hivex_open(hostPath.c_str(), 0);
    // hivex gives its own errno for a damaged file (ENOTSUP, EFAULT, ...).
    if (hive_ == nullptr) cause = errno == EACCES || errno == EPERM || errno == ENOMEM ? errno : EINVAL;
    return hive_ != nullptr;
}

size_t HiveFile::Node(const std::u16string& path) const {
    if (hive_ == nullptr) return 0;
    hive_node_h node = hivex_root(hive_);
    for (size_t start = 0; node != 0 && start < path.size();) {
        size_t end = path.find(u'\\', start);
        if (end == std::u16string::npos) end = path.size();
        const std::u16string part = path.substr(start, end - start);
        start = end + 1;
        if (part.empty()) continue;
        std::unique_ptr<hive_node_h, FreeDeleter> children(hivex_node_children(hive_, node));
        node = 0;
        for (const hive_node_h* child = children.get(); child != nullptr && *child != 0; ++child) {
            std::unique_ptr<char, FreeDeleter> name(hivex_node_name(hive_, *child));
            if (NameIs(name.get(), part)) {
                node = *child;
                break;
            }
        }
    }
    return node;
}

bool HiveFile::HasKey(const std::u16string& path) const { return Node(path) != 0; }

bool HiveFile::Find(const std::u16string& path, const std::u16string& name, RegistryFile::Value* out) const {
    const hive_node_h node = Node(path);
    if (node == 0) return false;
    std::unique_ptr<hive_value_h, FreeDeleter> values(hivex_node_values(hive_, node));
    for (const hive_value_h* value = values.get(); value != nullptr && *value != 0; ++value) {
        std::unique_ptr<char, FreeDeleter> key(hivex_value_key(hive_, *value));
        if (!NameIs(key.get(), name)) continue;
        hive_type stored;
        size_t length = 0;
        std::unique_ptr<char, FreeDeleter> data(hivex_value_value(hive_, *value, &stored, &length));
        if (data == nullptr) return false;
        // A damaged hive holds any number there, which is no hive_type.
        std::underlying_type_t<hive_type> type;
        std::memcpy(&type, &stored, sizeof type);
        out->name = name;
        out->text.clear();
        out->bytes.assign(data.get(), length);
        out->isText = type == hive_t_REG_SZ || type == hive_t_REG_EXPAND_SZ || type == hive_t_REG_MULTI_SZ;
        if (out->isText) {
            for (size_t k = 0; k + 1 < length; k += 2)
                out->text.push_back(static_cast<char16_t>(static_cast<unsigned char>(out->bytes[k]) |
                                                          (static_cast<unsigned char>(out->bytes[k + 1]) << 8)));
            if (!out->text.empty() && out->text.back() == 0) out->text.pop_back();
            out->bytes.clear();
        }
        return true;
    }
    return false;
}

}  // namespace posix
}  // namespace qvp
