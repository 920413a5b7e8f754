#pragma once

#include "optimise/CoalSource.h"

#include <array>
#include <vector>

namespace kilnova {

struct ChemEquationCoefficients;

/// The coal mix an optimisation proposes: its tonnage, its 25 properties and its Cl. The fuel's own
/// values (BTU, Ash, Humidity, Volatiles, Sulfur, Cost Factor) are means weighted by the tonnes of
/// coal; the ash analysis and Cl are means weighted by the tonnes of ash each coal brings, so they
/// describe the mixed ash, and its moduli and phases are computed again from the mixed oxides (free
/// lime 0). A value that any coal taken lacks stays missing (-1); so does the whole ash analysis when
/// a coal taken lacks its Ash, or when the coals taken bring no ash at all.
struct CoalSummary {
    double tonnage = 0.0;
    std::array<double, kCoalPropertyCount> properties{};
    double Cl = kMissing;

    /// Over the coals and the tonnes taken of each (0 for a coal not taken).
    static CoalSummary of(const std::vector<CoalSource>& coals, const std::vector<double>& tonnes,
                          const ChemEquationCoefficients& coefficients);

    double value(CoalProperty p) const { return properties[static_cast<std::size_t>(coalPropertyIndex(p))]; }
};

} // namespace kilnova
