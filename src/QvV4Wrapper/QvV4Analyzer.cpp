// QvV4Analyzer.cpp - opening and closing the two readers.
#include "QvV4Wrapper/QvV4Analyzer.h"

#include "QvV4Value/QvTextBlocks.h"
#include "QvV4Wrapper/QvV4Root.h"
#include "QvV4Wrapper/QvV4Utils.h"
#include "addressreader/AddrReader.h"
#include "mailreader/MailReader.h"

CQvV4Analyzer* QvV4GetAnalyzer() { return static_cast<CQvV4Analyzer*>(CQvIAnalyzer::GetInstance()); }

CQvV4Analyzer::~CQvV4Analyzer() { CQvV4Analyzer::ExitLibrary(); }

const char16_t* CQvV4Analyzer::GetAnalyzerName() { return u"Q5V4ALM"; }

int32_t CQvV4Analyzer::InitLibrary() {
    CQvIAnalyzer::InitLibrary();
    int32_t result = MailReader_Open(&m_hMailReader);
    if (result != 0) return QvV4MapError(result);
    try {
        result = AddrReader_Open(&m_hAddrReader);
    } catch (...) {
        // Its failure goes on to the call frame's barrier; the mail handle is
        // clear after a failed open, as after a failing result.
        MailReader_Close(m_hMailReader);
        m_hMailReader = nullptr;
        throw;
    }
    if (result != 0) {
        // The address reader may be alive in its output; QV_ExitLibrary closes it.
        MailReader_Close(m_hMailReader);
        m_hMailReader = nullptr;
        return QvV4MapError(result);
    }
    return QV_S_OK;
}

int32_t CQvV4Analyzer::ExitLibrary() {
    if (m_hMailReader != nullptr) {
        MailReader_Close(m_hMailReader);
        m_hMailReader = nullptr;
    }
    if (m_hAddrReader != nullptr) {
        AddrReader_Close(m_hAddrReader);
        m_hAddrReader = nullptr;
    }
    QvTextBlock_Drop();
    return CQvIAnalyzer::ExitLibrary();
}

int32_t CQvV4Analyzer::IsMailerInstalled(QV_BOOL* pbIsInstalled) {
    // The mail reader opens a reader of its own for this question.
    int32_t result = MailReader_IsInstalled(pbIsInstalled);
    return result != 0 ? QvV4MapError(result) : QV_S_OK;
}

int32_t CQvV4Analyzer::CreateRootObject(CQvIObject** ppRoot) {
    *ppRoot = new CQvV4Root();
    return QV_S_OK;
}
