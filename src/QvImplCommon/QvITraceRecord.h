// QvITraceRecord.h - one line of the trace log, built on the stack at the
// place of the event by chained typed appends and finished by Write().
//
// A line reads "[analyzer],level,time,source(line),message\r\n" in UTF-16LE.
// While logging is off a record costs one test of the analyzer and a test per
// append: no formatting, no allocation, not even its texts are made.
#ifndef QV_QVITRACERECORD_H
#define QV_QVITRACERECORD_H

#include <cstdint>
#include <optional>

#include "QvImplCommon/QvIAnalyzer.h"
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
    CQvITraceRecord(const char* pszSourcePath, int32_t nLine, int32_t nLevel)
        : m_nLine(nLine), m_nLevel(nLevel), m_bEnabled(CQvIAnalyzer::LogsNow() ? 1 : 0) {
        if (m_bEnabled) Begin(pszSourcePath);
    }

    // The tests of m_bEnabled are inline: a walk makes a dozen records per
    // message, and while logging is off each append is that test alone.
    CQvITraceRecord& Text(const char16_t* psz) {  // NULL adds "(NULL)"
        if (m_bEnabled) AppendText(psz);
        return *this;
    }
    CQvITraceRecord& Ascii(const char* psz) {  // 7-bit names of functions and parameters
        if (m_bEnabled) AppendAscii(psz);
        return *this;
    }
    CQvITraceRecord& Pointer(const void* p) {  // %p
        if (m_bEnabled) AppendPointer(p);
        return *this;
    }
    CQvITraceRecord& Unsigned(uint32_t n) {  // %lu
        if (m_bEnabled) AppendUnsigned(n);
        return *this;
    }
    CQvITraceRecord& Signed(int32_t n) {  // %ld
        if (m_bEnabled) AppendSigned(n);
        return *this;
    }
    CQvITraceRecord& Hex(const uint32_t& n) {  // %lx, attributes
        if (m_bEnabled) AppendHex(n);
        return *this;
    }
    CQvITraceRecord& Bool(const int32_t& b) {  // "TRUE" or "FALSE"
        if (m_bEnabled) AppendBool(b);
        return *this;
    }

    // Writes the line; a failure of the log file is swallowed here.
    void Write() {
        if (m_bEnabled) WriteLine();
    }

    bool IsEnabled() const { return m_bEnabled != 0; }

private:
    void Begin(const char* pszSourcePath);
    void AppendText(const char16_t* psz);
    void AppendAscii(const char* psz);
    void AppendPointer(const void* p);
    void AppendUnsigned(uint32_t n);
    void AppendSigned(int32_t n);
    void AppendHex(uint32_t n);
    void AppendBool(int32_t b);
    void WriteLine();

    // The line's texts, made only while logging is on.
    struct Texts {
        CQvWString strFile;
        CQvWString strMessage;
    };
    std::optional<Texts> m_texts;
    int32_t m_nLine;
    int32_t m_nLevel;
    int32_t m_bEnabled;
};

#endif  // QV_QVITRACERECORD_H
