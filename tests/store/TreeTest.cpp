// The host's walk of the object tree (store/Tree.h, IndexPath.h) against a
// fake of the interface's object calls that fail as the library's can.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "IndexPath.h"
#include "Tree.h"

namespace {

// A child slot: 'o' a child, 'f' one that fails once (then comes as it
// stands), 's' one the enumerator stays stuck on.
struct Node {
    std::u16string name;
    std::string slots;        // of the one child class the fake knows
    std::vector<Node> kids;   // one per slot
    bool listFails = false;   // QV_Object_GetChildObjects fails
    bool countFails = false;  // QV_Object_GetChildCount fails
};

struct Handle { Node* node; size_t next = 0; bool failedOnce = false; bool enumerator = false; };

constexpr int32_t kFailure = -3;
int g_live = 0;
std::vector<const Node*> g_disposed;

Handle* Make(Node* node, bool enumerator) {
    ++g_live;
    Handle* h = new Handle{node};
    h->enumerator = enumerator;
    return h;
}

}  // namespace

extern "C" {
int32_t QV_API QV_Object_Dispose(QV_OBJ obj) {
    Handle* h = static_cast<Handle*>(obj);
    if (!h->enumerator) g_disposed.push_back(h->node);
    delete h;
    --g_live;
    return QV_S_OK;
}
int32_t QV_API QV_Object_GetChildCount(QV_OBJ obj, int32_t, int32_t* count) {
    const Node* n = static_cast<Handle*>(obj)->node;
    if (n->countFails) return kFailure;
    *count = static_cast<int32_t>(n->slots.size());
    return QV_S_OK;
}
int32_t QV_API QV_Object_GetChildObjects(QV_OBJ obj, int32_t, QV_OBJ* objs) {
    Node* n = static_cast<Handle*>(obj)->node;
    if (n->listFails) return kFailure;
    *objs = Make(n, true);
    return QV_S_OK;
}
int32_t QV_API QV_Objects_GetNext(QV_OBJ objs, QV_OBJ* child) {
    Handle* e = static_cast<Handle*>(objs);
    if (e->next >= e->node->slots.size()) return QV_E_NO_MORE_ITEMS;
    const char slot = e->node->slots[e->next];
    if (slot == 's' || (slot == 'f' && !e->failedOnce)) {
        e->failedOnce = true;
        return kFailure;
    }
    e->failedOnce = false;
    *child = Make(&e->node->kids[e->next++], false);
    return QV_S_OK;
}
// As the library: the length without a buffer, else as wcsncpy into the
// count passed in plus a terminator.
static int32_t Name(QV_OBJ obj, QV_WCHAR* text, uint32_t* len) {
    const std::u16string& name = static_cast<Handle*>(obj)->node->name;
    if (text == nullptr) {
        *len = static_cast<uint32_t>(name.size());
        return QV_S_OK;
    }
    uint32_t i = 0;
    for (; i < *len && i < name.size(); ++i) text[i] = static_cast<QV_WCHAR>(name[i]);
    text[i] = 0;
    *len = i;
    return QV_S_OK;
}
int32_t QV_API QV_Object_GetName(QV_OBJ obj, QV_WCHAR* text, uint32_t* len) { return Name(obj, text, len); }
int32_t QV_API QV_Object_GetDisplayName(QV_OBJ obj, QV_WCHAR* text, uint32_t* len) { return Name(obj, text, len); }
}

namespace tqnralm {
namespace {

Node Parent(const std::string& slots) {
    Node n;
    n.slots = slots;
    n.kids.resize(slots.size());
    for (size_t i = 0; i < slots.size(); ++i) n.kids[i].name = u"child " + std::u16string(1, u'0' + i);
    return n;
}

// Each answer of Next as "position:OK" or "position:failed", then the children unreached.
std::string Walk(Node& parent) {
    std::string seen;
    {
        Ref holder(Make(&parent, false));
        Children children(holder.get(), QV_CLASS_MAILFOLDER);
        Ref child;
        for (int32_t code; (code = children.Next(&child)) != QV_E_NO_MORE_ITEMS;) {
            seen += std::to_string(children.position()) + (code == QV_S_OK ? ":OK " : ":failed ");
        }
        seen += "unreached " + std::to_string(children.Unreached());
    }
    EXPECT_EQ(g_live, 0) << "a reference was not given back";
    return seen;
}

TEST(Tree, ChildrenReportEachFailureAndCountWhatTheyCannotReach) {
    struct Row { const char* name; std::string slots; bool listFails, countFails; std::string expected; } rows[] = {
        {"all children", "ooo", false, false, "0:OK 1:OK 2:OK unreached 0"},
        {"a child that fails once is passed over", "ofo", false, false, "0:OK 1:failed 2:OK unreached 0"},
        {"a stuck child ends the list", "osoo", false, false, "0:OK 1:failed unreached 2"},
        {"stuck on the last child", "oos", false, false, "0:OK 1:OK 2:failed unreached 0"},
        {"stuck, and no count", "osoo", false, true, "0:OK 1:failed unreached 0"},
        {"no list: the rest of the count", "ooo", true, false, "0:failed unreached 2"},
        {"no list and no count: one", "ooo", true, true, "0:failed unreached 0"},
        {"no children", "", false, false, "unreached 0"},
    };
    for (const Row& row : rows) {
        Node parent = Parent(row.slots);
        parent.listFails = row.listFails;
        parent.countFails = row.countFails;
        EXPECT_EQ(Walk(parent), row.expected) << row.name;
    }
}

TEST(Tree, NamesOfEveryLength) {
    for (size_t length : {0, 1, 254, 255, 256, 1000}) {
        Node node;
        for (size_t i = 0; i < length; ++i) node.name += static_cast<char16_t>(u'a' + i % 26);
        node.name += u"\u65e5";  // one Japanese character ends each, three bytes in UTF-8
        Ref obj(Make(&node, false));
        std::string name;
        ASSERT_EQ(GetName(obj.get(), false, &name), QV_S_OK) << length;
        EXPECT_EQ(name.size(), length + 3) << length;
        EXPECT_EQ(name.substr(length), "\xe6\x97\xa5") << length;
    }
}

// The path's classes do not matter to the fake.
int32_t AnyClass(size_t, size_t) { return QV_CLASS_MAILFOLDER; }

TEST(Tree, OpenPathKeepsPositionsAndGivesReferencesBackInnermostFirst) {
    Node root = Parent("ofo");
    root.kids[2] = Parent("oo");
    root.kids[2].kids[1] = Parent("o");
    root.kids[0] = Parent("so");
    struct Row { const char* path; int32_t code; const Node* found; } rows[] = {
        {"2/1/0", QV_S_OK, &root.kids[2].kids[1].kids[0]},
        {"2", QV_S_OK, &root.kids[2]},
        {"1", kFailure, nullptr},            // the failing child itself
        {"0/0", kFailure, nullptr},          // a stuck child
        {"0/1", QV_E_NO_MORE_ITEMS, nullptr},  // behind it: the list ended there
        {"3", QV_E_NO_MORE_ITEMS, nullptr},  // past the last child
        {"2/1/5", QV_E_NO_MORE_ITEMS, nullptr},
    };
    for (const Row& row : rows) {
        IndexPath path;
        ASSERT_TRUE(IndexPath::Parse(row.path, &path)) << row.path;
        g_disposed.clear();
        {
            Ref top(Make(&root, false));
            PathRefs refs;
            EXPECT_EQ(OpenPath(top.get(), path, AnyClass, &refs), row.code) << row.path;
            if (row.found != nullptr) {
                ASSERT_NE(refs.get(), nullptr);
                EXPECT_EQ(static_cast<Handle*>(refs.get())->node, row.found) << row.path;
                g_disposed.clear();
            }
        }
        EXPECT_EQ(g_live, 0) << row.path;
        if (row.found != nullptr) {
            ASSERT_EQ(g_disposed.size(), path.depth() + 1) << row.path;
            EXPECT_EQ(g_disposed.front(), row.found) << "the innermost first: " << row.path;
            EXPECT_EQ(g_disposed.back(), &root) << row.path;
        }
    }
}

TEST(Tree, IndexPathsReadAndWrite) {
    struct Row { const char* text; bool ok; const char* written; } rows[] = {
        {"0/0/1/2", true, "0/0/1/2"}, {"7", true, "7"},   {"007/10", true, "7/10"},
        {"", false, ""},              {"0//1", false, ""}, {"1/", false, ""},
        {"/1", false, ""},            {"-1", false, ""},   {"1/x", false, ""},
        {"1.5", false, ""},
    };
    for (const Row& row : rows) {
        IndexPath path;
        EXPECT_EQ(IndexPath::Parse(row.text, &path), row.ok) << row.text;
        if (row.ok) {
            EXPECT_EQ(path.ToString(), row.written) << row.text;
        }
    }
    EXPECT_EQ(IndexPath().ToString(), "");
    EXPECT_EQ(IndexPath().Child(3).Child(0).ToString(), "3/0");
}

}  // namespace
}  // namespace tqnralm
