// StoreWalk.h - one whole walk of the machine's store through the exports, as
// a host makes it, asserting nothing on the way: a walk under a fault or over
// a damaged store is compared and its codes checked afterwards.
#ifndef QV_TESTS_E2E_STOREWALK_H
#define QV_TESTS_E2E_STOREWALK_H

#include <chrono>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "tqnralm.h"

namespace qvt {

// A number from the environment, else the fallback; a seed that varies by run.
inline long EnvOr(const char* name, long fallback) {
    const char* text = std::getenv(name);
    return text != nullptr && *text != 0 ? std::strtol(text, nullptr, 10) : fallback;
}
inline long RunSeed() {
    return static_cast<long>(std::chrono::system_clock::now().time_since_epoch().count() % 1000003);
}

inline bool DocumentedCode(int32_t code) {
    static const std::set<int32_t> kCodes = {
        QV_S_OK,          QV_E_UNEXPECTED,      QV_E_ACCESS_DENIED,    QV_E_BAD_PATH,
        QV_E_DISK_FULL,   QV_E_INVALID_ARGUMENT, QV_E_NO_MORE_ITEMS,   QV_E_OUT_OF_MEMORY,
        QV_E_FILE_NOT_FOUND, QV_E_SHARING_VIOLATION, QV_E_LOG_FILE, QV_E_ALREADY_LOGGING};
    return kCodes.count(code) != 0;
}

// The walk as a tree: each object's line and its child lists, each marked
// when a call on it returned a failure code.
struct WalkNode;
struct WalkList {
    std::string count;
    bool failed = false;
    std::vector<WalkNode> children;
};
struct WalkNode {
    std::string line;
    bool failed = false;
    std::vector<WalkList> lists;
};

struct WalkResult {
    std::vector<std::string> lines;  // one per object and per failed call
    WalkNode tree;                   // the installed test's line, the root below
    std::set<int32_t> codes;         // every code a call returned
    bool leftAlive = false;          // a dispose that failed

    // "" for a clean walk: documented codes only, every object given back.
    std::string Problems() const {
        std::string out = leftAlive ? "an object left alive" : "";
        for (int32_t code : codes) out += DocumentedCode(code) ? "" : " code " + std::to_string(code);
        return out;
    }
};

class StoreWalker {
public:
    // Called with true before each call into the library and false after it
    // (the fault countdowns count only the library's allocations).
    static void SetAround(void (*around)(bool inLibrary)) { around_ = around; }

    WalkResult Run() {
        r_ = WalkResult{};
        failed_ = &r_.tree.failed;
        QV_BOOL installed = 0;
        Note("installed", Call([&] { return QV_IsMailerInstalled(&installed); }));
        r_.lines.push_back("installed " + std::to_string(installed));
        r_.tree.line = r_.lines.back();
        r_.tree.lists.emplace_back();
        failed_ = &r_.tree.lists[0].failed;
        if (Note("init", Call([&] { return QV_InitLibrary(); })) == QV_S_OK) {
            QV_OBJ root = nullptr;
            if (Note("root", Call([&] { return QV_GetRootObject(&root); })) == QV_S_OK) {
                r_.tree.lists[0].children.emplace_back();
                Object(root, 0, r_.tree.lists[0].children.back());
                Dispose(root);
            }
        }
        failed_ = nullptr;
        Note("exit", Call([&] { return QV_ExitLibrary(); }));
        return r_;
    }

private:
    inline static void (*around_)(bool) = nullptr;
    // One call into the library.
    template <typename F>
    static int32_t Call(F f) {
        if (around_ != nullptr) around_(true);
        const int32_t code = f();
        if (around_ != nullptr) around_(false);
        return code;
    }

    int32_t Note(const std::string& what, int32_t code) {
        r_.codes.insert(code);
        if (code != QV_S_OK) r_.lines.push_back("  " + what + " !" + std::to_string(code));
        if (code != QV_S_OK && failed_ != nullptr) *failed_ = true;
        return code;
    }
    void Dispose(QV_OBJ obj) {
        const int32_t code = Call([&] { return QV_Object_Dispose(obj); });
        r_.codes.insert(code);
        if (code != QV_S_OK) r_.leftAlive = true;
    }
    std::string Text(QV_OBJ obj, bool display) {
        auto get = display ? QV_Object_GetDisplayName : QV_Object_GetName;
        uint32_t len = 0;
        if (Note("len", Call([&] { return get(obj, nullptr, &len); })) != QV_S_OK) return "?";
        std::vector<QV_WCHAR> buf(len + 1, 0);
        if (Note("name", Call([&] { return get(obj, buf.data(), &len); })) != QV_S_OK) return "?";
        std::string out;
        for (size_t i = 0; i < len && buf[i] != 0; ++i) out += std::to_string(buf[i]) + ".";
        return out;
    }
    void Object(QV_OBJ obj, int depth, WalkNode& node) {
        failed_ = &node.failed;
        int32_t nClass = 0;
        Note("class", Call([&] { return QV_Object_GetClass(obj, &nClass); }));
        uint32_t attr = 0;
        Note("attr", Call([&] { return QV_Object_GetAttributes(obj, &attr); }));
        std::string line = std::to_string(depth) + " " + std::to_string(nClass) + " " + Text(obj, false) + " | " +
                           Text(obj, true) + " " + std::to_string(attr);
        if (nClass == QV_CLASS_MAILMESSAGE) {
            QV_MAIL_DATA data{};
            if (Note("mail", Call([&] { return QV_MailMessage_GetData(obj, &data); })) == QV_S_OK) {
                line += " text " + std::to_string(data.nMailTextLen);
                Call([&] { data.pfnFree(data.pszMailText); return 0; });
            }
        } else if (nClass == QV_CLASS_ADDRESS) {
            QV_ADDRESS_DATA data{};
            if (Note("address", Call([&] { return QV_Address_GetData(obj, &data); })) == QV_S_OK) {
                if (data.lpszEmailInternet != nullptr)
                    line += " mail " + std::to_string(std::char_traits<QV_WCHAR>::length(data.lpszEmailInternet));
                Call([&] { data.pfnRelease(&data); return 0; });
            }
        }
        r_.lines.push_back(line);
        node.line = line;
        static const std::vector<int32_t> kChildren[10] = {{}, {3}, {}, {4, 7}, {5}, {5, 6}, {}, {8}, {8, 9}, {}};
        if (nClass < 0 || nClass > 9) return;
        for (int32_t child : kChildren[nClass]) {
            node.lists.emplace_back();
            WalkList& list = node.lists.back();
            failed_ = &list.failed;
            int32_t count = -1;
            Note("count", Call([&] { return QV_Object_GetChildCount(obj, child, &count); }));
            r_.lines.push_back(std::string(depth + 1, ' ') + "count " + std::to_string(count));
            list.count = r_.lines.back();
            QV_OBJ objs = nullptr, item = nullptr;
            if (Note("children", Call([&] { return QV_Object_GetChildObjects(obj, child, &objs); })) != QV_S_OK) continue;
            for (;;) {
                const int32_t code = Call([&] { return QV_Objects_GetNext(objs, &item); });
                if (code == QV_E_NO_MORE_ITEMS) break;
                if (Note("next", code) != QV_S_OK) break;
                list.children.emplace_back();
                Object(item, depth + 1, list.children.back());
                failed_ = &list.failed;
                Dispose(item);
            }
            Dispose(objs);
        }
    }

    WalkResult r_;
    bool* failed_ = nullptr;  // where a failure code is marked
};

}  // namespace qvt

#endif  // QV_TESTS_E2E_STOREWALK_H
