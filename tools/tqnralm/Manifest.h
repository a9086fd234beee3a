// OUTDIR/manifest.json: what an export wrote, streamed to a temporary file
// member by member (a large store has more messages than memory should hold
// at once) and renamed into place last, so that its presence means the
// export finished. Every value is encoded by nlohmann-json.
//
// The members in order: those given by Put, arrays given by BeginArray and
// Append, then "totals", an object that each part of the export adds to.
#ifndef TQNRALM_TOOL_MANIFEST_H
#define TQNRALM_TOOL_MANIFEST_H

#include <nlohmann/json.hpp>

#include <string>

#include "Os.h"

namespace tqnralm {

using Json = nlohmann::ordered_json;

class Manifest {
public:
    static const char* const kFileName;  // "manifest.json"

    // Opens the temporary file in `outDir`; false with `error` set when it
    // cannot be made (or the manifest exists already).
    bool Open(const std::string& outDir, std::string* error);
    // One member of the top object.
    bool Put(const std::string& key, const Json& value);
    // A member whose value is an array, written one element at a time.
    bool BeginArray(const std::string& key);
    bool Append(const Json& element);
    bool EndArray();
    // The "totals" member, written by Finish.
    Json& totals() { return totals_; }
    // Writes the totals, flushes the file to the disk and renames it into place.
    bool Finish();
    // Removes the unfinished temporary file (an export that stopped).
    void Abandon();
    const std::string& error() const { return error_; }

private:
    bool Emit(const std::string& text);
    bool Key(const std::string& key);

    os::NewFile file_;
    std::string temporary_, final_;
    std::string buffer_;
    bool created_ = false;
    bool firstMember_ = true;
    bool firstElement_ = true;
    Json totals_ = Json::object();
    std::string error_;
};

}  // namespace tqnralm

#endif
