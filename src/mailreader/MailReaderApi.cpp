// MailReaderApi.cpp - the eighteen flat functions of the mail reader.
//
// Each tests the reader handle and calls into the reader behind one barrier
// that turns whatever is raised into a result: nothing but a result code
// leaves this file.
#include <cstdlib>
#include <cstring>
#include <new>

#include "QvV4Value/QvBarrier.h"
#include "mailreader/CMailReader.h"
#include "mailreader/MailReader.h"
#include "mailreader/MailReaderApi.h"
#include "platform/platform.h"

const char kMailHandleTag[] = "CMLNOA User Handle";

namespace {

const char kMailerName[] = "AL-Mail32";
const char kRootName[] = "ROOT";

// The record handle that names the root of the tree rather than a record.
MAILRECORD_HANDLE RootToken(const MailReaderHandle* pHandle) {
    return reinterpret_cast<MAILRECORD_HANDLE>(pHandle->nRootToken);
}

MailReaderHandle* AsHandle(MAILREADER_HANDLE h) { return static_cast<MailReaderHandle*>(h); }

CMailNamed* AsNamed(MAILRECORD_HANDLE h) { return static_cast<CMailNamed*>(h); }
CMailUser* AsUser(MAILRECORD_HANDLE h) { return static_cast<CMailUser*>(AsNamed(h)); }
CMailBox* AsBox(MAILRECORD_HANDLE h) { return static_cast<CMailBox*>(AsNamed(h)); }
MAILRECORD_HANDLE ToHandle(CMailNamed* p) { return p; }

// A record handle that points at the tag text stands for the root token.
MAILRECORD_HANDLE TagTest(const MailReaderHandle* pHandle, MAILRECORD_HANDLE hRecord) {
    if (hRecord != nullptr && hRecord != RootToken(pHandle) &&
        std::strcmp(static_cast<const char*>(hRecord), kMailHandleTag) == 0) {
        return RootToken(pHandle);
    }
    return hRecord;
}

int32_t FetchName(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hRecord, bool bTitle, QvV4Value* pValue) {
    MailReaderHandle* pHandle = AsHandle(hReader);
    if (pHandle == nullptr) return -3;
    return Barrier(-2, -2, [&]() -> int32_t {
        if (hRecord == nullptr) return -2;
        std::string text;
        if (hRecord == RootToken(pHandle)) {
            text = kRootName;
        } else {
            const CMailNamed* pNamed = AsNamed(hRecord);
            text = bTitle ? pNamed->m_szTitle : pNamed->m_szName;
            if (text.empty()) return -3;
        }
        // Only the escaping tells a lack of memory apart.
        std::string escaped;
        const int32_t nEscape = Barrier(-1, -2, [&] {
            escaped = EscapeRecordName(text);
            return 0;
        });
        return nEscape != 0 ? nEscape : QvV4Value_FromString(escaped, pValue);
    });
}

enum class MessageText { Subject, MessageId, Whole };

int32_t FetchMessageText(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder, int32_t nIndex,
                         MessageText what, QvV4Value* pValue) {
    if (hReader == nullptr) return -3;
    // Each text goes into the record from where it lies: the whole text from
    // the folder's buffer, the others from the message library's own texts.
    CMailBox::LibraryText library;
    const char* pText = nullptr;
    size_t nLength = 0;
    int32_t nResult = Barrier(CMailBox::kUnreadable, CMailBox::kUnreadable, [&]() -> int32_t {
        if (hFolder == nullptr) return CMailBox::kUnreadable;
        CMailBox* pBox = AsBox(hFolder);
        switch (what) {
            case MessageText::Subject: return pBox->GetSubject(nIndex, &library);
            case MessageText::MessageId: return pBox->GetMessageId(nIndex, &library);
            default: return pBox->GetWholeText(nIndex, &pText, &nLength);
        }
    });
    // A message that cannot be read: the subject is -3, the others -2.
    if (nResult == CMailBox::kUnreadable) nResult = what == MessageText::Subject ? -3 : -2;
    if (nResult != 0) return nResult;
    if (what != MessageText::Whole) {
        pText = library.pText;
        nLength = library.nLength;
    }
    return QvV4Value_FromBytes(pText, nLength, pValue);
}

}  // namespace

std::string EscapeRecordName(const std::string& name) {
    // Three bytes out for each byte in at most, and a terminator.
    std::string buffer(name.size() * 3 + 2, '\0');
    size_t o = 0;
    const char* p = name.c_str();
    size_t n = name.size();
    for (size_t i = 0; i < n; ++i) {
        unsigned char c = static_cast<unsigned char>(p[i]);
        if (qvp::IsDBCSLeadByte(c)) {
            // The trail byte goes with it untouched; a lead byte at the end
            // takes the terminator along, which ends the text there.
            buffer[o++] = p[i];
            buffer[o++] = p[i + 1];
            ++i;
        } else if (c == '#') {
            buffer.replace(o, 3, "%23");
            o += 3;
        } else if (c == '/') {
            buffer.replace(o, 3, "%2f");
            o += 3;
        } else if (c == '\\') {
            buffer.replace(o, 3, "%5c");
            o += 3;
        } else {
            buffer[o++] = p[i];
        }
    }
    buffer.resize(std::strlen(buffer.c_str()));
    return buffer;
}

int32_t MailReader_IsInstalled(int32_t* pbInstalled) {
    return Barrier(-2, -2, [&]() -> int32_t {
        CMailReader* pReader = nullptr;
        int32_t nResult = OpenReader(&pReader);
        if (nResult != 0) return nResult;
        int32_t bInstalled = pReader->IsInstalled();
        CloseReader(pReader);
        if (pbInstalled != nullptr) *pbInstalled = bInstalled;
        return 0;
    });
}

int32_t MailReader_Open(MAILREADER_HANDLE* phReader) {
    if (phReader == nullptr) return -3;
    *phReader = nullptr;
    CMailReader* pReader = nullptr;
    return Barrier(-2, -2, [&]() -> int32_t {
        int32_t nResult = OpenReader(&pReader);
        if (nResult != 0) return nResult;
        // A reader that gets no handle is closed here: nobody else could.
        if (pReader->MakeTempPath() != 0) {
            CloseReader(pReader);
            return -3;
        }
        size_t nTag = sizeof kMailHandleTag - 1;
        char* pszTag = static_cast<char*>(qvp::Calloc(nTag + 5, 1));
        if (pszTag == nullptr) {
            CloseReader(pReader);
            return -1;
        }
        std::memcpy(pszTag, kMailHandleTag, nTag);
        MailReaderHandle* pHandle = new (std::nothrow) MailReaderHandle{pReader, pszTag, -1};
        if (pHandle == nullptr) {
            qvp::Free(pszTag);
            CloseReader(pReader);
            return -3;
        }
        *phReader = pHandle;
        return 0;
    }, [&] {
        if (pReader != nullptr) CloseReader(pReader);
    });
}

int32_t MailReader_Close(MAILREADER_HANDLE hReader) {
    MailReaderHandle* pHandle = AsHandle(hReader);
    if (pHandle == nullptr) return -3;
    qvp::Free(pHandle->pszTag);
    pHandle->pszTag = nullptr;
    int32_t nResult = CloseReader(pHandle->pReader);
    delete pHandle;
    return nResult;
}

int32_t MailReader_GetMailerName(MAILREADER_HANDLE hReader, QvV4Value* pValue) {
    if (hReader == nullptr) return -3;
    return Barrier(-1, -1, [&] { return QvV4Value_FromString(std::string(kMailerName), pValue); });
}

int32_t MailReader_GetName(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hRecord, QvV4Value* pValue) {
    return FetchName(hReader, hRecord, false, pValue);
}

int32_t MailReader_GetDisplayName(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hRecord, QvV4Value* pValue) {
    return FetchName(hReader, hRecord, true, pValue);
}

int32_t MailReader_GetUserCount(MAILREADER_HANDLE hReader, int32_t* pnCount) {
    // The caller must pass a reader; a null one gets an answer all the same.
    if (hReader == nullptr) return -3;
    *pnCount = AsHandle(hReader)->pReader->UserCount();
    return 0;
}

int32_t MailReader_GetUser(MAILREADER_HANDLE hReader, int32_t nIndex, MAILRECORD_HANDLE* phUser) {
    if (hReader == nullptr) return -3;
    return Barrier(-2, -2, [&] {
        CMailUser* pUser = nullptr;
        int32_t nResult = AsHandle(hReader)->pReader->GetUser(nIndex, &pUser);
        *phUser = pUser != nullptr ? ToHandle(pUser) : nullptr;
        return nResult;
    });
}

int32_t MailReader_GetAccountCount(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hUser, int32_t* pnCount) {
    if (hReader == nullptr) return -3;
    if (hUser == nullptr) return -2;
    *pnCount = AsUser(hUser)->AccountCount();
    return 0;
}

int32_t MailReader_GetAccount(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hUser, int32_t nIndex,
                              MAILRECORD_HANDLE* phAccount) {
    if (hReader == nullptr) return -3;
    return Barrier(-2, -2, [&]() -> int32_t {
        if (hUser == nullptr) return -2;
        CMailAccount* pAccount = nullptr;
        int32_t nResult = AsUser(hUser)->GetAccount(nIndex, &pAccount);
        *phAccount = pAccount != nullptr ? ToHandle(pAccount) : nullptr;
        return nResult;
    });
}

int32_t MailReader_GetFolderCount(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hBox, int32_t* pnCount) {
    if (hReader == nullptr) return -3;
    MailReaderHandle* pHandle = AsHandle(hReader);
    hBox = TagTest(pHandle, hBox);
    // The root token names no box: it has no folders to count.
    if (hBox == nullptr || hBox == RootToken(pHandle)) return -3;
    *pnCount = AsBox(hBox)->FolderCount();
    return 0;
}

int32_t MailReader_GetFolder(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hBox, int32_t nIndex,
                             MAILRECORD_HANDLE* phFolder) {
    if (hReader == nullptr) return -3;
    MailReaderHandle* pHandle = AsHandle(hReader);
    hBox = TagTest(pHandle, hBox);
    if (hBox == nullptr || hBox == RootToken(pHandle)) return -2;
    CMailFolder* pFolder = nullptr;
    int32_t nResult =
        Barrier(-2, -2, [&] { return pHandle->pReader->GetFolder(AsBox(hBox), nIndex, &pFolder); });
    if (pFolder != nullptr) *phFolder = ToHandle(pFolder);
    return nResult;
}

int32_t MailReader_OpenMessages(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder) {
    if (hReader == nullptr) return -3;
    if (hFolder == nullptr) return -3;
    AsBox(hFolder)->m_bMessagesOpen = 1;
    return 0;
}

int32_t MailReader_CloseMessages(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder) {
    if (hReader == nullptr) return -3;
    if (hFolder == nullptr) return -3;
    AsBox(hFolder)->m_bMessagesOpen = 0;
    return 0;
}

int32_t MailReader_GetMessageCount(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder, int32_t* pnCount) {
    if (hReader == nullptr) return -3;
    if (hFolder == nullptr) return -3;
    *pnCount = AsBox(hFolder)->MessageCount();
    return 0;
}

int32_t MailReader_GetSubject(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder, int32_t nIndex,
                              QvV4Value* pValue) {
    return FetchMessageText(hReader, hFolder, nIndex, MessageText::Subject, pValue);
}

int32_t MailReader_GetMessageId(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder, int32_t nIndex,
                                QvV4Value* pValue) {
    return FetchMessageText(hReader, hFolder, nIndex, MessageText::MessageId, pValue);
}

int32_t MailReader_GetMessageText(MAILREADER_HANDLE hReader, MAILRECORD_HANDLE hFolder, int32_t nIndex,
                                  QvV4Value* pValue) {
    return FetchMessageText(hReader, hFolder, nIndex, MessageText::Whole, pValue);
}
