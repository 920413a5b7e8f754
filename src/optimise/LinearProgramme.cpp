#include "optimise/LinearProgramme.h"

#include "solver/BoundedSimplex.h"
#include "solver/ClpSolve.h"

namespace kilnova {

namespace {

template <typename Solver> bool load(const LinearProgramme& lp, Solver& solver)
{
    if (!solver.Initialize(lp.rows, lp.columns, lp.sense, lp.countAtLeast, lp.countEqual, lp.countAtMost))
        return false;
    for (std::size_t i = 0; i < lp.rowList.size(); ++i) {
        const int row = static_cast<int>(i) + 1;
        const LinearProgramme::Row& r = lp.rowList[i];
        if (r.boundColumn >= 0)
            solver.SetCoefficient(row, r.boundColumn + 1, 1.0);
        for (std::size_t j = 0; j < r.coefficients.size(); ++j)
            solver.SetCoefficient(row, static_cast<int>(j) + 1, r.coefficients[j]);
        solver.SetConstraint(row, r.rhs, r.kind);
    }
    for (std::size_t j = 0; j < lp.objective.size(); ++j)
        solver.SetObjectiveCoefficient(static_cast<int>(j) + 1, lp.objective[j]);
    return true;
}

} // namespace

std::vector<double> LinearProgramme::Row::dense(int columns) const
{
    if (boundColumn < 0)
        return coefficients;
    std::vector<double> all(static_cast<std::size_t>(columns), 0.0);
    all.at(static_cast<std::size_t>(boundColumn)) = 1.0;
    return all;
}

bool LinearProgramme::loadInto(ClpSolve& solver) const
{
    return load(*this, solver);
}

bool LinearProgramme::loadInto(BoundedSimplex& solver) const
{
    return load(*this, solver);
}

} // namespace kilnova
