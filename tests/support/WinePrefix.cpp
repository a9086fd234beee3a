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

// Wine's dump_strW: the text between delimiters in a registry file.
std::string Escape(const std::string& utf8, char delim) {
    static const char kCEscapes[32] = {'.', '.', '.', '.', '.', '.', '.', 'a', 'b', 't', 'n',
                                       'v', 'f', 'r', '.', '.', '.', '.', '.', '.', '.', '.',
                                       '.', '.', '.', '.', '.', 'e', '.', '.', '.', '.'};
    const std::u16string w = Wide(qvp::kCpUtf8, utf8);
    std::string out;
    char buf[16];
    for (size_t i = 0; i < w.size(); ++i) {
        const char16_t c = w[i];
        const bool nextIsHex = i + 1 < w.size() && w[i + 1] < 128 && std::isxdigit(w[i + 1]);
        if (c > 127) {
            std::snprintf(buf, sizeof buf, nextIsHex ? "\\x%04x" : "\\x%x", static_cast<unsigned>(c));
            out += buf;
        } else if (c < 32) {
            const bool nextIsOctal = i + 1 < w.size() && w[i + 1] >= '0' && w[i + 1] <= '7';
            if (kCEscapes[c] != '.')
                std::snprintf(buf, sizeof buf, "\\%c", kCEscapes[c]);
            else
                std::snprintf(buf, sizeof buf, nextIsOctal ? "\\%03o" : "\\%o", static_cast<unsigned>(c));
            out += buf;
        } else {
            if (c == '\\' || c == static_cast<char16_t>(delim)) out += '\\';
            out += static_cast<char>(c);
        }
    }
    return out;
}

void WriteBytes(const fs::path& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw std::runtime_error("cannot write " + path.string());
}

bool StartsWithSoftware(const std::string& key) {
    static const char kSoftware[] = "software\\";
    if (key.size() < sizeof kSoftware - 1) return false;
    for (size_t i = 0; i + 1 < sizeof kSoftware; ++i)
        if (std::tolower(static_cast<unsigned char>(key[i])) != kSoftware[i]) return false;
    return true;
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
    std::ifstream in(hostPath, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
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
    root_ = root.string();
    fs::create_directory(root / "drive_c");
    fs::create_directory(root / "dosdevices");
    fs::create_directory_symlink("../drive_c", root / "dosdevices" / "c:");
    fs::create_directory_symlink("/", root / "dosdevices" / "z:");
    WriteRegistry(true);
    WriteRegistry(false);
    const char* old = std::getenv("WINEPREFIX");
    hadPrefix_ = old != nullptr;
    if (old) oldPrefix_ = old;
    ::setenv("WINEPREFIX", root_.c_str(), 1);
}

WinePrefix::~WinePrefix() {
    if (hadPrefix_)
        ::setenv("WINEPREFIX", oldPrefix_.c_str(), 1);
    else
        ::unsetenv("WINEPREFIX");
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

void WinePrefix::CopyTo(const std::string& hostDir) const {
    fs::remove_all(hostDir);
    fs::create_directories(fs::path(hostDir).parent_path());
    fs::copy(root_, hostDir, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
}

void WinePrefix::Set(Hive& hive, const std::string& key, const std::string& name,
                     const std::string& value) {
    auto found = hive.keys.find(key);
    if (found == hive.keys.end()) {
        hive.order.push_back(key);
        found = hive.keys.emplace(key, std::vector<std::pair<std::string, std::string>>()).first;
    }
    for (auto& entry : found->second) {
        if (entry.first == name) {
            entry.second = value;
            return;
        }
    }
    found->second.emplace_back(name, value);
}

void WinePrefix::SetHklm(const std::string& key, const std::string& name, const std::string& utf8Value) {
    Set(hklm_, key, name, utf8Value);
    WriteRegistry(true);
}

void WinePrefix::SetHkcu(const std::string& key, const std::string& name, const std::string& utf8Value) {
    Set(hkcu_, key, name, utf8Value);
    WriteRegistry(false);
}

void WinePrefix::SetWin64(bool win64) {
    win64_ = win64;
    WriteRegistry(true);
    WriteRegistry(false);
}

void WinePrefix::SetRawRegistry(bool hklm, const std::string& content) {
    WriteBytes(fs::path(root_) / (hklm ? "system.reg" : "user.reg"), content);
}

void WinePrefix::WriteRegistry(bool hklm) {
    const Hive& hive = hklm ? hklm_ : hkcu_;
    std::string text = "WINE REGISTRY Version 2\n";
    text += hklm ? ";; All keys relative to \\\\Machine\n"
                 : ";; All keys relative to \\\\User\\\\S-1-5-21-0-0-0-1000\n";
    text += win64_ ? "\n#arch=win64\n" : "\n#arch=win32\n";
    for (const std::string& key : hive.order) {
        std::string path = key;
        if (hklm && win64_ && StartsWithSoftware(key))
            path = key.substr(0, 9) + "Wow6432Node\\" + key.substr(9);
        text += "\n[" + Escape(path, ']') + "] 1700000000\n#time=1d9f0c2a3b4c5d6\n";
        for (const auto& value : hive.keys.at(key)) {
            text += value.first.empty() ? std::string("@") : "\"" + Escape(value.first, '"') + "\"";
            text += "=\"" + Escape(value.second, '"') + "\"\n";
        }
    }
    WriteBytes(fs::path(root_) / (hklm ? "system.reg" : "user.reg"), text);
}

std::string WinePrefix::HostPath(const std::string& winPathUtf8) const {
    std::string rest = winPathUtf8;
    std::string host;
    bool relative = false;
    if (rest.size() >= 2 && rest[1] == ':' && std::isalpha(static_cast<unsigned char>(rest[0]))) {
        const char drive = static_cast<char>(std::tolower(static_cast<unsigned char>(rest[0])));
        if (drive == 'c')
            host = root_ + "/drive_c";
        else if (drive != 'z')
            host = root_ + "/dosdevices/" + drive + ":";
        rest = rest.substr(2);
    } else if (rest.empty() || (rest[0] != '\\' && rest[0] != '/')) {
        relative = true;
    }
    std::string component;
    for (size_t i = 0; i <= rest.size(); ++i) {
        if (i == rest.size() || rest[i] == '\\' || rest[i] == '/') {
            if (!component.empty()) host += (relative && host.empty() ? "" : "/") + component;
            component.clear();
        } else {
            component += rest[i];
        }
    }
    if (host.empty()) return relative ? "." : "/";
    return host;
}

void WinePrefix::WriteFile(const std::string& winPathUtf8, const std::string& bytes) {
    const fs::path path = HostPath(winPathUtf8);
    if (path.has_parent_path()) fs::create_directories(path.parent_path());
    WriteBytes(path, bytes);
}

void WinePrefix::MakeDir(const std::string& winPathUtf8) { fs::create_directories(HostPath(winPathUtf8)); }

void WinePrefix::Remove(const std::string& winPathUtf8) {
    std::error_code ignored;
    fs::remove_all(HostPath(winPathUtf8), ignored);
}

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
