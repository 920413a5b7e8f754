#pragma once

#include "chemistry/Elements.h"

#include <array>

namespace kilnova {

struct OptimizationOutcome;
struct OptimizationRequest;
struct ChemEquationCoefficients;

/// The blend an optimisation proposes: its tonnage and its 22 values. A value that any source taken
/// lacks stays missing (-1); the oxides, the cost factor and Cl are tonne-weighted means, and the moduli
/// and phases are computed again from the mean oxides (free lime 0).
struct BlendSummary {
    double tonnage = 0.0;
    std::array<double, kElementCount> values{};

    static BlendSummary of(const OptimizationRequest& request, const OptimizationOutcome& outcome,
                           const ChemEquationCoefficients& coefficients);
};

} // namespace kilnova
