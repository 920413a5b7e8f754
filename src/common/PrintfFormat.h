#pragma once

#include <QString>

namespace kilnova {

/// printf with the C library's exact rules ("%11.11s", "%10.2lf", "%.2lf%%"), for report lines whose
/// widths and roundings must come out exactly. "%s" arguments are UTF-8 text; widths count bytes, as
/// in C, which equals characters for the single-byte names the reports carry.
QString formatPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

} // namespace kilnova
