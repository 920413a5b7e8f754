#pragma once

namespace kilnova {

struct ChemEquationCoefficients;

// The eight derived quantities. Each returns -1 at the first unusable input (see the conditions in
// the implementation), never divides by zero and never clamps. Argument orders are part of the
// interface: callers pass analysis fields positionally. The overloads without coefficients use the
// program-wide set.

double ComputeMS(double SiO2, double Al2O3, double Fe2O3);
double ComputeMA(double Al2O3, double Fe2O3);
double ComputeLSF(double CaO, double SiO2, double Al2O3, double Fe2O3);
double ComputeC3S(double CaO, double FreeLime, double Al2O3, double Fe2O3, double SiO2);
double ComputeC2S(double CaO, double FreeLime, double SiO2, double Al2O3, double Fe2O3);
double ComputeC3A(double Al2O3, double Fe2O3);
double ComputeNaEq(double K2O, double Na2O);
double ComputeC4AF(double Fe2O3);

double ComputeLSF(const ChemEquationCoefficients& c, double CaO, double SiO2, double Al2O3, double Fe2O3);
double ComputeC3S(const ChemEquationCoefficients& c, double CaO, double FreeLime, double Al2O3, double Fe2O3,
                  double SiO2);
double ComputeC2S(const ChemEquationCoefficients& c, double CaO, double FreeLime, double SiO2, double Al2O3,
                  double Fe2O3);
double ComputeC3A(const ChemEquationCoefficients& c, double Al2O3, double Fe2O3);
double ComputeNaEq(const ChemEquationCoefficients& c, double K2O, double Na2O);
double ComputeC4AF(const ChemEquationCoefficients& c, double Fe2O3);

} // namespace kilnova

#include "chemistry/Elements.h"

namespace kilnova {

/// Sets MS, MA, LSF, C3S, C2S, C3A, NaEq and C4AF of an analysis from its oxides, in that order, each
/// rounded to single precision as it is stored. Everything that stores an analysis derives it here.
void computeDerivedQuantities(Analysis& analysis, double FreeLime = 0.0);

} // namespace kilnova
