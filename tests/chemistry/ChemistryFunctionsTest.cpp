#include "chemistry/ChemistryFunctions.h"
#include "chemistry/ChemEquationCoefficients.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kilnova {
namespace {

struct Oxides {
    double CaO, SiO2, Al2O3, Fe2O3, FreeLime;
};

struct Expected {
    double MS, MA, LSF, C3S, C2S, C3A, C4AF;
};

struct Case {
    std::string name;
    Oxides in;
    Expected out;
};

class DerivedQuantities : public testing::TestWithParam<Case> {};

TEST_P(DerivedQuantities, MatchHandWorkedValues)
{
    const ChemEquationCoefficients c; // defaults
    const auto& [name, in, out] = GetParam();
    EXPECT_NEAR(ComputeMS(in.SiO2, in.Al2O3, in.Fe2O3), out.MS, 1e-5);
    EXPECT_NEAR(ComputeMA(in.Al2O3, in.Fe2O3), out.MA, 1e-5);
    EXPECT_NEAR(ComputeLSF(c, in.CaO, in.SiO2, in.Al2O3, in.Fe2O3), out.LSF, 1e-5);
    EXPECT_NEAR(ComputeC3S(c, in.CaO, in.FreeLime, in.Al2O3, in.Fe2O3, in.SiO2), out.C3S, 1e-4);
    EXPECT_NEAR(ComputeC2S(c, in.CaO, in.FreeLime, in.SiO2, in.Al2O3, in.Fe2O3), out.C2S, 1e-4);
    EXPECT_NEAR(ComputeC3A(c, in.Al2O3, in.Fe2O3), out.C3A, 1e-5);
    EXPECT_NEAR(ComputeC4AF(c, in.Fe2O3), out.C4AF, 1e-5);
}

// Values worked by hand from the default coefficients.
INSTANTIATE_TEST_SUITE_P(
    Chemistry, DerivedQuantities,
    testing::Values(Case{"TypicalClinker",
                         {65, 21, 5, 3, 0},
                         {2.625, 5.0 / 3.0, 65.0 / 66.4, 67.13501, 9.58950, 8.174, 9.12}},
                    // Free lime 1.5 lowers C3S by 4.071*1.5 and raises C2S by 3.0695*1.5.
                    Case{"FreeLime",
                         {65, 21, 5, 3, 1.5},
                         {2.625, 5.0 / 3.0, 65.0 / 66.4, 61.02851, 14.19375, 8.174, 9.12}},
                    // Negative free lime is accepted and raises the CaO term.
                    Case{"NegativeFreeLime",
                         {65, 21, 5, 3, -1},
                         {2.625, 5.0 / 3.0, 65.0 / 66.4, 71.20601, 6.52000, 8.174, 9.12}},
                    // No alumina and no iron: both moduli missing, phases still computed.
                    Case{"NoAluminaNoIron", {50, 10, 0, 0, 0}, {-1, -1, 50.0 / 28.0, 127.55, -67.501, 0, 0}},
                    // Missing Fe2O3 makes everything that uses it missing.
                    Case{"MissingIron", {65, 21, 5, -1, 0}, {-1, -1, -1, -1, -1, -1, -1}},
                    // Missing SiO2 with valid alumina and iron: MS is -1/8, not -1; LSF is missing.
                    Case{"MissingSilica", {65, -1, 5, 3, 0}, {-0.125, 5.0 / 3.0, -1, -1, -1, 8.174, 9.12}},
                    // Low-lime material: C3S comes out negative and is not clamped.
                    Case{"IronOre",
                         {2, 8, 3, 80, 0},
                         {8.0 / 83.0, 3.0 / 80.0, 2.0 / 81.7, -187.212, 164.0924, -127.41, 243.2}}),
    [](const testing::TestParamInfo<Case>& info) { return info.param.name; });

TEST(Chemistry, FreeLimeFlagsSwitchEachFormulaAlone)
{
    ChemEquationCoefficients c;
    c.C3SUseFreeLime = 0;
    EXPECT_NEAR(ComputeC3S(c, 65, 1.5, 5, 3, 21), 67.13501, 1e-4);
    EXPECT_NEAR(ComputeC2S(c, 65, 1.5, 21, 5, 3), 14.19375, 1e-4);
    c.C3SUseFreeLime = 1;
    c.C2SUseFreeLime = 0;
    EXPECT_NEAR(ComputeC3S(c, 65, 1.5, 5, 3, 21), 61.02851, 1e-4);
    EXPECT_NEAR(ComputeC2S(c, 65, 1.5, 21, 5, 3), 9.58950, 1e-4);
}

TEST(Chemistry, CoefficientsAreWidenedFromSinglePrecision)
{
    // 3.04 is held as the float nearest to it; the product is that float times 3, not 9.12.
    EXPECT_EQ(ComputeC4AF(ChemEquationCoefficients{}, 3.0), static_cast<double>(3.04f) * 3.0);
    EXPECT_NE(ComputeC4AF(ChemEquationCoefficients{}, 3.0), 9.12);
    EXPECT_EQ(static_cast<double>(ChemEquationCoefficients{}.C2SAl2O3), 5.065400123596191);
    EXPECT_EQ(static_cast<double>(ChemEquationCoefficients{}.C3SSiO2), -7.599999904632568);
}

TEST(Chemistry, ReturnsMissingAtFirstUnusableInput)
{
    const ChemEquationCoefficients c;
    struct Row {
        const char* what;
        double got;
    };
    const std::vector<Row> rows = {
        {"MS negative alumina", ComputeMS(10, -1, 5)},
        {"MS zero denominator", ComputeMS(10, 0, 0)},
        {"MA zero iron", ComputeMA(5, 0)},
        {"MA negative alumina", ComputeMA(-1, 3)},
        {"LSF negative CaO", ComputeLSF(c, -1, 21, 5, 3)},
        {"LSF zero denominator", ComputeLSF(c, 65, 0, 0, 0)},
        {"C3A missing alumina", ComputeC3A(c, -1, 3)},
        {"NaEq missing K2O", ComputeNaEq(c, -1, 0.2)},
        {"NaEq missing Na2O", ComputeNaEq(c, 0.8, -1)},
        {"C4AF missing iron", ComputeC4AF(c, -1)},
        {"C2S missing CaO", ComputeC2S(c, -1, 0, 21, 5, 3)},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.got, -1.0) << row.what;
}

TEST(Chemistry, LsfAcceptsNegativeDenominatorFromNegativeCoefficients)
{
    ChemEquationCoefficients c;
    c.LSFSiO2 = -2.8f;
    c.LSFAl2O3 = 0;
    c.LSFFe2O3 = 0;
    EXPECT_NEAR(ComputeLSF(c, 56, 10, 5, 3), 56.0 / -28.0, 1e-5);
}

TEST(Chemistry, NaEqOfTypicalAlkalis)
{
    EXPECT_NEAR(ComputeNaEq(ChemEquationCoefficients{}, 0.8, 0.2), 0.7264, 1e-6);
}

TEST(Chemistry, ProgramWideSetDrivesTheShortOverloads)
{
    const ChemEquationCoefficients saved = chemCoefficients();
    chemCoefficients().C4AFFe2O3 = 2.0f;
    EXPECT_EQ(ComputeC4AF(3.0), 6.0);
    chemCoefficients() = saved;
    EXPECT_NEAR(ComputeC4AF(3.0), 9.12, 1e-5);
}

TEST(Chemistry, DerivedQuantitiesAreStoredInSinglePrecisionAndMissingIsContagious)
{
    Analysis a = missingAnalysis();
    a[elementIndex(Element::CaO)] = 65;
    a[elementIndex(Element::SiO2)] = 21;
    a[elementIndex(Element::Al2O3)] = 5;
    a[elementIndex(Element::Fe2O3)] = 3;
    a[elementIndex(Element::K2O)] = 0.8f;
    // Na2O left missing: NaEq must be missing, the rest computed.
    computeDerivedQuantities(a);
    EXPECT_EQ(a[elementIndex(Element::MS)], 2.625f);
    EXPECT_EQ(a[elementIndex(Element::LSF)], static_cast<float>(65.0 / 66.4));
    EXPECT_EQ(a[elementIndex(Element::NaEq)], -1.0f);
    EXPECT_EQ(a[elementIndex(Element::C4AF)], static_cast<float>(static_cast<double>(3.04f) * 3.0));
    // Measured columns are not touched.
    EXPECT_EQ(a[elementIndex(Element::MgO)], -1.0f);
    EXPECT_EQ(a[elementIndex(Element::CostFactor)], -1.0f);
}

} // namespace
} // namespace kilnova
