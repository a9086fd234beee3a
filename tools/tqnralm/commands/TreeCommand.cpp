// `tree`: the whole tree as text, one line per object with its index path,
// names, attributes and child counts; a child that cannot be had is a line
// of its own, and the walk goes on.
#include <cstdio>
#include <string>
#include <vector>

#include "Command.h"
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

// The line of one object: its class, index path, names, attributes and
// the count of each class of its children.
std::string Line(QV_OBJ obj, int32_t nClass, const IndexPath& path) {
    std::string line(2 * path.depth(), ' ');
    line += ClassName(nClass);
    if (path.depth() > 0) line += " [" + path.ToString() + "]";
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
    for (int32_t child : ChildClasses(nClass)) {
        int32_t count = 0;
        int32_t code = QV_Object_GetChildCount(obj, child, &count);
        line += std::string(" ") + ClassName(child, true) + "=" +
                (code == QV_S_OK ? std::to_string(count) : "<error " + std::to_string(code) + ">");
    }
    return line;
}

struct TreePrinter {
    int failures = 0;

    void Print(QV_OBJ obj, const IndexPath& path) {
        int32_t nClass = 0;
        if (QV_Object_GetClass(obj, &nClass) != QV_S_OK) {
            ++failures;
            return;
        }
        tqnralm::Print(stdout, "%s\n", Line(obj, nClass, path).c_str());
        for (int32_t child : ChildClasses(nClass)) {
            Children children(obj, child);
            if (children.code() != QV_S_OK) {
                ++failures;
                continue;
            }
            Ref item;
            for (int32_t code; (code = children.Next(&item)) != QV_E_NO_MORE_ITEMS;) {
                const IndexPath at = path.Child(children.position());
                if (code != QV_S_OK) {
                    tqnralm::Print(stdout, "%s<error %d> [%s]\n", std::string(2 * at.depth(), ' ').c_str(),
                                   static_cast<int>(code), at.ToString().c_str());
                    ++failures;
                    continue;
                }
                Print(item.get(), at);
            }
        }
    }
};

class TreeCommand : public Command {
public:
    void Declare(CLI::App& app) override {
        app_ = app.add_subcommand("tree", "Print the whole tree: users, accounts, folders, messages, "
                                          "address books, groups and addresses");
    }

private:
    int Run(const GlobalOptions& global) override {
        Session session;
        if (int exit = session.StartLog(global)) return exit;
        if (int exit = session.Open()) return exit;
        TreePrinter printer;
        printer.Print(session.root(), IndexPath());
        return printer.failures == 0 ? kExitOk : kExitIncomplete;
    }
};

}  // namespace

std::unique_ptr<Command> MakeTreeCommand() { return std::make_unique<TreeCommand>(); }

}  // namespace tqnralm
