// StoreWalk.h - one whole walk of the machine's store through the exports,
// as a host makes it: installed test, Init, every object's names, counts and
// data, Exit. Nothing is asserted on the way, so that a walk under a fault or
// over a damaged store can be compared and its codes checked afterwards.
#ifndef QV_TESTS_E2E_STOREWALK_H
#define QV_TESTS_E2E_STOREWALK_H

#include <set>
#include <string>
#include <vector>

#include "tqnralm.h"

namespace qvt {

struct WalkResult {
    std::vector<std::string> lines;  // one per object and per failed call
    std::set<int32_t> codes;         // every code a call returned
    bool leftAlive = false;          // a dispose that failed
};

inline bool DocumentedCode(int32_t code) {
    static const std::set<int32_t> kCodes = {
        QV_S_OK,          QV_E_UNEXPECTED,      QV_E_ACCESS_DENIED,    QV_E_BAD_PATH,
        QV_E_DISK_FULL,   QV_E_INVALID_ARGUMENT, QV_E_NO_MORE_ITEMS,   QV_E_OUT_OF_MEMORY,
        QV_E_FILE_NOT_FOUND, QV_E_SHARING_VIOLATION, QV_E_LOG_FILE, QV_E_ALREADY_LOGGING};
    return kCodes.count(code) != 0;
}

class StoreWalker {
public:
    WalkResult Run() {
        r_ = WalkResult{};
        QV_BOOL installed = 0;
        Note("installed", QV_IsMailerInstalled(&installed));
        r_.lines.push_back("installed " + std::to_string(installed));
        if (Note("init", QV_InitLibrary()) == QV_S_OK) {
            QV_OBJ root = nullptr;
            if (Note("root", QV_GetRootObject(&root)) == QV_S_OK) {
                Object(root, 0);
                Dispose(root);
            }
        }
        Note("exit", QV_ExitLibrary());
        return r_;
    }

private:
    int32_t Note(const std::string& what, int32_t code) {
        r_.codes.insert(code);
        if (code != QV_S_OK) r_.lines.push_back("  " + what + " !" + std::to_string(code));
        return code;
    }
    void Dispose(QV_OBJ obj) {
        const int32_t code = QV_Object_Dispose(obj);
        r_.codes.insert(code);
        if (code != QV_S_OK) r_.leftAlive = true;
    }
    std::string Text(QV_OBJ obj, bool display) {
        auto get = display ? QV_Object_GetDisplayName : QV_Object_GetName;
        uint32_t len = 0;
        if (Note("len", get(obj, nullptr, &len)) != QV_S_OK) return "?";
        std::vector<QV_WCHAR> buf(len + 1, 0);
        if (Note("name", get(obj, buf.data(), &len)) != QV_S_OK) return "?";
        std::string out;
        for (size_t i = 0; i < len && buf[i] != 0; ++i) out += std::to_string(buf[i]) + ".";
        return out;
    }
    void Object(QV_OBJ obj, int depth) {
        int32_t nClass = 0;
        Note("class", QV_Object_GetClass(obj, &nClass));
        uint32_t attr = 0;
        Note("attr", QV_Object_GetAttributes(obj, &attr));
        std::string line = std::to_string(depth) + " " + std::to_string(nClass) + " " + Text(obj, false) + " | " +
                           Text(obj, true) + " " + std::to_string(attr);
        if (nClass == QV_CLASS_MAILMESSAGE) {
            QV_MAIL_DATA data{};
            if (Note("mail", QV_MailMessage_GetData(obj, &data)) == QV_S_OK) {
                line += " text " + std::to_string(data.nMailTextLen);
                data.pfnFree(data.pszMailText);
            }
        } else if (nClass == QV_CLASS_ADDRESS) {
            QV_ADDRESS_DATA data{};
            if (Note("address", QV_Address_GetData(obj, &data)) == QV_S_OK) {
                if (data.lpszEmailInternet != nullptr)
                    line += " mail " + std::to_string(std::char_traits<QV_WCHAR>::length(data.lpszEmailInternet));
                data.pfnRelease(&data);
            }
        }
        r_.lines.push_back(line);
        static const std::vector<int32_t> kChildren[10] = {{}, {3}, {}, {4, 7}, {5}, {5, 6}, {}, {8}, {8, 9}, {}};
        if (nClass < 0 || nClass > 9) return;
        for (int32_t child : kChildren[nClass]) {
            int32_t count = -1;
            Note("count", QV_Object_GetChildCount(obj, child, &count));
            r_.lines.push_back(std::string(depth + 1, ' ') + "count " + std::to_string(count));
            QV_OBJ objs = nullptr, item = nullptr;
            if (Note("children", QV_Object_GetChildObjects(obj, child, &objs)) != QV_S_OK) continue;
            for (;;) {
                const int32_t code = QV_Objects_GetNext(objs, &item);
                if (code == QV_E_NO_MORE_ITEMS) break;
                if (Note("next", code) != QV_S_OK) break;
                Object(item, depth + 1);
                Dispose(item);
            }
            Dispose(objs);
        }
    }

    WalkResult r_;
};

}  // namespace qvt

#endif  // QV_TESTS_E2E_STOREWALK_H
