#pragma once

#include "UnchangedBasisInverse.h"
#include "solver/CheckedArray.h"
#include "solver/CheckedMatrix.h"
#include "solver/SparsityPattern.h"

#include <span>
#include <string>

namespace kilnova {

/// The simplex solver as it stood before its storage followed the problem's structure: dense
/// matrices at twice the capacities, the inverse whole, with patterns of bits to skip zero terms.
/// It is the unchanged method that large programmes are compared with, where the plain loops of
/// ReferenceSimplex would take hours; the reference tests hold it to those loops bit for bit.
/// Rows 1..m and structural columns 1..n are numbered from 1.
///
/// Use: construct, Initialize, fill with the setters in any order, optionally DumpToFile, Solve once,
/// then read GetVariableValue per column and GetObjectiveValue. One object serves one problem.
/// An access outside a working array raises std::invalid_argument.
class UnchangedClpSolve final {
public:
    /// Results of Solve.
    static constexpr int kRowsInconsistent = 0; ///< stored row kinds do not match the counts
    static constexpr int kOptimal = 1;
    static constexpr int kUnbounded = 2;  ///< the ratio test found no leaving row
    static constexpr int kInfeasible = 3; ///< phase 1 ended with artificials above 0.03 in total
    /// The pivot limit was reached: the problem cycles. Callers report it as
    /// "Error, impossible to derive an optimal solution out of this system".
    static constexpr int kPivotLimit = 4;

    /// Solve gives up with kPivotLimit after this many pivots. The method has no anti-cycling rule
    /// and blends do cycle: of 45 000 generated blend programmes (up to 200 sources) about 2.5 in
    /// 1000, all under 100 rows, were still cycling after 2 000 000 to 5 000 000 pivots. Most runs
    /// end within two pivots per row and column, but a degenerate one can circle for long before
    /// rounding lets it out: the longest that ended by itself took 1 600 000 pivots, so the bound
    /// sits three times above it. A pivot costs about a microsecond at 60 rows and 6 at 420 rows,
    /// so a cycling blend is reported after a few seconds instead of never.
    static constexpr int kDefaultPivotLimit = 5'000'000;

    /// Row kinds for SetConstraint.
    static constexpr int kAtMost = 1;
    static constexpr int kEqual = 0;
    static constexpr int kAtLeast = -1;

    UnchangedClpSolve();
    UnchangedClpSolve(const UnchangedClpSolve&) = delete;
    UnchangedClpSolve& operator=(const UnchangedClpSolve&) = delete;

    /// Sizes the problem. Negative counts count as 0, a sense other than -1 (minimise) or +1
    /// (maximise) as +1. False, with every count reset to 0, unless the three row counts add up to
    /// `rows`.
    bool Initialize(int rows, int columns, int sense, int countAtLeast, int countEqual, int countAtMost);
    /// Stores A[row][column]; false when either index is outside the problem.
    bool SetCoefficient(int row, int column, double value);
    /// Stores the right-hand side and kind (kAtMost, kEqual, kAtLeast) of a row; false when the row
    /// or the kind is out of range.
    bool SetConstraint(int row, double rhs, int kind);
    /// Stores c[column]; false when the column is outside the problem.
    bool SetObjectiveCoefficient(int column, double value);
    /// Writes the rows, right-hand sides, kinds and objective as text; nothing if the file cannot
    /// be opened.
    void DumpToFile(const std::string& fileName) const;

    /// Runs the method and returns one of the result codes. It normalises and reorders the stored
    /// rows in place, so a second call works on the transformed problem.
    int Solve();

    /// The value of a structural column if it is basic (true); false, leaving `value` untouched,
    /// when the column is non-basic (its value is then 0).
    bool GetVariableValue(int column, double& value) const;
    /// The caller's own objective c.x (carries single-precision rounding).
    double GetObjectiveValue() const;

    /// Pivots made by the last Solve, plus one.
    int iterations() const { return mIterations; }
    /// The number of pivots after which Solve gives up with kPivotLimit: kDefaultPivotLimit unless
    /// lowered by a caller whose problems are known to end far sooner.
    int pivotLimit() const { return mPivotLimit; }
    void setPivotLimit(int pivots) { mPivotLimit = pivots; }
    /// The smallest |alpha| the ratio test pivoted on in the last Solve (1e30 when none). The test
    /// has no pivot tolerance, so a value at rounding-noise level means the result is not reliable.
    double smallestPivot() const { return mSmallestPivot; }

private:
    void resetCounts();
    void releaseArrays();
    double& a(int row, int column) { return mA(column, row); }
    double a(int row, int column) const { return mA(column, row); }

    void normaliseSigns();
    void reorderRows();
    void setInitialBasis();
    void computeCosts();
    void gatherBasicCost(int row);
    void computePrices();
    void priceColumns(int freshColumn, bool all);
    void priceAll();
    void repriceAfterPivot(int row, std::span<const int> changedPositions, int leaving);
    double binvRowTimesColumn(int row, int column) const;
    void computeAlpha(int column);
    int ratioTest();
    void changeBasis(int row, int column, int position);
    void updateValues(int leavingRow);
    void driveOutArtificials();

    bool isArtificial(int column) const { return column > mLastRealColumn; }

    // Problem size and the caller's promises.
    int mRows = 0;
    int mColumns = 0;
    int mSense = 1;
    int mCountAtMost = 0;
    int mCountEqual = 0;
    int mCountAtLeast = 0;
    int mCapacityRows = 30;
    int mCapacityColumns = 2;

    // Problem statement, 1-based. A is kept by columns (mA(j, i) = A[i][j]): the method reads it
    // column by column.
    CheckedMatrix mA;
    SparsityPattern mAPattern; // per column, the rows that may be non-zero
    CheckedArray<int> mAStart; // per column, where its non-zero rows start in mARows
    CheckedArray<int> mARows;  // the non-zero rows of each column in turn, in row order
    CheckedArray<double> mRhs;
    CheckedArray<int> mKind;
    CheckedArray<double> mObjectiveCoefficient;

    // Working state.
    int mLastNonBasicStart = 0;
    int mLastRealColumn = 0;
    int mTotalColumns = 0;
    CheckedArray<int> mBasis;
    CheckedArray<int> mNonBasic;
    CheckedArray<int> mColumnState;
    UnchangedBasisInverse mBinv;
    CheckedArray<double> mXB;
    CheckedArray<double> mCost;
    CheckedArray<double> mBasicCost;   // cost[basis[i]], the weights of the prices
    SparsityPattern mBasicCostPattern; // the rows whose weight is non-zero
    CheckedArray<double> mDual;
    CheckedArray<double> mFreshDual; // prices recomputed after a pivot, before they replace mDual
    SparsityPattern mDualChanged;    // the rows whose price the last pivot changed
    CheckedArray<double> mReduced;
    CheckedArray<double> mAlpha;
    SparsityPattern mAlphaPattern; // the rows whose alpha may be non-zero

    // Deliberately single precision: the step length and the objective carry float rounding.
    float mMinReduced = 0.0f;
    float mObjective = 0.0f;
    float mTheta = 0.0f;
    const float mPivotTolerance = 0.0001f;
    const float mOptimalityTolerance = 0.000001f;

    int mPhase = 1;
    int mIterations = 0;
    int mPivotLimit = kDefaultPivotLimit;
    int mEntering = 0;
    int mEnteringPosition = 0;
    int mLeavingRow = 0;
    double mSmallestPivot = 1e30;
};

} // namespace kilnova
