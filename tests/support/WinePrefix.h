// WinePrefix.h - a throw-away Wine prefix for tests, built in code.
//
// A prefix is the tree in which Wine keeps a Windows machine: drive_c/, the
// drive links in dosdevices/ and the registry files system.reg (HKLM) and
// user.reg (HKCU). Tests fill it with registry values and files by their
// Windows names and point WINEPREFIX at it for as long as the object lives.
#ifndef QV_TESTS_SUPPORT_WINEPREFIX_H
#define QV_TESTS_SUPPORT_WINEPREFIX_H

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace qvt {

// UTF-8 -> CP932 bytes (for fixtures); a character without a form becomes '?'.
std::string Cp932(const std::string& utf8);
// CP932 -> UTF-8 (invalid sequences become U+30FB).
std::string Utf8(const std::string& cp932);
// 16-bit text -> UTF-8.
std::string Utf8(const std::u16string& text);
// The lines of a trace log file (UTF-16LE, CR LF) in UTF-8, with the time
// stamp shown as "T" and each source line number as "L".
std::vector<std::string> ReadTraceLog(const std::string& hostPath);

class WinePrefix {
public:
    // A fresh prefix in a new temporary folder: drive_c/, dosdevices/c: ->
    // ../drive_c, dosdevices/z: -> /, empty registry files. WINEPREFIX points
    // at it until the destructor restores the old value.
    WinePrefix();
    ~WinePrefix();
    WinePrefix(const WinePrefix&) = delete;
    WinePrefix& operator=(const WinePrefix&) = delete;

    const std::string& Root() const { return root_; }

    // A REG_SZ value written in Wine's text format; the file is rewritten at once.
    void SetHklm(const std::string& key, const std::string& name, const std::string& utf8Value);
    void SetHkcu(const std::string& key, const std::string& name, const std::string& utf8Value);
    // "#arch=win64": HKLM values under Software are written below Software\Wow6432Node.
    void SetWin64(bool win64);
    // The raw bytes of system.reg (hklm) or user.reg; later Set calls overwrite them.
    void SetRawRegistry(bool hklm, const std::string& content);

    // "C:\\A\\b.txt" -> <root>/drive_c/A/b.txt, "Z:\\x" -> /x; no case matching.
    std::string HostPath(const std::string& winPathUtf8) const;
    // Writes the bytes, creating the parent folders.
    void WriteFile(const std::string& winPathUtf8, const std::string& bytes);
    void MakeDir(const std::string& winPathUtf8);
    // Removes a file or a whole folder.
    void Remove(const std::string& winPathUtf8);
    // Copies the whole prefix, drive links included, to a folder that stays
    // (the folder is replaced).
    void CopyTo(const std::string& hostDir) const;

private:
    struct Hive {
        // key -> values in the order they were set
        std::map<std::string, std::vector<std::pair<std::string, std::string>>> keys;
        std::vector<std::string> order;
    };
    void Set(Hive& hive, const std::string& key, const std::string& name, const std::string& value);
    void WriteRegistry(bool hklm);

    std::string root_;
    Hive hklm_;
    Hive hkcu_;
    bool win64_ = false;
    bool hadPrefix_ = false;
    std::string oldPrefix_;
};

// The bytes of a .lnk file with HasArguments, HasWorkingDir and a relative
// path. Strings are UTF-16LE when unicode, else CP932; with wineNul each
// Unicode count includes a terminating NUL, as Wine writes them.
std::string MakeShortcut(const std::string& argumentsUtf8, bool unicode, bool wineNul = true);

}  // namespace qvt

#endif  // QV_TESTS_SUPPORT_WINEPREFIX_H
