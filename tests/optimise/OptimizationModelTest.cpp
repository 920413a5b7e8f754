#include "optimise/OptimizationModel.h"
#include "common/MessageTable.h"
#include "solver/ClpSolve.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace kilnova {
namespace {

Analysis analysis(std::initializer_list<std::pair<Element, float>> values)
{
    Analysis a = missingAnalysis();
    for (auto [e, v] : values)
        a[static_cast<std::size_t>(elementIndex(e))] = v;
    return a;
}

/// Two blasts of 1000 t: a limestone (SiO2 10, CaO 50) and a marl (SiO2 20, CaO 40).
OptimizationRequest twoBlasts(int mode)
{
    OptimizationRequest r;
    r.sources = {
        {"B1", 1000,
         analysis({{Element::SiO2, 10}, {Element::Al2O3, 2}, {Element::Fe2O3, 1}, {Element::CaO, 50}})},
        {"B2", 1000,
         analysis({{Element::SiO2, 20}, {Element::Al2O3, 6}, {Element::Fe2O3, 3}, {Element::CaO, 40}})}};
    r.mode = mode;
    r.element = elementIndex(Element::CaO);
    r.requestedTonnage = 1000;
    r.constraints[static_cast<std::size_t>(elementIndex(Element::SiO2))] = {12, 15, "12.00 <= SiO2 <= 15.00",
                                                                            1};
    return r;
}

using Row = LinearProgramme::Row;

TEST(OptimizationModel, BuildsRowsAndKindsOfEachMode)
{
    const OptimizationModel model;
    // Element rows (max then min), source rows (>= 0, <= tonnage), the tonnage row.
    const std::vector<Row> common = {{{-5, 5}, 0, 1}, {{-2, 8}, 0, -1},  {{1, 0}, 0, -1},  {{1, 0}, 1000, 1},
                                     {{0, 1}, 0, -1}, {{0, 1}, 1000, 1}, {{1, 1}, 1000, 0}};
    for (int mode : {-1, 1}) {
        const LinearProgramme lp = model.build(twoBlasts(mode), 1);
        EXPECT_EQ(lp.rows, 7);
        EXPECT_EQ(lp.sense, mode);
        EXPECT_EQ((std::array{lp.countAtLeast, lp.countEqual, lp.countAtMost}), (std::array{3, 1, 3}));
        ASSERT_EQ(lp.rowList.size(), 7u);
        for (std::size_t i = 0; i < common.size(); ++i) {
            EXPECT_EQ(lp.rowList[i].dense(2), common[i].coefficients) << i;
            EXPECT_EQ(lp.rowList[i].rhs, common[i].rhs) << i;
            EXPECT_EQ(lp.rowList[i].kind, common[i].kind) << i;
        }
        EXPECT_EQ(lp.objective, (std::vector<double>{50, 40}));
    }

    OptimizationRequest target = twoBlasts(0);
    target.target = 46;
    for (int programme : {1, 2}) {
        const LinearProgramme lp = model.build(target, programme);
        EXPECT_EQ(lp.rows, 8);
        EXPECT_EQ(lp.sense, programme == 1 ? -1 : 1);
        EXPECT_EQ((std::array{lp.countAtLeast, lp.countEqual, lp.countAtMost}),
                  programme == 1 ? (std::array{4, 1, 3}) : (std::array{3, 1, 4}));
        ASSERT_EQ(lp.rowList.size(), 8u);
        // The target row follows the element rows: blend at or above (LP1) or below (LP2) 46.
        EXPECT_EQ(lp.rowList[2].coefficients, (std::vector<double>{4, -6}));
        EXPECT_EQ(lp.rowList[2].kind, programme == 1 ? -1 : 1);
        EXPECT_EQ(lp.rowList[7].kind, 0);
        EXPECT_EQ(lp.objective, (std::vector<double>{4, -6}));
    }

    const LinearProgramme tonnage = model.build(twoBlasts(2), 1);
    EXPECT_EQ(tonnage.rows, 6);
    EXPECT_EQ(tonnage.sense, 2);
    EXPECT_EQ((std::array{tonnage.countAtLeast, tonnage.countEqual, tonnage.countAtMost}),
              (std::array{3, 0, 3}));
    EXPECT_EQ(tonnage.rowList.size(), 7u) << "the tonnage row is built as row 7 and falls outside the 6 rows";
}

TEST(OptimizationModel, LinearisesModuliOnTheirOxidesInSinglePrecision)
{
    ChemEquationCoefficients c;
    const OptimizationModel model(c);
    const Analysis a = analysis({{Element::SiO2, 21},
                                 {Element::Al2O3, 5},
                                 {Element::Fe2O3, 3},
                                 {Element::CaO, 65},
                                 {Element::MS, 9},
                                 {Element::LSF, 9},
                                 {Element::C3S, 60}});
    EXPECT_EQ(model.rowCoefficient(a, elementIndex(Element::MS), 2.5), 21.0f - 12.5f - 7.5f);
    EXPECT_EQ(model.rowCoefficient(a, elementIndex(Element::MA), 1.5), 5.0f - 4.5f);
    EXPECT_EQ(model.rowCoefficient(a, elementIndex(Element::LSF), 0.95),
              static_cast<float>(65.0 - (static_cast<double>(0.7f) * 3 + static_cast<double>(1.1f) * 5 +
                                         static_cast<double>(2.8f) * 21) *
                                            0.95));
    // Phases use the stored value.
    EXPECT_EQ(model.rowCoefficient(a, elementIndex(Element::C3S), 55), 5.0f);
    // Objective outside Target mode: the value, or a modulus' numerator.
    EXPECT_EQ(model.objectiveCoefficient(a, elementIndex(Element::MS)), 21.0f);
    EXPECT_EQ(model.objectiveCoefficient(a, elementIndex(Element::LSF)), 65.0f);
    EXPECT_EQ(model.objectiveCoefficient(a, elementIndex(Element::C3S)), 60.0f);
    // A bound that is not a float survives only as the rounded difference.
    const Analysis b = analysis({{Element::CaO, 50}});
    EXPECT_EQ(model.rowCoefficient(b, elementIndex(Element::CaO), 0.1), static_cast<float>(50.0 - 0.1));
}

TEST(OptimizationModel, ChoosesBetweenTheTwoProgrammes)
{
    struct Case {
        int mode, code1, code2;
        double objective1, objective2;
        int chosen;
    };
    const double T = 46;
    const std::vector<Case> cases = {
        {1, 1, 1, 10, 20, 1},   {-1, 1, 1, 30, 20, 1}, {0, 1, 1, 45.5, 46.6, 1},
        {0, 1, 1, 47, 45, 2},   // equal distance: the second
        {0, 1, 1, 0.0, 0.1, 2}, // compared with T itself, not with 0
        {0, 1, 3, 0, 0, 1},     {0, 3, 1, 0, 0, 2},    {1, 2, 1, 0, 0, 2},
        {1, 0, 0, 0, 0, 0},     {1, 3, 3, 0, 0, 0},    {1, 2, 3, 0, 0, 0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(OptimizationModel::chooseProgramme(c.mode, T, c.code1, c.objective1, c.code2, c.objective2),
                  c.chosen)
            << c.mode << " " << c.code1 << "/" << c.code2;
}

TEST(OptimizationModel, SolvesTheHandWorkedBlend)
{
    const OptimizationModel model;
    // Maximise CaO at 12 <= SiO2 <= 15: as little marl as the silica allows, 200 t.
    const OptimizationOutcome max = model.run(twoBlasts(1));
    ASSERT_TRUE(max.solved) << max.message.toStdString();
    EXPECT_NEAR(max.tonnes(0), 800, 1e-6);
    EXPECT_NEAR(max.tonnes(1), 200, 1e-6);
    // Minimise CaO: as much marl as allowed, 500 t.
    const OptimizationOutcome min = model.run(twoBlasts(-1));
    ASSERT_TRUE(min.solved);
    EXPECT_NEAR(min.tonnes(1), 500, 1e-6);
    EXPECT_NEAR(min.total(), 1000, 1e-6);
    // Maximize Tonnage without constraints takes every tonne: the tonnage row is not there.
    OptimizationRequest all = twoBlasts(2);
    all.constraints = {};
    const OptimizationOutcome tonnage = model.run(all);
    ASSERT_TRUE(tonnage.solved);
    EXPECT_NEAR(tonnage.total(), 2000, 1e-6);
}

TEST(OptimizationModel, RefusesWithTheSystemMessages)
{
    const OptimizationModel model;
    OptimizationRequest one = twoBlasts(1);
    one.sources.pop_back();
    EXPECT_EQ(model.run(one).message, "Please, select at least 2 sources");

    OptimizationRequest missing = twoBlasts(1);
    missing.sources[1].values[static_cast<std::size_t>(elementIndex(Element::SiO2))] = -1;
    EXPECT_EQ(model.run(missing).message,
              "Error, a constraint or the element to optimize is applied to an element for which one of the "
              "sources "
              "has a missing value, optimization is aborted\nProblem first found in source B2");

    OptimizationRequest unconstrainedMissing = twoBlasts(1);
    unconstrainedMissing.sources[0].values[static_cast<std::size_t>(elementIndex(Element::Cl))] = -1;
    EXPECT_TRUE(model.run(unconstrainedMissing).solved) << "a value nobody asks for may be missing";

    // Silica above both blasts: every row's artificial already prices out at the start of phase 1, so
    // the solver stops at once with "optimal" and no blast basic: nothing is taken, no message.
    OptimizationRequest unreachable = twoBlasts(1);
    unreachable.constraints[static_cast<std::size_t>(elementIndex(Element::SiO2))] = {25, 30, "", 1};
    const OptimizationOutcome nothing = model.run(unreachable);
    EXPECT_TRUE(nothing.solved);
    EXPECT_EQ(nothing.total(), 0.0);

    OptimizationRequest tooMuch = twoBlasts(1);
    tooMuch.requestedTonnage = 5000;
    EXPECT_EQ(model.run(tooMuch).message,
              "The system cannot reach an optimum, it is infeasible given the set of constraints");
}

// The second method runs only when the classic one ends without an optimum, and then keeps the
// classic message for the report to open with.
TEST(OptimizationModel, SecondMethodOnlyWhenTheClassicEndsWithoutAnOptimum)
{
    const QString infeasible =
        QStringLiteral("The system cannot reach an optimum, it is infeasible given the set of constraints");
    // 600 000.52 t from blasts of 300 000.3 and 400 000 t: the blend exists, but the classic method's
    // single-precision phase-1 objective ends above its 0.03 threshold. Minimising CaO takes all
    // of the leaner blast and the rest, 200 000.52 t, from the other.
    OptimizationRequest large = twoBlasts(-1);
    large.constraints = {};
    large.sources[0].tonnage = 300000.3;
    large.sources[1].tonnage = 400000;
    large.requestedTonnage = 600000.52;
    OptimizationRequest tooMuch = twoBlasts(1);
    tooMuch.requestedTonnage = 5000;

    struct Case {
        const char* what;
        OptimizationRequest request;
        bool solved;
        OptimizationOutcome::Method method;
        QString message;
        std::vector<double> tonnes;
    };
    using M = OptimizationOutcome::Method;
    const std::vector<Case> cases = {
        {"classic optimum", twoBlasts(1), true, M::Classic, {}, {800, 200}},
        {"classic says infeasible, the blend exists",
         large,
         true,
         M::Second,
         infeasible,
         {200000.52, 400000}},
        {"infeasible for both", tooMuch, false, M::Classic, infeasible, {}},
    };
    const OptimizationModel model;
    for (const Case& c : cases) {
        const OptimizationOutcome o = model.run(c.request);
        EXPECT_EQ(o.solved, c.solved) << c.what;
        EXPECT_EQ(o.method, c.method) << c.what;
        EXPECT_EQ(o.message, c.message) << c.what;
        for (std::size_t j = 0; j < c.tonnes.size(); ++j)
            EXPECT_NEAR(o.tonnes(j), c.tonnes[j], 1e-6) << c.what << ", source " << j;
        const QString preface = OptimizationModel::secondMethodPreface(o);
        if (c.method == M::Second) {
            EXPECT_EQ(preface, infeasible +
                                   "\r\n\r\nA blend that meets every limit exists all the same. Kilnova's "
                                   "second method (a bounded-variable simplex in double precision) found "
                                   "the one below; it can be stored like any other.\r\n\r\n")
                << c.what;
        } else {
            EXPECT_EQ(preface, "") << c.what;
        }
    }
}

// Sources bought as needed (no upper row) and a product tonnage row in which one source counts
// negatively, as a raw material with an LOI above 100 makes negative clinker: maximising takes ever
// more of both. The classic method's ratio test still takes a row there, with the step 1e30, and
// ends on "values" near 1e30; the optimisation reports the programme as unbounded instead.
TEST(OptimizationModel, AnOpenRayIsReportedUnboundedNotAsABlend)
{
    const QString unbounded =
        QStringLiteral("The system cannot reach an optimum, it is unbounded given the set of constraints");
    auto problem = [](std::vector<double> weights, int mode) {
        BlendProblem p;
        for (const char* name : {"A", "B"}) {
            ModelSource s;
            s.name = name;
            s.values = analysis({{Element::SiO2, 10}, {Element::CaO, name[0] == 'A' ? 50.0f : 40.0f}});
            p.sources.push_back(s);
        }
        p.mode = mode;
        p.element = elementIndex(Element::CaO);
        p.tonnage = 1000;
        p.tonnageWeights = std::move(weights);
        return p;
    };
    struct Case {
        const char* what;
        BlendProblem problem;
        bool solved;
        std::vector<double> tonnes;
    };
    const std::vector<Case> cases = {
        {"maximised along a ray", problem({1.0, -0.5}, 1), false, {}},
        {"maximised along a ray, the other way round", problem({-0.5, 1.0}, 1), false, {}},
        // Minimising over the same programmes stays bounded: 1000 t of B, or of A.
        {"minimised, bounded", problem({1.0, -0.5}, -1), true, {1000, 0}},
        {"all weights positive", problem({1.0, 1.0}, 1), true, {1000, 0}},
    };
    const OptimizationModel model;
    for (const Case& c : cases) {
        const OptimizationOutcome o = model.run(c.problem);
        EXPECT_EQ(o.solved, c.solved) << c.what;
        if (!c.solved) {
            EXPECT_EQ(o.message, unbounded) << c.what;
            EXPECT_EQ(o.codes[0], ClpSolve::kUnbounded) << c.what;
        }
        for (std::size_t j = 0; j < c.tonnes.size(); ++j)
            EXPECT_NEAR(o.tonnes(j), c.tonnes[j], 1e-6) << c.what << ", source " << j;
    }
}

// The debug dump is written beside the solve of the second programme; it must still get the first
// programme as built (the solve reorders its rows), and be whole when run() returns.
TEST(OptimizationModel, DebugDumpGetsTheFirstProgrammeBeforeItIsSolved)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const OptimizationModel model;
    const OptimizationRequest r = twoBlasts(-1);
    const auto dump = OptimizationModel::debugDump(dir.filePath("debug.txt"));
    const OptimizationOutcome out = model.run(r, [&dump](const ClpSolve& lp1) {
        // Slow on purpose: what runs beside the dump has ended by the time it reads the programme.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        dump(lp1);
    });
    ASSERT_TRUE(out.solved) << out.message.toStdString();
    EXPECT_NEAR(out.tonnes(0), 500, 1e-3);

    ClpSolve built;
    ASSERT_TRUE(model.build(r, 1).loadInto(built));
    built.DumpToFile(dir.filePath("built.txt").toStdString());
    QFile written(dir.filePath("debug.txt"));
    QFile expected(dir.filePath("built.txt"));
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    ASSERT_TRUE(expected.open(QIODevice::ReadOnly));
    const QByteArray text = written.readAll();
    EXPECT_EQ(text.toStdString(), expected.readAll().toStdString());
    // The element's lower row second, as built: the solve moves the at-most rows ahead of it.
    EXPECT_EQ(text.split('\n').value(1).toStdString(), "     -2.00      8.00      0.00 IBT:   -1");
}

TEST(OptimizationModel, ReportHeadNamesWhatWasDone)
{
    EXPECT_EQ(OptimizationModel::reportHead("Blast Optimization Results", -1, "SiO2", {}),
              "Blast Optimization Results\r\n\r\nsuccessfully minimized SiO2\r\n\r\nList of Constraints "
              "applied:\r\n"
              "none\r\n\r\n");
    EXPECT_EQ(OptimizationModel::reportHead("T", 0, "LSF", {"a", "b"}),
              "T\r\n\r\nsuccessfully targeted LSF\r\n\r\nList of Constraints applied:\r\na\r\nb\r\n\r\n\r\n");
    EXPECT_EQ(OptimizationModel::reportHead("T", 2, "CaO", {}),
              "T\r\n\r\nCaO\r\n\r\nList of Constraints applied:\r\nnone\r\n\r\n");
}

} // namespace
} // namespace kilnova
