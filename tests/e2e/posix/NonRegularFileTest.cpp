// FIFOs, sockets and devices in the store: refused without waiting, read as
// a folder in the file's place is. (A FIFO opened for reading waits for a
// writer; a link to /dev/zero never ends.)
#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <functional>

#include "e2e/StoreWalk.h"
#include "support/SampleStore.h"

namespace {

namespace fs = std::filesystem;

bool MakeSocket(const std::string& path) {
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) return false;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    const bool ok = fd >= 0 && bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    if (fd >= 0) close(fd);
    return ok;
}

TEST(SpecialFiles, FifoSocketOrDeviceReadAsAFolder) {
    const struct { const char* kind; std::function<bool(const std::string&)> make; } kinds[] = {
        {"fifo", [](const std::string& p) { return mkfifo(p.c_str(), 0600) == 0; }},
        {"socket", MakeSocket},
        {"device", [](const std::string& p) { return symlink("/dev/zero", p.c_str()) == 0; }},
    };
    qvt::WinePrefix prefix;
    qvt::BuildSampleStore(prefix);
    alarm(300);  // a walk that waits in an open ends the program, not the CI run
    for (const std::string& file : prefix.StoreFiles()) {
        SCOPED_TRACE(file);
        const std::string bytes = qvt::ReadHostFile(file);
        fs::remove(file);
        fs::create_directory(file);
        const qvt::WalkResult folder = qvt::StoreWalker().Run();
        fs::remove(file);
        for (const auto& k : kinds) {
            if (!k.make(file)) continue;  // a socket path too long for sun_path
            EXPECT_EQ(folder.lines, qvt::StoreWalker().Run().lines) << k.kind;
            fs::remove(file);
        }
        qvt::WriteHostFile(file, bytes);
    }
    alarm(0);
}

}  // namespace
