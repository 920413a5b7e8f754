#include "solver/SimplexCore.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace kilnova {

namespace {

constexpr double kPrimalTolerance = 1e-9; // relative to the bound
constexpr double kDualTolerance = 1e-9;   // costs are scaled to a largest magnitude of 1
constexpr double kPivotTolerance = 1e-9;
constexpr double kSingular = 1e-11;
constexpr int kRefactorEvery = 50;
constexpr int kDegenerateRun = 100; // steps of length zero before Bland's rule takes over
// A weight this large means the reference framework is far behind the basis: start afresh.
constexpr double kWeightReset = 1e6;

} // namespace

SimplexCore::SimplexCore(const Problem& problem, Pricing pricing)
    : mP(problem)
    , mPricing(pricing)
    , mM(problem.rows)
    , mN(problem.columns + problem.rows)
{
}

double SimplexCore::tolerance(double bound) const
{
    return kPrimalTolerance * (1.0 + (std::isfinite(bound) ? std::fabs(bound) : 0.0));
}

double SimplexCore::outside(int j, double v) const
{
    const double l = mP.lower[static_cast<std::size_t>(j)];
    const double u = mP.upper[static_cast<std::size_t>(j)];
    if (v < l - tolerance(l))
        return v - l;
    if (v > u + tolerance(u))
        return v - u;
    return 0.0;
}

bool SimplexCore::refactor()
{
    const auto m = static_cast<std::size_t>(mM);
    bool kept = true;
    for (int attempt = 0; attempt <= mM; ++attempt) {
        // Gauss-Jordan with partial pivoting on [B | I].
        std::vector<double> b(m * m, 0.0);
        for (std::size_t c = 0; c < m; ++c) {
            const int j = mHead[c];
            if (j >= mP.columns) {
                b[static_cast<std::size_t>(j - mP.columns) * m + c] = 1.0;
                continue;
            }
            for (int t = mP.start[static_cast<std::size_t>(j)]; t < mP.start[static_cast<std::size_t>(j) + 1];
                 ++t)
                b[static_cast<std::size_t>(mP.index[static_cast<std::size_t>(t)]) * m + c] =
                    mP.value[static_cast<std::size_t>(t)];
        }
        std::vector<double>& inv = mInverse;
        inv.assign(m * m, 0.0);
        for (std::size_t i = 0; i < m; ++i)
            inv[i * m + i] = 1.0;
        std::vector<int> rowOf(m, -1); // the row each basis position was eliminated on
        std::vector<bool> used(m, false);
        int dependent = -1;
        for (std::size_t c = 0; c < m && dependent < 0; ++c) {
            std::size_t p = m;
            double best = kSingular;
            for (std::size_t i = 0; i < m; ++i) {
                if (!used[i] && std::fabs(b[i * m + c]) > best) {
                    best = std::fabs(b[i * m + c]);
                    p = i;
                }
            }
            if (p == m) {
                dependent = static_cast<int>(c);
                break;
            }
            used[p] = true;
            rowOf[c] = static_cast<int>(p);
            const double pivot = b[p * m + c];
            for (std::size_t k = 0; k < m; ++k) {
                b[p * m + k] /= pivot;
                inv[p * m + k] /= pivot;
            }
            for (std::size_t i = 0; i < m; ++i) {
                const double f = b[i * m + c];
                if (i == p || f == 0.0)
                    continue;
                for (std::size_t k = 0; k < m; ++k) {
                    b[i * m + k] -= f * b[p * m + k];
                    inv[i * m + k] -= f * inv[p * m + k];
                }
            }
        }
        if (dependent < 0) {
            // Row p of the reduced system belongs to basis position c: put the rows in basis order.
            std::vector<double> ordered(m * m);
            for (std::size_t c = 0; c < m; ++c)
                std::copy_n(inv.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(rowOf[c]) * m),
                            m, ordered.begin() + static_cast<std::ptrdiff_t>(c * m));
            inv.swap(ordered);
            return kept;
        }
        // Replace the dependent column by the slack of a row no pivot has covered.
        const int column = mHead[static_cast<std::size_t>(dependent)];
        std::size_t free = 0;
        while (free < m && (used[free] || mState[static_cast<std::size_t>(mP.columns) + free] == kBasic))
            ++free;
        if (free == m)
            free = 0;
        const int slack = mP.columns + static_cast<int>(free);
        mHead[static_cast<std::size_t>(dependent)] = slack;
        mState[static_cast<std::size_t>(slack)] = kBasic;
        const double l = mP.lower[static_cast<std::size_t>(column)];
        const double u = mP.upper[static_cast<std::size_t>(column)];
        const bool toLower = std::isfinite(l) &&
                             (!std::isfinite(u) || std::fabs(mX[static_cast<std::size_t>(column)] - l) <=
                                                       std::fabs(mX[static_cast<std::size_t>(column)] - u));
        mState[static_cast<std::size_t>(column)] = toLower ? kAtLower : kAtUpper;
        mX[static_cast<std::size_t>(column)] = toLower ? l : u;
        kept = false;
    }
    return kept;
}

void SimplexCore::computeBasics()
{
    const auto m = static_cast<std::size_t>(mM);
    std::vector<double> r(mP.rhs.begin(), mP.rhs.end());
    for (int j = 0; j < mN; ++j) {
        const auto u = static_cast<std::size_t>(j);
        if (mState[u] == kBasic || mX[u] == 0.0)
            continue;
        if (j >= mP.columns) {
            r[static_cast<std::size_t>(j - mP.columns)] -= mX[u];
            continue;
        }
        for (int t = mP.start[u]; t < mP.start[u + 1]; ++t)
            r[static_cast<std::size_t>(mP.index[static_cast<std::size_t>(t)])] -=
                mP.value[static_cast<std::size_t>(t)] * mX[u];
    }
    for (std::size_t i = 0; i < m; ++i) {
        double sum = 0.0;
        for (std::size_t k = 0; k < m; ++k)
            sum += mInverse[i * m + k] * r[k];
        mX[static_cast<std::size_t>(mHead[i])] = sum;
    }
}

void SimplexCore::computePrices(bool phase1)
{
    const auto m = static_cast<std::size_t>(mM);
    std::fill(mY.begin(), mY.end(), 0.0);
    for (std::size_t i = 0; i < m; ++i) {
        const int j = mHead[i];
        double c = 0.0;
        if (phase1) {
            const double o = outside(j, mX[static_cast<std::size_t>(j)]);
            c = o < 0.0 ? -1.0 : o > 0.0 ? 1.0 : 0.0;
        } else if (j < mP.columns) {
            c = mP.cost[static_cast<std::size_t>(j)];
        }
        if (c == 0.0)
            continue;
        for (std::size_t k = 0; k < m; ++k)
            mY[k] += c * mInverse[i * m + k];
    }
}

void SimplexCore::columnsTimesPrices()
{
    // A step that only moved a variable to its other bound leaves the prices as they were, and
    // with them every product.
    if (mProductsValid && mPricedY == mY)
        return;
    mPricedY = mY;
    mProductsValid = true;
    // Row by row, so that the columns' sums do not wait on one another; a zero price adds only
    // zeros (every coefficient is finite) and is passed over.
    std::fill(mColumnTimesY.begin(), mColumnTimesY.begin() + mP.columns, 0.0);
    for (int g = 0; g < mM; ++g) {
        const double y = mY[static_cast<std::size_t>(g)];
        if (y == 0.0)
            continue;
        const auto last = static_cast<std::size_t>(mRowStart[static_cast<std::size_t>(g) + 1]);
        for (auto t = static_cast<std::size_t>(mRowStart[static_cast<std::size_t>(g)]); t < last; ++t)
            mColumnTimesY[static_cast<std::size_t>(mRowColumn[t])] += y * mRowValue[t];
    }
    // A slack's column is the unit vector of its row.
    for (int g = 0; g < mM; ++g)
        mColumnTimesY[static_cast<std::size_t>(mP.columns + g)] = mY[static_cast<std::size_t>(g)];
}

void SimplexCore::computeReducedCosts(bool phase1)
{
    columnsTimesPrices();
    for (int j = 0; j < mN; ++j) {
        const auto u = static_cast<std::size_t>(j);
        const double c = !phase1 && j < mP.columns ? mP.cost[u] : 0.0;
        mReduced[u] = c - mColumnTimesY[u];
    }
}

void SimplexCore::computeAlpha(int j)
{
    const auto m = static_cast<std::size_t>(mM);
    std::fill(mAlpha.begin(), mAlpha.end(), 0.0);
    if (j >= mP.columns) {
        const auto k = static_cast<std::size_t>(j - mP.columns);
        for (std::size_t i = 0; i < m; ++i)
            mAlpha[i] = mInverse[i * m + k];
        return;
    }
    const auto u = static_cast<std::size_t>(j);
    for (int t = mP.start[u]; t < mP.start[u + 1]; ++t) {
        const auto k = static_cast<std::size_t>(mP.index[static_cast<std::size_t>(t)]);
        const double a = mP.value[static_cast<std::size_t>(t)];
        for (std::size_t i = 0; i < m; ++i)
            mAlpha[i] += mInverse[i * m + k] * a;
    }
}

int SimplexCore::price(int& direction)
{
    // Which way each variable may move, worked out without a branch per variable: the signs of
    // the reduced costs follow no pattern a branch predictor could learn.
    auto way = [&](int j) {
        const auto u = static_cast<std::size_t>(j);
        const double d = mReduced[u];
        const int free = int{mState[u] != kBasic} & int{mP.lower[u] != mP.upper[u]};
        const int up = free & int{d < -kDualTolerance} & int{mX[u] < mP.upper[u]};
        const int down = free & int{d > kDualTolerance} & int{mX[u] > mP.lower[u]};
        return std::pair<double, int>{std::fabs(d), up ? 1 : (down ? -1 : 0)};
    };
    if (mBland) {
        for (int j = 0; j < mN; ++j) {
            if (const auto [size, dir] = way(j); dir != 0) {
                direction = dir;
                return j;
            }
        }
        return -1;
    }
    // The largest |d| (or d² / weight) among the variables that may move, the first of equals; the
    // direction only for the one chosen.
    const bool devex = mPricing == Pricing::Devex;
    int entering = -1;
    double best = 0.0;
    for (int j = 0; j < mN; ++j) {
        const auto u = static_cast<std::size_t>(j);
        const double d = mReduced[u];
        const int free = int{mState[u] != kBasic} & int{mP.lower[u] != mP.upper[u]};
        const int moves = free & ((int{d < -kDualTolerance} & int{mX[u] < mP.upper[u]}) |
                                  (int{d > kDualTolerance} & int{mX[u] > mP.lower[u]}));
        const std::uint64_t keep = std::uint64_t{0} - static_cast<std::uint64_t>(moves);
        const double merit = devex ? d * d / mWeights[u] : std::fabs(d);
        const double score = std::bit_cast<double>(std::bit_cast<std::uint64_t>(merit) & keep);
        if (score > best) {
            best = score;
            entering = j;
        }
    }
    if (entering >= 0)
        direction = way(entering).second;
    return entering;
}

SimplexCore::Step SimplexCore::ratioTest(int entering, int direction, bool phase1)
{
    // Basic i moves at rate -direction * alpha[i] per unit step. Pass 1 finds the longest step that
    // keeps every basic within its bounds widened by the tolerance; pass 2 takes, among the rows
    // that block within it, the one with the largest |alpha|.
    std::vector<Limit>& limits = mLimits;
    std::vector<char>& blocks = mBlocks;
    std::fill(blocks.begin(), blocks.end(), 0);
    double thetaMax = kInfinity;
    for (int i = 0; i < mM; ++i) {
        const auto ui = static_cast<std::size_t>(i);
        const double a = mAlpha[ui];
        if (std::fabs(a) < kPivotTolerance)
            continue;
        const int j = mHead[ui];
        const auto uj = static_cast<std::size_t>(j);
        const double rate = -direction * a;
        const double v = mX[uj];
        const double l = mP.lower[uj];
        const double u = mP.upper[uj];
        const double o = phase1 ? outside(j, v) : 0.0;
        Limit limit;
        if (o < 0.0) {
            // Below its lower bound: it blocks when it reaches it, going up.
            if (rate <= 0.0)
                continue;
            limit.exact = limit.relaxed = (l - v) / rate;
        } else if (o > 0.0) {
            if (rate >= 0.0)
                continue;
            limit.exact = limit.relaxed = (v - u) / -rate;
            limit.toUpper = true;
        } else if (rate < 0.0) {
            if (!std::isfinite(l))
                continue;
            limit.exact = (v - l) / -rate;
            limit.relaxed = (v - l + tolerance(l)) / -rate;
        } else {
            if (!std::isfinite(u))
                continue;
            limit.exact = (u - v) / rate;
            limit.relaxed = (u - v + tolerance(u)) / rate;
            limit.toUpper = true;
        }
        limits[ui] = limit;
        blocks[ui] = 1;
        thetaMax = std::min(thetaMax, limit.relaxed);
    }
    Step step;
    const auto q = static_cast<std::size_t>(entering);
    const double range = mP.upper[q] - mP.lower[q];
    if (std::isfinite(range) && range <= thetaMax) {
        step.flip = true;
        step.theta = range;
        return step;
    }
    if (!std::isfinite(thetaMax)) {
        step.unbounded = true;
        return step;
    }
    double largest = 0.0;
    for (int i = 0; i < mM; ++i) {
        const auto ui = static_cast<std::size_t>(i);
        if (blocks[ui] == 0 || limits[ui].exact > thetaMax)
            continue;
        const double a = std::fabs(mAlpha[ui]);
        const bool better =
            mBland ? (step.row < 0 || mHead[ui] < mHead[static_cast<std::size_t>(step.row)]) : a > largest;
        if (better) {
            largest = a;
            step.row = i;
        }
    }
    step.theta = std::max(0.0, limits[static_cast<std::size_t>(step.row)].exact);
    step.toUpper = limits[static_cast<std::size_t>(step.row)].toUpper;
    return step;
}

void SimplexCore::pivot(int entering, int direction, const Step& step)
{
    const auto m = static_cast<std::size_t>(mM);
    const auto q = static_cast<std::size_t>(entering);
    const double move = direction * step.theta;
    for (std::size_t i = 0; i < m; ++i)
        mX[static_cast<std::size_t>(mHead[i])] -= move * mAlpha[i];
    mX[q] += move;
    if (step.flip) {
        mState[q] = direction > 0 ? kAtUpper : kAtLower;
        mX[q] = direction > 0 ? mP.upper[q] : mP.lower[q];
        return;
    }
    const auto r = static_cast<std::size_t>(step.row);
    const auto leaving = static_cast<std::size_t>(mHead[r]);
    // It leaves at the bound it was heading for.
    mState[leaving] = step.toUpper ? kAtUpper : kAtLower;
    mX[leaving] = step.toUpper ? mP.upper[leaving] : mP.lower[leaving];
    mHead[r] = entering;
    mState[q] = kBasic;
    // Product-form update of the explicit inverse.
    const double pivot = mAlpha[r];
    for (std::size_t k = 0; k < m; ++k)
        mInverse[r * m + k] /= pivot;
    for (std::size_t i = 0; i < m; ++i) {
        const double f = mAlpha[i];
        if (i == r || f == 0.0)
            continue;
        for (std::size_t k = 0; k < m; ++k)
            mInverse[i * m + k] -= f * mInverse[r * m + k];
    }
    if (mPricing == Pricing::Devex || mReducedValid)
        computePivotRow(r);
    if (mReducedValid)
        updateReducedCosts(entering, static_cast<int>(leaving), r, pivot);
    if (mPricing == Pricing::Devex)
        updateWeights(entering, static_cast<int>(leaving), r, pivot);
}

void SimplexCore::computePivotRow(std::size_t r)
{
    // Row r of the new inverse is the old one divided by the pivot, so its products with the
    // columns are the pivot row's entries relative to the pivot, which is what both updates need.
    const auto m = static_cast<std::size_t>(mM);
    const double* rho = &mInverse[r * m];
    std::fill(mPivotRow.begin(), mPivotRow.end(), 0.0);
    for (std::size_t g = 0; g < m; ++g) {
        const double y = rho[g];
        if (y == 0.0)
            continue;
        const auto last = static_cast<std::size_t>(mRowStart[g + 1]);
        for (auto t = static_cast<std::size_t>(mRowStart[g]); t < last; ++t)
            mPivotRow[static_cast<std::size_t>(mRowColumn[t])] += y * mRowValue[t];
    }
}

void SimplexCore::updateReducedCosts(int entering, int leaving, std::size_t r, double pivotElement)
{
    // d_j -= d_q * alpha_rj / alpha_rq: the prices move by d_q times row r of the new inverse,
    // which costs one pass over the variables instead of the prices and every column's product.
    const auto m = static_cast<std::size_t>(mM);
    const double* rho = &mInverse[r * m];
    const auto q = static_cast<std::size_t>(entering);
    const double dq = mReduced[q];
    const auto columns = static_cast<std::size_t>(mP.columns);
    for (std::size_t j = 0; j < columns; ++j)
        mReduced[j] -= dq * mPivotRow[j];
    for (std::size_t g = 0; g < m; ++g)
        mReduced[columns + g] -= dq * rho[g];
    // Basics' values are never read; these two are known exactly.
    mReduced[q] = 0.0;
    mReduced[static_cast<std::size_t>(leaving)] = -dq / pivotElement;
}

void SimplexCore::updateWeights(int entering, int leaving, std::size_t r, double pivotElement)
{
    const auto m = static_cast<std::size_t>(mM);
    const double* rho = &mInverse[r * m];
    const double wq = mWeights[static_cast<std::size_t>(entering)];
    double largest = 0.0;
    auto raise = [&](std::size_t u, double ratio) {
        if (mState[u] == kBasic)
            return;
        mWeights[u] = std::max(mWeights[u], ratio * ratio * wq);
        largest = std::max(largest, mWeights[u]);
    };
    for (std::size_t j = 0; j < static_cast<std::size_t>(mP.columns); ++j)
        raise(j, mPivotRow[j]);
    for (std::size_t g = 0; g < m; ++g)
        raise(static_cast<std::size_t>(mP.columns) + g, rho[g]);
    const auto out = static_cast<std::size_t>(leaving);
    mWeights[out] = std::max(wq / (pivotElement * pivotElement), 1.0);
    if (std::max(largest, mWeights[out]) > kWeightReset)
        std::fill(mWeights.begin(), mWeights.end(), 1.0);
}

SimplexCore::Result SimplexCore::run(int iterationLimit)
{
    const auto m = static_cast<std::size_t>(mM);
    mHead.resize(m);
    mState.assign(static_cast<std::size_t>(mN), kAtLower);
    mX.assign(static_cast<std::size_t>(mN), 0.0);
    mY.assign(m, 0.0);
    mAlpha.assign(m, 0.0);
    mLimits.assign(m, Limit{});
    mBlocks.assign(m, 0);
    mWeights.assign(static_cast<std::size_t>(mN), 1.0);
    mPivotRow.assign(static_cast<std::size_t>(mP.columns), 0.0);
    mReduced.assign(static_cast<std::size_t>(mN), 0.0);
    mReducedValid = false;
    mReducedCarried = false;
    mDrift = 0.0;
    // A counting sort of the column walk by row keeps each row's columns ascending.
    const auto columns = static_cast<std::size_t>(mP.columns);
    mRowStart.assign(m + 1, 0);
    for (const int g : mP.index)
        ++mRowStart[static_cast<std::size_t>(g) + 1];
    for (std::size_t g = 1; g <= m; ++g)
        mRowStart[g] += mRowStart[g - 1];
    mRowColumn.assign(mP.index.size(), 0);
    mRowValue.assign(mP.index.size(), 0.0);
    std::vector<int> next(mRowStart.begin(), mRowStart.end() - 1);
    for (std::size_t j = 0; j < columns; ++j) {
        for (auto t = static_cast<std::size_t>(mP.start[j]); t < static_cast<std::size_t>(mP.start[j + 1]);
             ++t) {
            const auto slot = static_cast<std::size_t>(next[static_cast<std::size_t>(mP.index[t])]++);
            mRowColumn[slot] = static_cast<int>(j);
            mRowValue[slot] = mP.value[t];
        }
    }
    mColumnTimesY.assign(static_cast<std::size_t>(mN), 0.0);
    mProductsValid = false;
    for (int j = 0; j < mP.columns; ++j) {
        const auto u = static_cast<std::size_t>(j);
        // Every column has a finite lower bound (x >= 0 at least).
        mX[u] = mP.lower[u];
    }
    for (std::size_t i = 0; i < m; ++i) {
        mHead[i] = mP.columns + static_cast<int>(i);
        mState[static_cast<std::size_t>(mHead[i])] = kBasic;
    }
    // A new inverse brings phase 2's reduced costs back to values computed from the prices; the
    // carried ones are compared with them where the basis stayed the same.
    bool fresh = false;
    auto rebuild = [&] {
        const bool kept = refactor();
        computeBasics();
        fresh = true;
        mReducedCarried = mReducedValid && kept;
        mReducedValid = false;
    };
    rebuild();
    int degenerate = 0;
    bool wasPhase1 = true;
    for (mIterations = 0; mIterations < iterationLimit; ++mIterations) {
        if (!fresh && mIterations % kRefactorEvery == 0)
            rebuild();
        bool phase1 = false;
        for (std::size_t i = 0; i < m && !phase1; ++i)
            phase1 = outside(mHead[i], mX[static_cast<std::size_t>(mHead[i])]) != 0.0;
        // The weights measured against phase 1's costs say little about the true ones.
        if (wasPhase1 && !phase1)
            std::fill(mWeights.begin(), mWeights.end(), 1.0);
        wasPhase1 = phase1;
        // Phase 1's costs change whenever a basic reaches its bounds, so its reduced costs are
        // computed afresh each time; phase 2's are carried across pivots.
        if (phase1) {
            mReducedValid = false;
            mReducedCarried = false;
            computePrices(true);
            computeReducedCosts(true);
        } else if (!mReducedValid) {
            if (mReducedCarried)
                mCarried = mReduced;
            computePrices(false);
            computeReducedCosts(false);
            if (mReducedCarried) {
                for (std::size_t u = 0; u < static_cast<std::size_t>(mN); ++u)
                    if (mState[u] != kBasic)
                        mDrift = std::max(mDrift, std::fabs(mCarried[u] - mReduced[u]));
            }
            mReducedValid = true;
            mReducedCarried = false;
        }
        int direction = 0;
        const int entering = price(direction);
        if (entering < 0) {
            // Decided on values computed afresh only.
            if (!fresh) {
                rebuild();
                continue;
            }
            return phase1 ? Result::Infeasible : Result::Optimal;
        }
        computeAlpha(entering);
        const Step step = ratioTest(entering, direction, phase1);
        if (step.unbounded) {
            if (!fresh) {
                rebuild();
                continue;
            }
            return Result::Unbounded;
        }
        pivot(entering, direction, step);
        fresh = false;
        degenerate = step.theta > 0.0 ? 0 : degenerate + 1;
        mBland = degenerate >= kDegenerateRun;
    }
    return Result::IterationLimit;
}

} // namespace kilnova
