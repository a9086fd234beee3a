// The commands of tqnralm; main.cpp parses the command line and calls one.
#ifndef TQNRALM_TOOL_COMMANDS_H
#define TQNRALM_TOOL_COMMANDS_H

#include <string>

#include "Options.h"

namespace tqnralm {

// Each returns the program's exit code (Options.h).
int RunVersion(const GlobalOptions& global);
int RunTree(const GlobalOptions& global);
int RunCat(const GlobalOptions& global, const std::string& path);
int RunExport(const GlobalOptions& global, const ExportOptions& options);

}  // namespace tqnralm

#endif
