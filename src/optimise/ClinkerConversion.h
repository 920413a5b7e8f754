#pragma once

#include "chemistry/ClinkerProcessParameters.h"
#include "optimise/BlendProblem.h"
#include "optimise/SOURCE.h"

#include <array>

namespace kilnova {

/// How the kiln turns a tonne of one source into clinker, from the seven process parameters (λ the
/// fixed LOI, r the SO3, K2O and Na2O retentions, ρ the ash recovery, E the energy factor):
///   - effective loss L = LOI + (1 − rSO3)·SO3 + (1 − rK2O)·K2O + (1 − rNa2O)·Na2O, or LOI alone when
///     SO3, K2O or Na2O is missing;
///   - yield y = (1 − λ/100)·(100 − L)/100 (the factor multiplies), for coal ρ·(A/100)·y;
///   - element factor φ = 1, for coal A/100 (only its ash enters the clinker), times the retention
///     for SO3, K2O and Na2O;
///   - the clinker tonnage row's own yield (1 − λ/100)·Y, where for coal Y = (A/100)·ρ·(100 − LOI)/100
///     (LOI > 0) or (A/100)·ρ, and for the others Y = (100 − L)/100 (LOI > 0), or with LOI ≤ 0 the
///     loss of the volatile SO3, K2O and Na2O alone (1 when one of them is missing): unlike y it
///     leaves the coal's volatile SO3, K2O and Na2O out;
///   - heat: a coal's BTU (per pound) is its heat per kilogram in KCal, BTU·5/9 (1 BTU/lb is 5/9
///     KCal/kg), the unit of E; it covers heat/E tonnes of clinker per tonne.
class ClinkerConversion final {
public:
    /// KCal per kilogram for one BTU per pound.
    static constexpr double kKcalPerKgPerBtuPerLb = 5.0 / 9.0;

    explicit ClinkerConversion(const ClinkerProcessParameters& process);

    double effectiveLoss(const SOURCE& s) const;
    double yield(const SOURCE& s) const;
    std::array<double, kElementCount> factors(const SOURCE& s) const;
    /// The coefficient of the source in the clinker tonnage row.
    double tonnageYield(const SOURCE& s) const;
    /// The coefficient of the source in the coal heat row (0 for a source that is not coal).
    double heatShare(const SOURCE& s) const;
    /// The weights the shared builder takes: value φ, bound y, objective y·φ; a coal's Cost Factor
    /// is bounded and optimised by the tonne of coal (bound and objective weight 1).
    SourceWeights weights(const SOURCE& s) const;

private:
    double mFixedLoi;
    double mRetainedSO3;
    double mRetainedK2O;
    double mRetainedNa2O;
    double mAshRecovery;
    double mEnergy;
};

} // namespace kilnova
