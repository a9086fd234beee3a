// FakeTree.h - a small tree of test objects on the frame, and a test
// analyzer that stands in for the module's, so the exported functions can be
// driven without any reader.
#ifndef QV_TESTS_FAKETREE_H
#define QV_TESTS_FAKETREE_H

#include <functional>
#include <string>
#include <vector>

#include "QvImplCommon/QvExceptions.h"
#include "QvImplCommon/QvIAnalyzer.h"
#include "QvImplCommon/QvIObjects.h"
#include "QvV4Wrapper/QvV4Value.h"

// What a fake object's operation does before it answers.
enum class Fault { None, Memory, BadAlloc, File, Generic, Code };

struct FaultPlan {
    Fault fault = Fault::None;
    int32_t value = 0;  // the file cause, or the code returned
    void Raise() const {
        switch (fault) {
        case Fault::Memory: throw CMemoryException();
        case Fault::BadAlloc: throw std::bad_alloc();
        case Fault::File: throw CFileException(value);
        case Fault::Generic: throw CException();
        default: break;
        }
    }
};

class FakeObject;

// Counts destructions so tests can see the tree unwind.
struct FakeCounters {
    int destroyed = 0;
    std::vector<int32_t> disposedClasses;
};
FakeCounters& Counters();

// One object of any class, with a name and children of one class built on
// demand at an index, remembered in a cache that OnChildDisposed clears.
class FakeObject : public CQvIObject {
public:
    FakeObject(CQvIObject* pParent, int32_t nClass, std::u16string name, int32_t nIndex = 0)
        : CQvIObject(pParent), m_nClass(nClass), m_name(std::move(name)), m_nIndex(nIndex) {}
    ~FakeObject() override { ++Counters().destroyed; }

    int32_t GetClass(int32_t* pnClass) override {
        *pnClass = m_nClass;
        return QV_S_OK;
    }
    int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override {
        m_plan.Raise();
        if (m_plan.fault == Fault::Code) return m_plan.value;
        return QvV4CopyTextOut(m_name.c_str(), lpszName, lpcNameLen);
    }
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override {
        return GetName(lpszName, lpcNameLen);
    }
    int32_t GetChildCount(int32_t nClass, int32_t* pnChildCount) override;
    int32_t CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) override;
    void OnChildDisposed(CQvIObject* pChild) override;

    // The child at an index, without a reference; fails where told to.
    int32_t ChildAt(int32_t nIndex, CQvIObject** ppChild);

    FaultPlan m_plan;
    int32_t m_nChildClass = 0;
    int32_t m_nChildCount = 0;
    std::vector<int32_t> m_failingIndexes;  // each fails once
    std::vector<FakeObject*> m_children;

private:
    int32_t m_nClass;
    std::u16string m_name;
    int32_t m_nIndex;
};

class FakeRoot : public CQvIRoot {
public:
    FakeRoot() = default;
    ~FakeRoot() override { ++Counters().destroyed; }
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override {
        return QvV4CopyTextOut(u"AL-Mail32", lpszName, lpcNameLen);
    }
    int32_t GetChildCount(int32_t, int32_t*) override { return QV_E_INVALID_ARGUMENT; }
    int32_t CreateChildObjects(int32_t, CQvIObject**) override { return QV_E_INVALID_ARGUMENT; }
};

class FakeMessage : public CQvIMailMessage {
public:
    using CQvIMailMessage::CQvIMailMessage;
    int32_t GetName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override {
        return QvV4CopyTextOut(u"<id@example>", lpszName, lpcNameLen);
    }
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override {
        return QvV4CopyTextOut(u"subject", lpszName, lpcNameLen);
    }
    int32_t GetData(QV_MAIL_DATA* pMailData) override {
        m_plan.Raise();
        pMailData->nMailTextLen = 42;
        return QV_S_OK;
    }
    FaultPlan m_plan;
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
TestAnalyzer& Analyzer();

// A log file in a fresh temporary directory, read back as UTF-8 lines with
// the time stamp and the source line replaced by fixed marks.
class TempLog {
public:
    TempLog();
    ~TempLog();
    const std::u16string& Path16() const { return m_path16; }
    const std::string& Path() const { return m_path; }
    std::string Bytes() const;
    std::vector<std::string> Lines() const;  // "[Q5V4ALM],4,T,QvIAPI(L),..."
    std::string Text() const;                // the whole file in UTF-8
private:
    std::string m_dir, m_path;
    std::u16string m_path16;
};

#endif  // QV_TESTS_FAKETREE_H
