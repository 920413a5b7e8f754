#pragma once

#include "chemistry/Elements.h"
#include "optimise/ConstraintEntry.h"

#include <array>
#include <optional>
#include <vector>

namespace kilnova {

struct BlendProblem;
struct ChemEquationCoefficients;
struct OptimizationOutcome;
struct OptimizationRequest;

/// What the blend chart shows of a solved optimisation, whatever its kind: one row per element that
/// has a limit, and one for the optimised element, in element order.
struct BlendChartData {
    /// Which end of a row's band the blend sits on.
    enum class Binding { None, Minimum, Maximum };

    struct Row {
        int element = 0;
        bool optimised = false;
        /// The limits, lower first; none for an optimised element without a constraint.
        std::optional<std::array<double, 2>> band;
        /// The blend's value of the element (-1 when a source taken lacks it).
        double value = kMissing;
        /// The target, on the optimised element's row in Target mode.
        std::optional<double> target;
        Binding binding = Binding::None;
    };

    /// The mode of the run (-1 Minimize, 1 Maximize, 0 Target, 2 Maximize Tonnage).
    int mode = 1;
    double tonnage = 0.0;
    std::vector<Row> rows;

    /// The chart of a blend whose values the optimisation kind computed (an LOI-free clinker, an
    /// ash-bearing coal blend…): the rows come from the request's constraints, mode and target.
    static BlendChartData of(const OptimizationRequest& request,
                             const std::array<double, kElementCount>& blendValues, double tonnage);
    /// The same from the parts of any kind's request: its mode, optimised element, target and limits.
    static BlendChartData of(int mode, int element, double target,
                             const std::array<ConstraintEntry, kElementCount>& constraints,
                             const std::array<double, kElementCount>& blendValues, double tonnage);
    /// The same from a problem of the shared builder: its mode, optimised element, target and bounds.
    static BlendChartData of(const BlendProblem& problem,
                             const std::array<double, kElementCount>& blendValues, double tonnage);
    /// The chart of a blend of the sources as taken (the blast and stockpile blends).
    static BlendChartData of(const OptimizationRequest& request, const OptimizationOutcome& outcome,
                             const ChemEquationCoefficients& coefficients);

    /// Whether a value sits on a limit, within what the solver's single-precision rows leave:
    /// 1e-5 of the limit's size, and at least 1e-5.
    static bool reaches(double value, double limit);
};

} // namespace kilnova
