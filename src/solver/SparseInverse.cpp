#include "solver/SparseInverse.h"

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

void SparseInverse::reset(int rows)
{
    mRows = rows < 0 ? 0 : rows;
    const auto n = static_cast<std::size_t>(mRows + 1);
    mColumns.assign(n, Column{});
    mRowPositions.assign(n, std::vector<int>{});
    mChanged.reset(mRows + 1);
    mPivotRow.clear();
    mOverflowed = false;
}

void SparseInverse::clear()
{
    // Releases the storage without sizing anything to one row; reset() sizes it again.
    mRows = 0;
    mOverflowed = false;
    mColumns.clear();
    mColumns.shrink_to_fit();
    mRowPositions.clear();
    mRowPositions.shrink_to_fit();
    mChanged.clear();
    mPivotRow.clear();
}

void SparseInverse::setIdentity()
{
    mOverflowed = false;
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

void SparseInverse::checkRow(int row) const
{
    if (row < 1 || row > mRows) [[unlikely]]
        throwIndexOutOfRange("inverse row", row, mRows + 1);
}

int SparseInverse::find(int position, int row) const
{
    const Column& column = mColumns[static_cast<std::size_t>(position)];
    const auto at =
        std::lower_bound(column.begin(), column.end(), row, [](const Cell& c, int r) { return c.row < r; });
    return at != column.end() && at->row == row ? static_cast<int>(at - column.begin()) : -1;
}

double SparseInverse::at(int row, int column) const
{
    checkRow(row);
    checkRow(column);
    const int index = find(column, row);
    return index < 0 ? 0.0
                     : mColumns[static_cast<std::size_t>(column)][static_cast<std::size_t>(index)].value;
}

std::vector<std::pair<std::pair<int, int>, double>> SparseInverse::entries() const
{
    std::vector<std::pair<std::pair<int, int>, double>> all;
    for (int k = 1; k <= mRows; ++k)
        for (const Cell& c : mColumns[static_cast<std::size_t>(k)])
            all.push_back({{c.row, k}, c.value});
    return all;
}

std::size_t SparseInverse::entryCount() const
{
    std::size_t count = 0;
    for (const Column& c : mColumns)
        count += c.size();
    return count;
}

void SparseInverse::rowEntries(int row, std::vector<std::pair<int, double>>& out) const
{
    checkRow(row);
    out.clear();
    for (const int k : mRowPositions[static_cast<std::size_t>(row)])
        out.emplace_back(k,
                         mColumns[static_cast<std::size_t>(k)][static_cast<std::size_t>(find(k, row))].value);
    std::sort(out.begin(), out.end());
}

void SparseInverse::leftMultiply(std::span<const double> weight, std::span<double> out) const
{
    const auto n = static_cast<std::size_t>(mRows + 1);
    checkCovers(weight.size(), n);
    checkCovers(out.size(), n);
    std::fill(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(n), 0.0);
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

void SparseInverse::leftMultiplyAt(std::span<const int> positions, std::span<const double> weight,
                                   std::span<double> out) const
{
    const auto n = static_cast<std::size_t>(mRows + 1);
    checkCovers(weight.size(), n);
    checkCovers(out.size(), positions.size());
    for (std::size_t c = 0; c < positions.size(); ++c) {
        const int i = positions[c];
        checkRow(i);
        double sum = 0.0;
        for (const Cell& cell : mColumns[static_cast<std::size_t>(i)]) {
            const double w = weight[static_cast<std::size_t>(cell.row)];
            if (w != 0.0)
                sum += w * cell.value;
        }
        out[c] = sum;
    }
}

void SparseInverse::multiply(std::span<const int> rows, std::span<const double> values, SparseVector& out)
{
    checkCovers(static_cast<std::size_t>(out.size()), static_cast<std::size_t>(mRows + 1));
    out.clear();
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

void SparseInverse::multiplyUnit(int r, double sign, SparseVector& out)
{
    checkRow(r);
    checkCovers(static_cast<std::size_t>(out.size()), static_cast<std::size_t>(mRows + 1));
    out.clear();
    // The sum starts at +0: a zero entry gives +0 whatever its sign.
    for (const Cell& c : mColumns[static_cast<std::size_t>(r)])
        out.set(c.row, 0.0 + c.value * sign);
}

double SparseInverse::rowTimes(int row, std::span<const int> rows, std::span<const double> values)
{
    checkRow(row);
    double sum = 0.0;
    for (std::size_t t = 0; t < rows.size(); ++t) {
        const int k = rows[t];
        checkRow(k);
        const int index = find(k, row);
        if (index >= 0)
            sum += mColumns[static_cast<std::size_t>(k)][static_cast<std::size_t>(index)].value * values[t];
    }
    return sum;
}

bool SparseInverse::exact(int r, const SparseVector& alpha) const
{
    // Every multiplier is finite when the largest one is: otherwise the skipped terms count.
    const auto alphas = alpha.values();
    const double pivot = alphas[static_cast<std::size_t>(r)];
    std::uint64_t largest = magnitudeBits(pivot);
    for (const int i : alpha.indices())
        largest = std::max(largest, magnitudeBits(alphas[static_cast<std::size_t>(i)]));
    const double largestEta = std::bit_cast<double>(largest) / std::fabs(pivot);
    return pivot != 0.0 && isFinite(1.0 / pivot) && isFinite(largestEta);
}

std::span<const int> SparseInverse::update(int r, const SparseVector& alpha)
{
    checkRow(r);
    checkCovers(static_cast<std::size_t>(alpha.size()), static_cast<std::size_t>(mRows + 1));
    const auto alphas = alpha.values();
    const double pivot = alphas[static_cast<std::size_t>(r)];
    const double inverse = 1.0 / pivot;
    if (!exact(r, alpha))
        throw std::logic_error(
            "an update that is not exact in entries: the inverse must be held whole first");

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
        // The column is updated in place until a row has to come in; from there on it is merged into
        // a fresh copy. Cells that cancel to zero are dropped at the end.
        Column& column = mColumns[static_cast<std::size_t>(k)];
        const std::size_t length = column.size();
        bool merging = false;
        bool cancelled = false;
        const auto give = [&](Cell& cell, double v) {
            cell.value = v;
            overflow |= !isFinite(v);
            if (v == 0.0) {
                cancelled = true;
                mDropped.emplace_back(cell.row, cell.slot);
            } else if (merging) {
                mMerged.push_back(cell);
            }
        };
        const double pivot = p; // a structured binding cannot be captured by clang 14
        const auto pass = [&](Cell& cell) {
            if (cell.row == r)
                give(cell, pivot * inverse);
            else if (merging)
                mMerged.push_back(cell);
        };
        std::size_t c = 0;
        for (const auto& [i, e] : mMultipliers) {
            for (; c < length && column[c].row < i; ++c)
                pass(column[c]);
            if (c < length && column[c].row == i) {
                give(column[c], column[c].value + e * p);
                ++c;
                continue;
            }
            const double v = 0.0 + e * p;
            if (v == 0.0)
                continue;
            if (!merging) {
                merging = true;
                mMerged.clear();
                for (std::size_t t = 0; t < c; ++t)
                    if (column[t].value != 0.0)
                        mMerged.push_back(column[t]);
            }
            std::vector<int>& positions = mRowPositions[static_cast<std::size_t>(i)];
            mMerged.push_back(Cell{i, static_cast<int>(positions.size()), v});
            positions.push_back(k);
            overflow |= !isFinite(v);
        }
        for (; c < length; ++c)
            pass(column[c]);
        if (merging)
            column.swap(mMerged);
        else if (cancelled)
            column.erase(std::remove_if(column.begin(), column.end(),
                                        [](const Cell& cell) { return cell.value == 0.0; }),
                         column.end());
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
    mOverflowed = overflow;
    return mChanged.range(0, static_cast<int>(count) - 1);
}

} // namespace kilnova
