#include "optimise/BlendSummary.h"

#include "chemistry/ChemistryFunctions.h"
#include "optimise/OptimizationModel.h"

#include <algorithm>

namespace kilnova {

BlendSummary BlendSummary::of(const OptimizationRequest& request, const OptimizationOutcome& outcome,
                              const ChemEquationCoefficients& c)
{
    std::vector<const Analysis*> analyses;
    std::vector<double> tonnes;
    for (std::size_t j = 0; j < request.sources.size(); ++j) {
        analyses.push_back(&request.sources[j].values);
        tonnes.push_back(outcome.tonnes(j));
    }
    return of(analyses, tonnes, c);
}

BlendSummary BlendSummary::of(const std::vector<const Analysis*>& analyses, const std::vector<double>& tonnes,
                              const ChemEquationCoefficients& c)
{
    std::vector<std::vector<double>> values;
    for (const Analysis* a : analyses)
        values.emplace_back(a->begin(), a->end());
    BlendSummary blend;
    const std::vector<double> means = weightedMeans(values, tonnes, blend.tonnage);
    if (blend.tonnage == 0.0)
        return blend;
    // Cl is averaged too, so that a stored blend holds a percentage (the blast report does not print it).
    std::copy(means.begin(), means.end(), blend.values.begin());
    deriveFromOxides(blend.values, c, 0.0);
    return blend;
}

std::vector<double> BlendSummary::weightedMeans(const std::vector<std::vector<double>>& values,
                                                const std::vector<double>& tonnes, double& total)
{
    total = 0.0;
    std::vector<double> sums(values.empty() ? 0 : values.front().size(), 0.0);
    for (std::size_t j = 0; j < values.size() && j < tonnes.size(); ++j) {
        const double x = tonnes[j];
        if (x == 0.0)
            continue;
        total += x;
        for (std::size_t k = 0; k < sums.size() && k < values[j].size(); ++k) {
            const double v = values[j][k];
            if (sums[k] == kMissing || v == kMissing)
                sums[k] = kMissing;
            else
                sums[k] += v * x;
        }
    }
    if (total == 0.0)
        return sums;
    for (double& sum : sums) {
        if (sum != kMissing)
            sum /= total;
    }
    return sums;
}

void BlendSummary::deriveFromOxides(std::array<double, kElementCount>& v, const ChemEquationCoefficients& c,
                                    double freeLime)
{
    auto value = [&v](Element e) -> double& {
        return v[static_cast<std::size_t>(elementIndex(e))];
    };
    const double SiO2 = value(Element::SiO2), Al2O3 = value(Element::Al2O3), Fe2O3 = value(Element::Fe2O3);
    const double CaO = value(Element::CaO);
    value(Element::MS) = ComputeMS(SiO2, Al2O3, Fe2O3);
    value(Element::MA) = ComputeMA(Al2O3, Fe2O3);
    value(Element::LSF) = ComputeLSF(c, CaO, SiO2, Al2O3, Fe2O3);
    value(Element::C3S) = ComputeC3S(c, CaO, freeLime, Al2O3, Fe2O3, SiO2);
    value(Element::C2S) = ComputeC2S(c, CaO, freeLime, SiO2, Al2O3, Fe2O3);
    value(Element::C3A) = ComputeC3A(c, Al2O3, Fe2O3);
    value(Element::NaEq) = ComputeNaEq(c, value(Element::K2O), value(Element::Na2O));
    value(Element::C4AF) = ComputeC4AF(c, Fe2O3);
}

} // namespace kilnova
