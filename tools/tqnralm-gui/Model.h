// What the assistant's window shows, apart from the window: the tree of
// what was found (from the export's plan), the progress line, and the
// totals of a finished export (from its manifest). No Windows calls here,
// so that the tests run on every platform.
#ifndef TQNRALM_GUI_MODEL_H
#define TQNRALM_GUI_MODEL_H

#include <cstdint>
#include <string>
#include <vector>

#include "ExportPlan.h"

namespace tqnralm {
namespace gui {

// One line of the tree: its depth (0 user, 1 account, 2 and down folders),
// its text, and the messages below it (a folder's own and its subfolders').
struct FoundRow {
    int depth;
    std::string text;
    int64_t messages;
};

struct Found {
    std::vector<FoundRow> rows;
    int64_t users = 0, folders = 0, messages = 0;
};

// The rows in tree order. An account written once under an earlier user
// shows no folders of its own; a name the owner wrote with the library's
// escapes shows unescaped.
Found FoundFromPlan(const ExportPlan& plan);

// "12 of 40 messages, 1.5 MB, 30 messages/s, 0:01 left", in the UI language.
std::string ProgressLine(int64_t done, int64_t total, uint64_t bytes, double seconds);

struct DoneTotals {
    bool read = false;  // the manifest was there and whole
    int64_t written = 0, failed = 0, unread = 0;
    std::vector<std::string> problems;  // "folder 0/0/3 (code -2147024894)"
};
DoneTotals TotalsFromManifest(const std::string& text);

}  // namespace gui
}  // namespace tqnralm

#endif
