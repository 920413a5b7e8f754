#pragma once

#include "solver/BasisInverse.h"
#include "solver/CheckedArray.h"
#include "solver/CoefficientMatrix.h"
#include "solver/PricingTree.h"
#include "solver/SparseVector.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace kilnova {

/// The product's own linear-programming solver: a two-phase revised simplex with an explicit basis
/// inverse updated in product form, most-negative-reduced-cost pricing and the minimum-ratio test,
/// with fixed tolerances. Rows 1..m and structural columns 1..n are numbered from 1.
///
/// Use: construct, Initialize, fill with the setters in any order, optionally DumpToFile, Solve once,
/// then read GetVariableValue per column and GetObjectiveValue. One object serves one problem.
/// An access outside a working array raises std::invalid_argument.
///
/// Storage and work follow the problem's structure, and no rounding differs from the method
/// computed over every index (tests/solver/ReferenceSimplex). Why none can:
/// - Only the coefficients that are not zero are held (a source row holds one), and the inverse of
///   a large basis keeps only its non-zero entries (BasisInverse; a small one is held whole, where
///   that is faster). Every sum still adds its terms in the index order of the full loop; the terms
///   left out are products with a zero factor. While every value
///   is finite such a product is a zero, and adding a zero to a sum that started at +0 changes
///   nothing (such a sum is never -0, and x + 0 = x otherwise). No product, quotient or rounding
///   to single precision is computed differently, only fewer additions of zero are made.
/// - Once a value is not finite, 0 x inf is NaN and the terms left out would count: from then on
///   the inverse is held whole and every product runs over every index, implicit zeros included.
/// - A reduced cost is recomputed only when a price it meets changed (an unchanged sum of the same
///   terms is the same number), and Dantzig's choice, whose walk rounds its running minimum to
///   single precision, is found by PricingTree from a characterisation of where that walk ends.
/// - A column's basic row is kept as it changes instead of searched for; the basis holds a column
///   once, so the search would find the same row.
/// - Working arrays have the sizes the method reads; the one access the original over-sized arrays
///   made on purpose, the phase-1 sum past row m, still fails the same way on the same problems.
class ClpSolve final {
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

    ClpSolve();
    ClpSolve(const ClpSolve&) = delete;
    ClpSolve& operator=(const ClpSolve&) = delete;

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
    /// be opened. A dump that would pass `limit` bytes stops after its last whole line within it,
    /// with a note saying so (ProgrammeDump).
    void DumpToFile(const std::string& fileName) const;
    void DumpToFile(const std::string& fileName, std::size_t limit) const;

    /// Holding the inverse whole (after a value that is not finite) is refused past this size:
    /// Solve then raises std::invalid_argument.
    static constexpr std::size_t kWholeInverseLimit = std::size_t{2} << 30;

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
    /// Non-zero entries of the basis inverse at the end of the last Solve.
    std::size_t inverseEntries() const { return mBinv.entryCount(); }
    /// The smallest |alpha| the ratio test pivoted on in the last Solve (1e30 when none). The test
    /// has no pivot tolerance, so a value at rounding-noise level means the result is not reliable.
    double smallestPivot() const { return mSmallestPivot; }
    /// A ratio test without a positive alpha still takes a row by the method's comparisons, and
    /// steps 1e30 along what is a ray: what follows is no optimum (values near 1e30, or pivots
    /// that circle until the limit). With stopOnRay Solve returns kUnbounded there instead; off,
    /// the method goes on as it always has.
    bool stopOnRay() const { return mStopOnRay; }
    void setStopOnRay(bool on) { mStopOnRay = on; }

private:
    // Column states.
    static constexpr int kBasic = 1;
    static constexpr int kNonBasic = 2;
    static constexpr int kArtificialOut = 3; // an artificial that left the basis; never priced again

    static bool isFinite(double v) { return std::fabs(v) <= std::numeric_limits<double>::max(); }

    void resetCounts();
    void releaseArrays();
    void sizeWorkingArrays();

    void normaliseSigns();
    void reorderRows();
    void setInitialBasis();
    void computeCosts();
    void gatherBasicCost(int row);
    void computePrices();
    /// The reduced cost of a non-basic column from the current prices (`dual`, rows 0..m).
    double reducedCost(int column, std::span<const double> dual) const;
    /// The reduced costs of the structural columns among `columns`, while the inverse is not plain.
    void structuralReducedCosts(std::span<const int> columns, std::span<const double> dual);
    /// The reduced cost of a slack, surplus or artificial column (j > n), whose cost is `cost`.
    double logicalReducedCost(int j, std::span<const double> dual, double cost) const
    {
        // A surplus column stands for its at-least row, a slack for its at-most row.
        if (j <= mLastNonBasicStart)
            return -dual[static_cast<std::size_t>(mCountAtMost + mCountEqual + (j - mColumns))] - cost;
        if (j <= mLastRealColumn)
            return dual[static_cast<std::size_t>(j - mColumns - mCountAtLeast)] - cost;
        return 0.0;
    }
    /// Every reduced cost again, then the choice.
    void priceColumns();
    void priceAll();
    void repriceAfterPivot(int row, std::span<const int> changedPositions, int leaving);
    void markStale(int column);
    void choose();
    void computeAlpha(int column);
    int ratioTest();
    void changeBasis(int row, int column, int position);
    void updateValues(int leavingRow);
    void driveOutArtificials();
    /// The first position of nonBasic holding a structural column whose product with row `row` of
    /// the inverse exceeds the pivot tolerance in magnitude, or 0.
    int firstPivotFor(int row);

    bool isArtificial(int column) const { return column > mLastRealColumn; }
    /// The slack or surplus column of a row, or 0 for an equality.
    int logicalColumnOf(int row) const;

    // Problem size and the caller's promises.
    int mRows = 0;
    int mColumns = 0;
    int mSense = 1;
    int mCountAtMost = 0;
    int mCountEqual = 0;
    int mCountAtLeast = 0;
    int mCapacityRows = 30;
    int mCapacityColumns = 2;

    // Problem statement, 1-based; A holds only the entries that are not zero.
    CoefficientMatrix mA;
    CheckedArray<double> mRhs;
    CheckedArray<int> mKind;
    CheckedArray<double> mObjectiveCoefficient;

    // Working state, sized by Solve to the rows and the tableau's columns.
    int mLastNonBasicStart = 0;
    int mLastRealColumn = 0;
    int mTotalColumns = 0;
    bool mBasisSet = false;
    CheckedArray<int> mBasis;
    CheckedArray<int> mBasicRow; // per column, the row it is basic in, or 0
    CheckedArray<int> mNonBasic;
    CheckedArray<int> mPosition; // per column, its position in mNonBasic, or 0
    CheckedArray<int> mColumnState;
    BasisInverse mBinv;
    CheckedArray<double> mXB;
    CheckedArray<double> mCost;
    CheckedArray<double> mBasicCost; // cost[basis[i]], the weights of the prices
    CheckedArray<double> mDual;
    CheckedArray<double> mFreshDual; // prices recomputed after a pivot, before they replace mDual
    std::vector<int> mChangedRows;   // the rows whose price the last pivot changed
    std::vector<int> mNonFiniteRows; // rows whose price is not finite (plain pricing only)
    CheckedArray<double> mReduced;
    CheckedArray<double> mColumnSum; // per structural column, its prices times its coefficients
    CheckedArray<int> mStaleMark;    // the iteration a column was last marked for repricing
    std::vector<int> mStale;
    PricingTree mPricing;
    SparseVector mAlpha;
    SparseVector mRowProduct; // a row of the inverse times every structural column
    std::vector<std::pair<int, double>> mInverseRow;

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
    bool mStopOnRay = false;
};

} // namespace kilnova
