#include "optimise/Explainer.h"

#include "GeneratedQuarry.h"

#include "common/MessageTable.h"
#include "solver/ClpSolve.h"

#include <QJsonArray>

#include <gtest/gtest.h>

#include <random>

namespace kilnova {
namespace {

constexpr int SiO2 = elementIndex(Element::SiO2);
constexpr int CaO = elementIndex(Element::CaO);
constexpr int LSF = elementIndex(Element::LSF);

Analysis analysis(std::initializer_list<std::pair<Element, float>> values)
{
    Analysis a = missingAnalysis(); // every other element missing: unconstrained, so never read
    for (auto [e, v] : values)
        a[static_cast<std::size_t>(elementIndex(e))] = v;
    return a;
}

/// Three blasts without alumina or iron, so that LSF = CaO / (2.8 SiO2):
///   A  SiO2 10, CaO 20 (LSF 0.714)   B  SiO2 20, CaO 70 (LSF 1.25)   C  SiO2 30, CaO 60 (LSF 0.714)
OptimizationRequest threeBlasts(double tonnage, double available)
{
    OptimizationRequest r;
    r.sources = {{"A", available,
                  analysis({{Element::SiO2, 10},
                            {Element::Al2O3, 0},
                            {Element::Fe2O3, 0},
                            {Element::CaO, 20},
                            {Element::LSF, 0.71f}})},
                 {"B", available,
                  analysis({{Element::SiO2, 20},
                            {Element::Al2O3, 0},
                            {Element::Fe2O3, 0},
                            {Element::CaO, 70},
                            {Element::LSF, 1.25f}})},
                 {"C", available,
                  analysis({{Element::SiO2, 30},
                            {Element::Al2O3, 0},
                            {Element::Fe2O3, 0},
                            {Element::CaO, 60},
                            {Element::LSF, 0.71f}})}};
    r.mode = 1;
    r.element = CaO;
    r.requestedTonnage = tonnage;
    return r;
}

void limit(OptimizationRequest& r, int element, double minimum, double maximum)
{
    r.constraints[static_cast<std::size_t>(element)] = {minimum, maximum, QString(), 1};
}

Explanation explain(const OptimizationOutcome& outcome)
{
    const OptimizationModel model;
    return Explainer(model).explain(outcome, elementNames());
}

bool solves(const OptimizationRequest& r)
{
    return OptimizationModel().run(r).solved;
}

// SiO2 at most 13 and LSF at least 1 over 1000 t. Least SiO2 with LSF >= 1: no C, 14 B >= 8 A, so
// A = 636.36, B = 363.64 and SiO2 = 13.6364. Highest LSF with SiO2 <= 13: no C, B = 300, LSF =
// 3500 / (2.8 * 1300) = 0.9615. Needed: SiO2 maximum 13.64, LSF minimum 0.96.
TEST(Explainer, ConflictOfSilicaMaximumAndLimeSaturationMinimum)
{
    OptimizationRequest r = threeBlasts(1000, 10000);
    limit(r, SiO2, 0, 13);
    limit(r, LSF, 1, 5);
    const OptimizationOutcome outcome = OptimizationModel().run(r);
    ASSERT_FALSE(outcome.solved);
    ASSERT_EQ(outcome.message, message(Msg::Infeasible));

    const Explanation e = explain(outcome);
    EXPECT_EQ(e.status, Explanation::Status::Infeasible);
    ASSERT_EQ(e.conflict.size(), 2u) << e.text().toStdString();
    EXPECT_EQ(e.conflict[0].name, "SiO2 maximum");
    EXPECT_EQ(e.conflict[0].current, 13.0);
    ASSERT_TRUE(e.conflict[0].needed);
    EXPECT_NEAR(*e.conflict[0].needed, 13.64, 1e-9);
    EXPECT_EQ(e.conflict[1].name, "LSF minimum");
    ASSERT_TRUE(e.conflict[1].needed);
    EXPECT_NEAR(*e.conflict[1].needed, 0.96, 1e-9);
    EXPECT_FALSE(e.missingTonnes);

    // The proposed value solves with every other limit kept; one step short of it does not.
    struct Case {
        int element;
        double minimum, maximum;
        bool solved;
    };
    for (const Case& c : {Case{SiO2, 0, 13.64, true}, Case{SiO2, 0, 13.63, false}, Case{LSF, 0.96, 5, true},
                          Case{LSF, 0.97, 5, false}}) {
        OptimizationRequest relaxed = r;
        limit(relaxed, c.element, c.minimum, c.maximum);
        EXPECT_EQ(solves(relaxed), c.solved) << c.element << ' ' << c.minimum << ' ' << c.maximum;
    }

    EXPECT_TRUE(e.text().contains("SiO2 maximum 13.00: raise it to 13.64\r\n")) << e.text().toStdString();
    EXPECT_TRUE(e.text().contains("LSF minimum 1.00: lower it to 0.96\r\n")) << e.text().toStdString();
    const QJsonArray conflict = e.json()["conflict"].toArray();
    ASSERT_EQ(conflict.size(), 2);
    EXPECT_EQ(conflict[0].toObject()["limit"].toString(), "SiO2 maximum");
    EXPECT_EQ(conflict[0].toObject()["current"].toDouble(), 13.0);
    EXPECT_NEAR(conflict[0].toObject()["needed"].toDouble(), 13.64, 1e-9);
    EXPECT_TRUE(conflict[0].toObject()["marginal"].isNull());
}

// 5000 t asked of three 1000 t blasts, SiO2 at most 14 with A limited to 900 t: the fullest blend
// takes all of A and 6 B <= 4 A of B, 600 t, so 1500 t; 3500 t are missing.
TEST(Explainer, TonnageAboveWhatTheSourcesHoldNamesTheTonnage)
{
    OptimizationRequest r = threeBlasts(5000, 1000);
    r.sources[0].tonnage = 900;
    limit(r, SiO2, 0, 14);
    const OptimizationOutcome outcome = OptimizationModel().run(r);
    ASSERT_FALSE(outcome.solved);
    const Explanation e = explain(outcome);
    ASSERT_EQ(e.status, Explanation::Status::Infeasible);
    ASSERT_EQ(e.conflict.size(), 2u) << e.text().toStdString();
    EXPECT_EQ(e.conflict[0].name, "Requested tonnage");
    ASSERT_TRUE(e.conflict[0].needed);
    EXPECT_EQ(*e.conflict[0].needed, 1500.0);
    EXPECT_EQ(e.conflict[1].name, "Tonnages of the sources");
    EXPECT_EQ(e.conflict[1].current, 2900.0);
    EXPECT_EQ(e.conflict[1].sources, QStringList{"A"});
    ASSERT_TRUE(e.missingTonnes);
    EXPECT_NEAR(*e.missingTonnes, 3500.0, 1e-6);
    EXPECT_TRUE(e.text().contains("Requested tonnage 5000.00 t: lower it to 1500.00 t\r\n"))
        << e.text().toStdString();
    EXPECT_TRUE(e.text().contains("3500.00 t missing; the fullest blend takes all of A"))
        << e.text().toStdString();

    for (auto [tonnage, solved] : {std::pair{1500.0, true}, std::pair{1501.0, false}}) {
        OptimizationRequest relaxed = r;
        relaxed.requestedTonnage = tonnage;
        EXPECT_EQ(solves(relaxed), solved) << tonnage;
    }
}

// Two independent conflicts: no single limit of the one found is enough.
TEST(Explainer, SaysWhenOneLimitAloneIsNotEnough)
{
    OptimizationRequest r = threeBlasts(5000, 1000);
    limit(r, SiO2, 0, 13);
    limit(r, LSF, 1, 5);
    const Explanation e = explain(OptimizationModel().run(r));
    ASSERT_EQ(e.status, Explanation::Status::Infeasible);
    ASSERT_FALSE(e.conflict.empty());
    for (const ExplainedLimit& l : e.conflict) {
        if (l.limit.kind != UserLimit::Kind::SourceTonnage) {
            EXPECT_FALSE(l.needed) << l.name.toStdString();
            EXPECT_EQ(l.note, "not enough alone: other limits conflict as well");
        }
    }
    EXPECT_FALSE(e.text().contains("Any one of these changes"));
}

// Two 1000 t blasts, CaO maximised over 100 t with SiO2 at least 12: B = 20 t, CaO = 4800 t%.
// SiO2 minimum 11.99: B = 19.9, CaO 4801, so +1 per 0.01 lower; 101 t: B = 20.2, CaO 4848, +48.
TEST(Explainer, BindingLimitsAndTheirMarginalValues)
{
    OptimizationRequest r;
    r.sources = {{"B1", 1000, analysis({{Element::SiO2, 10}, {Element::CaO, 50}})},
                 {"B2", 1000, analysis({{Element::SiO2, 20}, {Element::CaO, 40}})}};
    r.mode = 1;
    r.element = CaO;
    r.requestedTonnage = 100;
    limit(r, SiO2, 12, 30);
    const OptimizationOutcome outcome = OptimizationModel().run(r);
    ASSERT_TRUE(outcome.solved);
    const Explanation e = explain(outcome);
    EXPECT_EQ(e.status, Explanation::Status::Optimal);
    ASSERT_EQ(e.binding.size(), 2u) << e.text().toStdString();
    EXPECT_EQ(e.binding[0].name, "SiO2 minimum");
    EXPECT_EQ(e.binding[0].step, -0.01);
    ASSERT_TRUE(e.binding[0].marginal);
    EXPECT_NEAR(*e.binding[0].marginal, 1.0, 1e-3);
    EXPECT_EQ(e.binding[1].name, "Requested tonnage");
    EXPECT_EQ(e.binding[1].step, 1.0);
    ASSERT_TRUE(e.binding[1].marginal);
    EXPECT_NEAR(*e.binding[1].marginal, 48.0, 1e-3);
    EXPECT_TRUE(e.text().contains("Requested tonnage 100.00 t: objective +48.00 per 1 t more\r\n"))
        << e.text().toStdString();
}

double objectiveOf(const OptimizationRequest& r, const OptimizationOutcome& o)
{
    const OptimizationModel model;
    double sum = 0.0;
    for (std::size_t j = 0; j < r.sources.size(); ++j)
        sum += static_cast<double>(model.objectiveCoefficient(r.sources[j].values, r.element)) * o.tonnes(j);
    return sum;
}

// On generated blends, every limit is moved by a step and by half a step through the optimisation
// itself: a binding limit's marginal value matches the finite difference, a limit not listed moves
// nothing.
TEST(Explainer, MarginalValuesMatchFiniteDifferencesOnGeneratedBlends)
{
    std::mt19937 random(20240611);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    int checked = 0;
    for (int round = 0; round < 40; ++round) {
        OptimizationRequest r;
        for (int j = 0; j < 6; ++j) {
            const double si = 5 + 40 * uniform(random), al = 1 + 12 * uniform(random),
                         fe = 0.5 + 5 * uniform(random);
            r.sources.push_back({QStringLiteral("G%1").arg(j), 200 + 800 * uniform(random),
                                 analysis({{Element::SiO2, static_cast<float>(si)},
                                           {Element::Al2O3, static_cast<float>(al)},
                                           {Element::Fe2O3, static_cast<float>(fe)},
                                           {Element::CaO, static_cast<float>(55 - si)},
                                           {Element::MgO, static_cast<float>(3 * uniform(random))}})});
        }
        r.mode = uniform(random) < 0.5 ? 1 : -1;
        r.element = elementIndex(Element::MgO);
        r.requestedTonnage = 1000;
        limit(r, SiO2, 12 + 4 * uniform(random), 18 + 6 * uniform(random));
        limit(r, elementIndex(Element::Al2O3), 2, 4 + 4 * uniform(random));
        const OptimizationOutcome base = OptimizationModel().run(r);
        if (!base.solved)
            continue;
        const Explanation e = explain(base);
        ASSERT_EQ(e.status, Explanation::Status::Optimal);
        const double f0 = objectiveOf(r, base);
        for (const UserLimit& l : ProgrammeProbe::limitsOf(OptimizationModel::problemOf(r))) {
            const auto listed = std::find_if(e.binding.begin(), e.binding.end(),
                                             [&l](const ExplainedLimit& x) { return x.limit == l; });
            const bool tonnes = l.kind != UserLimit::Kind::Maximum && l.kind != UserLimit::Kind::Minimum;
            const double step = listed != e.binding.end() ? listed->step
                                : tonnes                  ? 1.0
                                         : (l.kind == UserLimit::Kind::Maximum ? 0.01 : -0.01);
            auto moved = [&](double by) {
                OptimizationRequest m = r;
                const double value = ProgrammeProbe::valueOf(OptimizationModel::problemOf(r), l) + by;
                if (l.kind == UserLimit::Kind::Tonnage)
                    m.requestedTonnage = value;
                else if (l.kind == UserLimit::Kind::SourceTonnage)
                    m.sources[static_cast<std::size_t>(l.index)].tonnage = value;
                else
                    (l.kind == UserLimit::Kind::Maximum
                         ? m.constraints[static_cast<std::size_t>(l.index)].maximum
                         : m.constraints[static_cast<std::size_t>(l.index)].minimum) = value;
                const OptimizationOutcome o = OptimizationModel().run(m);
                return o.solved ? std::optional<double>(objectiveOf(m, o) - f0) : std::nullopt;
            };
            const std::optional<double> full = moved(step), half = moved(step / 2);
            if (!full || !half)
                continue;
            const double tolerance = 2e-3 * (1.0 + std::abs(*full));
            if (listed == e.binding.end()) {
                EXPECT_NEAR(*full, 0.0, tolerance) << "round " << round << ", limit not listed";
                continue;
            }
            ASSERT_TRUE(listed->marginal) << listed->name.toStdString();
            EXPECT_NEAR(*listed->marginal, *full, tolerance) << listed->name.toStdString();
            EXPECT_NEAR(*listed->marginal, 2 * *half, tolerance) << listed->name.toStdString();
            ++checked;
        }
    }
    EXPECT_GT(checked, 20);
}

BlendProblem unitProblem(int sources, double tonnage)
{
    BlendProblem p;
    for (int j = 0; j < sources; ++j)
        p.sources.push_back({QStringLiteral("S%1").arg(j),
                             1000.0,
                             analysis({{Element::SiO2, static_cast<float>(10 + j)}, {Element::CaO, 50}}),
                             SourceWeights::unit(),
                             std::nullopt,
                             {}});
    p.element = CaO;
    p.tonnage = tonnage;
    p.declaredRows = OptimizationModel::blendRowCount(p.mode, p.bounds.size(), p.sources.size());
    return p;
}

// Inputs an explanation cannot work from give a statement, never a made-up answer.
TEST(Explainer, StatesWhyNoExplanationCanBeGiven)
{
    const OptimizationModel model;
    struct Case {
        const char* what;
        BlendProblem problem;
        Explanation::Status status;
        const char* statement;
    };
    BlendProblem open = unitProblem(3, 100);
    open.mode = 2;
    open.sources[1].available.reset();
    open.declaredRows = OptimizationModel::blendRowCount(2, 0, 3) - 1;
    BlendProblem openObjective = unitProblem(3, 100);
    openObjective.mode = 1;
    // S2 stays out of the tonnage row and has no tonnage: its CaO is there for the taking.
    openObjective.tonnageWeights = {1.0, 1.0, 0.0};
    openObjective.sources[2].available.reset();
    std::vector<Case> cases = {
        {"one source", unitProblem(1, 100), Explanation::Status::NotExplained, "The run stopped before"},
        {"tonnage 0", unitProblem(3, 0), Explanation::Status::Optimal, "The requested tonnage is 0 t"},
        {"unbounded tonnage", open, Explanation::Status::Unbounded,
         "The problem is unbounded: the blend's tonnage can increase without limit (sources with no tonnage "
         "limit: S1)."},
        // The solver stops on the open ray, where it used to circle until its pivot limit.
        {"open objective", openObjective, Explanation::Status::Unbounded,
         "The problem is unbounded: the objective on CaO can increase without limit (sources with no "
         "tonnage limit: S2)."},
    };
    for (const Case& c : cases) {
        const Explanation e = Explainer(model).explain(model.run(c.problem), elementNames());
        EXPECT_EQ(e.status, c.status) << c.what;
        EXPECT_TRUE(e.statement.startsWith(QString::fromUtf8(c.statement)))
            << c.what << ": " << e.statement.toStdString();
        EXPECT_TRUE(e.conflict.empty() && e.binding.empty()) << c.what;
    }
}

// A hundred sources with every other element limited loosely around the conflicting pair: the work
// stays within its budget and finds the same pair with the same needed values.
TEST(Explainer, ManyLimitsAndSourcesStayBounded)
{
    const OptimizationRequest three = threeBlasts(1000, 10000);
    OptimizationRequest r = three;
    r.sources.clear();
    for (int j = 0; j < 100; ++j) {
        SourceRecord s = three.sources[static_cast<std::size_t>(j % 3)];
        s.name = QStringLiteral("S%1").arg(j, 3, 10, QLatin1Char('0'));
        for (int k = 0; k < kElementCount; ++k) {
            if (s.values[static_cast<std::size_t>(k)] == kMissing)
                s.values[static_cast<std::size_t>(k)] = 5.0f;
        }
        r.sources.push_back(s);
    }
    for (int k = 0; k < kElementCount; ++k) {
        if (k != elementIndex(Element::MS) && k != elementIndex(Element::MA))
            limit(r, k, 0, 100);
    }
    limit(r, SiO2, 0, 13);
    limit(r, LSF, 1, 5);
    const Explanation e = explain(OptimizationModel().run(r));
    ASSERT_EQ(e.status, Explanation::Status::Infeasible) << e.statement.toStdString();
    ASSERT_EQ(e.conflict.size(), 2u) << e.text().toStdString();
    EXPECT_EQ(e.conflict[0].name, "SiO2 maximum");
    EXPECT_NEAR(e.conflict[0].needed.value_or(0), 13.64, 1e-9);
    EXPECT_EQ(e.conflict[1].name, "LSF minimum");
    EXPECT_NEAR(e.conflict[1].needed.value_or(0), 0.96, 1e-9);
}

/// S0 (SiO2 10, CaO 50) and S1 (SiO2 20, CaO 40), bought as needed, 100 t at SiO2 <= `maximum`,
/// CaO maximised, with a kind's limits on the tonnes taken from one source.
BlendProblem takenProblem(double maximum, std::vector<LinearProgramme::Row> taken)
{
    OptimizationRequest r;
    r.sources = {{"S0", 0, analysis({{Element::SiO2, 10}, {Element::CaO, 50}})},
                 {"S1", 0, analysis({{Element::SiO2, 20}, {Element::CaO, 40}})}};
    r.element = CaO;
    r.requestedTonnage = 100;
    limit(r, SiO2, 0, maximum);
    BlendProblem p = OptimizationModel::problemOf(r);
    for (ModelSource& s : p.sources)
        s.available.reset();
    p.kindRows = std::move(taken);
    p.declaredRows.reset();
    return p;
}

LinearProgramme::Row takenRow(LinearProgramme::Role role, int source, double tonnes)
{
    std::vector<double> unit(2, 0.0);
    unit[static_cast<std::size_t>(source)] = 1.0;
    return {unit, tonnes,
            role == LinearProgramme::Role::TakenMaximum ? ClpSolve::kAtMost : ClpSolve::kAtLeast, role,
            source};
}

// SiO2 at most 13 over T t is S1 <= 0.3 T. At least 40 t of S1 wants SiO2 14 at 100 t, S1 at most 30 t,
// or T >= 133.33. At most 50 t of S0 leaves 50 t of S1: SiO2 15, S0 at least 70 t, or T <= 71.43.
TEST(Explainer, LimitsOnTheTonnesTakenAreNamedWithTheirNeededValues)
{
    using Role = LinearProgramme::Role;
    struct Case {
        const char* what;
        LinearProgramme::Row taken;
        std::vector<double> needed; ///< SiO2 maximum, requested tonnage, the limit on the tonnes taken
        const char* line;
    };
    const std::vector<Case> cases = {
        {"at least 40 t of S1",
         takenRow(Role::TakenMinimum, 1, 40),
         {14, 134, 30},
         "  Minimum tonnage of S1 40.00 t: lower it to 30.00 t\r\n"},
        {"at most 50 t of S0",
         takenRow(Role::TakenMaximum, 0, 50),
         {15, 71, 70},
         "  Maximum tonnage of S0 50.00 t: raise it to 70.00 t\r\n"},
    };
    const OptimizationModel model;
    for (const Case& c : cases) {
        const BlendProblem p = takenProblem(13, {c.taken});
        const OptimizationOutcome outcome = model.run(p);
        ASSERT_FALSE(outcome.solved) << c.what;
        const Explanation e = Explainer(model).explain(outcome, elementNames());
        ASSERT_EQ(e.conflict.size(), 3u) << c.what << "\n" << e.text().toStdString();
        EXPECT_TRUE(e.text().contains(c.line)) << c.what << "\n" << e.text().toStdString();
        for (std::size_t i = 0; i < 3; ++i) {
            const ExplainedLimit& l = e.conflict[i];
            ASSERT_TRUE(l.needed) << c.what << ": " << l.name.toStdString();
            EXPECT_NEAR(*l.needed, c.needed[i], 1e-9) << c.what << ": " << l.name.toStdString();
            // Moved to its needed value the limit lets a blend through; a step short of it does not.
            const double step = (l.limit.inTonnes() ? 1.0 : 0.01) * (*l.needed > l.current ? 1 : -1);
            EXPECT_TRUE(model.run(ProgrammeProbe::moved(p, l.limit, *l.needed)).solved)
                << c.what << ": " << l.name.toStdString();
            EXPECT_FALSE(model.run(ProgrammeProbe::moved(p, l.limit, *l.needed - step)).solved)
                << c.what << ": " << l.name.toStdString();
        }
    }

    // Binding: 80 t of S0 at most; each tonne more of it replaces one of S1, 10 more CaO.
    const OptimizationOutcome best = model.run(takenProblem(30, {takenRow(Role::TakenMaximum, 0, 80)}));
    ASSERT_TRUE(best.solved);
    const Explanation e = Explainer(model).explain(best, elementNames());
    ASSERT_EQ(e.binding.size(), 2u) << e.text().toStdString();
    EXPECT_EQ(e.binding[1].name, "Maximum tonnage of S0");
    EXPECT_TRUE(e.text().contains("  Maximum tonnage of S0 80.00 t: objective +10.00 per 1 t more\r\n"))
        << e.text().toStdString();
}

// 600 000.52 t of two blasts holding 300 000.3 t and 400 000 t: the classic method ends without an
// optimum on such a blend and the second method finds it. At most 14 SiO2 cannot hold: at least
// 300 000.22 t of the second blast give 14.9999993. Without the SiO2 limit the blend exists, found by
// the second method only: the limit belongs to the conflict. The fullest blend at 14: all of Big 4
// and 2/3 as much of Big 5, 500 000.5 t.
TEST(Explainer, ASubsetIsInfeasibleOnlyWhenTheSecondMethodAgrees)
{
    OptimizationRequest r;
    r.sources = {{"Big 4", 300000.3, analysis({{Element::SiO2, 10}, {Element::CaO, 50}})},
                 {"Big 5", 400000, analysis({{Element::SiO2, 20}, {Element::CaO, 40}})}};
    r.mode = -1;
    r.element = CaO;
    r.requestedTonnage = 600000.52;
    const OptimizationModel model;
    const OptimizationOutcome unlimited = model.run(r);
    ASSERT_TRUE(unlimited.solved);
    ASSERT_EQ(unlimited.method, OptimizationOutcome::Method::Second) << "the classic method finds it";

    limit(r, SiO2, 0, 14);
    const OptimizationOutcome outcome = model.run(r);
    ASSERT_FALSE(outcome.solved);
    const Explanation e = explain(outcome);
    ASSERT_EQ(e.status, Explanation::Status::Infeasible) << e.statement.toStdString();
    ASSERT_EQ(e.conflict.size(), 3u) << e.text().toStdString();
    EXPECT_EQ(e.conflict[0].name, "SiO2 maximum");
    EXPECT_NEAR(e.conflict[0].needed.value_or(0), 15.0, 1e-9);
    EXPECT_EQ(e.conflict[1].name, "Requested tonnage");
    EXPECT_NEAR(e.conflict[1].needed.value_or(0), 500000.0, 1e-9);
    EXPECT_EQ(e.conflict[2].name, "Tonnages of the sources");
    EXPECT_NEAR(e.missingTonnes.value_or(0), 100000.02, 1e-4);
    for (auto [maximum, solved] : {std::pair{15.0, true}, std::pair{14.99, false}}) {
        limit(r, SiO2, 0, maximum);
        EXPECT_EQ(solves(r), solved) << maximum;
    }
}

// A kind's row that follows the requested tonnage (as a clinker's coal heat does): all of the 500 t
// from S0, which holds 100 t. With the tonnage left out the row follows the blend's own tonnage, so
// the sources' tonnages alone do not conflict: the tonnage belongs to the set, lowered to 100 t.
TEST(Explainer, ARowFollowingTheTonnageKeepsTheTonnageInTheConflict)
{
    OptimizationRequest r;
    r.sources = {{"S0", 100, analysis({{Element::SiO2, 10}, {Element::CaO, 50}})},
                 {"S1", 1000, analysis({{Element::SiO2, 20}, {Element::CaO, 40}})}};
    r.element = CaO;
    r.requestedTonnage = 500;
    BlendProblem p = OptimizationModel::problemOf(r);
    p.tonnageKindRows = {0};
    p.kindRows = {{{1, 0}, 500, ClpSolve::kEqual}};
    p.declaredRows.reset();
    const OptimizationModel model;
    const OptimizationOutcome outcome = model.run(p);
    ASSERT_FALSE(outcome.solved);
    const Explanation e = Explainer(model).explain(outcome, elementNames());
    EXPECT_EQ(e.text(), "Why no blend was found\r\n\r\n"
                        "These limits cannot hold together:\r\n"
                        "  Requested tonnage 500.00 t: lower it to 100.00 t\r\n"
                        "  Tonnages of the sources 1100.00 t: 400.00 t missing; the fullest blend takes "
                        "all of S0\r\n"
                        "Any one of these changes, every other limit kept, makes a blend possible.\r\n");
}

// Generated quarries whose SiO2 and LSF maxima conflict. At 200 blasts the classic method misses the
// blends at the smallest maxima that hold and the second method finds them: each value proposed is
// one at which the optimisation itself finds a blend, and a step short of it finds none.
TEST(Explainer, NeededValuesOnGeneratedQuarriesAreWhereTheOptimisationFindsABlend)
{
    const OptimizationModel model;
    bool secondMethodOnly = false;
    for (int blasts : {20, 50, 200}) {
        const BlendProblem p = GeneratedQuarry::conflicting(blasts);
        const OptimizationOutcome outcome = model.run(p);
        ASSERT_FALSE(outcome.solved) << blasts;
        const Explanation e = Explainer(model).explain(outcome, elementNames());
        ASSERT_EQ(e.conflict.size(), 2u) << blasts << "\n" << e.text().toStdString();
        EXPECT_EQ(e.conflict[0].name, "SiO2 maximum");
        EXPECT_EQ(e.conflict[1].name, "LSF maximum");
        for (const ExplainedLimit& l : e.conflict) {
            ASSERT_TRUE(l.needed) << blasts << ' ' << l.name.toStdString();
            const OptimizationOutcome at = model.run(ProgrammeProbe::moved(p, l.limit, *l.needed));
            EXPECT_TRUE(at.solved) << blasts << ' ' << l.name.toStdString() << ' ' << *l.needed;
            secondMethodOnly = secondMethodOnly || at.method == OptimizationOutcome::Method::Second;
            EXPECT_FALSE(model.run(ProgrammeProbe::moved(p, l.limit, *l.needed - 0.01)).solved)
                << blasts << ' ' << l.name.toStdString() << ' ' << *l.needed;
        }
    }
    EXPECT_TRUE(secondMethodOnly) << "no needed value here is one the classic method misses";
}

} // namespace
} // namespace kilnova
