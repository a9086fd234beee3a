// The export: the plan, the checks of OUTDIR (or the journal of the
// unfinished export in it), the mail pass, the address pass and the
// manifest, for any front end (the command line, the assistant).
#ifndef TQNRALM_TOOL_EXPORT_H
#define TQNRALM_TOOL_EXPORT_H

#include "Options.h"

namespace tqnralm {

// Returns the program's exit code (Options.h).
int RunExport(const GlobalOptions& global, const ExportOptions& options);

}  // namespace tqnralm

#endif
