#include "disc/FormatText.h"

#include <cstdarg>
#include <cstdio>

std::string LFormatText(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    const int size = std::vsnprintf(nullptr, 0, format, args);
    va_end(args);
    std::string text(size > 0 ? static_cast<size_t>(size) : 0, '\0');
    if (size > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}
