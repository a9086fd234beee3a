// StoreFoldersTest.cpp - an export never writes into the store: the folders
// that hold a prefix's store, and an OUTDIR matched against them by the rules
// the library reads Windows paths with (any case, short names).
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/HostOs.h"
#include "platform/posix/PosixText.h"
#include "support/WinePrefix.h"

namespace tqnralm {
namespace {

namespace fs = std::filesystem;

std::string ShortNameOf(const std::u16string& name) {
    const std::u16string shortName = qvp::posix::ShortName(name);
    return qvp::posix::Utf16ToUtf8(shortName.data(), shortName.size());
}

TEST(StoreFolders, OutDirInsideTheStore) {
    qvt::WinePrefix prefix;
    // Drive D: lies outside the prefix, as a mounted disk would.
    const fs::path data = fs::path(prefix.Root()).parent_path() / (fs::path(prefix.Root()).filename().string() + "-d");
    fs::create_directories(data / "Mail Box" / "Account 1");
    fs::create_directories(data / "Mail Box" / "Account 10");
    fs::create_directory_symlink(data, fs::path(prefix.Root()) / "dosdevices" / "d:");
    const std::string shortBox = ShortNameOf(u"Mail Box");
    const std::string account = "d:\\" + shortBox + "\\ACCOUNT 1";  // as the client may spell it
    const std::vector<os::StoreFolder> store = os::StoreFolders({"C:\\AL-Mail\\Mailbox\\Account1", account});

    const std::string d = data.string();
    // holder: the store folder's Windows path; "" the whole prefix; nullptr none
    const struct { const char* name; std::string outDir; const char* holder; } rows[] = {
        {"in the prefix", prefix.Root() + "/drive_c/out", ""},
        {"the prefix through a link of its own", prefix.Root() + "/dosdevices/c:/AL-Mail/x", ""},
        {"in the account on D:", d + "/Mail Box/Account 1/out", account.c_str()},
        {"the account itself", d + "/Mail Box/Account 1", account.c_str()},
        {"through the drive's link", prefix.Root() + "/dosdevices/d:/Mail Box/Account 1/x", account.c_str()},
        {"another case", d + "/mail box/ACCOUNT 1/out", account.c_str()},
        {"a short name", d + "/" + shortBox + "/account 1", account.c_str()},
        {"a sibling that starts alike", d + "/Mail Box/Account 10", nullptr},
        {"above the account", d + "/Mail Box", nullptr},
        {"elsewhere", d + "-out", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const os::StoreFolder* holder = os::FolderHolding(store, row.outDir);
        ASSERT_EQ(row.holder != nullptr, holder != nullptr) << (holder ? holder->hostPath : "");
        if (holder != nullptr) { EXPECT_EQ(row.holder, holder->windowsPath); }
    }
    fs::remove_all(data);
}

}  // namespace
}  // namespace tqnralm
