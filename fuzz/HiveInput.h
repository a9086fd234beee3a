// HiveInput.h - what the hive harnesses read: random bytes rarely pass a
// hive's first checks, so besides a raw hive ("regf" first) an input can be
// a list of changes to a valid hive that holds the client's keys, three
// bytes each (an offset and a new byte). When the input's first byte is odd
// the base block's checksum is made right again, so that damage behind it
// is reached.
#ifndef QV_FUZZ_HIVEINPUT_H
#define QV_FUZZ_HIVEINPUT_H

#include "FuzzCheck.h"
#include "support/posix/Hive.h"

#include <cstdio>
#include <fstream>
#include <iterator>

namespace fuzzhive {

// The bytes of a hive that hivex writes with the keys, by way of a file
// at path that is removed again.
inline std::string BaseHive(const std::string& path, const qvt::HiveKeys& keys) {
    qvt::WriteHive(path, keys);
    std::ifstream in(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    std::remove(path.c_str());
    return bytes;
}

// The hive an input stands for.
inline std::string FromInput(const uint8_t* data, size_t size, const std::string& base) {
    std::string hive = fuzzcheck::Text(data, size);
    if (hive.compare(0, 4, "regf") == 0) return hive;
    hive = base;
    for (size_t i = 1; i + 2 < size; i += 3)
        hive[(data[i] | data[i + 1] << 8 | (i & 0x10) << 12) % hive.size()] = static_cast<char>(data[i + 2]);
    if (size > 0 && (data[0] & 1)) qvt::FixHiveChecksum(hive);
    return hive;
}

// Writes the hive to the file at path, where hivex reads it.
inline void Write(const std::string& path, const std::string& hive) {
    fuzzcheck::Check(static_cast<bool>(
        std::ofstream(path, std::ios::binary | std::ios::trunc).write(hive.data(), std::streamsize(hive.size()))));
}

}  // namespace fuzzhive

#endif  // QV_FUZZ_HIVEINPUT_H
