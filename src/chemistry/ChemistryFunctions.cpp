#include "chemistry/ChemistryFunctions.h"

#include "chemistry/ChemEquationCoefficients.h"

// Every function checks its inputs first and answers -1 at the first unusable one; the checks are
// deliberately not uniform (MS does not look at SiO2, LSF rejects only an exactly zero denominator),
// because stored records and reports depend on exactly these rules.

namespace kilnova {

namespace {
constexpr double kInvalid = -1.0;
double d(float v)
{
    return static_cast<double>(v);
}
} // namespace

double ComputeMS(double SiO2, double Al2O3, double Fe2O3)
{
    const double denominator = Al2O3 + Fe2O3;
    if (denominator <= 0 || Al2O3 < 0 || Fe2O3 < 0)
        return kInvalid;
    return SiO2 / denominator;
}

double ComputeMA(double Al2O3, double Fe2O3)
{
    if (Fe2O3 <= 0 || Al2O3 < 0)
        return kInvalid;
    return Al2O3 / Fe2O3;
}

double ComputeLSF(const ChemEquationCoefficients& c, double CaO, double SiO2, double Al2O3, double Fe2O3)
{
    const double denominator = d(c.LSFSiO2) * SiO2 + d(c.LSFAl2O3) * Al2O3 + d(c.LSFFe2O3) * Fe2O3;
    if (denominator == 0 || CaO < 0 || SiO2 < 0 || Al2O3 < 0 || Fe2O3 < 0)
        return kInvalid;
    return d(c.LSFCaO) * CaO / denominator;
}

double ComputeC3S(const ChemEquationCoefficients& c, double CaO, double FreeLime, double Al2O3, double Fe2O3,
                  double SiO2)
{
    if (CaO < 0 || Al2O3 < 0 || Fe2O3 < 0 || SiO2 < 0)
        return kInvalid;
    const double freeLime = c.C3SUseFreeLime ? FreeLime : 0.0;
    return d(c.C3SCaO) * (CaO - freeLime) + d(c.C3SAl2O3) * Al2O3 + d(c.C3SFe2O3) * Fe2O3 +
           d(c.C3SSiO2) * SiO2;
}

double ComputeC2S(const ChemEquationCoefficients& c, double CaO, double FreeLime, double SiO2, double Al2O3,
                  double Fe2O3)
{
    if (CaO < 0 || SiO2 < 0 || Al2O3 < 0 || Fe2O3 < 0)
        return kInvalid;
    const double freeLime = c.C2SUseFreeLime ? FreeLime : 0.0;
    return d(c.C2SCaO) * (CaO - freeLime) + d(c.C2SSiO2) * SiO2 + d(c.C2SAl2O3) * Al2O3 +
           d(c.C2SFe2O3) * Fe2O3;
}

double ComputeC3A(const ChemEquationCoefficients& c, double Al2O3, double Fe2O3)
{
    if (Al2O3 < 0 || Fe2O3 < 0)
        return kInvalid;
    return d(c.C3AAl2O3) * Al2O3 + d(c.C3AFe2O3) * Fe2O3;
}

double ComputeNaEq(const ChemEquationCoefficients& c, double K2O, double Na2O)
{
    if (K2O < 0 || Na2O < 0)
        return kInvalid;
    return d(c.NaEqK2O) * K2O + d(c.NaEqNa2O) * Na2O;
}

double ComputeC4AF(const ChemEquationCoefficients& c, double Fe2O3)
{
    if (Fe2O3 < 0)
        return kInvalid;
    return d(c.C4AFFe2O3) * Fe2O3;
}

double ComputeLSF(double CaO, double SiO2, double Al2O3, double Fe2O3)
{
    return ComputeLSF(chemCoefficients(), CaO, SiO2, Al2O3, Fe2O3);
}

double ComputeC3S(double CaO, double FreeLime, double Al2O3, double Fe2O3, double SiO2)
{
    return ComputeC3S(chemCoefficients(), CaO, FreeLime, Al2O3, Fe2O3, SiO2);
}

double ComputeC2S(double CaO, double FreeLime, double SiO2, double Al2O3, double Fe2O3)
{
    return ComputeC2S(chemCoefficients(), CaO, FreeLime, SiO2, Al2O3, Fe2O3);
}

double ComputeC3A(double Al2O3, double Fe2O3)
{
    return ComputeC3A(chemCoefficients(), Al2O3, Fe2O3);
}

double ComputeNaEq(double K2O, double Na2O)
{
    return ComputeNaEq(chemCoefficients(), K2O, Na2O);
}

double ComputeC4AF(double Fe2O3)
{
    return ComputeC4AF(chemCoefficients(), Fe2O3);
}

} // namespace kilnova

namespace kilnova {

void computeDerivedQuantities(Analysis& a, double FreeLime)
{
    auto v = [&a](Element e) {
        return static_cast<double>(a[static_cast<std::size_t>(elementIndex(e))]);
    };
    auto set = [&a](Element e, double value) {
        a[static_cast<std::size_t>(elementIndex(e))] = static_cast<float>(value);
    };
    const double SiO2 = v(Element::SiO2), Al2O3 = v(Element::Al2O3), Fe2O3 = v(Element::Fe2O3);
    const double CaO = v(Element::CaO), K2O = v(Element::K2O), Na2O = v(Element::Na2O);
    set(Element::MS, ComputeMS(SiO2, Al2O3, Fe2O3));
    set(Element::MA, ComputeMA(Al2O3, Fe2O3));
    set(Element::LSF, ComputeLSF(CaO, SiO2, Al2O3, Fe2O3));
    set(Element::C3S, ComputeC3S(CaO, FreeLime, Al2O3, Fe2O3, SiO2));
    set(Element::C2S, ComputeC2S(CaO, FreeLime, SiO2, Al2O3, Fe2O3));
    set(Element::C3A, ComputeC3A(Al2O3, Fe2O3));
    set(Element::NaEq, ComputeNaEq(K2O, Na2O));
    set(Element::C4AF, ComputeC4AF(Fe2O3));
}

} // namespace kilnova
