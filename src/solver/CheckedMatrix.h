#pragma once

#include "solver/CheckedArray.h"

#include <cstddef>
#include <span>
#include <vector>

namespace kilnova {

/// A dense zero-filled matrix of doubles, stored by rows, whose every access is checked; an index
/// outside raises std::invalid_argument.
class CheckedMatrix final {
public:
    /// Resizes to rows x columns, all zero.
    void reset(int rows, int columns)
    {
        mRows = rows < 0 ? 0 : rows;
        mColumns = columns < 0 ? 0 : columns;
        mData.assign(static_cast<std::size_t>(mRows) * static_cast<std::size_t>(mColumns), 0.0);
    }
    void clear() { reset(0, 0); }
    int rows() const { return mRows; }
    int columns() const { return mColumns; }

    double& operator()(int row, int column) { return mData[offset(row, column)]; }
    double operator()(int row, int column) const { return mData[offset(row, column)]; }

    /// Columns first..last (inclusive) of one row, checked once as a whole; empty when last < first.
    std::span<double> row(int row, int first, int last)
    {
        if (last < first)
            return {};
        const std::size_t start = offset(row, first);
        (void)offset(row, last);
        return {mData.data() + start, static_cast<std::size_t>(last - first + 1)};
    }
    std::span<const double> row(int row, int first, int last) const
    {
        if (last < first)
            return {};
        const std::size_t start = offset(row, first);
        (void)offset(row, last);
        return {mData.data() + start, static_cast<std::size_t>(last - first + 1)};
    }

    /// Whole rows first..last as one block (row i starts at (i - first) * columns()), checked once
    /// as a whole; empty when last < first.
    std::span<double> rows(int first, int last)
    {
        if (last < first || mColumns == 0)
            return {};
        const std::size_t start = offset(first, 0);
        (void)offset(last, mColumns - 1);
        return {mData.data() + start,
                static_cast<std::size_t>(last - first + 1) * static_cast<std::size_t>(mColumns)};
    }
    std::span<const double> rows(int first, int last) const
    {
        if (last < first || mColumns == 0)
            return {};
        const std::size_t start = offset(first, 0);
        (void)offset(last, mColumns - 1);
        return {mData.data() + start,
                static_cast<std::size_t>(last - first + 1) * static_cast<std::size_t>(mColumns)};
    }

private:
    std::size_t offset(int row, int column) const
    {
        if (row < 0 || row >= mRows) [[unlikely]]
            throwIndexOutOfRange("matrix row", row, mRows);
        if (column < 0 || column >= mColumns) [[unlikely]]
            throwIndexOutOfRange("matrix column", column, mColumns);
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(mColumns) +
               static_cast<std::size_t>(column);
    }

    int mRows = 0;
    int mColumns = 0;
    std::vector<double> mData;
};

} // namespace kilnova
