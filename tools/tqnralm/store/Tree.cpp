// The object tree through the public interface (see Tree.h).
#include "Tree.h"

#include "Utf.h"

namespace tqnralm {

Ref& Ref::operator=(Ref&& other) noexcept {
    if (this != &other) {
        Reset();
        obj_ = other.obj_;
        other.obj_ = nullptr;
    }
    return *this;
}

void Ref::Reset() {
    if (obj_ != nullptr) QV_Object_Dispose(obj_);
    obj_ = nullptr;
}

int32_t GetName(QV_OBJ obj, bool display, std::string* out) {
    auto get = display ? QV_Object_GetDisplayName : QV_Object_GetName;
    // Most names fit a small buffer, and one call gives them (a subject is
    // decoded anew by every call); only a text that fills it is asked for
    // its length first.
    QV_WCHAR small[256] = {};  // traced as it is when the call fails
    uint32_t len = 255;
    int32_t code = get(obj, small, &len);
    if (code != QV_S_OK) return code;
    if (len < 255) {
        small[len] = 0;
        AssignUtf8(small, out);
        return code;
    }
    code = get(obj, nullptr, &len);
    if (code != QV_S_OK) return code;
    std::vector<QV_WCHAR> buf(len + 1);
    code = get(obj, buf.data(), &len);
    if (code == QV_S_OK) AssignUtf8(buf.data(), out);
    return code;
}

std::string NameOrError(QV_OBJ obj, bool display) {
    std::string name;
    int32_t code = GetName(obj, display, &name);
    return code == QV_S_OK ? name : "<error " + std::to_string(code) + ">";
}

Children::Children(QV_OBJ parent, int32_t nClass) : parent_(parent), class_(nClass) {
    code_ = QV_Object_GetChildObjects(parent, nClass, objs_.out());
}

int32_t Children::Next(Ref* child) {
    if (ended_) return QV_E_NO_MORE_ITEMS;
    ++position_;
    if (code_ != QV_S_OK) {
        ended_ = cutShort_ = true;
        return code_;
    }
    const int32_t code = QV_Objects_GetNext(objs_.get(), child->out());
    if (code == QV_S_OK || code == QV_E_NO_MORE_ITEMS) return code;
    Ref failed;
    if (QV_Objects_GetNext(objs_.get(), failed.out()) != QV_S_OK) ended_ = cutShort_ = true;  // still stuck on it
    return code;
}

int32_t Children::Unreached() const {
    if (!cutShort_) return 0;
    int32_t count = 0;
    if (QV_Object_GetChildCount(parent_, class_, &count) != QV_S_OK) count = 1;
    return count > position_ + 1 ? static_cast<int32_t>(count - position_ - 1) : 0;
}

PathRefs::~PathRefs() {
    while (!held_.empty()) held_.pop_back();  // the innermost object first
}

int32_t OpenPath(QV_OBJ root, const IndexPath& path, int32_t (*classAt)(size_t, size_t), PathRefs* out) {
    QV_OBJ current = root;
    const std::vector<long>& positions = path.positions();
    for (size_t depth = 0; depth < positions.size(); ++depth) {
        // A child before the one asked for that fails takes its position all the same.
        Children children(current, classAt(depth, positions.size()));
        Ref next;
        int32_t code = QV_E_NO_MORE_ITEMS;
        while (children.position() < positions[depth]) {
            code = children.Next(&next);
            if (code == QV_E_NO_MORE_ITEMS) break;
        }
        if (code != QV_S_OK) return code;
        current = next.get();
        out->held_.push_back(std::move(next));
    }
    return QV_S_OK;
}

}  // namespace tqnralm
