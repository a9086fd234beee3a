// Text for a person (see Console.h).
#include "Console.h"

#include <cstdarg>
#include <string>

#include "Os.h"

namespace tqnralm {

void Print(std::FILE* stream, const char* format, ...) {
    char small[512];
    std::va_list args;
    va_start(args, format);
    std::va_list again;
    va_copy(again, args);
    const int n = std::vsnprintf(small, sizeof small, format, args);
    va_end(args);
    std::string text;
    if (n >= 0 && static_cast<size_t>(n) < sizeof small) {
        text.assign(small, static_cast<size_t>(n));
    } else if (n > 0) {
        text.resize(static_cast<size_t>(n) + 1);
        std::vsnprintf(&text[0], text.size(), format, again);
        text.resize(static_cast<size_t>(n));
    }
    va_end(again);
    os::WriteText(stream, text);
}

}  // namespace tqnralm
