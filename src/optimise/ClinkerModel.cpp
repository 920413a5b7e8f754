#include "optimise/ClinkerModel.h"

#include "common/MessageTable.h"
#include "optimise/ClinkerConversion.h"
#include "optimise/OptimizationSettings.h"
#include "solver/ClpSolve.h"

#include <algorithm>

namespace kilnova {

ClinkerModel::ClinkerModel(const ChemEquationCoefficients& coefficients)
    : mCoefficients(coefficients)
    , mModel(coefficients)
{
}

std::optional<QString> ClinkerModel::refusal(const ClinkerRequest& r)
{
    if (std::optional<QString> few =
            OptimizationSettings::sourceCountRefusal(static_cast<qsizetype>(r.sources.size())))
        return few;
    if (std::all_of(r.sources.begin(), r.sources.end(), [](const SOURCE& s) { return s.isCoal(); }))
        return message(Msg::ClinkerCoalAlone);
    if (!(r.requestedTonnage > 0.0))
        return message(Msg::ClinkerTonnageNeeded);
    if (!(r.process.FixedLOI < 100.0f))
        return message(Msg::ClinkerFixedLoiTooHigh);
    if (!(r.process.EnergyConsumptionFactor > 0.0f))
        return message(Msg::ClinkerEnergyFactorNeeded);
    for (const SOURCE& s : r.sources) {
        if (s.isCoal() && (s.ash < 0.0 || !(s.btu > 0.0)))
            return message(Msg::ClinkerCoalWithoutAshOrBtu, {s.name});
    }
    return std::nullopt;
}

int ClinkerModel::declaredRows(int constraints, int sources, bool coal, bool target, int tonnageLimits)
{
    return 2 * (constraints + sources) + 1 + (coal ? 2 : 0) + (target ? 1 : 0) + 2 * tonnageLimits;
}

BlendProblem ClinkerModel::problem(const ClinkerRequest& r) const
{
    const ClinkerConversion conversion(r.process);
    const std::size_t n = r.sources.size();
    BlendProblem p;
    p.mode = r.mode;
    p.element = r.element;
    p.target = r.target;
    p.tonnage = r.requestedTonnage;
    p.boundOffset[static_cast<std::size_t>(elementIndex(Element::C3S))] =
        static_cast<double>(mCoefficients.C3SCaO) * r.freeLime;
    p.boundOffset[static_cast<std::size_t>(elementIndex(Element::C2S))] =
        static_cast<double>(mCoefficients.C2SCaO) * r.freeLime;

    bool coal = false;
    std::vector<double> heat(n, 0.0);
    for (std::size_t j = 0; j < n; ++j) {
        const SOURCE& s = r.sources[j];
        ModelSource m{s.name, s.quantity, s.values, conversion.weights(s), std::nullopt};
        if (s.values[static_cast<std::size_t>(elementIndex(Element::LOI))] == -1.0f)
            m.refusal = message(Msg::ClinkerMissingLoi);
        p.sources.push_back(std::move(m));
        p.tonnageWeights.push_back(conversion.tonnageYield(s));
        heat[j] = conversion.heatShare(s);
        coal = coal || s.isCoal();
    }

    int enabled = 0;
    for (int k = 0; k < kElementCount; ++k) {
        const ConstraintEntry& c = r.constraints[static_cast<std::size_t>(k)];
        if (!c.isActive())
            continue;
        ++enabled;
        if (k != elementIndex(Element::LOI))
            p.bounds.push_back({k, c.minimum, c.maximum});
    }

    if (coal) {
        p.tonnageKindRows.push_back(p.kindRows.size());
        p.kindRows.push_back({heat, r.requestedTonnage, ClpSolve::kEqual});
    }
    int limits = 0;
    for (const ClinkerRequest::TonnageLimit& limit : r.tonnageLimits) {
        if (limit.source >= n)
            continue;
        std::vector<double> unit(n, 0.0);
        unit[limit.source] = 1.0;
        const int source = static_cast<int>(limit.source);
        p.kindRows.push_back(
            {unit, limit.maximum, ClpSolve::kAtMost, LinearProgramme::Role::TakenMaximum, source});
        p.kindRows.push_back(
            {unit, limit.minimum, ClpSolve::kAtLeast, LinearProgramme::Role::TakenMinimum, source});
        ++limits;
    }
    p.declaredRows = declaredRows(enabled, static_cast<int>(n), coal, r.mode == 0, limits);
    return p;
}

OptimizationOutcome ClinkerModel::run(const ClinkerRequest& r,
                                      const std::function<void(const ClpSolve&)>& beforeSolve) const
{
    if (std::optional<QString> refused = refusal(r)) {
        OptimizationOutcome outcome;
        outcome.message = *refused;
        return outcome;
    }
    return mModel.run(problem(r), beforeSolve);
}

} // namespace kilnova
