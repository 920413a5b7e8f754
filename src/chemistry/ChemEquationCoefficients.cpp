#include "chemistry/ChemEquationCoefficients.h"

#include <cstdio>

namespace kilnova {

namespace {

template <typename... Args> std::string line(const char* format, Args... args)
{
    char buffer[256];
    std::snprintf(buffer, sizeof buffer, format, args...);
    return buffer;
}

} // namespace

std::string ChemEquationCoefficients::equationsText() const
{
    // Widened to double as printf's varargs would do anyway; written out to keep -Wdouble-promotion quiet.
    auto d = [](float v) {
        return static_cast<double>(v);
    };
    std::string text = "MS = %SiO2 / (%Al2O3 + %Fe2O3)\r\n";
    text += "MA = %Al2O3 / %Fe2O3\r\n";
    text += line("LSF = %.3f CaO / (%.3f %%SiO2 + %.3f %%Al2O3 + %.3f %%Fe2O3)\r\n", d(LSFCaO), d(LSFSiO2),
                 d(LSFAl2O3), d(LSFFe2O3));
    text +=
        line(C3SUseFreeLime ? "C3S = %.3f (%%CaO - FreeLime) + %.3f %%Al2O3 + %.3f %%Fe2O3 + %.3f %%SiO2\r\n"
                            : "C3S = %.3f %%CaO + %.3f %%Al2O3 + %.3f %%Fe2O3 + %.3f %%SiO2\r\n",
             d(C3SCaO), d(C3SAl2O3), d(C3SFe2O3), d(C3SSiO2));
    text +=
        line(C2SUseFreeLime ? "C2S = %.3f (%%CaO - FreeLime) + %.3f %%SiO2 + %.3f %%Al2O3 + %.3f %%Fe2O3\r\n"
                            : "C2S = %.3f %%CaO + %.3f %%SiO2 + %.3f %%Al2O3 + %.3f %%Fe2O3\r\n",
             d(C2SCaO), d(C2SSiO2), d(C2SAl2O3), d(C2SFe2O3));
    text += line("C3A = %.3f %%Al2O3 + %.3f %%Fe2O3\r\n", d(C3AAl2O3), d(C3AFe2O3));
    text += line("C4AF = %.3f %%Fe2O3\r\n", d(C4AFFe2O3));
    text += line("NaEq = %.3f %%K2O + %.3f %%Na2O\r\n", d(NaEqK2O), d(NaEqNa2O));
    return text;
}

ChemEquationCoefficients& chemCoefficients()
{
    static ChemEquationCoefficients coefficients;
    return coefficients;
}

float& ClinkerFreeLime()
{
    static float freeLime = 0.0f;
    return freeLime;
}

} // namespace kilnova
