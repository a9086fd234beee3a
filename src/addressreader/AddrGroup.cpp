// AddrGroup.cpp - the address file parser and the group that it fills.
#include "addressreader/AddrGroup.h"

#include <cstring>
#include <vector>

#include "addressreader/AddrBook.h"

namespace {

// Does the text begin with the keyword, in any case of ASCII letters?
bool StartsWithKeyword(const char* psz, const char* pszKeyword) {
    for (; *pszKeyword != '\0'; ++psz, ++pszKeyword) {
        char c = *psz;
        char k = *pszKeyword;
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        if (k >= 'a' && k <= 'z') k = static_cast<char>(k - 'a' + 'A');
        if (c != k) return false;  // also at the text's end
    }
    return true;
}

// The separator of an entry line: the first colon that a blank follows.
char* FindSeparator(char* psz) {
    for (; *psz != '\0'; ++psz) {
        if (psz[0] == ':' && psz[1] == ' ') return psz;
    }
    return nullptr;
}

}  // namespace

CAddrGroup::CAddrGroup(const char* pszName) : m_pszName(AddrCopyText(pszName)) {}

CAddrGroup::~CAddrGroup() {
    // Groups nest as deep as a file says, so they are not destroyed by
    // recursion: the subgroups of every group on the way are moved onto one
    // pending chain of list nodes first, and a group is destroyed only when
    // it has no subgroups left. Moving nodes needs no memory.
    using Node = CAddrList<CAddrGroup>::Node;
    Node* pLast = nullptr;
    Node* pPending = m_Groups.DetachChain(&pLast);
    while (pPending != nullptr) {
        Node* pNode = pPending;
        pPending = pNode->pNext;
        CAddrGroup* pGroup = pNode->pEntry;
        delete pNode;
        Node* pChain = pGroup->m_Groups.DetachChain(&pLast);
        if (pChain != nullptr) {
            pLast->pNext = pPending;
            pPending = pChain;
        }
        delete pGroup;
    }
    for (const auto* p = m_Items.Head(); p != nullptr; p = p->pNext) delete p->pEntry;
}

void CAddrGroup::AddItem(const char* pszKey, const char* pszValue, CAddrBook& book) {
    std::unique_ptr<CAddrItem> item(new CAddrItem(pszKey, pszValue));
    m_Items.Append(item.get());
    book.AddItem(item.release());
}

int32_t CAddrGroup::AddEntry(const char* pszKey, char* pszValue, CAddrBook& book) {
    if (std::strchr(pszValue, ',') == nullptr) {
        AddItem(pszKey, pszValue, book);
        return 0;
    }
    // Several addresses under one heading: a subgroup named by the heading,
    // one item per piece. An empty piece before a comma is an item with an
    // empty address; a comma at the very end makes none.
    CAddrGroup* pSub = AddGroup(pszKey);
    char* pszPiece = pszValue;
    for (char* pszComma; (pszComma = std::strchr(pszPiece, ',')) != nullptr; pszPiece = pszComma + 1) {
        *pszComma = '\0';
        pSub->AddItem(pszKey, pszPiece, book);
    }
    if (*pszPiece != '\0') pSub->AddItem(pszKey, pszPiece, book);
    return 0;
}

int32_t CAddrGroup::ParseFile(CLineSource& source, CAddrBook& book) {
    std::unique_ptr<char[]> buffer(new char[kLineBufferSize]);
    char* const pszLine = buffer.get();
    // The groups that are open, this one at the bottom; lines go to the top.
    std::vector<CAddrGroup*> open(1, this);
    for (;;) {
        if (source.Gets(pszLine, kLineBufferSize) == nullptr) return -1;
        size_t cb = std::strlen(pszLine);
        // Only a line feed is cut: the last piece of a file without a final
        // line feed, or a piece of a longer line, keeps its last byte.
        if (cb > 0 && pszLine[cb - 1] == '\n') pszLine[--cb] = '\0';
        char* psz = pszLine;
        while (AddrIsSpace(*psz)) ++psz;
        if (*psz == '\0') continue;

        CAddrGroup* pCurrent = open.back();
        if (StartsWithKeyword(psz, "Group")) {
            const char* pszName = psz[5] != '\0' ? psz + 6 : "";
            open.push_back(pCurrent->AddGroup(pszName));
            continue;
        }
        if (StartsWithKeyword(psz, "End Group")) {
            open.pop_back();
            if (open.empty()) return 0;
            continue;
        }
        if (StartsWithKeyword(psz, "Separator")) continue;

        char* pszValue = pszLine + cb;  // the empty text at the line's end
        if (char* pszSep = FindSeparator(psz)) {
            *pszSep = '\0';
            pszValue = pszSep + 2;
        }
        pCurrent->AddEntry(psz, pszValue, book);
    }
}

int32_t CAddrGroup::GetName(QvV4Value* pValue) {
    return QvV4Value_FromText(pValue, m_pszName.get());
}
