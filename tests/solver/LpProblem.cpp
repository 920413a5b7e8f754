#include "LpProblem.h"

#include "solver/BoundedSimplex.h"
#include "solver/ClpSolve.h"

#include <algorithm>
#include <utility>

namespace kilnova {

int LpProblem::count(int kind) const
{
    return static_cast<int>(std::count(kinds.begin(), kinds.end(), kind));
}

void LpProblem::addRow(std::vector<double> coefficients, int kind, double value)
{
    coefficients.resize(static_cast<std::size_t>(columns), 0.0);
    rows.push_back(std::move(coefficients));
    kinds.push_back(kind);
    rhs.push_back(value);
}

namespace {

template <typename Solver> bool load(const LpProblem& p, Solver& solver)
{
    if (!solver.Initialize(p.rowCount(), p.columns, p.sense, p.count(ClpSolve::kAtLeast),
                           p.count(ClpSolve::kEqual), p.count(ClpSolve::kAtMost)))
        return false;
    for (int i = 0; i < p.rowCount(); ++i) {
        for (int j = 0; j < p.columns; ++j)
            solver.SetCoefficient(i + 1, j + 1,
                                  p.rows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]);
        solver.SetConstraint(i + 1, p.rhs[static_cast<std::size_t>(i)], p.kinds[static_cast<std::size_t>(i)]);
    }
    for (int j = 0; j < p.columns; ++j)
        solver.SetObjectiveCoefficient(j + 1, p.objective[static_cast<std::size_t>(j)]);
    return true;
}

} // namespace

bool LpProblem::loadInto(ClpSolve& solver) const
{
    return load(*this, solver);
}

bool LpProblem::loadInto(BoundedSimplex& solver) const
{
    return load(*this, solver);
}

double LpProblem::objectiveAt(const std::vector<double>& x) const
{
    double z = 0.0;
    for (std::size_t j = 0; j < x.size(); ++j)
        z += objective[j] * x[j];
    return z;
}

} // namespace kilnova
