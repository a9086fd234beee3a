// OUTDIR/manifest.json.journal (see Journal.h). A small JSON object.
#include "Journal.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "Manifest.h"
#include "Os.h"

namespace tqnralm {

const char* const Journal::kFileName = "manifest.json.journal";

Journal::Journal(const std::string& outDir) : dir_(outDir), path_(outDir + "/" + kFileName) {}

Journal::Found Journal::Load(JournalState* s, std::string* error) const {
    if (!os::Exists(path_)) return Found::kNone;
    std::ifstream in(std::filesystem::u8path(path_), std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const Json j = Json::parse(text, nullptr, false);
    try {
        if (!in.good() && !in.eof()) throw std::runtime_error("cannot be read");
        s->identity = j.at("identity").get<std::string>();
        s->steps = j.at("steps").get<uint64_t>();
        s->manifest = j.at("manifest").get<uint64_t>();
        s->listed = j.at("listed").get<bool>();
        s->folder = j.at("folder").get<std::string>();
        s->folderLength = j.at("folder_length").get<uint64_t>();
        s->lastTime = j.at("times").at(0).get<int64_t>();
        s->newestTime = j.at("times").at(1).get<int64_t>();
        const Json& t = j.at("totals");
        s->written = t.at("written").get<int64_t>();
        s->failed = t.at("failed").get<int64_t>();
        s->unread = t.at("unread").get<int64_t>();
        s->bytes = t.at("bytes").get<uint64_t>();
        s->finished = j.at("finished").get<bool>();
        s->exit = j.at("exit").get<int>();
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
