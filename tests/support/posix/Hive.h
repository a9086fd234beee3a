// Hive.h - registry hive files built in code, for the copied-drive machine.
//
// hivex writes keys and values into a hive but cannot make one from nothing,
// so the file starts as the smallest hive Windows accepts (8 KB: a base
// block and one bin with the root key, its security cell and free space).
#ifndef QV_TESTS_SUPPORT_POSIX_HIVE_H
#define QV_TESTS_SUPPORT_POSIX_HIVE_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace qvt {

struct HiveValue {
    std::string name;  // UTF-8; empty for the default value
    uint32_t type;     // REG_SZ 1, REG_EXPAND_SZ 2, REG_BINARY 3, REG_DWORD 4, ...
    std::string data;  // as stored
};
// Key paths (UTF-8, backslashes, relative to the root) with their values.
using HiveKeys = std::vector<std::pair<std::string, std::vector<HiveValue>>>;

// A REG_SZ value's data: UTF-16LE with its terminator.
std::string RegSz(const std::string& utf8);

// A little-endian number of width bytes written at, and read from, a byte offset.
void Put(std::string& bytes, size_t at, uint32_t value, int width = 4);
uint32_t Get(const std::string& bytes, size_t at);
// The XOR of the base block's first 127 words, at 508.
void FixHiveChecksum(std::string& hive);
// The empty hive's bytes.
std::string EmptyHive();
// Writes the hive with the keys; throws on failure.
void WriteHive(const std::string& hostPath, const HiveKeys& keys);

}  // namespace qvt

#endif  // QV_TESTS_SUPPORT_POSIX_HIVE_H
