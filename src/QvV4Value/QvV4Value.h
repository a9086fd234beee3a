// QvV4Value.h - the record by which a reader hands a text to its receiver.
// It sits below both readers and the tree objects, which share it.
//
// Reader results: 0 success, -1 no memory, -2 a failure stopped at a barrier,
// -3 not there or bad handle.
#ifndef QV_QVV4VALUE_H
#define QV_QVV4VALUE_H

#include <cstddef>
#include <cstdint>
#include <string>

// Text forms of nKind.
enum : uint32_t { QV_V4_KIND_TEXT8 = 1, QV_V4_KIND_TEXT16 = 2 };

// Lives by value; whoever holds it owns pData while pfnFree is set. pData set
// with pfnFree 0 is a static text that is never released.
struct QvV4Value {
    void (*pfnFree)(void* pData);
    uint32_t nKind;
    uint32_t nSize;
    void* pData;
};

void QvV4Value_Init(QvV4Value* pValue);
void QvV4Value_SetKind(QvV4Value* pValue, uint32_t nKind);
void QvV4Value_Release(QvV4Value* pValue);

// The address side's fill: from a zero-ended 8-bit text (not null); kind 2
// converts from the process's default code page. Result 0, -1 or -3.
int32_t QvV4Value_FromText(QvV4Value* pValue, const char* pszText);
// The mail side's fill: from an 8-bit string of known length; kind 2
// converts strictly from code page 932. Result 0, -1 or -3.
int32_t QvV4Value_FromString(const std::string& str, QvV4Value* pValue);
// The same from nLength bytes (a message's whole text or a library's text,
// handed on without a string of their own); kind 2 reads them up to the
// first zero byte.
int32_t QvV4Value_FromBytes(const char* pText, size_t nLength, QvV4Value* pValue);

#endif  // QV_QVV4VALUE_H
