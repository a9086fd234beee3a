// FakeTree.h - a small tree of test objects on the frame, a test analyzer
// that stands in for the module's, and a trace log in a temporary folder, so
// the exported functions can be driven without any reader.
#ifndef QV_TESTS_FAKETREE_H
#define QV_TESTS_FAKETREE_H

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "QvImplCommon/QvExceptions.h"
#include "QvImplCommon/QvIAnalyzer.h"
#include "QvImplCommon/QvIObjects.h"
#include "QvV4Wrapper/QvV4Value.h"
#include "support/WinePrefix.h"
#include "tqnralm.h"

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
    FakeObject(CQvIObject* pParent, int32_t nClass, std::u16string name)
        : CQvIObject(pParent), m_nClass(nClass), m_name(std::move(name)) {}
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
};

class FakeRoot : public CQvIRoot {
public:
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

// An address as the trace log writes it: upper-case hex, all digits.
inline std::string Hex(const void* p) {
    char buf[40];
    snprintf(buf, sizeof buf, "%0*llX", static_cast<int>(2 * sizeof(void*)),
             static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(p)));
    return buf;
}

// A log file in a fresh temporary folder.
class TempLog {
public:
    TempLog() {
        std::filesystem::create_directories(m_dir);
        for (char c : m_path) m_path16.push_back(static_cast<char16_t>(static_cast<unsigned char>(c)));
    }
    ~TempLog() {
        std::error_code ec;
        std::filesystem::remove_all(m_dir, ec);
    }
    int32_t Start() const { return QV_StartLogging(reinterpret_cast<const QV_WCHAR*>(m_path16.c_str())); }
    const std::u16string& Path16() const { return m_path16; }
    std::string Bytes() const {
        std::stringstream ss;
        ss << std::ifstream(m_path, std::ios::binary).rdbuf();
        return ss.str();
    }
    // Lines in UTF-8, the time stamp as "T" and the source line as "L".
    std::vector<std::string> Lines() const { return qvt::ReadTraceLog(m_path); }
    // The whole file in UTF-8 (the test hosts are little-endian).
    std::string Text() const {
        const std::string b = Bytes();
        return qvt::Utf8(std::u16string(reinterpret_cast<const char16_t*>(b.data()), b.size() / 2));
    }

private:
    std::string m_dir =
        (std::filesystem::temp_directory_path() / ("qvlog-" + std::to_string(std::random_device{}()))).string();
    std::string m_path = m_dir + "/trace.log";
    std::u16string m_path16;
};

#endif  // QV_TESTS_FAKETREE_H
