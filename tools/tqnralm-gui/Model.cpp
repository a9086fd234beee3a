// The assistant's view of the plan, the progress and the manifest (Model.h).
#include "Model.h"

#include <algorithm>
#include <cstdio>

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
    found->rows.push_back({1, AccountName(account), 0});
    if (!account.sameAs.empty()) return;
    for (const FolderPlan& folder : account.folders) {
        open.resize(std::min(open.size(), std::max<size_t>(folder.path.size(), 1)));
        for (size_t row : open) found->rows[row].messages += folder.expected;
        open.push_back(found->rows.size());
        found->rows.push_back({static_cast<int>(open.size()), Shown(folder.name), folder.expected});
        ++found->folders;
        found->messages += folder.expected;
    }
}

}  // namespace

Found FoundFromPlan(const ExportPlan& plan) {
    Found found;
    for (const UserPlan& user : plan.users) {
        const size_t userRow = found.rows.size();
        found.rows.push_back({0, Shown(user.name), 0});
        ++found.users;
        const int64_t before = found.messages;
        for (const AccountPlan& account : user.accounts) AddAccount(account, &found);
        found.rows[userRow].messages = found.messages - before;
    }
    return found;
}

std::string ProgressLine(int64_t done, int64_t total, uint64_t bytes, double seconds) {
    const double rate = seconds > 0 ? done / seconds : 0;
    char left[32] = "--:--", mb[32], perSecond[32];
    if (rate > 0 && total >= done) {
        const long s = static_cast<long>((total - done) / rate + 0.5);
        std::snprintf(left, sizeof left, "%ld:%02ld", s / 60, s % 60);
    }
    std::snprintf(mb, sizeof mb, "%.1f", bytes / 1e6);
    std::snprintf(perSecond, sizeof perSecond, "%.0f", rate);
    return Format(Text::kProgress, {std::to_string(done), std::to_string(total), mb, perSecond, left});
}

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
    const auto problems = manifest.find("problems");
    if (problems != manifest.end() && problems->is_array()) {
        for (const nlohmann::json& p : *problems) {
            if (!p.is_object()) continue;
            const auto text = [&p](const char* key) {
                const auto it = p.find(key);
                return it == p.end() ? std::string("?") : it->is_string() ? it->get<std::string>() : it->dump();
            };
            totals.problems.push_back(text("item") + " " + text("index") + " (code " + text("code") + ")");
        }
    }
    totals.read = true;
    return totals;
}

}  // namespace gui
}  // namespace tqnralm
