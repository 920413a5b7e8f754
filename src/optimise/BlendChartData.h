#pragma once

#include "chemistry/Elements.h"
#include "optimise/ConstraintEntry.h"

#include <QString>

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace kilnova {

struct BlendProblem;
struct ChemEquationCoefficients;
struct OptimizationOutcome;
struct OptimizationRequest;

/// What the blend chart shows of a solved optimisation, whatever its kind: one row per property that
/// has a limit, and one for the optimised property, in the kind's property order (the 22 elements, a
/// coal's 25 properties).
struct BlendChartData {
    /// Which end of a row's band the blend sits on.
    enum class Binding { None, Minimum, Maximum };

    /// How a row names its property and writes its values: as the kind's report does.
    struct Quantity {
        QString name;     ///< "CaO", "Cost Factor", "BTU"
        QString unit;     ///< "%", "BTU/lb"; empty for a ratio
        int decimals = 2; ///< of every value the row shows
    };
    /// The quantity of property k of a kind's list.
    using Naming = Quantity (*)(int property);

    struct Row {
        /// The property's index in its kind's list.
        int element = 0;
        Quantity quantity;
        bool optimised = false;
        /// The limits, lower first; none for an optimised property without a constraint.
        std::optional<std::array<double, 2>> band;
        /// The blend's value of the property (-1 when a source taken lacks it).
        double value = kMissing;
        /// The target, on the optimised property's row in Target mode.
        std::optional<double> target;
        Binding binding = Binding::None;
    };

    /// The mode of the run (-1 Minimize, 1 Maximize, 0 Target, 2 Maximize Tonnage).
    int mode = 1;
    double tonnage = 0.0;
    /// The chart's heading; empty for "Blend of T t".
    QString caption;
    std::vector<Row> rows;

    /// An element as the reports print it: "Cost Factor", "%" for the oxides, two decimals.
    static Quantity elementQuantity(int element);

    /// The chart of a blend whose values the optimisation kind computed (an LOI-free clinker, an
    /// ash-bearing coal blend…): the rows come from the request's constraints, mode and target.
    static BlendChartData of(const OptimizationRequest& request,
                             const std::array<double, kElementCount>& blendValues, double tonnage);
    /// The same from the parts of any kind's request: its mode, optimised property, target and one
    /// constraint and one blend value per property of its list.
    static BlendChartData of(int mode, int element, double target,
                             std::span<const ConstraintEntry> constraints,
                             std::span<const double> blendValues, double tonnage,
                             Naming naming = elementQuantity);
    /// The same from a problem of the shared builder: its mode, optimised property, target and bounds.
    static BlendChartData of(const BlendProblem& problem, std::span<const double> blendValues, double tonnage,
                             Naming naming = elementQuantity);
    /// The chart of a blend of the sources as taken (the blast and stockpile blends).
    static BlendChartData of(const OptimizationRequest& request, const OptimizationOutcome& outcome,
                             const ChemEquationCoefficients& coefficients);

    /// Whether a value sits on a limit, within what the solver's single-precision rows leave:
    /// 1e-5 of the limit's size, and at least 1e-5.
    static bool reaches(double value, double limit);
};

} // namespace kilnova
