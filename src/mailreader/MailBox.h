// MailBox.h - the records of an account and of a mail folder, and the
// message each folder holds.
//
// An account and a folder share one record, CMailBox. Its entries are either
// sub-folder entries (an account, or a folder whose "Entry.ini" says
// "Type=Subfolder") or message entries (a folder with a message list or an
// index file), each a CMailList in file or listing order.
//
// A folder holds at most one message at a time: the whole file, parsed by
// the message library on the folder's parse root. The file's buffer is kept
// from message to message (a walk reads every message of a folder in turn)
// and given back when the folder closes.
#ifndef QV_MAILREADER_MAILBOX_H
#define QV_MAILREADER_MAILBOX_H

#include <cstdint>
#include <string>

#include "mailreader/MailList.h"
#include "sNqxMsgNet.h"

class CMailFolder;
namespace qvp {
struct File;
}

// What every record handle points at: the reader's name functions read these
// two fields of a user, an account or a folder alike.
struct CMailNamed {
    char m_szName[512];
    char m_szTitle[512];
};

struct FolderEntry {
    char szName[260];     // the listing's name, with ".box"
    CMailFolder* pFolder;  // the child once asked for; owned by the reader's chain
};

struct MessageEntry {
    std::string sName;  // file name with ".alm", relative to the box's path
};

// Ten words that MT_GetMainNext fills: five pairs of an owned text and a
// plain word.
struct MainPartEntry {
    MT_WORD aWords[10];
};

enum : int32_t { kMainPartSlots = 5, kAttachSlots = 10 };

class CMailBox : public CMailNamed {
public:
    CMailBox();
    ~CMailBox();  // not virtual: the names stay at the start of every record
    CMailBox(const CMailBox&) = delete;
    CMailBox& operator=(const CMailBox&) = delete;

    // Lists "*.box" below m_szPath into the folder entries. 0, or -1 when an
    // exception passed.
    int32_t LoadFolderEntries();
    void AppendFolderEntry(const char* pszName);
    void AppendMessageEntry(const std::string& name);

    // The message of one index, read and parsed once; -1 for an index out of
    // range, kUnreadable when its file cannot be opened (a list may name many
    // files that are gone: that answer costs no more than a read). Any other
    // failed read throws. A failure leaves no message held.
    static constexpr int32_t kUnreadable = -4;
    int32_t SelectMessage(int32_t nIndex);
    // 0, kUnreadable, or -3 when the message cannot be selected otherwise or
    // the library gives no text.
    // The text comes as the message library handed it out, up to its first
    // zero byte, and goes back to it with the holder.
    struct LibraryText {
        char* pText = nullptr;
        size_t nLength = 0;
        LibraryText() = default;
        ~LibraryText();
        LibraryText(const LibraryText&) = delete;
        LibraryText& operator=(const LibraryText&) = delete;
    };
    int32_t GetSubject(int32_t nIndex, LibraryText* pText);
    int32_t GetMessageId(int32_t nIndex, LibraryText* pText);
    // The held text up to its first zero byte, which follows it; valid until
    // the next message is selected.
    int32_t GetWholeText(int32_t nIndex, const char** ppText, size_t* pnLength);
    // Frees what the box holds: library texts, the parse root, the message,
    // the entries. The folders the entries point at are not touched.
    void ReleaseBox();

    int32_t FolderCount() const { return m_Folders.Count(); }
    int32_t MessageCount() const { return m_Messages.Count(); }
    // The entry at that index, or null outside the list.
    FolderEntry* FolderAt(int32_t nIndex) const { return m_Folders.At(nIndex); }
    const MessageEntry* MessageAt(int32_t nIndex) const { return m_Messages.At(nIndex); }

    char m_szPath[260];
    MainPartEntry m_aMainParts[kMainPartSlots];
    MT_WORD m_aAttach[kAttachSlots];
    char* m_pText;
    int32_t m_nTextSize;
    size_t m_nTextCapacity;
    MT_WORD m_pParse;
    int32_t m_nMainParts;
    int32_t m_nAttachResult;
    int32_t m_bMessagesOpen;
    int32_t m_nCurrent;

private:
    int32_t Selected(int32_t nIndex);
    void ReadText(qvp::File* file, size_t nSize);
    int32_t GetLibraryText(int32_t nIndex, bool bSubject, LibraryText* pText);
    void ReleaseMainParts();
    void ReleaseAttachments();

    std::string m_strMessagePath;
    CMailList<FolderEntry> m_Folders;
    CMailList<MessageEntry> m_Messages;
};

class CMailAccount : public CMailBox {};

class CMailFolder : public CMailBox {
public:
    // Settles the folder's form and reads its entries. 0, -1, -2, -3 or -10.
    int32_t OpenBox();
    // Reads "Entry.lst". 0, -2 (no entry could be made) or -3.
    int32_t LoadMessageList();
    // Reads the index file that m_szPath names; m_szPath then becomes the
    // directory two levels up. 0, or -1 when the file cannot be opened.
    int32_t LoadIndexFile();
};

// Copies a text into a fixed field, cut to fit and always terminated.
void CopyField(char* pField, size_t cbField, const char* pszText);

#endif  // QV_MAILREADER_MAILBOX_H
