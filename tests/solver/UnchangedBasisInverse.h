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
/// While every value is finite, each product visits only the entries that may be non-zero (a row
/// pattern and a column pattern are kept) and skips zero factors, keeping the index order of the
/// full loop. That gives exactly the full loop's values: a skipped term is a zero product, which
/// changes at most the sign of a zero, and a sum that starts at +0 ends the same either way. These
/// inverses are mostly zeros, and an entry that an update cancels to zero leaves the patterns.
/// Once an infinity or a NaN appears (a pivot on a zero element, which the ratio test can choose on
/// an unbounded problem, or an overflow, watched for through a bound on the entries), 0 x inf no
/// longer vanishes: from then on every product runs over every index, as written.
///
/// Vectors passed in and out cover positions 0..m (position 0 unused); each is range-checked once
/// per call.
class UnchangedBasisInverse final {
public:
    /// Sizes to m x m, all zero, with shortcuts allowed.
    void reset(int rows);
    void clear();
    /// Makes the inverse the identity; shortcuts are allowed again.
    void setIdentity();

    /// True once products run over every index (see above).
    bool plain() const { return mPlain; }
    /// Makes every later product run over every index (the caller met a value that is not finite).
    void usePlainLoops();

    double at(int row, int column) const { return mValues(row, column); }
    /// out[i] = sum over k of weight[k] * Binv[k][i], in k order, for every i; `weightWords` marks
    /// the weights that may be non-zero (a SparsityPattern row of width m + 1).
    void leftMultiply(std::span<const double> weight, std::span<const std::uint64_t> weightWords,
                      std::span<double> out) const;
    /// out[c] = the same sum at position positions[c] only, for each c.
    void leftMultiplyAt(std::span<const int> positions, std::span<const double> weight,
                        std::span<const std::uint64_t> weightWords, std::span<double> out) const;
    /// out[i] = sum over k of Binv[i][k] * column[k], in k order; `columnWords` marks the entries
    /// of `column` that may be non-zero, and `outWords` receives the positions of `out` that may
    /// be (the same SparsityPattern width).
    void multiply(std::span<const double> column, std::span<const std::uint64_t> columnWords,
                  std::span<double> out, std::span<std::uint64_t> outWords) const;
    /// The same product with sign x e_r (a slack or surplus column).
    void multiplyUnit(int r, double sign, std::span<double> out, std::span<std::uint64_t> outWords) const;
    /// Row `row` of the product with a column.
    double rowTimes(int row, std::span<const double> column,
                    std::span<const std::uint64_t> columnWords) const;
    /// Pivots on row r, `alpha` being the inverse times the entering column (non-zero only where
    /// `alphaWords` says it may be; the fewer marked, the less work):
    /// eta[i] = -alpha[i] / alpha[r] (i != r), eta[r] = 1 / alpha[r]; every other row gains
    /// eta[i] times row r, then row r is multiplied by eta[r]. Returns the positions k whose
    /// column may have changed (the pivot row's non-zeros; every position once plain); the span
    /// is valid until the next update.
    std::span<const int> update(int r, const CheckedArray<double>& alpha,
                                std::span<const std::uint64_t> alphaWords);

private:
    int width() const { return mRows + 1; }
    void plainUpdate(int r, double pivot, std::span<const double> alphas);
    /// Marks every position 1..m.
    void setAll(std::span<std::uint64_t> words) const;

    int mRows = 0;
    bool mPlain = false;
    double mLargest = 0.0; // no entry is larger in magnitude
    CheckedMatrix mValues;
    SparsityPattern mRowPattern;    // per row, the positions that may be non-zero
    SparsityPattern mColumnPattern; // per position, the rows that may be non-zero
    CheckedArray<double> mEta;
    CheckedArray<int> mPivotEntries;
};

} // namespace kilnova
