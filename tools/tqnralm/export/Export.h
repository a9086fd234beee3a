// The export: the plan, the checks of OUTDIR (or the journal of the
// unfinished export in it), the mail pass, the address pass and the
// manifest, for any front end (the command line, the assistant). A front
// end gives the options, hears of each folder and message through
// ExportOptions::listener, receives every line of text for a person through
// ExportOptions::report, and receives the result.
#ifndef TQNRALM_TOOL_EXPORT_H
#define TQNRALM_TOOL_EXPORT_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "AddressPass.h"
#include "ExportPlan.h"
#include "MailPass.h"
#include "Options.h"

namespace tqnralm {

// How an export ended, and what it wrote (in a dry run: what it would write).
struct ExportResult {
    int exit = kExitOk;    // the program's exit code (Options.h)
    int64_t messages = 0;  // the messages of the plan; none when the mail was left out
    size_t folders = 0;
    MailTotals mail;
    AddressTotals addresses;
    bool addressTotals = true;  // false when a rerun only finished the manifest and knows no address counts
    std::vector<Problem> problems;  // what could not be read
};

// The export, or with options.dryRun its count into a sink that writes
// nothing. The summary and the failures go to the report as well (a dry
// run's listing on Channel::kListing).
ExportResult Export(const GlobalOptions& global, const ExportOptions& options);

}  // namespace tqnralm

#endif
