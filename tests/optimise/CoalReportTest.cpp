#include "optimise/CoalReport.h"
#include "CoalTestData.h"
#include "optimise/CoalSummary.h"
#include "optimise/OptimizationModel.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

constexpr int kCostFactor = coalPropertyIndex(CoalProperty::CostFactor);

TEST(CoalReport, MatchesTheHandWorkedReport)
{
    const std::vector<CoalSource> coals = test::twoCoals();
    OptimizationOutcome out;
    out.solved = true;
    out.values = {562.5, 437.5};
    const CoalSummary mix = CoalSummary::of(coals, {562.5, 437.5}, {});
    const QString report = CoalReport::build(coals, out, -1, kCostFactor, {"36.00 <= SiO2 <= 100.00"}, mix);
    // Fuel values by the tonne (0.5625 and 0.4375 of the mix): BTU 6750 + 6125; Ash 5.625 + 13.125;
    // Humidity 4.5 + 3.0625; Volatiles 18 + 8.75; Sulfur 0.5625 + 0.875; Cost Factor 50.625 + 26.25.
    // The ash by its tonnes: 10 * 562.5 = 5625 and 30 * 437.5 = 13125, so 0.3 and 0.7 of the ash:
    // SiO2 15 + 21, Al2O3 7.5 + 10.5, Fe2O3 3 + 14, CaO 1.5 + 14, MgO 0.6 + 2.1, LOI 0.3 + 1.4,
    // SO3 0.6 + 4.2, K2O 0.45 + 0.7, Na2O 0.15 + 1.05, TiO2 0.3 + 0.35, P2O5 0.075 + 0.525.
    // MS 36 / 35; MA 18 / 17; LSF 15.5 / (2.8 * 36 + 1.1 * 18 + 0.7 * 17) = 15.5 / 132.5;
    // C3S 4.071 * 15.5 - 7.6 * 36 - 6.718 * 18 - 1.43 * 17; C2S -3.0695 * 15.5 + 8.5974 * 36 +
    // 5.0654 * 18 + 1.0782 * 17; C3A 2.65 * 18 - 1.692 * 17; NaEq 0.658 * 1.15 + 1.2; C4AF 3.04 * 17.
    const QString expected =
        "Coal Optimization Results\r\n"
        "\r\n"
        "successfully minimized Cost Factor\r\n"
        "\r\n"
        "List of Constraints applied:\r\n"
        "36.00 <= SiO2 <= 100.00\r\n"
        "\r\n"
        "\r\n"
        "Optimized coal results\r\n"
        "\r\n"
        "     562.500000 tonnes of Coal C1 (56.25% of coal, 56.25% of mix)\r\n"
        "     437.500000 tonnes of Coal C2 (43.75% of coal, 43.75% of mix)\r\n"
        "Optimized tonnage:    1000.00\r\n"
        "        BTU   12875.00         Ash      18.75    Humidity       7.56   Volatiles      26.75\r\n"
        "     Sulfur       1.44 Cost Factor      76.88\r\n"
        "\r\n"
        "Chemical composition of the ash\r\n"
        "       SiO2      36.00       Al2O3      18.00       Fe2O3      17.00         CaO      15.50\r\n"
        "        MgO       2.70         LOI       1.70         SO3       4.80         K2O       1.15\r\n"
        "       Na2O       1.20        TiO2       0.65        P2O5       0.60          MS       1.03\r\n"
        "         MA       1.06         LSF       0.12         C3S    -355.73         C2S     371.44\r\n"
        "        C3A      18.94        NaEq       1.96        C4AF      51.68\r\n";
    EXPECT_EQ(report.toStdString(), expected.toStdString());
    EXPECT_NEAR(mix.Cl, 0.3 * 0.02 + 0.7 * 0.04, 1e-9) << "Cl counts by the ash, as the clinker reads it";
}

TEST(CoalReport, TheAshAnalysisFollowsTheAshOfTheCoalsTaken)
{
    constexpr std::size_t kSiO2 = coalPropertyIndex(CoalProperty::SiO2);
    constexpr std::size_t kAsh = coalPropertyIndex(CoalProperty::Ash);
    constexpr std::size_t kBTU = coalPropertyIndex(CoalProperty::BTU);
    struct Case {
        const char* what;
        std::function<void(std::vector<CoalSource>&)> change;
        std::vector<double> tonnes;
        double ash;
        double SiO2;
        double BTU;
    };
    const std::vector<Case> cases = {
        {"half and half: 35, not the tonne mean 40", [](auto&) {}, {500, 500}, 20, 35, 13000},
        {"a coal without ash adds nothing to the ash",
         [](auto& c) { c[1].properties[kAsh] = 0; },
         {500, 500},
         5,
         50,
         13000},
        {"a coal not taken lacks its ash: no matter",
         [](auto& c) { c[1].properties[kAsh] = -1; },
         {500, 0},
         10,
         50,
         12000},
        {"a coal taken lacks its ash: the whole ash analysis is missing",
         [](auto& c) { c[1].properties[kAsh] = -1; },
         {500, 500},
         -1,
         -1,
         13000},
        {"no ash at all",
         [](auto& c) { c[0].properties[kAsh] = c[1].properties[kAsh] = 0; },
         {500, 500},
         0,
         -1,
         13000},
        {"a missing oxide of a coal with no ash is left out",
         [](auto& c) {
             c[1].properties[kAsh] = 0;
             c[1].properties[kSiO2] = -1;
         },
         {500, 500},
         5,
         50,
         13000},
        {"a missing oxide of a coal with ash stays missing",
         [](auto& c) { c[1].properties[kSiO2] = -1; },
         {500, 500},
         20,
         -1,
         13000},
    };
    for (const Case& c : cases) {
        std::vector<CoalSource> coals = test::twoCoals();
        c.change(coals);
        const CoalSummary mix = CoalSummary::of(coals, c.tonnes, {});
        EXPECT_DOUBLE_EQ(mix.properties[kAsh], c.ash) << c.what;
        EXPECT_DOUBLE_EQ(mix.properties[kSiO2], c.SiO2) << c.what;
        EXPECT_DOUBLE_EQ(mix.properties[kBTU], c.BTU) << c.what;
        if (c.ash <= 0 && c.SiO2 == -1) {
            // Nothing of the ash is known: its moduli and phases neither.
            EXPECT_EQ(mix.value(CoalProperty::MS), -1) << c.what;
            EXPECT_EQ(mix.value(CoalProperty::C4AF), -1) << c.what;
            EXPECT_EQ(mix.Cl, -1) << c.what;
        }
    }
}

} // namespace
} // namespace kilnova
