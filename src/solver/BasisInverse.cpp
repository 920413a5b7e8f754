#include "solver/BasisInverse.h"

#include <algorithm>
#include <bit>

namespace kilnova {

namespace {

// A vector the caller passes must cover positions 0..m.
void checkCovers(std::size_t size, std::size_t needed)
{
    if (size < needed) [[unlikely]]
        throwIndexOutOfRange("vector", static_cast<int>(needed) - 1, static_cast<int>(size));
}

// Calls f(k) for each bit set in both word rows, in increasing k.
template <typename F> void forEachCommon(const std::uint64_t* a, const std::uint64_t* b, int words, F&& f)
{
    for (int w = 0; w < words; ++w) {
        for (std::uint64_t bits = a[w] & b[w]; bits != 0; bits &= bits - 1)
            f(static_cast<std::size_t>(w) * 64 + static_cast<std::size_t>(std::countr_zero(bits)));
    }
}

template <typename F> void forEachSet(const std::uint64_t* a, int words, F&& f)
{
    for (int w = 0; w < words; ++w) {
        for (std::uint64_t bits = a[w]; bits != 0; bits &= bits - 1)
            f(static_cast<std::size_t>(w) * 64 + static_cast<std::size_t>(std::countr_zero(bits)));
    }
}

} // namespace

void BasisInverse::reset(int rows, int etaSize)
{
    mRows = rows < 0 ? 0 : rows;
    mValues.reset(mRows + 1, mRows + 1);
    mPattern.reset(mRows + 1, mRows + 1);
    mEta.reset(etaSize);
    mPivotEntries.reset(mRows + 1);
}

void BasisInverse::clear()
{
    reset(0, 0);
}

void BasisInverse::setIdentity()
{
    for (int i = 1; i <= mRows; ++i) {
        for (double& v : mValues.row(i, 1, mRows))
            v = 0.0;
        mValues(i, i) = 1.0;
        mPattern.clearRow(i);
        mPattern.set(i, i);
    }
}

void BasisInverse::leftMultiply(std::span<const double> weight, std::span<double> out) const
{
    const auto n = static_cast<std::size_t>(width());
    checkCovers(weight.size(), n);
    checkCovers(out.size(), n);
    std::fill(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(n), 0.0);
    if (mRows == 0)
        return;
    const auto values = mValues.rows(0, mRows);
    const auto words = mPattern.block(0, mRows);
    const int perRow = mPattern.wordsPerRow();
    for (std::size_t k = 1; k < n; ++k) {
        const double w = weight[k];
        if (w == 0.0)
            continue;
        const double* row = values.data() + k * n;
        forEachSet(words.data() + k * static_cast<std::size_t>(perRow), perRow,
                   [&](std::size_t i) { out[i] += w * row[i]; });
    }
}

void BasisInverse::multiply(std::span<const double> column, std::span<const std::uint64_t> columnWords,
                            std::span<double> out) const
{
    const auto n = static_cast<std::size_t>(width());
    checkCovers(column.size(), n);
    checkCovers(out.size(), n);
    checkCovers(columnWords.size(), static_cast<std::size_t>(mPattern.wordsPerRow()));
    if (mRows == 0)
        return;
    const auto values = mValues.rows(0, mRows);
    const auto words = mPattern.block(0, mRows);
    const int perRow = mPattern.wordsPerRow();
    for (std::size_t i = 1; i < n; ++i) {
        const double* row = values.data() + i * n;
        double sum = 0.0;
        forEachCommon(words.data() + i * static_cast<std::size_t>(perRow), columnWords.data(), perRow,
                      [&](std::size_t k) { sum += row[k] * column[k]; });
        out[i] = sum;
    }
}

double BasisInverse::rowTimes(int row, std::span<const double> column,
                              std::span<const std::uint64_t> columnWords) const
{
    const auto values = mValues.row(row, 0, mRows);
    checkCovers(column.size(), values.size());
    const auto rowWords = mPattern.rowWords(row);
    checkCovers(columnWords.size(), rowWords.size());
    double sum = 0.0;
    forEachCommon(rowWords.data(), columnWords.data(), static_cast<int>(rowWords.size()),
                  [&](std::size_t k) { sum += values[k] * column[k]; });
    return sum;
}

void BasisInverse::update(int r, const CheckedArray<double>& alpha)
{
    const double pivot = alpha[r];
    const auto n = static_cast<std::size_t>(width());
    const auto values = mValues.rows(0, mRows);
    const auto words = mPattern.block(0, mRows);
    const auto perRow = static_cast<std::size_t>(mPattern.wordsPerRow());
    const auto alphas = alpha.range(0, mRows);
    const auto eta = mEta.range(0, mRows);
    if (r < 1 || r > mRows) [[unlikely]]
        throwIndexOutOfRange("pivot row", r, mRows + 1);

    // The entries of the pivot row that are non-zero now; the others leave every row unchanged.
    double* pivotRow = values.data() + static_cast<std::size_t>(r) * n;
    std::uint64_t* pivotWords = words.data() + static_cast<std::size_t>(r) * perRow;
    const auto entries = mPivotEntries.range(0, mRows);
    std::size_t count = 0;
    forEachSet(pivotWords, static_cast<int>(perRow), [&](std::size_t k) {
        if (pivotRow[k] != 0.0)
            entries[count++] = static_cast<int>(k);
    });
    for (std::size_t w = 0; w < perRow; ++w)
        pivotWords[w] = 0;
    for (std::size_t c = 0; c < count; ++c) {
        const auto k = static_cast<std::size_t>(entries[c]);
        pivotWords[k / 64] |= std::uint64_t{1} << (k % 64);
    }

    for (std::size_t i = 1; i < n; ++i) {
        if (i == static_cast<std::size_t>(r))
            continue;
        if (alphas[i] == 0.0) {
            eta[i] = 0.0;
            continue;
        }
        const double e = -alphas[i] / pivot;
        eta[i] = e;
        double* row = values.data() + i * n;
        for (std::size_t c = 0; c < count; ++c) {
            const auto k = static_cast<std::size_t>(entries[c]);
            row[k] += e * pivotRow[k];
        }
        std::uint64_t* rowWords = words.data() + i * perRow;
        for (std::size_t w = 0; w < perRow; ++w)
            rowWords[w] |= pivotWords[w];
    }
    const double e = 1.0 / pivot;
    eta[static_cast<std::size_t>(r)] = e;
    for (std::size_t c = 0; c < count; ++c)
        pivotRow[static_cast<std::size_t>(entries[c])] *= e;
}

} // namespace kilnova
