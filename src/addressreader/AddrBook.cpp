// AddrBook.cpp - an address book and its loading from the files of a
// mailbox directory.
#include "addressreader/AddrBook.h"

#include <cstring>
#include <string>
#include <vector>

#include "platform/Closer.h"
#include "platform/platform.h"

const char kAddrBookName[] = "\x83\x41\x83\x68\x83\x8C\x83\x58\x92\xA0";
const char kAddrDefaultGroupName[] = "\x95\x57\x8F\x80\x82\xCC\x83\x41\x83\x68\x83\x8C\x83\x58\x92\xA0";

namespace {

// The file name with its extension: what follows the last "\" or "/" of the
// path. A 0x5C that is the second byte of a Shift-JIS character is no
// separator.
const char* FileNamePart(const char* pszPath) {
    const char* pszName = pszPath;
    for (const char* p = pszPath; *p != '\0'; ++p) {
        if (qvp::IsDBCSLeadByte(static_cast<unsigned char>(*p))) {
            if (p[1] == '\0') break;
            ++p;
        } else if (*p == '\\' || *p == '/') {
            pszName = p + 1;
        }
    }
    return pszName;
}

}  // namespace

CAddrBook::CAddrBook(const char* pszDirectory) : m_pszDirectory(AddrCopyText(pszDirectory)) {}

CAddrBook::~CAddrBook() {
    // The flat list's nodes go with the list; its items belong to the groups.
    for (const auto* p = m_Groups.Head(); p != nullptr; p = p->pNext) delete p->pEntry;
}

int32_t CAddrBook::AddItem(CAddrItem* pItem) {
    int32_t nIndex = m_Items.Count();
    m_Items.Append(pItem);
    pItem->m_nBookIndex = nIndex;
    return 0;
}

CAddrGroup* CAddrBook::ReadFile(const char* pszGroupName, CLineSource& source) {
    CAddrGroup* pGroup = AddGroup(pszGroupName);
    pGroup->ParseFile(source, *this);
    return pGroup;
}

void CAddrBook::ReadPath(const char* pszPath, const char* pszGroupName) {
    qvp::File* pFile = qvp::FileOpen(pszPath, "rt");
    if (pFile == nullptr) return;
    qvp::FileCloser closer{pFile};
    CFileLineSource source(pFile);
    ReadFile(pszGroupName, source);
}

int32_t CAddrBook::Load() {
    const std::string directory(m_pszDirectory.get());
    ReadPath((directory + "\\Address").c_str(), kAddrDefaultGroupName);

    const std::string ini = directory + "\\Mailbox.ini";
    std::vector<char> list(kListBufferSize);
    uint32_t cb = qvp::ProfileString("Property", "AddressFile", "", list.data(), kListBufferSize, ini.c_str());
    if (cb == kListBufferSize - 1) {
        // The value filled the buffer: read it once more into the large one,
        // and take what that gives, cut or not.
        list.assign(kLargeListBufferSize, '\0');
        qvp::ProfileString("Property", "AddressFile", "", list.data(), kLargeListBufferSize, ini.c_str());
    } else if (cb <= 1) {
        return 0;  // a single byte names no list
    }

    // Entries separated by ";", a run of them counting as one. The first entry
    // is passed over when it begins with "*"; later ones are tried as paths.
    bool bFirst = true;
    char* p = list.data();
    for (;;) {
        while (*p == ';') ++p;
        if (*p == '\0') break;
        char* pszEntry = p;
        while (*p != '\0' && *p != ';') ++p;
        bool bLast = *p == '\0';
        *p = '\0';
        if (!(bFirst && pszEntry[0] == '*')) ReadPath(pszEntry, FileNamePart(pszEntry));
        bFirst = false;
        if (bLast) break;
        ++p;
    }
    return 0;
}

int32_t CAddrBook::GetName(QvV4Value* pValue) {
    return QvV4Value_FromText(pValue, kAddrBookName);
}
