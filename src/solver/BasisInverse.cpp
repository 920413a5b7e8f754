#include "solver/BasisInverse.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace kilnova {

namespace {

// A vector the caller passes must cover positions 0..m.
void checkCovers(std::size_t size, std::size_t needed)
{
    if (size < needed) [[unlikely]]
        throwIndexOutOfRange("vector", static_cast<int>(needed) - 1, static_cast<int>(size));
}

bool isFinite(double v)
{
    return std::fabs(v) <= std::numeric_limits<double>::max();
}

// The magnitude's bit pattern: magnitudes sort as these do, NaN above infinity.
std::uint64_t magnitudeBits(double v)
{
    return std::bit_cast<std::uint64_t>(v) & ~(std::uint64_t{1} << 63);
}

} // namespace

void BasisInverse::reset(int rows)
{
    mRows = rows < 0 ? 0 : rows;
    const auto n = static_cast<std::size_t>(mRows + 1);
    mColumns.assign(n, Column{});
    mRowPositions.assign(n, std::vector<int>{});
    mValues.clear();
    mDenseColumn.clear();
    mChanged.reset(mRows + 1);
    mPivotRow.clear();
    mPlain = false;
}

void BasisInverse::clear()
{
    reset(0);
    mColumns.shrink_to_fit();
    mRowPositions.shrink_to_fit();
}

void BasisInverse::setIdentity()
{
    mValues.clear();
    mDenseColumn.clear();
    mPlain = false;
    for (int i = 0; i <= mRows; ++i) {
        const auto u = static_cast<std::size_t>(i);
        mColumns[u].clear();
        mRowPositions[u].clear();
        if (i > 0) {
            mColumns[u].push_back({i, 0, 1.0});
            mRowPositions[u].push_back(i);
        }
    }
}

void BasisInverse::checkRow(int row) const
{
    if (row < 1 || row > mRows) [[unlikely]]
        throwIndexOutOfRange("inverse row", row, mRows + 1);
}

int BasisInverse::find(int position, int row) const
{
    const Column& column = mColumns[static_cast<std::size_t>(position)];
    const auto at =
        std::lower_bound(column.begin(), column.end(), row, [](const Cell& c, int r) { return c.row < r; });
    return at != column.end() && at->row == row ? static_cast<int>(at - column.begin()) : -1;
}

double BasisInverse::at(int row, int column) const
{
    if (mPlain)
        return mValues(row, column);
    checkRow(row);
    checkRow(column);
    const int index = find(column, row);
    return index < 0 ? 0.0
                     : mColumns[static_cast<std::size_t>(column)][static_cast<std::size_t>(index)].value;
}

std::size_t BasisInverse::entryCount() const
{
    if (mPlain)
        return static_cast<std::size_t>(mRows) * static_cast<std::size_t>(mRows);
    std::size_t count = 0;
    for (const Column& c : mColumns)
        count += c.size();
    return count;
}

void BasisInverse::rowEntries(int row, std::vector<std::pair<int, double>>& out) const
{
    checkRow(row);
    out.clear();
    if (mPlain) {
        for (int k = 1; k <= mRows; ++k)
            out.emplace_back(k, mValues(row, k));
        return;
    }
    for (const int k : mRowPositions[static_cast<std::size_t>(row)])
        out.emplace_back(k,
                         mColumns[static_cast<std::size_t>(k)][static_cast<std::size_t>(find(k, row))].value);
    std::sort(out.begin(), out.end());
}

void BasisInverse::usePlainLoops()
{
    makeDense();
}

void BasisInverse::makeDense()
{
    if (mPlain)
        return;
    const auto n = static_cast<std::size_t>(mRows + 1);
    if (n * n > mDenseLimit / sizeof(double))
        throw std::invalid_argument("the basis inverse of " + std::to_string(mRows) +
                                    " rows is too large to be held whole");
    mValues.reset(mRows + 1, mRows + 1);
    mDenseColumn.reset(mRows + 1);
    for (int k = 1; k <= mRows; ++k) {
        for (const Cell& c : mColumns[static_cast<std::size_t>(k)])
            mValues(c.row, k) = c.value;
    }
    for (Column& c : mColumns)
        Column().swap(c);
    for (std::vector<int>& r : mRowPositions)
        std::vector<int>().swap(r);
    mPlain = true;
}

std::span<const double> BasisInverse::denseColumn(std::span<const int> rows, std::span<const double> values)
{
    const auto column = mDenseColumn.range(0, mRows);
    std::fill(column.begin(), column.end(), 0.0);
    for (std::size_t t = 0; t < rows.size(); ++t)
        mDenseColumn[rows[t]] = values[t];
    return column;
}

void BasisInverse::leftMultiply(std::span<const double> weight, std::span<double> out) const
{
    const auto n = static_cast<std::size_t>(mRows + 1);
    checkCovers(weight.size(), n);
    checkCovers(out.size(), n);
    std::fill(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(n), 0.0);
    if (mPlain) {
        const auto values = mValues.rows(0, mRows);
        for (std::size_t k = 1; k < n; ++k) {
            const double* row = values.data() + k * n;
            for (std::size_t i = 1; i < n; ++i)
                out[i] += weight[k] * row[i];
        }
        return;
    }
    for (std::size_t i = 1; i < n; ++i) {
        double sum = 0.0;
        for (const Cell& c : mColumns[i]) {
            const double w = weight[static_cast<std::size_t>(c.row)];
            if (w != 0.0)
                sum += w * c.value;
        }
        out[i] = sum;
    }
}

void BasisInverse::leftMultiplyAt(std::span<const int> positions, std::span<const double> weight,
                                  std::span<double> out) const
{
    const auto n = static_cast<std::size_t>(mRows + 1);
    checkCovers(weight.size(), n);
    checkCovers(out.size(), positions.size());
    for (std::size_t c = 0; c < positions.size(); ++c) {
        const int i = positions[c];
        checkRow(i);
        double sum = 0.0;
        if (mPlain) {
            const auto values = mValues.rows(0, mRows);
            for (std::size_t k = 1; k < n; ++k)
                sum += weight[k] * values[k * n + static_cast<std::size_t>(i)];
        } else {
            for (const Cell& cell : mColumns[static_cast<std::size_t>(i)]) {
                const double w = weight[static_cast<std::size_t>(cell.row)];
                if (w != 0.0)
                    sum += w * cell.value;
            }
        }
        out[c] = sum;
    }
}

void BasisInverse::multiply(std::span<const int> rows, std::span<const double> values, SparseVector& out)
{
    checkCovers(static_cast<std::size_t>(out.size()), static_cast<std::size_t>(mRows + 1));
    out.clear();
    if (mPlain) {
        const auto column = denseColumn(rows, values);
        const auto n = static_cast<std::size_t>(mRows + 1);
        const auto inverse = mValues.rows(0, mRows);
        for (std::size_t i = 1; i < n; ++i) {
            const double* row = inverse.data() + i * n;
            double sum = 0.0;
            for (std::size_t k = 1; k < n; ++k)
                sum += row[k] * column[k];
            out.set(static_cast<int>(i), sum);
        }
        return;
    }
    // Position by position in k order, so that each out[i] still gathers its terms in increasing k.
    for (std::size_t t = 0; t < rows.size(); ++t) {
        const double v = values[t];
        const int k = rows[t];
        checkRow(k);
        if (v == 0.0)
            continue;
        for (const Cell& c : mColumns[static_cast<std::size_t>(k)])
            out.add(c.row, c.value * v);
    }
    out.sortIndices();
}

void BasisInverse::multiplyUnit(int r, double sign, SparseVector& out)
{
    checkRow(r);
    checkCovers(static_cast<std::size_t>(out.size()), static_cast<std::size_t>(mRows + 1));
    out.clear();
    if (mPlain) {
        const auto n = static_cast<std::size_t>(mRows + 1);
        const auto u = static_cast<std::size_t>(r);
        const auto values = mValues.rows(0, mRows);
        for (std::size_t i = 1; i < n; ++i) {
            double sum = 0.0;
            for (std::size_t k = 1; k < n; ++k)
                sum += values[i * n + k] * (k == u ? sign : 0.0);
            out.set(static_cast<int>(i), sum);
        }
        return;
    }
    // The sum starts at +0: a zero entry gives +0 whatever its sign.
    for (const Cell& c : mColumns[static_cast<std::size_t>(r)])
        out.set(c.row, 0.0 + c.value * sign);
}

double BasisInverse::rowTimes(int row, std::span<const int> rows, std::span<const double> values)
{
    checkRow(row);
    double sum = 0.0;
    if (mPlain) {
        const auto column = denseColumn(rows, values);
        const auto entries = mValues.row(row, 0, mRows);
        for (std::size_t k = 1; k < entries.size(); ++k)
            sum += entries[k] * column[k];
        return sum;
    }
    for (std::size_t t = 0; t < rows.size(); ++t) {
        const int k = rows[t];
        checkRow(k);
        const int index = find(k, row);
        if (index >= 0)
            sum += mColumns[static_cast<std::size_t>(k)][static_cast<std::size_t>(index)].value * values[t];
    }
    return sum;
}

void BasisInverse::plainUpdate(int r, double pivot, std::span<const double> alphas)
{
    makeDense();
    const auto n = static_cast<std::size_t>(mRows + 1);
    const auto ur = static_cast<std::size_t>(r);
    const auto values = mValues.rows(0, mRows);
    std::vector<double> eta(n, 0.0);
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

std::span<const int> BasisInverse::update(int r, const SparseVector& alpha)
{
    checkRow(r);
    checkCovers(static_cast<std::size_t>(alpha.size()), static_cast<std::size_t>(mRows + 1));
    const auto alphas = alpha.values();
    const double pivot = alphas[static_cast<std::size_t>(r)];
    const auto all = [this] {
        for (int k = 1; k <= mRows; ++k)
            mChanged[k - 1] = k;
        return mChanged.range(0, mRows - 1);
    };

    // Every multiplier is finite when the largest one is: otherwise the skipped terms count.
    const double inverse = 1.0 / pivot;
    std::uint64_t largest = magnitudeBits(pivot);
    for (const int i : alpha.indices())
        largest = std::max(largest, magnitudeBits(alphas[static_cast<std::size_t>(i)]));
    const double largestEta = std::bit_cast<double>(largest) / std::fabs(pivot);
    if (mPlain || pivot == 0.0 || !isFinite(inverse) || !isFinite(largestEta)) {
        plainUpdate(r, pivot, alphas);
        return all();
    }

    // The entries of the pivot row; every other position leaves every row unchanged. Each of their
    // columns is merged, in row order, with the rows whose alpha is not zero.
    mPivotRow.clear();
    for (const int k : mRowPositions[static_cast<std::size_t>(r)])
        mPivotRow.emplace_back(
            k, mColumns[static_cast<std::size_t>(k)][static_cast<std::size_t>(find(k, r))].value);
    mMultipliers.clear();
    for (const int i : alpha.indices()) {
        const double a = alphas[static_cast<std::size_t>(i)];
        if (i != r && a != 0.0)
            mMultipliers.emplace_back(i, -a / pivot);
    }
    std::sort(mMultipliers.begin(), mMultipliers.end());
    bool overflow = false;
    std::size_t count = 0;
    for (const auto& [k, p] : mPivotRow) {
        Column& column = mColumns[static_cast<std::size_t>(k)];
        mMerged.clear();
        std::size_t c = 0;
        auto keep = [&](Cell cell, double v) {
            if (v != 0.0) {
                cell.value = v;
                mMerged.push_back(cell);
                overflow |= !isFinite(v);
            } else {
                mDropped.emplace_back(cell.row, cell.slot);
            }
        };
        for (const auto& [i, e] : mMultipliers) {
            for (; c < column.size() && column[c].row < i; ++c) {
                if (column[c].row == r)
                    keep(column[c], p * inverse);
                else
                    mMerged.push_back(column[c]);
            }
            if (c < column.size() && column[c].row == i) {
                keep(column[c], column[c].value + e * p);
                ++c;
            } else {
                const double v = 0.0 + e * p;
                if (v != 0.0) {
                    std::vector<int>& positions = mRowPositions[static_cast<std::size_t>(i)];
                    mMerged.push_back(Cell{i, static_cast<int>(positions.size()), v});
                    positions.push_back(k);
                    overflow |= !isFinite(v);
                }
            }
        }
        for (; c < column.size(); ++c) {
            if (column[c].row == r)
                keep(column[c], p * inverse);
            else
                mMerged.push_back(column[c]);
        }
        column.swap(mMerged);
        // A cell that came out zero leaves its row's list; the row's last position takes its slot.
        for (const auto& [row, slot] : mDropped) {
            std::vector<int>& positions = mRowPositions[static_cast<std::size_t>(row)];
            const int moved = positions.back();
            positions[static_cast<std::size_t>(slot)] = moved;
            positions.pop_back();
            if (moved != k) {
                const int index = find(moved, row);
                mColumns[static_cast<std::size_t>(moved)][static_cast<std::size_t>(index)].slot = slot;
            }
        }
        mDropped.clear();
        mChanged[static_cast<int>(count++)] = k;
    }
    // The values are those of the full loop even so; the products that follow are not.
    if (overflow)
        makeDense();
    return mChanged.range(0, static_cast<int>(count) - 1);
}

} // namespace kilnova
