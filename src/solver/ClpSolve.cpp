#include "solver/ClpSolve.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace kilnova {

namespace {

// Phase 1 may end with this much left in the artificials (in the units of the right-hand sides).
constexpr double kFeasibilityThreshold = 0.03;

// The float start value is slightly above the double 1e30; the ratio test depends on it.
constexpr float kHuge = 1e30f;
constexpr double kNoRatio = 1e30;

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
