// Small problems worked by hand, where the pivot sequence decides what the caller reads back.

#include "LpProblem.h"

#include "solver/ClpSolve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <vector>

namespace kilnova {
namespace {

struct Row {
    std::vector<double> a;
    int kind;
    double rhs;
};

LpProblem lp(int sense, std::vector<double> objective, const std::vector<Row>& rows)
{
    LpProblem p;
    p.columns = static_cast<int>(objective.size());
    p.sense = sense;
    p.objective = std::move(objective);
    for (const Row& r : rows)
        p.addRow(r.a, r.kind, r.rhs);
    return p;
}

constexpr int kLe = ClpSolve::kAtMost;
constexpr int kEq = ClpSolve::kEqual;
constexpr int kGe = ClpSolve::kAtLeast;

/// What a caller reads back; nullopt for a column reported as not basic.
struct Outcome {
    int code = -1;
    int iterations = 0;
    double objective = 0.0;
    std::vector<std::optional<double>> x;
};

Outcome read(ClpSolve& solver, int code, int columns)
{
    Outcome o;
    o.code = code;
    o.iterations = solver.iterations();
    o.objective = solver.GetObjectiveValue();
    for (int j = 1; j <= columns; ++j) {
        double value = -12345.0;
        if (solver.GetVariableValue(j, value))
            o.x.emplace_back(value);
        else {
            EXPECT_EQ(value, -12345.0) << "a non-basic column must leave the output alone";
            o.x.emplace_back(std::nullopt);
        }
    }
    return o;
}

Outcome solve(const LpProblem& p)
{
    ClpSolve solver;
    EXPECT_TRUE(p.loadInto(solver));
    const int code = solver.Solve();
    return read(solver, code, p.columns);
}

std::string show(const std::vector<std::optional<double>>& x)
{
    std::string s;
    for (const auto& v : x)
        s += v ? std::to_string(*v) + " " : std::string("- ");
    return s;
}

struct Case {
    const char* name;
    LpProblem problem;
    int code;
    int iterations; // 0: not checked
    double objective;
    std::vector<std::optional<double>> x;
};

void expectOutcome(const Case& c)
{
    const Outcome o = solve(c.problem);
    EXPECT_EQ(o.code, c.code) << c.name;
    if (c.iterations > 0) {
        EXPECT_EQ(o.iterations, c.iterations) << c.name;
    }
    EXPECT_EQ(o.objective, c.objective) << c.name;
    EXPECT_EQ(o.x, c.x) << c.name << ": got " << show(o.x);
}

constexpr std::nullopt_t kNonBasic = std::nullopt;

TEST(ClpSolveMethod, TiesGoToTheFirstCandidate)
{
    const Case cases[] = {
        // d = (-1, -1): the first position enters; x2 then prices at 0 and stays out.
        {"pricing tie", lp(1, {1, 1}, {{{1, 1}, kLe, 3}}), ClpSolve::kOptimal, 2, 3.0, {3.0, kNonBasic}},
        // x1 enters with ratios 2 and 2: row 1 leaves, and x2 (d = 1) stays out.
        {"ratio tie, lowest row",
         lp(1, {2, 1}, {{{1, 1}, kLe, 2}, {{1, 0}, kLe, 2}}),
         ClpSolve::kOptimal,
         2,
         4.0,
         {2.0, kNonBasic}},
        // Rows swapped: x1 leaves x1 <= 2 in row 1; the other slack sits at 0, x2 (d = -1) enters
        // on a degenerate step and ends basic at 0.
        {"ratio tie, rows swapped",
         lp(1, {2, 1}, {{{1, 0}, kLe, 2}, {{1, 1}, kLe, 2}}),
         ClpSolve::kOptimal,
         3,
         4.0,
         {2.0, 0.0}},
    };
    for (const Case& c : cases)
        expectOutcome(c);
}

// The chosen reduced cost is kept in single precision: a later column that beats the rounded
// value enters even though an earlier one is more negative in double.
TEST(ClpSolveMethod, PricingComparesAgainstTheRoundedMinimum)
{
    expectOutcome({"float pricing",
                   lp(1, {1.00000001, 1.000000005}, {{{1, 1}, kLe, 3}}),
                   ClpSolve::kOptimal,
                   2,
                   3.0,
                   {kNonBasic, 3.0}});
}

// The step length is single precision, and so is the value of the entering column.
TEST(ClpSolveMethod, StepLengthIsRoundedToSinglePrecision)
{
    const double third = static_cast<float>(1.0 / 3.0);
    ASSERT_NE(third, 1.0 / 3.0);
    expectOutcome({"x = 1/3", lp(1, {2}, {{{3}, kLe, 1}}), ClpSolve::kOptimal, 2, 2 * third, {third}});
}

TEST(ClpSolveMethod, SenseOtherThanMinusOneMaximises)
{
    // max / min x1 subject to 1 <= x1 <= 4.
    const std::vector<Row> rows{{{1}, kLe, 4}, {{1}, kGe, 1}};
    const Case cases[] = {
        {"sense 1", lp(1, {1}, rows), ClpSolve::kOptimal, 3, 4.0, {4.0}},
        {"sense -1", lp(-1, {1}, rows), ClpSolve::kOptimal, 2, 1.0, {1.0}},
        {"sense 0", lp(0, {1}, rows), ClpSolve::kOptimal, 3, 4.0, {4.0}},
        {"sense 2", lp(2, {1}, rows), ClpSolve::kOptimal, 3, 4.0, {4.0}},
    };
    for (const Case& c : cases)
        expectOutcome(c);
}

TEST(ClpSolveMethod, WithoutRowsAnImprovingColumnIsUnbounded)
{
    const Case cases[] = {
        {"max +x", lp(1, {1}, {}), ClpSolve::kUnbounded, 1, 0.0, {kNonBasic}},
        {"max -x", lp(1, {-1}, {}), ClpSolve::kOptimal, 1, 0.0, {kNonBasic}},
        {"min +x", lp(-1, {1}, {}), ClpSolve::kOptimal, 1, -0.0, {kNonBasic}},
        {"min -x", lp(-1, {-1}, {}), ClpSolve::kUnbounded, 1, -0.0, {kNonBasic}},
    };
    for (const Case& c : cases)
        expectOutcome(c);
}

// Phase 1 that finds no negative reduced cost at its first pricing returns 1 at once: no 0.03
// test, no phase 2, nothing basic, and the objective is the phase-1 start -(sum of artificials).
TEST(ClpSolveMethod, PhaseOneWithoutEnteringColumnReturnsAtOnce)
{
    const Case cases[] = {
        // -x1 >= 5 has no solution.
        {"infeasible", lp(1, {1}, {{{-1}, kGe, 5}}), ClpSolve::kOptimal, 1, -5.0, {kNonBasic}},
        {"infeasible, minimising", lp(-1, {1}, {{{-1}, kGe, 5}}), ClpSolve::kOptimal, 1, 5.0, {kNonBasic}},
        // x1 = x2 <= 5 would give 10, but the columns sum to 0 over the artificial rows.
        {"feasible, not optimal",
         lp(1, {1, 1}, {{{1, -1}, kGe, 0}, {{-1, 1}, kGe, 0}, {{1, 0}, kLe, 5}}),
         ClpSolve::kOptimal,
         1,
         0.0,
         {kNonBasic, kNonBasic}},
    };
    for (const Case& c : cases)
        expectOutcome(c);
}

TEST(ClpSolveMethod, NegativeRightHandSidesAreFlipped)
{
    const Case cases[] = {
        // x1 + x2 >= 2 after the flip: phase 1 brings x1 in at 2; phase 2 finds nothing better.
        {"at most becomes at least",
         lp(-1, {1, 1}, {{{-1, -1}, kLe, -2}, {{1, 0}, kLe, 5}}),
         ClpSolve::kOptimal,
         2,
         2.0,
         {2.0, kNonBasic}},
        // -x1 <= 3 after the flip: every row is at-most, so phase 2 starts from the slacks.
        {"at least becomes at most",
         lp(1, {1}, {{{1}, kGe, -3}, {{1}, kLe, 4}}),
         ClpSolve::kOptimal,
         2,
         4.0,
         {4.0}},
        // x1 + x2 = 3: x1 fills its bound, x2 takes the rest.
        {"equality changes sign",
         lp(1, {1, 0}, {{{-1, -1}, kEq, -3}, {{1, 0}, kLe, 2}}),
         ClpSolve::kOptimal,
         3,
         2.0,
         {2.0, 1.0}},
    };
    for (const Case& c : cases)
        expectOutcome(c);
}

// Solve normalises the stored rows and the counts together, so a second call still agrees with
// the counts and solves the same problem.
TEST(ClpSolveMethod, SecondSolveWorksOnTheNormalisedRows)
{
    const LpProblem p = lp(-1, {1, 1}, {{{-1, -1}, kLe, -2}, {{1, 0}, kLe, 5}});
    ClpSolve solver;
    ASSERT_TRUE(p.loadInto(solver));
    ASSERT_EQ(solver.Solve(), ClpSolve::kOptimal);
    const Outcome second = read(solver, solver.Solve(), p.columns);
    EXPECT_EQ(second.code, ClpSolve::kOptimal);
    EXPECT_EQ(second.objective, 2.0);
    EXPECT_EQ(second.x, (std::vector<std::optional<double>>{2.0, kNonBasic}));
}

// x1 + x2 = 4 twice over (the second row doubled) and x1 <= 3, maximising x1 + 2 x2. Phase 1
// takes x1 (tie with x2), then x2, whose ratio test first takes row 1 on alpha = 0 and then row 2;
// the artificial of the doubled row cannot be driven out and stays basic at 0. Phase 2 swaps x1
// for the slack of row 1.
TEST(ClpSolveMethod, RedundantEqualityKeepsItsArtificial)
{
    expectOutcome({"redundant equality",
                   lp(1, {1, 2}, {{{1, 1}, kEq, 4}, {{2, 2}, kEq, 8}, {{1, 0}, kLe, 3}}),
                   ClpSolve::kOptimal,
                   4,
                   8.0,
                   {kNonBasic, 4.0}});
}

// Two raw materials, CaO 50 % and 30 %, 1000 t each; the blend of 1000 t must hold 40-45 % CaO
// and the CaO tonnage is minimised: half and half, 40 000 (tonnes x percent).
TEST(ClpSolveMethod, SmallBlendWorkedByHand)
{
    const LpProblem blend = lp(-1, {50, 30},
                               {
                                   {{50 - 45, 30 - 45}, kLe, 0},
                                   {{50 - 40, 30 - 40}, kGe, 0},
                                   {{1, 0}, kGe, 0},
                                   {{1, 0}, kLe, 1000},
                                   {{0, 1}, kGe, 0},
                                   {{0, 1}, kLe, 1000},
                                   {{1, 1}, kEq, 1000},
                               });
    const Outcome o = solve(blend);
    EXPECT_EQ(o.code, ClpSolve::kOptimal);
    EXPECT_NEAR(o.objective, 40000.0, 0.01);
    ASSERT_EQ(o.x.size(), 2u);
    for (const auto& x : o.x) {
        ASSERT_TRUE(x.has_value());
        EXPECT_NEAR(*x, 500.0, 1e-3); // single-precision steps
    }
}

// x1 + x2 = R with x1, x2 <= R/2 - 0.01: infeasible by 0.02, which the 0.03 threshold accepts.
// The threshold sees the single-precision phase-1 objective: at 300 000 t the 0.02 left in the
// artificial is stored as 0.03125 and the same request becomes infeasible.
TEST(ClpSolveMethod, FeasibilityThresholdIsAbsoluteOnTheSinglePrecisionObjective)
{
    struct Threshold {
        double half;
        double excess;
        int code;
    };
    const Threshold cases[] = {
        {5.0, 0.02, ClpSolve::kOptimal},         {5.0, 0.04, ClpSolve::kInfeasible},
        {15000.0, 0.02, ClpSolve::kOptimal},     {15000.0, 0.04, ClpSolve::kInfeasible},
        {150000.0, 0.02, ClpSolve::kInfeasible},
    };
    for (const Threshold& c : cases) {
        const LpProblem p = lp(
            1, {1, 0}, {{{1, 1}, kEq, 2 * c.half + c.excess}, {{1, 0}, kLe, c.half}, {{0, 1}, kLe, c.half}});
        const Outcome o = solve(p);
        EXPECT_EQ(o.code, c.code) << "half " << c.half << ", excess " << c.excess;
        if (o.code ==
            ClpSolve::kOptimal) { // the artificial keeps the excess; the columns stop at their bounds
            EXPECT_EQ(o.x, (std::vector<std::optional<double>>{c.half, c.half})) << "half " << c.half;
        }
    }
}

// A feasible request, x1 + x2 = R with x1 <= R/2: phase 1 ends with nothing in the artificial,
// but its single-precision objective has gathered the rounding of R and of the float step lengths.
// At 600 000 t one float step is 0.0625 (0.03125 at 300 000 t), so the objective ends at 0.03125
// and the request is called infeasible; the same request at 6 000 t is solved.
TEST(ClpSolveMethod, LargeTonnagesCanFailTheThresholdThroughRounding)
{
    struct Request {
        double total;
        double firstBound;
        int code;
    };
    const Request requests[] = {
        {600000.52, 300000.3, ClpSolve::kInfeasible},
        {6000.0052, 3000.003, ClpSolve::kOptimal},
    };
    for (const Request& r : requests) {
        const LpProblem p = lp(1, {1, 0}, {{{1, 1}, kEq, r.total}, {{1, 0}, kLe, r.firstBound}});
        EXPECT_EQ(solve(p).code, r.code) << r.total << " t";
    }
}

// Without an anti-cycling rule a degenerate problem can cycle, and with rows the ratio test
// always finds a row, so an unbounded problem never returns 2. Both stop at the pivot limit
// (lowered here: the default takes seconds).
TEST(ClpSolveMethod, EndlessProblemsStopAtThePivotLimit)
{
    EXPECT_EQ(ClpSolve().pivotLimit(), ClpSolve::kDefaultPivotLimit);
    const LpProblem problems[] = {
        // Beale's cycling example.
        lp(1, {0.75, -20, 0.5, -6},
           {{{0.25, -8, -1, 9}, kLe, 0}, {{0.5, -12, -0.5, 3}, kLe, 0}, {{0, 0, 1, 0}, kLe, 1}}),
        // max x1 with -x1 <= 1: x1 and the slack swap places in row 1 for ever.
        lp(1, {1}, {{{-1}, kLe, 1}}),
    };
    for (const LpProblem& p : problems) {
        ClpSolve solver;
        ASSERT_TRUE(p.loadInto(solver));
        solver.setPivotLimit(3000);
        EXPECT_EQ(solver.Solve(), ClpSolve::kPivotLimit);
        EXPECT_EQ(solver.iterations(), 3001);
    }
}

// Stopping on a ray changes nothing before the step along it: a bounded problem, cycling or not,
// gives the same pivots and values; an open ray gives 2 at the pivot that would have stepped 1e30.
TEST(ClpSolveMethod, StopOnRayEndsOnlyWhereTheRatioTestHasNoPositiveAlpha)
{
    struct Case {
        const char* what;
        LpProblem problem;
        int stoppedCode;       // with stopOnRay
        int stoppedIterations; // pivots made before it stopped, plus one
    };
    const Case cases[] = {
        // max x1 with -x1 <= 1: x1 enters, its alpha is -1.
        {"open ray at the first pivot", lp(1, {1}, {{{-1}, kLe, 1}}), ClpSolve::kUnbounded, 1},
        // max x1 + x2 with x1 - x2 <= 1: x1 enters (alpha 1, x1 = 1), then x2 along the ray.
        {"open ray at the second pivot", lp(1, {1, 1}, {{{1, -1}, kLe, 1}}), ClpSolve::kUnbounded, 2},
        // Beale's example cycles, but every pivot has a positive alpha.
        {"bounded and cycling",
         lp(1, {0.75, -20, 0.5, -6},
            {{{0.25, -8, -1, 9}, kLe, 0}, {{0.5, -12, -0.5, 3}, kLe, 0}, {{0, 0, 1, 0}, kLe, 1}}),
         ClpSolve::kPivotLimit, 3001},
        // Phase 1 then phase 2 on a bounded blend: min x1 + 2 x2, x1 + x2 = 10, x1 <= 4.
        {"bounded", lp(-1, {1, 2}, {{{1, 1}, kEq, 10}, {{1, 0}, kLe, 4}}), ClpSolve::kOptimal, -1},
    };
    for (const Case& c : cases) {
        ClpSolve plain, stopping;
        ASSERT_TRUE(c.problem.loadInto(plain));
        ASSERT_TRUE(c.problem.loadInto(stopping));
        plain.setPivotLimit(3000);
        stopping.setPivotLimit(3000);
        stopping.setStopOnRay(true);
        const Outcome without = read(plain, plain.Solve(), c.problem.columns);
        const Outcome with = read(stopping, stopping.Solve(), c.problem.columns);
        EXPECT_EQ(with.code, c.stoppedCode) << c.what;
        if (c.stoppedCode == ClpSolve::kUnbounded) {
            EXPECT_EQ(with.iterations, c.stoppedIterations) << c.what;
            EXPECT_NE(without.code, ClpSolve::kUnbounded) << c.what << ": the method itself never says so";
            continue;
        }
        if (c.stoppedIterations > 0) {
            EXPECT_EQ(with.iterations, c.stoppedIterations) << c.what;
        }
        EXPECT_EQ(with.code, without.code) << c.what;
        EXPECT_EQ(with.iterations, without.iterations) << c.what;
        EXPECT_EQ(with.objective, without.objective) << c.what;
        EXPECT_EQ(show(with.x), show(without.x)) << c.what;
    }
}

} // namespace
} // namespace kilnova
