// WinePrefix.cpp - the machine a test fills, texts in the code pages the
// client writes, and .lnk bytes. What differs by platform is in Machine.cpp.
#include "support/WinePrefix.h"

#include "platform/platform.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <random>
#include <stdexcept>

namespace fs = std::filesystem;

namespace qvt {
namespace {

std::u16string Wide(uint32_t codePage, const std::string& bytes) {
    const int size = static_cast<int>(bytes.size());
    const int n = size == 0 ? 0 : qvp::MultiByteToWideChar(codePage, 0, bytes.data(), size, nullptr, 0);
    std::u16string out(static_cast<size_t>(std::max(n, 0)), u'\0');
    if (n > 0) qvp::MultiByteToWideChar(codePage, 0, bytes.data(), size, &out[0], n);
    return out;
}

std::string Narrow(uint32_t codePage, const std::u16string& wide) {
    const int size = static_cast<int>(wide.size());
    const int n = size == 0 ? 0 : qvp::WideCharToMultiByte(codePage, wide.data(), size, nullptr, 0);
    std::string out(static_cast<size_t>(std::max(n, 0)), '\0');
    if (n > 0) qvp::WideCharToMultiByte(codePage, wide.data(), size, &out[0], n);
    return out;
}

// A little-endian number of the given bytes.
void Put(std::string& out, uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) out += static_cast<char>((v >> (8 * i)) & 0xFF);
}

// One string field of a shortcut: a u16 count and the characters.
void PutLinkString(std::string& out, const std::string& utf8, bool unicode, bool wineNul) {
    if (unicode) {
        std::u16string w = Utf16(utf8);
        if (wineNul) w.push_back(u'\0');
        Put(out, static_cast<uint32_t>(w.size()), 2);
        for (char16_t c : w) Put(out, c, 2);
    } else {
        const std::string a = Cp932(utf8);
        Put(out, static_cast<uint32_t>(a.size()), 2);
        out += a;
    }
}

}  // namespace

std::string Cp932(const std::string& utf8) { return Narrow(qvp::kCp932, Utf16(utf8)); }

std::string Utf8(const std::string& cp932) { return Narrow(qvp::kCpUtf8, Wide(qvp::kCp932, cp932)); }

std::string Utf8(const std::u16string& text) { return Narrow(qvp::kCpUtf8, text); }

std::u16string Utf16(const std::string& utf8) { return Wide(qvp::kCpUtf8, utf8); }

std::vector<std::string> ReadTraceLog(const std::string& hostPath) {
    const std::string bytes = ReadHostFile(hostPath);
    std::u16string text;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                             (static_cast<unsigned char>(bytes[i + 1]) << 8)));
    }
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        size_t end = std::min(text.find(u"\r\n", start), text.size());
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
    std::mt19937_64 random(std::random_device{}());
    for (int attempt = 0; root_.empty(); ++attempt) {
        char name[40];
        std::snprintf(name, sizeof name, "qvt-prefix-%016llx", static_cast<unsigned long long>(random()));
        const fs::path root = fs::temp_directory_path() / name;
        if (fs::create_directory(root)) root_ = root.u8string();
        else if (attempt > 100) throw std::runtime_error("cannot create a temporary prefix");
    }
    machine::Open(root_, &hadPrefix_, &oldPrefix_);
    SetArch(Arch::Win32);
}

WinePrefix::~WinePrefix() {
    machine::Close(root_, hadPrefix_, oldPrefix_);
    std::error_code ignored;
    for (auto it = created_.rbegin(); it != created_.rend(); ++it) fs::remove_all(*it, ignored);
    fs::remove_all(HostFile(root_), ignored);
}

void WinePrefix::CopyTo(const std::string& hostDir) const {
    const fs::path to = fs::absolute(HostFile(hostDir));  // "store" as well as "/tmp/store"
    fs::remove_all(to);
    fs::create_directories(to.parent_path());
    fs::copy(HostFile(root_), to, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
}

std::vector<std::string> WinePrefix::StoreFiles() const {
    std::set<std::string> files;
    std::vector<fs::path> tops(created_);
    tops.push_back(HostFile(root_));
    for (const fs::path& top : tops) {
        std::error_code ec;
        if (fs::is_regular_file(fs::symlink_status(top, ec))) files.insert(top.u8string());
        if (!fs::is_directory(fs::symlink_status(top, ec))) continue;
        for (fs::recursive_directory_iterator it(top, ec), end; !ec && it != end; it.increment(ec))
            if (it->is_regular_file(ec) && !it->is_symlink(ec)) files.insert(it->path().u8string());
    }
    return std::vector<std::string>(files.begin(), files.end());
}

void WinePrefix::Set(bool hklm, const std::string& key, const std::string& name, const std::string& value) {
    Hive& hive = hklm ? hklm_ : hkcu_;
    if (hive.keys.count(key) == 0) hive.order.push_back(key);
    auto& values = hive.keys[key];
    auto found = std::find_if(values.begin(), values.end(), [&](const auto& v) { return v.first == name; });
    if (found == values.end()) found = values.insert(found, {name, value});
    found->second = value;
    machine::WriteRegistry(root_, hklm, arch_, hive);
}

void WinePrefix::SetHklm(const std::string& key, const std::string& name, const std::string& utf8Value) {
    Set(true, key, name, utf8Value);
}

void WinePrefix::SetHkcu(const std::string& key, const std::string& name, const std::string& utf8Value) {
    Set(false, key, name, utf8Value);
}

void WinePrefix::SetArch(Arch arch) {
    arch_ = arch;
    machine::WriteRegistry(root_, true, arch_, hklm_);
    machine::WriteRegistry(root_, false, arch_, hkcu_);
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
    WriteHostFile(path.u8string(), bytes);
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

void WriteHostFile(const std::string& hostPathUtf8, const std::string& bytes) {
    std::ofstream out(HostFile(hostPathUtf8), std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw std::runtime_error("cannot write " + hostPathUtf8);
}

std::string WindowsPath(const std::string& hostPathUtf8) { return machine::WindowsPath(hostPathUtf8); }

ScopedEnv::ScopedEnv(const char* name, const std::string& value) : name_(name) {
    const char* old = std::getenv(name);
    had_ = old != nullptr;
    old_ = had_ ? old : "";
    machine::SetEnvironment(name, value.c_str());
}

ScopedEnv::~ScopedEnv() { machine::SetEnvironment(name_, had_ ? old_.c_str() : nullptr); }

std::string MakeShortcut(const std::string& argumentsUtf8, bool unicode, bool wineNul) {
    std::string out;
    Put(out, 0x4C, 4);  // header size, then the shell link CLSID
    out += std::string("\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 16);
    Put(out, 0x8 | 0x10 | 0x20 | (unicode ? 0x80 : 0), 4);  // a relative path, working dir, arguments; unicode
    Put(out, 0x20, 4);     // FileAttributes: archive
    out.append(24, '\0');  // creation, access and write times
    Put(out, 0x1000, 4);   // FileSize
    Put(out, 0, 4);        // IconIndex
    Put(out, 1, 4);        // ShowCommand: normal
    out.append(12, '\0');  // HotKey and reserved
    PutLinkString(out, "..\\..\\Program Files\\AL-Mail\\AlMail.exe", unicode, wineNul);
    PutLinkString(out, "C:\\Program Files\\AL-Mail", unicode, wineNul);
    PutLinkString(out, argumentsUtf8, unicode, wineNul);
    Put(out, 0, 4);  // no extra data blocks
    return out;
}

}  // namespace qvt
