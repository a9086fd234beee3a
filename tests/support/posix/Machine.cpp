// Machine.cpp - the machine of a test where the library reads a Wine prefix.
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
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace qvt {
namespace machine {
namespace {

std::u16string Utf16(const std::string& utf8) {
    if (utf8.empty()) return std::u16string();
    const int n = qvp::MultiByteToWideChar(qvp::kCpUtf8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
    std::u16string out(static_cast<size_t>(n), u'\0');
    if (n > 0) qvp::MultiByteToWideChar(qvp::kCpUtf8, 0, utf8.data(), static_cast<int>(utf8.size()), &out[0], n);
    return out;
}

// Wine's dump_strW: the text between delimiters in a registry file.
std::string Escape(const std::string& utf8, char delim) {
    static const char kCEscapes[32] = {'.', '.', '.', '.', '.', '.', '.', 'a', 'b', 't', 'n',
                                       'v', 'f', 'r', '.', '.', '.', '.', '.', '.', '.', '.',
                                       '.', '.', '.', '.', '.', 'e', '.', '.', '.', '.'};
    const std::u16string w = Utf16(utf8);
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

bool StartsWithSoftware(const std::string& key) {
    static const char kSoftware[] = "software\\";
    if (key.size() < sizeof kSoftware - 1) return false;
    for (size_t i = 0; i + 1 < sizeof kSoftware; ++i)
        if (std::tolower(static_cast<unsigned char>(key[i])) != kSoftware[i]) return false;
    return true;
}

}  // namespace

void Open(const std::string& root, bool* hadPrefix, std::string* oldPrefix) {
    fs::create_directory(fs::path(root) / "drive_c");
    fs::create_directory(fs::path(root) / "dosdevices");
    fs::create_directory_symlink("../drive_c", fs::path(root) / "dosdevices" / "c:");
    fs::create_directory_symlink("/", fs::path(root) / "dosdevices" / "z:");
    const char* old = std::getenv("WINEPREFIX");
    *hadPrefix = old != nullptr;
    if (old) *oldPrefix = old;
    SetEnvironment("WINEPREFIX", root.c_str());
}

void Close(const std::string&, bool hadPrefix, const std::string& oldPrefix) {
    SetEnvironment("WINEPREFIX", hadPrefix ? oldPrefix.c_str() : nullptr);
}

bool WriteRawRegistry(const std::string& root, bool hklm, const std::string& content) {
    const fs::path path = fs::path(root) / (hklm ? "system.reg" : "user.reg");
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!out) throw std::runtime_error("cannot write " + path.string());
    return true;
}

void WriteRegistry(const std::string& root, bool hklm, bool win64, const WinePrefix::Hive& hive) {
    std::string text = "WINE REGISTRY Version 2\n";
    text += hklm ? ";; All keys relative to \\\\Machine\n"
                 : ";; All keys relative to \\\\User\\\\S-1-5-21-0-0-0-1000\n";
    text += win64 ? "\n#arch=win64\n" : "\n#arch=win32\n";
    for (const std::string& key : hive.order) {
        std::string path = key;
        if (hklm && win64 && StartsWithSoftware(key))
            path = key.substr(0, 9) + "Wow6432Node\\" + key.substr(9);
        text += "\n[" + Escape(path, ']') + "] 1700000000\n#time=1d9f0c2a3b4c5d6\n";
        for (const auto& value : hive.keys.at(key)) {
            text += value.first.empty() ? std::string("@") : "\"" + Escape(value.first, '"') + "\"";
            text += "=\"" + Escape(value.second, '"') + "\"\n";
        }
    }
    WriteRawRegistry(root, hklm, text);
}

std::string HostPath(const std::string& root, const std::string& winPathUtf8) {
    std::string rest = winPathUtf8;
    std::string host;
    bool relative = false;
    if (rest.size() >= 2 && rest[1] == ':' && std::isalpha(static_cast<unsigned char>(rest[0]))) {
        const char drive = static_cast<char>(std::tolower(static_cast<unsigned char>(rest[0])));
        if (drive == 'c')
            host = root + "/drive_c";
        else if (drive != 'z')
            host = root + "/dosdevices/" + drive + ":";
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


std::string WindowsPath(const std::string& hostPathUtf8) {
    std::string out = "Z:";
    for (char c : hostPathUtf8) out += c == '/' ? '\\' : c;
    return out;
}

void SetEnvironment(const char* name, const char* value) {
    if (value != nullptr)
        ::setenv(name, value, 1);
    else
        ::unsetenv(name);
}

const char* TempVariable() { return "TMPDIR"; }

}  // namespace machine
}  // namespace qvt
