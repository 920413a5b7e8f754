// ClpSolve against the method written out plainly (ReferenceSimplex): every generated problem must
// come out bit for bit the same, so no shortcut taken for speed changes a pivot, a rounding or a tie.
// BasisInverse, whose products skip zero terms, against the same products taken over every index.

#include "BlendCase.h"
#include "LpProblem.h"
#include "ProblemGenerator.h"
#include "ReferenceSimplex.h"

#include "UnchangedClpSolve.h"

#include "solver/BasisInverse.h"
#include "solver/ClpSolve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace kilnova {
namespace {

// Bit patterns, so that -0 differs from +0 and NaN equals NaN (of any sign or payload: which NaN
// an addition passes on depends on the order the compiler gives its operands).
std::uint64_t bits(double v)
{
    return std::isnan(v) ? 0x7ff8000000000000u : std::bit_cast<std::uint64_t>(v);
}

struct Fingerprint {
    int code = -1;
    int iterations = 0;
    std::uint64_t objective = 0;
    std::vector<std::optional<std::uint64_t>> x;
    bool operator==(const Fingerprint&) const = default;
};

std::string show(const Fingerprint& f)
{
    std::string s = "code " + std::to_string(f.code) + ", " + std::to_string(f.iterations) +
                    " iterations, objective " + std::to_string(std::bit_cast<double>(f.objective)) + ", x";
    for (const auto& v : f.x)
        s += v ? " " + std::to_string(std::bit_cast<double>(*v)) : std::string(" -");
    return s;
}

template <typename Solver> Fingerprint fingerprint(const LpProblem& p)
{
    Solver solver;
    EXPECT_TRUE(p.loadInto(solver));
    solver.setPivotLimit(kTestPivotLimit);
    Fingerprint f;
    f.code = solver.Solve();
    f.iterations = solver.iterations();
    f.objective = bits(solver.GetObjectiveValue());
    for (int j = 1; j <= p.columns; ++j) {
        double v = 0.0;
        f.x.push_back(solver.GetVariableValue(j, v) ? std::optional(bits(v)) : std::nullopt);
    }
    return f;
}

Fingerprint reference(const LpProblem& p)
{
    const ReferenceSimplex r = ReferenceSimplex::solve(p, kTestPivotLimit);
    Fingerprint f;
    f.code = r.code;
    f.iterations = r.iterations;
    f.objective = bits(r.reported);
    for (const auto& v : r.x)
        f.x.push_back(v ? std::optional(bits(*v)) : std::nullopt);
    return f;
}

// ClpSolve, and the unchanged method kept for comparisons at sizes the plain loops cannot reach,
// against the plain loops.
void expectSame(const LpProblem& p, const std::string& what, std::array<int, 5>& codes)
{
    const Fingerprint plain = reference(p);
    const Fingerprint ours = fingerprint<ClpSolve>(p);
    EXPECT_EQ(ours, plain) << what << "\n  ClpSolve:  " << show(ours) << "\n  reference: " << show(plain);
    const Fingerprint unchanged = fingerprint<UnchangedClpSolve>(p);
    EXPECT_EQ(unchanged, plain) << what << "\n  unchanged: " << show(unchanged)
                                << "\n  reference: " << show(plain);
    if (ours.code >= 0 && ours.code < 5)
        ++codes[static_cast<std::size_t>(ours.code)];
}

TEST(ClpSolveReference, GeneratedProblemsFollowThePlainMethodBitForBit)
{
    std::array<int, 5> codes{};
    ProblemGenerator generator(5150);
    const std::array modes{BlendCase::Minimize, BlendCase::Maximize, BlendCase::Target,
                           BlendCase::MaximizeTonnage};
    for (int k = 0; k < 400; ++k) {
        const BlendCase::Mode mode = modes[static_cast<std::size_t>(k % 4)];
        const int sources = k % 10 == 0 ? generator.integer(40, 90) : generator.integer(2, 25);
        const BlendCase blend = generator.blend(sources, generator.integer(0, 9), mode, k % 8 < 4);
        const auto [lp1, lp2] = blend.programmes();
        expectSame(lp1, "blend " + std::to_string(k) + " LP1", codes);
        if (mode == BlendCase::Target)
            expectSame(lp2, "blend " + std::to_string(k) + " LP2", codes);
    }
    for (int k = 0; k < 600; ++k)
        expectSame(generator.general(generator.integer(1, 14), generator.integer(1, 12)),
                   "general " + std::to_string(k), codes);
    // Optimal, infeasible and endless runs are all among them (with rows, 2 needs a NaN).
    EXPECT_GT(codes[ClpSolve::kOptimal], 300);
    EXPECT_GT(codes[ClpSolve::kInfeasible], 300);
    EXPECT_GT(codes[ClpSolve::kPivotLimit], 20);
}

// Blends of hundreds of sources, as whole quarries make them: most rows are a source's bounds, the
// inverse stays sparse, and the shortcuts that follow from it carry the most weight.
TEST(ClpSolveReference, LargeBlendsFollowThePlainMethodBitForBit)
{
    std::array<int, 5> codes{};
    ProblemGenerator generator(2718);
    const std::array modes{BlendCase::Minimize, BlendCase::Maximize, BlendCase::Target};
    int k = 0;
    for (const int sources : {150, 250, 400}) {
        for (const BlendCase::Mode mode : modes) {
            BlendCase blend = generator.blend(sources, generator.integer(3, 8), mode, true);
            // Tonnages that the single-precision phase-1 objective resolves to better than its
            // 0.03 threshold: a small share of the quarry, or smaller blasts that are mostly
            // taken whole.
            const double scale = ++k % 2 == 0 ? 50.0 : 1.0;
            for (BlendCase::Source& s : blend.sources)
                s.tonnage = std::round(s.tonnage / scale);
            blend.requestedTonnage = std::floor(blend.requestedTonnage / (scale == 1.0 ? 40.0 : 60.0));
            const auto [lp1, lp2] = blend.programmes();
            expectSame(lp1, std::to_string(sources) + " sources LP1, blend " + std::to_string(k), codes);
            if (mode == BlendCase::Target)
                expectSame(lp2, std::to_string(sources) + " sources LP2, blend " + std::to_string(k), codes);
        }
    }
    EXPECT_GE(codes[ClpSolve::kOptimal], 8);
}

// Rows and columns scaled by wildly different powers of ten: the inverse grows towards overflow
// and the values leave the finite range, where skipping a zero term would no longer be exact.
TEST(ClpSolveReference, BadlyScaledProblemsFollowThePlainMethodBitForBit)
{
    std::array<int, 5> codes{};
    ProblemGenerator generator(8128);
    for (int k = 0; k < 300; ++k) {
        LpProblem p = generator.general(generator.integer(2, 10), generator.integer(2, 8));
        for (std::size_t i = 0; i < p.rows.size(); ++i) {
            const double scale = std::pow(10.0, generator.integer(-200, 200));
            for (double& a : p.rows[i])
                a *= scale;
            p.rhs[i] *= scale;
        }
        for (std::size_t j = 0; j < p.objective.size(); ++j) {
            const double scale = std::pow(10.0, generator.integer(-20, 20));
            for (auto& row : p.rows)
                row[j] *= scale;
            p.objective[j] *= scale;
        }
        expectSame(p, "scaled " + std::to_string(k), codes);
    }
    EXPECT_GT(codes[ClpSolve::kOptimal], 100);
    EXPECT_GT(codes[ClpSolve::kInfeasible], 5);
}

// A BasisInverse beside an inverse updated by the plain formula, dense, over every index.
class InverseAndPlain {
public:
    /// `wholeRows` 0 keeps the inverse as entries until a value is not finite.
    InverseAndPlain(int m, int wholeRows)
        : mM(m)
        , mInverse(wholeRows)
        , mPlain(index(m + 1), std::vector<double>(index(m + 1), 0.0))
    {
        mInverse.reset(m);
        mInverse.setIdentity();
        for (int i = 1; i <= m; ++i)
            mPlain[index(i)][index(i)] = 1.0;
        mAlpha.reset(m + 1);
        mUnit.reset(m + 1);
    }

    bool plain() const { return mInverse.plain(); }
    std::size_t entries() const { return mInverse.entryCount(); }

    /// Every product with `column` and `weight` (finite, 1-based), bit for bit.
    void expectSameProducts(const std::vector<double>& column, const std::vector<double>& weight, int row,
                            double sign, const std::string& where)
    {
        std::vector<double> unit(index(mM + 1), 0.0);
        unit[index(row)] = sign;
        multiply(column);
        mInverse.multiplyUnit(row, sign, mUnit);
        compare("Binv x unit column", mUnit, plainTimes(unit), where);
        std::vector<double> out(index(mM + 1), 0.0);
        mInverse.leftMultiply(weight, out);
        const std::vector<double> left = plainLeft(weight);
        for (int i = 1; i <= mM; ++i)
            EXPECT_EQ(bits(out[index(i)]), bits(left[index(i)]))
                << "weights x Binv at " << i << ", " << where;
        std::vector<int> positions;
        for (int i = mM; i >= 1; i -= 2)
            positions.push_back(i);
        std::vector<double> some(positions.size(), 0.0);
        mInverse.leftMultiplyAt(positions, weight, some);
        for (std::size_t c = 0; c < positions.size(); ++c)
            EXPECT_EQ(bits(some[c]), bits(left[index(positions[c])]))
                << "weights x Binv at " << positions[c] << ", " << where;
        const std::vector<double> full = plainTimes(column);
        const auto [rows, values] = entriesOf(column);
        EXPECT_EQ(bits(mInverse.rowTimes(row, rows, values)), bits(full[index(row)]))
            << "row " << row << " x column, " << where;
        if (!mInverse.plain()) {
            std::vector<std::pair<int, double>> kept;
            mInverse.rowEntries(row, kept);
            std::size_t t = 0;
            for (int k = 1; k <= mM; ++k) {
                const double v = mPlain[index(row)][index(k)];
                if (v == 0.0)
                    continue;
                ASSERT_LT(t, kept.size()) << "row " << row << " lost position " << k << ", " << where;
                EXPECT_EQ(kept[t].first, k) << where;
                EXPECT_EQ(bits(kept[t].second), bits(v)) << where;
                ++t;
            }
            EXPECT_EQ(t, kept.size()) << "row " << row << " keeps zeros, " << where;
        }
    }

    /// Pivots both on row r for `column` entering (checking Binv x column first).
    void pivot(const std::vector<double>& column, int r)
    {
        multiply(column);
        std::vector<double> eta(index(mM + 1), 0.0);
        const double pivot = mAlpha[r];
        for (int i = 1; i <= mM; ++i)
            eta[index(i)] = i == r ? 1.0 / pivot : -mAlpha[i] / pivot;
        for (int i = 1; i <= mM; ++i) {
            if (i != r) {
                for (int k = 1; k <= mM; ++k)
                    mPlain[index(i)][index(k)] += eta[index(i)] * mPlain[index(r)][index(k)];
            }
        }
        for (int k = 1; k <= mM; ++k)
            mPlain[index(r)][index(k)] *= eta[index(r)];
        mAlpha.dropZeros();
        mInverse.update(r, mAlpha);
    }

    double alpha(int i) const { return mAlpha[i]; }

private:
    static std::size_t index(int i) { return static_cast<std::size_t>(i); }

    // The column's entries as the solver holds them: non-zero ones, ascending.
    static std::pair<std::vector<int>, std::vector<double>> entriesOf(const std::vector<double>& column)
    {
        std::pair<std::vector<int>, std::vector<double>> e;
        for (std::size_t k = 1; k < column.size(); ++k) {
            if (column[k] != 0.0) {
                e.first.push_back(static_cast<int>(k));
                e.second.push_back(column[k]);
            }
        }
        return e;
    }
    // Binv x column into mAlpha, checked against the plain product.
    void multiply(const std::vector<double>& column)
    {
        const auto [rows, values] = entriesOf(column);
        mInverse.multiply(rows, values, mAlpha);
        compare("Binv x column", mAlpha, plainTimes(column), "");
    }
    std::vector<double> plainTimes(const std::vector<double>& column) const
    {
        std::vector<double> out(index(mM + 1), 0.0);
        for (int i = 1; i <= mM; ++i)
            for (int k = 1; k <= mM; ++k)
                out[index(i)] += mPlain[index(i)][index(k)] * column[index(k)];
        return out;
    }
    std::vector<double> plainLeft(const std::vector<double>& weight) const
    {
        std::vector<double> out(index(mM + 1), 0.0);
        for (int i = 1; i <= mM; ++i)
            for (int k = 1; k <= mM; ++k)
                out[index(i)] += weight[index(k)] * mPlain[index(k)][index(i)];
        return out;
    }
    // Every position listed where the value is not zero, ascending, and equal bit for bit.
    void compare(const char* what, const SparseVector& out, const std::vector<double>& expected,
                 const std::string& where) const
    {
        const auto listed = out.indices();
        EXPECT_TRUE(std::is_sorted(listed.begin(), listed.end())) << what << ", " << where;
        for (int i = 1; i <= mM; ++i) {
            EXPECT_EQ(bits(out[i]), bits(expected[index(i)]))
                << what << " at " << i << ", " << where << ": " << out[i] << " instead of "
                << expected[index(i)];
            if (expected[index(i)] != 0.0) {
                EXPECT_NE(std::find(listed.begin(), listed.end(), i), listed.end())
                    << what << " does not list " << i << ", " << where;
            }
        }
    }

    int mM;
    BasisInverse mInverse;
    std::vector<std::vector<double>> mPlain;
    SparseVector mAlpha;
    SparseVector mUnit;
};

// Random pivots on inverses of up to 70 rows, with entries that cancel
// exactly and pivots on zero: after every update each product must equal, bit for bit, the
// product over every index of the plainly updated inverse.
TEST(BasisInverse, ProductsEqualThePlainLoopsAfterEveryUpdate)
{
    std::mt19937 engine(4242);
    auto draw = [&](int high) {
        return static_cast<int>(engine() % static_cast<unsigned>(high + 1));
    };
    // Mostly zeros and small integers (so that sums cancel), now and then a huge or tiny value.
    auto value = [&] {
        const int kind = draw(79);
        if (kind < 40)
            return 0.0;
        if (kind < 78)
            return static_cast<double>(draw(6) - 3);
        return (kind == 78 ? 1e150 : 1e-150) * (draw(1) == 0 ? 1.0 : -1.0);
    };
    int plainRuns = 0;
    for (int run = 0; run < 120; ++run) {
        const int m = run % 60 < 50 ? 1 + draw(8) : 60 + draw(10);
        // Held whole, then kept as entries.
        InverseAndPlain inverse(m, run < 60 ? BasisInverse::kWholeRows : 0);
        std::vector<double> column(static_cast<std::size_t>(m + 1)), weight(column.size());
        for (int step = 0; step < 3 * m + 5; ++step) {
            for (std::size_t k = 1; k < column.size(); ++k) {
                column[k] = value();
                weight[k] = value();
            }
            const std::string where = "run " + std::to_string(run) + ", step " + std::to_string(step);
            inverse.expectSameProducts(column, weight, 1 + draw(m - 1), draw(1) == 0 ? 1.0 : -1.0, where);
            // Pivot on a row whose alpha is non-zero, and now and then on one whose alpha is zero.
            std::vector<int> rows;
            for (int i = 1; i <= m; ++i)
                if (inverse.alpha(i) != 0.0 || draw(40) == 0)
                    rows.push_back(i);
            if (!rows.empty())
                inverse.pivot(column,
                              rows[static_cast<std::size_t>(draw(static_cast<int>(rows.size()) - 1))]);
        }
        plainRuns += inverse.plain();
    }
    // Some runs must reach the regime where skipping a zero term would be wrong, not all.
    EXPECT_GT(plainRuns, 10);
    EXPECT_LT(plainRuns, 110);
}

// Finite multipliers whose products overflow: Binv[2][1] becomes -inf, and from then on a zero
// factor meeting it gives NaN, as in the plain loops.
TEST(BasisInverse, AnOverflowingUpdateMakesZeroTermsCount)
{
    for (const int wholeRows : {BasisInverse::kWholeRows, 0}) {
        InverseAndPlain inverse(2, wholeRows);
        inverse.pivot({0.0, 1e-200, 0.0}, 1);   // Binv = diag(1e200, 1)
        inverse.pivot({0.0, 1e-200, 1e200}, 1); // alpha = (1, 1e200): eta[2] = -1e200
        EXPECT_TRUE(inverse.plain());
        inverse.expectSameProducts({0.0, 0.0, 1.0}, {0.0, 0.0, 1.0}, 2, 1.0, "after the overflow");
    }
}

} // namespace
} // namespace kilnova
