// FuzzCheck.h - what the harnesses share: the input as text, a check that
// stops the run, a strict UTF-8 reading, and a scratch path of the run.
#ifndef QV_FUZZ_FUZZCHECK_H
#define QV_FUZZ_FUZZCHECK_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

namespace fuzzcheck {

inline void Check(bool ok) {
    if (!ok) std::abort();
}

inline std::string Text(const uint8_t* data, size_t size) { return std::string(reinterpret_cast<const char*>(data), size); }

// The UTF-16 units of valid UTF-8 (no overlong forms, nothing past
// U+10FFFF); false for any other text.
inline bool Utf16Units(const std::string& s, size_t* units) {
    *units = 0;
    for (size_t i = 0; i < s.size();) {
        const unsigned char c = static_cast<unsigned char>(s[i]);
        const size_t n = c < 0x80 ? 1 : c >= 0xC2 && c < 0xE0 ? 2 : c >= 0xE0 && c < 0xF0 ? 3 : c >= 0xF0 && c < 0xF5 ? 4 : 0;
        if (n == 0 || i + n > s.size()) return false;
        for (size_t k = 1; k < n; ++k) {
            if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80) return false;
        }
        const unsigned char second = n > 1 ? static_cast<unsigned char>(s[i + 1]) : 0;
        if ((c == 0xE0 && second < 0xA0) || (c == 0xF0 && second < 0x90) || (c == 0xF4 && second > 0x8F)) return false;
        *units += n == 4 ? 2 : 1;
        i += n;
    }
    return true;
}

// A path of its own for this run below dir (the system's temporary folder
// by default), removed with everything below it when the run ends.
inline std::string ScratchPath(const std::string& name, std::filesystem::path dir = {}) {
    static std::string path;
    if (dir.empty()) dir = std::filesystem::temp_directory_path();
    path = (dir / (name + "." + std::to_string(std::random_device{}()))).string();
    std::atexit([] { std::filesystem::remove_all(path); });
    return path;
}

}  // namespace fuzzcheck

#endif  // QV_FUZZ_FUZZCHECK_H
