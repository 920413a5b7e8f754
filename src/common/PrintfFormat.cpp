#include "common/PrintfFormat.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

namespace kilnova {

QString formatPrintf(const char* format, ...)
{
    // Report lines fit the stack buffer; only a longer text is formatted a second time.
    char line[512];
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    const int size = std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    QString result;
    if (size >= 0 && static_cast<std::size_t>(size) < sizeof line) {
        result = QString::fromUtf8(line, size);
    } else if (size >= 0) {
        std::vector<char> buffer(static_cast<std::size_t>(size) + 1);
        std::vsnprintf(buffer.data(), buffer.size(), format, copy);
        result = QString::fromUtf8(buffer.data(), size);
    }
    va_end(copy);
    return result;
}

} // namespace kilnova
