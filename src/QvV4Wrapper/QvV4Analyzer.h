// QvV4Analyzer.h - the one concrete analyzer: the frame's analyzer bound to
// the mail reader and the address reader, whose handles it holds from
// QV_InitLibrary to QV_ExitLibrary.
#ifndef QV_QVV4ANALYZER_H
#define QV_QVV4ANALYZER_H

#include "QvImplCommon/QvIAnalyzer.h"

class CQvV4Analyzer : public CQvIAnalyzer {
public:
    CQvV4Analyzer() = default;
    ~CQvV4Analyzer() override;

    const char16_t* GetAnalyzerName() override;
    int32_t InitLibrary() override;
    int32_t ExitLibrary() override;
    int32_t IsMailerInstalled(QV_BOOL* pbIsInstalled) override;
    int32_t CreateRootObject(CQvIObject** ppRoot) override;

    void* m_hMailReader = nullptr;
    void* m_hAddrReader = nullptr;
};

// The analyzer as the tree objects need it: null when the library has none.
CQvV4Analyzer* QvV4GetAnalyzer();

#endif  // QV_QVV4ANALYZER_H
