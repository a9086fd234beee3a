// Index paths (see IndexPath.h).
#include "IndexPath.h"

#include <cstdlib>

namespace tqnralm {

bool IndexPath::Parse(const std::string& text, IndexPath* out) {
    IndexPath path;
    for (size_t start = 0; start <= text.size();) {
        size_t end = text.find('/', start);
        if (end == std::string::npos) end = text.size();
        const std::string part = text.substr(start, end - start);
        char* rest = nullptr;
        const long value = std::strtol(part.c_str(), &rest, 10);
        if (part.empty() || *rest != '\0' || value < 0) return false;
        path.positions_.push_back(value);
        start = end + 1;
    }
    *out = std::move(path);
    return true;
}

IndexPath IndexPath::Child(long position) const {
    IndexPath child = *this;
    child.positions_.push_back(position);
    return child;
}

std::string IndexPath::ToString() const {
    std::string text;
    for (long position : positions_) {
        if (!text.empty()) text += '/';
        text += std::to_string(position);
    }
    return text;
}

}  // namespace tqnralm
