// RegistryQuery.h - one registry string read the way the readers read it.
#ifndef QV_TESTS_PLATFORM_REGISTRYQUERY_H
#define QV_TESTS_PLATFORM_REGISTRYQUERY_H

#include "platform/platform.h"

#include <string>

namespace qvt {

// The value with its NUL, "<no key>" or "<no value>".
inline std::string Query(qvp::Hive hive, const char* key, const char* value, uint32_t size = 520) {
    qvp::RegKey* handle = nullptr;
    if (!qvp::RegOpen(hive, key, &handle)) return "<no key>";
    std::string buffer(size, '\x7f');
    uint32_t bytes = size;
    const bool got = qvp::RegQueryString(handle, value, &buffer[0], &bytes);
    qvp::RegCloseKey(handle);
    return got ? buffer.substr(0, bytes) : "<no value>";
}

}  // namespace qvt

#endif  // QV_TESTS_PLATFORM_REGISTRYQUERY_H
