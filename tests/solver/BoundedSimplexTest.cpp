// The second method: programmes worked out by hand, then generated blends and general problems
// against GLPK, and above all the blends on which ClpSolve ends without an optimum.

#include "BlendCase.h"
#include "GlpkOracle.h"
#include "LpProblem.h"
#include "ProblemGenerator.h"

#include "solver/BoundedSimplex.h"
#include "solver/ClpSolve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <string>
#include <vector>

namespace kilnova {
namespace {

using Status = BoundedSimplex::Status;
using Verdict = GlpkOracle::Verdict;

struct Answer {
    Status status = Status::NotSolved;
    double objective = 0.0;
    std::vector<double> x;
    int iterations = 0;
};

Answer solveSecond(const LpProblem& p, SimplexCore::Pricing pricing = SimplexCore::Pricing::Devex)
{
    BoundedSimplex s;
    EXPECT_TRUE(p.loadInto(s));
    s.setPricing(pricing);
    Answer a;
    a.status = s.Solve();
    a.objective = s.objective();
    a.iterations = s.iterations();
    for (int j = 1; j <= p.columns; ++j)
        a.x.push_back(s.value(j));
    return a;
}

LpProblem problem(int columns, int sense, std::vector<double> objective)
{
    LpProblem p;
    p.columns = columns;
    p.sense = sense;
    p.objective = std::move(objective);
    return p;
}

// The largest violation of a row by x, relative to the row's size; x >= 0 too.
double worstViolation(const LpProblem& p, const std::vector<double>& x)
{
    double worst = 0.0;
    for (std::size_t i = 0; i < p.rows.size(); ++i) {
        double lhs = 0.0;
        double size = 1.0 + std::abs(p.rhs[i]);
        for (std::size_t j = 0; j < x.size(); ++j) {
            lhs += p.rows[i][j] * x[j];
            size += std::abs(p.rows[i][j] * x[j]);
        }
        const double over = p.kinds[i] == 1    ? lhs - p.rhs[i]
                            : p.kinds[i] == -1 ? p.rhs[i] - lhs
                                               : std::abs(lhs - p.rhs[i]);
        worst = std::max(worst, over / size);
    }
    for (const double v : x)
        worst = std::max(worst, -v);
    return worst;
}

TEST(BoundedSimplex, ProgrammesWorkedByHand)
{
    struct Case {
        const char* what;
        LpProblem p;
        Status status;
        std::vector<double> x; // when optimal
        double objective;
    };
    std::vector<Case> cases;
    {
        // Two blasts of CaO 50 and 40 and SiO2 10 and 20, 1000 t at 12-15 % SiO2, the first holding
        // 600 t: SiO2 >= 12 keeps x2 >= x1 / 4 (x1 <= 800), so the bound on x1 decides.
        LpProblem p = problem(2, 1, {50, 40});
        p.addRow({-5, 5}, 1, 0);
        p.addRow({-2, 8}, -1, 0);
        p.addRow({1, 0}, -1, 0);
        p.addRow({1, 0}, 1, 600);
        p.addRow({0, 1}, -1, 0);
        p.addRow({0, 1}, 1, 1000);
        p.addRow({1, 1}, 0, 1000);
        cases.push_back({"blend, bound decides", p, Status::Optimal, {600, 400}, 46000});
        // The same at 2000 t of the first blast: the SiO2 floor decides (x1 = 800, x2 = 200).
        p.rhs[3] = 2000;
        cases.push_back({"blend, limit decides", p, Status::Optimal, {800, 200}, 48000});
        // Minimising CaO instead: SiO2 <= 15 keeps x2 <= x1, so x1 = x2 = 500.
        p.sense = -1;
        cases.push_back({"blend minimised", p, Status::Optimal, {500, 500}, 45000});
        // Sense 2 (Maximize Tonnage's) maximises, as in ClpSolve.
        p.sense = 2;
        cases.push_back({"sense 2 maximises", p, Status::Optimal, {800, 200}, 48000});
    }
    {
        LpProblem p = problem(2, -1, {1, 1});
        p.addRow({1, 0}, 1, 1000);
        p.addRow({0, 1}, 1, 1000);
        p.addRow({1, 1}, 0, 3000);
        cases.push_back({"more tonnes than there are", p, Status::Infeasible, {}, 0});
    }
    {
        LpProblem p = problem(2, 1, {1, 0});
        p.addRow({1, -1}, 1, 1);
        cases.push_back({"unbounded", p, Status::Unbounded, {}, 0});
    }
    {
        // A row without coefficients must hold by itself.
        LpProblem p = problem(1, 1, {1});
        p.addRow({0}, -1, 5);
        p.addRow({1}, 1, 3);
        cases.push_back({"empty row not met", p, Status::Infeasible, {}, 0});
        p.kinds[0] = 1;
        cases.push_back({"empty row met", p, Status::Optimal, {3}, 3});
    }
    {
        // Single-coefficient rows are bounds, whatever their sign: -2 x1 <= -4 is x1 >= 2 and
        // 2 x2 = 6 fixes x2 at 3; minimising x1 + x2 over x1 + x2 >= 4 gives 5.
        LpProblem p = problem(2, -1, {1, 1});
        p.addRow({-2, 0}, 1, -4);
        p.addRow({0, 2}, 0, 6);
        p.addRow({1, 1}, -1, 4);
        cases.push_back({"bounds from rows", p, Status::Optimal, {2, 3}, 5});
        p.addRow({1, 0}, 1, 1.5);
        cases.push_back({"bounds that cross", p, Status::Infeasible, {}, 0});
    }
    {
        // Beale's cycling example: the optimum is -5/4 at x4 = x6 = 1 (x5 = x7 = 0). A pivot rule
        // without protection circles here for ever.
        LpProblem p = problem(4, -1, {-0.75, 20, -0.5, 6});
        p.addRow({0.25, -8, -1, 9}, 1, 0);
        p.addRow({0.5, -12, -0.5, 3}, 1, 0);
        p.addRow({0, 0, 1, 0}, 1, 1);
        cases.push_back({"Beale", p, Status::Optimal, {1, 0, 1, 0}, -1.25});
    }
    {
        // Coefficients six orders of magnitude apart: 1e-3 x1 + 1e3 x2 = 1e3 with x1 <= 2e5
        // maximising x1 - x2: x1 = 2e5 leaves x2 = 0.8.
        LpProblem p = problem(2, 1, {1, -1});
        p.addRow({1e-3, 1e3}, 0, 1e3);
        p.addRow({1, 0}, 1, 2e5);
        cases.push_back({"badly scaled", p, Status::Optimal, {2e5, 0.8}, 2e5 - 0.8});
    }
    for (const Case& c : cases) {
        const Answer a = solveSecond(c.p);
        EXPECT_EQ(a.status, c.status) << c.what;
        if (c.status != Status::Optimal || a.status != Status::Optimal)
            continue;
        for (std::size_t j = 0; j < c.x.size(); ++j)
            EXPECT_NEAR(a.x[j], c.x[j], 1e-9 * (1 + std::abs(c.x[j]))) << c.what << " x" << j + 1;
        EXPECT_NEAR(a.objective, c.objective, 1e-9 * (1 + std::abs(c.objective))) << c.what;
    }
}

struct Agreement {
    int optimal = 0;
    int infeasible = 0;
    int classicFailed = 0; // of the optimal ones, those ClpSolve ends without an optimum on
};

// GLPK's verdict must be ours; an optimum must be GLPK's and meet every row.
void expectAgreement(const LpProblem& p, const std::string& what, Agreement& tally)
{
    const GlpkOracle glpk = GlpkOracle::solve(p);
    const Answer ours = solveSecond(p);
    if (glpk.verdict == Verdict::Optimal) {
        ++tally.optimal;
        ClpSolve classic;
        p.loadInto(classic);
        classic.setPivotLimit(kTestPivotLimit);
        tally.classicFailed += classic.Solve() != ClpSolve::kOptimal;
        ASSERT_EQ(ours.status, Status::Optimal) << what << ": GLPK optimum " << glpk.objective;
        double terms = 1.0;
        for (std::size_t j = 0; j < ours.x.size(); ++j)
            terms += std::abs(p.objective[j] * glpk.x[j]);
        EXPECT_NEAR(ours.objective, glpk.objective, 1e-7 * terms) << what;
        EXPECT_LE(worstViolation(p, ours.x), BoundedSimplex::kCheckTolerance) << what;
    } else {
        tally.infeasible += glpk.verdict == Verdict::Infeasible;
        // No blend may be claimed where GLPK finds none.
        EXPECT_NE(ours.status, Status::Optimal)
            << what << ": GLPK verdict " << static_cast<int>(glpk.verdict);
        if (glpk.verdict == Verdict::Infeasible) {
            EXPECT_EQ(ours.status, Status::Infeasible) << what;
        }
    }
}

TEST(BoundedSimplex, GeneratedBlendsAgreeWithGlpk)
{
    struct Size {
        int sources;
        int count;
    };
    ProblemGenerator generator(31337);
    const std::array modes{BlendCase::Minimize, BlendCase::Maximize, BlendCase::Target,
                           BlendCase::MaximizeTonnage};
    Agreement tally;
    int k = 0;
    for (const Size size :
         {Size{5, 120}, Size{20, 80}, Size{50, 40}, Size{200, 12}, Size{1000, 2}, Size{2000, 2}}) {
        for (int c = 0; c < size.count; ++c, ++k) {
            const BlendCase::Mode mode = modes[static_cast<std::size_t>(k % 4)];
            const BlendCase blend = generator.blend(size.sources, generator.integer(0, 9), mode, k % 3 != 0);
            const auto [lp1, lp2] = blend.programmes();
            const std::string what = std::to_string(size.sources) + " sources, blend " + std::to_string(k);
            expectAgreement(lp1, what + " LP1", tally);
            if (mode == BlendCase::Target)
                expectAgreement(lp2, what + " LP2", tally);
        }
    }
    std::cout << "generated blends: " << tally.optimal << " optimal (" << tally.classicFailed
              << " without an optimum from ClpSolve), " << tally.infeasible << " infeasible\n";
    // Both verdicts are well represented, and so are the blends the classic method fails on.
    EXPECT_GT(tally.optimal, 150);
    EXPECT_GT(tally.infeasible, 50);
    EXPECT_GT(tally.classicFailed, 5);
}

// Blends on which ClpSolve ends without an optimum though GLPK finds one: the second method must
// find GLPK's optimum on every one of them.
TEST(BoundedSimplex, FindsTheBlendsTheClassicMethodMisses)
{
    ProblemGenerator generator(4711);
    const std::array modes{BlendCase::Minimize, BlendCase::Maximize, BlendCase::Target,
                           BlendCase::MaximizeTonnage};
    Agreement tally;
    int missed = 0;
    for (int k = 0; k < 3000 && missed < 40; ++k) {
        const BlendCase::Mode mode = modes[static_cast<std::size_t>(k % 4)];
        const BlendCase blend =
            generator.blend(generator.integer(20, 120), generator.integer(2, 9), mode, true);
        for (const LpProblem& lp : {blend.programmes().first, blend.programmes().second}) {
            ClpSolve classic;
            lp.loadInto(classic);
            classic.setPivotLimit(kTestPivotLimit);
            if (classic.Solve() == ClpSolve::kOptimal || GlpkOracle::solve(lp).verdict != Verdict::Optimal)
                continue;
            ++missed;
            expectAgreement(lp, "missed blend " + std::to_string(k), tally);
        }
    }
    EXPECT_GE(missed, 40);
    EXPECT_EQ(tally.optimal, missed);
}

// Both pricing rules reach GLPK's optimum on generated blends of each size, and the weighted rule,
// there for the large blends, takes no more iterations in all than the largest reduced cost.
TEST(BoundedSimplex, PricingRulesReachTheSameOptima)
{
    struct Size {
        int sources;
        int elements;
        int count;
    };
    using Pricing = SimplexCore::Pricing;
    for (const Size size : {Size{20, 5, 16}, Size{50, 8, 12}, Size{200, 10, 8}, Size{1000, 10, 3}}) {
        ProblemGenerator generator(static_cast<std::uint32_t>(7 * size.sources + size.elements));
        int iterations[2] = {0, 0};
        int optimal = 0;
        for (int k = 0; k < size.count; ++k) {
            const auto mode = k % 2 == 0 ? BlendCase::Minimize : BlendCase::Maximize;
            const LpProblem lp = generator.blend(size.sources, size.elements, mode, true).programmes().first;
            const GlpkOracle glpk = GlpkOracle::solve(lp);
            if (glpk.verdict != Verdict::Optimal)
                continue;
            ++optimal;
            const std::string what = std::to_string(size.sources) + " sources, blend " + std::to_string(k);
            double terms = 1.0;
            for (std::size_t j = 0; j < lp.objective.size(); ++j)
                terms += std::abs(lp.objective[j] * glpk.x[j]);
            for (const Pricing pricing : {Pricing::Largest, Pricing::Devex}) {
                const Answer a = solveSecond(lp, pricing);
                const char* rule = pricing == Pricing::Devex ? " (Devex)" : " (largest)";
                ASSERT_EQ(a.status, Status::Optimal) << what << rule;
                EXPECT_NEAR(a.objective, glpk.objective, 1e-7 * terms) << what << rule;
                EXPECT_LE(worstViolation(lp, a.x), BoundedSimplex::kCheckTolerance) << what << rule;
                iterations[pricing == Pricing::Devex] += a.iterations;
            }
        }
        EXPECT_GE(optimal, size.count / 2) << size.sources << " sources";
        EXPECT_LE(iterations[1], iterations[0]) << size.sources << " sources";
    }
}

// Phase 2 carries its reduced costs from pivot to pivot; each time they are computed afresh (a new
// inverse, or an optimum about to be declared) the two must agree closely enough that the carried
// ones never pick a column the fresh ones would refuse: within a hundredth of the dual tolerance
// (1e-9 on costs scaled to a largest magnitude of 1), under either pricing rule.
TEST(BoundedSimplex, CarriedReducedCostsStayWithTheFreshOnes)
{
    struct Size {
        int sources;
        int elements;
        int count;
    };
    using Pricing = SimplexCore::Pricing;
    constexpr double kDrift = 1e-11;
    for (const Size size : {Size{20, 5, 12}, Size{200, 10, 8}, Size{1000, 10, 3}}) {
        ProblemGenerator generator(static_cast<std::uint32_t>(11 * size.sources + size.elements));
        double largest = 0.0;
        int compared = 0;
        for (int k = 0; k < size.count; ++k) {
            const auto mode = k % 2 == 0 ? BlendCase::Minimize : BlendCase::Maximize;
            const LpProblem lp = generator.blend(size.sources, size.elements, mode, true).programmes().first;
            const bool optimal = GlpkOracle::solve(lp).verdict == Verdict::Optimal;
            for (const Pricing pricing : {Pricing::Largest, Pricing::Devex}) {
                BoundedSimplex s;
                ASSERT_TRUE(lp.loadInto(s));
                s.setPricing(pricing);
                const Status status = s.Solve();
                const std::string what = std::to_string(size.sources) + " sources, blend " +
                                         std::to_string(k) +
                                         (pricing == Pricing::Devex ? " (Devex)" : " (largest)");
                EXPECT_EQ(status == Status::Optimal, optimal) << what;
                EXPECT_LE(s.reducedCostDrift(), kDrift) << what;
                largest = std::max(largest, s.reducedCostDrift());
                compared += s.reducedCostDrift() > 0.0;
            }
        }
        std::cout << size.sources << " sources: largest drift " << largest << " (" << compared << " runs)\n";
        // The comparison is made at all, not only on runs too short for a new inverse.
        if (size.sources >= 200) {
            EXPECT_GT(compared, 0) << size.sources << " sources";
        }
    }
}

TEST(BoundedSimplex, GeneralProblemsAgreeWithGlpk)
{
    ProblemGenerator generator(90210);
    Agreement tally;
    int unbounded = 0;
    for (int k = 0; k < 300; ++k) {
        const LpProblem p = generator.general(generator.integer(1, 14), generator.integer(1, 12));
        const GlpkOracle glpk = GlpkOracle::solve(p);
        if (glpk.verdict == Verdict::Unbounded) {
            ++unbounded;
            EXPECT_EQ(solveSecond(p).status, Status::Unbounded) << "general " << k;
            continue;
        }
        expectAgreement(p, "general " + std::to_string(k), tally);
    }
    std::cout << "general problems: " << tally.optimal << " optimal, " << tally.infeasible << " infeasible, "
              << unbounded << " unbounded\n";
    EXPECT_GT(tally.optimal, 25);
    EXPECT_GT(tally.infeasible, 25);
    EXPECT_GT(unbounded, 25);
}

} // namespace
} // namespace kilnova
