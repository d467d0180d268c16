// Common helpers: time-code text, frame-rate snapping, parameter text, paths and files.
#include "core/helpers.h"

#include <cstdarg>
#include <cstdio>

namespace core {

std::string StrPrintf(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string text;
    if (n > 0) {
        text.resize(static_cast<size_t>(n) + 1);
        std::vsnprintf(text.data(), text.size(), format, args);
        text.resize(static_cast<size_t>(n));
    }
    va_end(args);
    return text;
}

} // namespace core
