// QvITraceRecord.cpp - the trace record builder and the line format.
#include "QvImplCommon/QvITraceRecord.h"

#include "QvV4Value/QvExceptions.h"
#include "QvImplCommon/QvIAnalyzer.h"
#include "platform/platform.h"

void CQvITraceRecord::Begin(const char* pszSourcePath) {
    m_texts.emplace();
    // The line shows what follows the last separator of the path.
    const char* pszBase = pszSourcePath;
    for (const char* p = pszSourcePath; *p != '\0'; ++p) {
        if (*p == '\\' || *p == '/') pszBase = p + 1;
    }
    m_texts->strFile.AppendAscii(pszBase);
}

void CQvITraceRecord::AppendText(const char16_t* psz) { m_texts->strMessage.Append(psz != nullptr ? psz : u"(NULL)"); }

void CQvITraceRecord::AppendAscii(const char* psz) { m_texts->strMessage.AppendAscii(psz); }

void CQvITraceRecord::AppendPointer(const void* p) { m_texts->strMessage.AppendFormat("%p", p); }

void CQvITraceRecord::AppendUnsigned(uint32_t n) { m_texts->strMessage.AppendFormat("%lu", n); }

void CQvITraceRecord::AppendSigned(int32_t n) { m_texts->strMessage.AppendFormat("%ld", n); }

void CQvITraceRecord::AppendHex(uint32_t n) { m_texts->strMessage.AppendFormat("%lx", n); }

void CQvITraceRecord::AppendBool(int32_t b) { m_texts->strMessage.Append(b != 0 ? u"TRUE" : u"FALSE"); }

void CQvITraceRecord::WriteLine() {
    CQvIAnalyzer* pAnalyzer = CQvIAnalyzer::GetInstance();
    if (pAnalyzer == nullptr) return;
    try {
        // The time is that of the write, not of the record's making.
        qvp::LocalTime t;
        qvp::LocalTimeNow(&t);
        CQvWString strTime;
        strTime.Format("%04hu/%02hu/%02hu %02hu:%02hu:%02hu.%03hu", uint32_t{t.year}, uint32_t{t.month},
                       uint32_t{t.day}, uint32_t{t.hour}, uint32_t{t.minute}, uint32_t{t.second},
                       uint32_t{t.milliseconds});
        CQvWString strLine;
        strLine.Format("[%s],%ld,%s,%s(%ld),%s\r\n", pAnalyzer->GetAnalyzerName(), m_nLevel, strTime.GetString(),
                       m_texts->strFile.GetString(), m_nLine, m_texts->strMessage.GetString());
        // Each 16-bit unit goes out little-endian, whatever the host's order.
        std::string bytes;
        bytes.reserve(strLine.GetLength() * 2);
        for (const char16_t* p = strLine.GetString(); *p != 0; ++p) {
            bytes.push_back(static_cast<char>(*p & 0xFF));
            bytes.push_back(static_cast<char>(*p >> 8));
        }
        pAnalyzer->WriteLog(bytes.data(), static_cast<uint32_t>(bytes.size()));
        pAnalyzer->FlushLog();
    } catch (const CFileException&) {
        // A failing log reports to nobody.
    }
}
