// Whole quarries: the blast optimisation of thousands of blasts reports exactly what the simplex
// gave before its storage followed the problem's structure (UnchangedClpSolve).

#include "GeneratedQuarry.h"
#include "UnchangedClpSolve.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "optimise/BlastOptimization.h"
#include "optimise/BlastReport.h"
#include "optimise/BlendSummary.h"
#include "support/TempProject.h"

namespace kilnova {
namespace {

class LargeQuarry : public test::TempProject {};

/// The report the unchanged method gives for the request of a run: both programmes solved by it and
/// chosen between as the model chooses.
QString unchangedReport(const BlastOptimization::Result& run, const QStringList& constraintTexts)
{
    const OptimizationModel model;
    const OptimizationRequest& request = run.request;
    UnchangedClpSolve lp1, lp2;
    EXPECT_TRUE(model.build(request, 1).loadInto(lp1));
    const int code1 = lp1.Solve();
    // Outside Target mode both programmes are the same one.
    int code2 = code1;
    if (request.mode == 0) {
        EXPECT_TRUE(model.build(request, 2).loadInto(lp2));
        code2 = lp2.Solve();
    }
    const int chosen = OptimizationModel::chooseProgramme(request.mode, request.target, code1,
                                                          code1 == 1 ? lp1.GetObjectiveValue() : 0.0, code2,
                                                          code2 == 1 ? lp2.GetObjectiveValue() : 0.0);
    if (chosen == 0)
        return QStringLiteral("no optimum: %1 %2").arg(code1).arg(code2);
    const UnchangedClpSolve& solver = chosen == 1 || request.mode != 0 ? lp1 : lp2;
    OptimizationOutcome outcome;
    outcome.solved = true;
    outcome.programme = chosen;
    for (std::size_t j = 0; j < request.sources.size(); ++j) {
        double value = 0.0;
        outcome.values.push_back(
            solver.GetVariableValue(static_cast<int>(j) + 1, value) ? std::optional(value) : std::nullopt);
    }
    return BlastReport::build(request, outcome, constraintTexts,
                              BlendSummary::of(request, outcome, chemCoefficients()));
}

TEST_F(LargeQuarry, ReportsWhatTheUnchangedMethodGives)
{
    struct Case {
        int blasts;
        int mode;
        double tonnage;
    };
    // A pre-blending bed from a whole quarry, maximising CaO, and a smaller quarry targeting it (both
    // programmes then differ and both are compared).
    const QStringList names = GeneratedQuarry::fill(*mDb, 5000);
    for (const Case c : {Case{5000, 1, 250000}, Case{1500, 0, 120000}}) {
        const COptimizationParameters p =
            GeneratedQuarry::parameters(names.mid(0, c.blasts), c.tonnage, c.mode);
        const BlastOptimization optimization(*mDb, p);
        const BlastOptimization::Result run = optimization.optimize();
        ASSERT_TRUE(run.outcome.solved) << c.blasts << ": " << run.outcome.message.toStdString();
        EXPECT_EQ(run.outcome.method, OptimizationOutcome::Method::Classic) << c.blasts;
        EXPECT_EQ(run.report, unchangedReport(run, optimization.constraintTexts())) << c.blasts;
        // A real blend of several blasts, not an empty report that two methods trivially share.
        EXPECT_GT(run.report.count(QStringLiteral(" tonnes of Blast ")), 3) << c.blasts;
        EXPECT_TRUE(
            run.report.contains(QStringLiteral("Optimized tonnage: %1\r\n").arg(c.tonnage, 10, 'f', 2)))
            << c.blasts;
    }
}

} // namespace
} // namespace kilnova
