// Tests of enumerators and the root. (The parent chain is the end-to-end
// tests': the sample tree given back in any order, under the sanitizer.)
#include <gtest/gtest.h>

#include "frame/FakeTree.h"

namespace {

class ObjectTree : public ::testing::Test {
protected:
    void SetUp() override { Analyzer(); }
};

TEST_F(ObjectTree, EnumeratorRetriesAFailedChildAndStaysAtTheEnd) {
    auto* parent = new FakeObject(nullptr, QV_CLASS_MAILFOLDER, u"folder", 2);
    parent->m_failing = {0, 1};
    QV_OBJ objs = nullptr;
    ASSERT_EQ(QV_S_OK, QV_Object_GetChildObjects(parent, QV_CLASS_MAILFOLDER, &objs));
    // HasNext's answer and GetNext's code, in turn.
    std::vector<int32_t> codes;
    std::vector<QV_OBJ> got;
    for (int i = 0; i < 6; ++i) {
        QV_BOOL more = 9;
        QV_OBJ child = nullptr;
        ASSERT_EQ(QV_S_OK, QV_Objects_HasNext(objs, &more));
        codes.push_back(more);
        codes.push_back(QV_Objects_GetNext(objs, &child));
        if (child != nullptr) got.push_back(child);
    }
    const int32_t kNoMem = QV_E_OUT_OF_MEMORY, kEnd = QV_E_NO_MORE_ITEMS;
    EXPECT_EQ((std::vector<int32_t>{1, kNoMem, 1, 0, 1, kNoMem, 1, 0, 0, kEnd, 0, kEnd}), codes);
    EXPECT_EQ(2u, got.size());
    // An enumerator has no children.
    int32_t n = 5;
    QV_OBJ inner = nullptr;
    EXPECT_EQ(QV_E_INVALID_ARGUMENT, QV_Object_GetChildCount(objs, QV_CLASS_MAILFOLDER, &n));
    EXPECT_EQ(QV_E_INVALID_ARGUMENT, QV_Object_GetChildObjects(objs, QV_CLASS_OBJECTS, &inner));
    EXPECT_EQ(5, n);
    for (QV_OBJ o : got) QV_Object_Dispose(o);
    QV_Object_Dispose(objs);
}

TEST_F(ObjectTree, RootIsSharedUntilItsLastReferenceThenRebuilt) {
    TestAnalyzer& analyzer = Analyzer();
    const int made = analyzer.m_nRootsMade;
    QV_OBJ r1 = nullptr, r2 = nullptr;
    ASSERT_EQ(QV_S_OK, QV_GetRootObject(&r1));
    ASSERT_EQ(QV_S_OK, QV_GetRootObject(&r2));
    EXPECT_EQ(r1, r2);
    EXPECT_EQ(made + 1, analyzer.m_nRootsMade);
    // A nameless object stores a terminator only from a count of two.
    for (uint32_t count : {1u, 2u}) {
        QV_WCHAR buf[2] = {u'x', u'x'};
        uint32_t len = count;
        EXPECT_EQ(QV_S_OK, QV_Object_GetName(r1, buf, &len));
        EXPECT_EQ(0u, len);
        EXPECT_EQ(count == 2 ? 0 : u'x', static_cast<char16_t>(buf[0]));
    }
    EXPECT_EQ(QV_S_OK, QV_Object_Dispose(r1));
    EXPECT_EQ(r2, analyzer.Root());
    EXPECT_EQ(QV_S_OK, QV_Object_Dispose(r2));
    EXPECT_EQ(nullptr, analyzer.Root());
    ASSERT_EQ(QV_S_OK, QV_GetRootObject(&r1));
    EXPECT_EQ(made + 2, analyzer.m_nRootsMade);
    EXPECT_EQ(QV_S_OK, QV_Object_Dispose(r1));
}

}  // namespace
