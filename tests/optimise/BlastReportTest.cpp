#include "optimise/BlastReport.h"
#include "optimise/BlendSummary.h"
#include "optimise/OptimizationModel.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

Analysis limestone()
{
    //             Titr SiO2 Al2O3 Fe2O3 CaO MgO LOI SO3   K2O   Na2O  TiO2  P2O5  MS MA LSF C3S C2S C3A NaEq
    //             Cost C4AF Cl
    return Analysis{90,    10, 2, 1, 50, 1, 36, 0.1f, 0.2f, 0.05f, 0.1f,
                    0.05f, 9,  9, 9, 9,  9, 9,  9,    2,    9,     0.01f};
}

Analysis marl()
{
    // Cl not measured: the report does not print Cl, so nothing shows it.
    return Analysis{70, 20, 6, 3, 40, 2, 28, 0.3f, 0.6f, 0.15f, 0.3f, 0.1f, 9, 9, 9, 9, 9, 9, 9, 1, 9, -1};
}

OptimizationRequest request()
{
    OptimizationRequest r;
    r.sources = {{"B1", 1000, limestone()}, {"B2", 1000, marl()}, {"B3", 500, marl()}};
    r.mode = 1;
    r.element = elementIndex(Element::CaO);
    return r;
}

TEST(BlastReport, MatchesTheHandWorkedReport)
{
    OptimizationRequest r = request();
    OptimizationOutcome out;
    out.solved = true;
    // B3 is basic but at 0.004 t: neither listed nor counted.
    out.values = {800.0, 200.0, 0.004};
    const QString report =
        BlastReport::build(r, out, {"12.00 <= SiO2 <= 15.00"}, BlendSummary::of(r, out, {}));
    // Mix by hand: 0.8 limestone + 0.2 marl; MS = 12 / 4.2; LSF = 48 / (2.8*12 + 1.1*2.8 + 0.7*1.4);
    // C3S = 4.071*48 - 6.718*2.8 - 1.43*1.4 - 7.6*12; C2S = -3.0695*48 + 8.5974*12 + 5.0654*2.8 + 1.0782*1.4.
    const QString expected =
        "Blast Optimization Results\r\n"
        "\r\n"
        "successfully maximized CaO\r\n"
        "\r\n"
        "List of Constraints applied:\r\n"
        "12.00 <= SiO2 <= 15.00\r\n"
        "\r\n"
        "\r\n"
        "Optimized blast results\r\n"
        "\r\n"
        "     800.000000 tonnes of Blast B1 (80.00% of blast, 80.00% of mix)\r\n"
        "     200.000000 tonnes of Blast B2 (20.00% of blast, 20.00% of mix)\r\n"
        "Optimized tonnage:    1000.00\r\n"
        "  Titration      86.00        SiO2      12.00       Al2O3       2.80       Fe2O3       1.40\r\n"
        "        CaO      48.00         MgO       1.20         LOI      34.40         SO3       0.14\r\n"
        "        K2O       0.28        Na2O       0.07        TiO2       0.14        P2O5       0.06\r\n"
        "         MS       2.86          MA       2.00         LSF       1.27         C3S      83.40\r\n"
        "        C2S     -28.47         C3A       5.05        NaEq       0.25 Cost Factor       1.80\r\n"
        "       C4AF       4.26\r\n";
    EXPECT_EQ(report.toStdString(), expected.toStdString());
}

TEST(BlastReport, MissingValuesStayMissingAndLongNamesAreCut)
{
    OptimizationRequest r = request();
    r.sources[1].values[static_cast<std::size_t>(elementIndex(Element::MgO))] = -1;
    OptimizationOutcome out;
    out.values = {500.0, 500.0, std::nullopt};
    const BlendSummary blend = BlendSummary::of(r, out, {});
    EXPECT_EQ(blend.values[static_cast<std::size_t>(elementIndex(Element::MgO))], -1.0);
    EXPECT_EQ(blend.values[static_cast<std::size_t>(elementIndex(Element::Cl))], -1.0);
    EXPECT_DOUBLE_EQ(blend.values[static_cast<std::size_t>(elementIndex(Element::SiO2))], 15.0);
    const QString mix = BlastReport::mixCharacteristics(blend);
    EXPECT_TRUE(mix.contains("        MgO      -1.00 ")) << mix.toStdString();
}

TEST(BlastReport, NothingTakenPrintsNoTonnageLine)
{
    OptimizationRequest r = request();
    OptimizationOutcome out;
    out.values = {0.001, std::nullopt, std::nullopt};
    const QString report = BlastReport::build(r, out, {}, BlendSummary::of(r, out, {}));
    EXPECT_FALSE(report.contains("Optimized tonnage")) << report.toStdString();
    EXPECT_TRUE(report.contains("Optimized blast results\r\n\r\n  Titration       0.00"))
        << report.toStdString();
}

} // namespace
} // namespace kilnova
