// QvV4Utils.cpp - reader results to object results, and the delivery of a
// cached text into a host's buffer.
#include "QvImplCommon/QvITraceRecord.h"
#include "QvV4Wrapper/QvV4Utils.h"

int32_t QvV4MapError(int32_t nReaderResult) {
    if (nReaderResult == -2) return QV_E_ACCESS_DENIED;
    if (nReaderResult == -1) return QV_E_OUT_OF_MEMORY;
    if (nReaderResult == 0) return QV_S_OK;
    // The source and line of this record are fixed: they are part of the log.
    CQvITraceRecord("QvV4Wrapper/QvV4Utils", 43, QV_TRACE_INFO)
        .Text(u"V4 エラー (")
        .Signed(nReaderResult)
        .Text(u") を QV_E_UNEXPECTED に丸めた")
        .Write();
    return QV_E_UNEXPECTED;
}

int32_t QvV4CopyTextOut(const char16_t* pszText, QV_WCHAR* lpszName, uint32_t* lpcNameLen) {
    if (pszText == nullptr) pszText = u"";
    if (lpszName == nullptr) {
        uint32_t n = 0;
        while (pszText[n] != 0) ++n;
        *lpcNameLen = n;
        return QV_S_OK;
    }
    // As wcsncpy: a shorter text is followed by zeros up to the capacity.
    const uint32_t nCapacity = *lpcNameLen;
    uint32_t i = 0;
    for (; i < nCapacity && pszText[i] != 0; ++i) lpszName[i] = static_cast<QV_WCHAR>(pszText[i]);
    const uint32_t nLength = i;
    for (; i < nCapacity; ++i) lpszName[i] = 0;
    lpszName[nCapacity] = 0;
    *lpcNameLen = nLength;
    return QV_S_OK;
}
