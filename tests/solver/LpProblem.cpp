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

int SparseProblem::count(int kind) const
{
    return static_cast<int>(std::count(kinds.begin(), kinds.end(), kind));
}

void SparseProblem::addRow(const std::vector<double>& coefficients, int kind, double value)
{
    std::vector<Entry> entries;
    for (std::size_t j = 0; j < coefficients.size(); ++j)
        if (coefficients[j] != 0.0)
            entries.emplace_back(static_cast<int>(j), coefficients[j]);
    addRow(std::move(entries), kind, value);
}

void SparseProblem::addRow(std::vector<Entry> entries, int kind, double value)
{
    rows.push_back(std::move(entries));
    kinds.push_back(kind);
    rhs.push_back(value);
}

LpProblem SparseProblem::dense() const
{
    LpProblem p;
    p.columns = columns;
    p.sense = sense;
    p.objective = objective;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        std::vector<double> row(static_cast<std::size_t>(columns), 0.0);
        for (const auto& [j, a] : rows[i])
            row[static_cast<std::size_t>(j)] = a;
        p.addRow(std::move(row), kinds[i], rhs[i]);
    }
    return p;
}

double LpProblem::objectiveAt(const std::vector<double>& x) const
{
    double z = 0.0;
    for (std::size_t j = 0; j < x.size(); ++j)
        z += objective[j] * x[j];
    return z;
}

} // namespace kilnova
