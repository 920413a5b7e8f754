#pragma once

#include "solver/CheckedArray.h"
#include "solver/CoefficientMatrix.h"
#include "solver/SimplexCore.h"

#include <vector>

namespace kilnova {

/// The second method, used when ClpSolve ends without an optimum: a bounded-variable primal
/// simplex in double precision.
///
/// It takes the same calls as ClpSolve (rows 1..m, columns 1..n, every column x_j >= 0, rows of
/// kinds at most / equal / at least) and solves the same programme by other means:
/// - A row with one coefficient becomes a bound on its column, so a blend's two rows per source
///   are bounds and only the element, target and tonnage rows are left: a few dozen rows however
///   many sources there are, with a dense basis inverse of that size.
/// - Rows and columns are scaled by powers of two (exact) towards unit magnitudes.
/// - Phase 1 minimises the sum of infeasibilities; phase 2 carries its reduced costs across pivots
///   by the pivot row, computing them afresh with each new inverse and before an optimum is
///   declared; pricing is Devex's; the ratio test is Harris' two-pass test, which among the
///   nearly blocking rows pivots on the largest element, and an entering column may simply move
///   to its other bound. Degenerate runs switch to Bland's rule until progress resumes.
/// - An answer is given only after it has been checked against the programme as the caller gave
///   it: every row and bound, to a relative tolerance of 1e-7.
class BoundedSimplex final {
public:
    enum class Status { NotSolved, Optimal, Infeasible, Unbounded, Failed };

    BoundedSimplex();
    ~BoundedSimplex();
    BoundedSimplex(const BoundedSimplex&) = delete;
    BoundedSimplex& operator=(const BoundedSimplex&) = delete;

    /// As ClpSolve::Initialize: false, and an empty problem, unless the row counts add up.
    bool Initialize(int rows, int columns, int sense, int countAtLeast, int countEqual, int countAtMost);
    bool SetCoefficient(int row, int column, double value);
    bool SetConstraint(int row, double rhs, int kind);
    bool SetObjectiveCoefficient(int column, double value);

    /// Devex unless told otherwise; the plain rule stays for comparison.
    void setPricing(SimplexCore::Pricing pricing) { mPricing = pricing; }
    Status Solve();

    /// The value of a column (1-based) in the answer, basic or not; 0 before an optimum.
    double value(int column) const;
    /// The caller's objective c.x at the answer.
    double objective() const { return mObjective; }
    int iterations() const { return mIterations; }
    /// The largest violation of a row or bound found by the final check, relative to the row's
    /// magnitude (see Solve).
    double largestViolation() const { return mLargestViolation; }
    /// How far the reduced costs carried across pivots drifted from those computed afresh, on
    /// the scaled costs (largest magnitude 1); see SimplexCore::reducedCostDrift.
    double reducedCostDrift() const { return mReducedCostDrift; }

    /// Relative tolerance of the final check.
    static constexpr double kCheckTolerance = 1e-7;

private:
    /// Turns rows with one coefficient into bounds and keeps the others; false when a row with
    /// no coefficient, or a pair of bounds, cannot be met.
    bool presolve(std::vector<int>& generalRows, std::vector<double>& lower, std::vector<double>& upper);
    /// The largest relative violation of the caller's rows and of x >= 0 by `x` (1-based).
    double violation(const std::vector<double>& x) const;

    int mRows = 0;
    int mColumns = 0;
    int mSense = 1;
    SimplexCore::Pricing mPricing = SimplexCore::Pricing::Devex;
    CoefficientMatrix mA;
    CheckedArray<double> mRhs;
    CheckedArray<int> mKind;
    CheckedArray<double> mCost;

    std::vector<double> mX; // the answer, 1-based
    double mObjective = 0.0;
    int mIterations = 0;
    double mLargestViolation = 0.0;
    double mReducedCostDrift = 0.0;
};

} // namespace kilnova
