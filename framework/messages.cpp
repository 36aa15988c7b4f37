// Console reports of the framework.
#include "framework/messages.h"

#include <cstdarg>
#include <cstdio>

void PrintError(const char *format, ...) {
    va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
    std::fflush(stderr);
}
