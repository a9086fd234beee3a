// Text for a person (see Report.h).
#include "Report.h"

#include <cstdio>

namespace tqnralm {
namespace {

class Silence : public Report {
public:
    void Text(Channel, const std::string&) override {}
};

}  // namespace

std::string FormatTextList(const char* format, std::va_list args) {
    char small[512];
    std::va_list again;
    va_copy(again, args);
    const int n = std::vsnprintf(small, sizeof small, format, args);
    std::string text;
    if (n >= 0 && static_cast<size_t>(n) < sizeof small) {
        text.assign(small, static_cast<size_t>(n));
    } else if (n > 0) {
        text.resize(static_cast<size_t>(n) + 1);
        std::vsnprintf(&text[0], text.size(), format, again);
        text.resize(static_cast<size_t>(n));
    }
    va_end(again);
    return text;
}

std::string FormatText(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    std::string text = FormatTextList(format, args);
    va_end(args);
    return text;
}

void Report::Say(Channel channel, const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    const std::string text = FormatTextList(format, args);
    va_end(args);
    Text(channel, text);
}

Report& ReportOr(Report* report) {
    static Silence silence;
    return report != nullptr ? *report : silence;
}

}  // namespace tqnralm
