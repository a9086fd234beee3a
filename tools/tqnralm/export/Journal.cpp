// OUTDIR/manifest.json.journal (see Journal.h). A small JSON object.
#include "Journal.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>

#include "Manifest.h"
#include "platform/HostOs.h"

namespace tqnralm {

const char* const Journal::kFileName = "manifest.json.journal";

namespace {

// A journal is a few hundred bytes and a path; a larger file is no journal.
constexpr std::streamsize kMaxSize = 1 << 20;

// A count, time or code as Save writes it: a whole number in T's range.
// Anything else is damage (nlohmann would convert a fraction, and one out
// of range undefinedly).
template <typename T>
T Whole(const Json& j) {
    using Limits = std::numeric_limits<T>;
    if (j.is_number_unsigned() && j.get<uint64_t>() <= static_cast<uint64_t>(Limits::max())) {
        return static_cast<T>(j.get<uint64_t>());
    }
    // nlohmann reads a number without sign as unsigned: this one is negative.
    if (j.is_number_integer() && !j.is_number_unsigned() && j.get<int64_t>() >= static_cast<int64_t>(Limits::min())) {
        return static_cast<T>(j.get<int64_t>());
    }
    throw std::out_of_range("not a whole number in range");
}

}  // namespace

Journal::Journal(const std::string& outDir) : dir_(outDir), path_(outDir + "/" + kFileName) {}

Journal::Found Journal::Load(JournalState* s, std::string* error) const {
    if (!os::Exists(path_)) return Found::kNone;
    std::ifstream in(std::filesystem::u8path(path_), std::ios::binary);
    std::string text(kMaxSize + 1, '\0');
    text.resize(static_cast<size_t>(in.read(&text[0], kMaxSize + 1).gcount()));
    const Json j = Json::parse(text, nullptr, false);
    try {
        if (in.bad() || (!in.eof() && in.fail()) || text.size() > static_cast<size_t>(kMaxSize)) {
            throw std::runtime_error("cannot be read");
        }
        s->identity = j.at("identity").get<std::string>();
        s->steps = Whole<uint64_t>(j.at("steps"));
        s->manifest = Whole<uint64_t>(j.at("manifest"));
        s->listed = j.at("listed").get<bool>();
        s->folder = j.at("folder").get<std::string>();
        s->folderLength = Whole<uint64_t>(j.at("folder_length"));
        s->lastTime = Whole<int64_t>(j.at("times").at(0));
        s->newestTime = Whole<int64_t>(j.at("times").at(1));
        const Json& t = j.at("totals");
        s->written = Whole<int64_t>(t.at("written"));
        s->failed = Whole<int64_t>(t.at("failed"));
        s->unread = Whole<int64_t>(t.at("unread"));
        s->bytes = Whole<uint64_t>(t.at("bytes"));
        s->finished = j.at("finished").get<bool>();
        s->exit = Whole<int>(j.at("exit"));
    } catch (const std::exception&) {
        *error = "'" + path_ + "' is damaged; remove OUTDIR's unfinished export and start again";
        return Found::kUnreadable;
    }
    return Found::kFound;
}

bool Journal::Save(const JournalState& s, std::string* error) {
    const Json j = {{"identity", s.identity},
                    {"steps", s.steps},
                    {"manifest", s.manifest},
                    {"listed", s.listed},
                    {"folder", s.folder},
                    {"folder_length", s.folderLength},
                    {"times", {s.lastTime, s.newestTime}},
                    {"totals", {{"written", s.written}, {"failed", s.failed}, {"unread", s.unread}, {"bytes", s.bytes}}},
                    {"finished", s.finished},
                    {"exit", s.exit}};
    const std::string text = j.dump() + "\n";
    const std::string fresh = path_ + ".new";
    os::NewFile file;
    return file.CreateOrEmpty(fresh, error) && file.Write(text.data(), text.size(), error) && file.Sync(error) &&
           file.Close(error) && os::RenameOver(fresh, path_, error) && os::SyncDirectory(dir_, error);
}

bool Journal::Remove(std::string* error) {
    os::RemoveFile(path_);
    return os::SyncDirectory(dir_, error);
}

}  // namespace tqnralm
