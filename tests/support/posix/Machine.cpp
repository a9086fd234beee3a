// Machine.cpp - the machine of a test where the library reads a Wine prefix.
// Registry files as Wine's server writes them: a version line, "#arch=", a
// block per key; strings quoted, characters above 0x7F as \x escapes (four
// digits when a hex digit follows), controls as C or octal escapes.
#include "support/WinePrefix.h"

#include "platform/posix/DirCache.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>

namespace fs = std::filesystem;

namespace qvt {
namespace machine {
namespace {

// Wine's dump_strW: the text between delimiters in a registry file.
std::string Escape(const std::string& utf8, char delim) {
    static const char kCEscapes[] = ".......abtnvfr.............e....";  // '.': octal
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

void WriteRegistry(const std::string& root, bool hklm, WinePrefix::Arch arch, const WinePrefix::Hive& hive) {
    std::string text = "WINE REGISTRY Version 2\n";
    text += hklm ? ";; All keys relative to \\\\Machine\n"
                 : ";; All keys relative to \\\\User\\\\S-1-5-21-0-0-0-1000\n";
    text += arch == WinePrefix::Arch::Win32 ? "\n#arch=win32\n" : "\n#arch=win64\n";
    for (const std::string& key : hive.order) {
        std::string path = key;
        if (hklm && arch == WinePrefix::Arch::Wow64 && ::strncasecmp(key.c_str(), "software\\", 9) == 0)
            path = key.substr(0, 9) + "Wow6432Node\\" + key.substr(9);
        text += "\n[" + Escape(path, ']') + "] 1700000000\n#time=1d9f0c2a3b4c5d6\n";
        for (const auto& value : hive.keys.at(key)) {
            text += value.first.empty() ? std::string("@") : "\"" + Escape(value.first, '"') + "\"";
            text += "=\"" + Escape(value.second, '"') + "\"\n";
        }
    }
    WriteHostFile(root + (hklm ? "/system.reg" : "/user.reg"), text);
}

std::string HostPath(const std::string& root, const std::string& winPathUtf8) {
    std::string rest = winPathUtf8, host;
    const bool drive = rest.size() >= 2 && rest[1] == ':' && std::isalpha(static_cast<unsigned char>(rest[0]));
    const bool relative = !drive && (rest.empty() || (rest[0] != '\\' && rest[0] != '/'));
    if (drive) {
        const char letter = static_cast<char>(std::tolower(static_cast<unsigned char>(rest[0])));
        host = letter == 'c' ? root + "/drive_c" : letter == 'z' ? "" : root + "/dosdevices/" + letter + ":";
        rest = rest.substr(2);
    }
    // Separators either way, empty components dropped.
    std::replace(rest.begin(), rest.end(), '\\', '/');
    for (size_t start = 0, end = 0; start < rest.size(); start = end + 1) {
        end = std::min(rest.find('/', start), rest.size());
        if (end > start) host += (relative && host.empty() ? "" : "/") + rest.substr(start, end - start);
    }
    return host.empty() ? (relative ? "." : "/") : host;
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

void ForgetFolders() { qvp::posix::DirCache::Instance().Clear(); }

}  // namespace machine
}  // namespace qvt
