// A place in the object tree as `tree` prints it ("0/0/1/2"): the position
// of each object among its parent's children of one class, from the root
// down. A child that cannot be had keeps its position, so a path names the
// same object whatever fails beside it.
#ifndef TQNRALM_TOOL_INDEXPATH_H
#define TQNRALM_TOOL_INDEXPATH_H

#include <string>
#include <vector>

namespace tqnralm {

class IndexPath {
public:
    IndexPath() = default;  // the root
    // Reads "N/N/...". False when a part is empty, not a number or negative.
    static bool Parse(const std::string& text, IndexPath* out);

    IndexPath Child(long position) const;
    const std::vector<long>& positions() const { return positions_; }
    size_t depth() const { return positions_.size(); }
    // "" for the root.
    std::string ToString() const;

private:
    std::vector<long> positions_;
};

}  // namespace tqnralm

#endif
