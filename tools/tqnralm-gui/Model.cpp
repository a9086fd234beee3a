// The assistant's view of the plan, the progress and the manifest (Model.h).
#include "Model.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include <nlohmann/json.hpp>

#include "FileNames.h"
#include "Strings.h"

namespace tqnralm {
namespace gui {

namespace {

std::string Shown(const std::string& name) { return name.empty() ? "?" : UnescapeName(name); }

// An account without a display name by the last part of its folder's path,
// as the export names it.
std::string AccountName(const AccountPlan& account) {
    if (!account.displayName.empty()) return Shown(account.displayName);
    const std::string path = Shown(account.name);
    return path.substr(path.find_last_of('\\') + 1);
}

// A row counts the messages below it: each folder's go to the rows open
// above it (its account and the folders of its path).
void AddAccount(const AccountPlan& account, Found* found) {
    std::vector<size_t> open{found->rows.size()};  // the rows at depth 1, 2, ...
    found->rows.push_back({FoundRow::kAccount, 1, AccountName(account), 0, account.index});
    if (!account.sameAs.empty()) return;
    for (const FolderPlan& folder : account.folders) {
        open.resize(std::min(open.size(), std::max<size_t>(folder.path.size(), 1)));
        for (size_t row : open) found->rows[row].count += folder.expected;
        open.push_back(found->rows.size());
        found->rows.push_back(
            {FoundRow::kFolder, static_cast<int>(open.size()), Shown(folder.name), folder.expected, folder.index});
        ++found->folders;
        found->messages += folder.expected;
    }
}

std::string Member(const nlohmann::json& object, const char* key, const std::string& missing) {
    const auto it = object.find(key);
    return it == object.end() ? missing : it->is_string() ? it->get<std::string>() : it->dump();
}

void AddBooks(const std::string& user, const Json& books, Found* found) {
    for (const Json& book : books) {
        if (!book.is_object() || book.value("user", std::string()) != user) continue;
        const std::string name = book.value("name", std::string());
        if (book.contains("same_as")) {
            found->rows.push_back({FoundRow::kSameBook, 1, name, 0, user});
            continue;
        }
        const Json counts = book.value("addresses", Json::object());
        const int64_t addresses = counts.is_object() ? counts.value("written", int64_t(0)) : 0;
        found->rows.push_back({FoundRow::kBook, 1, name, addresses, user});
        ++found->books;
        found->addresses += addresses;
    }
}

// The manifest's name of an item in the UI language; another as it is.
std::string ItemName(const std::string& item) {
    static const std::pair<const char*, Text> kNames[] = {{"user", Text::kItemUser},
                                                          {"account", Text::kItemAccount},
                                                          {"folder", Text::kItemFolder},
                                                          {"message", Text::kItemMessage}};
    for (const auto& [name, text] : kNames) {
        if (item == name) return Str(text);
    }
    return item;
}

std::string Megabytes(uint64_t bytes) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", bytes / 1e6);
    return text;
}

}  // namespace

Found FoundFromPlan(const ExportPlan& plan, const Json& books) {
    Found found;
    for (const UserPlan& user : plan.users) {
        const size_t userRow = found.rows.size();
        found.rows.push_back({FoundRow::kUser, 0, Shown(user.name), 0, user.index});
        ++found.users;
        const int64_t before = found.messages;
        for (const AccountPlan& account : user.accounts) AddAccount(account, &found);
        found.rows[userRow].count = found.messages - before;
        if (books.is_array()) AddBooks(user.index, books, &found);
    }
    return found;
}

std::string Label(const FoundRow& row) {
    switch (row.kind) {
    case FoundRow::kBook: return Format(Text::kBookRow, {row.text, std::to_string(row.count)});
    case FoundRow::kSameBook: return Format(Text::kBookSame, {row.text});
    default: return row.text + " (" + std::to_string(row.count) + ")";
    }
}

SpaceCheck CheckSpace(const PlanTotals& plan, bool freeKnown, uint64_t freeBytes) {
    SpaceCheck check;
    const std::string free = freeKnown ? Megabytes(freeBytes) : "?";
    if (plan.exit < 0) {
        check.line = Format(Text::kCounting, {free});
        return check;
    }
    check.line = Format(Text::kPlanTotals, {std::to_string(plan.messages), Megabytes(plan.bytes), free});
    const uint64_t needed = plan.bytes + 512 * static_cast<uint64_t>(plan.messages);
    if (freeKnown && freeBytes < needed) {
        check.shortOfSpace = true;
        // What is missing rounded up: a few kilobytes are never "0.0 MB".
        const uint64_t tenths = (needed - freeBytes + 99999) / 100000;
        check.line += "\n" + Format(Text::kShortOfSpace, {Megabytes(tenths * 100000)});
    }
    return check;
}

std::string ProgressLine(int64_t done, int64_t total, uint64_t bytes, double seconds) {
    const double rate = seconds > 0 ? done / seconds : 0;
    char left[32] = "--:--", perSecond[32];
    if (rate > 0 && total >= done) {
        const long s = static_cast<long>((total - done) / rate + 0.5);
        std::snprintf(left, sizeof left, "%ld:%02ld", s / 60, s % 60);
    }
    std::snprintf(perSecond, sizeof perSecond, "%.0f", rate);
    return Format(Text::kProgress,
                  {std::to_string(done), std::to_string(total), Megabytes(bytes), perSecond, left});
}

namespace {

// The output path of each user, account and folder, by index.
std::vector<std::pair<std::string, std::string>> WrittenPaths(const nlohmann::json& manifest) {
    std::vector<std::pair<std::string, std::string>> paths;
    const auto add = [&paths](const nlohmann::json& item) {
        if (item.is_object()) paths.emplace_back(Member(item, "index", ""), Member(item, "path", ""));
    };
    const auto list = [](const nlohmann::json& object, const char* key) {
        const auto it = object.is_object() ? object.find(key) : object.end();
        return it != object.end() && it->is_array() ? *it : nlohmann::json::array();
    };
    for (const nlohmann::json& user : list(manifest, "users")) {
        add(user);
        for (const nlohmann::json& account : list(user, "accounts")) {
            add(account);
            for (const nlohmann::json& folder : list(account, "folders")) add(folder);
        }
    }
    return paths;
}

// The path of the deepest item whose index is `index` or lies above it.
std::string PathAbove(const std::vector<std::pair<std::string, std::string>>& paths, const std::string& index) {
    std::string best, bestIndex;
    for (const auto& [item, path] : paths) {
        const bool above = index.compare(0, item.size(), item) == 0 &&
                           (index.size() == item.size() || index[item.size()] == '/');
        if (!item.empty() && !path.empty() && above && item.size() > bestIndex.size()) {
            bestIndex = item;
            best = path;
        }
    }
    return best;
}

}  // namespace

DoneTotals TotalsFromManifest(const std::string& text) {
    DoneTotals totals;
    const nlohmann::json manifest = nlohmann::json::parse(text, nullptr, false);
    if (!manifest.is_object() || !manifest.contains("totals") || !manifest["totals"].is_object()) return totals;
    const nlohmann::json& t = manifest["totals"];
    const auto count = [&t](const char* key) {
        const auto it = t.find(key);
        return it != t.end() && it->is_number_integer() ? it->get<int64_t>() : int64_t(0);
    };
    totals.written = count("written");
    totals.failed = count("failed");
    totals.unread = count("unread");
    const auto paths = WrittenPaths(manifest);
    const auto add = [&](const nlohmann::json& p, const std::string& item) {
        const std::string index = Member(p, "index", "?");
        totals.problems.push_back({Format(Text::kProblemRow, {ItemName(item), index, Member(p, "code", "?")}),
                                   PathAbove(paths, index)});
    };
    for (const char* key : {"problems", "messages"}) {
        const auto list = manifest.find(key);
        if (list == manifest.end() || !list->is_array()) continue;
        for (const nlohmann::json& p : *list) {
            if (!p.is_object()) continue;
            if (key[0] == 'p') add(p, Member(p, "item", "?"));
            else if (Member(p, "status", "") == "failed") add(p, "message");
        }
    }
    totals.read = true;
    return totals;
}

}  // namespace gui
}  // namespace tqnralm
