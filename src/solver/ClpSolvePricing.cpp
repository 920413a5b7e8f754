// Pricing: the prices of the rows, the reduced costs of the non-basic columns and Dantzig's choice
// of the entering one, again after each pivot where its changes reach. Kept apart from the pivoting.
#include "solver/ClpSolve.h"

#include <algorithm>
#include <array>
#include <limits>

namespace kilnova {

void ClpSolve::gatherBasicCost(int row)
{
    mBasicCost[row] = mCost[mBasis[row]];
}

void ClpSolve::computePrices()
{
    // dual[i] = sum over k of cost[basis[k]] * Binv[k][i], in k order.
    for (int k = 1; k <= mRows; ++k)
        gatherBasicCost(k);
    const auto dual = mDual.range(0, mRows);
    mBinv.leftMultiply(mBasicCost.range(0, mRows), dual);
    bool finite = true;
    for (int i = 1; i <= mRows; ++i)
        finite = finite && isFinite(dual[static_cast<std::size_t>(i)]);
    if (!finite)
        mBinv.usePlainLoops();
}

int ClpSolve::logicalColumnOf(int row) const
{
    if (row <= mCountAtMost)
        return mColumns + mCountAtLeast + row;
    if (row > mCountAtMost + mCountEqual)
        return mColumns + (row - mCountAtMost - mCountEqual);
    return 0;
}

double ClpSolve::reducedCost(int j, std::span<const double> dual) const
{
    if (j <= mColumns) {
        // sum over i of dual[i] * A[i][j], in i order. Only the held coefficients count while every
        // price is finite; otherwise a zero coefficient meeting a price that is not finite counts.
        // The rows held are 1..m, which `dual` covers (checked once by its caller).
        const auto rows = mA.columnRows(j);
        const auto values = mA.columnValues(j);
        double sum = 0.0;
        if (!mBinv.plain() || mNonFiniteRows.empty()) {
            for (std::size_t t = 0; t < rows.size(); ++t)
                sum += dual[static_cast<std::size_t>(rows[t])] * values[t];
        } else {
            std::size_t t = 0;
            std::size_t f = 0;
            while (t < rows.size() || f < mNonFiniteRows.size()) {
                const int held = t < rows.size() ? rows[t] : mRows + 1;
                const int odd = f < mNonFiniteRows.size() ? mNonFiniteRows[f] : mRows + 1;
                if (held <= odd) {
                    sum += dual[static_cast<std::size_t>(held)] * values[t];
                    ++t;
                    f += held == odd;
                } else {
                    sum += dual[static_cast<std::size_t>(odd)] * 0.0;
                    ++f;
                }
            }
        }
        return sum - mCost[j];
    }
    return logicalReducedCost(j, dual, mCost[j]);
}

void ClpSolve::structuralReducedCosts(std::span<const int> columns, std::span<const double> dual)
{
    // Four columns at a time, each summed in its own row order as reducedCost() does: the same
    // sums, whose additions overlap instead of each waiting on the one before.
    constexpr std::size_t kLanes = 4;
    std::array<int, kLanes> lane{};
    std::size_t filled = 0;
    auto flush = [&] {
        std::array<std::span<const int>, kLanes> rows;
        std::array<std::span<const double>, kLanes> values;
        std::array<double, kLanes> sum{};
        std::size_t shortest = std::numeric_limits<std::size_t>::max();
        for (std::size_t l = 0; l < filled; ++l) {
            rows[l] = mA.columnRows(lane[l]);
            values[l] = mA.columnValues(lane[l]);
            shortest = std::min(shortest, rows[l].size());
        }
        std::size_t t = 0;
        if (filled == kLanes) {
            for (; t < shortest; ++t) {
                for (std::size_t l = 0; l < kLanes; ++l)
                    sum[l] += dual[static_cast<std::size_t>(rows[l][t])] * values[l][t];
            }
        }
        for (std::size_t l = 0; l < filled; ++l) {
            double s = sum[l];
            for (std::size_t u = t; u < rows[l].size(); ++u)
                s += dual[static_cast<std::size_t>(rows[l][u])] * values[l][u];
            mReduced[lane[l]] = s - mCost[lane[l]];
        }
        filled = 0;
    };
    for (const int j : columns) {
        if (j > mColumns)
            continue;
        lane[filled++] = j;
        if (filled == kLanes)
            flush();
    }
    flush();
}

void ClpSolve::priceColumns()
{
    mNonFiniteRows.clear();
    if (mBinv.plain()) {
        for (int i = 1; i <= mRows; ++i)
            if (!isFinite(mDual[i]))
                mNonFiniteRows.push_back(i);
    }
    const auto dual = mDual.range(0, mRows);
    // While every price counts only where a coefficient is held, the structural sums are gathered
    // row by row: each column still adds its terms in increasing row order, the same sum, but the
    // columns' additions no longer wait on one another.
    const bool byRow = !mBinv.plain() || mNonFiniteRows.empty();
    const auto sums = mColumnSum.range(0, mColumns);
    if (byRow) {
        // While the inverse is not plain every value is finite, and a zero price adds only zeros.
        const bool skipZeros = !mBinv.plain();
        std::fill(sums.begin(), sums.end(), 0.0);
        for (int i = 1; i <= mRows; ++i) {
            const double d = dual[static_cast<std::size_t>(i)];
            if (skipZeros && d == 0.0)
                continue;
            const auto columns = mA.rowColumns(i);
            const auto values = mA.rowValues(i);
            for (std::size_t t = 0; t < columns.size(); ++t)
                sums[static_cast<std::size_t>(columns[t])] += d * values[t];
        }
    }
    const auto nonBasic = mNonBasic.range(0, mLastNonBasicStart);
    const auto cost = mCost.range(0, mTotalColumns);
    const auto reduced = mReduced.range(0, mTotalColumns);
    const auto state = mColumnState.range(0, mTotalColumns);
    for (int k = 1; k <= mLastNonBasicStart; ++k) {
        // Every column of the non-basic list is one of the tableau's, 1..totalColumns.
        const int j = nonBasic[static_cast<std::size_t>(k)];
        const auto u = static_cast<std::size_t>(j);
        double d;
        if (j > mColumns)
            d = logicalReducedCost(j, dual, cost[u]);
        else if (byRow)
            d = sums[u] - cost[u];
        else
            d = reducedCost(j, dual);
        reduced[u] = d;
        mPricing.setLeaf(k, d, state[u] != kArtificialOut);
    }
    mPricing.rebuild();
    choose();
}

void ClpSolve::choose()
{
    const PricingTree::Choice c = mPricing.choose();
    mMinReduced = c.minimum;
    mEnteringPosition = c.position;
    mEntering = c.position == 0 ? 0 : mNonBasic[c.position];
}

void ClpSolve::priceAll()
{
    computePrices();
    priceColumns();
}

void ClpSolve::markStale(int column)
{
    if (column < 1 || mPosition[column] == 0 || mStaleMark[column] == mIterations)
        return;
    mStaleMark[column] = mIterations;
    mStale.push_back(column);
}

void ClpSolve::repriceAfterPivot(int row, std::span<const int> changedPositions, int leaving)
{
    // A pivot on row r changes the inverse only in the positions where row r was non-zero, and the
    // weights only in row r, whose entry elsewhere stays zero: every other price keeps its sum
    // term for term, and so does every reduced cost that meets no changed price.
    gatherBasicCost(row);
    if (mBinv.plain()) {
        priceAll();
        return;
    }
    const auto fresh = mFreshDual.range(0, mRows);
    mBinv.leftMultiplyAt(changedPositions, mBasicCost.range(0, mRows), fresh);
    mChangedRows.clear();
    bool finite = true;
    for (std::size_t c = 0; c < changedPositions.size(); ++c) {
        const int i = changedPositions[c];
        const double v = fresh[c];
        if (v == mDual[i])
            continue;
        mDual[i] = v;
        mChangedRows.push_back(i);
        finite = finite && isFinite(v);
    }
    if (!finite) {
        mBinv.usePlainLoops();
        priceColumns();
        return;
    }
    // When the changed prices meet a good share of the columns (a dense row's price changed),
    // one pass over every column is cheaper than picking them out; an unchanged sum of the same
    // terms comes out the same.
    std::size_t met = 0;
    for (const int i : mChangedRows)
        met += mA.rowColumns(i).size() + 1;
    if (4 * met > static_cast<std::size_t>(mLastNonBasicStart)) {
        priceColumns();
        return;
    }
    mStale.clear();
    markStale(leaving);
    for (const int i : mChangedRows) {
        for (const int j : mA.rowColumns(i))
            markStale(j);
        markStale(logicalColumnOf(i));
    }
    const auto dual = mDual.range(0, mRows);
    // Here the inverse is not plain, so only the held coefficients count.
    structuralReducedCosts(mStale, dual);
    for (const int j : mStale) {
        if (j > mColumns)
            mReduced[j] = reducedCost(j, dual);
        mPricing.set(mPosition[j], mReduced[j], mColumnState[j] != kArtificialOut);
    }
    choose();
}

} // namespace kilnova
