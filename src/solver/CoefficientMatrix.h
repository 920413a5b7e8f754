#pragma once

#include "solver/CheckedArray.h"

#include <cstdint>
#include <span>
#include <vector>

namespace kilnova {

/// The coefficients A[i][j] of a programme (rows 1..m, columns 1..n), of which only the entries
/// that differ from their row's zero are held: a blend programme's source rows hold one entry in
/// n. Each row's zero is +0 until the row is negated, -0 after (negating a row negates its zeros
/// too, which the debug dump shows). Once compressed, the non-zero entries can be walked by column
/// and by row, in index order, which is all the method needs.
class CoefficientMatrix final {
public:
    void reset(int rows, int columns);
    int rows() const { return mRows; }
    int columns() const { return mColumns; }

    /// A[row][column] = value; the indices are checked by the caller.
    void set(int row, int column, double value);
    double value(int row, int column) const;
    /// Negates every row whose flag (1-based) is set.
    void negateRows(std::span<const std::uint8_t> flags);
    /// Moves row i to position newRow[i] (a permutation of 1..m).
    void permuteRows(std::span<const int> newRow);
    /// Whether every held value is finite.
    bool allFinite() const;

    /// Every held entry (explicit zeros too) row by row, each row in column order: row i's entries
    /// are entries[start[i]] .. entries[start[i + 1] - 1], as (column, value).
    void byRow(std::vector<int>& start, std::vector<std::pair<int, double>>& entries) const;
    /// The zero of a row: -0 when the row has been negated an odd number of times.
    double zeroOf(int row) const { return mNegativeZero[row] != 0 ? -0.0 : 0.0; }

    /// Builds the walks below from the entries held now.
    void compress();
    /// The non-zero entries of column j, ascending rows.
    std::span<const int> columnRows(int j) const { return span(mColumnRows, mColumnStart, j); }
    std::span<const double> columnValues(int j) const { return span(mColumnValues, mColumnStart, j); }
    /// The non-zero entries of row i, ascending columns.
    std::span<const int> rowColumns(int i) const { return span(mRowColumns, mRowStart, i); }
    std::span<const double> rowValues(int i) const { return span(mRowValues, mRowStart, i); }
    std::size_t nonZeros() const { return mColumnRows.size(); }

private:
    struct Entry {
        int row = 0;
        double value = 0.0;
    };

    template <typename T>
    static std::span<const T> span(const std::vector<T>& data, const CheckedArray<int>& start, int index)
    {
        const int first = start[index];
        const int last = start[index + 1];
        return {data.data() + first, static_cast<std::size_t>(last - first)};
    }

    static constexpr int kFirstCapacity = 32;

    int mRows = 0;
    int mColumns = 0;
    std::vector<std::vector<Entry>> mEntries; // by column, ascending rows
    CheckedArray<std::uint8_t> mNegativeZero;

    CheckedArray<int> mColumnStart;
    std::vector<int> mColumnRows;
    std::vector<double> mColumnValues;
    CheckedArray<int> mRowStart;
    std::vector<int> mRowColumns;
    std::vector<double> mRowValues;
};

} // namespace kilnova
