#include "UnchangedClpSolve.h"

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

bool isFinite(double v)
{
    return std::fabs(v) <= std::numeric_limits<double>::max();
}

} // namespace

UnchangedClpSolve::UnchangedClpSolve() = default;

void UnchangedClpSolve::resetCounts()
{
    mRows = 0;
    mColumns = 0;
    mCountAtLeast = 0;
    mCountEqual = 0;
    mCountAtMost = 0;
}

void UnchangedClpSolve::releaseArrays()
{
    mA.clear();
    mAPattern.clear();
    mAStart.clear();
    mARows.clear();
    mBinv.clear();
    mBasicCostPattern.clear();
    mAlphaPattern.clear();
    mDualChanged.clear();
    for (CheckedArray<double>* a :
         {&mRhs, &mXB, &mDual, &mFreshDual, &mBasicCost, &mAlpha, &mObjectiveCoefficient, &mCost, &mReduced})
        a->clear();
    for (CheckedArray<int>* a : {&mKind, &mBasis, &mNonBasic, &mColumnState})
        a->clear();
}

bool UnchangedClpSolve::Initialize(int rows, int columns, int sense, int countAtLeast, int countEqual,
                                   int countAtMost)
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
    mAStart.reset(mColumns + 2);
    mARows.reset(mColumns * mRows);
    mBinv.reset(mRows);
    mBasicCostPattern.reset(1, mRows + 1);
    mAlphaPattern.reset(1, mRows + 1);
    mDualChanged.reset(1, mRows + 1);
    for (CheckedArray<double>* a : {&mRhs, &mXB, &mDual, &mFreshDual, &mBasicCost, &mAlpha})
        a->reset(rowSide);
    for (CheckedArray<int>* a : {&mKind, &mBasis})
        a->reset(rowSide);
    for (CheckedArray<double>* a : {&mObjectiveCoefficient, &mCost, &mReduced})
        a->reset(columnSide);
    for (CheckedArray<int>* a : {&mNonBasic, &mColumnState})
        a->reset(columnSide);
    return true;
}

bool UnchangedClpSolve::SetCoefficient(int row, int column, double value)
{
    if (row < 1 || row > mRows || column < 1 || column > mColumns)
        return false;
    a(row, column) = value;
    return true;
}

bool UnchangedClpSolve::SetConstraint(int row, double rhs, int kind)
{
    if (row < 1 || row > mRows || kind < kAtLeast || kind > kAtMost)
        return false;
    mRhs[row] = rhs;
    mKind[row] = kind;
    return true;
}

bool UnchangedClpSolve::SetObjectiveCoefficient(int column, double value)
{
    if (column < 1 || column > mColumns)
        return false;
    mObjectiveCoefficient[column] = value;
    return true;
}

void UnchangedClpSolve::DumpToFile(const std::string& fileName) const
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

int UnchangedClpSolve::Solve()
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
    // A coefficient that is not finite makes the skipped zero terms count from the start.
    bool finite = true;
    for (int j = 1; j <= mColumns; ++j) {
        finite = finite && isFinite(mObjectiveCoefficient[j]);
        for (const double v : mA.row(j, 1, mRows))
            finite = finite && isFinite(v);
    }
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
        mSmallestPivot = std::min(mSmallestPivot, std::fabs(mAlpha[mLeavingRow]));
        const int leaving = mBasis[mLeavingRow];
        changeBasis(mLeavingRow, mEntering, mEnteringPosition);
        const std::span<const int> changed = mBinv.update(mLeavingRow, mAlpha, mAlphaPattern.rowWords(0));
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

void UnchangedClpSolve::normaliseSigns()
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

void UnchangedClpSolve::reorderRows()
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
    int entry = 0;
    for (int j = 1; j <= mColumns; ++j) {
        mAPattern.clearRow(j);
        mAStart[j] = entry;
        const auto column = mA.row(j, 0, mRows);
        for (int i = 1; i <= mRows; ++i) {
            if (column[static_cast<std::size_t>(i)] != 0.0) {
                mAPattern.set(j, i);
                mARows[entry++] = i;
            }
        }
    }
    mAStart[mColumns + 1] = entry;
}

void UnchangedClpSolve::setInitialBasis()
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

void UnchangedClpSolve::computeCosts()
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

// The sums below skip terms with a zero factor, as UnchangedBasisInverse does: while the values are finite
// that changes no value, and these problems are mostly zeros. Each sum keeps its index order. Once
// UnchangedBasisInverse runs plain loops (a value is not finite), so do they.

void UnchangedClpSolve::gatherBasicCost(int row)
{
    const double w = mCost[mBasis[row]];
    mBasicCost[row] = w;
    if (w != 0.0)
        mBasicCostPattern.set(0, row);
    else
        mBasicCostPattern.unset(0, row);
}

void UnchangedClpSolve::computePrices()
{
    // dual[i] = sum over k of cost[basis[k]] * Binv[k][i], in k order.
    mBasicCostPattern.clearRow(0);
    for (int k = 1; k <= mRows; ++k)
        gatherBasicCost(k);
    const auto dual = mDual.range(0, mRows);
    mBinv.leftMultiply(mBasicCost.range(0, mRows), mBasicCostPattern.rowWords(0), dual);
    bool finite = true;
    for (int i = 1; i <= mRows; ++i)
        finite = finite && isFinite(dual[static_cast<std::size_t>(i)]);
    if (!finite)
        mBinv.usePlainLoops();
}

void UnchangedClpSolve::priceColumns(int freshColumn, bool all)
{
    // Reduced costs, then Dantzig's choice, in one walk over nonBasic. A structural column keeps
    // its reduced cost unless a price it meets has changed, or it has just left the basis.
    all = all || mBinv.plain();
    const bool plain = mBinv.plain();
    const auto height = static_cast<std::size_t>(mRows + 1);
    const auto columns = mA.rows(0, mColumns);
    const auto columnWords = mAPattern.block(0, mColumns);
    const auto perColumn = static_cast<std::size_t>(mAPattern.wordsPerRow());
    const auto starts = mAStart.range(0, mColumns + 1);
    const auto rows = mARows.range(0, starts.back() - 1);
    const auto dual = mDual.range(0, mRows);
    const auto changedWords = mDualChanged.rowWords(0);
    if (changedWords.size() != perColumn || dual.size() != height) [[unlikely]]
        throwIndexOutOfRange("price vector", static_cast<int>(dual.size()), static_cast<int>(height));
    const auto nonBasic = mNonBasic.range(0, mLastNonBasicStart);
    const auto reduced = mReduced.range(0, mTotalColumns);
    const auto cost = mCost.range(0, mTotalColumns);
    const auto state = mColumnState.range(0, mTotalColumns);
    const int firstSlack = mColumns + mCountAtLeast + 1;
    const int surplusRowOffset = mCountAtMost + mCountEqual - mColumns; // row of surplus j: j + offset

    float minReduced = kHuge;
    mEntering = 0;
    mEnteringPosition = 0;
    for (int k = 1; k <= mLastNonBasicStart; ++k) {
        const int j = nonBasic[static_cast<std::size_t>(k)];
        const auto u = static_cast<std::size_t>(j);
        if (j <= mColumns) {
            const std::uint64_t* words = columnWords.data() + u * perColumn;
            bool stale = all || j == freshColumn;
            for (std::size_t w = 0; w < perColumn && !stale; ++w)
                stale = (words[w] & changedWords[w]) != 0;
            if (stale) {
                // sum over i of dual[i] * A[i][j], in i order; a zero term changes no sum
                const double* column = columns.data() + u * height;
                double sum = 0.0;
                if (plain) {
                    for (std::size_t i = 1; i < height; ++i)
                        sum += dual[i] * column[i];
                } else {
                    const auto first = static_cast<std::size_t>(starts[u]);
                    const auto last = static_cast<std::size_t>(starts[u + 1]);
                    for (std::size_t t = first; t < last; ++t) {
                        const auto i = static_cast<std::size_t>(rows[t]);
                        sum += dual[i] * column[i];
                    }
                }
                reduced[u] = sum - cost[u];
            }
        } else if (j < firstSlack) {
            reduced[u] = -dual[static_cast<std::size_t>(j + surplusRowOffset)] - cost[u];
        } else if (j <= mLastRealColumn) {
            reduced[u] = dual[static_cast<std::size_t>(j - firstSlack + 1)] - cost[u];
        } else {
            reduced[u] = 0.0;
        }
        // Pricing: strictly below the rounded minimum, so ties go to the earliest position.
        if (state[u] != kArtificialOut && reduced[u] < minReduced) {
            minReduced = static_cast<float>(reduced[u]);
            mEntering = j;
            mEnteringPosition = k;
        }
    }
    mMinReduced = minReduced;
}

void UnchangedClpSolve::priceAll()
{
    computePrices();
    priceColumns(0, true);
}

void UnchangedClpSolve::repriceAfterPivot(int row, std::span<const int> changedPositions, int leaving)
{
    // A pivot on row r changes the inverse only in the positions where row r was non-zero, and
    // the weights only in row r, whose entry elsewhere stays zero: every other price keeps its
    // sum term for term.
    gatherBasicCost(row);
    if (mBinv.plain()) {
        priceAll();
        return;
    }
    const auto fresh = mFreshDual.range(0, mRows);
    mBinv.leftMultiplyAt(changedPositions, mBasicCost.range(0, mRows), mBasicCostPattern.rowWords(0), fresh);
    const auto dual = mDual.range(0, mRows);
    mDualChanged.clearRow(0);
    bool finite = true;
    for (std::size_t c = 0; c < changedPositions.size(); ++c) {
        const int i = changedPositions[c];
        const double v = fresh[c];
        const auto u = static_cast<std::size_t>(i);
        if (v == dual[u])
            continue;
        dual[u] = v;
        mDualChanged.set(0, i);
        finite = finite && isFinite(v);
    }
    if (!finite)
        mBinv.usePlainLoops();
    priceColumns(leaving, false);
}

double UnchangedClpSolve::binvRowTimesColumn(int row, int column) const
{
    return mBinv.rowTimes(row, mA.row(column, 0, mRows), mAPattern.rowWords(column));
}

void UnchangedClpSolve::computeAlpha(int column)
{
    const auto alpha = mAlpha.range(0, mRows);
    const auto words = mAlphaPattern.block(0, 0);
    if (column <= mColumns)
        mBinv.multiply(mA.row(column, 0, mRows), mAPattern.rowWords(column), alpha, words);
    else if (column <= mColumns + mCountAtLeast)
        mBinv.multiplyUnit(mCountAtMost + mCountEqual + (column - mColumns), -1.0, alpha, words);
    else
        mBinv.multiplyUnit(column - mColumns - mCountAtLeast, 1.0, alpha, words);
    // Keep only the rows whose alpha came out non-zero: the ratio test and the updates walk them.
    for (std::size_t w = 0; w < words.size(); ++w) {
        for (std::uint64_t bits = words[w]; bits != 0; bits &= bits - 1) {
            const int b = std::countr_zero(bits);
            if (alpha[w * 64 + static_cast<std::size_t>(b)] == 0.0)
                words[w] &= ~(std::uint64_t{1} << b);
        }
    }
}

int UnchangedClpSolve::ratioTest()
{
    // Kept exactly so: the float start value lies above the double 1e30 given to rows with
    // alpha <= 0, so such a row is taken until a positive alpha is met. Rows outside the alpha
    // pattern have alpha = 0: a run of them is taken whole (its last row wins) or not at all.
    const auto alpha = mAlpha.range(0, mRows);
    const auto xB = mXB.range(0, mRows);
    const auto words = mAlphaPattern.rowWords(0);
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
    for (std::size_t w = 0; w < words.size(); ++w) {
        for (std::uint64_t bits = words[w]; bits != 0; bits &= bits - 1) {
            const int i = static_cast<int>(w * 64) + std::countr_zero(bits);
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
    }
    skipTo(mRows + 1);
    mTheta = theta;
    return row;
}

void UnchangedClpSolve::changeBasis(int row, int column, int position)
{
    const int leaving = mBasis[row];
    mNonBasic[position] = leaving;
    mBasis[row] = column;
    mColumnState[column] = kBasic;
    mColumnState[leaving] = isArtificial(leaving) ? kArtificialOut : kNonBasic;
}

void UnchangedClpSolve::updateValues(int leavingRow)
{
    const double theta = mTheta;
    const auto alpha = mAlpha.range(0, mRows);
    const auto xB = mXB.range(0, mRows);
    if (std::signbit(theta)) {
        // theta x (+0) is -0 here, and an xB of -0 minus -0 turns +0: every row counts.
        for (std::size_t i = 1; i < xB.size(); ++i)
            xB[i] = xB[i] - theta * alpha[i];
    } else {
        // A zero alpha (always +0) leaves xB[i] exactly as it is.
        const auto words = mAlphaPattern.rowWords(0);
        for (std::size_t w = 0; w < words.size(); ++w) {
            for (std::uint64_t bits = words[w]; bits != 0; bits &= bits - 1) {
                const auto i = w * 64 + static_cast<std::size_t>(std::countr_zero(bits));
                xB[i] = xB[i] - theta * alpha[i];
            }
        }
    }
    mXB[leavingRow] = theta;
    mObjective =
        static_cast<float>(static_cast<double>(mObjective) - static_cast<double>(mMinReduced) * theta);
}

void UnchangedClpSolve::driveOutArtificials()
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
            mBinv.update(i, mAlpha, mAlphaPattern.rowWords(0));
            break;
        }
    }
}

bool UnchangedClpSolve::GetVariableValue(int column, double& value) const
{
    for (int i = 1; i <= mRows; ++i) {
        if (mBasis[i] == column) {
            value = mXB[i];
            return true;
        }
    }
    return false;
}

double UnchangedClpSolve::GetObjectiveValue() const
{
    return mSense * static_cast<double>(mObjective);
}

} // namespace kilnova
