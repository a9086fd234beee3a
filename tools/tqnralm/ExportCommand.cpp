// `export`: every message of the chosen users written out for another mail program.
#include <cstdio>

#include "Commands.h"

namespace tqnralm {

const char* FormatName(MailFormat format) {
    switch (format) {
    case MailFormat::kMaildir: return "maildir";
    case MailFormat::kEml: return "eml";
    default: return "mbox";
    }
}

int RunExport(const GlobalOptions&, const ExportOptions& options) {
    std::fprintf(stderr, "tqnralm: export to %s as %s is not available yet\n", options.outDir.c_str(),
                 FormatName(options.format));
    return kExitUsage;
}

}  // namespace tqnralm
