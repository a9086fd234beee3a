// LongPath.cpp - absolute, normalised, and "\\?\" when long (see LongPath.h).
#include "platform/LongPath.h"

#include <vector>

namespace qvp {
namespace {

bool IsSlash(char16_t c) { return c == u'\\' || c == u'/'; }

bool IsLetter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }

char16_t Upper(char16_t c) { return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c; }

bool HasDrive(const std::u16string& p) { return p.size() >= 2 && IsLetter(p[0]) && p[1] == u':'; }

bool IsUnc(const std::u16string& p) { return p.size() >= 2 && IsSlash(p[0]) && IsSlash(p[1]); }

// The end of "\\server\share" in a UNC path (its root).
size_t UncRootEnd(const std::u16string& p) {
    size_t i = 2;
    for (int part = 0; part < 2; ++part) {
        while (i < p.size() && IsSlash(p[i])) ++i;
        while (i < p.size() && !IsSlash(p[i])) ++i;
    }
    return i;
}

// The root of an absolute path: "C:" or "\\server\share", with '\'.
std::u16string RootOf(const std::u16string& p) {
    if (HasDrive(p)) return std::u16string{Upper(p[0]), u':'};
    if (!IsUnc(p)) return std::u16string();
    std::u16string root = u"\\\\";
    bool slash = false;
    for (size_t i = 2; i < UncRootEnd(p); ++i) {
        if (IsSlash(p[i])) {
            slash = true;
            continue;
        }
        if (slash && root.size() > 2) root += u'\\';
        slash = false;
        root += p[i];
    }
    return root;
}

// Appends the components of `text` to `parts`, "." dropped, ".." taking one back.
void AddParts(const std::u16string& text, size_t from, std::vector<std::u16string>* parts) {
    size_t i = from;
    while (i < text.size()) {
        while (i < text.size() && IsSlash(text[i])) ++i;
        size_t end = i;
        while (end < text.size() && !IsSlash(text[end])) ++end;
        const std::u16string part = text.substr(i, end - i);
        if (part == u"..") {
            if (!parts->empty()) parts->pop_back();
        } else if (!part.empty() && part != u".") {
            parts->push_back(part);
        }
        i = end;
    }
}

}  // namespace

std::u16string FullPath(const std::u16string& path, const std::u16string& cwd) {
    if (path.size() >= 4 && IsSlash(path[0]) && IsSlash(path[1]) && (path[2] == u'?' || path[2] == u'.') &&
        IsSlash(path[3]))
        return path;
    std::u16string root;
    std::vector<std::u16string> parts;
    size_t from = 0;
    if (IsUnc(path)) {
        root = RootOf(path);
        from = UncRootEnd(path);
    } else if (HasDrive(path)) {
        root = RootOf(path);
        from = 2;
        // "D:name" is relative to the current folder of D:, known only
        // when it is the current drive.
        if (!(path.size() > 2 && IsSlash(path[2])) && RootOf(cwd) == root) AddParts(cwd, 2, &parts);
    } else {
        root = RootOf(cwd);
        if (!(path.size() > 0 && IsSlash(path[0]))) AddParts(cwd, IsUnc(cwd) ? UncRootEnd(cwd) : 2, &parts);
    }
    AddParts(path, from, &parts);
    std::u16string out = root;
    for (const std::u16string& part : parts) out += u'\\' + part;
    if (parts.empty()) out += u'\\';
    if (out.size() < kLongPathFrom) return out;
    return IsUnc(out) ? u"\\\\?\\UNC\\" + out.substr(2) : u"\\\\?\\" + out;
}

}  // namespace qvp
