// Tests of reference counts, the parent chain, enumerators and the root.
#include <gtest/gtest.h>

#include "frame/FakeTree.h"

namespace {

class ObjectTree : public ::testing::Test {
protected:
    void SetUp() override {
        Analyzer();
        Counters() = FakeCounters();
    }
    static int32_t Next(QV_OBJ objs, QV_OBJ* child) { return QV_Objects_GetNext(objs, child); }
};

// A heap parent with three children that an enumerator delivers.
FakeObject* MakeParent(int32_t nCount = 3) {
    auto* parent = new FakeObject(nullptr, QV_CLASS_MAILFOLDER, u"folder");
    parent->m_nChildClass = QV_CLASS_MAILFOLDER;
    parent->m_nChildCount = nCount;
    return parent;
}

TEST_F(ObjectTree, ChildrenOutliveEnumeratorAndParentUnwindsFromTheBottom) {
    FakeObject* parent = MakeParent();
    QV_OBJ objs = nullptr;
    ASSERT_EQ(QV_S_OK, QV_Object_GetChildObjects(parent, QV_CLASS_MAILFOLDER, &objs));
    // The enumerator's first reference took one on the parent.
    EXPECT_EQ(1, parent->GetRefCount());
    QV_OBJ a = nullptr, b = nullptr;
    ASSERT_EQ(QV_S_OK, Next(objs, &a));
    ASSERT_EQ(QV_S_OK, Next(objs, &b));
    EXPECT_EQ(3, parent->GetRefCount());  // each referenced child holds one
    EXPECT_EQ(QV_S_OK, QV_Object_Dispose(objs));
    EXPECT_EQ(2, parent->GetRefCount());  // the children still hold it
    EXPECT_EQ(0, Counters().destroyed);
    uint32_t len = 0;
    EXPECT_EQ(QV_S_OK, QV_Object_GetName(a, nullptr, &len));
    EXPECT_EQ(QV_S_OK, QV_Object_Dispose(a));
    EXPECT_EQ(QV_S_OK, QV_Object_Dispose(b));
    // The last child took the parent with it.
    EXPECT_EQ(3, Counters().destroyed);
    EXPECT_EQ((std::vector<int32_t>{QV_CLASS_OBJECTS, QV_CLASS_MAILFOLDER, QV_CLASS_MAILFOLDER}),
              Counters().disposedClasses);
}

TEST_F(ObjectTree, EnumeratorWalksRetriesAFailedChildAndStaysAtTheEnd) {
    struct Case {
        int32_t count;
        std::vector<int32_t> failing;
        int32_t delivered;
    };
    const Case cases[] = {{0, {}, 0}, {3, {}, 3}, {3, {2}, 3}, {4, {0, 3}, 4}};
    for (const Case& c : cases) {
        FakeObject* parent = MakeParent(c.count);
        parent->m_failingIndexes = c.failing;
        QV_OBJ objs = nullptr;
        ASSERT_EQ(QV_S_OK, QV_Object_GetChildObjects(parent, QV_CLASS_MAILFOLDER, &objs));
        std::vector<QV_OBJ> got;
        int32_t failures = 0;
        for (int guard = 0; guard < 20; ++guard) {
            QV_BOOL more = 0;
            ASSERT_EQ(QV_S_OK, QV_Objects_HasNext(objs, &more));
            QV_OBJ child = reinterpret_cast<QV_OBJ>(0x1);
            int32_t code = Next(objs, &child);
            if (code == QV_E_NO_MORE_ITEMS) {
                EXPECT_EQ(0, more);
                EXPECT_EQ(reinterpret_cast<QV_OBJ>(0x1), child);
                break;
            }
            EXPECT_EQ(1, more);
            if (code != QV_S_OK) {
                EXPECT_EQ(QV_E_OUT_OF_MEMORY, code);
                EXPECT_EQ(reinterpret_cast<QV_OBJ>(0x1), child);
                ++failures;
                continue;
            }
            got.push_back(child);
        }
        EXPECT_EQ(c.delivered, static_cast<int32_t>(got.size()));
        EXPECT_EQ(static_cast<int32_t>(c.failing.size()), failures);
        QV_OBJ child = nullptr;
        EXPECT_EQ(QV_E_NO_MORE_ITEMS, Next(objs, &child));
        // Child counts and enumerators on an enumerator are refused.
        int32_t n = 5;
        QV_OBJ inner = nullptr;
        EXPECT_EQ(QV_E_INVALID_ARGUMENT, QV_Object_GetChildCount(objs, QV_CLASS_MAILFOLDER, &n));
        EXPECT_EQ(QV_E_INVALID_ARGUMENT, QV_Object_GetChildObjects(objs, QV_CLASS_OBJECTS, &inner));
        EXPECT_EQ(5, n);
        for (QV_OBJ o : got) QV_Object_Dispose(o);
        QV_Object_Dispose(objs);
    }
}

TEST_F(ObjectTree, EmptyAndSingleEnumerators) {
    auto* owner = new FakeObject(nullptr, QV_CLASS_USER, u"user");
    auto* item = new FakeObject(nullptr, QV_CLASS_ADDRESSBOOK, u"");
    owner->AddRef();
    auto* single = new CQvISingleObjects(owner, item);
    auto* empty = new CQvIEmptyObjects(owner);
    single->AddRef();
    empty->AddRef();
    QV_BOOL more = 9;
    QV_OBJ got = nullptr;
    EXPECT_EQ(QV_S_OK, QV_Objects_HasNext(single, &more));
    EXPECT_EQ(1, more);
    EXPECT_EQ(QV_S_OK, QV_Objects_GetNext(single, &got));
    EXPECT_EQ(item, got);
    for (QV_OBJ objs : {static_cast<QV_OBJ>(single), static_cast<QV_OBJ>(empty)}) {
        EXPECT_EQ(QV_S_OK, QV_Objects_HasNext(objs, &more));
        EXPECT_EQ(0, more);
        EXPECT_EQ(QV_E_NO_MORE_ITEMS, QV_Objects_GetNext(objs, &got));
        EXPECT_EQ(QV_E_NO_MORE_ITEMS, QV_Objects_GetNext(objs, &got));
    }
    item->Release();  // the host's reference on the delivered item
    QV_Object_Dispose(single);
    QV_Object_Dispose(empty);
    owner->Release();
    EXPECT_EQ(2, Counters().destroyed);
}

TEST_F(ObjectTree, RootIsSharedUntilItsLastReferenceThenRebuilt) {
    TestAnalyzer& analyzer = Analyzer();
    const int made = analyzer.m_nRootsMade;
    QV_OBJ r1 = nullptr, r2 = nullptr, r3 = nullptr;
    ASSERT_EQ(QV_S_OK, QV_GetRootObject(&r1));
    ASSERT_EQ(QV_S_OK, QV_GetRootObject(&r2));
    EXPECT_EQ(r1, r2);
    EXPECT_EQ(2, static_cast<CQvIObject*>(r1)->GetRefCount());
    EXPECT_EQ(made + 1, analyzer.m_nRootsMade);
    uint32_t len = 0;
    EXPECT_EQ(QV_S_OK, QV_Object_GetName(r1, nullptr, &len));
    EXPECT_EQ(0u, len);
    EXPECT_EQ(QV_S_OK, QV_Object_GetDisplayName(r1, nullptr, &len));
    EXPECT_EQ(9u, len);
    EXPECT_EQ(QV_S_OK, QV_Object_Dispose(r1));
    EXPECT_EQ(r1, analyzer.Root());
    EXPECT_EQ(QV_S_OK, QV_Object_Dispose(r2));
    EXPECT_EQ(nullptr, analyzer.Root());
    ASSERT_EQ(QV_S_OK, QV_GetRootObject(&r3));
    EXPECT_EQ(made + 2, analyzer.m_nRootsMade);
    EXPECT_EQ(QV_S_OK, QV_Object_Dispose(r3));
}

TEST_F(ObjectTree, ReferenceCountChangesAreTraced) {
    TempLog log;
    ASSERT_EQ(QV_S_OK, log.Start());
    FakeObject* parent = MakeParent(1);
    QV_OBJ objs = nullptr;
    QV_Object_GetChildObjects(parent, QV_CLASS_MAILFOLDER, &objs);
    QV_Object_Dispose(objs);
    QV_EndLogging();
    std::vector<std::string> counts;
    for (const std::string& line : log.Lines()) {
        if (line.rfind("[Q5V4ALM],6,", 0) == 0) counts.push_back(line);
    }
    const std::string p = "[Q5V4ALM],6,T,QvIObject(L),オブジェクト " + Hex(parent) + " : 参照カウンタ = ";
    const std::string e = "[Q5V4ALM],6,T,QvIObject(L),オブジェクト " + Hex(objs) + " : 参照カウンタ = ";
    EXPECT_EQ((std::vector<std::string>{p + "0 → 1", e + "0 → 1", e + "1 → 0", p + "1 → 0"}), counts);
}

}  // namespace
