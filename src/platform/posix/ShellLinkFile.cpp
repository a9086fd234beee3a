// ShellLinkFile.cpp - the .lnk reader and the shell link calls on POSIX.
//
// Layout of a shell link file, all numbers little-endian:
//   0x00 u32 HeaderSize (0x4C)     0x04 CLSID 00021401-0000-0000-C000-000000000046
//   0x14 u32 LinkFlags             0x18..0x4C attributes, times, size, icon, show, hot key
//   then, each only when flagged: the IDList (u16 size, bytes), LinkInfo
//   (u32 size counting itself), and the strings name, relative path,
//   working directory, arguments, icon location: a u16 count of characters
//   and the characters, UTF-16LE when IsUnicode, else ANSI, no terminator.
// Wine writes each Unicode count with the terminating NUL included, so one
// trailing NUL is dropped.
#include "platform/posix/ShellLinkFile.h"

#include "platform/platform.h"
#include "platform/posix/HostPath.h"
#include "platform/posix/PosixText.h"

#include <cstring>
#include <utility>
#include <new>

namespace qvp {

struct ShellLink {
    posix::ShellLinkFile file;
};

namespace posix {
namespace {

constexpr size_t kHeaderSize = 0x4C;
constexpr uint32_t kHasLinkTargetIdList = 0x1;
constexpr uint32_t kHasLinkInfo = 0x2;
constexpr uint32_t kHasArguments = 0x20;
constexpr uint32_t kIsUnicode = 0x80;
constexpr size_t kMaxLinkBytes = 64u << 20;

const unsigned char kShellLinkClsid[16] = {0x01, 0x14, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                                           0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};

class Reader {
public:
    Reader(const char* data, size_t size) : p_(reinterpret_cast<const unsigned char*>(data)), size_(size) {}
    size_t Remaining() const { return size_ - pos_; }
    bool U16(uint32_t* v) {
        if (Remaining() < 2) return false;
        *v = p_[pos_] | (p_[pos_ + 1] << 8);
        pos_ += 2;
        return true;
    }
    bool U32(uint32_t* v) {
        if (Remaining() < 4) return false;
        *v = p_[pos_] | (p_[pos_ + 1] << 8) | (p_[pos_ + 2] << 16) | (static_cast<uint32_t>(p_[pos_ + 3]) << 24);
        pos_ += 4;
        return true;
    }
    bool Skip(size_t n) {
        if (Remaining() < n) return false;
        pos_ += n;
        return true;
    }
    const unsigned char* Here() const { return p_ + pos_; }

private:
    const unsigned char* p_;
    size_t size_;
    size_t pos_ = 0;
};

}  // namespace

bool ShellLinkFile::Parse(const char* data, size_t size) {
    arguments_.clear();
    if (data == nullptr || size < kHeaderSize) return false;
    Reader r(data, size);
    uint32_t headerSize = 0, flags = 0;
    r.U32(&headerSize);
    if (headerSize != kHeaderSize || std::memcmp(r.Here(), kShellLinkClsid, sizeof kShellLinkClsid) != 0)
        return false;
    r.Skip(sizeof kShellLinkClsid);
    r.U32(&flags);
    r.Skip(kHeaderSize - 0x18);

    if (flags & kHasLinkTargetIdList) {
        uint32_t idListSize = 0;
        if (!r.U16(&idListSize) || !r.Skip(idListSize)) return false;
    }
    if (flags & kHasLinkInfo) {
        uint32_t infoSize = 0;
        if (!r.U32(&infoSize) || infoSize < 4 || !r.Skip(infoSize - 4)) return false;
    }
    const bool unicode = (flags & kIsUnicode) != 0;
    std::string arguments;
    // Name, relative path, working directory, arguments, icon location.
    for (uint32_t bit = 0x4; bit <= 0x40; bit <<= 1) {
        if (!(flags & bit)) continue;
        uint32_t count = 0;
        if (!r.U16(&count)) return false;
        const size_t bytes = unicode ? count * 2u : count;
        const unsigned char* chars = r.Here();
        if (!r.Skip(bytes)) return false;
        if (bit != kHasArguments) continue;
        if (unicode) {
            std::u16string wide;
            wide.reserve(count);
            for (size_t i = 0; i < count; ++i)
                wide.push_back(static_cast<char16_t>(chars[2 * i] | (chars[2 * i + 1] << 8)));
            if (!wide.empty() && wide.back() == 0) wide.pop_back();
            arguments = Utf16ToCp932(wide.data(), wide.size());
        } else {
            arguments.assign(reinterpret_cast<const char*>(chars), count);
            if (!arguments.empty() && arguments.back() == 0) arguments.pop_back();
        }
    }
    // GetArguments hands out a C string: it ends at the first NUL.
    const size_t nul = arguments.find('\0');
    if (nul != std::string::npos) arguments.resize(nul);
    arguments_ = std::move(arguments);
    return true;
}

namespace {
// COM's count is per thread on Windows. The library is called from one
// thread at a time, so one count for the process does: a thread_local would
// be allocated by the C library at its first use, where a failed allocation
// aborts the whole process instead of failing the call.
int g_comInitialised = 0;
}  // namespace

}  // namespace posix

int32_t CoInitialize() {
    return posix::g_comInitialised++ == 0 ? kSOk : kSFalse;
}

void CoUninitialize() {
    if (posix::g_comInitialised > 0) --posix::g_comInitialised;
}

ShellLink* ShellLinkCreate() {
    // CoCreateInstance fails on a thread without COM (CO_E_NOTINITIALIZED).
    if (posix::g_comInitialised == 0) return nullptr;
    return new ShellLink;
}

bool ShellLinkLoad(ShellLink* link, const char* path) {
    if (link == nullptr) return false;
    // As the shell does, a load that fails keeps what the object held.
    std::string host, bytes;
    if (posix::MapPath(path, &host) != posix::kMapFound ||
        !posix::ReadWholeFile(host, posix::kMaxLinkBytes, &bytes))
        return false;
    posix::ShellLinkFile file;
    if (!file.Parse(bytes.data(), bytes.size())) return false;
    link->file = std::move(file);
    return true;
}

bool ShellLinkGetArguments(ShellLink* link, char* buffer, int size) {
    if (link == nullptr || buffer == nullptr || size <= 0) return false;
    const std::string& arguments = link->file.Arguments();
    const size_t n = arguments.size() < static_cast<size_t>(size) ? arguments.size() : static_cast<size_t>(size) - 1;
    std::memcpy(buffer, arguments.data(), n);
    buffer[n] = 0;
    return true;
}

void ShellLinkRelease(ShellLink* link) { delete link; }

}  // namespace qvp
