#include "optimise/BlendChartData.h"

#include "optimise/BlendProblem.h"
#include "optimise/BlendSummary.h"
#include "optimise/OptimizationModel.h"

#include <algorithm>
#include <cmath>

namespace kilnova {

bool BlendChartData::reaches(double value, double limit)
{
    return std::abs(value - limit) <= 1e-5 * std::max(1.0, std::abs(limit));
}

BlendChartData BlendChartData::of(const OptimizationRequest& request,
                                  const std::array<double, kElementCount>& blendValues, double tonnage)
{
    return of(request.mode, request.element, request.target, request.constraints, blendValues, tonnage);
}

BlendChartData BlendChartData::of(int mode, int element, double target,
                                  const std::array<ConstraintEntry, kElementCount>& constraints,
                                  const std::array<double, kElementCount>& blendValues, double tonnage)
{
    BlendChartData chart;
    chart.mode = mode;
    chart.tonnage = tonnage;
    for (int k = 0; k < kElementCount; ++k) {
        const ConstraintEntry& c = constraints[static_cast<std::size_t>(k)];
        const bool optimised = k == element;
        if (!c.isActive() && !optimised)
            continue;
        Row row;
        row.element = k;
        row.optimised = optimised;
        row.value = blendValues[static_cast<std::size_t>(k)];
        if (c.isActive())
            row.band = std::array<double, 2>{std::min(c.minimum, c.maximum), std::max(c.minimum, c.maximum)};
        if (optimised && mode == 0)
            row.target = target;
        if (row.band && row.value != kMissing) {
            // A band of one value binds at both ends; it is shown as the upper one.
            if (reaches(row.value, (*row.band)[1]))
                row.binding = Binding::Maximum;
            else if (reaches(row.value, (*row.band)[0]))
                row.binding = Binding::Minimum;
        }
        chart.rows.push_back(row);
    }
    return chart;
}

BlendChartData BlendChartData::of(const BlendProblem& problem,
                                  const std::array<double, kElementCount>& blendValues, double tonnage)
{
    std::array<ConstraintEntry, kElementCount> constraints{};
    for (const ElementBound& b : problem.bounds)
        constraints[static_cast<std::size_t>(b.element)] = {b.minimum, b.maximum, {}, 1};
    return of(problem.mode, problem.element, problem.target, constraints, blendValues, tonnage);
}

BlendChartData BlendChartData::of(const OptimizationRequest& request, const OptimizationOutcome& outcome,
                                  const ChemEquationCoefficients& coefficients)
{
    const BlendSummary blend = BlendSummary::of(request, outcome, coefficients);
    return of(request, blend.values, blend.tonnage);
}

} // namespace kilnova
