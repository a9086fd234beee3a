// QvV4Value.cpp - the record by which readers hand out texts, and its two
// fills: the address side's from a zero-ended text in the default code page,
// the mail side's from a string of known length in strict code page 932.
// The two differ on purpose in sizes, zeroing and failure behaviour.
#include "QvV4Value/QvV4Value.h"

#include <cstdlib>
#include <cstring>

#include "QvV4Value/QvTextBlocks.h"
#include "platform/platform.h"

namespace {
// Both fills hand out malloc'd texts; free accepts 0 as well.
void FreeText(void* p) { qvp::Free(p); }

// A text being filled: freed unless kept, so that a conversion that throws
// (out of memory) leaves nothing behind.
struct PendingText {
    void* p;
    ~PendingText() { qvp::Free(p); }
    void* Keep() {
        void* kept = p;
        p = nullptr;
        return kept;
    }
};

// Kind 2 of the empty text: one zero unit.
int32_t EmptyWide(QvV4Value* pValue) {
    void* p = qvp::Calloc(2, 1);
    if (p == nullptr) return -1;
    pValue->pfnFree = FreeText;
    pValue->nSize = 2;
    pValue->pData = p;
    return 0;
}

// Kind 2: strict code page 932; an invalid sequence fails the whole text.
// The source is read up to its first zero byte, or its length. Plain ASCII
// (most message ids) widens as it is, without the converter's own string.
int32_t FromBytesWide(const char* pText, size_t nLength, QvV4Value* pValue) {
    // nLength + 1 units, zero past the text.
    PendingText text{qvp::Malloc(2 * nLength + 2)};
    char16_t* p = static_cast<char16_t*>(text.p);
    if (p == nullptr) return -1;
    size_t i = 0;
    while (i < nLength && pText[i] != '\0' && static_cast<unsigned char>(pText[i]) < 0x80) {
        p[i] = static_cast<char16_t>(pText[i]);
        ++i;
    }
    std::memset(p + i, 0, 2 * (nLength + 1 - i));
    if (i < nLength && pText[i] != '\0') {
        // The rest from the first byte above ASCII: the ASCII before it is
        // whole characters, already widened.
        const char* pZero = static_cast<const char*>(std::memchr(pText + i, 0, nLength - i));
        const size_t nText = pZero != nullptr ? static_cast<size_t>(pZero - pText) : nLength;
        const int nDone = qvp::MultiByteToWideChar(qvp::kCp932, qvp::kMbErrInvalidChars, pText + i,
                                                   static_cast<int>(nText - i), p + i,
                                                   static_cast<int>(nLength + 1 - i));
        if (nDone == 0) return -3;
    }
    pValue->pfnFree = FreeText;
    pValue->nSize = static_cast<uint32_t>(2 * nLength);
    pValue->pData = text.Keep();
    return 0;
}
}  // namespace

void QvV4Value_Init(QvV4Value* pValue) {
    pValue->pfnFree = nullptr;
    pValue->nKind = QV_V4_KIND_TEXT8;
    pValue->nSize = 0;
    pValue->pData = nullptr;
}

void QvV4Value_SetKind(QvV4Value* pValue, uint32_t nKind) { pValue->nKind = nKind; }

void QvV4Value_Release(QvV4Value* pValue) {
    if (pValue->pData == nullptr || pValue->pfnFree == nullptr) return;
    pValue->pfnFree(pValue->pData);
    pValue->pfnFree = nullptr;
    pValue->pData = nullptr;
}

int32_t QvV4Value_FromText(QvV4Value* pValue, const char* pszText) {
    pValue->pfnFree = FreeText;
    if (pValue->nKind == QV_V4_KIND_TEXT8) {
        size_t n = std::strlen(pszText) + 1;
        pValue->nSize = static_cast<uint32_t>(n);
        void* p = qvp::Malloc(n);
        if (p == nullptr) return -1;
        std::memcpy(p, pszText, n);
        pValue->pData = p;
        return 0;
    }
    if (pValue->nKind == QV_V4_KIND_TEXT16) {
        // The default code page, without an error test.
        int nWide = qvp::MultiByteToWideChar(qvp::kCpAcp, 0, pszText, -1, nullptr, 0);
        if (nWide <= 0) nWide = 1;
        pValue->nSize = static_cast<uint32_t>(nWide) * 2;
        PendingText text{qvp::Malloc(pValue->nSize)};
        char16_t* p = static_cast<char16_t*>(text.p);
        if (p == nullptr) return -1;
        int nDone = qvp::MultiByteToWideChar(qvp::kCpAcp, 0, pszText, -1, p, nWide);
        p[nDone > 0 ? nDone - 1 : 0] = 0;
        pValue->pData = text.Keep();
        return 0;
    }
    pValue->nSize = 0;
    pValue->pData = nullptr;
    return -3;
}

int32_t QvV4Value_FromString(const std::string& str, QvV4Value* pValue) {
    return QvV4Value_FromBytes(str.c_str(), str.size(), pValue);
}

int32_t QvV4Value_FromBytes(const char* pText, size_t nLength, QvV4Value* pValue) {
    if (pValue->nKind == QV_V4_KIND_TEXT16) return nLength == 0 ? EmptyWide(pValue) : FromBytesWide(pText, nLength, pValue);
    // Kind 1, and any other kind alike: the bytes and two zero bytes, in a
    // text block (a message's whole text goes to the host in these).
    char* p = static_cast<char*>(QvTextBlock_Take(nLength + 2));
    if (p == nullptr) return -1;
    if (nLength != 0) std::memcpy(p, pText, nLength);
    p[nLength] = p[nLength + 1] = '\0';
    pValue->pfnFree = QvTextBlock_Free;
    // The empty text's record is its two zero bytes.
    pValue->nSize = static_cast<uint32_t>(nLength != 0 ? nLength : 2);
    pValue->pData = p;
    return 0;
}
