// What the assistant's window shows, apart from the window: the tree of
// what was found (from the export's plan and its address books), the size
// of an export against the free space, the progress line, and the totals
// and problems of a finished export (from its manifest). No Windows calls
// here, so that the tests run on every platform.
#ifndef TQNRALM_GUI_MODEL_H
#define TQNRALM_GUI_MODEL_H

#include <cstdint>
#include <string>
#include <vector>

#include "ExportPlan.h"
#include "Manifest.h"

namespace tqnralm {
namespace gui {

// One line of the tree: its depth (0 user, 1 account or address book, 2 and
// down folders), its name, its count (a folder's messages and its
// subfolders', a book's addresses) and the index `tree` gives it.
struct FoundRow {
    enum Kind { kUser, kAccount, kFolder, kBook, kSameBook } kind;
    int depth;
    std::string text;
    int64_t count;
    std::string index;
};

struct Found {
    std::vector<FoundRow> rows;
    int64_t users = 0, folders = 0, messages = 0, books = 0, addresses = 0;
};

// The rows in tree order, each user's address books after its accounts
// (`books` as the dry run lists them). An account written once under an
// earlier user shows no folders of its own, a book written once no count; a
// name the owner wrote with the library's escapes shows unescaped.
Found FoundFromPlan(const ExportPlan& plan, const Json& books);
// A row as the tree shows it: "inbox (12)", "標準のアドレス帳 (アドレス 3 件)".
std::string Label(const FoundRow& row);

// What a dry run says an export of the chosen users and format will write.
struct PlanTotals {
    int exit = -1;  // of the dry run; -1 while it runs
    int64_t messages = 0;
    uint64_t bytes = 0;  // messages and address books
};

// The line under the choices: the export's size and the free space on the
// destination, and a warning when that is short. The manifest takes about
// half a kilobyte per message beside the bytes of the messages.
struct SpaceCheck {
    std::string line;
    bool shortOfSpace = false;
};
SpaceCheck CheckSpace(const PlanTotals& plan, bool freeKnown, uint64_t freeBytes);

// "12 of 40 messages, 1.5 MB, 30 messages/s, 0:01 left", in the UI language.
std::string ProgressLine(int64_t done, int64_t total, uint64_t bytes, double seconds);

// One thing the export could not read, and what to show for it: the output
// path (relative to OUTDIR) of the deepest user, account or folder above it
// that was written; empty when none was.
struct DoneProblem {
    std::string text;  // "folder 0/0/3 (code -2147024894)", in the UI language
    std::string path;
};

struct DoneTotals {
    bool read = false;  // the manifest was there and whole
    int64_t written = 0, failed = 0, unread = 0;
    // What could not be read, then the messages that failed.
    std::vector<DoneProblem> problems;
};
DoneTotals TotalsFromManifest(const std::string& text);

}  // namespace gui
}  // namespace tqnralm

#endif
