#include "optimise/StockpileReport.h"
#include "optimise/BlendProblem.h"
#include "optimise/OptimizationModel.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

Analysis analysis(float SiO2, float CaO, float cost)
{
    Analysis a = missingAnalysis();
    a[static_cast<std::size_t>(elementIndex(Element::SiO2))] = SiO2;
    a[static_cast<std::size_t>(elementIndex(Element::CaO))] = CaO;
    a[static_cast<std::size_t>(elementIndex(Element::CostFactor))] = cost;
    return a;
}

/// Two piles of 100 t and sand bought as needed. Only SiO2, CaO and the cost are measured, so every
/// other value of the crude and of what is left stays missing, and so do the derived ones.
BlendProblem problem()
{
    BlendProblem p;
    p.sources = {{"A (Quarry)", 100.0, analysis(10, 50, 2), SourceWeights::unit(), std::nullopt},
                 {"B (Bed)", 100.0, analysis(20, 40, 1), SourceWeights::unit(), std::nullopt},
                 {"Sand", std::nullopt, analysis(90, 1, 14), SourceWeights::unit(), std::nullopt}};
    p.mode = -1;
    p.element = elementIndex(Element::CostFactor);
    return p;
}

const std::vector<RecordKey> kKeys = {{"A", "Quarry"}, {"B", "Bed"}, {"Sand", {}}};

const char* const kHead = "Stockpile Optimization Results\r\n"
                          "\r\n"
                          "successfully minimized Cost Factor\r\n"
                          "\r\n"
                          "List of Constraints applied:\r\n"
                          "25.00 <= SiO2 <= 30.00\r\n"
                          "\r\n"
                          "\r\n";

TEST(StockpileReport, TakenSourcesTheCrudeAndWhatIsLeft)
{
    OptimizationOutcome out;
    out.solved = true;
    out.values = {50.0, 30.0, 20.0};
    const QString report = StockpileReport::build(problem(), kKeys, out, {"25.00 <= SiO2 <= 30.00"},
                                                  {"0.00 <= SiO2 <= 16.00"}, {});
    // Crude: SiO2 (500 + 600 + 1800) / 100, CaO (2500 + 1200 + 20) / 100, cost (100 + 30 + 280) / 100.
    // Left: A 50 t and B 70 t; SiO2 (500 + 1400) / 120, CaO (2500 + 2800) / 120, cost (100 + 70) / 120.
    const std::string expected =
        std::string(kHead) +
        "List of Constraints on material left in the stockpiles:\r\n"
        "0.00 <= SiO2 <= 16.00\r\n"
        "\r\n"
        "\r\n"
        "Optimized crude results\r\n"
        "\r\n"
        "      50.000000 tonnes of Stockpile A (Quarry) (50.00% of stockpile, 50.00% of mix)\r\n"
        "      30.000000 tonnes of Stockpile B (Bed) (30.00% of stockpile, 30.00% of mix)\r\n"
        "      20.000000 tonnes of Additive Sand (20.00% of mix)\r\n"
        "Optimized tonnage:     100.00\r\n"
        "  Titration      -1.00        SiO2      29.00       Al2O3      -1.00       Fe2O3      -1.00\r\n"
        "        CaO      37.20         MgO      -1.00         LOI      -1.00         SO3      -1.00\r\n"
        "        K2O      -1.00        Na2O      -1.00        TiO2      -1.00        P2O5      -1.00\r\n"
        "         MS      -1.00          MA      -1.00         LSF      -1.00         C3S      -1.00\r\n"
        "        C2S      -1.00         C3A      -1.00        NaEq      -1.00 Cost Factor       4.10\r\n"
        "       C4AF      -1.00\r\n"
        "\r\n"
        "Material left in the stockpiles\r\n"
        "\r\n"
        "Left tonnage:     120.00\r\n"
        "  Titration      -1.00        SiO2      15.83       Al2O3      -1.00       Fe2O3      -1.00\r\n"
        "        CaO      44.17         MgO      -1.00         LOI      -1.00         SO3      -1.00\r\n"
        "        K2O      -1.00        Na2O      -1.00        TiO2      -1.00        P2O5      -1.00\r\n"
        "         MS      -1.00          MA      -1.00         LSF      -1.00         C3S      -1.00\r\n"
        "        C2S      -1.00         C3A      -1.00        NaEq      -1.00 Cost Factor       1.42\r\n"
        "       C4AF      -1.00\r\n";
    EXPECT_EQ(report.toStdString(), expected);
}

TEST(StockpileReport, EverythingTakenLeavesNothingAndNothingToHold)
{
    struct Case {
        const char* name;
        std::vector<std::optional<double>> values;
        QStringList leftTexts;
        const char* ending;
    };
    const Case cases[] = {
        // A pile left with less than the smallest tonnage counts as emptied.
        {"limits hold trivially",
         {100.0, 99.996, 20.0},
         {"0.00 <= SiO2 <= 5.00"},
         "Nothing is left in the stockpiles: the limits on the material left hold trivially.\r\n"},
        {"no limits", {100.0, 100.0, std::nullopt}, {}, "Nothing is left in the stockpiles.\r\n"},
    };
    for (const Case& c : cases) {
        OptimizationOutcome out;
        out.solved = true;
        out.values = c.values;
        const QString report = StockpileReport::build(problem(), kKeys, out, {}, c.leftTexts, {});
        const QString tail = QStringLiteral("Material left in the stockpiles\r\n\r\n") + c.ending;
        EXPECT_TRUE(report.endsWith(tail)) << c.name << "\n" << report.toStdString();
        EXPECT_EQ(StockpileReport::left(problem(), out, {}).tonnage, 0.0) << c.name;
    }
}

TEST(StockpileReport, SourcesBelowTheSmallestTonnageAreNotListed)
{
    OptimizationOutcome out;
    out.solved = true;
    // B is basic at 0.004 t and the sand is not basic: neither is listed, and B counts as untouched.
    out.values = {100.0, 0.004, std::nullopt};
    BlendProblem p = problem();
    p.mode = 2;
    const QString report = StockpileReport::build(p, kKeys, out, {}, {}, {});
    EXPECT_TRUE(report.startsWith("Stockpile Optimization Results\r\n\r\nCost Factor\r\n\r\n"))
        << "Maximize Tonnage says nothing of how the element was optimised";
    EXPECT_TRUE(report.contains("     100.000000 tonnes of Stockpile A (Quarry) (100.00% of stockpile, "
                                "100.00% of mix)\r\nOptimized tonnage:     100.00\r\n"))
        << report.toStdString();
    EXPECT_FALSE(report.contains("Stockpile B"));
    EXPECT_FALSE(report.contains("Sand"));
    EXPECT_TRUE(report.contains("Left tonnage:     100.00\r\n  Titration      -1.00        SiO2      20.00"));
}

} // namespace
} // namespace kilnova
