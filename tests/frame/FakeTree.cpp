// FakeTree.cpp - the test objects and the test analyzer.
#include "frame/FakeTree.h"

#include <algorithm>

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
        slot = new FakeObject(this, m_nChildClass, name);
    }
    *ppChild = slot;
    return QV_S_OK;
}
