#pragma once

#include "solver/CheckedArray.h"
#include "solver/CheckedMatrix.h"
#include "solver/SparsityPattern.h"

#include <cstdint>
#include <span>

namespace kilnova {

/// The explicit inverse of a simplex basis (rows and positions 1..m), updated in product form
/// after each pivot.
///
/// Every sum visits only the entries that may be non-zero and skips zero factors, and keeps the
/// index order of the full loop. While the values are finite this gives exactly the full loop's
/// values: each skipped term is a zero product, which changes at most the sign of a zero, and no
/// comparison sees that. These inverses are mostly zeros. Only a pivot on a zero element (the
/// ratio test can fall back to a row with alpha <= 0 on an unbounded problem) yields infinities,
/// and the method's values are meaningless from there on either way.
///
/// Vectors passed in and out cover positions 0..m (position 0 unused); each is range-checked once
/// per call.
class BasisInverse final {
public:
    /// Sizes to m x m; the eta column gets `etaSize` slots.
    void reset(int rows, int etaSize);
    void clear();
    /// Makes the inverse the identity.
    void setIdentity();

    double at(int row, int column) const { return mValues(row, column); }
    /// out[i] = sum over k of weight[k] * Binv[k][i], in k order.
    void leftMultiply(std::span<const double> weight, std::span<double> out) const;
    /// out[i] = sum over k of Binv[i][k] * column[k], in k order; `columnWords` marks the entries
    /// of `column` that may be non-zero (a SparsityPattern row of the same width).
    void multiply(std::span<const double> column, std::span<const std::uint64_t> columnWords,
                  std::span<double> out) const;
    /// Row `row` of the product above.
    double rowTimes(int row, std::span<const double> column,
                    std::span<const std::uint64_t> columnWords) const;
    /// Pivots on row r, `alpha` being the inverse times the entering column:
    /// eta[i] = -alpha[i] / alpha[r] (i != r), eta[r] = 1 / alpha[r]; every other row gains
    /// eta[i] times row r, then row r is multiplied by eta[r].
    void update(int r, const CheckedArray<double>& alpha);

private:
    int width() const { return mRows + 1; }

    int mRows = 0;
    CheckedMatrix mValues;
    SparsityPattern mPattern;
    CheckedArray<double> mEta;
    CheckedArray<int> mPivotEntries;
};

} // namespace kilnova
