#pragma once

#include "chemistry/Elements.h"

#include <array>
#include <vector>

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
    /// The same over any sources: one analysis and the tonnes taken of it each; a source of 0 tonnes
    /// is not taken.
    static BlendSummary of(const std::vector<const Analysis*>& analyses, const std::vector<double>& tonnes,
                           const ChemEquationCoefficients& coefficients);

    /// Tonne-weighted means of any per-source values (one list per source, all of one length): a
    /// source of 0 tonnes is not taken, and a value that any source taken lacks (-1) stays missing.
    /// `total` receives the tonnes taken. Without any tonnes taken every mean is 0.
    static std::vector<double> weightedMeans(const std::vector<std::vector<double>>& values,
                                             const std::vector<double>& tonnes, double& total);

    /// Sets MS, MA, LSF, C3S, C2S, C3A, NaEq and C4AF from the oxides of `values` (each -1 where an
    /// oxide it needs is missing).
    static void deriveFromOxides(std::array<double, kElementCount>& values,
                                 const ChemEquationCoefficients& coefficients, double freeLime);
};

} // namespace kilnova
