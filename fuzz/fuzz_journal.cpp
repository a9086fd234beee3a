// fuzz_journal.cpp - what a rerun reads back of an unfinished export: the
// journal, the partial manifest and the mbox file (the input cut at its first
// two zero bytes), the files reopened at the lengths the journal counts. A
// journal comes back the same through Save and Load; a reopened file holds
// just that start of its bytes; two files compare equal only when they are.
#include "FuzzCheck.h"

#include <fstream>
#include <iterator>

#include "Journal.h"
#include "Manifest.h"
#include "DirectorySink.h"

namespace {

using namespace tqnralm;

std::string g_dir;  // OUTDIR of one run

using fuzzcheck::Check;

std::string Path(const char* name) { return g_dir + "/" + name; }

void Put(const char* name, const std::string& bytes) {
    Check(static_cast<bool>(std::ofstream(Path(name), std::ios::binary | std::ios::trunc)
                                .write(bytes.data(), static_cast<std::streamsize>(bytes.size()))));
}

std::string Get(const char* name) {
    std::ifstream in(Path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool Same(const JournalState& a, const JournalState& b) {
    return a.identity == b.identity && a.steps == b.steps && a.manifest == b.manifest && a.listed == b.listed &&
           a.folder == b.folder && a.folderLength == b.folderLength && a.lastTime == b.lastTime &&
           a.newestTime == b.newestTime && a.written == b.written && a.failed == b.failed && a.unread == b.unread &&
           a.bytes == b.bytes && a.finished == b.finished && a.exit == b.exit;
}

// The rerun's steps on the two files, each with what it must leave.
void Reopen(const JournalState& state, const std::string& partial, const std::string& mbox) {
    Manifest manifest;
    std::string error;
    const bool resumed = manifest.Resume(g_dir, state.manifest, state.listed, &error);
    manifest.Abandon();
    if (state.manifest == 0) {
        Check(resumed && Get("manifest.json.partial").empty());  // begun again
    } else {
        Check(resumed == (state.manifest <= partial.size()));
        if (resumed) Check(Get("manifest.json.partial") == partial.substr(0, state.manifest));
    }
    DirectorySink sink(g_dir);
    sink.SetResuming();
    const bool reopened = sink.ReopenFile("mbox", state.folderLength);
    Check(reopened == (state.folderLength <= mbox.size()));
    if (reopened) {
        Check(sink.Write("From x\n") && sink.CloseFile(false));
        Check(Get("mbox") == mbox.substr(0, state.folderLength) + "From x\n");
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Each run flushes the journal it saves: in memory where there is a
    // file system there, so that fuzzing does not wear on the disk.
    const std::filesystem::path shm("/dev/shm");
    const std::filesystem::path tmp = std::filesystem::is_directory(shm) ? shm : std::filesystem::temp_directory_path();
    g_dir = fuzzcheck::ScratchPath("fuzz_journal", tmp);
    std::filesystem::create_directories(g_dir);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input = fuzzcheck::Text(data, size);
    const size_t first = input.find('\0');
    const size_t second = first == std::string::npos ? first : input.find('\0', first + 1);
    const std::string text = input.substr(0, first);
    const std::string partial = first == std::string::npos ? "" : input.substr(first + 1, second - first - 1);
    const std::string mbox = second == std::string::npos ? "" : input.substr(second + 1);
    Put(Journal::kFileName, text);
    Put("manifest.json.partial", partial);
    Put("mbox", mbox);
    Check(SameFileContent(Path("manifest.json.partial"), Path("mbox")) == (partial == mbox));

    Journal journal(g_dir);
    JournalState state, again;
    std::string error;
    const Journal::Found found = journal.Load(&state, &error);
    Check(found != Journal::Found::kNone);
    if (found == Journal::Found::kUnreadable) {
        Check(!error.empty());
        return 0;
    }
    Check(journal.Save(state, &error) && journal.Load(&again, &error) == Journal::Found::kFound && Same(state, again));
    Reopen(state, partial, mbox);
    return 0;
}
