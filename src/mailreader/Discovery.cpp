// Discovery.cpp - installation and user discovery, shared by both readers.
#include "mailreader/Discovery.h"

#include <cstring>
#include <memory>
#include <string>

#include "mailreader/LineSource.h"
#include "platform/Closer.h"
#include "platform/platform.h"

namespace {

const char kClientKey[] = "Software\\CREAR\\AL-Mail";
// "\ｽﾀｰﾄ ﾒﾆｭｰ" in half-width katakana: the start-menu folder of a Japanese
// Windows, as the installer writes it into the uninstall file.
const char kStartMenu[] = "\\\xBD\xC0\xB0\xC4\x20\xD2\xC6\xAD\xB0";
const char kMailboxes[] = "[Mailboxes]";
const char kMailboxSuffix[] = "\\Mailbox";

// Line buffers of the two passes over the uninstall file; longer lines come
// in pieces, each tested as a line.
const int kShortcutLineSize = 270;
const int kSectionLineSize = 265;
const uint32_t kMailboxPathSize = 261;
const int kWindowsDirSize = 520;
const int kArgumentsSize = 520;

// COM and the shell link object for the span of one scan.
struct ScanScope {
    qvp::ShellLink*& rpLink;
    bool bUninitialize;
    ~ScanScope() {
        if (rpLink != nullptr) {
            qvp::ShellLinkRelease(rpLink);
            rpLink = nullptr;
        }
        if (bUninitialize) qvp::CoUninitialize();
    }
};

char* NewText(const std::string& s) {
    char* p = new char[s.size() + 1];
    std::memcpy(p, s.c_str(), s.size() + 1);
    return p;
}

int FoldAscii(unsigned char c) { return (c >= 'A' && c <= 'Z') ? c + ('a' - 'A') : c; }

}  // namespace

const DiscoveryProfile kMailDiscoveryProfile = {260, -1, -2, true, false, false};
const DiscoveryProfile kAddressDiscoveryProfile = {261, -1, -1, false, true, true};

namespace qvdisc {

int StrICmp(const char* a, const char* b) {
    for (;; ++a, ++b) {
        int ca = FoldAscii(static_cast<unsigned char>(*a));
        int cb = FoldAscii(static_cast<unsigned char>(*b));
        if (ca != cb || ca == 0) return ca - cb;
    }
}

int StrNICmp(const char* a, const char* b, size_t n) {
    for (; n > 0; --n, ++a, ++b) {
        int ca = FoldAscii(static_cast<unsigned char>(*a));
        int cb = FoldAscii(static_cast<unsigned char>(*b));
        if (ca != cb || ca == 0) return ca - cb;
    }
    return 0;
}

const char* LastBackslash(const char* psz) {
    const char* pLast = nullptr;
    while (*psz != '\0') {
        if (qvp::IsDBCSLeadByte(static_cast<unsigned char>(*psz)) && psz[1] != '\0') {
            psz += 2;
            continue;
        }
        if (*psz == '\\') pLast = psz;
        ++psz;
    }
    return pLast;
}

void FileTitle(const char* pszPath, char* pszOut, size_t cbOut) {
    if (cbOut == 0) return;
    // The name starts behind the last separator or drive colon and ends at
    // the last dot behind that.
    const char* pName = pszPath;
    const char* pDot = nullptr;
    const char* p = pszPath;
    while (*p != '\0') {
        if (qvp::IsDBCSLeadByte(static_cast<unsigned char>(*p)) && p[1] != '\0') {
            p += 2;
            continue;
        }
        if (*p == '\\' || *p == '/' || *p == ':') {
            pName = p + 1;
            pDot = nullptr;
        } else if (*p == '.') {
            pDot = p;
        }
        ++p;
    }
    size_t n = static_cast<size_t>((pDot != nullptr ? pDot : p) - pName);
    if (n > cbOut - 1) n = cbOut - 1;
    std::memcpy(pszOut, pName, n);
    pszOut[n] = '\0';
}

}  // namespace qvdisc

CDiscovery::CDiscovery(const DiscoveryProfile& profile)
    : m_profile(profile), m_bInstalled(0), m_szInstallDir{}, m_pShellLink(nullptr),
      m_pShortcutHead(nullptr), m_pShortcutTail(nullptr) {
    m_pShortcutHead = m_pShortcutTail = new ShortcutEntry{nullptr, nullptr, nullptr};
}

CDiscovery::~CDiscovery() {
    FreeShortcuts();
    if (m_pShellLink != nullptr) qvp::ShellLinkRelease(m_pShellLink);
}

void CDiscovery::FreeShortcuts() {
    ShortcutEntry* p = m_pShortcutHead;
    while (p != nullptr) {
        ShortcutEntry* pNext = p->pNext;
        delete[] p->pszName;
        delete[] p->pszDirectory;
        delete p;
        p = pNext;
    }
    m_pShortcutHead = m_pShortcutTail = nullptr;
}

namespace qvdisc {

void ReadShortcutLines(CLineSource& source, const std::string& prefix,
                       const std::function<void(const char*)>& onLink) {
    char szLine[kShortcutLineSize];
    while (source.Gets(szLine, kShortcutLineSize) != nullptr) {
        size_t n = std::strlen(szLine);
        // "<windows>\ｽﾀｰﾄ ﾒﾆｭｰ\...\<name>.lnk=" and a line end.
        if (n < prefix.size() || n < 5) continue;
        if (StrNICmp(szLine, prefix.c_str(), prefix.size()) != 0) continue;
        if (StrNICmp(szLine + n - 5, "lnk", 3) != 0) continue;
        szLine[n - 2] = '\0';
        onLink(szLine);
    }
}

int32_t ReadMailboxLines(CLineSource& source, const std::function<void(const char*)>& onDirectory) {
    char szLine[kSectionLineSize];
    for (;;) {
        if (source.Gets(szLine, kSectionLineSize) == nullptr) return 100;
        if (std::strncmp(szLine, kMailboxes, sizeof kMailboxes - 1) == 0) break;
    }
    // Each line of the section is "<directory>\Mailbox=" and a line end; the
    // first line of any other shape ends the section for good.
    while (source.Gets(szLine, kSectionLineSize) != nullptr) {
        size_t n = std::strlen(szLine);
        if (n < 10 || StrNICmp(szLine + n - 10, "\\Mailbox=", 9) != 0) break;
        szLine[n - 2] = '\0';
        onDirectory(szLine);
    }
    return 0;
}

}  // namespace qvdisc

namespace {

// Reads one string value and closes the key, also when the read throws.
bool QueryAndClose(qvp::RegKey* hKey, const char* pszValue, char* pData, uint32_t* pcb) {
    qvp::KeyCloser closer{hKey};
    return qvp::RegQueryString(hKey, pszValue, pData, pcb);
}

}  // namespace

int32_t CDiscovery::DiscoverInstallPath() {
    qvp::RegKey* hKey = nullptr;
    if (!qvp::RegOpen(qvp::Hive::LocalMachine, kClientKey, &hKey)) return m_profile.nKeyFailure;
    char szPath[kInstallDirSize] = {};
    uint32_t cb = m_profile.nInstallPathSize;
    if (cb > sizeof szPath) cb = sizeof szPath;
    bool bRead = QueryAndClose(hKey, "InstallPath", szPath, &cb);
    if (!bRead) return m_profile.nValueFailure;
    szPath[sizeof szPath - 1] = '\0';

    // The value names a file in the installation directory. Whether it exists
    // only sets the flag; discovery goes on either way.
    int32_t bExists = qvp::Access(szPath) == 0 ? 1 : 0;
    if (m_profile.bAlwaysWriteInstalled || bExists) m_bInstalled = bExists;

    const char* pCut = qvdisc::LastBackslash(szPath);
    if (pCut != nullptr) szPath[pCut - szPath] = '\0';
    std::memcpy(m_szInstallDir, szPath, sizeof m_szInstallDir);

    if (m_profile.bUsersAfterInstallPath) DiscoverUsers();
    return 0;
}

int32_t CDiscovery::DiscoverUsers() {
    // The client spells the file "Uninst.inf"; the mail side has always asked
    // for "uninst.inf". Both name the same file.
    std::string uninst = m_szInstallDir;
    uninst += m_profile.bUninstOverLastComponent ? "\\Uninst.inf" : "\\uninst.inf";
    qvp::FileCloser file{qvp::FileOpen(uninst.c_str(), "rt")};
    if (file.handle != nullptr) {
        ScanShortcuts(file.handle);
        qvp::FileRewind(file.handle);
    }

    // The current Windows user's mailbox comes first, unchecked.
    bool bHaveRegistryUser = false;
    std::string registryDir;
    qvp::RegKey* hKey = nullptr;
    if (qvp::RegOpen(qvp::Hive::CurrentUser, kClientKey, &hKey)) {
        char szMailbox[kMailboxPathSize] = {};
        uint32_t cb = kMailboxPathSize;
        bHaveRegistryUser = QueryAndClose(hKey, "MailboxPath", szMailbox, &cb);
        if (bHaveRegistryUser) {
            szMailbox[kMailboxPathSize - 1] = '\0';
            size_t n = std::strlen(szMailbox);
            if (n > 0 && qvdisc::LastBackslash(szMailbox) == szMailbox + n - 1) szMailbox[n - 1] = '\0';
            registryDir = szMailbox;
            registryDir += kMailboxSuffix;
        }
    }
    if (bHaveRegistryUser) AddUser(registryDir.c_str());

    if (file.handle == nullptr) return 0;

    CFileLineSource source(file.handle);
    return qvdisc::ReadMailboxLines(source, [&](const char* pszDirectory) {
        if (bHaveRegistryUser && qvdisc::StrICmp(pszDirectory, registryDir.c_str()) == 0) return;
        std::string candidate = pszDirectory;
        candidate += "\\Mailbox.ini";
        if (qvp::Access(candidate.c_str()) == 0) AddUser(pszDirectory);
    });
}

int32_t CDiscovery::ScanShortcuts(qvp::File* pStream) {
    char szWinDir[kWindowsDirSize] = {};
    if (qvp::WindowsDirectory(szWinDir, kWindowsDirSize) == 0) szWinDir[0] = '\0';
    std::string prefix = szWinDir;
    prefix += kStartMenu;
    if (pStream == nullptr) return -1;

    // COM is balanced only when this call initialised it.
    ScanScope scope{m_pShellLink, qvp::CoInitialize() == qvp::kSOk};
    m_pShellLink = qvp::ShellLinkCreate();
    if (m_pShellLink == nullptr) return -1;

    CFileLineSource source(pStream);
    qvdisc::ReadShortcutLines(source, prefix, [this](const char* pszLink) {
        char* pszDirectory = nullptr;
        if (ResolveShortcut(pszLink, &pszDirectory) != 0) return;
        std::unique_ptr<char[]> directory(pszDirectory);
        char szTitle[256];
        qvdisc::FileTitle(pszLink, szTitle, sizeof szTitle);
        std::unique_ptr<char[]> name(NewText(szTitle));
        AppendShortcut(name.get(), directory.get());
        name.release();
        directory.release();
    });
    return 0;
}

int32_t CDiscovery::ResolveShortcut(const char* pszPath, char** ppszDirectory) {
    if (m_pShellLink == nullptr) return 1;
    if (!qvp::ShellLinkLoad(m_pShellLink, pszPath)) return 1;
    char szArgs[kArgumentsSize] = {};
    if (!qvp::ShellLinkGetArguments(m_pShellLink, szArgs, kArgumentsSize)) return 1;
    szArgs[kArgumentsSize - 1] = '\0';
    // "C:\dir" and C:\dir name the same directory. Arguments of several words
    // are taken whole.
    char* p = szArgs;
    if (*p == '"') {
        ++p;
        size_t n = std::strlen(p);
        if (n > 0 && p[n - 1] == '"') p[n - 1] = '\0';
    }
    std::string directory = p;
    directory += kMailboxSuffix;
    *ppszDirectory = NewText(directory);
    return 0;
}

void CDiscovery::AppendShortcut(char* pszName, char* pszDirectory) {
    ShortcutEntry* pClosing = new ShortcutEntry{nullptr, nullptr, nullptr};
    m_pShortcutTail->pszName = pszName;
    m_pShortcutTail->pszDirectory = pszDirectory;
    m_pShortcutTail->pNext = pClosing;
    m_pShortcutTail = pClosing;
}

const char* CDiscovery::ClaimShortcut(const char* pszDirectory) {
    for (ShortcutEntry* p = m_pShortcutHead; p != nullptr && p->pNext != nullptr; p = p->pNext) {
        if (qvdisc::StrICmp(p->pszDirectory, pszDirectory) == 0) {
            p->pszDirectory[0] = '=';
            return p->pszName;
        }
    }
    return nullptr;
}
