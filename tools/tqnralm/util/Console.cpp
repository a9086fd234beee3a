// Text for a person (see Console.h).
#include "Console.h"

#include <cstdarg>
#include <string>

#include "platform/HostOs.h"

namespace tqnralm {
namespace {

// The export's text as the command line has always printed it: the
// listing on stdout, the rest on stderr, the status line flushed as drawn.
class ConsoleText : public Report {
public:
    void Text(Channel channel, const std::string& text) override {
        std::FILE* stream = channel == Channel::kListing ? stdout : stderr;
        os::WriteText(stream, text);
        if (channel == Channel::kStatus) std::fflush(stream);
    }
};

}  // namespace

void Print(std::FILE* stream, const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    const std::string text = FormatTextList(format, args);
    va_end(args);
    os::WriteText(stream, text);
}

Report& ConsoleReport() {
    static ConsoleText console;
    return console;
}

}  // namespace tqnralm
