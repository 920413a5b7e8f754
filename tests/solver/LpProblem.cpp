#include "LpProblem.h"

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

double LpProblem::objectiveAt(const std::vector<double>& x) const
{
    double z = 0.0;
    for (std::size_t j = 0; j < x.size(); ++j)
        z += objective[j] * x[j];
    return z;
}

} // namespace kilnova
