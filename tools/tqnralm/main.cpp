// tqnralm - the command-line host of the library: walks the tree of an
// installed mail client and prints it, or prints one message's raw text.
// It uses nothing but the public header, as any host would.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "tqnralm.h"

namespace {

const char* const kUsage =
    "usage: tqnralm [--log FILE] COMMAND\n"
    "  version     print the interface version\n"
    "  tree        print the whole tree: users, accounts, folders, messages,\n"
    "              address books, groups and addresses\n"
    "  cat PATH    print the raw text of one message; PATH is a list of indexes\n"
    "              user/account/folder[/subfolder...]/message, as 'tree' shows them\n"
    "  --log FILE  write the library's trace log to FILE (UTF-16LE)\n"
    "The mail client's machine is the Wine prefix named by WINEPREFIX (default ~/.wine).\n";

enum Exit { kOk = 0, kFailed = 1, kUsageError = 2, kNotInstalled = 3 };

void AppendUtf8(std::string& out, uint32_t cp) {
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

std::string Utf8(const QV_WCHAR* text) {
    std::string out;
    for (size_t i = 0; text != nullptr && text[i] != 0; ++i) {
        uint32_t u = static_cast<uint16_t>(text[i]);
        uint32_t lo = static_cast<uint16_t>(text[i + 1]);
        if (u >= 0xD800 && u < 0xDC00 && lo >= 0xDC00 && lo < 0xE000) {
            u = 0x10000 + ((u - 0xD800) << 10) + (lo - 0xDC00);
            ++i;
        } else if (u >= 0xD800 && u < 0xE000) {
            u = 0xFFFD;
        }
        AppendUtf8(out, u);
    }
    return out;
}

std::vector<QV_WCHAR> Utf16(const std::string& utf8) {
    std::vector<QV_WCHAR> out;
    for (size_t i = 0; i < utf8.size();) {
        unsigned char c = static_cast<unsigned char>(utf8[i]);
        uint32_t cp = c;
        size_t n = 1;
        if (c >= 0xF0) { cp = c & 0x07; n = 4; }
        else if (c >= 0xE0) { cp = c & 0x0F; n = 3; }
        else if (c >= 0xC0) { cp = c & 0x1F; n = 2; }
        for (size_t k = 1; k < n && i + k < utf8.size(); ++k) cp = (cp << 6) | (utf8[i + k] & 0x3F);
        i += n;
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out.push_back(static_cast<QV_WCHAR>(0xD800 + (cp >> 10)));
            out.push_back(static_cast<QV_WCHAR>(0xDC00 + (cp & 0x3FF)));
        } else {
            out.push_back(static_cast<QV_WCHAR>(cp));
        }
    }
    out.push_back(0);
    return out;
}

// A name by the usual pair of calls: the length, then the text. A failure
// shows as a mark with its code, so the walk goes on.
std::string Name(QV_OBJ obj, bool display) {
    uint32_t len = 0;
    int32_t code = display ? QV_Object_GetDisplayName(obj, nullptr, &len) : QV_Object_GetName(obj, nullptr, &len);
    if (code != QV_S_OK) return "<error " + std::to_string(code) + ">";
    std::vector<QV_WCHAR> buf(len + 1);
    code = display ? QV_Object_GetDisplayName(obj, buf.data(), &len) : QV_Object_GetName(obj, buf.data(), &len);
    if (code != QV_S_OK) return "<error " + std::to_string(code) + ">";
    return Utf8(buf.data());
}

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

struct Walker {
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
            line += " subject=\"" + Name(obj, true) + "\" id=\"" + Name(obj, false) + "\"";
            break;
        case QV_CLASS_ADDRESS:
            line += " heading=\"" + Name(obj, true) + "\" address=\"" + Name(obj, false) + "\"";
            break;
        default: {
            line += " name=\"" + Name(obj, false) + "\"";
            std::string display = Name(obj, true);
            if (display != Name(obj, false)) line += " display=\"" + display + "\"";
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
        std::printf("%s\n", line.c_str());
        for (int32_t child : classes) {
            QV_OBJ objs = nullptr;
            if (QV_Object_GetChildObjects(obj, child, &objs) != QV_S_OK) {
                ++failures;
                continue;
            }
            QV_OBJ item = nullptr;
            int n = 0;
            for (;;) {
                int32_t code = QV_Objects_GetNext(objs, &item);
                if (code == QV_E_NO_MORE_ITEMS) break;
                if (code != QV_S_OK) {
                    // The enumerator stays on a child that fails: report it once.
                    std::printf("%s<error %d>\n", std::string(static_cast<size_t>(2 * depth + 2), ' ').c_str(),
                                static_cast<int>(code));
                    ++failures;
                    break;
                }
                Print(item, depth + 1, (index.empty() ? "" : index + "/") + std::to_string(n++));
                QV_Object_Dispose(item);
            }
            QV_Object_Dispose(objs);
        }
    }
};

// The child at a position of one class, with a reference.
int32_t ChildAt(QV_OBJ parent, int32_t nClass, long index, QV_OBJ* out) {
    QV_OBJ objs = nullptr;
    int32_t code = QV_Object_GetChildObjects(parent, nClass, &objs);
    if (code != QV_S_OK) return code;
    QV_OBJ item = nullptr;
    for (long i = 0; i <= index; ++i) {
        if (item != nullptr) QV_Object_Dispose(item);
        item = nullptr;
        code = QV_Objects_GetNext(objs, &item);
        if (code != QV_S_OK) break;
    }
    QV_Object_Dispose(objs);
    if (code == QV_S_OK) *out = item;
    return code;
}

int Cat(QV_OBJ root, const std::string& path) {
    std::vector<long> indexes;
    for (size_t start = 0; start <= path.size();) {
        size_t end = path.find('/', start);
        if (end == std::string::npos) end = path.size();
        std::string part = path.substr(start, end - start);
        char* rest = nullptr;
        long value = std::strtol(part.c_str(), &rest, 10);
        if (part.empty() || *rest != '\0' || value < 0) {
            std::fprintf(stderr, "tqnralm: bad message path '%s'\n", path.c_str());
            return kUsageError;
        }
        indexes.push_back(value);
        start = end + 1;
    }
    if (indexes.size() < 4) {
        std::fprintf(stderr, "tqnralm: a message path has at least user/account/folder/message\n");
        return kUsageError;
    }
    std::vector<QV_OBJ> held;
    QV_OBJ current = root;
    int32_t code = QV_S_OK;
    for (size_t i = 0; i < indexes.size() && code == QV_S_OK; ++i) {
        int32_t nClass = i == 0 ? QV_CLASS_USER
                         : i == 1 ? QV_CLASS_ACCOUNT
                         : i + 1 == indexes.size() ? QV_CLASS_MAILMESSAGE
                                                   : QV_CLASS_MAILFOLDER;
        QV_OBJ next = nullptr;
        code = ChildAt(current, nClass, indexes[i], &next);
        if (code == QV_S_OK) held.push_back(current = next);
    }
    int result = kOk;
    if (code != QV_S_OK) {
        std::fprintf(stderr, "tqnralm: no message at '%s' (code %d)\n", path.c_str(), static_cast<int>(code));
        result = kFailed;
    } else {
        QV_MAIL_DATA data;
        code = QV_MailMessage_GetData(current, &data);
        if (code == QV_S_OK) {
            std::fwrite(data.pszMailText, 1, data.nMailTextLen, stdout);
            data.pfnFree(data.pszMailText);
        } else {
            std::fprintf(stderr, "tqnralm: the message cannot be read (code %d)\n", static_cast<int>(code));
            result = kFailed;
        }
    }
    for (auto it = held.rbegin(); it != held.rend(); ++it) QV_Object_Dispose(*it);
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    std::string logFile, command, argument;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "--log" && i + 1 < argc) logFile = argv[++i];
        else if (arg == "-h" || arg == "--help") {
            std::fputs(kUsage, stdout);
            return kOk;
        } else if (command.empty()) command = arg;
        else if (argument.empty()) argument = arg;
        else {
            std::fputs(kUsage, stderr);
            return kUsageError;
        }
    }
    if (command != "version" && command != "tree" && !(command == "cat" && !argument.empty())) {
        std::fputs(kUsage, stderr);
        return kUsageError;
    }
    if (!logFile.empty()) {
        std::vector<QV_WCHAR> path = Utf16(logFile);
        int32_t code = QV_StartLogging(path.data());
        if (code != QV_S_OK) {
            std::fprintf(stderr, "tqnralm: cannot open the log file '%s' (code %d)\n", logFile.c_str(),
                         static_cast<int>(code));
            return kFailed;
        }
    }
    if (command == "version") {
        int32_t version = QV_GetVersion();
        std::printf("TQNRALM interface %d.%d\n", static_cast<int>(version >> 16), static_cast<int>(version & 0xFFFF));
        QV_EndLogging();
        return kOk;
    }
    QV_BOOL installed = 0;
    int32_t code = QV_IsMailerInstalled(&installed);
    if (code != QV_S_OK || !installed || QV_InitLibrary() != QV_S_OK) {
        std::fprintf(stderr,
                     "tqnralm: AL-Mail32 was not found on this machine (code %d). Point WINEPREFIX at the Wine "
                     "prefix that holds it.\n",
                     static_cast<int>(code));
        QV_ExitLibrary();
        return kNotInstalled;
    }
    QV_OBJ root = nullptr;
    int result = kFailed;
    if (QV_GetRootObject(&root) == QV_S_OK) {
        if (command == "tree") {
            Walker walker;
            walker.Print(root, 0, "");
            result = walker.failures == 0 ? kOk : kFailed;
        } else {
            result = Cat(root, argument);
        }
        QV_Object_Dispose(root);
    }
    QV_ExitLibrary();
    return result;
}
