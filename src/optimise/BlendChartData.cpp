#include "optimise/BlendChartData.h"

#include "optimise/BlendProblem.h"
#include "optimise/BlendSummary.h"
#include "optimise/OptimizationModel.h"
#include "optimise/ReportLines.h"

#include <algorithm>
#include <cmath>

namespace kilnova {

bool BlendChartData::reaches(double value, double limit)
{
    return std::abs(value - limit) <= 1e-5 * std::max(1.0, std::abs(limit));
}

BlendChartData::Quantity BlendChartData::elementQuantity(int element)
{
    return {QString::fromLatin1(elementDisplayName(element).data()),
            QString::fromLatin1(elementUnit(element).data()), ReportLines::kDecimals};
}

BlendChartData BlendChartData::of(const OptimizationRequest& request,
                                  const std::array<double, kElementCount>& blendValues, double tonnage)
{
    return of(request.mode, request.element, request.target, request.constraints, blendValues, tonnage);
}

BlendChartData BlendChartData::of(int mode, int element, double target,
                                  std::span<const ConstraintEntry> constraints,
                                  std::span<const double> blendValues, double tonnage, Naming naming)
{
    BlendChartData chart;
    chart.mode = mode;
    chart.tonnage = tonnage;
    for (std::size_t i = 0; i < constraints.size(); ++i) {
        const int k = static_cast<int>(i);
        const ConstraintEntry& c = constraints[i];
        const bool optimised = k == element;
        if (!c.isActive() && !optimised)
            continue;
        Row row;
        row.element = k;
        row.quantity = naming(k);
        row.optimised = optimised;
        row.value = i < blendValues.size() ? blendValues[i] : kMissing;
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

BlendChartData BlendChartData::of(const BlendProblem& problem, std::span<const double> blendValues,
                                  double tonnage, Naming naming)
{
    std::vector<ConstraintEntry> constraints(static_cast<std::size_t>(problem.layout.count));
    for (const ElementBound& b : problem.bounds)
        constraints.at(static_cast<std::size_t>(b.element)) = {b.minimum, b.maximum, {}, 1};
    return of(problem.mode, problem.element, problem.target, constraints, blendValues, tonnage, naming);
}

BlendChartData BlendChartData::of(const OptimizationRequest& request, const OptimizationOutcome& outcome,
                                  const ChemEquationCoefficients& coefficients)
{
    const BlendSummary blend = BlendSummary::of(request, outcome, coefficients);
    return of(request, blend.values, blend.tonnage);
}

} // namespace kilnova
