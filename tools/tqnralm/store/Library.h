// The host's side of the library: one session, references held by RAII,
// names and children through the usual calls.
#ifndef TQNRALM_TOOL_LIBRARY_H
#define TQNRALM_TOOL_LIBRARY_H

#include <cstdint>
#include <string>

#include "Options.h"
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
// passed over: the library keeps its enumerator on a child that fails and
// hands that child out as it stands on the next call (a folder that could
// not be opened comes without title or messages), so Next asks once more
// and drops what it gets. Only when that fails too does the list end there.
class Children {
public:
    Children(QV_OBJ parent, int32_t nClass) { code_ = QV_Object_GetChildObjects(parent, nClass, objs_.out()); }
    // The code of the enumerator's creation.
    int32_t code() const { return code_; }
    // QV_S_OK with the next child, QV_E_NO_MORE_ITEMS at the end, or the
    // failure of the child at this position (or of the enumerator's
    // creation), after which the next call goes on with the next child.
    int32_t Next(Ref* child);

private:
    Ref objs_;
    int32_t code_;
    bool ended_ = false;
};

// The library from start to end for one command: the log, the installed
// test, the life cycle and the root.
class Session {
public:
    ~Session();
    // Starts the log if asked. Returns kExitOk or the exit code to leave with
    // (the message is printed).
    int StartLog(const GlobalOptions& options);
    // Finds the mail client and opens the tree. kExitOk, or kExitNotInstalled
    // with the message printed.
    int Open();
    QV_OBJ root() const { return root_.get(); }

private:
    bool logging_ = false;
    bool initialised_ = false;
    Ref root_;
};

}  // namespace tqnralm

#endif
