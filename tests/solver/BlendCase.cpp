#include "BlendCase.h"

#include "solver/ClpSolve.h"

namespace kilnova {

namespace {

// Lime saturation in percent: 100 CaO / (2.8 SiO2 + 1.18 Al2O3 + 0.65 Fe2O3).
constexpr double kLsfCaO = 100.0;
constexpr double kLsfSiO2 = 2.8;
constexpr double kLsfAl2O3 = 1.18;
constexpr double kLsfFe2O3 = 0.65;

} // namespace

std::vector<double> BlendCase::rowFor(int element, float bound) const
{
    // Coefficients are single precision, widened when stored.
    std::vector<double> row;
    for (const Source& s : sources) {
        const auto& v = s.values;
        const double k = bound;
        double c = 0.0;
        switch (element) {
        case MS:
            c = v[SiO2] - k * v[Al2O3] - k * v[Fe2O3];
            break;
        case MA:
            c = v[Al2O3] - k * v[Fe2O3];
            break;
        case LSF:
            c = kLsfCaO * v[CaO] - (kLsfFe2O3 * v[Fe2O3] + kLsfAl2O3 * v[Al2O3] + kLsfSiO2 * v[SiO2]) * k;
            break;
        default:
            c = v[static_cast<std::size_t>(element)] - k;
            break;
        }
        row.push_back(static_cast<float>(c));
    }
    return row;
}

SparseProblem BlendCase::sparseProgramme(int which) const
{
    const int sense = mode == Target ? (which == 1 ? -1 : 1) : mode;
    const int targetKind = which == 1 ? ClpSolve::kAtLeast : ClpSolve::kAtMost;
    const int n = static_cast<int>(sources.size());
    SparseProblem lp;
    lp.columns = n;
    lp.sense = sense;
    for (const Bound& b : bounds) {
        lp.addRow(rowFor(b.element, b.maximum), ClpSolve::kAtMost, 0.0);
        lp.addRow(rowFor(b.element, b.minimum), ClpSolve::kAtLeast, 0.0);
    }
    if (mode == Target)
        lp.addRow(rowFor(optimised, target), targetKind, 0.0);
    for (int j = 0; j < n; ++j) {
        lp.addRow(std::vector<SparseProblem::Entry>{{j, 1.0}}, ClpSolve::kAtLeast, 0.0);
        lp.addRow(std::vector<SparseProblem::Entry>{{j, 1.0}}, ClpSolve::kAtMost,
                  sources[static_cast<std::size_t>(j)].tonnage);
    }
    // In Maximize Tonnage mode the tonnage row falls beyond the programme and is lost.
    if (mode != MaximizeTonnage)
        lp.addRow(std::vector<double>(static_cast<std::size_t>(n), 1.0), ClpSolve::kEqual, requestedTonnage);

    if (mode == Target) {
        lp.objective = rowFor(optimised, target);
    } else {
        for (const Source& s : sources) {
            const auto& v = s.values;
            double c = v[static_cast<std::size_t>(optimised)];
            if (optimised == MS)
                c = v[SiO2];
            else if (optimised == MA)
                c = v[Al2O3];
            else if (optimised == LSF)
                c = kLsfCaO * v[CaO];
            lp.objective.push_back(static_cast<float>(c));
        }
    }
    return lp;
}

std::pair<LpProblem, LpProblem> BlendCase::programmes() const
{
    if (mode == Target)
        return {sparseProgramme(1).dense(), sparseProgramme(2).dense()};
    LpProblem lp = sparseProgramme(1).dense();
    return {lp, lp};
}

} // namespace kilnova
