#pragma once

#include "solver/CheckedArray.h"
#include "solver/SparseVector.h"

#include <cstddef>
#include <span>
#include <vector>

namespace kilnova {

/// A basis inverse that keeps only its non-zero entries: by position, each position's entries in
/// row order, and by row, the positions it holds. Every product visits only them, in the index
/// order of the full loop, and an update adds only where the pivot row has entries, to the rows
/// whose alpha is not zero; an entry that cancels to zero is dropped. While every value is finite
/// that gives exactly the full loop's values (see BasisInverse). The inverse of a blend programme
/// keeps to about ten entries per row, so storage and work follow the problem's structure.
///
/// Vectors passed in and out cover positions 0..m (position 0 unused) and are range-checked once
/// per call; sparse columns come as ascending positions with their values.
class SparseInverse final {
public:
    void reset(int rows);
    void clear();
    void setIdentity();

    double at(int row, int column) const;
    std::size_t entryCount() const;
    /// The entries of one row as ascending (position, value) pairs.
    void rowEntries(int row, std::vector<std::pair<int, double>>& out) const;
    /// Every entry as ((row, position), value).
    std::vector<std::pair<std::pair<int, int>, double>> entries() const;

    void leftMultiply(std::span<const double> weight, std::span<double> out) const;
    void leftMultiplyAt(std::span<const int> positions, std::span<const double> weight,
                        std::span<double> out) const;
    void multiply(std::span<const int> rows, std::span<const double> values, SparseVector& out);
    void multiplyUnit(int r, double sign, SparseVector& out);
    double rowTimes(int row, std::span<const int> rows, std::span<const double> values);

    /// Whether a pivot on row r with this alpha has finite multipliers, so that its skipped terms
    /// are zeros: update() may then be used.
    bool exact(int r, const SparseVector& alpha) const;
    /// Pivots on row r (see BasisInverse::update); requires exact(r, alpha).
    std::span<const int> update(int r, const SparseVector& alpha);
    /// Whether the last update produced a value that is not finite.
    bool overflowed() const { return mOverflowed; }

private:
    struct Cell {
        int row = 0;
        int slot = 0; // where its position stands in mRowPositions[row]
        double value = 0.0;
    };
    using Column = std::vector<Cell>;

    void checkRow(int row) const;
    /// Index of the cell of `row` in column `position`, or -1.
    int find(int position, int row) const;

    int mRows = 0;
    bool mOverflowed = false;
    std::vector<Column> mColumns;                // by position, cells in row order
    std::vector<std::vector<int>> mRowPositions; // by row, its positions in no order
    CheckedArray<int> mChanged;
    std::vector<std::pair<int, double>> mPivotRow;
    std::vector<std::pair<int, double>> mMultipliers; // (row, eta) of the rows an update changes
    Column mMerged;
    std::vector<std::pair<int, int>> mDropped; // (row, slot) of cells an update cancelled
};

} // namespace kilnova
