#include "solver/CoefficientMatrix.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace kilnova {

namespace {

bool sameBits(double a, double b)
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

} // namespace

void CoefficientMatrix::reset(int rows, int columns)
{
    mRows = rows < 0 ? 0 : rows;
    mColumns = columns < 0 ? 0 : columns;
    mEntries.assign(static_cast<std::size_t>(mColumns + 1), {});
    mNegativeZero.reset(mRows + 1);
    mColumnStart.reset(mColumns + 2);
    mRowStart.reset(mRows + 2);
    mColumnRows.clear();
    mColumnValues.clear();
    mRowColumns.clear();
    mRowValues.clear();
}

void CoefficientMatrix::set(int row, int column, double value)
{
    auto& entries = mEntries[static_cast<std::size_t>(column)];
    // A blend's column holds a few dozen entries: room for them at once saves growing it by steps.
    if (entries.capacity() == 0)
        entries.reserve(static_cast<std::size_t>(std::min(mRows, kFirstCapacity)));
    // The usual caller fills row after row: the entry then goes last.
    auto at = entries.end();
    if (!entries.empty() && entries.back().row >= row)
        at = std::lower_bound(entries.begin(), entries.end(), row,
                              [](const Entry& e, int r) { return e.row < r; });
    const bool held = at != entries.end() && at->row == row;
    if (sameBits(value, zeroOf(row))) {
        if (held)
            entries.erase(at);
    } else if (held) {
        at->value = value;
    } else {
        entries.insert(at, Entry{row, value});
    }
}

double CoefficientMatrix::value(int row, int column) const
{
    const auto& entries = mEntries[static_cast<std::size_t>(column)];
    const auto at = std::lower_bound(entries.begin(), entries.end(), row,
                                     [](const Entry& e, int r) { return e.row < r; });
    return at != entries.end() && at->row == row ? at->value : zeroOf(row);
}

void CoefficientMatrix::negateRows(std::span<const std::uint8_t> flags)
{
    for (auto& column : mEntries)
        for (Entry& e : column)
            if (flags[static_cast<std::size_t>(e.row)] != 0)
                e.value = -e.value;
    for (int i = 1; i <= mRows; ++i)
        if (flags[static_cast<std::size_t>(i)] != 0)
            mNegativeZero[i] ^= 1;
}

void CoefficientMatrix::permuteRows(std::span<const int> newRow)
{
    for (auto& column : mEntries) {
        for (Entry& e : column)
            e.row = newRow[static_cast<std::size_t>(e.row)];
        std::sort(column.begin(), column.end(), [](const Entry& a, const Entry& b) { return a.row < b.row; });
    }
    const CheckedArray<std::uint8_t> before = mNegativeZero;
    for (int i = 1; i <= mRows; ++i)
        mNegativeZero[newRow[static_cast<std::size_t>(i)]] = before[i];
}

bool CoefficientMatrix::allFinite() const
{
    for (const auto& column : mEntries)
        for (const Entry& e : column)
            if (!(std::fabs(e.value) <= std::numeric_limits<double>::max()))
                return false;
    return true;
}

void CoefficientMatrix::byRow(std::vector<int>& start, std::vector<std::pair<int, double>>& entries) const
{
    // A counting sort by row keeps the columns in order within each row.
    start.assign(static_cast<std::size_t>(mRows + 2), 0);
    for (const auto& column : mEntries)
        for (const Entry& e : column)
            ++start[static_cast<std::size_t>(e.row) + 1];
    for (std::size_t i = 1; i < start.size(); ++i)
        start[i] += start[i - 1];
    entries.assign(static_cast<std::size_t>(start.back()), {});
    std::vector<int> next(start.begin(), start.end() - 1);
    for (int j = 1; j <= mColumns; ++j)
        for (const Entry& e : mEntries[static_cast<std::size_t>(j)])
            entries[static_cast<std::size_t>(next[static_cast<std::size_t>(e.row)]++)] = {j, e.value};
}

void CoefficientMatrix::compress()
{
    mColumnRows.clear();
    mColumnValues.clear();
    std::size_t held = 0;
    for (const auto& column : mEntries)
        held += column.size();
    mColumnRows.reserve(held);
    mColumnValues.reserve(held);
    for (int j = 1; j <= mColumns; ++j) {
        mColumnStart[j] = static_cast<int>(mColumnRows.size());
        for (const Entry& e : mEntries[static_cast<std::size_t>(j)]) {
            if (e.value != 0.0) {
                mColumnRows.push_back(e.row);
                mColumnValues.push_back(e.value);
            }
        }
    }
    mColumnStart[mColumns + 1] = static_cast<int>(mColumnRows.size());

    // By row: a counting sort of the column walk keeps the columns ascending within each row.
    for (int i = 0; i <= mRows + 1; ++i)
        mRowStart[i] = 0;
    for (const int i : mColumnRows)
        ++mRowStart[i + 1];
    for (int i = 1; i <= mRows + 1; ++i)
        mRowStart[i] += mRowStart[i - 1];
    mRowColumns.assign(mColumnRows.size(), 0);
    mRowValues.assign(mColumnRows.size(), 0.0);
    std::vector<int> next(static_cast<std::size_t>(mRows + 1));
    for (int i = 0; i <= mRows; ++i)
        next[static_cast<std::size_t>(i)] = mRowStart[i];
    for (int j = 1; j <= mColumns; ++j) {
        for (int t = mColumnStart[j]; t < mColumnStart[j + 1]; ++t) {
            const auto slot = static_cast<std::size_t>(
                next[static_cast<std::size_t>(mColumnRows[static_cast<std::size_t>(t)])]++);
            mRowColumns[slot] = j;
            mRowValues[slot] = mColumnValues[static_cast<std::size_t>(t)];
        }
    }
}

} // namespace kilnova
