#include "common/PrintfFormat.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

namespace kilnova {

QString formatPrintf(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    const int size = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (size < 0) {
        va_end(args);
        return {};
    }
    std::vector<char> buffer(static_cast<std::size_t>(size) + 1);
    std::vsnprintf(buffer.data(), buffer.size(), format, args);
    va_end(args);
    return QString::fromUtf8(buffer.data(), size);
}

} // namespace kilnova
