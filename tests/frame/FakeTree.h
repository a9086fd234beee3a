// FakeTree.h - test objects on the frame, a test analyzer and a trace log in
// a temporary folder, to drive the exported functions without any reader.
#ifndef QV_TESTS_FAKETREE_H
#define QV_TESTS_FAKETREE_H

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "QvV4Value/QvExceptions.h"
#include "QvImplCommon/QvIAnalyzer.h"
#include "QvImplCommon/QvIObjects.h"
#include "QvV4Wrapper/QvV4Utils.h"
#include "support/WinePrefix.h"
#include "tqnralm.h"

// An object whose children, of its own class, are built on demand at an
// index and forgotten when disposed; an index in m_failing fails once.
class FakeObject : public CQvIObject {
public:
    FakeObject(CQvIObject* pParent, int32_t nClass, std::u16string name, size_t nChildren = 0)
        : CQvIObject(pParent), m_nClass(nClass), m_name(std::move(name)), m_children(nChildren) {}
    int32_t GetClass(int32_t* pnClass) override {
        *pnClass = m_nClass;
        return QV_S_OK;
    }
    int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override {
        if (m_fault) m_fault();
        return QvV4CopyTextOut(m_name.c_str(), lpszName, lpcNameLen);
    }
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override { return GetName(lpszName, lpcNameLen); }
    int32_t GetChildCount(int32_t nClass, int32_t* pnChildCount) override {
        if (nClass != m_nClass) return QV_E_INVALID_ARGUMENT;
        *pnChildCount = static_cast<int32_t>(m_children.size());
        return QV_S_OK;
    }
    int32_t CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) override;
    void OnChildDisposed(CQvIObject* pChild) override {
        std::replace(m_children.begin(), m_children.end(), pChild, static_cast<CQvIObject*>(nullptr));
    }
    int32_t ChildAt(int32_t nIndex, CQvIObject** ppChild) {
        auto failing = std::find(m_failing.begin(), m_failing.end(), nIndex);
        if (failing != m_failing.end()) {
            m_failing.erase(failing);
            return QV_E_OUT_OF_MEMORY;
        }
        CQvIObject*& slot = m_children[static_cast<size_t>(nIndex)];
        if (slot == nullptr) slot = new FakeObject(this, m_nClass, u"child");
        *ppChild = slot;
        return QV_S_OK;
    }

    std::function<void()> m_fault;  // throws before GetName answers
    std::vector<int32_t> m_failing;

private:
    int32_t m_nClass;
    std::u16string m_name;
    std::vector<CQvIObject*> m_children;
};

class FakeObjects : public CQvIIndexObjects {
public:
    using CQvIIndexObjects::CQvIIndexObjects;

protected:
    int32_t FetchAt(int32_t nIndex, CQvIObject** ppChild) override {
        return static_cast<FakeObject*>(GetParent())->ChildAt(nIndex, ppChild);
    }
};

inline int32_t FakeObject::CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) {
    if (nClass != m_nClass) return QV_E_INVALID_ARGUMENT;
    auto* pObjs = new FakeObjects(this);
    pObjs->Init(static_cast<int32_t>(m_children.size()));
    *ppObjs = pObjs;
    return QV_S_OK;
}

class FakeRoot : public CQvIRoot {
public:
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override { return GetName(lpszName, lpcNameLen); }
    int32_t GetChildCount(int32_t, int32_t*) override { return QV_E_INVALID_ARGUMENT; }
    int32_t CreateChildObjects(int32_t, CQvIObject**) override { return QV_E_INVALID_ARGUMENT; }
};

class TestAnalyzer : public CQvIAnalyzer {
public:
    const char16_t* GetAnalyzerName() override { return u"Q5V4ALM"; }
    int32_t IsMailerInstalled(QV_BOOL* pbIsInstalled) override {
        *pbIsInstalled = 1;
        return QV_S_OK;
    }
    int32_t CreateRootObject(CQvIObject** ppRoot) override {
        ++m_nRootsMade;
        *ppRoot = new FakeRoot();
        return QV_S_OK;
    }
    CQvIObject* Root() const { return m_pRoot; }
    int m_nRootsMade = 0;
};
inline TestAnalyzer& Analyzer() {
    static TestAnalyzer analyzer;
    return analyzer;
}

// An address as the trace log writes it: upper-case hex, all digits.
inline std::string Hex(const void* p) {
    char buf[40];
    snprintf(buf, sizeof buf, "%0*llX", static_cast<int>(2 * sizeof(void*)),
             static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(p)));
    return buf;
}

// A log file in a temporary folder of its own.
struct TempLog {
    int32_t Start(const std::string& suffix = "") const {
        const std::string file = path + suffix;
        const std::u16string file16(file.begin(), file.end());
        return QV_StartLogging(reinterpret_cast<const QV_WCHAR*>(file16.c_str()));
    }
    std::string Bytes() const { return qvt::ReadHostFile(path); }
    // Time stamps read "T" and source lines "L".
    std::vector<std::string> Lines() const { return qvt::ReadTraceLog(path); }

    qvt::WinePrefix prefix;
    std::string path = prefix.Root() + "/trace.log";
};

#endif  // QV_TESTS_FAKETREE_H
