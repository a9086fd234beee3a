// Text for a person, on stdout or stderr: formatted as printf does, written
// through os::WriteText, so that a Windows console shows Japanese names as
// they are and a file or a pipe receives UTF-8. Raw bytes (a message's
// text) do not come here.
#ifndef TQNRALM_TOOL_CONSOLE_H
#define TQNRALM_TOOL_CONSOLE_H

#include <cstdio>

#include "Report.h"

namespace tqnralm {

void Print(std::FILE* stream, const char* format, ...) __attribute__((format(printf, 2, 3)));
// The command line's report: each channel's text printed as above.
Report& ConsoleReport();

}  // namespace tqnralm

#endif
