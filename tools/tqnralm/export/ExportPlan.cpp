// The plan of an export (see ExportPlan.h).
#include "ExportPlan.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <map>

#include "Report.h"
#include "Journal.h"
#include "Manifest.h"

namespace tqnralm {
namespace {

// A name for the path, as its owner wrote it; when the library cannot give
// one, the class and index.
std::string NameFor(QV_OBJ obj, bool display, const std::string& fallback) {
    std::string name;
    return GetName(obj, display, &name) == QV_S_OK && !name.empty() ? UnescapeName(name) : fallback;
}

class Planner {
public:
    Planner(const MailWriter& writer, ExportPlan* plan) : writer_(writer), plan_(plan) {}

    void User(Ref user, const IndexPath& at, const std::string& dir) {
        UserPlan u;
        u.index = at.ToString();
        GetName(user.get(), false, &u.name);
        u.dir = dir;
        SiblingNames accountNames(writer_.AccountNames());
        // The address books go beside the accounts.
        accountNames.Reserve("addresses");
        Children accounts(user.get(), QV_CLASS_ACCOUNT);
        Ref account;
        for (int32_t code; (code = accounts.Next(&account)) != QV_E_NO_MORE_ITEMS;) {
            const IndexPath child = at.Child(accounts.position());
            if (code != QV_S_OK) {
                plan_->problems.push_back({child.ToString(), "account", code});
                continue;
            }
            Account(account.get(), child, u, accountNames);
        }
        u.user = std::move(user);
        plan_->users.push_back(std::move(u));
    }

private:
    void Account(QV_OBJ account, const IndexPath& at, UserPlan& user, SiblingNames& names) {
        AccountPlan a;
        a.index = at.ToString();
        GetName(account, false, &a.name);
        if (GetName(account, true, &a.displayName) != QV_S_OK) a.displayName.clear();
        auto first = written_.find(a.name);
        if (!a.name.empty() && first != written_.end()) {
            // Two users reach one account: its mail is written once.
            a.sameAs = first->second.first;
            a.dir = first->second.second;
            user.accounts.push_back(std::move(a));
            return;
        }
        // An account without a title is named after its folder on the mail client's machine.
        const std::string shown = !a.displayName.empty() ? UnescapeName(a.displayName)
                                  : !a.name.empty()      ? LastPathComponent(UnescapeName(a.name))
                                                         : "Account " + a.index;
        a.dir = user.dir + "/" + names.Claim(shown);
        written_[a.name] = {a.index, a.dir};
        Folders(account, at, a, {});
        PlaceInbox(a);
        user.accounts.push_back(std::move(a));
    }

    // The account's inbox, for a form that keeps one apart (the Maildir's
    // INBOX): the top folder titled 郵便受け (the title the client gives its
    // inbox.box), else one titled 受信箱 or Inbox. The client does not mark
    // its inbox otherwise.
    void PlaceInbox(AccountPlan& account) {
        const std::string inboxName = writer_.InboxName();
        if (inboxName.empty()) return;
        const FolderPlan* inbox = nullptr;
        for (const FolderPlan& f : account.folders) {
            if (f.path.size() != 1) continue;
            const std::string title = UnescapeName(f.name);
            if (title == "郵便受け") {
                inbox = &f;
                break;
            }
            if (inbox == nullptr && (title == "受信箱" || FoldCase(title) == "inbox")) inbox = &f;
        }
        if (inbox == nullptr) return;
        account.inbox = inbox->index;
        // Its subfolders go with it: top names are unique, so the first name tells the subtree.
        const std::string top = inbox->path[0];
        for (FolderPlan& f : account.folders) {
            if (f.path[0] != top) continue;
            f.path[0] = inboxName;
            f.target = writer_.FolderTarget(account.dir, f.path);
        }
    }

    // The folders below `parent` in tree order, each before its subfolders.
    void Folders(QV_OBJ parent, const IndexPath& at, AccountPlan& account, const std::vector<std::string>& path) {
        SiblingNames names(writer_.FolderNames());
        Children folders(parent, QV_CLASS_MAILFOLDER);
        Ref folder;
        for (int32_t code; (code = folders.Next(&folder)) != QV_E_NO_MORE_ITEMS;) {
            const IndexPath child = at.Child(folders.position());
            const std::string childIndex = child.ToString();
            if (code != QV_S_OK) {
                plan_->problems.push_back({childIndex, "folder", code});
                continue;
            }
            FolderPlan f;
            f.index = childIndex;
            GetName(folder.get(), false, &f.name);
            std::vector<std::string> childPath = path;
            childPath.push_back(names.Claim(NameFor(folder.get(), false, "Folder " + childIndex)));
            f.target = writer_.FolderTarget(account.dir, childPath);
            f.path = childPath;
            int32_t count = 0;
            code = QV_Object_GetChildCount(folder.get(), QV_CLASS_MAILMESSAGE, &count);
            if (code != QV_S_OK) plan_->problems.push_back({childIndex, "message count", code});
            f.expected = code == QV_S_OK ? count : 0;
            plan_->expected += f.expected;
            ++plan_->folders;
            QV_OBJ held = folder.get();
            f.folder = std::move(folder);
            account.folders.push_back(std::move(f));
            Folders(held, child, account, childPath);
        }
    }

    const MailWriter& writer_;
    ExportPlan* plan_;
    std::map<std::string, std::pair<std::string, std::string>> written_;  // name -> index, dir
};

}  // namespace

int MakePlan(QV_OBJ root, const ExportOptions& options, const MailWriter& writer, ExportPlan* plan) {
    int32_t count = 0;
    int32_t code = QV_Object_GetChildCount(root, QV_CLASS_USER, &count);
    for (int index : options.users) {
        if (code == QV_S_OK && index >= count) {
            ReportOr(options.report)
                .Say(Channel::kMessage, "tqnralm: there is no user %d (the users are 0 to %d; see 'tqnralm tree')\n",
                     index, static_cast<int>(count) - 1);
            return kExitUsage;
        }
    }
    SiblingNames userNames;
    userNames.Reserve(Manifest::kFileName);
    userNames.Reserve(std::string(Manifest::kFileName) + ".partial");
    userNames.Reserve(Journal::kFileName);
    userNames.Reserve(std::string(Journal::kFileName) + ".new");
    Planner planner(writer, plan);
    Children users(root, QV_CLASS_USER);
    Ref user;
    while ((code = users.Next(&user)) != QV_E_NO_MORE_ITEMS) {
        const IndexPath at = IndexPath().Child(users.position());
        if (code != QV_S_OK) {
            plan->problems.push_back({at.ToString(), "user", code});
            continue;
        }
        // Every user takes its name, so that a user's folder is the same
        // whichever users an export asks for.
        const std::string dir = userNames.Claim(NameFor(user.get(), false, "User " + at.ToString()));
        if (options.users.empty() || std::count(options.users.begin(), options.users.end(), users.position()) > 0) {
            planner.User(std::move(user), at, dir);
        }
    }
    return kExitOk;
}

std::vector<std::string> AccountFolders(const ExportPlan& plan) {
    std::vector<std::string> out;
    for (const UserPlan& user : plan.users) {
        for (const AccountPlan& account : user.accounts) {
            // The name is the folder's path with "%xx" escapes ("C:%5cAL-Mail%5cMailbox%5cAccount1").
            std::string path;
            for (size_t i = 0; i < account.name.size(); ++i) {
                if (account.name[i] == '%' && i + 2 < account.name.size() &&
                    std::isxdigit(static_cast<unsigned char>(account.name[i + 1])) &&
                    std::isxdigit(static_cast<unsigned char>(account.name[i + 2]))) {
                    path.push_back(static_cast<char>(std::stoi(account.name.substr(i + 1, 2), nullptr, 16)));
                    i += 2;
                } else {
                    path.push_back(account.name[i]);
                }
            }
            out.push_back(path);
        }
    }
    return out;
}

}  // namespace tqnralm
