#include "solver/ProgrammeDump.h"

#include "solver/CoefficientMatrix.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <vector>

namespace kilnova {

namespace {

constexpr int kFieldWidth = 10;
constexpr std::size_t kBlock = std::size_t{8} << 20;

// The digits of "%.2lf" for a finite value; non-finite values go through printf itself.
std::size_t digits(double value, char* buffer, std::size_t size)
{
    if (!std::isfinite(value))
        return static_cast<std::size_t>(std::snprintf(buffer, size, "%.2lf", value));
    const std::to_chars_result r = std::to_chars(buffer, buffer + size, value, std::chars_format::fixed, 2);
    return static_cast<std::size_t>(r.ptr - buffer);
}

std::size_t fieldWidth(double value)
{
    char buffer[400];
    const std::size_t n = digits(value, buffer, sizeof buffer);
    return n < kFieldWidth ? kFieldWidth : n;
}

std::string kindText(int kind)
{
    char buffer[32];
    const int n = std::snprintf(buffer, sizeof buffer, "%4d", kind);
    return {buffer, static_cast<std::size_t>(n)};
}

/// Many copies of a zero's field, so that a run of zeros is one copy.
struct ZeroRuns {
    std::string positive;
    std::string negative;
    static constexpr std::size_t kFields = 4096;
    ZeroRuns()
    {
        for (std::size_t i = 0; i < kFields; ++i) {
            positive += "      0.00";
            negative += "     -0.00";
        }
    }
    void append(std::string& out, std::size_t count, bool negativeZero) const
    {
        const std::string& run = negativeZero ? negative : positive;
        while (count > 0) {
            const std::size_t take = count < kFields ? count : kFields;
            out.append(run, 0, take * kFieldWidth);
            count -= take;
        }
    }
};

} // namespace

void ProgrammeDump::appendField(std::string& out, double value)
{
    char buffer[400];
    const std::size_t n = digits(value, buffer, sizeof buffer);
    if (n < kFieldWidth)
        out.append(kFieldWidth - n, ' ');
    out.append(buffer, n);
}

std::string ProgrammeDump::cutNote(std::size_t limit, std::uint64_t wholeSize, int rows, int columns)
{
    char buffer[512];
    const int n = std::snprintf(
        buffer, sizeof buffer,
        "\n[The dump stops here, after its whole lines within the first %zu bytes. The whole programme "
        "(%d rows of %d columns) would take %llu bytes: a text that size is of no use to read and would "
        "take longer to write than the optimisation itself.]\n",
        limit, rows, columns, static_cast<unsigned long long>(wholeSize));
    return {buffer, static_cast<std::size_t>(n)};
}

std::uint64_t ProgrammeDump::write(const std::string& fileName, const CoefficientMatrix& a,
                                   std::span<const double> rhs, std::span<const int> kind,
                                   std::span<const double> objective, std::size_t limit)
{
    // A dump overwrites the last one in place and is cut to its own length at the end: the file's
    // blocks are reused instead of freed and allocated again, which costs more than the writing.
    std::FILE* file = std::fopen(fileName.c_str(), "r+");
    if (file == nullptr)
        file = std::fopen(fileName.c_str(), "w");
    if (file == nullptr)
        return 0;
    const int m = a.rows();
    const int n = a.columns();
    std::vector<int> start;
    std::vector<std::pair<int, double>> entries;
    a.byRow(start, entries);

    static const ZeroRuns zeros;
    std::string block;
    block.reserve(kBlock + (std::size_t{1} << 16));
    std::uint64_t fileLength = 0;
    auto flush = [&] {
        std::fwrite(block.data(), 1, block.size(), file);
        fileLength += block.size();
        block.clear();
    };
    std::uint64_t whole = 0;   // the size of the whole dump
    std::uint64_t written = 0; // what went to the file, the note aside
    bool cut = false;
    // Each line is measured first; once one does not fit, the rest are only measured.
    auto fits = [&](std::uint64_t length) {
        whole += length;
        if (!cut && written + length <= limit) {
            written += length;
            return true;
        }
        cut = true;
        return false;
    };

    for (int i = 1; i <= m; ++i) {
        const auto first = static_cast<std::size_t>(start[static_cast<std::size_t>(i)]);
        const auto last = static_cast<std::size_t>(start[static_cast<std::size_t>(i) + 1]);
        const std::string kindField = kindText(kind[static_cast<std::size_t>(i)]);
        std::uint64_t length = kFieldWidth * static_cast<std::uint64_t>(n - static_cast<int>(last - first)) +
                               fieldWidth(rhs[static_cast<std::size_t>(i)]) + 6 + kindField.size() + 1;
        for (std::size_t t = first; t < last; ++t)
            length += fieldWidth(entries[t].second);
        if (!fits(length))
            continue;
        const bool negativeZero = std::signbit(a.zeroOf(i));
        int column = 1;
        for (std::size_t t = first; t < last; ++t) {
            zeros.append(block, static_cast<std::size_t>(entries[t].first - column), negativeZero);
            appendField(block, entries[t].second);
            column = entries[t].first + 1;
        }
        zeros.append(block, static_cast<std::size_t>(n + 1 - column), negativeZero);
        appendField(block, rhs[static_cast<std::size_t>(i)]);
        block += " IBT: ";
        block += kindField;
        block += '\n';
        if (block.size() >= kBlock)
            flush();
    }
    for (int blank = 0; blank < 2; ++blank) {
        if (fits(1))
            block += '\n';
    }
    for (int j = 1; j <= n; ++j) {
        const double c = objective[static_cast<std::size_t>(j)];
        if (fits(fieldWidth(c) + 1)) {
            appendField(block, c);
            block += '\n';
        }
    }
    if (cut)
        block += cutNote(limit, whole, m, n);
    flush();
    std::fclose(file);
    std::error_code ignored;
    std::filesystem::resize_file(fileName, fileLength, ignored);
    return whole;
}

} // namespace kilnova
