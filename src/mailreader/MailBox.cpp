// MailBox.cpp - folder forms, entry lists and the one message a folder holds.
#include "mailreader/MailBox.h"

#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "QvV4Value/QvExceptions.h"
#include "mailreader/Discovery.h"
#include "mailreader/EntryLists.h"
#include "messagelib/MessageLib.h"
#include "platform/Closer.h"
#include "platform/platform.h"

namespace {

// The capacity a folder's text buffer keeps whatever the next message's size.
constexpr size_t kKeptText = 1 << 20;

// Built-in titles of a folder whose "Entry.ini" names none, in Shift-JIS.
const char kInboxTitle[] = "\x97\x58\x95\xD6\x8E\xF3\x82\xAF";  // 郵便受け
const char kOutboxTitle[] = "\x91\x97\x90\x4D\x94\xA0";         // 送信箱
const char kTrashTitle[] = "\x82\xB2\x82\xDD\x94\xA0";          // ごみ箱

const char kSubfolderLine[] = "Type=Subfolder";

bool EndsWithI(const char* psz, const char* pszTail) {
    size_t n = std::strlen(psz);
    size_t t = std::strlen(pszTail);
    return n >= t && qvdisc::StrICmp(psz + n - t, pszTail) == 0;
}

std::string ProfilePath(const char* pszDir, const char* pszFile) {
    std::string path = pszDir;
    path += '\\';
    path += pszFile;
    return path;
}

}  // namespace

void CopyField(char* pField, size_t cbField, const char* pszText) {
    if (cbField == 0) return;
    size_t n = std::strlen(pszText);
    if (n > cbField - 1) n = cbField - 1;
    std::memcpy(pField, pszText, n);
    pField[n] = '\0';
}

CMailBox::CMailBox()
    : CMailNamed{}, m_szPath{}, m_aMainParts{}, m_aAttach{}, m_pText(nullptr), m_nTextSize(0), m_nTextCapacity(0),
      m_pParse(0),
      m_nMainParts(0), m_nAttachResult(0), m_bMessagesOpen(0), m_nCurrent(-1) {}

CMailBox::~CMailBox() {
    // ReleaseBox has run by now in every orderly close; this only frees what
    // a failed construction path left. The entry lists free themselves.
    delete[] m_pText;
}

void CMailBox::AppendFolderEntry(const char* pszName) {
    std::unique_ptr<FolderEntry> entry(new FolderEntry{{}, nullptr});
    CopyField(entry->szName, sizeof entry->szName, pszName);
    m_Folders.Append(std::move(entry));
}

void CMailBox::AppendMessageEntry(const std::string& name) {
    m_Messages.Append(std::unique_ptr<MessageEntry>(new MessageEntry{name}));
}

int32_t CMailBox::LoadFolderEntries() {
    std::string pattern = ProfilePath(m_szPath, "*.box");
    try {
        qvp::FindData data;
        qvp::FindCloser find{qvp::FindFirst(pattern.c_str(), &data)};
        if (find.handle == nullptr) return 0;
        // Files and directories alike: a plain file named "*.box" is a folder
        // too, and fails when it is opened.
        do {
            AppendFolderEntry(data.name);
        } while (qvp::FindNext(find.handle, &data));
    } catch (...) {
        return -1;
    }
    return 0;
}

int32_t CMailFolder::OpenBox() {
    m_pParse = g_MessageLib.MT_Init();
    std::string entryIni = ProfilePath(m_szPath, "Entry.ini");
    uint32_t nTitle = qvp::ProfileString("Property", "Title", "", m_szName, sizeof m_szName,
                                         entryIni.c_str());
    if (nTitle == 0) {
        // Only the end of the path is tested: "myinbox.box" is an inbox too.
        if (EndsWithI(m_szPath, "inbox.box")) {
            CopyField(m_szName, sizeof m_szName, kInboxTitle);
        } else if (EndsWithI(m_szPath, "outbox.box")) {
            CopyField(m_szName, sizeof m_szName, kOutboxTitle);
        } else if (EndsWithI(m_szPath, "trash.box")) {
            CopyField(m_szName, sizeof m_szName, kTrashTitle);
            return LoadIndexFile();
        } else {
            return -10;
        }
    }
    qvp::FileCloser file{qvp::FileOpen(entryIni.c_str(), "rt")};
    if (file.handle == nullptr) return 0;  // an inbox or outbox without settings: empty
    // "Type=Subfolder" is matched as the first 14 bytes of any line, in any
    // section, case-sensitively.
    char szLine[512];
    while (qvp::FileGets(szLine, sizeof szLine, file.handle) != nullptr) {
        if (std::strncmp(szLine, kSubfolderLine, sizeof kSubfolderLine - 1) == 0) {
            qvp::FileClose(file.handle);
            file.handle = nullptr;
            return LoadFolderEntries();
        }
    }
    qvp::FileClose(file.handle);
    file.handle = nullptr;
    return LoadMessageList();
}

int32_t CMailFolder::LoadMessageList() {
    std::string entryLst = ProfilePath(m_szPath, "Entry.lst");
    qvp::FileCloser file{qvp::FileOpen(entryLst.c_str(), "rt")};
    if (file.handle == nullptr) return 0;
    try {
        CFileLineSource source(file.handle);
        ReadEntryLines(source, ParseEntryListLine,
                       [this](const std::string& name) { AppendMessageEntry(name); });
    } catch (const std::bad_alloc&) {
        return -2;
    } catch (const CMemoryException&) {
        return -2;
    } catch (...) {
        return -3;
    }
    return 0;
}

int32_t CMailFolder::LoadIndexFile() {
    qvp::FileCloser file{qvp::FileOpen(m_szPath, "rt")};
    if (file.handle == nullptr) return -1;
    // The entries are relative to the directory two levels up: for
    // "<mailbox>\<account>\trash.box" that is the mailbox directory.
    for (int i = 0; i < 2; ++i) {
        const char* pCut = qvdisc::LastBackslash(m_szPath);
        if (pCut == nullptr) break;
        m_szPath[pCut - m_szPath] = '\0';
    }
    CFileLineSource source(file.handle);
    ReadEntryLines(source, ParseIndexLine, [this](const std::string& name) { AppendMessageEntry(name); });
    return 0;
}

void CMailBox::ReleaseMainParts() {
    while (m_nMainParts != 0) {
        --m_nMainParts;
        MainPartEntry& part = m_aMainParts[m_nMainParts];
        for (int i = 0; i < 10; i += 2) {
            g_MessageLib.MT_Free(reinterpret_cast<void*>(part.aWords[i]));
        }
        part = MainPartEntry{};
    }
}

void CMailBox::ReleaseAttachments() {
    for (MT_WORD& w : m_aAttach) {
        g_MessageLib.MT_Free(reinterpret_cast<void*>(w));
        w = 0;
    }
}

// Into the kept buffer when the file fits; a buffer far larger than the
// file (after a huge message) is given back for one of the file's size.
void CMailBox::ReadText(qvp::File* file, size_t nSize) {
    m_nTextSize = 0;
    if (nSize + 1 > m_nTextCapacity || (m_nTextCapacity > kKeptText && nSize + 1 < m_nTextCapacity / 2)) {
        std::unique_ptr<char[]> text(new char[nSize + 1]);
        delete[] m_pText;
        m_pText = text.release();
        m_nTextCapacity = nSize + 1;
    }
    size_t nRead = qvp::FileRead(m_pText, nSize, file);
    // A read that failed gives nothing: half a message is not the message.
    if (qvp::FileError(file)) throw CFileException(qvp::kCauseHardIo);
    // A file that shrank since its length was taken gives what is there.
    m_pText[nRead] = '\0';
    m_nTextSize = static_cast<int32_t>(nRead);
}

int32_t CMailBox::SelectMessage(int32_t nIndex) {
    if (nIndex < 0 || nIndex >= m_Messages.Count()) return -1;
    // Until the new message stands, nothing is held: a failed load must not
    // let a later request take the previous message for this one.
    m_nCurrent = -1;
    // The path goes into a string the box keeps: a walk opens every message.
    m_strMessagePath.assign(m_szPath);
    m_strMessagePath += '\\';
    m_strMessagePath += MessageAt(nIndex)->sName;
    qvp::FileCloser file{qvp::FileOpen(m_strMessagePath.c_str(), "rb")};
    if (file.handle == nullptr) return kUnreadable;
    long nLength = qvp::FileLength(file.handle);
    if (nLength < 0) throw CFileException(qvp::kCauseGeneric);
    if (static_cast<unsigned long>(nLength) >= static_cast<unsigned long>(std::numeric_limits<int32_t>::max())) {
        throw CMemoryException();
    }
    ReadText(file.handle, static_cast<size_t>(nLength));
    qvp::FileClose(file.handle);
    file.handle = nullptr;

    ReleaseMainParts();
    g_MessageLib.MT_ParseMailText(m_pParse, m_pText, m_nTextSize);
    // The table has five slots; further main parts are left unread.
    MT_WORD pos = g_MessageLib.MT_GetMainHeadPosition(m_pParse);
    while (pos != 0 && m_nMainParts < kMainPartSlots) {
        MT_WORD* w = m_aMainParts[m_nMainParts].aWords;
        g_MessageLib.MT_GetMainNext(m_pParse, &pos, &w[0], &w[1], &w[2], &w[3], &w[4], &w[5], &w[6],
                                    &w[7], &w[8], &w[9], 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
        ++m_nMainParts;
    }
    ReleaseAttachments();
    MT_WORD* a = m_aAttach;
    m_nAttachResult = static_cast<int32_t>(g_MessageLib.MT_GetAttach(
        m_pParse, &a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &a[6], &a[7], &a[8], &a[9]));
    m_nCurrent = nIndex;
    return 0;
}

// 0 once the message of that index is held, else kUnreadable or -3.
int32_t CMailBox::Selected(int32_t nIndex) {
    if (nIndex == m_nCurrent && m_nCurrent >= 0) return 0;
    const int32_t nSelected = SelectMessage(nIndex);
    return nSelected == 0 ? 0 : nSelected == kUnreadable ? kUnreadable : -3;
}

CMailBox::LibraryText::~LibraryText() { g_MessageLib.MT_Free(pText); }

int32_t CMailBox::GetLibraryText(int32_t nIndex, bool bSubject, LibraryText* pText) {
    const int32_t nSelected = Selected(nIndex);
    if (nSelected != 0) return nSelected;
    char* p = nullptr;
    MT_WORD nLength = 0;
    MT_WORD ok = bSubject ? g_MessageLib.MT_GetSubjectD(m_pParse, &p, &nLength)
                          : g_MessageLib.MT_GetMessageIDD(m_pParse, &p, &nLength);
    if (ok == 0) {
        g_MessageLib.MT_Free(p);
        return -3;
    }
    pText->pText = p;
    pText->nLength = 0;
    if (p != nullptr && nLength > 0) {
        // The text runs up to its first zero byte.
        const void* pZero = std::memchr(p, 0, static_cast<size_t>(nLength));
        pText->nLength = pZero != nullptr ? static_cast<size_t>(static_cast<const char*>(pZero) - p)
                                          : static_cast<size_t>(nLength);
    }
    return 0;
}

int32_t CMailBox::GetSubject(int32_t nIndex, LibraryText* pText) { return GetLibraryText(nIndex, true, pText); }

int32_t CMailBox::GetMessageId(int32_t nIndex, LibraryText* pText) { return GetLibraryText(nIndex, false, pText); }

int32_t CMailBox::GetWholeText(int32_t nIndex, const char** ppText, size_t* pnLength) {
    const int32_t nSelected = Selected(nIndex);
    if (nSelected != 0) return nSelected;
    *ppText = m_pText;
    *pnLength = std::strlen(m_pText);
    return 0;
}

void CMailBox::ReleaseBox() {
    ReleaseAttachments();
    ReleaseMainParts();
    delete[] m_pText;
    m_pText = nullptr;
    m_nTextSize = 0;
    m_nTextCapacity = 0;
    std::string().swap(m_strMessagePath);
    m_nCurrent = -1;
    if (m_pParse != 0) {
        g_MessageLib.MT_Term(m_pParse);
        m_pParse = 0;
    }
    m_Folders.Clear();
    m_Messages.Clear();
}
