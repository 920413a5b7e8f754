// Setting up a programme and dumping it: what the caller does before Solve(). Kept apart from the
// pivoting so that each file reads as one job.
#include "solver/ClpSolve.h"

#include "solver/ProgrammeDump.h"

namespace kilnova {

ClpSolve::ClpSolve()
{
    mBinv.setWholeLimit(kWholeInverseLimit);
}

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
    mA.reset(0, 0);
    mBinv.clear();
    for (CheckedArray<double>* a : {&mRhs, &mXB, &mDual, &mFreshDual, &mBasicCost, &mObjectiveCoefficient,
                                    &mCost, &mReduced, &mColumnSum})
        a->clear();
    for (CheckedArray<int>* a :
         {&mKind, &mBasis, &mBasicRow, &mNonBasic, &mPosition, &mColumnState, &mStaleMark})
        a->clear();
    mAlpha.reset(0);
    mRowProduct.reset(0);
    mPricing.reset(0);
    mBasisSet = false;
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
    releaseArrays();
    mA.reset(mRows, mColumns);
    mRhs.reset(mRows + 1);
    mKind.reset(mRows + 1);
    mObjectiveCoefficient.reset(mColumns + 1);
    // Read before Solve, the basis is all zeros and xB too.
    mBasis.reset(mRows + 1);
    mXB.reset(mRows + 1);
    return true;
}

bool ClpSolve::SetCoefficient(int row, int column, double value)
{
    if (row < 1 || row > mRows || column < 1 || column > mColumns)
        return false;
    mA.set(row, column, value);
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
    DumpToFile(fileName, ProgrammeDump::kLimit);
}

void ClpSolve::DumpToFile(const std::string& fileName, std::size_t limit) const
{
    ProgrammeDump::write(fileName, mA, mRhs.range(0, mRows), mKind.range(0, mRows),
                         mObjectiveCoefficient.range(0, mColumns), limit);
}

} // namespace kilnova
