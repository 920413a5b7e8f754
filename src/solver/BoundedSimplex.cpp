#include "solver/BoundedSimplex.h"

#include "solver/SimplexCore.h"

#include <algorithm>
#include <cmath>

namespace kilnova {

namespace {

constexpr double kInfinity = SimplexCore::kInfinity;
constexpr int kScalingPasses = 4;

bool isFinite(double v)
{
    return std::isfinite(v);
}

/// The power of two nearest to 1 / sqrt(smallest x largest): multiplying by it is exact.
double balancing(double smallest, double largest)
{
    if (!(largest > 0.0))
        return 1.0;
    return std::exp2(std::round(-0.5 * (std::log2(smallest) + std::log2(largest))));
}

double relativeGap(double value, double bound)
{
    return 1e-9 * (1.0 + std::fabs(bound)) - std::fabs(value - bound);
}

} // namespace

BoundedSimplex::BoundedSimplex() = default;
BoundedSimplex::~BoundedSimplex() = default;

bool BoundedSimplex::Initialize(int rows, int columns, int sense, int countAtLeast, int countEqual,
                                int countAtMost)
{
    mRows = std::max(rows, 0);
    mColumns = std::max(columns, 0);
    mSense = sense == -1 ? -1 : 1;
    if (std::max(countAtLeast, 0) + std::max(countEqual, 0) + std::max(countAtMost, 0) != mRows) {
        mRows = 0;
        mColumns = 0;
    }
    mA.reset(mRows, mColumns);
    mRhs.reset(mRows + 1);
    mKind.reset(mRows + 1);
    mCost.reset(mColumns + 1);
    mX.assign(static_cast<std::size_t>(mColumns) + 1, 0.0);
    return mRows == std::max(rows, 0) && mColumns == std::max(columns, 0);
}

bool BoundedSimplex::SetCoefficient(int row, int column, double value)
{
    if (row < 1 || row > mRows || column < 1 || column > mColumns)
        return false;
    mA.set(row, column, value);
    return true;
}

bool BoundedSimplex::SetConstraint(int row, double rhs, int kind)
{
    if (row < 1 || row > mRows || kind < -1 || kind > 1)
        return false;
    mRhs[row] = rhs;
    mKind[row] = kind;
    return true;
}

bool BoundedSimplex::SetObjectiveCoefficient(int column, double value)
{
    if (column < 1 || column > mColumns)
        return false;
    mCost[column] = value;
    return true;
}

double BoundedSimplex::value(int column) const
{
    return column >= 1 && column <= mColumns ? mX[static_cast<std::size_t>(column)] : 0.0;
}

bool BoundedSimplex::presolve(std::vector<int>& generalRows, std::vector<double>& lower,
                              std::vector<double>& upper)
{
    lower.assign(static_cast<std::size_t>(mColumns) + 1, 0.0);
    upper.assign(static_cast<std::size_t>(mColumns) + 1, kInfinity);
    for (int i = 1; i <= mRows; ++i) {
        const auto columns = mA.rowColumns(i);
        const auto values = mA.rowValues(i);
        const double b = mRhs[i];
        const int kind = mKind[i];
        if (columns.size() >= 2) {
            generalRows.push_back(i);
            continue;
        }
        if (columns.empty()) {
            // 0 (kind) b.
            const bool met = kind == 1    ? b >= 0.0 || relativeGap(0.0, b) >= 0.0
                             : kind == -1 ? b <= 0.0 || relativeGap(0.0, b) >= 0.0
                                          : relativeGap(0.0, b) >= 0.0;
            if (!met)
                return false;
            continue;
        }
        const auto j = static_cast<std::size_t>(columns[0]);
        const double a = values[0];
        const double bound = b / a;
        const bool raisesLower = (kind == -1) == (a > 0.0);
        if (kind == 0 || raisesLower)
            lower[j] = std::max(lower[j], bound);
        if (kind == 0 || !raisesLower)
            upper[j] = std::min(upper[j], bound);
    }
    for (int j = 1; j <= mColumns; ++j) {
        const auto u = static_cast<std::size_t>(j);
        if (lower[u] > upper[u]) {
            if (relativeGap(lower[u], upper[u]) < 0.0)
                return false;
            upper[u] = lower[u];
        }
    }
    return true;
}

double BoundedSimplex::violation(const std::vector<double>& x) const
{
    double worst = 0.0;
    for (int i = 1; i <= mRows; ++i) {
        const auto columns = mA.rowColumns(i);
        const auto values = mA.rowValues(i);
        double activity = 0.0;
        double magnitude = 1.0 + std::fabs(mRhs[i]);
        for (std::size_t t = 0; t < columns.size(); ++t) {
            const double term = values[t] * x[static_cast<std::size_t>(columns[t])];
            activity += term;
            magnitude += std::fabs(term);
        }
        const double over = mKind[i] == 1    ? activity - mRhs[i]
                            : mKind[i] == -1 ? mRhs[i] - activity
                                             : std::fabs(activity - mRhs[i]);
        worst = std::max(worst, over / magnitude);
    }
    for (int j = 1; j <= mColumns; ++j)
        worst = std::max(worst,
                         -x[static_cast<std::size_t>(j)] / (1.0 + std::fabs(x[static_cast<std::size_t>(j)])));
    return worst;
}

BoundedSimplex::Status BoundedSimplex::Solve()
{
    mIterations = 0;
    mObjective = 0.0;
    mLargestViolation = 0.0;
    mReducedCostDrift = 0.0;
    std::fill(mX.begin(), mX.end(), 0.0);
    bool finite = mA.allFinite();
    for (int i = 1; i <= mRows; ++i)
        finite = finite && isFinite(mRhs[i]);
    for (int j = 1; j <= mColumns; ++j)
        finite = finite && isFinite(mCost[j]);
    if (!finite)
        return Status::Failed;

    mA.compress();
    std::vector<int> general;
    std::vector<double> lower, upper;
    if (!presolve(general, lower, upper))
        return Status::Infeasible;

    // Scaling of the rows that remain and of the columns, by powers of two.
    const int m = static_cast<int>(general.size());
    const int n = mColumns;
    std::vector<int> rowOf(static_cast<std::size_t>(mRows) + 1, -1);
    for (int g = 0; g < m; ++g)
        rowOf[static_cast<std::size_t>(general[static_cast<std::size_t>(g)])] = g;
    std::vector<double> rowScale(static_cast<std::size_t>(m), 1.0);
    std::vector<double> columnScale(static_cast<std::size_t>(n) + 1, 1.0);
    auto forEntries = [&](int j, auto&& f) {
        const auto rows = mA.columnRows(j);
        const auto values = mA.columnValues(j);
        for (std::size_t t = 0; t < rows.size(); ++t) {
            const int g = rowOf[static_cast<std::size_t>(rows[t])];
            if (g >= 0)
                f(g, values[t]);
        }
    };
    for (int pass = 0; pass < kScalingPasses; ++pass) {
        std::vector<double> smallest(static_cast<std::size_t>(m), kInfinity),
            largest(static_cast<std::size_t>(m), 0.0);
        for (int j = 1; j <= n; ++j) {
            forEntries(j, [&](int g, double a) {
                const double v = std::fabs(a) * columnScale[static_cast<std::size_t>(j)];
                smallest[static_cast<std::size_t>(g)] = std::min(smallest[static_cast<std::size_t>(g)], v);
                largest[static_cast<std::size_t>(g)] = std::max(largest[static_cast<std::size_t>(g)], v);
            });
        }
        for (int g = 0; g < m; ++g)
            rowScale[static_cast<std::size_t>(g)] =
                balancing(smallest[static_cast<std::size_t>(g)], largest[static_cast<std::size_t>(g)]);
        for (int j = 1; j <= n; ++j) {
            double low = kInfinity, high = 0.0;
            forEntries(j, [&](int g, double a) {
                const double v = std::fabs(a) * rowScale[static_cast<std::size_t>(g)];
                low = std::min(low, v);
                high = std::max(high, v);
            });
            columnScale[static_cast<std::size_t>(j)] = balancing(low, high);
        }
    }
    double largestCost = 0.0;
    for (int j = 1; j <= n; ++j)
        largestCost = std::max(largestCost, std::fabs(mCost[j]) * columnScale[static_cast<std::size_t>(j)]);
    const double costScale = balancing(largestCost, largestCost);

    SimplexCore::Problem p;
    p.rows = m;
    p.columns = n;
    p.start.push_back(0);
    for (int j = 1; j <= n; ++j) {
        const double c = columnScale[static_cast<std::size_t>(j)];
        forEntries(j, [&](int g, double a) {
            p.index.push_back(g);
            p.value.push_back(a * rowScale[static_cast<std::size_t>(g)] * c);
        });
        p.start.push_back(static_cast<int>(p.index.size()));
        p.lower.push_back(lower[static_cast<std::size_t>(j)] / c);
        p.upper.push_back(upper[static_cast<std::size_t>(j)] / c);
        // The core minimises.
        p.cost.push_back(-mSense * mCost[j] * c * costScale);
    }
    for (int g = 0; g < m; ++g) {
        const int i = general[static_cast<std::size_t>(g)];
        p.rhs.push_back(mRhs[i] * rowScale[static_cast<std::size_t>(g)]);
        p.lower.push_back(mKind[i] == -1 ? -kInfinity : 0.0);
        p.upper.push_back(mKind[i] == 1 ? kInfinity : 0.0);
    }

    SimplexCore core(p, mPricing);
    const SimplexCore::Result result = core.run(50 * (n + m) + 10000);
    mIterations = core.iterations();
    mReducedCostDrift = core.reducedCostDrift();
    if (result == SimplexCore::Result::Infeasible)
        return Status::Infeasible;
    if (result == SimplexCore::Result::Unbounded)
        return Status::Unbounded;
    if (result != SimplexCore::Result::Optimal)
        return Status::Failed;

    std::vector<double> x(static_cast<std::size_t>(n) + 1, 0.0);
    for (int j = 1; j <= n; ++j) {
        const auto u = static_cast<std::size_t>(j);
        x[u] = std::clamp(core.values()[u - 1] * columnScale[u], lower[u], upper[u]);
    }
    mLargestViolation = violation(x);
    if (!(mLargestViolation <= kCheckTolerance))
        return Status::Failed;
    mX = x;
    for (int j = 1; j <= n; ++j)
        mObjective += mCost[j] * mX[static_cast<std::size_t>(j)];
    return Status::Optimal;
}

} // namespace kilnova
