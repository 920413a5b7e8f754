#include "solver/ClpSolve.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
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

// Without an anti-cycling rule a degenerate problem can cycle for ever (and the start-value
// quirk of the ratio test makes some unbounded problems swap two columns for ever). A terminating
// run makes at most about two pivots per row plus tableau column: 1.9 at worst over 21 000
// generated blend and general problems, well under 1 on blends of 50 sources and more. Twenty per
// row plus column, and never fewer than 10 000, is ten times that, yet ends quickly: within
// milliseconds for tens of rows, within seconds for the largest blend (200 sources under all 22
// elements: ~450 rows, ~870 columns, limit about 26 000).
constexpr int kMinPivotLimit = 10000;
constexpr int kPivotsPerDimension = 20;

} // namespace

ClpSolve::ClpSolve() = default;

void ClpSolve::resetCounts()
{
    mRows = 0;
    mColumns = 0;
    mCountAtLeast = 0;
    mCountEqual = 0;
    mCountAtMost = 0;
}

void ClpSolve::releaseArrays()
{
    mA.clear();
    mAPattern.clear();
    mBinv.clear();
    mDualPattern.clear();
    for (CheckedArray<double>* a :
         {&mRhs, &mXB, &mDual, &mBasicCost, &mAlpha, &mObjectiveCoefficient, &mCost, &mReduced})
        a->clear();
    for (CheckedArray<int>* a : {&mKind, &mBasis, &mNonBasic, &mColumnState})
        a->clear();
}

bool ClpSolve::Initialize(int rows, int columns, int sense, int countAtLeast, int countEqual, int countAtMost)
{
    mRows = std::max(rows, 0);
    mColumns = std::max(columns, 0);
    mSense = (sense == 1 || sense == -1) ? sense : 1;
    mCountAtLeast = std::max(countAtLeast, 0);
    mCountEqual = std::max(countEqual, 0);
    mCountAtMost = std::max(countAtMost, 0);
    if (mCountAtLeast + mCountEqual + mCountAtMost != mRows) {
        resetCounts();
        releaseArrays();
        return false;
    }

    mCapacityRows = mRows + 30;
    mCapacityColumns = 2 * mRows + mColumns + 32;
    const int rowSide = 2 * mCapacityRows;
    const int columnSide = 2 * mCapacityColumns;

    // The vectors have the full capacities, whose range check the phase-1 start relies on. The
    // matrices hold what the method reads: rows 1..m of the structural columns, and the m x m
    // inverse.
    mA.reset(mColumns + 1, mRows + 1);
    mAPattern.reset(mColumns + 1, mRows + 1);
    mBinv.reset(mRows, rowSide);
    mDualPattern.reset(1, mRows + 1);
    for (CheckedArray<double>* a : {&mRhs, &mXB, &mDual, &mBasicCost, &mAlpha})
        a->reset(rowSide);
    for (CheckedArray<int>* a : {&mKind, &mBasis})
        a->reset(rowSide);
    for (CheckedArray<double>* a : {&mObjectiveCoefficient, &mCost, &mReduced})
        a->reset(columnSide);
    for (CheckedArray<int>* a : {&mNonBasic, &mColumnState})
        a->reset(columnSide);
    return true;
}

bool ClpSolve::SetCoefficient(int row, int column, double value)
{
    if (row < 1 || row > mRows || column < 1 || column > mColumns)
        return false;
    a(row, column) = value;
    return true;
}

bool ClpSolve::SetConstraint(int row, double rhs, int kind)
{
    if (row < 1 || row > mRows || kind < kAtLeast || kind > kAtMost)
        return false;
    mRhs[row] = rhs;
    mKind[row] = kind;
    return true;
}

bool ClpSolve::SetObjectiveCoefficient(int column, double value)
{
    if (column < 1 || column > mColumns)
        return false;
    mObjectiveCoefficient[column] = value;
    return true;
}

void ClpSolve::DumpToFile(const std::string& fileName) const
{
    std::FILE* file = std::fopen(fileName.c_str(), "w");
    if (file == nullptr)
        return;
    char field[512];
    std::string line;
    for (int i = 1; i <= mRows; ++i) {
        line.clear();
        for (int j = 1; j <= mColumns; ++j) {
            std::snprintf(field, sizeof field, "%10.2lf", a(i, j));
            line += field;
        }
        std::snprintf(field, sizeof field, "%10.2lf", mRhs[i]);
        line += field;
        line += " IBT: ";
        std::snprintf(field, sizeof field, "%4d", mKind[i]);
        line += field;
        std::fprintf(file, "%s\n", line.c_str());
    }
    std::fprintf(file, "\n\n");
    for (int j = 1; j <= mColumns; ++j)
        std::fprintf(file, "%10.2lf\n", mObjectiveCoefficient[j]);
    std::fclose(file);
}

int ClpSolve::pivotLimit() const
{
    const long long limit = static_cast<long long>(kPivotsPerDimension) * (mRows + mTotalColumns);
    return static_cast<int>(std::clamp<long long>(limit, kMinPivotLimit, std::numeric_limits<int>::max()));
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
    setInitialBasis();

    computeCosts();
    priceAll();
    if (mMinReduced > -mOptimalityTolerance)
        return kOptimal;

    const int limit = pivotLimit();
    do {
        if (mIterations > limit)
            return kPivotLimit;
        computeAlpha(mEntering);
        mLeavingRow = ratioTest();
        if (mLeavingRow == 0)
            return kUnbounded;
        mSmallestPivot = std::min(mSmallestPivot, std::fabs(mAlpha[mLeavingRow]));
        changeBasis(mLeavingRow, mEntering, mEnteringPosition);
        mBinv.update(mLeavingRow, mAlpha);
        updateValues(mLeavingRow);

        ++mIterations;
        priceAll();
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
    for (int i = 1; i <= mRows; ++i) {
        if (!(mRhs[i] < 0.0))
            continue;
        if (mKind[i] == kAtMost) {
            mKind[i] = kAtLeast;
            ++mCountAtLeast;
            --mCountAtMost;
        } else if (mKind[i] == kAtLeast) {
            mKind[i] = kAtMost;
            --mCountAtLeast;
            ++mCountAtMost;
        }
        for (int j = 1; j <= mColumns; ++j)
            a(i, j) = -a(i, j);
        mRhs[i] = -mRhs[i];
    }
}

void ClpSolve::reorderRows()
{
    // Stable by kind: at-most rows, then equalities, then at-least rows, each in the caller's
    // order. The backup keeps the rows as they were.
    const CheckedMatrix backupA = mA;
    const CheckedArray<double> backupRhs = mRhs;
    const CheckedArray<int> backupKind = mKind;
    int target = 1;
    for (const int kind : {kAtMost, kEqual, kAtLeast}) {
        for (int i = 1; i <= mRows; ++i) {
            if (backupKind[i] != kind)
                continue;
            for (int j = 1; j <= mColumns; ++j)
                a(target, j) = backupA(j, i);
            mRhs[target] = backupRhs[i];
            mKind[target] = kind;
            ++target;
        }
    }
    for (int j = 1; j <= mColumns; ++j) {
        mAPattern.clearRow(j);
        const auto column = mA.row(j, 0, mRows);
        for (int i = 1; i <= mRows; ++i)
            if (column[static_cast<std::size_t>(i)] != 0.0)
                mAPattern.set(j, i);
    }
}

void ClpSolve::setInitialBasis()
{
    mBinv.setIdentity();
    for (int i = 1; i <= mRows; ++i)
        mXB[i] = mRhs[i];
    if (mRows == mCountAtMost) {
        mPhase = 2;
        for (int i = 1; i <= mRows; ++i) {
            mBasis[i] = mColumns + i;
            mColumnState[mColumns + i] = kBasic;
        }
    } else {
        mPhase = 1;
        for (int i = 1; i <= mRows; ++i) {
            mBasis[i] = mColumns + mCountAtLeast + i;
            mColumnState[mBasis[i]] = kBasic;
        }
        // Positions past m read the zeros of the over-sized array, and fail its range check when
        // the tableau is wider than the row capacity.
        double sum = 0.0;
        for (int k = mCountAtMost + 1; k <= mTotalColumns; ++k)
            sum += mXB[k];
        mObjective = static_cast<float>(-sum);
    }
    for (int k = 1; k <= mLastNonBasicStart; ++k) {
        mNonBasic[k] = k;
        mColumnState[k] = kNonBasic;
    }
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

// The sums below skip terms with a zero factor, as BasisInverse does: while the values are finite
// that changes no value, and these problems are mostly zeros. Each sum keeps its index order.

void ClpSolve::computePrices()
{
    // dual[i] = sum over k of cost[basis[k]] * Binv[k][i], in k order.
    for (int k = 1; k <= mRows; ++k)
        mBasicCost[k] = mCost[mBasis[k]];
    const auto dual = mDual.range(0, mRows);
    mBinv.leftMultiply(mBasicCost.range(0, mRows), dual);
    mDualPattern.clearRow(0);
    for (int i = 1; i <= mRows; ++i)
        if (dual[static_cast<std::size_t>(i)] != 0.0)
            mDualPattern.set(0, i);
}

void ClpSolve::computeReducedCosts()
{
    // Whole blocks, checked once: the columns of A with their patterns, the prices with theirs.
    const auto columns = mA.rows(0, mColumns);
    const auto columnWords = mAPattern.block(0, mColumns);
    const auto perColumn = static_cast<std::size_t>(mAPattern.wordsPerRow());
    const auto dual = mDual.range(0, mRows);
    const auto dualWords = mDualPattern.rowWords(0);
    const auto height = static_cast<std::size_t>(mRows + 1);
    if (dualWords.size() != perColumn || dual.size() != height) [[unlikely]]
        throwIndexOutOfRange("price vector", static_cast<int>(dual.size()), static_cast<int>(height));
    for (int k = 1; k <= mLastNonBasicStart; ++k) {
        const int j = mNonBasic[k];
        if (j <= mColumns) {
            // sum over i of dual[i] * A[i][j], in i order
            const auto u = static_cast<std::size_t>(j);
            const double* column = columns.data() + u * height;
            const std::uint64_t* words = columnWords.data() + u * perColumn;
            double sum = 0.0;
            for (std::size_t w = 0; w < perColumn; ++w) {
                for (std::uint64_t bits = words[w] & dualWords[w]; bits != 0; bits &= bits - 1) {
                    const std::size_t i = w * 64 + static_cast<std::size_t>(std::countr_zero(bits));
                    sum += dual[i] * column[i];
                }
            }
            mReduced[j] = sum - mCost[j];
        } else if (j <= mColumns + mCountAtLeast) {
            mReduced[j] = -mDual[mCountAtMost + mCountEqual + (j - mColumns)] - mCost[j];
        } else if (j <= mLastRealColumn) {
            mReduced[j] = mDual[j - mColumns - mCountAtLeast] - mCost[j];
        } else {
            mReduced[j] = 0.0;
        }
    }
}

void ClpSolve::chooseEntering()
{
    mMinReduced = kHuge;
    mEntering = 0;
    mEnteringPosition = 0;
    for (int k = 1; k <= mLastNonBasicStart; ++k) {
        const int j = mNonBasic[k];
        if (mColumnState[j] == kArtificialOut)
            continue;
        if (mReduced[j] < mMinReduced) {
            mMinReduced = static_cast<float>(mReduced[j]);
            mEntering = j;
            mEnteringPosition = k;
        }
    }
}

void ClpSolve::priceAll()
{
    computePrices();
    computeReducedCosts();
    chooseEntering();
}

double ClpSolve::binvRowTimesColumn(int row, int column) const
{
    return mBinv.rowTimes(row, mA.row(column, 0, mRows), mAPattern.rowWords(column));
}

void ClpSolve::computeAlpha(int column)
{
    if (column <= mColumns) {
        mBinv.multiply(mA.row(column, 0, mRows), mAPattern.rowWords(column), mAlpha.range(0, mRows));
    } else if (column <= mColumns + mCountAtLeast) {
        const int r = mCountAtMost + mCountEqual + (column - mColumns);
        for (int i = 1; i <= mRows; ++i)
            mAlpha[i] = -mBinv.at(i, r);
    } else {
        const int r = column - mColumns - mCountAtLeast;
        for (int i = 1; i <= mRows; ++i)
            mAlpha[i] = mBinv.at(i, r);
    }
}

int ClpSolve::ratioTest()
{
    // Kept exactly so: the float start value lies above the double 1e30 given to rows with
    // alpha <= 0, so such a row is taken until a positive alpha is met.
    mTheta = kHuge;
    int row = 0;
    for (int i = 1; i <= mRows; ++i) {
        const double ratio = mAlpha[i] > 0.0 ? mXB[i] / mAlpha[i] : kNoRatio;
        if (ratio < mTheta) {
            mTheta = static_cast<float>(ratio);
            row = i;
        }
    }
    return row;
}

void ClpSolve::changeBasis(int row, int column, int position)
{
    const int leaving = mBasis[row];
    mNonBasic[position] = leaving;
    mBasis[row] = column;
    mColumnState[column] = kBasic;
    mColumnState[leaving] = isArtificial(leaving) ? kArtificialOut : kNonBasic;
}

void ClpSolve::updateValues(int leavingRow)
{
    const double theta = mTheta;
    for (int i = 1; i <= mRows; ++i)
        mXB[i] = mXB[i] - theta * mAlpha[i];
    mXB[leavingRow] = theta;
    mObjective =
        static_cast<float>(static_cast<double>(mObjective) - static_cast<double>(mMinReduced) * theta);
}

void ClpSolve::driveOutArtificials()
{
    for (int i = 1; i <= mRows; ++i) {
        const int artificial = mBasis[i];
        if (!isArtificial(artificial))
            continue;
        for (int k = 1; k <= mLastNonBasicStart; ++k) {
            const int j = mNonBasic[k];
            if (isArtificial(j))
                continue;
            // Only stored structural coefficients count: slacks and surpluses give 0.
            const double value = j <= mColumns ? binvRowTimesColumn(i, j) : 0.0;
            if (!(std::fabs(value) > mPivotTolerance))
                continue;
            changeBasis(i, j, k);
            computeAlpha(j);
            mBinv.update(i, mAlpha);
            break;
        }
    }
}

bool ClpSolve::GetVariableValue(int column, double& value) const
{
    for (int i = 1; i <= mRows; ++i) {
        if (mBasis[i] == column) {
            value = mXB[i];
            return true;
        }
    }
    return false;
}

double ClpSolve::GetObjectiveValue() const
{
    return mSense * static_cast<double>(mObjective);
}

} // namespace kilnova
