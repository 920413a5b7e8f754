#include "solver/DenseInverse.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

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

bool isFinite(double v)
{
    return std::fabs(v) <= std::numeric_limits<double>::max();
}

// The largest magnitude among `values`, NaN above infinity: the bit patterns of magnitudes sort
// as the magnitudes do.
double largestMagnitude(std::span<const double> values)
{
    std::uint64_t largest = 0;
    for (const double v : values)
        largest = std::max(largest, std::bit_cast<std::uint64_t>(v) & ~(std::uint64_t{1} << 63));
    return std::bit_cast<double>(largest);
}

// Far enough below the largest double that a bound under it rules out an overflow.
constexpr double kSafeMagnitude = 1e300;

} // namespace

void DenseInverse::reset(int rows)
{
    mRows = rows < 0 ? 0 : rows;
    mValues.reset(mRows + 1, mRows + 1);
    mRowPattern.reset(mRows + 1, mRows + 1);
    mColumnPattern.reset(mRows + 1, mRows + 1);
    mEta.reset(mRows + 1);
    mPivotEntries.reset(mRows + 1);
    mWork.reset(4, mRows + 1);
    mColumn.reset(mRows + 1);
    mProduct.reset(mRows + 1);
    mPlain = false;
    mLargest = 0.0;
}

void DenseInverse::clear()
{
    // Without sizing anything to one row: a solver releases an inverse it never used.
    mRows = 0;
    mValues.clear();
    mRowPattern.clear();
    mColumnPattern.clear();
    mWork.clear();
    mEta.clear();
    mPivotEntries.clear();
    mColumn.clear();
    mProduct.clear();
    mPlain = false;
    mLargest = 0.0;
}

void DenseInverse::assignPlain(int rows, const std::vector<std::pair<std::pair<int, int>, double>>& entries)
{
    reset(rows);
    for (const auto& [at, value] : entries)
        mValues(at.first, at.second) = value;
    mPlain = true;
}

std::size_t DenseInverse::entryCount() const
{
    std::size_t count = 0;
    for (int i = 1; i <= mRows; ++i)
        for (const double v : mValues.row(i, 1, mRows))
            count += v != 0.0;
    return count;
}

void DenseInverse::rowEntries(int row, std::vector<std::pair<int, double>>& out) const
{
    out.clear();
    const auto values = mValues.row(row, 0, mRows);
    for (int k = 1; k <= mRows; ++k) {
        const double v = values[static_cast<std::size_t>(k)];
        if (mPlain || v != 0.0)
            out.emplace_back(k, v);
    }
}

std::span<const double> DenseInverse::scatter(std::span<const int> rows, std::span<const double> values)
{
    mWork.clearRow(0);
    for (std::size_t t = 0; t < rows.size(); ++t) {
        mColumn[rows[t]] = values[t];
        if (values[t] != 0.0)
            mWork.set(0, rows[t]);
    }
    return mColumn.range(0, mRows);
}

void DenseInverse::unscatter(std::span<const int> rows)
{
    for (const int k : rows)
        mColumn[k] = 0.0;
}

std::span<const std::uint64_t> DenseInverse::patternOf(std::span<const double> weight)
{
    checkCovers(weight.size(), static_cast<std::size_t>(width()));
    mWork.clearRow(1);
    for (int k = 1; k <= mRows; ++k)
        if (weight[static_cast<std::size_t>(k)] != 0.0)
            mWork.set(1, k);
    return mWork.rowWords(1);
}

void DenseInverse::setIdentity()
{
    for (int i = 1; i <= mRows; ++i) {
        // Once plain, the patterns are no longer kept up to date.
        if (mPlain) {
            for (double& v : mValues.row(i, 1, mRows))
                v = 0.0;
        } else {
            const auto row = mValues.row(i, 0, mRows);
            forEachSet(mRowPattern.rowWords(i).data(), mRowPattern.wordsPerRow(),
                       [&](std::size_t k) { row[k] = 0.0; });
        }
        mValues(i, i) = 1.0;
        mRowPattern.clearRow(i);
        mRowPattern.set(i, i);
        mColumnPattern.clearRow(i);
        mColumnPattern.set(i, i);
    }
    mPlain = false;
    mLargest = 1.0;
}

void DenseInverse::leftMultiply(std::span<const double> weight, std::span<double> out)
{
    const std::span<const std::uint64_t> weightWords = patternOf(weight);
    const auto n = static_cast<std::size_t>(width());
    checkCovers(weight.size(), n);
    checkCovers(out.size(), n);
    checkCovers(weightWords.size(), static_cast<std::size_t>(mRowPattern.wordsPerRow()));
    std::fill(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(n), 0.0);
    if (mRows == 0)
        return;
    const auto values = mValues.rows(0, mRows);
    if (mPlain) {
        for (std::size_t k = 1; k < n; ++k) {
            const double* row = values.data() + k * n;
            for (std::size_t i = 1; i < n; ++i)
                out[i] += weight[k] * row[i];
        }
        return;
    }
    const auto words = mRowPattern.block(0, mRows);
    const int perRow = mRowPattern.wordsPerRow();
    forEachSet(weightWords.data(), perRow, [&](std::size_t k) {
        const double w = weight[k];
        if (w == 0.0)
            return;
        const double* row = values.data() + k * n;
        forEachSet(words.data() + k * static_cast<std::size_t>(perRow), perRow,
                   [&](std::size_t i) { out[i] += w * row[i]; });
    });
}

void DenseInverse::leftMultiplyAt(std::span<const int> positions, std::span<const double> weight,
                                  std::span<double> out)
{
    const std::span<const std::uint64_t> weightWords = patternOf(weight);
    const auto n = static_cast<std::size_t>(width());
    checkCovers(weight.size(), n);
    checkCovers(out.size(), positions.size());
    checkCovers(weightWords.size(), static_cast<std::size_t>(mColumnPattern.wordsPerRow()));
    if (mRows == 0)
        return;
    const auto values = mValues.rows(0, mRows);
    const auto columnWords = mColumnPattern.block(0, mRows);
    const int perColumn = mColumnPattern.wordsPerRow();
    for (std::size_t c = 0; c < positions.size(); ++c) {
        const auto i = static_cast<std::size_t>(positions[c]);
        if (i < 1 || i >= n) [[unlikely]]
            throwIndexOutOfRange("position", positions[c], static_cast<int>(n));
        double sum = 0.0;
        if (mPlain) {
            for (std::size_t k = 1; k < n; ++k)
                sum += weight[k] * values[k * n + i];
        } else {
            forEachCommon(columnWords.data() + i * static_cast<std::size_t>(perColumn), weightWords.data(),
                          perColumn, [&](std::size_t k) { sum += weight[k] * values[k * n + i]; });
        }
        out[c] = sum;
    }
}

void DenseInverse::multiplyDense(std::span<const double> column, std::span<const std::uint64_t> columnWords,
                                 std::span<double> out, std::span<std::uint64_t> outWords) const
{
    const auto n = static_cast<std::size_t>(width());
    const auto perColumn = static_cast<std::size_t>(mColumnPattern.wordsPerRow());
    checkCovers(column.size(), n);
    checkCovers(out.size(), n);
    checkCovers(columnWords.size(), perColumn);
    checkCovers(outWords.size(), perColumn);
    std::fill(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(n), 0.0);
    if (mRows == 0)
        return;
    const auto values = mValues.rows(0, mRows);
    if (mPlain) {
        for (std::size_t i = 1; i < n; ++i) {
            const double* row = values.data() + i * n;
            double sum = 0.0;
            for (std::size_t k = 1; k < n; ++k)
                sum += row[k] * column[k];
            out[i] = sum;
        }
        setAll(outWords);
        return;
    }
    // Column by column, so that each out[i] still gathers its terms in increasing k.
    std::fill(outWords.begin(), outWords.begin() + static_cast<std::ptrdiff_t>(perColumn), std::uint64_t{0});
    const auto words = mColumnPattern.block(0, mRows);
    forEachSet(columnWords.data(), static_cast<int>(perColumn), [&](std::size_t k) {
        const double c = column[k];
        if (c == 0.0 || k == 0)
            return;
        const std::uint64_t* rows = words.data() + k * perColumn;
        for (std::size_t w = 0; w < perColumn; ++w)
            outWords[w] |= rows[w];
        forEachSet(rows, static_cast<int>(perColumn),
                   [&](std::size_t i) { out[i] += values[i * n + k] * c; });
    });
}

void DenseInverse::multiplyUnitDense(int r, double sign, std::span<double> out,
                                     std::span<std::uint64_t> outWords) const
{
    const auto n = static_cast<std::size_t>(width());
    checkCovers(out.size(), n);
    const auto columnWords = mColumnPattern.rowWords(r); // checks r
    checkCovers(outWords.size(), columnWords.size());
    const auto values = mValues.rows(0, mRows);
    const auto u = static_cast<std::size_t>(r);
    if (mPlain) {
        for (std::size_t i = 1; i < n; ++i) {
            double sum = 0.0;
            for (std::size_t k = 1; k < n; ++k)
                sum += values[i * n + k] * (k == u ? sign : 0.0);
            out[i] = sum;
        }
        setAll(outWords);
        return;
    }
    // The sum starts at +0: a zero entry gives +0 whatever its sign.
    std::fill(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(n), 0.0);
    std::copy(columnWords.begin(), columnWords.end(), outWords.begin());
    forEachSet(columnWords.data(), static_cast<int>(columnWords.size()),
               [&](std::size_t i) { out[i] = 0.0 + values[i * n + u] * sign; });
}

void DenseInverse::setAll(std::span<std::uint64_t> words) const
{
    const auto perColumn = static_cast<std::size_t>(mColumnPattern.wordsPerRow());
    std::fill(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(perColumn), std::uint64_t{0});
    for (int i = 1; i <= mRows; ++i)
        words[static_cast<std::size_t>(i / 64)] |= std::uint64_t{1} << (i % 64);
}

double DenseInverse::rowTimesDense(int row, std::span<const double> column,
                                   std::span<const std::uint64_t> columnWords) const
{
    const auto values = mValues.row(row, 0, mRows);
    checkCovers(column.size(), values.size());
    double sum = 0.0;
    if (mPlain) {
        for (std::size_t k = 1; k < values.size(); ++k)
            sum += values[k] * column[k];
        return sum;
    }
    const auto rowWords = mRowPattern.rowWords(row);
    checkCovers(columnWords.size(), rowWords.size());
    forEachCommon(rowWords.data(), columnWords.data(), static_cast<int>(rowWords.size()),
                  [&](std::size_t k) { sum += values[k] * column[k]; });
    return sum;
}

void DenseInverse::plainUpdate(int r, double pivot, std::span<const double> alphas)
{
    mPlain = true;
    const auto n = static_cast<std::size_t>(width());
    const auto ur = static_cast<std::size_t>(r);
    const auto values = mValues.rows(0, mRows);
    const auto eta = mEta.range(0, mRows);
    for (std::size_t i = 1; i < n; ++i)
        eta[i] = i == ur ? 1.0 / pivot : -alphas[i] / pivot;
    const double* pivotRow = values.data() + ur * n;
    for (std::size_t i = 1; i < n; ++i) {
        if (i == ur)
            continue;
        double* row = values.data() + i * n;
        for (std::size_t k = 1; k < n; ++k)
            row[k] += eta[i] * pivotRow[k];
    }
    double* last = values.data() + ur * n;
    for (std::size_t k = 1; k < n; ++k)
        last[k] *= eta[ur];
}

std::span<const int> DenseInverse::updateDense(int r, std::span<const double> alphas,
                                               std::span<const std::uint64_t> alphaWords)
{
    if (r < 1 || r > mRows) [[unlikely]]
        throwIndexOutOfRange("pivot row", r, mRows + 1);
    const auto n = static_cast<std::size_t>(width());
    const auto ur = static_cast<std::size_t>(r);
    checkCovers(alphas.size(), static_cast<std::size_t>(width()));
    const auto entries = mPivotEntries.range(0, mRows);
    const double pivot = alphas[ur];

    // Every multiplier is finite when the largest one is: otherwise the skipped terms count.
    const double inverse = 1.0 / pivot;
    const double largestEta = largestMagnitude(alphas.subspan(1)) / std::fabs(pivot);
    if (mPlain || pivot == 0.0 || !isFinite(inverse) || !isFinite(largestEta)) {
        plainUpdate(r, pivot, alphas);
        for (std::size_t k = 1; k < n; ++k)
            entries[k - 1] = static_cast<int>(k);
        return {entries.data(), n - 1};
    }

    const auto values = mValues.rows(0, mRows);
    const auto rowWords = mRowPattern.block(0, mRows);
    const auto columnWords = mColumnPattern.block(0, mRows);
    const auto perRow = static_cast<std::size_t>(mRowPattern.wordsPerRow());
    const auto eta = mEta.range(0, mRows);
    checkCovers(alphaWords.size(), perRow);

    // The entries of the pivot row that are non-zero now; the others leave every row unchanged.
    double* pivotRow = values.data() + ur * n;
    std::uint64_t* pivotWords = rowWords.data() + ur * perRow;
    std::size_t count = 0;
    double largestPivotEntry = 0.0;
    forEachSet(pivotWords, static_cast<int>(perRow), [&](std::size_t k) {
        if (pivotRow[k] != 0.0) {
            entries[count++] = static_cast<int>(k);
            largestPivotEntry = std::max(largestPivotEntry, std::fabs(pivotRow[k]));
        } else {
            mColumnPattern.unset(static_cast<int>(k), r);
        }
    });
    std::fill(pivotWords, pivotWords + perRow, std::uint64_t{0});
    for (std::size_t c = 0; c < count; ++c) {
        const auto k = static_cast<std::size_t>(entries[c]);
        pivotWords[k / 64] |= std::uint64_t{1} << (k % 64);
    }

    // Each entry is checked for overflow only when a bound on them all no longer rules it out.
    auto boundAfter = [&] {
        return std::max(mLargest + largestEta * largestPivotEntry, largestPivotEntry * std::fabs(inverse));
    };
    if (!(boundAfter() <= kSafeMagnitude))
        mLargest = largestMagnitude(values.subspan(n));
    double bound = boundAfter();
    const bool check = !(bound <= kSafeMagnitude);

    // The rows that change are those whose alpha is non-zero, in the positions of the pivot row.
    // An entry that cancels to zero leaves both patterns, so that later products skip it.
    for (std::size_t c = 0; c < count; ++c) {
        std::uint64_t* words = columnWords.data() + static_cast<std::size_t>(entries[c]) * perRow;
        for (std::size_t w = 0; w < perRow; ++w)
            words[w] |= alphaWords[w];
    }
    bool overflow = false;
    forEachSet(alphaWords.data(), static_cast<int>(perRow), [&](std::size_t i) {
        if (i == ur || alphas[i] == 0.0)
            return;
        const double e = -alphas[i] / pivot;
        eta[i] = e;
        double* row = values.data() + i * n;
        std::uint64_t* words = rowWords.data() + i * perRow;
        for (std::size_t w = 0; w < perRow; ++w)
            words[w] |= pivotWords[w];
        for (std::size_t c = 0; c < count; ++c) {
            const auto k = static_cast<std::size_t>(entries[c]);
            const double v = row[k] + e * pivotRow[k];
            row[k] = v;
            if (v == 0.0) {
                words[k / 64] &= ~(std::uint64_t{1} << (k % 64));
                columnWords[k * perRow + i / 64] &= ~(std::uint64_t{1} << (i % 64));
            }
            if (check)
                overflow |= !isFinite(v);
        }
    });
    eta[ur] = inverse;
    for (std::size_t c = 0; c < count; ++c) {
        const auto k = static_cast<std::size_t>(entries[c]);
        pivotRow[k] *= inverse;
        overflow |= check && !isFinite(pivotRow[k]);
    }
    mLargest = bound;
    // The values are those of the full loop even so; the products that follow are not.
    if (overflow)
        mPlain = true;
    return {entries.data(), count};
}

void DenseInverse::multiply(std::span<const int> rows, std::span<const double> values, SparseVector& out)
{
    const auto column = scatter(rows, values);
    const auto product = mProduct.range(0, mRows);
    multiplyDense(column, mWork.rowWords(0), product, mWork.block(3, 3));
    unscatter(rows);
    list(product, out);
}

void DenseInverse::multiplyUnit(int r, double sign, SparseVector& out)
{
    const auto product = mProduct.range(0, mRows);
    multiplyUnitDense(r, sign, product, mWork.block(3, 3));
    list(product, out);
}

void DenseInverse::list(std::span<const double> product, SparseVector& out) const
{
    checkCovers(static_cast<std::size_t>(out.size()), static_cast<std::size_t>(width()));
    out.assignPattern(mWork.rowWords(3), product);
}

double DenseInverse::rowTimes(int row, std::span<const int> rows, std::span<const double> values)
{
    const auto column = scatter(rows, values);
    const double sum = rowTimesDense(row, column, mWork.rowWords(0));
    unscatter(rows);
    return sum;
}

std::span<const int> DenseInverse::update(int r, const SparseVector& alpha)
{
    mWork.clearRow(2);
    for (const int i : alpha.indices())
        mWork.set(2, i);
    return updateDense(r, alpha.values(), mWork.rowWords(2));
}

} // namespace kilnova
