#include "common/MessageTable.h"
#include "optimise/OptimizationModel.h"
#include "solver/ClpSolve.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using Role = LinearProgramme::Role;

Analysis analysis(std::initializer_list<std::pair<Element, float>> values)
{
    Analysis a = missingAnalysis();
    for (auto [e, v] : values)
        a[static_cast<std::size_t>(elementIndex(e))] = v;
    return a;
}

constexpr int kCaO = elementIndex(Element::CaO);
constexpr int kMS = elementIndex(Element::MS);
constexpr int kC3S = elementIndex(Element::C3S);

/// S1 counted tonne for tonne, 100 t (the stored MS is what the value checks look at); S2 bought as needed
/// (no upper row), three quarters of a product tonne per tonne with half of each element reaching the
/// product.
BlendProblem twoKinds()
{
    BlendProblem p;
    std::array<double, kElementCount> half{};
    half.fill(0.5);
    p.sources = {
        {"S1", 100.0,
         analysis({{Element::SiO2, 20},
                   {Element::Al2O3, 5},
                   {Element::Fe2O3, 3},
                   {Element::CaO, 60},
                   {Element::MS, 2.5f},
                   {Element::C3S, 58}}),
         SourceWeights::unit(), std::nullopt},
        {"S2", std::nullopt,
         analysis({{Element::SiO2, 10},
                   {Element::Al2O3, 2},
                   {Element::Fe2O3, 1},
                   {Element::CaO, 40},
                   {Element::MS, 3.33f},
                   {Element::C3S, 40}}),
         SourceWeights::conversion(0.75, half), std::nullopt},
    };
    p.mode = 1;
    p.element = kCaO;
    p.bounds = {{kCaO, 50, 55}, {kMS, 2, 3}, {kC3S, 50, 60}};
    p.boundOffset[kC3S] = 1.5;
    p.tonnageWeights = {1.0, 0.75};
    p.tonnage = 30;
    p.kindRows = {{{0, 1}, 8, ClpSolve::kAtMost}};
    return p;
}

TEST(BlendProblem, RowsCarryEachSourcesWeights)
{
    const OptimizationModel model;
    BlendProblem p = twoKinds();
    p.declaredRows = 14;
    const LinearProgramme lp = model.build(p, 1);
    struct Expected {
        std::vector<double> coefficients;
        double rhs;
        int kind;
        Role role;
        int index;
    };
    // CaO: 60 - b against 40 * 0.5 - b * 0.75. MS on the oxides, each halved for S2:
    // 10 * 0.5 - b * 2 * 0.5 - b * 1 * 0.5. C3S with the offset on the bound: v * phi - (1.5 + b) * y.
    const std::vector<Expected> expected = {
        {{5, -21.25}, 0, 1, Role::ElementMaximum, kCaO},
        {{10, -17.5}, 0, -1, Role::ElementMinimum, kCaO},
        {{-4, 0.5}, 0, 1, Role::ElementMaximum, kMS},
        {{4, 2}, 0, -1, Role::ElementMinimum, kMS},
        {{-3.5, -26.125}, 0, 1, Role::ElementMaximum, kC3S},
        {{6.5, -18.625}, 0, -1, Role::ElementMinimum, kC3S},
        {{1, 0}, 0, -1, Role::SourceMinimum, 0},
        {{1, 0}, 100, 1, Role::SourceMaximum, 0},
        {{0, 1}, 0, -1, Role::SourceMinimum, 1}, // no upper row: bought as needed
        {{1, 0.75}, 30, 0, Role::Tonnage, -1},
        {{0, 1}, 8, 1, Role::KindRow, 0},
        {{0, 0}, 0, 0, Role::Unused, -1},
        {{0, 0}, 0, 0, Role::Unused, -1},
        {{0, 0}, 0, 0, Role::Unused, -1},
    };
    ASSERT_EQ(lp.rowList.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(lp.rowList[i].dense(2), expected[i].coefficients) << i;
        EXPECT_EQ(lp.rowList[i].rhs, expected[i].rhs) << i;
        EXPECT_EQ(lp.rowList[i].kind, expected[i].kind) << i;
        EXPECT_EQ(lp.rowList[i].role, expected[i].role) << i;
        EXPECT_EQ(lp.rowList[i].index, expected[i].index) << i;
    }
    EXPECT_EQ(lp.rows, 14);
    EXPECT_EQ((std::array{lp.countAtLeast, lp.countEqual, lp.countAtMost}), (std::array{5, 4, 5}));
    EXPECT_EQ(lp.sense, 1);
    // Objective: the value times y * phi; a ratio's numerator as it stands.
    EXPECT_EQ(lp.objective, (std::vector<double>{60, 15}));
    p.element = kMS;
    EXPECT_EQ(model.build(p, 1).objective, (std::vector<double>{20, 10}));
    p.element = kC3S;
    EXPECT_EQ(model.build(p, 1).objective, (std::vector<double>{59.5, 16.5})) << "58 + 1.5, 40 * 0.375 + 1.5";
}

TEST(BlendProblem, TargetRowAndObjectiveAreTheWeightedDeviation)
{
    const OptimizationModel model;
    BlendProblem p = twoKinds();
    p.mode = 0;
    p.target = 52;
    p.bounds.clear();
    for (int programme : {1, 2}) {
        const LinearProgramme lp = model.build(p, programme);
        ASSERT_GE(lp.rowList.size(), 1u);
        EXPECT_EQ(lp.rowList[0].role, Role::Target);
        // 60 - 52 against 40 * 0.5 - 52 * 0.75.
        EXPECT_EQ(lp.rowList[0].coefficients, (std::vector<double>{8, -19}));
        EXPECT_EQ(lp.rowList[0].kind, programme == 1 ? ClpSolve::kAtLeast : ClpSolve::kAtMost);
        EXPECT_EQ(lp.objective, (std::vector<double>{8, -19}));
        EXPECT_EQ(lp.sense, programme == 1 ? -1 : 1);
        EXPECT_EQ(lp.rows, static_cast<int>(lp.rowList.size())) << "nothing declared: the rows built";
    }
}

TEST(BlendProblem, RefusalsFollowTheRowsThenTheSources)
{
    const OptimizationModel model;
    const QString missing1 = message(Msg::MissingValueInSource, {"S1"});
    const QString missing2 = message(Msg::MissingValueInSource, {"S2"});
    struct Case {
        const char* what;
        std::function<void(BlendProblem&)> change;
        QString refusal;
    };
    const std::vector<Case> cases = {
        {"nothing lacking", [](BlendProblem&) {}, QString()},
        {"a source's own refusal", [](BlendProblem& p) { p.sources[1].refusal = "no LOI"; }, "no LOI"},
        {"the first row's element before a later source's refusal",
         [](BlendProblem& p) {
             p.sources[0].values[kCaO] = -1;
             p.sources[1].refusal = "no LOI";
         },
         missing1},
        {"a refusal met before a later row's missing element",
         [](BlendProblem& p) {
             p.sources[0].refusal = "no LOI";
             p.sources[1].values[kC3S] = -1;
         },
         "no LOI"},
        {"the element before the same source's refusal",
         [](BlendProblem& p) {
             p.sources[1].values[kCaO] = -1;
             p.sources[1].refusal = "no LOI";
         },
         missing2},
        {"the objective's element after the bounds",
         [](BlendProblem& p) {
             p.element = elementIndex(Element::TiO2);
             p.sources[0].values[kC3S] = -1;
         },
         missing1},
        {"an element nobody asks for",
         [](BlendProblem& p) { p.sources[0].values[elementIndex(Element::Cl)] = -1; }, QString()},
        {"a missing tonnage last", [](BlendProblem& p) { p.sources[0].available = -1.0; }, missing1},
    };
    for (const Case& c : cases) {
        BlendProblem p = twoKinds();
        c.change(p);
        EXPECT_EQ(model.refusal(p).value_or(QString()), c.refusal) << c.what;
    }
}

TEST(BlendProblem, SolvesWithTheKindsRowsAndWithoutAnUpperRow)
{
    const OptimizationModel model;
    BlendProblem p = twoKinds();
    p.bounds.clear();
    p.mode = -1;
    p.declaredRows = 7; // two empty rows more than built
    // Minimise 60 x1 + 15 x2 with x1 + 0.75 x2 = 30 and x2 <= 8: x2 = 8, x1 = 24.
    const OptimizationOutcome out = model.run(p);
    ASSERT_TRUE(out.solved) << out.message.toStdString();
    EXPECT_NEAR(out.tonnes(0), 24, 1e-5);
    EXPECT_NEAR(out.tonnes(1), 8, 1e-5);
}

/// A kind with its own properties: a heat value and a share first, then an analysis of the share
/// (SiO2, Al2O3, Fe2O3) and its silica modulus; the analysis counts by the share, the heat by the tonne.
BlendProblem ownProperties()
{
    BlendProblem p;
    p.layout.count = 6;
    p.layout.SiO2 = 2;
    p.layout.Al2O3 = 3;
    p.layout.Fe2O3 = 4;
    p.layout.MS = 5;
    p.layout.MA = p.layout.LSF = p.layout.CaO = -1;
    p.boundOffset.clear();
    auto source = [](const char* name, std::vector<float> values) {
        ModelSource s{name, 100.0, PropertyValues(std::move(values)), SourceWeights::unit(6), {}, {}};
        for (std::size_t k = 2; k < 6; ++k)
            s.weights.value[k] = s.weights.bound[k] = s.weights.objective[k] = s.values[1];
        return s;
    };
    p.sources = {source("C1", {6000, 10, 50, 25, 10, 1.43f}), source("C2", {7000, 20, 40, 20, 20, 1.0f})};
    p.mode = -1;
    p.tonnage = 50;
    return p;
}

TEST(BlendProblem, AKindsOwnPropertiesPlaceTheRatiosWhereItsLayoutSays)
{
    const OptimizationModel model;
    BlendProblem p = ownProperties();
    p.bounds = {{0, 6200, 6800}, {5, 1.2, 1.6}, {2, 42, 48}};
    const LinearProgramme lp = model.build(p, 1);
    // Heat by the tonne: 6000 - b, 7000 - b. MS on the share: 10 * (50 - b * 25 - b * 10) against
    // 20 * (40 - b * 20 - b * 20). SiO2 on the share: 10 * (50 - b) against 20 * (40 - b).
    const std::vector<std::vector<double>> expected = {
        {-800, 200}, {-200, 800}, {-60, -480}, {80, -160}, {20, -160}, {80, -40},
    };
    ASSERT_GE(lp.rowList.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(lp.rowList[i].coefficients, expected[i]) << i;
    EXPECT_EQ(lp.rowList[6].role, Role::SourceMinimum);

    struct Objective {
        int property;
        bool weightedRatio;
        std::vector<double> coefficients;
    };
    const std::vector<Objective> objectives = {
        {0, false, {6000, 7000}},
        {2, false, {500, 800}}, // an analysis value counts by the share either way
        {5, false, {50, 40}},   // the ratio's numerator as it stands
        {5, true, {500, 800}},  // or by the share, as the analysis counts
    };
    for (const Objective& o : objectives) {
        p.element = o.property;
        p.layout.weightedRatioObjective = o.weightedRatio;
        EXPECT_EQ(model.build(p, 1).objective, o.coefficients) << o.property << " " << o.weightedRatio;
    }
}

TEST(BlendProblem, APropertysOwnRefusalComesWithItsRows)
{
    const OptimizationModel model;
    const QString missing2 = message(Msg::MissingValueInSource, {"C2"});
    struct Case {
        const char* what;
        std::vector<ElementBound> bounds;
        int element;
        QString refusal;
    };
    const std::vector<Case> cases = {
        {"only the heat asked for", {{0, 6000, 7000}}, 0, QString()},
        {"the analysis under a bound", {{0, 6000, 7000}, {3, 0, 30}}, 0, "C1 has no share"},
        {"the analysis optimised", {}, 2, "C1 has no share"},
        {"a missing value met first", {{4, 0, 30}, {3, 0, 30}}, 0, missing2},
    };
    for (const Case& c : cases) {
        BlendProblem p = ownProperties();
        p.sources[0].propertyRefusals.assign(4, QString("C1 has no share"));
        p.sources[0].propertyRefusals[0].reset();
        p.sources[0].propertyRefusals[1].reset();
        p.sources[1].values[4] = -1;
        p.bounds = c.bounds;
        p.element = c.element;
        EXPECT_EQ(model.refusal(p).value_or(QString()), c.refusal) << c.what;
    }
}

} // namespace
} // namespace kilnova
