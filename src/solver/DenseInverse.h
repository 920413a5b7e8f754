#pragma once

#include "solver/CheckedArray.h"
#include "solver/CheckedMatrix.h"
#include "solver/SparseVector.h"
#include "solver/SparsityPattern.h"

#include <cstdint>
#include <span>
#include <vector>

namespace kilnova {

/// A basis inverse held whole, for bases small enough that m x m doubles sit in cache: there the
/// plain arrays beat any list of entries. A row pattern and a column pattern of bits mark the entries
/// that may be non-zero, and while every value is finite each product visits only those and skips
/// zero factors, in the index order of the full loop, which gives the full loop's values (see
/// BasisInverse). Once a value is not finite every product runs over every index.
class DenseInverse final {
public:
    void reset(int rows);
    /// Releases the storage; reset() sizes it again.
    void clear();
    void setIdentity();
    /// The inverse from a list of entries (row, position, value), to go on in plain loops.
    void assignPlain(int rows, const std::vector<std::pair<std::pair<int, int>, double>>& entries);

    bool plain() const { return mPlain; }
    void usePlainLoops() { mPlain = true; }

    double at(int row, int column) const { return mValues(row, column); }
    std::size_t entryCount() const;
    void rowEntries(int row, std::vector<std::pair<int, double>>& out) const;

    void leftMultiply(std::span<const double> weight, std::span<double> out);
    void leftMultiplyAt(std::span<const int> positions, std::span<const double> weight,
                        std::span<double> out);
    void multiply(std::span<const int> rows, std::span<const double> values, SparseVector& out);
    void multiplyUnit(int r, double sign, SparseVector& out);
    double rowTimes(int row, std::span<const int> rows, std::span<const double> values);
    std::span<const int> update(int r, const SparseVector& alpha);

private:
    int width() const { return mRows + 1; }
    void plainUpdate(int r, double pivot, std::span<const double> alphas);
    void setAll(std::span<std::uint64_t> words) const;
    /// The column given by its entries, whole, with its pattern in mColumnWords.
    std::span<const double> scatter(std::span<const int> rows, std::span<const double> values);
    void unscatter(std::span<const int> rows);
    /// The pattern of the non-zero weights, in mWeightWords.
    std::span<const std::uint64_t> patternOf(std::span<const double> weight);
    void multiplyDense(std::span<const double> column, std::span<const std::uint64_t> columnWords,
                       std::span<double> out, std::span<std::uint64_t> outWords) const;
    void multiplyUnitDense(int r, double sign, std::span<double> out,
                           std::span<std::uint64_t> outWords) const;
    double rowTimesDense(int row, std::span<const double> column,
                         std::span<const std::uint64_t> columnWords) const;
    std::span<const int> updateDense(int r, std::span<const double> alphas,
                                     std::span<const std::uint64_t> alphaWords);
    /// The product in mProduct, listed where its pattern (mWork row 3) says it may be non-zero.
    void list(std::span<const double> product, SparseVector& out) const;

    int mRows = 0;
    bool mPlain = false;
    double mLargest = 0.0; // no entry is larger in magnitude
    CheckedMatrix mValues;
    SparsityPattern mRowPattern;    // per row, the positions that may be non-zero
    SparsityPattern mColumnPattern; // per position, the rows that may be non-zero
    SparsityPattern mWork;          // rows: a column, weights, alpha, a product
    CheckedArray<double> mColumn;
    CheckedArray<double> mProduct;
    CheckedArray<double> mEta;
    CheckedArray<int> mPivotEntries;
};

} // namespace kilnova
