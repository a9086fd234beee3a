// QvITraceRecord.h - one line of the trace log, built on the stack at the
// place of the event by chained typed appends and finished by Write().
//
// A line reads "[analyzer],level,time,source(line),message\r\n" in UTF-16LE.
// While logging is off a record costs one test of the analyzer and a test per
// append: no formatting, no allocation.
#ifndef QV_QVITRACERECORD_H
#define QV_QVITRACERECORD_H

#include <cstdint>

#include "QvImplCommon/QvWString.h"

enum : int32_t {
    QV_TRACE_ERROR = 1,
    QV_TRACE_INFO = 3,
    QV_TRACE_BEGIN = 4,
    QV_TRACE_END = 5,
    QV_TRACE_REFCOUNT = 6,
};

class CQvITraceRecord {
public:
    // pszSourcePath: the source as a path; the line shows its last component.
    CQvITraceRecord(const char* pszSourcePath, int32_t nLine, int32_t nLevel);
    virtual ~CQvITraceRecord() = default;

    CQvITraceRecord& Text(const char16_t* psz);      // NULL adds "(NULL)"
    CQvITraceRecord& Ascii(const char* psz);         // 7-bit names of functions and parameters
    CQvITraceRecord& Pointer(const void* p);         // %p
    CQvITraceRecord& Unsigned(uint32_t n);           // %lu
    CQvITraceRecord& Signed(int32_t n);              // %ld
    CQvITraceRecord& Hex(const uint32_t& n);         // %lx, attributes
    CQvITraceRecord& Bool(const int32_t& b);         // "TRUE" or "FALSE"

    // Writes the line; a failure of the log file is swallowed here.
    void Write();

    bool IsEnabled() const { return m_bEnabled != 0; }

private:
    CQvWString m_strFile;
    int32_t m_nLine;
    int32_t m_nLevel;
    CQvWString m_strMessage;
    int32_t m_bEnabled;
};

#endif  // QV_QVITRACERECORD_H
