// QvIAnalyzer.cpp - life cycle, log file and root of the analyzer frame.
#include "QvImplCommon/QvIAnalyzer.h"

#include <string>

#include "QvImplCommon/QvErrors.h"
#include "QvImplCommon/QvIObject.h"
#include "QvImplCommon/QvITraceRecord.h"
#include "platform/platform.h"

#define QV_SOURCE "QvImplCommon\\QvIAnalyzer"

CQvIAnalyzer* CQvIAnalyzer::s_pInstance = nullptr;

namespace {

// Write and flush failures without a code of their own become -13.
int32_t LogFileError(int cause) {
    int32_t code = QvFileCauseToError(cause);
    return code == QV_E_UNEXPECTED ? QV_E_LOG_FILE : code;
}
}  // namespace

CQvIAnalyzer::CQvIAnalyzer() : m_bInitialized(0), m_pRoot(nullptr), m_pLogFile(nullptr) {
    s_pInstance = this;
}

CQvIAnalyzer::~CQvIAnalyzer() {
    if (IsLogging()) EndLogging();
    s_pInstance = nullptr;
}

QV_BOOL CQvIAnalyzer::IsInitialized() { return m_bInitialized; }

void CQvIAnalyzer::OnChildDisposed(CQvIObject*) { m_pRoot = nullptr; }

// LogsNow makes the same test inline, for the trace records.
QV_BOOL CQvIAnalyzer::IsLogging() { return m_pLogFile != nullptr; }

int32_t CQvIAnalyzer::WriteLog(const void* pData, uint32_t nBytes) {
    if (!IsLogging()) return QV_S_OK;
    int cause = qvp::LogFileAppend(m_pLogFile, pData, nBytes);
    return cause == 0 ? QV_S_OK : LogFileError(cause);
}

int32_t CQvIAnalyzer::FlushLog() {
    if (!IsLogging()) return QV_S_OK;
    int cause = qvp::LogFileFlush(m_pLogFile);
    return cause == 0 ? QV_S_OK : LogFileError(cause);
}

int32_t CQvIAnalyzer::InitLibrary() {
    m_bInitialized = 1;
    return QV_S_OK;
}

int32_t CQvIAnalyzer::ExitLibrary() {
    if (IsLogging()) EndLogging();
    m_bInitialized = 0;
    return QV_S_OK;
}

int32_t CQvIAnalyzer::StartLogging(const QV_WCHAR* lpszLogFile) {
    if (IsLogging()) {
        CQvITraceRecord(QV_SOURCE, __LINE__, QV_TRACE_ERROR).Text(u"すでにログ出力を開始している。").Write();
        return QV_E_ALREADY_LOGGING;
    }
    std::u16string path;
    for (const QV_WCHAR* p = lpszLogFile; *p != 0; ++p) path.push_back(static_cast<char16_t>(*p));
    qvp::LogFile* pFile = nullptr;
    int cause = qvp::LogFileOpen(path.c_str(), &pFile);
    if (cause != 0) return QvFileCauseToError(cause);
    m_pLogFile = pFile;
    CQvITraceRecord(QV_SOURCE, __LINE__, QV_TRACE_INFO).Text(u"ログ出力を開始").Write();
    return QV_S_OK;
}

int32_t CQvIAnalyzer::EndLogging() {
    if (!IsLogging()) return QV_S_OK;
    CQvITraceRecord(QV_SOURCE, __LINE__, QV_TRACE_INFO).Text(u"ログ出力を終了").Write();
    qvp::LogFile* pFile = m_pLogFile;
    m_pLogFile = nullptr;
    // The platform frees the file object whatever the close gives.
    int cause = qvp::LogFileClose(pFile);
    return cause == 0 ? QV_S_OK : QvFileCauseToError(cause);
}

int32_t CQvIAnalyzer::GetRootObject(CQvIObject** ppRoot) {
    if (m_pRoot == nullptr) {
        CQvIObject* pRoot = nullptr;
        int32_t code = CreateRootObject(&pRoot);
        if (code != QV_S_OK) return code;
        m_pRoot = pRoot;
    }
    m_pRoot->AddRef();
    *ppRoot = m_pRoot;
    return QV_S_OK;
}
