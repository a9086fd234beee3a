// CMailReader.h - the mail reader: users, their accounts and every folder
// opened so far, found by the discovery of Discovery.h.
//
// One reader stands behind each reader handle. It owns all it has read, and
// the addresses of its user, account and folder records are the record
// handles of the flat functions, valid until the reader is closed.
#ifndef QV_MAILREADER_CMAILREADER_H
#define QV_MAILREADER_CMAILREADER_H

#include <cstdint>

#include "mailreader/Discovery.h"
#include "mailreader/MailBox.h"
#include "mailreader/MailList.h"

class CMailReader;

class CMailUser : public CMailNamed {
public:
    CMailUser(const char* pszName, const char* pszDirectory);
    // Lists the mailbox directory's accounts (sub-directories holding
    // "Account.ini"), in listing order.
    void LoadAccounts();
    // 0 and the account at nIndex, or -3 and null.
    int32_t GetAccount(int32_t nIndex, CMailAccount** ppAccount) const;
    int32_t AccountCount() const { return m_Accounts.Count(); }
    // Frees the accounts, each box released first.
    void FreeAccounts();

    char m_szDirectory[264];

private:
    CMailList<CMailAccount> m_Accounts;
};

// Reads the account's title and lists its folders. 0, -1, or -10 when
// "Account.ini" gives no title (the account then has no folders).
int32_t LoadAccount(CMailAccount* pAccount);

struct TempFileEntry {
    char* pszPath;
    TempFileEntry* pNext;
};

// The mail side's run of the shared discovery: each directory found becomes
// a user of the reader.
class CMailDiscovery : public CDiscovery {
public:
    explicit CMailDiscovery(CMailReader& reader) : CDiscovery(kMailDiscoveryProfile), m_reader(reader) {}

protected:
    int32_t AddUser(const char* pszDirectory) override;

private:
    CMailReader& m_reader;
};

class CMailReader : public CMailNamed {
public:
    CMailReader();
    ~CMailReader();
    CMailReader(const CMailReader&) = delete;
    CMailReader& operator=(const CMailReader&) = delete;

    // Discovery, users, temp path. 0; -1 no installation in the registry
    // (the reader stays usable, without users); -2; -3 no temp path.
    int32_t Load();
    // m_szTempFile becomes the temp directory (or the current directory)
    // + "\IBQVALM.tmp". 0 or -3.
    int32_t MakeTempPath();
    // Frees every record, removes the temp files, frees the shortcut list.
    void Unload();
    // 0 and the user at nIndex, or -3 and null.
    int32_t GetUser(int32_t nIndex, CMailUser** ppUser) const;
    int32_t UserCount() const { return m_Users.Count(); }
    // Makes one user and loads its accounts.
    void AddUser(const char* pszDirectory, const char* pszName);
    // Opens the child at nIndex of pParent on first demand and puts it at the
    // head of the chain of open folders, which owns it. 0, -1 no memory for
    // the record, or -3 (no such child, or its opening failed); the child is
    // handed out also when its opening failed. What the opening raises passes.
    int32_t GetFolder(CMailBox* pParent, int32_t nIndex, CMailFolder** ppFolder);

    int32_t IsInstalled() const { return m_discovery.IsInstalled(); }
    const char* InstallDir() const { return m_discovery.InstallDir(); }

    char m_szTempFile[260];
    TempFileEntry* m_pTempFiles = nullptr;
    int32_t m_bOpened = 0;

private:
    CMailList<CMailUser> m_Users;
    // Every folder opened so far, in the order of opening; the folder
    // entries of the accounts and folders point at them.
    CMailList<CMailFolder> m_OpenFolders;
    CMailDiscovery m_discovery;
};

// Binds the message library and makes and loads a reader. 0 and the reader;
// -1 no memory; -2 the load found no temp path; -3 no message library.
int32_t OpenReader(CMailReader** ppReader);
// Unloads and frees the reader, unbinds the library. 0, -2, or -3 when the
// library could not be unloaded.
int32_t CloseReader(CMailReader* pReader);

#endif  // QV_MAILREADER_CMAILREADER_H
