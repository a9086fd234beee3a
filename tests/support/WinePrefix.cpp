// WinePrefix.cpp - a throw-away Wine prefix for tests, and .lnk bytes.
//
// Registry files are written the way Wine's server writes them: a version
// line, "#arch=", then one block per key with its values, names and strings
// in double quotes, a backslash and the delimiter escaped, characters above
// 0x7F as \x escapes (four digits when a hex digit follows), control
// characters as C or octal escapes.
#include "support/WinePrefix.h"

#include "platform/platform.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

namespace fs = std::filesystem;

namespace qvt {
namespace {

std::u16string Wide(uint32_t codePage, const std::string& bytes) {
    if (bytes.empty()) return std::u16string();
    const int n = qvp::MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()),
                                           nullptr, 0);
    std::u16string out(static_cast<size_t>(n), u'\0');
    if (n > 0)
        qvp::MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()), &out[0], n);
    return out;
}

std::string Narrow(uint32_t codePage, const std::u16string& wide) {
    if (wide.empty()) return std::string();
    const int n = qvp::WideCharToMultiByte(codePage, wide.data(), static_cast<int>(wide.size()),
                                           nullptr, 0);
    std::string out(static_cast<size_t>(n), '\0');
    if (n > 0)
        qvp::WideCharToMultiByte(codePage, wide.data(), static_cast<int>(wide.size()), &out[0], n);
    return out;
}

void WriteBytes(const fs::path& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw std::runtime_error("cannot write " + path.string());
}

void PutU16(std::string& out, unsigned v) {
    out += static_cast<char>(v & 0xFF);
    out += static_cast<char>((v >> 8) & 0xFF);
}
void PutU32(std::string& out, uint32_t v) {
    PutU16(out, v & 0xFFFF);
    PutU16(out, v >> 16);
}

// One string field of a shortcut: a u16 count and the characters.
void PutLinkString(std::string& out, const std::string& utf8, bool unicode, bool wineNul) {
    if (unicode) {
        std::u16string w = Wide(qvp::kCpUtf8, utf8);
        if (wineNul) w.push_back(u'\0');
        PutU16(out, static_cast<unsigned>(w.size()));
        for (char16_t c : w) PutU16(out, c);
    } else {
        const std::string a = Cp932(utf8);
        PutU16(out, static_cast<unsigned>(a.size()));
        out += a;
    }
}

}  // namespace

std::string Cp932(const std::string& utf8) { return Narrow(qvp::kCp932, Wide(qvp::kCpUtf8, utf8)); }

std::string Utf8(const std::string& cp932) { return Narrow(qvp::kCpUtf8, Wide(qvp::kCp932, cp932)); }

std::string Utf8(const std::u16string& text) { return Narrow(qvp::kCpUtf8, text); }

std::vector<std::string> ReadTraceLog(const std::string& hostPath) {
    const std::string bytes = ReadHostFile(hostPath);
    std::u16string text;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                             (static_cast<unsigned char>(bytes[i + 1]) << 8)));
    }
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        size_t end = text.find(u"\r\n", start);
        if (end == std::u16string::npos) end = text.size();
        std::string line = Utf8(text.substr(start, end - start));
        // "[Q5V4ALM],4,2024/01/02 03:04:05.678,QvIAPI(120),..." -> ",T," and "(L)"
        const size_t c1 = line.find(','), c2 = line.find(',', c1 + 1), c3 = line.find(',', c2 + 1);
        const size_t open = line.find('(', c3), close = line.find(')', open);
        if (c3 != std::string::npos && open != std::string::npos && close != std::string::npos) {
            line = line.substr(0, c2 + 1) + "T" + line.substr(c3, open - c3 + 1) + "L" + line.substr(close);
        }
        lines.push_back(line);
        start = end + 2;
    }
    return lines;
}

WinePrefix::WinePrefix() {
    std::random_device device;
    std::mt19937_64 random(device());
    const fs::path base = fs::temp_directory_path();
    fs::path root;
    for (int attempt = 0;; ++attempt) {
        char name[40];
        std::snprintf(name, sizeof name, "qvt-prefix-%016llx",
                      static_cast<unsigned long long>(random()));
        root = base / name;
        if (fs::create_directory(root)) break;
        if (attempt > 100) throw std::runtime_error("cannot create a temporary prefix");
    }
    root_ = root.u8string();
    machine::Open(root_, &hadPrefix_, &oldPrefix_);
    machine::WriteRegistry(root_, true, win64_, hklm_);
    machine::WriteRegistry(root_, false, win64_, hkcu_);
}

WinePrefix::~WinePrefix() {
    machine::Close(root_, hadPrefix_, oldPrefix_);
    std::error_code ignored;
    for (auto it = created_.rbegin(); it != created_.rend(); ++it) fs::remove_all(*it, ignored);
    fs::remove_all(HostFile(root_), ignored);
}

void WinePrefix::CopyTo(const std::string& hostDir) const {
    fs::remove_all(HostFile(hostDir));
    fs::create_directories(HostFile(hostDir).parent_path());
    fs::copy(HostFile(root_), HostFile(hostDir), fs::copy_options::recursive | fs::copy_options::copy_symlinks);
}

void WinePrefix::Set(bool hklm, const std::string& key, const std::string& name, const std::string& value) {
    Hive& hive = hklm ? hklm_ : hkcu_;
    auto found = hive.keys.find(key);
    if (found == hive.keys.end()) {
        hive.order.push_back(key);
        found = hive.keys.emplace(key, std::vector<std::pair<std::string, std::string>>()).first;
    }
    bool replaced = false;
    for (auto& entry : found->second) {
        if (entry.first == name) {
            entry.second = value;
            replaced = true;
            break;
        }
    }
    if (!replaced) found->second.emplace_back(name, value);
    machine::WriteRegistry(root_, hklm, win64_, hive);
}

void WinePrefix::SetHklm(const std::string& key, const std::string& name, const std::string& utf8Value) {
    Set(true, key, name, utf8Value);
}

void WinePrefix::SetHkcu(const std::string& key, const std::string& name, const std::string& utf8Value) {
    Set(false, key, name, utf8Value);
}

void WinePrefix::SetWin64(bool win64) {
    win64_ = win64;
    machine::WriteRegistry(root_, true, win64_, hklm_);
    machine::WriteRegistry(root_, false, win64_, hkcu_);
}

bool WinePrefix::SetRawRegistry(bool hklm, const std::string& content) {
    return machine::WriteRawRegistry(root_, hklm, content);
}

std::string WinePrefix::HostPath(const std::string& winPathUtf8) const { return machine::HostPath(root_, winPathUtf8); }

void WinePrefix::NoteCreated(const fs::path& path) {
    // The highest folder on the way that does not exist yet goes at the end.
    fs::path top = path;
    for (fs::path up = path.parent_path(); !up.empty() && up != up.parent_path() && !fs::exists(up);
         up = up.parent_path())
        top = up;
    if (!fs::exists(top)) created_.push_back(top);
}

void WinePrefix::WriteFile(const std::string& winPathUtf8, const std::string& bytes) {
    const fs::path path = HostFile(HostPath(winPathUtf8));
    NoteCreated(path);
    if (path.has_parent_path()) fs::create_directories(path.parent_path());
    WriteBytes(path, bytes);
}

void WinePrefix::MakeDir(const std::string& winPathUtf8) {
    const fs::path path = HostFile(HostPath(winPathUtf8));
    NoteCreated(path);
    fs::create_directories(path);
}

void WinePrefix::Remove(const std::string& winPathUtf8) {
    std::error_code ignored;
    fs::remove_all(HostFile(HostPath(winPathUtf8)), ignored);
}

fs::path HostFile(const std::string& hostPathUtf8) { return fs::u8path(hostPathUtf8); }

std::string ReadHostFile(const std::string& hostPathUtf8) {
    std::ifstream in(HostFile(hostPathUtf8), std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

std::string WindowsPath(const std::string& hostPathUtf8) { return machine::WindowsPath(hostPathUtf8); }

ScopedTempDir::ScopedTempDir(const std::string& hostDirUtf8) {
    const char* variable = machine::TempVariable();
    if (const char* old = std::getenv(variable)) {
        had_ = true;
        old_ = old;
    }
    machine::SetEnvironment(variable, hostDirUtf8.c_str());
}

ScopedTempDir::~ScopedTempDir() { machine::SetEnvironment(machine::TempVariable(), had_ ? old_.c_str() : nullptr); }

std::string MakeShortcut(const std::string& argumentsUtf8, bool unicode, bool wineNul) {
    const uint32_t kHasRelativePath = 0x8, kHasWorkingDir = 0x10, kHasArguments = 0x20,
                   kIsUnicode = 0x80;
    std::string out;
    PutU32(out, 0x4C);
    static const unsigned char kClsid[16] = {0x01, 0x14, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                                             0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};
    out.append(reinterpret_cast<const char*>(kClsid), sizeof kClsid);
    PutU32(out, kHasRelativePath | kHasWorkingDir | kHasArguments | (unicode ? kIsUnicode : 0));
    PutU32(out, 0x20);  // FileAttributes: archive
    out.append(24, '\0');  // creation, access and write times
    PutU32(out, 0x1000);   // FileSize
    PutU32(out, 0);        // IconIndex
    PutU32(out, 1);        // ShowCommand: normal
    PutU16(out, 0);        // HotKey
    out.append(10, '\0');  // reserved
    PutLinkString(out, "..\\..\\Program Files\\AL-Mail\\AlMail.exe", unicode, wineNul);
    PutLinkString(out, "C:\\Program Files\\AL-Mail", unicode, wineNul);
    PutLinkString(out, argumentsUtf8, unicode, wineNul);
    PutU32(out, 0);  // no extra data blocks
    return out;
}

}  // namespace qvt
