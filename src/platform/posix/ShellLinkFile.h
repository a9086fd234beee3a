// ShellLinkFile.h - a .lnk shortcut (the MS-SHLLINK format), parsed.
//
// Only what IShellLinkA::GetArguments gives is kept: the arguments in code
// page 932. The parser takes the file's bytes; nothing here touches a disk.
#ifndef QV_PLATFORM_POSIX_SHELLLINKFILE_H
#define QV_PLATFORM_POSIX_SHELLLINKFILE_H

#include <cstddef>
#include <string>

namespace qvp {
namespace posix {

class ShellLinkFile {
public:
    // false for a short or broken file; the arguments are then empty.
    bool Parse(const char* data, size_t size);
    const std::string& Arguments() const { return arguments_; }

private:
    std::string arguments_;
};

}  // namespace posix
}  // namespace qvp

#endif  // QV_PLATFORM_POSIX_SHELLLINKFILE_H
