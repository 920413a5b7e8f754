#pragma once

#include "solver/CheckedArray.h"
#include "solver/CheckedMatrix.h"
#include "solver/SparseVector.h"

#include <cstddef>
#include <span>
#include <vector>

namespace kilnova {

/// The explicit inverse of a simplex basis (rows and positions 1..m), updated in product form
/// after each pivot.
///
/// While every value is finite the inverse keeps only its non-zero entries, by position, each
/// position's entries in row order, and every product visits only them, in the index order of
/// the full loop. That gives exactly the full loop's values: a skipped term is a zero product,
/// which changes at most the sign of a zero, and a sum that starts at +0 ends the same either way;
/// an update adds nothing but zero products outside the pivot row's entries and the rows whose
/// alpha is non-zero. An entry that an update cancels to zero is dropped. The inverse of a blend
/// programme keeps to about ten entries per row, so storage and work follow the problem's
/// structure instead of m x m.
///
/// Once an infinity or a NaN appears (a pivot on a zero element, which the ratio test can choose
/// on an unbounded problem, or an overflow), 0 x inf no longer vanishes: the inverse is then held
/// whole and every product runs over every index, as written. Holding it whole takes
/// (m + 1)^2 doubles; past the limit set by setDenseLimit that raises std::invalid_argument.
///
/// Vectors passed in and out cover positions 0..m (position 0 unused) and are range-checked once
/// per call; sparse columns come as ascending positions with their values.
class BasisInverse final {
public:
    /// Sizes to m x m, all zero, entries kept sparse.
    void reset(int rows);
    void clear();
    /// Makes the inverse the identity, kept sparse again.
    void setIdentity();

    /// True once products run over every index (see above).
    bool plain() const { return mPlain; }
    /// Makes every later product run over every index (the caller met a value that is not finite).
    void usePlainLoops();
    void setDenseLimit(std::size_t bytes) { mDenseLimit = bytes; }

    double at(int row, int column) const;
    /// Non-zero entries held (m x m once plain).
    std::size_t entryCount() const;
    /// The entries of one row as ascending (position, value) pairs; only while sparse.
    void rowEntries(int row, std::vector<std::pair<int, double>>& out) const;

    /// out[i] = sum over k of weight[k] * Binv[k][i], in k order, for every i.
    void leftMultiply(std::span<const double> weight, std::span<double> out) const;
    /// out[c] = the same sum at position positions[c] only, for each c.
    void leftMultiplyAt(std::span<const int> positions, std::span<const double> weight,
                        std::span<double> out) const;
    /// out = Binv x column, each out[i] summed in k order; the column is given by its entries.
    /// `out` is cleared first and lists the rows it reached, ascending.
    void multiply(std::span<const int> rows, std::span<const double> values, SparseVector& out);
    /// The same product with sign x e_r (a slack or surplus column).
    void multiplyUnit(int r, double sign, SparseVector& out);
    /// Row `row` of the product with a column given by its entries.
    double rowTimes(int row, std::span<const int> rows, std::span<const double> values);

    /// Pivots on row r, `alpha` being the inverse times the entering column:
    /// eta[i] = -alpha[i] / alpha[r] (i != r), eta[r] = 1 / alpha[r]; every other row gains
    /// eta[i] times row r, then row r is multiplied by eta[r]. Returns the positions whose column
    /// may have changed (the pivot row's entries; every position once plain), valid until the next
    /// update.
    std::span<const int> update(int r, const SparseVector& alpha);

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
    /// Holds the inverse whole from now on, with the values the cells have.
    void makeDense();
    void plainUpdate(int r, double pivot, std::span<const double> alphas);
    /// Scatters a column given by its entries into mDenseColumn.
    std::span<const double> denseColumn(std::span<const int> rows, std::span<const double> values);

    int mRows = 0;
    bool mPlain = false;
    std::size_t mDenseLimit = static_cast<std::size_t>(-1);
    std::vector<Column> mColumns;                // by position, cells in row order
    std::vector<std::vector<int>> mRowPositions; // by row, its positions in no order
    CheckedMatrix mValues;                       // the whole inverse, once plain
    CheckedArray<double> mDenseColumn;
    CheckedArray<int> mChanged;
    std::vector<std::pair<int, double>> mPivotRow;
    std::vector<std::pair<int, double>> mMultipliers; // (row, eta) of the rows an update changes
    Column mMerged;
    std::vector<std::pair<int, int>> mDropped; // (row, slot) of cells an update cancelled
};

} // namespace kilnova
