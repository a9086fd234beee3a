// QvIAnalyzer.h - the analyzer: the one object behind the exported
// functions. It owns the life cycle, the log file and the link to the root.
//
// The analyzer is no heap object: the module's application object holds the
// one concrete analyzer by value, from the load of the library to its unload.
// Its constructor registers it as the singleton, its destructor clears it.
#ifndef QV_QVIANALYZER_H
#define QV_QVIANALYZER_H

#include <cstdint>

#include "tqnralm.h"

namespace qvp { struct LogFile; }
class CQvIObject;

class CQvIAnalyzer {
public:
    CQvIAnalyzer();
    virtual ~CQvIAnalyzer();

    static CQvIAnalyzer* GetInstance() { return s_pInstance; }
    // Whether the analyzer writes its log now: the one test a trace record
    // makes while logging is off.
    static bool LogsNow() { return s_pInstance != nullptr && s_pInstance->m_pLogFile != nullptr; }

    virtual const char16_t* GetAnalyzerName() = 0;
    virtual QV_BOOL IsInitialized();
    virtual void OnChildDisposed(CQvIObject* pChild);
    virtual QV_BOOL IsLogging();
    virtual int32_t WriteLog(const void* pData, uint32_t nBytes);
    virtual int32_t FlushLog();
    virtual int32_t InitLibrary();
    virtual int32_t ExitLibrary();
    virtual int32_t StartLogging(const QV_WCHAR* lpszLogFile);
    virtual int32_t EndLogging();
    virtual int32_t IsMailerInstalled(QV_BOOL* pbIsInstalled) = 0;
    virtual int32_t GetRootObject(CQvIObject** ppRoot);
    virtual int32_t CreateRootObject(CQvIObject** ppRoot) = 0;

protected:
    QV_BOOL m_bInitialized;
    CQvIObject* m_pRoot;
    qvp::LogFile* m_pLogFile;

private:
    static CQvIAnalyzer* s_pInstance;

    CQvIAnalyzer(const CQvIAnalyzer&) = delete;
    CQvIAnalyzer& operator=(const CQvIAnalyzer&) = delete;
};

#endif  // QV_QVIANALYZER_H
