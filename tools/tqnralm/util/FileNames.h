// File names made from the mail client's names: the same rules on Linux and
// Windows, so that one store gives the same tree on both.
#ifndef TQNRALM_TOOL_FILENAMES_H
#define TQNRALM_TOOL_FILENAMES_H

#include <cstddef>
#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

namespace tqnralm {

// The longest component written, in bytes of UTF-8.
constexpr size_t kMaxComponentBytes = 200;
// The longest name of a folder that Thunderbird finds its mail under, in
// UTF-16 units: a longer one it shows, but looks for under a hash.
constexpr size_t kMaxThunderbirdUnits = 55;

// The library's escapes of "#", "/" and "\" in names ("%23", "%2f", "%5c")
// undone. The library leaves "%" itself as it is, so a name that held the
// text "%23" comes out as "#": nothing tells the two apart.
std::string UnescapeName(const std::string& name);

// The last component of a Windows path ("C:\Mail\Account3": "Account3").
std::string LastPathComponent(const std::string& path);

// What a name must also be for the program that reads one form of export.
enum class NameStyle {
    kPlain,  // files and directories only
    // A folder of Thunderbird's Local Folders (an mbox file and its .sbd):
    // Thunderbird shows a name with "%XX" decoded and looks for the mail
    // under a name of its own when the shown one holds "%", "#" or ";", starts
    // with "." or ends with "~", or is longer than kMaxThunderbirdUnits. So
    // "%", "#" and ";" become the full-width "％", "＃" and "；", and a first
    // "." and a last "~" become "_".
    kThunderbird,
    // A Maildir++ folder as Dovecot reads it: "." separates the levels and a
    // name that starts with "~" is refused, so both become "_".
    kMaildir,
};

// One path component from a name (valid UTF-8): / \ : * ? " < > | and control
// characters become "_"; a device name of Windows (CON, PRN, AUX, NUL,
// COM1-9, LPT1-9, with any extension) gets "_" after its base; then the
// style's rules; the name is cut to kMaxComponentBytes (and the style's
// length) on a character boundary; a final dot or space becomes "_"; an
// empty name is "_".
std::string SafeComponent(const std::string& name, NameStyle style = NameStyle::kPlain);

// The longest prefix of `text` of at most `maxBytes` bytes that ends on a
// character boundary.
std::string CutUtf8(const std::string& text, size_t maxBytes);

// A key under which names that differ only in case are equal (ASCII,
// Latin-1, Latin Extended-A, Greek, Cyrillic and full-width Latin letters,
// as Windows' file systems fold them).
std::string FoldCase(const std::string& name);

// How the children of one folder are named.
struct NameRules {
    NameStyle style = NameStyle::kPlain;
    // Names that each name also takes: "X" of an mbox file also takes the
    // directory "X.sbd" of its subfolders and the summary "X.msf" that
    // Thunderbird writes beside it.
    std::vector<std::string> companions;
    // Names that are taken from the start (by their FoldCase key).
    std::function<bool(const std::string& folded)> reserved;
};

// The names given to the children of one folder. Each name is made safe and,
// when it equals one given before (also when only in case), gets " (2)",
// " (3)", ... in the order asked.
class SiblingNames {
public:
    SiblingNames() = default;
    explicit SiblingNames(NameRules rules) : rules_(std::move(rules)) {}

    // Takes a name out of the pool, for names the tool itself writes.
    void Reserve(const std::string& name) { taken_.insert(FoldCase(name)); }
    // A unique safe name for `name`.
    std::string Claim(const std::string& name);

private:
    bool Free(const std::string& candidate) const;

    NameRules rules_;
    std::unordered_set<std::string> taken_;
};

}  // namespace tqnralm

#endif
