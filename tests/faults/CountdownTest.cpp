// Fault countdowns over whole walks of the sample store: the Nth allocation,
// or the Nth file, folder, module or code page call, fails, for N = 1, 2, ...
// until a walk meets no fault. Each faulted walk returns documented codes
// only, loses nothing without a failure code (short of SilentList), leaves
// no block held after QV_ExitLibrary, and the next walk finds the whole tree.
// N advances by QV_FAULT_STRIDE from a printed offset (QV_FAULT_OFFSET).
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "e2e/StoreWalk.h"
#include "faults/AllocSeam.h"
#include "messagelib/MessageLib.h"
#include "platform/Faults.h"
#include "support/SampleStore.h"

namespace {

namespace faults = qvp::faults;

// The class of an object's line ("depth class names...").
int ClassOf(const qvt::WalkNode& node) {
    const size_t at = node.line.find(' ');
    return at == std::string::npos ? -1 : std::atoi(node.line.c_str() + at + 1);
}

// The losses the library's rules make without a failure code: an account
// keeps the folders listed before its listing failed; a user whose address
// side failed has no book, a book that failed to load is empty; an address
// whose property lookup or field fetch failed lacks that field.
bool SilentList(const qvt::WalkNode& node, size_t list) {
    const int nClass = ClassOf(node);
    return nClass == QV_CLASS_ACCOUNT || nClass == QV_CLASS_ADDRESSBOOK || (nClass == QV_CLASS_USER && list == 1);
}
bool SilentLine(const qvt::WalkNode& whole, const qvt::WalkNode& got) {
    return ClassOf(whole) == QV_CLASS_ADDRESS && ClassOf(got) == QV_CLASS_ADDRESS;
}

// Where a faulted walk lost part of the whole tree without a failure code on
// that object or list, "" when nowhere.
std::string Lost(const qvt::WalkNode& whole, const qvt::WalkNode& got, const std::string& path) {
    const std::string here = path + "/" + whole.line;
    const bool excused = got.failed;
    if (!excused && got.line != whole.line && !SilentLine(whole, got)) return here + ": read as " + got.line;
    if (!excused && got.lists.size() != whole.lists.size()) return here + ": child lists missing";
    for (size_t i = 0; i < whole.lists.size() && i < got.lists.size(); ++i) {
        const qvt::WalkList& want = whole.lists[i];
        const qvt::WalkList& have = got.lists[i];
        const size_t n = have.children.size();
        if (n > want.children.size()) return here + ": objects that are not there";
        if (!excused && !have.failed && !SilentList(whole, i) &&
            (have.count != want.count || n != want.children.size()))
            return here + ": " + want.count + " read as" + have.count + " with " + std::to_string(n) + " objects";
        for (size_t k = 0; k < n; ++k) {
            const std::string lost = Lost(want.children[k], have.children[k], here);
            if (!lost.empty()) return lost;
        }
    }
    return "";
}

// arm(n) arms the nth fault, fired() tells whether it was injected,
// checkWhole(n) holds the nth faulted walk to the whole tree.
long Countdown(const char* what, long defaultStride, const std::function<bool(long)>& checkWhole,
               const std::function<void(long)>& arm, const std::function<bool()>& fired) {
    // By path: a sanitizer's runtime hides the program's run path from dlopen.
    static const std::string library = std::string(QV_TEST_LIBRARY_DIR) + "/sNqxMsgNet.dll";
    SetMessageLibraryNameForTests(library.c_str());
    // Only the library's allocations count: the walker's own are paused.
    qvt::StoreWalker::SetAround([](bool inLibrary) { faults::PauseAllocation(!inLibrary); });
    qvt::WinePrefix prefix;
    qvt::BuildSampleStore(prefix);
    const qvt::WalkResult reference = qvt::StoreWalker().Run();
    EXPECT_GT(reference.lines.size(), 40u);
    // The platform layer's folder cache follows the walks: out of the count.
    qvt::machine::ForgetFolders();
    const long live = qvt::LiveBlocks();
    const long stride = std::max(1L, qvt::EnvOr("QV_FAULT_STRIDE", defaultStride));
    const long offset = qvt::EnvOr("QV_FAULT_OFFSET", qvt::RunSeed()) % stride;
    std::printf("%s countdown: QV_FAULT_STRIDE=%ld QV_FAULT_OFFSET=%ld\n", what, stride, offset);
    std::vector<std::string> losses;
    long walks = 0, n = offset + 1;
    for (;; n += stride) {
        arm(n);
        const qvt::WalkResult faulted = qvt::StoreWalker().Run();
        const bool hit = fired();
        arm(0);
        EXPECT_EQ("", faulted.Problems()) << what << " N=" << n;
        const std::string lost = checkWhole(n) ? Lost(reference.tree, faulted.tree, "") : "";
        if (!lost.empty()) {
            std::string codes;
            for (int32_t code : faulted.codes) codes += " " + std::to_string(code);
            losses.push_back("N=" + std::to_string(n) + " (codes" + codes + ") " + lost);
        }
        const qvt::WalkResult again = qvt::StoreWalker().Run();
        EXPECT_EQ(reference.lines, again.lines) << what << " N=" << n;
        qvt::machine::ForgetFolders();
        EXPECT_EQ(live, qvt::LiveBlocks()) << what << " N=" << n << ": blocks held after QV_ExitLibrary";
        if (!hit || ::testing::Test::HasFailure()) break;
        ++walks;
    }
    qvt::StoreWalker::SetAround(nullptr);
    faults::PauseAllocation(false);
    std::printf("%s countdown: %ld faulted walks, the last N=%ld\n", what, walks, n);
    for (size_t i = 0; i < losses.size() && i < 20; ++i) ADD_FAILURE() << what << " lost silently at " << losses[i];
    EXPECT_EQ(0u, losses.size()) << what << ": walks that lost part of the tree without a failure code";
    return walks;
}

TEST(Countdown, Allocation) {
    EXPECT_GT(Countdown("allocation", 7, [](long) { return true; }, [](long n) { faults::ArmAllocation(n); },
                        faults::AllocationFired),
              0);
}

TEST(Countdown, Io) {
    // A call failed for want of memory is held to the whole tree.
    const faults::IoError kErrors[] = {faults::IoError::kHardIo, faults::IoError::kTooManyFiles,
                                       faults::IoError::kDenied, faults::IoError::kNoMemory};
    Countdown(
        "I/O", 1, [&](long n) { return kErrors[n % 4] == faults::IoError::kNoMemory; },
        [&](long n) { faults::ArmIo(n, kErrors[n % 4]); }, faults::IoFired);
}

}  // namespace
