#include "optimise/LinearProgramme.h"

#include "solver/ClpSolve.h"

namespace kilnova {

bool LinearProgramme::loadInto(ClpSolve& solver) const
{
    if (!solver.Initialize(rows, columns, sense, countAtLeast, countEqual, countAtMost))
        return false;
    for (std::size_t i = 0; i < rowList.size(); ++i) {
        const int row = static_cast<int>(i) + 1;
        const Row& r = rowList[i];
        for (std::size_t j = 0; j < r.coefficients.size(); ++j)
            solver.SetCoefficient(row, static_cast<int>(j) + 1, r.coefficients[j]);
        solver.SetConstraint(row, r.rhs, r.kind);
    }
    for (std::size_t j = 0; j < objective.size(); ++j)
        solver.SetObjectiveCoefficient(static_cast<int>(j) + 1, objective[j]);
    return true;
}

} // namespace kilnova
