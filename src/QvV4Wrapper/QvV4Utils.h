// QvV4Utils.h - where the tree objects meet the readers' results: reader
// results to object results, and a cached text into a host's buffer.
#ifndef QV_QVV4UTILS_H
#define QV_QVV4UTILS_H

#include <cstdint>

#include "tqnralm.h"

// Reader result to object result; an unmapped result is traced.
int32_t QvV4MapError(int32_t nReaderResult);

// Delivers a cached 16-bit text into a host's buffer (wcsncpy semantics).
int32_t QvV4CopyTextOut(const char16_t* pszText, QV_WCHAR* lpszName, uint32_t* lpcNameLen);

#endif  // QV_QVV4UTILS_H
