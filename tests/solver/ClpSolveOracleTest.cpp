// ClpSolve against GLPK on generated problems. Where the verdicts or objectives
// differ, the difference must come from a known property of the method, and the signature of that
// property is checked; anything else fails.

#include "BlendCase.h"
#include "GlpkOracle.h"
#include "LpProblem.h"
#include "ProblemGenerator.h"

#include "solver/ClpSolve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>
#include <map>
#include <optional>
#include <string>

namespace kilnova {
namespace {

using Verdict = GlpkOracle::Verdict;

enum class Explanation {
    Same,             // same verdict; when optimal, same objective and a feasible point
    Threshold,        // infeasible by at most 0.03: accepted on purpose
    FloatObjective,   // feasible, but the single-precision phase-1 objective ended above 0.03
    FirstPricing,     // phase 1 found no entering column at once and returned "optimal"
    UnboundedQuirk,   // no ratio-test row is ever missing when m >= 1, so unboundedness goes unseen
    PivotLimit,       // a degenerate problem cycled until the pivot limit
    ArtificialGrowth, // an artificial left basic after phase 1 grew in phase 2
    NoisePivot,       // the ratio test pivoted on an alpha at rounding-noise level
    Precision,        // optimal to 1e-3 only: single-precision steps met an ill-conditioned basis
    Unexplained,
};

const char* nameOf(Explanation e)
{
    static constexpr std::array<const char*, 10> kNames{
        "same",
        "0.03 threshold",
        "float phase-1 objective",
        "first pricing",
        "unbounded unseen",
        "pivot limit",
        "artificial growth",
        "noise pivot",
        "precision",
        "UNEXPLAINED",
    };
    return kNames[static_cast<std::size_t>(e)];
}

struct OurRun {
    int code = -1;
    int iterations = 0;
    double objective = 0.0;
    double smallestPivot = 0.0;
    bool anyBasic = false;
    std::vector<double> x;
};

OurRun runOurs(const LpProblem& p)
{
    ClpSolve solver;
    EXPECT_TRUE(p.loadInto(solver));
    solver.setPivotLimit(kTestPivotLimit);
    OurRun run;
    run.code = solver.Solve();
    run.iterations = solver.iterations();
    run.objective = solver.GetObjectiveValue();
    run.smallestPivot = solver.smallestPivot();
    for (int j = 1; j <= p.columns; ++j) {
        double v = 0.0;
        if (solver.GetVariableValue(j, v))
            run.anyBasic = true;
        run.x.push_back(v);
    }
    return run;
}

// Rows as the method sees them: right-hand sides made non-negative.
struct NormalisedRow {
    double sign;
    int kind;
};

NormalisedRow normalised(const LpProblem& p, std::size_t i)
{
    return p.rhs[i] < 0.0 ? NormalisedRow{-1.0, -p.kinds[i]} : NormalisedRow{1.0, p.kinds[i]};
}

// Sum of the right-hand sides that start in artificials: the phase-1 objective's starting size.
double artificialStart(const LpProblem& p)
{
    double s = 0.0;
    for (std::size_t i = 0; i < p.rhs.size(); ++i)
        if (normalised(p, i).kind != ClpSolve::kAtMost)
            s += std::abs(p.rhs[i]);
    return s;
}

bool needsPhaseOne(const LpProblem& p)
{
    for (std::size_t i = 0; i < p.rhs.size(); ++i)
        if (normalised(p, i).kind != ClpSolve::kAtMost)
            return true;
    return false;
}

double largest(const std::vector<double>& values)
{
    double m = 0.0;
    for (const double v : values)
        m = std::max(m, std::abs(v));
    return m;
}

// Violation of each row in the method's orientation, relative to the row's own size: its
// right-hand side, its terms, or its largest coefficient times the largest value (the size of the
// rounding a single-precision step can leave in it).
struct Violations {
    double atMost = 0.0;    // normalised at-most rows exceeded
    double fromBelow = 0.0; // normalised at-least / equality rows short
    double fromAbove = 0.0; // normalised equality rows exceeded
    double negative = 0.0;  // x below 0
    double worst() const { return std::max({atMost, fromBelow, fromAbove, negative}); }
};

Violations violations(const LpProblem& p, const std::vector<double>& x)
{
    Violations v;
    double size = 1.0;
    for (const double xj : x)
        size = std::max(size, std::abs(xj));
    for (const double xj : x)
        v.negative = std::max(v.negative, -xj / size);
    for (std::size_t i = 0; i < p.rows.size(); ++i) {
        const NormalisedRow n = normalised(p, i);
        double lhs = 0.0;
        double scale = std::max({1.0, std::abs(p.rhs[i]), largest(p.rows[i]) * size});
        for (std::size_t j = 0; j < x.size(); ++j) {
            lhs += n.sign * p.rows[i][j] * x[j];
            scale = std::max(scale, std::abs(p.rows[i][j] * x[j]));
        }
        const double excess = (lhs - n.sign * p.rhs[i]) / scale;
        if (n.kind == ClpSolve::kAtMost)
            v.atMost = std::max(v.atMost, excess);
        else
            v.fromBelow = std::max(v.fromBelow, -excess);
        if (n.kind == ClpSolve::kEqual)
            v.fromAbove = std::max(v.fromAbove, excess);
    }
    return v;
}

// Relative row violation still counted as feasible: values carry a few single-precision roundings.
constexpr double kFeasible = 1e-5;
constexpr double kSameObjective = 1e-6;

double terms(const LpProblem& p, const std::vector<double>& x)
{
    double sum = 0.0;
    for (std::size_t j = 0; j < x.size(); ++j)
        sum += std::abs(p.objective[j] * x[j]);
    return sum;
}

// Optimal and feasible to `tolerance` (relative to the optimum or, when its terms cancel, to the
// terms themselves). The values read back went through single-precision steps, so one float
// rounding of the largest possible term is allowed on top (it matters when the optimum is 0 or a
// coefficient is huge).
bool optimalWithin(const LpProblem& p, const OurRun& ours, const GlpkOracle& glpk, double tolerance,
                   double feasible)
{
    const double scale = std::max(std::abs(glpk.objective), terms(p, glpk.x));
    const double floatTerm =
        0x1p-24 * largest(p.objective) * std::max({largest(glpk.x), largest(ours.x), 1.0});
    const double ourZ = p.objectiveAt(ours.x);
    // The reported objective is single precision and gathers one rounding per step.
    return violations(p, ours.x).worst() <= feasible &&
           std::abs(ourZ - glpk.objective) <= tolerance * scale + floatTerm &&
           std::abs(ours.objective - ourZ) <= 2e-5 * std::max(scale, 1.0) + ours.iterations * floatTerm;
}

bool sameOptimum(const LpProblem& p, const OurRun& ours, const GlpkOracle& glpk)
{
    return optimalWithin(p, ours, glpk, kSameObjective, kFeasible);
}

// Phase 1 started with no negative reduced cost: every structural column sums to <= 0 over the
// rows that start in artificials, so Solve returned 1 at once with nothing basic.
bool stoppedAtFirstPricing(const LpProblem& p, const OurRun& ours)
{
    if (ours.code != ClpSolve::kOptimal || ours.iterations != 1 || !needsPhaseOne(p) || ours.anyBasic)
        return false;
    for (int j = 0; j < p.columns; ++j) {
        double sum = 0.0;
        for (std::size_t i = 0; i < p.rows.size(); ++i) {
            const NormalisedRow n = normalised(p, i);
            if (n.kind != ClpSolve::kAtMost)
                sum += n.sign * p.rows[i][static_cast<std::size_t>(j)];
        }
        if (sum > 1e-6) // its reduced cost, -sum, would have been negative
            return false;
    }
    const double sense = p.sense == -1 ? -1.0 : 1.0;
    return ours.objective == sense * static_cast<float>(-artificialStart(p));
}

// Room for rounding in the single-precision phase-1 objective: one float epsilon of its starting
// size per step.
double floatBudget(const LpProblem& p, const OurRun& ours)
{
    return ours.iterations * artificialStart(p) * 0x1p-23;
}

bool credible(const OurRun& ours, const LpProblem& p)
{
    if (!std::isfinite(ours.objective) || std::abs(ours.objective) >= 1e15)
        return false;
    for (const double v : ours.x)
        if (!std::isfinite(v) || std::abs(v) >= 1e15)
            return false;
    return violations(p, ours.x).worst() <= kFeasible;
}

std::optional<Verdict> verdictOf(int code)
{
    switch (code) {
    case ClpSolve::kOptimal:
        return Verdict::Optimal;
    case ClpSolve::kUnbounded:
        return Verdict::Unbounded;
    case ClpSolve::kInfeasible:
        return Verdict::Infeasible;
    default:
        return std::nullopt;
    }
}

Explanation explain(const LpProblem& p, const OurRun& ours, const GlpkOracle& glpk)
{
    if (verdictOf(ours.code) == glpk.verdict &&
        (glpk.verdict != Verdict::Optimal || sameOptimum(p, ours, glpk)))
        return Explanation::Same;
    if (stoppedAtFirstPricing(p, ours))
        return Explanation::FirstPricing;
    if (glpk.verdict == Verdict::Infeasible && ours.code == ClpSolve::kOptimal &&
        GlpkOracle::leastArtificialSum(p) <= 0.03 + floatBudget(p, ours))
        return Explanation::Threshold;
    if (glpk.verdict != Verdict::Infeasible && ours.code == ClpSolve::kInfeasible) {
        const double least = GlpkOracle::leastArtificialSum(p);
        if (least <= 0.03 && 0.03 - least <= floatBudget(p, ours))
            return Explanation::FloatObjective;
    }
    if (glpk.verdict == Verdict::Unbounded &&
        (ours.code == ClpSolve::kPivotLimit || (ours.code == ClpSolve::kOptimal && !credible(ours, p))))
        return Explanation::UnboundedQuirk;
    if (ours.code == ClpSolve::kPivotLimit)
        return Explanation::PivotLimit;
    if (ours.code == ClpSolve::kOptimal) {
        // Slacks, surpluses and structurals stay non-negative; only an artificial can push a
        // row the method sees as at-least or equality below its right-hand side.
        const Violations v = violations(p, ours.x);
        if (v.fromBelow > kFeasible && v.atMost <= kFeasible && v.fromAbove <= kFeasible &&
            v.negative <= kFeasible)
            return Explanation::ArtificialGrowth;
    }
    if (ours.smallestPivot < 1e-9)
        return Explanation::NoisePivot;
    if (ours.code == ClpSolve::kOptimal && glpk.verdict == Verdict::Optimal &&
        optimalWithin(p, ours, glpk, 1e-3, 1e-3))
        return Explanation::Precision;
    return Explanation::Unexplained;
}

using Tally = std::map<Explanation, int>;

void check(const LpProblem& p, const std::string& what, Tally& tally)
{
    const OurRun ours = runOurs(p);
    const GlpkOracle glpk = GlpkOracle::solve(p);
    const Explanation e = explain(p, ours, glpk);
    ++tally[e];
    EXPECT_NE(e, Explanation::Unexplained)
        << what << ": ClpSolve " << ours.code << " objective " << ours.objective << " after "
        << ours.iterations << " iterations; GLPK verdict " << static_cast<int>(glpk.verdict) << " objective "
        << glpk.objective;
}

void print(const char* title, const Tally& tally)
{
    std::cout << title << ":";
    for (const auto& [e, count] : tally)
        std::cout << " " << nameOf(e) << " " << count << ";";
    std::cout << "\n";
}

int total(const Tally& tally)
{
    int n = 0;
    for (const auto& [e, count] : tally)
        n += count;
    return n;
}

// Two sources of 1000 t each and a request slightly above their 2000 t: GLPK calls every excess
// infeasible, ClpSolve accepts up to 0.03 t left in the artificial of the tonnage row.
TEST(ClpSolveOracle, ThresholdDiffersFromGlpkOnPurpose)
{
    struct Request {
        double excess;
        Explanation expected;
    };
    for (const Request& r : {Request{0.02, Explanation::Threshold}, Request{0.04, Explanation::Same}}) {
        BlendCase blend;
        blend.mode = BlendCase::Minimize;
        blend.optimised = BlendCase::CaO;
        for (const float caO : {50.0f, 30.0f}) {
            BlendCase::Source s;
            s.tonnage = 1000.0;
            s.values[BlendCase::CaO] = caO;
            blend.sources.push_back(s);
        }
        blend.requestedTonnage = 2000.0 + r.excess;
        const LpProblem lp = blend.programmes().first;
        const OurRun ours = runOurs(lp);
        const GlpkOracle glpk = GlpkOracle::solve(lp);
        EXPECT_EQ(glpk.verdict, Verdict::Infeasible) << r.excess;
        EXPECT_EQ(ours.code, r.expected == Explanation::Same ? ClpSolve::kInfeasible : ClpSolve::kOptimal)
            << r.excess;
        EXPECT_EQ(explain(lp, ours, glpk), r.expected) << r.excess;
    }
}

TEST(ClpSolveOracle, BlendProgrammesAgreeWithGlpk)
{
    ProblemGenerator generator(20240611);
    Tally tally;
    const std::array modes{BlendCase::Minimize, BlendCase::Maximize, BlendCase::Target,
                           BlendCase::MaximizeTonnage};
    for (int k = 0; k < 240; ++k) {
        const BlendCase::Mode mode = modes[static_cast<std::size_t>(k % 4)];
        // Every other request is drawn around a blend the sources can make.
        const BlendCase blend =
            generator.blend(generator.integer(2, 30), generator.integer(0, 6), mode, k % 8 < 4);
        const auto [lp1, lp2] = blend.programmes();
        check(lp1, "blend " + std::to_string(k) + " LP1", tally);
        if (mode == BlendCase::Target)
            check(lp2, "blend " + std::to_string(k) + " LP2", tally);
    }
    print("blend programmes", tally);
    // The known departures stay exceptions: most blends must match GLPK outright, and results
    // good to 1e-3 only stay rare.
    EXPECT_GE(tally[Explanation::Same], total(tally) * 90 / 100);
    EXPECT_LE(tally[Explanation::Precision], total(tally) / 100);
}

TEST(ClpSolveOracle, GeneralProblemsAgreeWithGlpk)
{
    ProblemGenerator generator(77001);
    Tally tally;
    for (int k = 0; k < 200; ++k)
        check(generator.general(generator.integer(1, 12), generator.integer(1, 10)),
              "general " + std::to_string(k), tally);
    print("general problems", tally);
    EXPECT_GE(tally[Explanation::Same], total(tally) / 2);
}

} // namespace
} // namespace kilnova
