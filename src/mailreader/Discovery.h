// Discovery.h - finding the mail client's installation, mailbox directories
// and user names, shared by the mail reader and the address reader.
//
// The client keeps no list of its users. Each user has one "Mailbox"
// directory somewhere on disk; the installer records them in "Uninst.inf"
// (section "[Mailboxes]") and leaves one start-menu shortcut per user whose
// arguments name the user's directory and whose file name is the user's name.
// The current Windows user's directory is in the registry (MailboxPath).
//
// Both readers run the same procedure and differ only in the points of
// DiscoveryProfile. A reader derives from CDiscovery, passes its profile to
// the constructor and implements AddUser:
//
//     class CAddrDiscovery : public CDiscovery {
//     public:
//         CAddrDiscovery() : CDiscovery(kAddressDiscoveryProfile) {}
//     protected:
//         int32_t AddUser(const char* pszDirectory) override {
//             const char* pszName = ClaimShortcut(pszDirectory);  // may be null
//             ... make the user from pszDirectory and pszName (copy the name) ...
//             return 0;
//         }
//     };
//
//     CAddrDiscovery d;
//     int32_t r = d.DiscoverInstallPath();   // the address profile runs the
//                                            // user discovery at its end
//     if (r == 0 && userCount == 0) r = -2;  // "no user" is the reader's rule
//
// The mail side calls DiscoverInstallPath() and then DiscoverUsers() itself.
// All texts are Shift-JIS bytes. Nothing here writes anything to disk.
#ifndef QV_MAILREADER_DISCOVERY_H
#define QV_MAILREADER_DISCOVERY_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

class CLineSource;

namespace qvp {
struct File;
struct ShellLink;
}  // namespace qvp

// One shortcut found in the uninstall file. The list always ends in one empty
// closing entry (null pNext, null texts); in an empty list head and tail both
// point at it.
struct ShortcutEntry {
    ShortcutEntry* pNext;
    char* pszName;       // the .lnk file name without directory and extension
    char* pszDirectory;  // the arguments + "\Mailbox"; first byte "=" once claimed
};

// The points in which the two readers' runs differ.
struct DiscoveryProfile {
    uint32_t nInstallPathSize;    // buffer for InstallPath: 260 mail, 261 address
    int32_t nKeyFailure;          // result when the key cannot be opened
    int32_t nValueFailure;        // result when InstallPath cannot be read
    bool bAlwaysWriteInstalled;   // mail: flag set to 1 or 0; address: only set to 1
    bool bUninstOverLastComponent;  // address: "\Uninst.inf" written over the last
                                    // component; mail: "\uninst.inf" appended to
                                    // the directory cut at the last backslash
    bool bUsersAfterInstallPath;  // address: DiscoverInstallPath ends by running
                                  // DiscoverUsers (its result not looked at)
};

extern const DiscoveryProfile kMailDiscoveryProfile;
extern const DiscoveryProfile kAddressDiscoveryProfile;

class CDiscovery {
public:
    // Capacity of the installation directory field (the larger profile).
    enum : size_t { kInstallDirSize = 261 };

    explicit CDiscovery(const DiscoveryProfile& profile);
    virtual ~CDiscovery();
    CDiscovery(const CDiscovery&) = delete;
    CDiscovery& operator=(const CDiscovery&) = delete;

    // Reads InstallPath: the installed flag and the installation directory.
    // 0, or the profile's failure codes.
    int32_t DiscoverInstallPath();
    // Reads the uninstall file and MailboxPath, adds one user per mailbox
    // directory. 0, or 100 when the file has no "[Mailboxes]" line.
    int32_t DiscoverUsers();
    // First pass over the open uninstall file: fills the shortcut list.
    // 0, or -1 for a null stream or no shell link object.
    int32_t ScanShortcuts(qvp::File* pStream);
    // Arguments of one .lnk file + "\Mailbox": 0 and a new text (free with
    // delete[]), or 1 on failure.
    int32_t ResolveShortcut(const char* pszPath, char** ppszDirectory);

    int32_t IsInstalled() const { return m_bInstalled; }
    const char* InstallDir() const { return m_szInstallDir; }

    // Frees the shortcut list, closing entry included. Run by the destructor;
    // a reader that must free it at a fixed point of its close calls it there.
    void FreeShortcuts();

protected:
    // Makes one user of the directory. The implementation claims a shortcut
    // with ClaimShortcut. Result 0.
    virtual int32_t AddUser(const char* pszDirectory) = 0;

    // The claim step of AddUser: the first unclaimed entry whose directory
    // equals pszDirectory in any case of ASCII letters is marked as claimed
    // (first byte of its directory becomes "=") and its name returned. Null
    // when none matches. The name stays owned by the list.
    const char* ClaimShortcut(const char* pszDirectory);

    const DiscoveryProfile& m_profile;
    int32_t m_bInstalled;
    char m_szInstallDir[kInstallDirSize];
    qvp::ShellLink* m_pShellLink;
    ShortcutEntry* m_pShortcutHead;
    ShortcutEntry* m_pShortcutTail;

private:
    void AppendShortcut(char* pszName, char* pszDirectory);
};

// Shift-JIS aware helpers shared by the readers.
namespace qvdisc {
// Compares bytes, folding ASCII letters only (_stricmp, _strnicmp).
int StrICmp(const char* a, const char* b);
int StrNICmp(const char* a, const char* b, size_t n);
// The last backslash that is not the trail byte of a double-byte character,
// or null.
const char* LastBackslash(const char* psz);
// _splitpath's file name without directory and extension.
void FileTitle(const char* pszPath, char* pszOut, size_t cbOut);

// The uninstall file's two passes, over any line source. The shortcut lines
// under the Start menu folder `prefix` ("<prefix>\...\<name>.lnk=" and a
// line end), each handed over as the .lnk path; and the directories of the
// "[Mailboxes]" section ("<directory>\Mailbox=" lines; the first line of
// another shape ends it): 0, or 100 when there is no such section.
void ReadShortcutLines(CLineSource& source, const std::string& prefix,
                       const std::function<void(const char*)>& onLink);
int32_t ReadMailboxLines(CLineSource& source, const std::function<void(const char*)>& onDirectory);
}  // namespace qvdisc

#endif  // QV_MAILREADER_DISCOVERY_H
