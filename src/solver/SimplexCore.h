#pragma once

#include <limits>
#include <vector>

namespace kilnova {

/// The iterations of the second method on a scaled programme in computational form:
///   minimise cost . z  subject to  A z + s = rhs,  lower <= (z, s) <= upper,
/// one slack s_i per row (its bounds give the row's kind). A primal simplex with a dense explicit
/// inverse of the basis, refactorised regularly; phase 1 minimises the sum of infeasibilities.
class SimplexCore final {
public:
    static constexpr double kInfinity = std::numeric_limits<double>::infinity();

    struct Problem {
        int rows = 0;
        int columns = 0;
        /// A by columns: column j's entries are index/value[start[j] .. start[j + 1] - 1].
        std::vector<int> start;
        std::vector<int> index;
        std::vector<double> value;
        std::vector<double> rhs;   ///< per row
        std::vector<double> lower; ///< per column, then per row for its slack
        std::vector<double> upper;
        std::vector<double> cost; ///< per column; slacks cost nothing
    };
    enum class Result { Optimal, Infeasible, Unbounded, IterationLimit };
    /// How the entering variable is chosen: the largest reduced cost, or the largest relative to
    /// Devex reference weights (an estimate of how far a unit step moves the basics), which takes
    /// fewer iterations on blends of many sources.
    enum class Pricing { Largest, Devex };

    explicit SimplexCore(const Problem& problem, Pricing pricing = Pricing::Devex);

    Result run(int iterationLimit);
    /// Every variable's value: the columns, then the slacks.
    const std::vector<double>& values() const { return mX; }
    int iterations() const { return mIterations; }
    /// The largest gap seen between a reduced cost carried from pivot to pivot and the same one
    /// computed afresh from the prices (each time the basis is refactorised and before optimality
    /// is declared): how far the update drifts.
    double reducedCostDrift() const { return mDrift; }

private:
    enum State : unsigned char { kBasic, kAtLower, kAtUpper };
    /// How far a basic variable may go before it meets a bound, exactly and within the tolerance.
    struct Limit {
        double exact = 0.0;
        double relaxed = 0.0;
        bool toUpper = false;
    };
    struct Step {
        bool unbounded = false;
        bool flip = false;    // the entering variable only moves to its other bound
        int row = -1;         // the leaving row
        bool toUpper = false; // the bound the leaving variable stops at
        double theta = 0.0;
    };

    bool isFixed(int j) const { return mP.lower[j] == mP.upper[j]; }
    double tolerance(double bound) const;
    /// How far a value lies outside its variable's bounds: below (< 0), above (> 0) or 0.
    double outside(int j, double v) const;
    /// The inverse of the basis, replacing by slacks the columns that make it singular; false when
    /// it had to.
    bool refactor();
    void computeBasics();
    void computePrices(bool phase1);
    /// Every column's product with the prices, into mColumnTimesY.
    void columnsTimesPrices();
    /// Every reduced cost from the prices, into mReduced.
    void computeReducedCosts(bool phase1);
    /// Row r of the inverse (already divided by the pivot) times every structural column, into
    /// mPivotRow: the pivot row relative to the pivot.
    void computePivotRow(std::size_t r);
    /// Carries phase 2's reduced costs across the basis change on row r.
    void updateReducedCosts(int entering, int leaving, std::size_t r, double pivotElement);
    void computeAlpha(int j);
    /// The entering variable by mReduced and its direction (+1 up, -1 down), or -1.
    int price(int& direction);
    Step ratioTest(int entering, int direction, bool phase1);
    void pivot(int entering, int direction, const Step& step);
    /// After a basis change on row r, with mPivotRow computed: raises each nonbasic weight by its
    /// entry in the new pivot row and gives the leaving variable its weight.
    void updateWeights(int entering, int leaving, std::size_t r, double pivotElement);

    const Problem& mP;
    Pricing mPricing;
    int mM = 0;
    int mN = 0; // columns and slacks
    std::vector<int> mHead;
    std::vector<State> mState;
    std::vector<double> mX;
    std::vector<double> mInverse; // row-major m x m
    std::vector<double> mY;
    std::vector<double> mAlpha;
    // A by rows (each row's columns ascending), for pricing every column in one pass.
    std::vector<int> mRowStart;
    std::vector<int> mRowColumn;
    std::vector<double> mRowValue;
    std::vector<double> mColumnTimesY;
    std::vector<double> mPricedY; // the prices mColumnTimesY was worked out from
    bool mProductsValid = false;
    std::vector<Limit> mLimits; // the ratio test's, per row
    std::vector<char> mBlocks;
    std::vector<double> mWeights;  // Devex reference weights, per variable
    std::vector<double> mPivotRow; // per structural column, for the weights and the reduced costs
    std::vector<double> mReduced;  // per variable; basics' are not used
    std::vector<double> mCarried;  // the carried ones, kept to measure the drift
    // mReduced holds phase 2's reduced costs, carried from pivot to pivot since they were computed.
    bool mReducedCarried = false;
    bool mReducedValid = false;
    double mDrift = 0.0;
    int mIterations = 0;
    bool mBland = false;
};

} // namespace kilnova
