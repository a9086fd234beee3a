// OUTDIR/manifest.json: what an export wrote, streamed to a temporary file
// member by member (a large store has more messages than memory should hold
// at once) and renamed into place last, so that its presence means the
// export finished. A journal (Journal.h) counts the length that is on the
// disk, and a rerun goes on from there. Every value is in the bytes that
// nlohmann-json writes for it.
//
// The members in order: those given by Put, arrays given by BeginArray and
// Append, then "totals", an object that each part of the export adds to.
// The mail pass writes one element per message: it encodes its elements
// itself (AppendJsonString), in the bytes nlohmann-json would write, and
// builds no tree per message.
#ifndef TQNRALM_TOOL_MANIFEST_H
#define TQNRALM_TOOL_MANIFEST_H

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

#include "platform/HostOs.h"

namespace tqnralm {

using Json = nlohmann::ordered_json;

class Manifest {
public:
    static const char* const kFileName;  // "manifest.json"

    // Opens the temporary file in `outDir`; false with `error` set when it
    // cannot be made (or the manifest exists already).
    bool Open(const std::string& outDir, std::string* error);
    // Goes on with the temporary file of an export that stopped, cut to
    // the `length` bytes its journal counted (0: from the start); `listed`:
    // those hold a message already.
    bool Resume(const std::string& outDir, uint64_t length, bool listed, std::string* error);
    // One member of the top object.
    bool Put(const std::string& key, const Json& value);
    // A member whose value is an array, written one element at a time.
    bool BeginArray(const std::string& key);
    bool Append(const Json& element);
    // The same for an element encoded already, as one line of compact JSON.
    bool AppendEncoded(std::string_view element);
    bool EndArray();
    // The "totals" member, written by Finish.
    Json& totals() { return totals_; }
    // Puts what was given on the disk; `length` receives the file's length.
    bool Commit(uint64_t* length);
    // Whether the messages array holds an element.
    bool listed() const { return !firstElement_; }
    // Writes the totals and flushes the file to the disk; `length` receives
    // the file's length.
    bool Complete(uint64_t* length);
    // Renames the completed file into place.
    bool Publish();
    // Closes the temporary file, which stays for the export's rerun.
    void Abandon();
    const std::string& error() const { return error_; }

private:
    bool Emit(const std::string& text);
    bool Key(const std::string& key);

    os::NewFile file_;
    std::string temporary_, final_;
    std::string buffer_;
    uint64_t length_ = 0;  // written to the file
    bool firstMember_ = true;
    bool firstElement_ = true;
    Json totals_ = Json::object();
    std::string error_;
};

// Appends `text` as a JSON string: the bytes that nlohmann-json's dump
// writes for it (UTF-8 kept, invalid bytes replaced).
void AppendJsonString(std::string* out, std::string_view text);
// The same for text known to be well-formed UTF-8 (as the host's
// conversions make it), which is not checked again.
void AppendJsonUtf8(std::string* out, std::string_view text);

}  // namespace tqnralm

#endif
