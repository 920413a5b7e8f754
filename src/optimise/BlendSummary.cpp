#include "optimise/BlendSummary.h"

#include "chemistry/ChemistryFunctions.h"
#include "optimise/OptimizationModel.h"

namespace kilnova {

BlendSummary BlendSummary::of(const OptimizationRequest& request, const OptimizationOutcome& outcome,
                              const ChemEquationCoefficients& c)
{
    BlendSummary blend;
    blend.tonnage = outcome.total();
    for (std::size_t j = 0; j < request.sources.size(); ++j) {
        if (!outcome.counts(j))
            continue;
        const double x = outcome.tonnes(j);
        for (std::size_t k = 0; k < kElementCount; ++k) {
            const double v = static_cast<double>(request.sources[j].values[k]);
            if (blend.values[k] == kMissing || v == kMissing)
                blend.values[k] = kMissing;
            else
                blend.values[k] += v * x;
        }
    }
    if (blend.tonnage == 0.0)
        return blend;

    auto& v = blend.values;
    auto value = [&v](Element e) -> double& {
        return v[static_cast<std::size_t>(elementIndex(e))];
    };
    for (int k = elementIndex(Element::Titration); k <= elementIndex(Element::P2O5); ++k) {
        if (v[static_cast<std::size_t>(k)] != kMissing)
            v[static_cast<std::size_t>(k)] /= blend.tonnage;
    }
    // Cl is averaged too, so that a stored blend holds a percentage (the blast report does not print it).
    for (Element e : {Element::CostFactor, Element::Cl}) {
        if (value(e) != kMissing)
            value(e) /= blend.tonnage;
    }

    const double SiO2 = value(Element::SiO2), Al2O3 = value(Element::Al2O3), Fe2O3 = value(Element::Fe2O3);
    const double CaO = value(Element::CaO);
    value(Element::MS) = ComputeMS(SiO2, Al2O3, Fe2O3);
    value(Element::MA) = ComputeMA(Al2O3, Fe2O3);
    value(Element::LSF) = ComputeLSF(c, CaO, SiO2, Al2O3, Fe2O3);
    value(Element::C3S) = ComputeC3S(c, CaO, 0.0, Al2O3, Fe2O3, SiO2);
    value(Element::C2S) = ComputeC2S(c, CaO, 0.0, SiO2, Al2O3, Fe2O3);
    value(Element::C3A) = ComputeC3A(c, Al2O3, Fe2O3);
    value(Element::NaEq) = ComputeNaEq(c, value(Element::K2O), value(Element::Na2O));
    value(Element::C4AF) = ComputeC4AF(c, Fe2O3);
    return blend;
}

} // namespace kilnova
