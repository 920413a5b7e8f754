#include "optimise/ClinkerConversion.h"

namespace kilnova {

namespace {

double at(const SOURCE& s, Element e)
{
    return static_cast<double>(s.values[static_cast<std::size_t>(elementIndex(e))]);
}

bool volatilesKnown(const SOURCE& s)
{
    return at(s, Element::SO3) != kMissing && at(s, Element::K2O) != kMissing &&
           at(s, Element::Na2O) != kMissing;
}

} // namespace

ClinkerConversion::ClinkerConversion(const ClinkerProcessParameters& p)
    : mFixedLoi(static_cast<double>(p.FixedLOI))
    , mRetainedSO3(static_cast<double>(p.SO3InClinker) / 100.0)
    , mRetainedK2O(static_cast<double>(p.K2OInClinker) / 100.0)
    , mRetainedNa2O(static_cast<double>(p.Na2OInClinker) / 100.0)
    , mAshRecovery(static_cast<double>(p.AshRecoveryFactor) / 100.0)
    , mEnergy(static_cast<double>(p.EnergyConsumptionFactor))
{
}

double ClinkerConversion::effectiveLoss(const SOURCE& s) const
{
    const double loi = at(s, Element::LOI);
    if (!volatilesKnown(s))
        return loi;
    return loi + (1.0 - mRetainedSO3) * at(s, Element::SO3) + (1.0 - mRetainedK2O) * at(s, Element::K2O) +
           (1.0 - mRetainedNa2O) * at(s, Element::Na2O);
}

double ClinkerConversion::yield(const SOURCE& s) const
{
    const double y = (1.0 - mFixedLoi / 100.0) * (100.0 - effectiveLoss(s)) / 100.0;
    return s.isCoal() ? mAshRecovery * (s.ash / 100.0) * y : y;
}

std::array<double, kElementCount> ClinkerConversion::factors(const SOURCE& s) const
{
    std::array<double, kElementCount> phi{};
    phi.fill(s.isCoal() ? s.ash / 100.0 : 1.0);
    phi[static_cast<std::size_t>(elementIndex(Element::SO3))] *= mRetainedSO3;
    phi[static_cast<std::size_t>(elementIndex(Element::K2O))] *= mRetainedK2O;
    phi[static_cast<std::size_t>(elementIndex(Element::Na2O))] *= mRetainedNa2O;
    return phi;
}

double ClinkerConversion::tonnageYield(const SOURCE& s) const
{
    const double loi = at(s, Element::LOI);
    double Y = 0.0;
    if (s.isCoal()) {
        Y = loi > 0 ? (s.ash / 100.0) * (100.0 - loi) / 100.0 * mAshRecovery : (s.ash / 100.0) * mAshRecovery;
    } else if (loi > 0) {
        Y = (100.0 - effectiveLoss(s)) / 100.0;
    } else if (!volatilesKnown(s)) {
        Y = 1.0;
    } else {
        Y = (100.0 -
             ((1.0 - mRetainedNa2O) * at(s, Element::Na2O) + (1.0 - mRetainedSO3) * at(s, Element::SO3) +
              (1.0 - mRetainedK2O) * at(s, Element::K2O))) /
            100.0;
    }
    return (1.0 - mFixedLoi / 100.0) * Y;
}

double ClinkerConversion::heatShare(const SOURCE& s) const
{
    return s.isCoal() ? s.btu * kKcalPerKgPerBtuPerLb / mEnergy : 0.0;
}

SourceWeights ClinkerConversion::weights(const SOURCE& s) const
{
    SourceWeights w = SourceWeights::conversion(yield(s), factors(s));
    if (s.isCoal()) {
        const std::size_t cost = static_cast<std::size_t>(elementIndex(Element::CostFactor));
        w.bound[cost] = 1.0;
        w.objective[cost] = 1.0;
    }
    return w;
}

} // namespace kilnova
