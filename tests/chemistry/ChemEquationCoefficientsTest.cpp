#include "chemistry/ChemEquationCoefficients.h"
#include "chemistry/ClinkerProcessParameters.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

TEST(ChemEquationCoefficients, DisplaysDefaultEquationsExactly)
{
    // The cells hold floats: -3.0695 is stored as -3.06949997..., which prints as -3.069.
    EXPECT_EQ(ChemEquationCoefficients{}.equationsText(),
              "MS = %SiO2 / (%Al2O3 + %Fe2O3)\r\n"
              "MA = %Al2O3 / %Fe2O3\r\n"
              "LSF = 1.000 CaO / (2.800 %SiO2 + 1.100 %Al2O3 + 0.700 %Fe2O3)\r\n"
              "C3S = 4.071 (%CaO - FreeLime) + -6.718 %Al2O3 + -1.430 %Fe2O3 + -7.600 %SiO2\r\n"
              "C2S = -3.069 (%CaO - FreeLime) + 8.597 %SiO2 + 5.065 %Al2O3 + 1.078 %Fe2O3\r\n"
              "C3A = 2.650 %Al2O3 + -1.692 %Fe2O3\r\n"
              "C4AF = 3.040 %Fe2O3\r\n"
              "NaEq = 0.658 %K2O + 1.000 %Na2O\r\n");
}

TEST(ChemEquationCoefficients, DisplaysPlainCaOWhenFreeLimeIsOff)
{
    ChemEquationCoefficients c;
    c.C3SUseFreeLime = 0;
    c.C2SUseFreeLime = 0;
    c.LSFSiO2 = 2.8125f;
    const std::string text = c.equationsText();
    EXPECT_NE(text.find("C3S = 4.071 %CaO + -6.718 %Al2O3"), std::string::npos) << text;
    EXPECT_NE(text.find("C2S = -3.069 %CaO + 8.597 %SiO2"), std::string::npos) << text;
    // %.3f of 2.8125 rounds to even on the exact binary value.
    EXPECT_NE(text.find("LSF = 1.000 CaO / (2.812 %SiO2"), std::string::npos) << text;
}

TEST(ClinkerProcessParameters, DefaultsAndReportBlock)
{
    const ClinkerProcessParameters p;
    EXPECT_EQ(p.reportBlock(), "Clinker process parameters\r\n"
                               "        Fixed LOI of the clinker:    0.00%\r\n"
                               "        %Original SO3 in clinker:    100.00%\r\n"
                               "        %Original K2O in clinker:    100.00%\r\n"
                               "        %Original Na2O in clinker:    100.00%\r\n"
                               "        Clinker Energy Consumption Factor:  1500.00 KCal/Kg\r\n"
                               "        Clinker Ash Recovery Factor:    0.00%\r\n"
                               "        Free Lime in clinker:    0.00%\r\n\r\n");
}

} // namespace
} // namespace kilnova
