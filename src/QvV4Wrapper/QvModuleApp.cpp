// QvModuleApp.cpp - the module's application object. It holds the analyzer
// by value from the load of the library to its unload, so the singleton is
// set before any exported function can run.
#include "QvV4Wrapper/QvV4Analyzer.h"

namespace {
class CQvModuleApp {
public:
    CQvV4Analyzer m_analyzer;
};

CQvModuleApp g_theApp;
}  // namespace
