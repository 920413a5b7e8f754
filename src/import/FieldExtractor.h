#pragma once

#include <QByteArrayView>
#include <QString>

namespace kilnova {

/// Cuts the values of a fixed-column line. Each function copies at most length characters from a
/// 1-based position, stopping early at the end of the line (its terminating zero); a position or
/// length below 1 gives an empty text or 0 and sets *error when error is given.
class FieldExtractor final {
public:
    FieldExtractor() = delete;

    static QByteArrayView cut(const char* line, int position, int length, bool* error = nullptr);
    /// The characters as they stand, blanks included, decoded from code page 1252.
    static QString text(const char* line, int position, int length, bool* error = nullptr);
    /// C's atof on decimal numbers, whatever the locale: leading blanks skipped, the number ends at the
    /// first character that cannot continue it, no digits give 0 ("NaN", "inf" and "0x1A" read as 0).
    static double number(const char* line, int position, int length, bool* error = nullptr);
    /// C's atoi, whatever the locale.
    static int integer(const char* line, int position, int length, bool* error = nullptr);

    /// How the characters of a field read as a number: wholly (blanks around it allowed), as a number
    /// with other characters after it (number() gives that leading number), not at all (number()
    /// gives 0), or blank.
    enum class NumberFit { Whole, Leading, None, Blank };
    static NumberFit numberFit(const char* line, int position, int length);
};

} // namespace kilnova
