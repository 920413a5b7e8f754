#include "optimise/CoalSummary.h"

#include "optimise/BlendSummary.h"

namespace kilnova {

CoalSummary CoalSummary::of(const std::vector<CoalSource>& coals, const std::vector<double>& tonnes,
                            const ChemEquationCoefficients& coefficients)
{
    CoalSummary mix;
    std::vector<std::vector<double>> values;
    for (const CoalSource& c : coals)
        values.emplace_back(c.properties.begin(), c.properties.end());
    const std::vector<double> means = BlendSummary::weightedMeans(values, tonnes, mix.tonnage);
    std::copy(means.begin(), means.end(), mix.properties.begin());

    // The ash analysis by the tonnes of ash: a coal without ash adds nothing to it.
    bool ashKnown = true;
    std::vector<Analysis> analyses;
    std::vector<double> ashTonnes;
    for (std::size_t j = 0; j < coals.size() && j < tonnes.size(); ++j) {
        const double ash = coals[j].value(CoalProperty::Ash);
        if (tonnes[j] != 0.0 && ash < 0.0)
            ashKnown = false;
        analyses.push_back(coals[j].ashAnalysis());
        ashTonnes.push_back(ash > 0.0 ? tonnes[j] * ash : 0.0);
    }
    std::vector<const Analysis*> pointers;
    for (const Analysis& a : analyses)
        pointers.push_back(&a);
    const BlendSummary ashMix = BlendSummary::of(pointers, ashTonnes, coefficients);
    ashKnown = ashKnown && ashMix.tonnage > 0.0;
    for (int k = 0; k < kCoalPropertyCount; ++k) {
        if (const std::optional<Element> e = CoalProperties::ashElement(k))
            mix.properties[static_cast<std::size_t>(k)] =
                ashKnown ? ashMix.values[static_cast<std::size_t>(elementIndex(*e))] : kMissing;
    }
    mix.Cl = ashKnown ? ashMix.values[static_cast<std::size_t>(elementIndex(Element::Cl))] : kMissing;
    return mix;
}

} // namespace kilnova
