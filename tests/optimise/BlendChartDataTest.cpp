#include "optimise/BlendChartData.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "optimise/BlendProblem.h"
#include "optimise/ConstraintEntry.h"
#include "optimise/OptimizationModel.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

constexpr int kSiO2 = elementIndex(Element::SiO2);
constexpr int kCaO = elementIndex(Element::CaO);
constexpr int kMS = elementIndex(Element::MS);
constexpr int kLSF = elementIndex(Element::LSF);

void limit(OptimizationRequest& r, int element, double minimum, double maximum)
{
    r.constraints[static_cast<std::size_t>(element)] = {minimum, maximum, {}, 1};
}

std::array<double, kElementCount> blend(std::initializer_list<std::pair<int, double>> values)
{
    std::array<double, kElementCount> v{};
    v.fill(kMissing);
    for (auto [k, x] : values)
        v[static_cast<std::size_t>(k)] = x;
    return v;
}

TEST(BlendChartData, OneRowPerLimitAndTheOptimisedElementInElementOrder)
{
    OptimizationRequest r;
    r.mode = 0;
    r.element = kCaO;
    r.target = 43;
    limit(r, kMS, 2.2, 2.8);
    limit(r, kSiO2, 12.5, 14.5);
    r.constraints[static_cast<std::size_t>(kLSF)] = {0.9, 1.0, {}, 0}; // kept but not in force
    const BlendChartData chart =
        BlendChartData::of(r, blend({{kSiO2, 13.1}, {kCaO, 43}, {kMS, 2.45}}), 60000);

    EXPECT_EQ(chart.mode, 0);
    EXPECT_EQ(chart.tonnage, 60000);
    ASSERT_EQ(chart.rows.size(), 3u);
    const int expectedElements[] = {kSiO2, kCaO, kMS};
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(chart.rows[i].element, expectedElements[i]);

    const BlendChartData::Row& silica = chart.rows[0];
    ASSERT_TRUE(silica.band);
    EXPECT_EQ(*silica.band, (std::array<double, 2>{12.5, 14.5}));
    EXPECT_EQ(silica.value, 13.1);
    EXPECT_FALSE(silica.optimised);
    EXPECT_FALSE(silica.target);

    const BlendChartData::Row& lime = chart.rows[1];
    EXPECT_TRUE(lime.optimised);
    EXPECT_FALSE(lime.band) << "Target mode allows no constraint on the optimised element";
    ASSERT_TRUE(lime.target);
    EXPECT_EQ(*lime.target, 43.0);
    EXPECT_EQ(lime.binding, BlendChartData::Binding::None);
}

TEST(BlendChartData, TheTargetIsShownInTargetModeOnly)
{
    for (int mode : {-1, 1, 0, 2}) {
        OptimizationRequest r;
        r.mode = mode;
        r.element = kCaO;
        r.target = 45;
        const BlendChartData chart = BlendChartData::of(r, blend({{kCaO, 44}}), 1000);
        ASSERT_EQ(chart.rows.size(), 1u);
        EXPECT_EQ(chart.rows[0].target.has_value(), mode == 0) << "mode " << mode;
    }
}

TEST(BlendChartData, ALimitBindsWhenTheBlendSitsOnIt)
{
    struct Case {
        double minimum, maximum, value;
        BlendChartData::Binding binding;
    };
    using B = BlendChartData::Binding;
    const Case cases[] = {
        {12.5, 14.5, 14.5, B::Maximum},        {12.5, 14.5, 12.5, B::Minimum}, {12.5, 14.5, 13.0, B::None},
        {12.5, 14.5, 14.5 + 1e-6, B::Maximum}, // single-precision rows leave the blend a hair beyond
        {12.5, 14.5, 14.5 - 1e-3, B::None},    // a thousandth inside is not on the limit
        {14.5, 12.5, 12.5, B::Minimum},        // bounds typed the wrong way round
        {0.94, 1.0, 0.94 + 5e-6, B::Minimum},  // a small modulus: at least 1e-5 counts
        {0.94, 1.0, 0.94 + 5e-5, B::None},     {3.0, 3.0, 3.0, B::Maximum}, // a band of one value binds at
                                                                            // its upper end
    };
    for (const Case& c : cases) {
        OptimizationRequest r;
        r.mode = 1;
        r.element = kCaO;
        limit(r, kSiO2, c.minimum, c.maximum);
        const BlendChartData chart = BlendChartData::of(r, blend({{kSiO2, c.value}, {kCaO, 40}}), 1);
        ASSERT_EQ(chart.rows.size(), 2u);
        EXPECT_EQ(chart.rows[0].binding, c.binding) << c.minimum << ".." << c.maximum << " at " << c.value;
        EXPECT_LE((*chart.rows[0].band)[0], (*chart.rows[0].band)[1]);
    }
}

TEST(BlendChartData, ASolvedRunShowsTheLimitItPushedAgainst)
{
    // Minimising CaO pushes the silica-rich B as far as SiO2 <= 14 allows: 10 xA + 20 xB = 14 (xA + xB)
    // with xA + xB = 1000 gives xB = 400, and CaO = (600 * 50 + 400 * 40) / 1000 = 46.
    OptimizationRequest r;
    Analysis a = missingAnalysis(), b = missingAnalysis();
    a[kSiO2] = 10;
    a[kCaO] = 50;
    b[kSiO2] = 20;
    b[kCaO] = 40;
    r.sources = {{"A", 1000, a}, {"B", 1000, b}};
    r.mode = -1;
    r.element = kCaO;
    r.requestedTonnage = 1000;
    limit(r, kSiO2, 0, 14);
    const OptimizationOutcome outcome = OptimizationModel().run(r);
    ASSERT_TRUE(outcome.solved) << outcome.message.toStdString();

    const BlendChartData chart = BlendChartData::of(r, outcome, chemCoefficients());
    EXPECT_DOUBLE_EQ(chart.tonnage, 1000);
    ASSERT_EQ(chart.rows.size(), 2u);
    EXPECT_NEAR(chart.rows[0].value, 14.0, 1e-6);
    EXPECT_EQ(chart.rows[0].binding, BlendChartData::Binding::Maximum);
    EXPECT_NEAR(chart.rows[1].value, 46.0, 1e-6);
    EXPECT_TRUE(chart.rows[1].optimised);
    EXPECT_EQ(chart.rows[1].binding, BlendChartData::Binding::None);
}

TEST(BlendChartData, ElementRowsAreNamedAsTheReportsPrintThem)
{
    struct Case {
        Element element;
        const char* name;
        const char* unit;
    };
    const Case cases[] = {
        {Element::Titration, "Titration", "%"},
        {Element::SiO2, "SiO2", "%"},
        {Element::MS, "MS", ""},
        {Element::LSF, "LSF", ""},
        {Element::NaEq, "NaEq", "%"},
        {Element::CostFactor, "Cost Factor", ""},
        {Element::C4AF, "C4AF", "%"},
        {Element::Cl, "Cl", "%"},
    };
    for (const Case& c : cases) {
        OptimizationRequest r;
        r.mode = 1;
        r.element = elementIndex(c.element);
        const BlendChartData chart = BlendChartData::of(r, blend({}), 1);
        ASSERT_EQ(chart.rows.size(), 1u);
        const BlendChartData::Quantity& q = chart.rows[0].quantity;
        EXPECT_EQ(q.name, QString::fromLatin1(c.name));
        EXPECT_EQ(q.unit, QString::fromLatin1(c.unit)) << c.name;
        EXPECT_EQ(q.decimals, 2) << c.name;
    }
}

/// A property list longer than the elements' (a coal's 25) keeps its rows past the 22nd, named by
/// the kind, with the values the kind gives.
TEST(BlendChartData, AProblemOfItsOwnPropertiesIsChartedByItsOwnNames)
{
    BlendProblem p;
    p.layout.count = 25;
    p.mode = 0;
    p.element = 3;
    p.target = 7.5;
    p.bounds = {{24, 10, 20}, {0, 100, 200}};
    std::vector<double> values(25, 0.0);
    values[0] = 200;
    values[3] = 7.5;
    values[24] = 12;
    const BlendChartData chart = BlendChartData::of(p, values, 500, [](int k) {
        return BlendChartData::Quantity{QStringLiteral("P%1").arg(k), "u", 1};
    });
    ASSERT_EQ(chart.rows.size(), 3u);
    const int properties[] = {0, 3, 24};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(chart.rows[i].element, properties[i]);
        EXPECT_EQ(chart.rows[i].quantity.name, QStringLiteral("P%1").arg(properties[i]));
        EXPECT_EQ(chart.rows[i].quantity.decimals, 1);
        EXPECT_EQ(chart.rows[i].value, values[static_cast<std::size_t>(properties[i])]);
    }
    EXPECT_EQ(chart.rows[0].binding, BlendChartData::Binding::Maximum);
    ASSERT_TRUE(chart.rows[1].target);
    EXPECT_EQ(*chart.rows[1].target, 7.5);
    EXPECT_EQ(*chart.rows[2].band, (std::array<double, 2>{10, 20}));
    EXPECT_EQ(chart.rows[2].binding, BlendChartData::Binding::None);
}

} // namespace
} // namespace kilnova
