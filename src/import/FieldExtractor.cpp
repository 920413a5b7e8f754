#include "import/FieldExtractor.h"

#include "common/Cp1252.h"

#include <locale.h>

#include <cstdlib>
#include <cstring>

namespace kilnova {

namespace {

/// The "C" locale, so that a decimal point is a point even where the user's locale says comma.
locale_t cLocale()
{
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
    return locale;
}

/// The cut, zero-terminated, in a buffer the conversion functions can read.
struct Terminated {
    char text[256];
    explicit Terminated(QByteArrayView piece)
    {
        const qsizetype size = std::min<qsizetype>(piece.size(), sizeof text - 1);
        // A field that starts beyond the end of the line is an empty view without data to copy.
        if (size > 0)
            std::memcpy(text, piece.data(), static_cast<std::size_t>(size));
        text[size] = '\0';
    }
};

/// The part of text that reads as a decimal number: blanks, a sign, digits with at most one point
/// (at least one digit), and an exponent only when a digit follows its letter. Hexadecimal, "inf"
/// and "nan" are not numbers here: a lab export's "NaN" reads as no digits, that is 0.
std::size_t decimalPrefix(const char* text)
{
    auto digit = [text](std::size_t i) {
        return text[i] >= '0' && text[i] <= '9';
    };
    std::size_t i = 0;
    while (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r'))
        ++i;
    if (text[i] == '+' || text[i] == '-')
        ++i;
    std::size_t digits = 0;
    for (; digit(i); ++i)
        ++digits;
    if (text[i] == '.') {
        ++i;
        for (; digit(i); ++i)
            ++digits;
    }
    if (digits == 0)
        return 0;
    if (text[i] == 'e' || text[i] == 'E') {
        std::size_t exponent = i + 1;
        if (text[exponent] == '+' || text[exponent] == '-')
            ++exponent;
        if (digit(exponent)) {
            i = exponent;
            while (digit(i))
                ++i;
        }
    }
    return i;
}

bool blank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

} // namespace

QByteArrayView FieldExtractor::cut(const char* line, int position, int length, bool* error)
{
    if (position < 1 || length < 1) {
        if (error)
            *error = true;
        return {};
    }
    const std::size_t size = std::strlen(line);
    const std::size_t start = static_cast<std::size_t>(position) - 1;
    if (start >= size)
        return {};
    const std::size_t count = std::min(static_cast<std::size_t>(length), size - start);
    return QByteArrayView(line + start, static_cast<qsizetype>(count));
}

QString FieldExtractor::text(const char* line, int position, int length, bool* error)
{
    return fromCp1252(cut(line, position, length, error));
}

double FieldExtractor::number(const char* line, int position, int length, bool* error)
{
    Terminated value(cut(line, position, length, error));
    value.text[decimalPrefix(value.text)] = '\0';
    return strtod_l(value.text, nullptr, cLocale());
}

int FieldExtractor::integer(const char* line, int position, int length, bool* error)
{
    const Terminated value(cut(line, position, length, error));
    return static_cast<int>(strtol_l(value.text, nullptr, 10, cLocale()));
}

FieldExtractor::NumberFit FieldExtractor::numberFit(const char* line, int position, int length)
{
    const Terminated value(cut(line, position, length));
    const char* text = value.text;
    std::size_t start = 0;
    while (blank(text[start]))
        ++start;
    if (text[start] == '\0')
        return NumberFit::Blank;
    std::size_t end = decimalPrefix(text);
    if (end == 0)
        return NumberFit::None;
    while (blank(text[end]))
        ++end;
    return text[end] == '\0' ? NumberFit::Whole : NumberFit::Leading;
}

} // namespace kilnova
