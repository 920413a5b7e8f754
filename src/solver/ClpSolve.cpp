#include "solver/ClpSolve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace kilnova {

namespace {

// Column states.
constexpr int kBasic = 1;
constexpr int kNonBasic = 2;
constexpr int kArtificialOut = 3; // an artificial that left the basis; never priced again

// Phase 1 may end with this much left in the artificials (in the units of the right-hand sides).
constexpr double kFeasibilityThreshold = 0.03;

// The float start value is slightly above the double 1e30; the ratio test depends on it.
constexpr float kHuge = 1e30f;
constexpr double kNoRatio = 1e30;

bool isFinite(double v)
{
    return std::fabs(v) <= std::numeric_limits<double>::max();
}

} // namespace

void ClpSolve::sizeWorkingArrays()
{
    const int rowSide = mRows + 1;
    const int columnSide = mTotalColumns + 1;
    for (CheckedArray<double>* a : {&mXB, &mDual, &mFreshDual, &mBasicCost})
        a->reset(rowSide);
    mBasis.reset(rowSide);
    for (CheckedArray<double>* a : {&mCost, &mReduced})
        a->reset(columnSide);
    for (CheckedArray<int>* a : {&mBasicRow, &mPosition, &mColumnState, &mStaleMark})
        a->reset(columnSide);
    mNonBasic.reset(mLastNonBasicStart + 1);
    mBinv.reset(mRows);
    mAlpha.reset(rowSide);
    mColumnSum.reset(mColumns + 1);
    mPricing.reset(mLastNonBasicStart);
    mChangedRows.clear();
    mStale.clear();
}

int ClpSolve::Solve()
{
    int atMost = 0;
    int equal = 0;
    int atLeast = 0;
    for (int i = 1; i <= mRows; ++i) {
        const int kind = mKind[i];
        atMost += kind == kAtMost;
        equal += kind == kEqual;
        atLeast += kind == kAtLeast;
    }
    if (atMost != mCountAtMost || equal != mCountEqual || atLeast != mCountAtLeast)
        return kRowsInconsistent;
    mIterations = 1;
    mSmallestPivot = 1e30;

    normaliseSigns();
    mLastNonBasicStart = mColumns + mCountAtLeast;
    mLastRealColumn = mLastNonBasicStart + mCountAtMost;
    mTotalColumns = mLastRealColumn + mCountAtLeast + mCountEqual;
    reorderRows();
    sizeWorkingArrays();
    setInitialBasis();
    // A coefficient that is not finite makes the skipped zero terms count from the start.
    bool finite = mA.allFinite();
    for (int j = 1; j <= mColumns; ++j)
        finite = finite && isFinite(mObjectiveCoefficient[j]);
    if (!finite)
        mBinv.usePlainLoops();

    computeCosts();
    priceAll();
    if (mMinReduced > -mOptimalityTolerance)
        return kOptimal;

    do {
        if (mIterations > mPivotLimit)
            return kPivotLimit;
        computeAlpha(mEntering);
        mLeavingRow = ratioTest();
        if (mLeavingRow == 0)
            return kUnbounded;
        if (mStopOnRay && !(mAlpha[mLeavingRow] > 0.0))
            return kUnbounded;
        mSmallestPivot = std::min(mSmallestPivot, std::fabs(mAlpha[mLeavingRow]));
        const int leaving = mBasis[mLeavingRow];
        changeBasis(mLeavingRow, mEntering, mEnteringPosition);
        const std::span<const int> changed = mBinv.update(mLeavingRow, mAlpha);
        updateValues(mLeavingRow);

        ++mIterations;
        repriceAfterPivot(mLeavingRow, changed, leaving);
        if (mPhase == 1 && mMinReduced > -mOptimalityTolerance) {
            if (std::fabs(static_cast<double>(mObjective)) > kFeasibilityThreshold)
                return kInfeasible;
            driveOutArtificials();
            mPhase = 2;
            computeCosts();
            priceAll();
        }
    } while (mMinReduced <= -mOptimalityTolerance);
    return kOptimal;
}

void ClpSolve::normaliseSigns()
{
    CheckedArray<std::uint8_t> flipped;
    bool any = false;
    for (int i = 1; i <= mRows; ++i) {
        if (!(mRhs[i] < 0.0))
            continue;
        if (!any)
            flipped.reset(mRows + 1);
        if (mKind[i] == kAtMost) {
            mKind[i] = kAtLeast;
            ++mCountAtLeast;
            --mCountAtMost;
        } else if (mKind[i] == kAtLeast) {
            mKind[i] = kAtMost;
            --mCountAtLeast;
            ++mCountAtMost;
        }
        flipped[i] = 1;
        any = true;
        mRhs[i] = -mRhs[i];
    }
    if (any)
        mA.negateRows(flipped.range(0, mRows));
}

void ClpSolve::reorderRows()
{
    // Stable by kind: at-most rows, then equalities, then at-least rows, each in the caller's order.
    CheckedArray<int> newRow;
    newRow.reset(mRows + 1);
    const CheckedArray<double> backupRhs = mRhs;
    const CheckedArray<int> backupKind = mKind;
    int target = 1;
    for (const int kind : {kAtMost, kEqual, kAtLeast}) {
        for (int i = 1; i <= mRows; ++i) {
            if (backupKind[i] != kind)
                continue;
            newRow[i] = target;
            mRhs[target] = backupRhs[i];
            mKind[target] = kind;
            ++target;
        }
    }
    mA.permuteRows(newRow.range(0, mRows));
    mA.compress();
}

void ClpSolve::setInitialBasis()
{
    mBinv.setIdentity();
    for (int i = 1; i <= mRows; ++i)
        mXB[i] = mRhs[i];
    if (mRows == mCountAtMost) {
        mPhase = 2;
        for (int i = 1; i <= mRows; ++i)
            mBasis[i] = mColumns + i;
    } else {
        mPhase = 1;
        for (int i = 1; i <= mRows; ++i)
            mBasis[i] = mColumns + mCountAtLeast + i;
        // Positions past m held the zeros of arrays sized at twice the row capacity, and an index
        // past that failed its range check: a tableau wider than the capacity fails here still.
        const int capacity = 2 * mCapacityRows;
        double sum = 0.0;
        for (int k = mCountAtMost + 1; k <= mTotalColumns; ++k) {
            if (k >= capacity)
                throwIndexOutOfRange("array", k, capacity);
            if (k <= mRows)
                sum += mXB[k];
        }
        mObjective = static_cast<float>(-sum);
    }
    for (int i = 1; i <= mRows; ++i) {
        mColumnState[mBasis[i]] = kBasic;
        mBasicRow[mBasis[i]] = i;
    }
    for (int k = 1; k <= mLastNonBasicStart; ++k) {
        mNonBasic[k] = k;
        mPosition[k] = k;
        mColumnState[k] = kNonBasic;
    }
    mBasisSet = true;
}

void ClpSolve::computeCosts()
{
    if (mPhase == 1) {
        for (int j = 1; j <= mTotalColumns; ++j)
            mCost[j] = j <= mLastRealColumn ? 0.0 : -1.0;
        return;
    }
    for (int j = 1; j <= mTotalColumns; ++j)
        mCost[j] = j <= mColumns ? mSense * mObjectiveCoefficient[j] : 0.0;
    double z = 0.0;
    for (int i = 1; i <= mRows; ++i)
        z += mCost[mBasis[i]] * mXB[i];
    mObjective = static_cast<float>(z);
}

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
    if (j <= mLastNonBasicStart)
        return -mDual[mCountAtMost + mCountEqual + (j - mColumns)] - mCost[j];
    if (j <= mLastRealColumn)
        return mDual[j - mColumns - mCountAtLeast] - mCost[j];
    return 0.0;
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
    for (int k = 1; k <= mLastNonBasicStart; ++k) {
        const int j = mNonBasic[k];
        mReduced[j] =
            byRow && j <= mColumns ? sums[static_cast<std::size_t>(j)] - mCost[j] : reducedCost(j, dual);
        mPricing.setLeaf(k, mReduced[j], mColumnState[j] != kArtificialOut);
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

void ClpSolve::computeAlpha(int column)
{
    if (column <= mColumns)
        mBinv.multiply(mA.columnRows(column), mA.columnValues(column), mAlpha);
    else if (column <= mColumns + mCountAtLeast)
        mBinv.multiplyUnit(mCountAtMost + mCountEqual + (column - mColumns), -1.0, mAlpha);
    else
        mBinv.multiplyUnit(column - mColumns - mCountAtLeast, 1.0, mAlpha);
    // Keep only the rows whose alpha came out non-zero: the ratio test and the updates walk them.
    mAlpha.dropZeros();
}

int ClpSolve::ratioTest()
{
    // Kept exactly so: the float start value lies above the double 1e30 given to rows with
    // alpha <= 0, so such a row is taken until a positive alpha is met. Rows not listed in alpha
    // have alpha = 0: a run of them is taken whole (its last row wins) or not at all.
    const auto alpha = mAlpha.values();
    const auto xB = mXB.range(0, mRows);
    float theta = kHuge;
    int row = 0;
    int next = 1; // the first row not yet seen
    auto skipTo = [&](int i) {
        if (i > next && kNoRatio < theta) {
            theta = static_cast<float>(kNoRatio);
            row = i - 1;
        }
        next = i + 1;
    };
    for (const int i : mAlpha.indices()) {
        if (i < 1 || i > mRows) [[unlikely]]
            throwIndexOutOfRange("alpha", i, mRows + 1);
        skipTo(i);
        const auto u = static_cast<std::size_t>(i);
        // Divided either way, so that the choice compiles to a select, not a branch.
        const double quotient = xB[u] / alpha[u];
        const double ratio = alpha[u] > 0.0 ? quotient : kNoRatio;
        if (ratio < theta) {
            theta = static_cast<float>(ratio);
            row = i;
        }
    }
    skipTo(mRows + 1);
    mTheta = theta;
    return row;
}

void ClpSolve::changeBasis(int row, int column, int position)
{
    const int leaving = mBasis[row];
    mNonBasic[position] = leaving;
    mPosition[leaving] = position;
    mBasicRow[leaving] = 0;
    mBasis[row] = column;
    mBasicRow[column] = row;
    mPosition[column] = 0;
    mColumnState[column] = kBasic;
    mColumnState[leaving] = isArtificial(leaving) ? kArtificialOut : kNonBasic;
}

void ClpSolve::updateValues(int leavingRow)
{
    const double theta = mTheta;
    const auto alpha = mAlpha.values();
    const auto xB = mXB.range(0, mRows);
    if (std::signbit(theta)) {
        // theta x (+0) is -0 here, and an xB of -0 minus -0 turns +0: every row counts.
        for (std::size_t i = 1; i < xB.size(); ++i)
            xB[i] = xB[i] - theta * alpha[i];
    } else {
        // A zero alpha (always +0) leaves xB[i] exactly as it is.
        for (const int i : mAlpha.indices()) {
            const auto u = static_cast<std::size_t>(i);
            xB[u] = xB[u] - theta * alpha[u];
        }
    }
    mXB[leavingRow] = theta;
    mObjective =
        static_cast<float>(static_cast<double>(mObjective) - static_cast<double>(mMinReduced) * theta);
}

int ClpSolve::firstPivotFor(int row)
{
    const auto passes = [this](double value) {
        return std::fabs(value) > mPivotTolerance;
    };
    if (mBinv.plain()) {
        for (int k = 1; k <= mLastNonBasicStart; ++k) {
            const int j = mNonBasic[k];
            // Only stored structural coefficients count: slacks and surpluses give 0.
            if (j <= mColumns && passes(mBinv.rowTimes(row, mA.columnRows(j), mA.columnValues(j))))
                return k;
        }
        return 0;
    }
    // Row `row` of the inverse times every structural column at once: for each column the terms
    // arrive in increasing k, as in its own product. Sized here, where a phase 1 ends.
    if (mRowProduct.size() != mColumns + 1)
        mRowProduct.reset(mColumns + 1);
    mBinv.rowEntries(row, mInverseRow);
    mRowProduct.clear();
    for (const auto& [k, b] : mInverseRow) {
        const auto columns = mA.rowColumns(k);
        const auto values = mA.rowValues(k);
        for (std::size_t t = 0; t < columns.size(); ++t)
            mRowProduct.add(columns[t], b * values[t]);
    }
    int first = 0;
    for (const int j : mRowProduct.indices()) {
        const int position = mPosition[j];
        if (position != 0 && passes(mRowProduct[j]) && (first == 0 || position < first))
            first = position;
    }
    return first;
}

void ClpSolve::driveOutArtificials()
{
    for (int i = 1; i <= mRows; ++i) {
        if (!isArtificial(mBasis[i]))
            continue;
        const int k = firstPivotFor(i);
        if (k == 0)
            continue;
        const int j = mNonBasic[k];
        changeBasis(i, j, k);
        computeAlpha(j);
        mBinv.update(i, mAlpha);
    }
}

bool ClpSolve::GetVariableValue(int column, double& value) const
{
    // Before Solve has set a basis every row holds column 0.
    if (!mBasisSet) {
        if (column != 0 || mRows < 1)
            return false;
        value = mXB[1];
        return true;
    }
    if (column < 1 || column > mTotalColumns || mBasicRow[column] == 0)
        return false;
    value = mXB[mBasicRow[column]];
    return true;
}

double ClpSolve::GetObjectiveValue() const
{
    return mSense * static_cast<double>(mObjective);
}

} // namespace kilnova
