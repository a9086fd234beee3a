// Text for a person from the export and the session that opens the store,
// handed to the front end: the command line prints it (Console.h), a window
// keeps it. The engine itself never writes to stdout or stderr.
#ifndef TQNRALM_TOOL_REPORT_H
#define TQNRALM_TOOL_REPORT_H

#include <cstdarg>
#include <string>

namespace tqnralm {

enum class Channel {
    kListing,  // a dry run's plan, counts and unreadable items (the command line's stdout)
    kMessage,  // a failure, a warning, a summary (stderr)
    kStatus,   // the status line, drawn over itself with "\r" (stderr, a terminal only)
};

class Report {
public:
    virtual ~Report() = default;
    // Whole lines ending in "\n", except on kStatus. Called on the export's
    // threads (the status line on the writer's), one call at a time.
    virtual void Text(Channel channel, const std::string& text) = 0;
    // Formats as printf does and hands the text on.
    void Say(Channel channel, const char* format, ...) __attribute__((format(printf, 3, 4)));
};

// The text printf would write.
std::string FormatText(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string FormatTextList(const char* format, std::va_list args);

// `report`, or when it is null one that drops the text.
Report& ReportOr(Report* report);

}  // namespace tqnralm

#endif
