// CMailReader.cpp - opening and closing a reader, users and accounts.
#include "mailreader/CMailReader.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "messagelib/MessageLib.h"
#include "platform/Closer.h"
#include "platform/platform.h"

namespace {

const char kReaderName[] = "QV_AL-MAIL32";
const char kTempFileName[] = "IBQVALM.tmp";

}  // namespace

// ------------------------------------------------------------------ user --

CMailUser::CMailUser(const char* pszName, const char* pszDirectory) : CMailNamed{}, m_szDirectory{} {
    CopyField(m_szName, sizeof m_szName, pszName);
    CopyField(m_szDirectory, sizeof m_szDirectory, pszDirectory);
}

void CMailUser::LoadAccounts() {
    // Any sub-directory holding "Account.ini" is an account, whatever its
    // name; the order is the listing's.
    std::string pattern = m_szDirectory;
    pattern += "\\*";
    qvp::FindData data;
    qvp::FindCloser find{qvp::FindFirst(pattern.c_str(), &data)};
    if (find.handle == nullptr) return;
    std::string path;
    do {
        if ((data.attrib & qvp::kAttribDirectory) == 0) continue;
        if (std::strcmp(data.name, ".") == 0 || std::strcmp(data.name, "..") == 0) continue;
        path = m_szDirectory;
        path += '\\';
        path += data.name;
        if (qvp::Access((path + "\\Account.ini").c_str()) != 0) continue;
        std::unique_ptr<CMailAccount> account(new CMailAccount);
        CopyField(account->m_szPath, sizeof account->m_szPath, path.c_str());
        LoadAccount(m_Accounts.Append(std::move(account)));
    } while (qvp::FindNext(find.handle, &data));
}

int32_t CMailUser::GetAccount(int32_t nIndex, CMailAccount** ppAccount) const {
    *ppAccount = m_Accounts.At(nIndex);
    return *ppAccount != nullptr ? 0 : -3;
}

void CMailUser::FreeAccounts() {
    m_Accounts.Clear([](CMailAccount* p) { p->ReleaseBox(); });
}

int32_t LoadAccount(CMailAccount* pAccount) {
    CopyField(pAccount->m_szName, sizeof pAccount->m_szName, pAccount->m_szPath);
    std::string ini = pAccount->m_szPath;
    ini += "\\account.ini";
    if (qvp::ProfileString("Property", "Title", "", pAccount->m_szTitle, sizeof pAccount->m_szTitle,
                           ini.c_str()) == 0) {
        return -10;
    }
    // An account is always of sub-folder form.
    return pAccount->LoadFolderEntries();
}

int32_t CMailDiscovery::AddUser(const char* pszDirectory) {
    m_reader.AddUser(pszDirectory, ClaimShortcut(pszDirectory));
    return 0;
}

// ---------------------------------------------------------------- reader --

CMailReader::CMailReader() : CMailNamed{}, m_szTempFile{}, m_discovery(*this) {
    CopyField(m_szName, sizeof m_szName, kReaderName);
}

CMailReader::~CMailReader() { Unload(); }

void CMailReader::AddUser(const char* pszDirectory, const char* pszName) {
    char szDefault[32];
    if (pszName == nullptr) {
        std::snprintf(szDefault, sizeof szDefault, "DEFAULT_USER%d", m_Users.Count() + 1);
        pszName = szDefault;
    }
    std::unique_ptr<CMailUser> user(new CMailUser(pszName, pszDirectory));
    m_Users.Append(std::move(user))->LoadAccounts();
}

int32_t CMailReader::GetFolder(CMailBox* pParent, int32_t nIndex, CMailFolder** ppFolder) {
    FolderEntry* pEntry = pParent->FolderAt(nIndex);
    if (pEntry == nullptr) return -3;
    if (pEntry->pFolder != nullptr) {
        *ppFolder = pEntry->pFolder;
        return 0;
    }
    // A record that cannot be made, or put on the chain, is -1; any other
    // exception goes up to the barrier, -2.
    std::unique_ptr<CMailFolder> folder(new (std::nothrow) CMailFolder);
    if (folder == nullptr) return -1;
    CMailFolder* pFolder = nullptr;
    try {
        pFolder = m_OpenFolders.Append(std::move(folder));
    } catch (const std::bad_alloc&) {
        return -1;
    }
    std::string path = pParent->m_szPath;
    path += '\\';
    path += pEntry->szName;
    CopyField(pFolder->m_szPath, sizeof pFolder->m_szPath, path.c_str());
    pEntry->pFolder = pFolder;
    *ppFolder = pFolder;
    // A folder that fails to open stays noted: the next request hands it
    // out as it is, titled or not, with no entries.
    return pFolder->OpenBox() != 0 ? -3 : 0;
}

int32_t CMailReader::GetUser(int32_t nIndex, CMailUser** ppUser) const {
    *ppUser = m_Users.At(nIndex);
    return *ppUser != nullptr ? 0 : -3;
}

int32_t CMailReader::Load() {
    if (m_discovery.DiscoverInstallPath() != 0) return -1;
    if (m_discovery.DiscoverUsers() < 0) return -2;
    if (MakeTempPath() != 0) return -3;
    size_t n = std::strlen(m_szTempFile) + 1;
    std::unique_ptr<char[]> path(new char[n]);
    std::memcpy(path.get(), m_szTempFile, n);
    m_pTempFiles = new TempFileEntry{path.release(), m_pTempFiles};
    m_bOpened = 1;
    return 0;
}

int32_t CMailReader::MakeTempPath() {
    char szDir[260] = {};
    if (qvp::TempPath(sizeof szDir, szDir) == 0) {
        if (qvp::GetCwd(szDir, 248) == nullptr) return -3;
    }
    // The system's temp path already ends in a backslash; the second one is
    // written all the same and names the same file.
    std::string path = szDir;
    path += '\\';
    path += kTempFileName;
    if (path.size() >= sizeof m_szTempFile) return -3;
    std::memcpy(m_szTempFile, path.c_str(), path.size() + 1);
    return 0;
}

void CMailReader::Unload() {
    m_bOpened = 0;
    // Folders first: the accounts' entries point at them, and nothing may
    // follow those pointers once the folders are gone.
    m_OpenFolders.Clear([](CMailFolder* p) { p->ReleaseBox(); });
    m_Users.Clear([](CMailUser* p) { p->FreeAccounts(); });
    while (m_pTempFiles != nullptr) {
        TempFileEntry* p = m_pTempFiles;
        m_pTempFiles = p->pNext;
        try {
            qvp::Remove(p->pszPath);
        } catch (...) {
            // Out of memory while the path was mapped: the temp file stays;
            // the entry goes all the same, so that unloading never fails.
        }
        delete[] p->pszPath;
        delete p;
    }
    m_discovery.FreeShortcuts();
}

int32_t OpenReader(CMailReader** ppReader) {
    *ppReader = nullptr;
    if (BindMessageLibrary() != 0) return -3;
    CMailReader* pReader = nullptr;
    try {
        pReader = new CMailReader;
    } catch (...) {
        UnbindMessageLibrary();
        return -1;
    }
    int32_t nResult;
    try {
        nResult = pReader->Load();
    } catch (...) {
        delete pReader;
        UnbindMessageLibrary();
        throw;
    }
    if (nResult == -3) {
        delete pReader;
        UnbindMessageLibrary();
        return -2;
    }
    *ppReader = pReader;
    return 0;
}

int32_t CloseReader(CMailReader* pReader) {
    // Unload gives everything back without throwing; the library's count
    // goes back even when the reader's close met a failure.
    delete pReader;
    return UnbindMessageLibrary();
}
