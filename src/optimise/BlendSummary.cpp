#include "optimise/BlendSummary.h"

#include "chemistry/ChemistryFunctions.h"
#include "optimise/OptimizationModel.h"

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
    BlendSummary blend;
    for (std::size_t j = 0; j < analyses.size() && j < tonnes.size(); ++j) {
        const double x = tonnes[j];
        if (x == 0.0)
            continue;
        blend.tonnage += x;
        for (std::size_t k = 0; k < kElementCount; ++k) {
            const double v = static_cast<double>((*analyses[j])[k]);
            if (blend.values[k] == kMissing || v == kMissing)
                blend.values[k] = kMissing;
            else
                blend.values[k] += v * x;
        }
    }
    if (blend.tonnage == 0.0)
        return blend;

    auto& v = blend.values;
    for (int k = elementIndex(Element::Titration); k <= elementIndex(Element::P2O5); ++k) {
        if (v[static_cast<std::size_t>(k)] != kMissing)
            v[static_cast<std::size_t>(k)] /= blend.tonnage;
    }
    // Cl is averaged too, so that a stored blend holds a percentage (the blast report does not print it).
    for (Element e : {Element::CostFactor, Element::Cl}) {
        double& value = v[static_cast<std::size_t>(elementIndex(e))];
        if (value != kMissing)
            value /= blend.tonnage;
    }
    deriveFromOxides(v, c, 0.0);
    return blend;
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
