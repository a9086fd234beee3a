// FakeTree.cpp - the test objects, the test analyzer and the log reader.
#include "frame/FakeTree.h"

#include "support/WinePrefix.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

namespace {
class FakeIndexObjects : public CQvIIndexObjects {
public:
    using CQvIIndexObjects::CQvIIndexObjects;

protected:
    int32_t FetchAt(int32_t nIndex, CQvIObject** ppChild) override {
        return static_cast<FakeObject*>(GetParent())->ChildAt(nIndex, ppChild);
    }
};

}  // namespace

FakeCounters& Counters() {
    static FakeCounters counters;
    return counters;
}

TestAnalyzer& Analyzer() {
    static TestAnalyzer analyzer;
    return analyzer;
}

int32_t FakeObject::GetChildCount(int32_t nClass, int32_t* pnChildCount) {
    if (m_nChildClass == 0 || nClass != m_nChildClass) return QV_E_INVALID_ARGUMENT;
    *pnChildCount = m_nChildCount;
    return QV_S_OK;
}

int32_t FakeObject::CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) {
    if (m_nClass == QV_CLASS_ACCOUNT && nClass == QV_CLASS_MAILMESSAGE) {
        *ppObjs = new CQvIEmptyObjects(this);
        return QV_S_OK;
    }
    if (m_nChildClass == 0 || nClass != m_nChildClass) return QV_E_INVALID_ARGUMENT;
    auto* pObjs = new FakeIndexObjects(this);
    pObjs->Init(m_nChildCount);
    *ppObjs = pObjs;
    return QV_S_OK;
}

void FakeObject::OnChildDisposed(CQvIObject* pChild) {
    int32_t nClass = 0;
    if (pChild->GetClass(&nClass) != QV_S_OK) return;
    Counters().disposedClasses.push_back(nClass);
    for (auto& slot : m_children) {
        if (slot == pChild) slot = nullptr;
    }
}

int32_t FakeObject::ChildAt(int32_t nIndex, CQvIObject** ppChild) {
    auto failing = std::find(m_failingIndexes.begin(), m_failingIndexes.end(), nIndex);
    if (failing != m_failingIndexes.end()) {
        m_failingIndexes.erase(failing);
        return QV_E_OUT_OF_MEMORY;
    }
    if (m_children.empty()) m_children.assign(static_cast<size_t>(m_nChildCount), nullptr);
    FakeObject*& slot = m_children[static_cast<size_t>(nIndex)];
    if (slot == nullptr) {
        std::u16string name = u"child";
        name.push_back(static_cast<char16_t>(u'0' + nIndex % 10));
        slot = new FakeObject(this, m_nChildClass, name, nIndex);
    }
    *ppChild = slot;
    return QV_S_OK;
}

TempLog::TempLog() {
    std::random_device rd;
    m_dir = (std::filesystem::temp_directory_path() / ("qvlog-" + std::to_string(rd()))).string();
    std::filesystem::create_directories(m_dir);
    m_path = m_dir + "/trace.log";
    for (char c : m_path) m_path16.push_back(static_cast<char16_t>(static_cast<unsigned char>(c)));
}

TempLog::~TempLog() {
    std::error_code ec;
    std::filesystem::remove_all(m_dir, ec);
}

std::string TempLog::Bytes() const {
    std::ifstream in(m_path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

std::vector<std::string> TempLog::Lines() const { return qvt::ReadTraceLog(m_path); }

std::string TempLog::Text() const {
    const std::string bytes = Bytes();
    std::u16string text;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                             (static_cast<unsigned char>(bytes[i + 1]) << 8)));
    }
    return qvt::Utf8(text);
}
