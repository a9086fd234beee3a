// QvV4MailFolder.h - a mail folder (class 5), a message (class 6) and the
// enumerators of an account's and a folder's children. A message holds only
// its index: everything else lies in the reader's folder entry.
#ifndef QV_QVV4MAILFOLDER_H
#define QV_QVV4MAILFOLDER_H

#include "QvV4Wrapper/QvV4Lazy.h"

class CQvV4MailMessage;

class CQvV4MailFolder : public CQvIMailFolder {
public:
    explicit CQvV4MailFolder(CQvIObject* pParent);
    ~CQvV4MailFolder() override;

    void OnChildDisposed(CQvIObject* pChild) override;
    int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetAttributes(uint32_t* pdwAttribute) override;
    int32_t GetChildCount(int32_t nClass, int32_t* pnChildCount) override;
    int32_t CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) override;

    void Bind(void* hFolder, int32_t nIndex) {
        m_hFolder = hFolder;
        m_nIndex = nIndex;
    }
    int32_t GetFolderAt(int32_t nIndex, CQvIObject** ppChild);
    int32_t GetMessageAt(int32_t nIndex, CQvIObject** ppChild);
    int32_t OpenMessages();

    void* m_hFolder = nullptr;
    int32_t m_nIndex = -1;

private:
    friend class CQvV4MailMessage;  // hands itself back as the spare
    int32_t FetchFolderCount();
    int32_t FetchMessageCount();

    QvV4Value m_valName;
    CQvV4MailFolder** m_ppFolders = nullptr;
    int32_t m_nFolderCount = -1;
    CQvV4MailMessage** m_ppMessages = nullptr;
    int32_t m_nMessageCount = -1;
    // A disposed message kept for the next: a walk makes and disposes one
    // message object per message.
    CQvV4MailMessage* m_pSpareMessage = nullptr;
    int32_t m_bMessagesOpen = 0;
};

class CQvV4MailMessage : public CQvIMailMessage {
public:
    explicit CQvV4MailMessage(CQvIObject* pParent);
    ~CQvV4MailMessage() override;

    int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetData(QV_MAIL_DATA* pMailData) override;
    // Hands the object back to its folder, which keeps one for the next
    // message; its parent's reference goes as before.
    void OnFinalRelease() override;

    void Bind(int32_t nIndex) { m_nIndex = nIndex; }

    int32_t m_nIndex = -1;

private:
    friend class CQvV4MailFolder;
    template <typename ReaderText>
    int32_t FetchText(QvV4Value& val, QV_WCHAR* lpszName, uint32_t* lpcNameLen, ReaderText readerText);
    CQvV4MailFolder* Folder() const { return static_cast<CQvV4MailFolder*>(GetParent()); }

    QvV4Value m_valMessageId;
    QvV4Value m_valSubject;
};

using CQvV4FolderChildObjects =
    CQvV4KindObjects<CQvV4MailFolder, &CQvV4MailFolder::GetFolderAt, &CQvV4MailFolder::GetMessageAt>;

#endif  // QV_QVV4MAILFOLDER_H
