// `tree`, `cat` and `version`: the whole tree as text, one message's raw
// text, the interface version.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Commands.h"
#include "Console.h"
#include "Library.h"

namespace tqnralm {
namespace {

const char* ClassName(int32_t nClass, bool plural = false) {
    static const char* const names[] = {"?", "root", "objects", "user", "account", "folder",
                                        "message", "book", "group", "address"};
    static const char* const plurals[] = {"?", "roots", "objects", "users", "accounts", "folders",
                                          "messages", "books", "groups", "addresses"};
    if (nClass < 1 || nClass > 9) return "?";
    return plural ? plurals[nClass] : names[nClass];
}

// The child classes a host may ask each class for, in the order printed.
std::vector<int32_t> ChildClasses(int32_t nClass) {
    switch (nClass) {
    case QV_CLASS_ROOT: return {QV_CLASS_USER};
    case QV_CLASS_USER: return {QV_CLASS_ACCOUNT, QV_CLASS_ADDRESSBOOK};
    case QV_CLASS_ACCOUNT: return {QV_CLASS_MAILFOLDER};
    case QV_CLASS_MAILFOLDER: return {QV_CLASS_MAILFOLDER, QV_CLASS_MAILMESSAGE};
    case QV_CLASS_ADDRESSBOOK: return {QV_CLASS_ADDRESSGROUP};
    case QV_CLASS_ADDRESSGROUP: return {QV_CLASS_ADDRESSGROUP, QV_CLASS_ADDRESS};
    default: return {};
    }
}

struct TreePrinter {
    int failures = 0;

    void Print(QV_OBJ obj, int depth, const std::string& index) {
        int32_t nClass = 0;
        if (QV_Object_GetClass(obj, &nClass) != QV_S_OK) {
            ++failures;
            return;
        }
        std::string line(static_cast<size_t>(2 * depth), ' ');
        line += ClassName(nClass);
        if (!index.empty()) line += " [" + index + "]";
        switch (nClass) {
        case QV_CLASS_MAILMESSAGE:
            line += " subject=\"" + NameOrError(obj, true) + "\" id=\"" + NameOrError(obj, false) + "\"";
            break;
        case QV_CLASS_ADDRESS:
            line += " heading=\"" + NameOrError(obj, true) + "\" address=\"" + NameOrError(obj, false) + "\"";
            break;
        default: {
            const std::string name = NameOrError(obj, false);
            line += " name=\"" + name + "\"";
            std::string display = NameOrError(obj, true);
            if (display != name) line += " display=\"" + display + "\"";
        }
        }
        uint32_t attr = 0;
        if (QV_Object_GetAttributes(obj, &attr) == QV_S_OK && attr != 0) {
            char hex[16];
            std::snprintf(hex, sizeof hex, "%x", attr);
            line += std::string(" attributes=0x") + hex;
        }
        const std::vector<int32_t> classes = ChildClasses(nClass);
        for (int32_t child : classes) {
            int32_t count = 0;
            int32_t code = QV_Object_GetChildCount(obj, child, &count);
            line += std::string(" ") + ClassName(child, true) + "=" +
                    (code == QV_S_OK ? std::to_string(count) : "<error " + std::to_string(code) + ">");
        }
        tqnralm::Print(stdout, "%s\n", line.c_str());
        for (int32_t child : classes) {
            Children children(obj, child);
            if (children.code() != QV_S_OK) {
                ++failures;
                continue;
            }
            Ref item;
            for (int n = 0;; ++n) {
                int32_t code = children.Next(&item);
                if (code == QV_E_NO_MORE_ITEMS) break;
                if (code != QV_S_OK) {
                    tqnralm::Print(stdout, "%s<error %d> [%s]\n",
                                   std::string(static_cast<size_t>(2 * depth + 2), ' ').c_str(), static_cast<int>(code),
                                   ((index.empty() ? "" : index + "/") + std::to_string(n)).c_str());
                    ++failures;
                    continue;
                }
                Print(item.get(), depth + 1, (index.empty() ? "" : index + "/") + std::to_string(n));
            }
        }
    }
};

// The child at a position of one class, with a reference. A child before
// it that fails takes its position all the same, as in `tree`.
int32_t ChildAt(QV_OBJ parent, int32_t nClass, long index, Ref* out) {
    Children children(parent, nClass);
    int32_t code = QV_E_NO_MORE_ITEMS;
    for (long i = 0; i <= index; ++i) {
        code = children.Next(out);
        if (code == QV_E_NO_MORE_ITEMS) break;
    }
    return code;
}

}  // namespace

int RunVersion(const GlobalOptions& global) {
    Session session;
    if (int exit = session.StartLog(global)) return exit;
    int32_t version = QV_GetVersion();
    Print(stdout, "TQNRALM interface %d.%d\n", static_cast<int>(version >> 16), static_cast<int>(version & 0xFFFF));
    return kExitOk;
}

int RunTree(const GlobalOptions& global) {
    Session session;
    if (int exit = session.StartLog(global)) return exit;
    if (int exit = session.Open()) return exit;
    TreePrinter printer;
    printer.Print(session.root(), 0, "");
    return printer.failures == 0 ? kExitOk : kExitIncomplete;
}

int RunCat(const GlobalOptions& global, const std::string& path) {
    std::vector<long> indexes;
    for (size_t start = 0; start <= path.size();) {
        size_t end = path.find('/', start);
        if (end == std::string::npos) end = path.size();
        std::string part = path.substr(start, end - start);
        char* rest = nullptr;
        long value = std::strtol(part.c_str(), &rest, 10);
        if (part.empty() || *rest != '\0' || value < 0) {
            Print(stderr, "tqnralm: bad message path '%s'\n", path.c_str());
            return kExitUsage;
        }
        indexes.push_back(value);
        start = end + 1;
    }
    if (indexes.size() < 4) {
        Print(stderr, "tqnralm: a message path has at least user/account/folder/message\n");
        return kExitUsage;
    }
    Session session;
    if (int exit = session.StartLog(global)) return exit;
    if (int exit = session.Open()) return exit;
    std::vector<Ref> held;
    QV_OBJ current = session.root();
    int32_t code = QV_S_OK;
    for (size_t i = 0; i < indexes.size() && code == QV_S_OK; ++i) {
        int32_t nClass = i == 0 ? QV_CLASS_USER
                         : i == 1 ? QV_CLASS_ACCOUNT
                         : i + 1 == indexes.size() ? QV_CLASS_MAILMESSAGE
                                                   : QV_CLASS_MAILFOLDER;
        Ref next;
        code = ChildAt(current, nClass, indexes[i], &next);
        if (code == QV_S_OK) {
            current = next.get();
            held.push_back(std::move(next));
        }
    }
    if (code != QV_S_OK) {
        Print(stderr, "tqnralm: no message at '%s' (code %d)\n", path.c_str(), static_cast<int>(code));
        return kExitIncomplete;
    }
    QV_MAIL_DATA data;
    code = QV_MailMessage_GetData(current, &data);
    if (code != QV_S_OK) {
        Print(stderr, "tqnralm: the message cannot be read (code %d)\n", static_cast<int>(code));
        return kExitIncomplete;
    }
    std::fwrite(data.pszMailText, 1, data.nMailTextLen, stdout);
    data.pfnFree(data.pszMailText);
    while (!held.empty()) held.pop_back();  // the innermost object first
    return kExitOk;
}

}  // namespace tqnralm
