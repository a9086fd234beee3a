// WinePrefix.h - the Windows machine that a test fills, built in code and
// named by Windows paths: a throw-away Wine prefix that WINEPREFIX names for
// the object's life, or on Windows the running machine, cleaned up after
// (tests/support/<platform>/Machine.cpp).
#ifndef QV_TESTS_SUPPORT_WINEPREFIX_H
#define QV_TESTS_SUPPORT_WINEPREFIX_H

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace qvt {

// UTF-8 -> CP932 bytes (for fixtures); a character without a form becomes '?'.
std::string Cp932(const std::string& utf8);
// CP932 -> UTF-8 (invalid sequences become U+30FB).
std::string Utf8(const std::string& cp932);
// 16-bit text -> UTF-8, and back.
std::string Utf8(const std::u16string& text);
std::u16string Utf16(const std::string& utf8);
// A host path given in UTF-8, for the file streams and std::filesystem.
std::filesystem::path HostFile(const std::string& hostPathUtf8);
// The bytes of a host file; empty when it cannot be read. Writing throws on failure.
std::string ReadHostFile(const std::string& hostPathUtf8);
void WriteHostFile(const std::string& hostPathUtf8, const std::string& bytes);
// The Windows form of a host path ("/tmp/x" -> "Z:\tmp\x" under Wine's
// emulation; unchanged where the host is Windows).
std::string WindowsPath(const std::string& hostPathUtf8);

// Sets a variable of the process's environment for the object's life (the
// temporary directory, what GetTempPathA answers, is machine::TempVariable()).
class ScopedEnv {
public:
    ScopedEnv(const char* name, const std::string& value);
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    const char* name_;
    bool had_ = false;
    std::string old_;
};

// The lines of a trace log file (UTF-16LE, CR LF) in UTF-8, with the time
// stamp shown as "T" and each source line number as "L".
std::vector<std::string> ReadTraceLog(const std::string& hostPath);

class WinePrefix {
public:
    // A fresh machine in a new temporary host folder of its own, Root().
    WinePrefix();
    ~WinePrefix();
    WinePrefix(const WinePrefix&) = delete;
    WinePrefix& operator=(const WinePrefix&) = delete;

    const std::string& Root() const { return root_; }

    // A REG_SZ value; written at once.
    void SetHklm(const std::string& key, const std::string& name, const std::string& utf8Value);
    void SetHkcu(const std::string& key, const std::string& name, const std::string& utf8Value);
    // A 32-bit prefix, or a 64-bit one whose HKLM\Software values lie below
    // Software\Wow6432Node (Wow64, a 32-bit installer) or at their own path
    // (Win64). Nothing changes on a running Windows.
    enum class Arch { Win32, Wow64, Win64 };
    void SetArch(Arch arch);
    void SetWin64(bool win64) { SetArch(win64 ? Arch::Wow64 : Arch::Win32); }

    // "C:\\A\\b.txt" -> <root>/drive_c/A/b.txt, "Z:\\x" -> /x; itself on Windows.
    std::string HostPath(const std::string& winPathUtf8) const;
    // Writes the bytes, creating the parent folders.
    void WriteFile(const std::string& winPathUtf8, const std::string& bytes);
    void MakeDir(const std::string& winPathUtf8);
    // Removes a file or a whole folder.
    void Remove(const std::string& winPathUtf8);
    // The host paths of every regular file written so far, sorted.
    std::vector<std::string> StoreFiles() const;
    // Copies the whole prefix, drive links included, to a folder that stays.
    void CopyTo(const std::string& hostDir) const;

    struct Hive {
        // key -> values in the order they were set
        std::map<std::string, std::vector<std::pair<std::string, std::string>>> keys;
        std::vector<std::string> order;
    };
    // The values set so far (for writing the same machine in another form).
    const Hive& Registry(bool hklm) const { return hklm ? hklm_ : hkcu_; }
    // The HKLM values under Software lie below Software\Wow6432Node (Arch::Wow64).
    bool Win64() const { return arch_ == Arch::Wow64; }

private:
    void Set(bool hklm, const std::string& key, const std::string& name, const std::string& value);
    // Host paths that a write created, taken away at the end.
    void NoteCreated(const std::filesystem::path& path);

    std::string root_;
    Hive hklm_;
    Hive hkcu_;
    Arch arch_ = Arch::Win32;
    bool hadPrefix_ = false;
    std::string oldPrefix_;
    std::vector<std::filesystem::path> created_;
};

// What differs between the machines (tests/support/<platform>/Machine.cpp).
namespace machine {
// Makes a fresh machine in the new host folder root; saves what it changes.
void Open(const std::string& root, bool* hadPrefix, std::string* oldPrefix);
// Takes the machine's registry values away and restores what Open changed.
void Close(const std::string& root, bool hadPrefix, const std::string& oldPrefix);
// Writes all values of one hive.
void WriteRegistry(const std::string& root, bool hklm, WinePrefix::Arch arch, const WinePrefix::Hive& hive);
std::string HostPath(const std::string& root, const std::string& winPathUtf8);
std::string WindowsPath(const std::string& hostPathUtf8);
// Sets (value not null) or removes a variable of the process's environment.
void SetEnvironment(const char* name, const char* value);
// The variable that names the temporary directory.
const char* TempVariable();
// Empties what the platform layer remembers of the machine's folders.
void ForgetFolders();
}  // namespace machine

// The bytes of a .lnk file with HasArguments, HasWorkingDir and a relative
// path. Strings are UTF-16LE when unicode, else CP932; with wineNul each
// Unicode count includes a terminating NUL, as Wine writes them.
std::string MakeShortcut(const std::string& argumentsUtf8, bool unicode, bool wineNul = true);

}  // namespace qvt

#endif  // QV_TESTS_SUPPORT_WINEPREFIX_H
