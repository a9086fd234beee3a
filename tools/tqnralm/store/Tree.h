// The object tree through the public interface: references held by RAII,
// names, the children of one class with their failures reported, and the
// object at an index path. The store's one way to be walked: every command
// and both passes of the export go through it.
#ifndef TQNRALM_TOOL_TREE_H
#define TQNRALM_TOOL_TREE_H

#include <cstdint>
#include <string>
#include <vector>

#include "IndexPath.h"
#include "tqnralm.h"

namespace tqnralm {

// One reference to a tree object or enumerator, given back on destruction.
class Ref {
public:
    Ref() = default;
    explicit Ref(QV_OBJ obj) : obj_(obj) {}
    Ref(Ref&& other) noexcept : obj_(other.obj_) { other.obj_ = nullptr; }
    Ref& operator=(Ref&& other) noexcept;
    Ref(const Ref&) = delete;
    Ref& operator=(const Ref&) = delete;
    ~Ref() { Reset(); }

    QV_OBJ get() const { return obj_; }
    QV_OBJ* out() { Reset(); return &obj_; }
    void Reset();

private:
    QV_OBJ obj_ = nullptr;
};

// A name (or display name) by the usual pair of calls: the length, then the
// text. Returns the library's code; `out` is set only on success.
int32_t GetName(QV_OBJ obj, bool display, std::string* out);
// The same, with a failure shown as "<error N>" so that a listing goes on.
std::string NameOrError(QV_OBJ obj, bool display);

// Walks the children of one class in order. A child that cannot be had is
// reported by Next and passed over: the library keeps its enumerator on a
// child that fails and hands that child out as it stands on the next call
// (a folder that could not be opened comes without title or messages), so
// Next asks once more and drops what it gets. Only when that fails too does
// the list end there, and Unreached tells how many the library announced
// beyond it.
class Children {
public:
    Children(QV_OBJ parent, int32_t nClass);
    // The code of the enumerator's creation.
    int32_t code() const { return code_; }
    // QV_S_OK with the next child, QV_E_NO_MORE_ITEMS at the end, or the
    // failure of the child at this position (or of the enumerator's
    // creation), after which the next call goes on with the next child.
    int32_t Next(Ref* child);
    // The position of what the last Next answered for: the child's index
    // below the parent.
    long position() const { return position_; }
    // The children after a failure that ended the list: the child count
    // less the positions reached (a count that cannot be had counts as one).
    int32_t Unreached() const;

private:
    QV_OBJ parent_;
    int32_t class_;
    Ref objs_;
    int32_t code_;
    long position_ = -1;
    bool ended_ = false;
    bool cutShort_ = false;
};

// The object at `path` below `root`, the class of each step given by
// `classAt(depth)` (0 for the root's children), with a reference to every
// object on the way, given back innermost first.
class PathRefs {
public:
    PathRefs() = default;
    PathRefs(PathRefs&&) = default;
    PathRefs& operator=(PathRefs&&) = delete;
    ~PathRefs();
    QV_OBJ get() const { return held_.empty() ? nullptr : held_.back().get(); }

private:
    friend int32_t OpenPath(QV_OBJ, const IndexPath&, int32_t (*)(size_t, size_t), PathRefs*);
    std::vector<Ref> held_;
};
// QV_S_OK, or the code of the first step that failed (QV_E_NO_MORE_ITEMS
// past the last child). `classAt` takes the depth and the path's length.
int32_t OpenPath(QV_OBJ root, const IndexPath& path, int32_t (*classAt)(size_t, size_t), PathRefs* out);

}  // namespace tqnralm

#endif
