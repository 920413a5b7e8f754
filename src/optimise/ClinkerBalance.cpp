#include "optimise/ClinkerBalance.h"

#include "optimise/BlendSummary.h"
#include "optimise/ClinkerConversion.h"
#include "optimise/ClinkerModel.h"

#include <cmath>

namespace kilnova {

namespace {

constexpr std::size_t index(Element e)
{
    return static_cast<std::size_t>(elementIndex(e));
}

/// Adds tonnes × value to a sum that turns missing, and stays so, at the first missing value.
void accumulate(double& sum, double value, double tonnes)
{
    if (sum == kMissing || value == kMissing)
        sum = kMissing;
    else
        sum += value * tonnes;
}

double share(double part, double whole)
{
    return whole != 0.0 ? part / whole : 0.0;
}

} // namespace

bool ClinkerBalance::isDegenerate(double clinker, double requested)
{
    return std::abs(clinker - requested) / requested > kDegeneracyShare;
}

ClinkerBalance ClinkerBalance::of(const ClinkerRequest& r, const OptimizationOutcome& outcome,
                                  const ChemEquationCoefficients& c)
{
    const ClinkerConversion conversion(r.process);
    ClinkerBalance b;
    b.requested = r.requestedTonnage;
    b.clinkerOf.assign(r.sources.size(), 0.0);
    std::vector<const Analysis*> raw, coal;
    std::vector<double> rawTonnes, coalTonnes;
    double coalCost = 0.0;
    for (std::size_t j = 0; j < r.sources.size(); ++j) {
        const SOURCE& s = r.sources[j];
        const double x = outcome.tonnes(j);
        if (x == 0.0)
            continue;
        b.clinkerOf[j] = conversion.yield(s) * x;
        b.clinkerTonnage += b.clinkerOf[j];
        const std::array<double, kElementCount> phi = conversion.factors(s);
        for (std::size_t k = 0; k < kElementCount; ++k)
            accumulate(b.clinker[k], static_cast<double>(s.values[k]), phi[k] * x);
        const double cost = static_cast<double>(s.values[index(Element::CostFactor)]);
        if (s.isCoal()) {
            b.coalUsed = true;
            coal.push_back(&s.values);
            coalTonnes.push_back(x);
            accumulate(coalCost, cost, x);
        } else {
            raw.push_back(&s.values);
            rawTonnes.push_back(x);
            b.crudeTonnage += x;
            accumulate(b.crudeCost, cost, x);
        }
    }
    b.clinkerCost = b.crudeCost == kMissing || coalCost == kMissing ? kMissing : b.crudeCost + coalCost;

    for (int k = 0; k < kElementCount; ++k) {
        double& v = b.clinker[static_cast<std::size_t>(k)];
        if (v != kMissing)
            v = share(v, b.clinkerTonnage);
    }
    b.clinker[index(Element::Titration)] = kMissing;
    b.clinker[index(Element::LOI)] = static_cast<double>(r.process.FixedLOI);
    b.clinker[index(Element::CostFactor)] =
        b.clinkerCost == kMissing ? kMissing : share(b.clinkerCost, b.clinkerTonnage);
    BlendSummary::deriveFromOxides(b.clinker, c, r.freeLime);

    b.crude = BlendSummary::of(raw, rawTonnes, c).values;
    b.coal = BlendSummary::of(coal, coalTonnes, c).values;
    b.degenerated = isDegenerate(b.clinkerTonnage, b.requested);
    return b;
}

} // namespace kilnova
