// File names made from the mail client's names: the same rules on Linux and
// Windows, so that one store gives the same tree on both.
#ifndef TQNRALM_TOOL_FILENAMES_H
#define TQNRALM_TOOL_FILENAMES_H

#include <cstddef>
#include <string>
#include <unordered_set>

namespace tqnralm {

// The longest component written, in bytes of UTF-8.
constexpr size_t kMaxComponentBytes = 200;

// One path component from a name (valid UTF-8): / \ : * ? " < > | and control
// characters become "_"; a device name of Windows (CON, PRN, AUX, NUL,
// COM1-9, LPT1-9, with any extension) gets "_" after its base; the name is
// cut to kMaxComponentBytes on a character boundary; a final dot or space
// becomes "_"; an empty name is "_".
std::string SafeComponent(const std::string& name);

// The longest prefix of `text` of at most `maxBytes` bytes that ends on a
// character boundary.
std::string CutUtf8(const std::string& text, size_t maxBytes);

// A key under which names that differ only in case are equal (ASCII,
// Latin-1, Latin Extended-A, Greek, Cyrillic and full-width Latin letters,
// as Windows' file systems fold them).
std::string FoldCase(const std::string& name);

// The names given to the children of one folder. Each name is made safe and,
// when it equals one given before (also when only in case), gets " (2)",
// " (3)", ... in the order asked.
class SiblingNames {
public:
    // `companion`: a second name that each name also takes (".sbd" for the
    // folder of an mbox file's subfolders); `reserved`: names that are taken
    // from the start.
    explicit SiblingNames(std::string companion = "", bool (*reserved)(const std::string& folded) = nullptr)
        : companion_(std::move(companion)), reserved_(reserved) {}

    // Takes a name out of the pool, for names the tool itself writes.
    void Reserve(const std::string& name) { taken_.insert(FoldCase(name)); }
    // A unique safe name for `name`.
    std::string Claim(const std::string& name);

private:
    bool Free(const std::string& candidate) const;

    std::string companion_;
    bool (*reserved_)(const std::string&);
    std::unordered_set<std::string> taken_;
};

}  // namespace tqnralm

#endif
