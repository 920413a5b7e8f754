#pragma once

#include "solver/DenseInverse.h"
#include "solver/SparseInverse.h"
#include "solver/SparseVector.h"

#include <cstddef>
#include <span>
#include <vector>

namespace kilnova {

/// The explicit inverse of a simplex basis (rows and positions 1..m), updated in product form after
/// each pivot, held as the basis' size calls for: whole, with patterns of bits, up to kWholeRows
/// rows (DenseInverse), and as its non-zero entries above (SparseInverse), where m x m doubles would
/// take gigabytes.
///
/// Both give exactly the values of the loops over every index. While every value is finite their
/// products visit only entries that may be non-zero and skip zero factors, keeping the index order
/// of the full loop: a skipped term is a zero product, which changes at most the sign of a zero,
/// and a sum that starts at +0 ends the same either way. Once an infinity or a NaN appears (a pivot
/// on a zero element, which the ratio test can choose on an unbounded problem, or an overflow),
/// 0 x inf no longer vanishes: from then on the inverse is held whole and every product runs over
/// every index, as written. Holding a large inverse whole takes (m + 1)^2 doubles; past the limit
/// set by setWholeLimit that raises std::invalid_argument.
class BasisInverse final {
public:
    /// Bases up to this many rows are held whole from the start: 2 MB of doubles, which the cache
    /// still holds, and a blend of 200 sources solves in half the time it takes as entries.
    static constexpr int kWholeRows = 500;

    explicit BasisInverse(int wholeRows = kWholeRows)
        : mWholeRows(wholeRows)
    {
    }

    /// Sizes to m x m, all zero.
    void reset(int rows);
    void clear();
    /// Makes the inverse the identity.
    void setIdentity();

    /// True once products run over every index (see above).
    bool plain() const { return !mEntries && mDense.plain(); }
    /// Makes every later product run over every index (the caller met a value that is not finite).
    void usePlainLoops();
    void setWholeLimit(std::size_t bytes) { mWholeLimit = bytes; }

    double at(int row, int column) const
    {
        return mEntries ? mSparse.at(row, column) : mDense.at(row, column);
    }
    /// Non-zero entries held.
    std::size_t entryCount() const { return mEntries ? mSparse.entryCount() : mDense.entryCount(); }
    /// The entries of one row that may be non-zero, as ascending (position, value) pairs.
    void rowEntries(int row, std::vector<std::pair<int, double>>& out) const;

    /// out[i] = sum over k of weight[k] * Binv[k][i], in k order, for every i.
    void leftMultiply(std::span<const double> weight, std::span<double> out);
    /// out[c] = the same sum at position positions[c] only, for each c.
    void leftMultiplyAt(std::span<const int> positions, std::span<const double> weight,
                        std::span<double> out);
    /// out = Binv x column, each out[i] summed in k order; the column is given by its entries
    /// (ascending positions). `out` is cleared first and lists the rows it reached, ascending.
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
    /// From entries to the whole inverse, in plain loops from now on.
    void holdWhole();

    int mWholeRows;
    int mRows = 0;
    bool mEntries = false; // held as entries (SparseInverse), not whole
    std::size_t mWholeLimit = static_cast<std::size_t>(-1);
    DenseInverse mDense;
    SparseInverse mSparse;
    std::vector<int> mChanged;
};

} // namespace kilnova
