// RegfHive.cpp - the regf format read by hand.
//
// Written here because nothing on Windows reads a hive file that is not
// loaded into the running registry: hivex has no Windows build, RegLoadKey
// needs administrator rights and RegLoadAppKey is a stub under Wine.
//
// The format, all numbers little-endian: a 4096-byte base block ("regf",
// the root cell's offset at 0x24, the bins' size at 0x28, the XOR of the
// first 127 words at 508), then bins ("hbin", size at 8, a multiple of 4096)
// that are cut into cells: a signed size (negative when in use), then the
// cell's data. Offsets count from the first bin. A key is an "nk" cell
// (flags at 2, 0x20: the name is Latin-1; subkey count and list at 20 and
// 28; value count and list at 36 and 40; name length at 72, name at 76); its
// subkeys are in an "lf" or "lh" list (count at 2, then offset and hash), an
// "li" list (offsets only) or an "ri" list of such lists. Its value list is
// offsets of "vk" cells (name length at 2, data length at 4, data offset at
// 8, type at 12, flags at 16 with 0x1 for a Latin-1 name, name at 20). Data
// of at most 4 bytes (length's high bit set) lies in the offset itself;
// longer data that does not fit its cell is a "db" cell (segment count at
// 2, segment list at 4), each segment holding its cell less 4 bytes.
//
// A damaged hive must give a clear failure: every offset is checked against
// the cells found when the bins were walked, every count against its
// cell's size, and a look-up only ever follows the path it was given, so a
// cycle in the cells cannot make it loop.
#include "platform/win32/RegfHive.h"

#include "platform/CaseFold.h"

#include <algorithm>

namespace qvp {
namespace win32 {
namespace {

constexpr size_t kBase = 0x1000;                  // the first bin
constexpr size_t kMaxValueBytes = size_t(8) << 20;  // no value the client stores is larger

uint32_t U16(const unsigned char* p) { return uint32_t(p[0]) | uint32_t(p[1]) << 8; }
uint32_t U32(const unsigned char* p) { return U16(p) | U16(p + 2) << 16; }
bool Is(const unsigned char* p, const char* signature) { return p[0] == signature[0] && p[1] == signature[1]; }

// Whether a stored name (Latin-1 bytes or UTF-16LE units) is the folded
// name. A stored name ends at its first NUL, as hivex reads it too.
bool NameIs(const unsigned char* p, size_t length, bool latin1, const std::u16string& folded) {
    const size_t width = latin1 ? 1 : 2;
    size_t i = 0;
    for (; i < folded.size(); ++i) {
        if ((i + 1) * width > length) return false;
        const char16_t unit = latin1 ? p[i] : static_cast<char16_t>(U16(p + 2 * i));
        if (unit == 0 || FoldUnit(unit) != folded[i]) return false;
    }
    return (i + 1) * width > length || (latin1 ? p[i] : U16(p + 2 * i)) == 0;
}

// Walks one bin's cells, marking those in use; false when they do not tile it.
bool WalkBin(const std::string& bytes, size_t bin, size_t end, std::vector<bool>* cells) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes.data());
    for (size_t at = bin + 0x20; at < end;) {
        if (at + 4 > end) return false;
        const uint32_t raw = U32(p + at);
        const bool used = (raw & 0x80000000u) != 0;
        const uint32_t size = used ? 0u - raw : raw;
        if (size <= 4 || (size & 3) != 0 || size > end - at) return false;
        if (used) (*cells)[(at - kBase) / 4] = true;
        at += size;
    }
    return true;
}

}  // namespace

bool RegfHive::Load(std::string bytes) {
    loaded_ = false;
    bytes_ = std::move(bytes);
    const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes_.data());
    if (bytes_.size() < kBase || bytes_.size() > kMaxBytes || bytes_.compare(0, 4, "regf") != 0) return false;
    uint32_t sum = 0;
    for (size_t i = 0; i < 508; i += 4) sum ^= U32(p + i);
    if (sum != U32(p + 508) || U32(p + 0x14) != 1) return false;
    // Bins end where the base block says, or at the file's end.
    const size_t end = size_t(std::min<uint64_t>(bytes_.size(), kBase + uint64_t(U32(p + 0x28))));
    cells_.assign((bytes_.size() - kBase) / 4 + 1, false);
    for (size_t bin = kBase; bin < end;) {
        if (bytes_.size() - bin < 0x20 || bytes_.compare(bin, 4, "hbin") != 0) return false;
        const size_t size = U32(p + bin + 8);
        if (size <= 0x20 || (size & 0xFFF) != 0 || size > bytes_.size() - bin) return false;
        if (!WalkBin(bytes_, bin, bin + size, &cells_)) return false;
        bin += size;
    }
    root_ = U32(p + 0x24);
    size_t length = 0;
    const unsigned char* root = Cell(root_, &length);
    loaded_ = root != nullptr && length >= 76 && Is(root, "nk");
    return loaded_;
}

const unsigned char* RegfHive::Cell(uint32_t offset, size_t* length) const {
    const uint64_t at = kBase + uint64_t(offset);
    if ((offset & 3) != 0 || at >= bytes_.size() || !cells_[offset / 4]) return nullptr;
    const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes_.data()) + at;
    *length = size_t(0u - U32(p)) - 4;
    return p + 4;
}

uint32_t RegfHive::ChildInList(uint32_t list, const std::u16string& name, int depth) const {
    size_t length = 0;
    const unsigned char* p = Cell(list, &length);
    if (p == nullptr || length < 4) return 0;
    const bool indexOfLists = Is(p, "ri");
    if (indexOfLists && depth > 0) return 0;  // an index holds lists, not indexes
    const size_t step = Is(p, "lf") || Is(p, "lh") ? 8 : Is(p, "li") || indexOfLists ? 4 : 0;
    const size_t count = U16(p + 2);
    if (step == 0 || count > (length - 4) / step) return 0;
    for (size_t i = 0; i < count; ++i) {
        const uint32_t entry = U32(p + 4 + i * step);
        if (indexOfLists) {
            if (const uint32_t found = ChildInList(entry, name, depth + 1)) return found;
            continue;
        }
        size_t nkLength = 0;
        const unsigned char* nk = Cell(entry, &nkLength);
        if (nk == nullptr || nkLength < 76 || !Is(nk, "nk")) continue;  // a damaged key hides no other
        const size_t nameLength = U16(nk + 72);
        if (nameLength <= nkLength - 76 && NameIs(nk + 76, nameLength, (U16(nk + 2) & 0x20) != 0, name))
            return entry;
    }
    return 0;
}

uint32_t RegfHive::Child(uint32_t node, const std::u16string& name) const {
    size_t length = 0;
    const unsigned char* nk = Cell(node, &length);
    if (U32(nk + 20) == 0) return 0;
    return ChildInList(U32(nk + 28), name, 0);
}

uint32_t RegfHive::Node(const std::u16string& path) const {
    if (!loaded_) return 0;
    uint32_t node = root_;
    for (size_t start = 0; node != 0 && start < path.size();) {
        size_t end = path.find(u'\\', start);
        if (end == std::u16string::npos) end = path.size();
        if (end > start) node = Child(node, path.substr(start, end - start));
        start = end + 1;
    }
    return node;
}

bool RegfHive::HasKey(const std::u16string& path) const { return Node(path) != 0; }

bool RegfHive::Data(const unsigned char* vk, std::string* out) const {
    const uint32_t raw = U32(vk + 4);
    if ((raw & 0x80000000u) != 0) {  // the data lies in the offset field
        const size_t inline_ = raw & 0x7FFFFFFFu;
        if (inline_ > 4) return false;
        out->assign(reinterpret_cast<const char*>(vk + 8), inline_);
        return true;
    }
    out->clear();
    if (raw == 0) return true;
    if (raw > kMaxValueBytes) return false;
    size_t length = 0;
    const unsigned char* data = Cell(U32(vk + 8), &length);
    if (data == nullptr) return false;
    if (raw <= length) {
        out->assign(reinterpret_cast<const char*>(data), raw);
        return true;
    }
    if (length < 8 || !Is(data, "db")) return false;
    const size_t segments = U16(data + 2);
    size_t listLength = 0;
    const unsigned char* list = Cell(U32(data + 4), &listLength);
    if (list == nullptr || segments > listLength / 4) return false;
    for (size_t i = 0; i < segments && out->size() < raw; ++i) {
        size_t segmentLength = 0;
        const unsigned char* segment = Cell(U32(list + 4 * i), &segmentLength);
        if (segment == nullptr || segmentLength < 4) return false;
        const size_t take = std::min<size_t>(segmentLength - 4, raw - out->size());
        out->append(reinterpret_cast<const char*>(segment), take);
    }
    return out->size() == raw;
}

bool RegfHive::Find(const std::u16string& path, const std::u16string& name, Value* out) const {
    const uint32_t node = Node(path);
    if (node == 0) return false;
    size_t length = 0;
    const unsigned char* nk = Cell(node, &length);
    const size_t count = U32(nk + 36);
    size_t listLength = 0;
    const unsigned char* list = count == 0 ? nullptr : Cell(U32(nk + 40), &listLength);
    if (list == nullptr || count > listLength / 4) return false;
    for (size_t i = 0; i < count; ++i) {
        size_t vkLength = 0;
        const unsigned char* vk = Cell(U32(list + 4 * i), &vkLength);
        if (vk == nullptr || vkLength < 20 || !Is(vk, "vk")) continue;
        const size_t nameLength = U16(vk + 2);
        if (nameLength > vkLength - 20 || !NameIs(vk + 20, nameLength, (U16(vk + 16) & 1) != 0, name)) continue;
        std::string data;
        if (!Data(vk, &data)) return false;
        out->type = U32(vk + 12);
        out->isText = out->type == 1 || out->type == 2 || out->type == 7;
        out->text.clear();
        out->bytes.clear();
        if (!out->isText) {
            out->bytes = std::move(data);
            return true;
        }
        for (size_t k = 0; k + 1 < data.size(); k += 2)
            out->text.push_back(static_cast<char16_t>(U16(reinterpret_cast<const unsigned char*>(data.data()) + k)));
        if (!out->text.empty() && out->text.back() == 0) out->text.pop_back();
        return true;
    }
    return false;
}

}  // namespace win32
}  // namespace qvp
