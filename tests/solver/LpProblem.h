#pragma once

#include <utility>
#include <vector>

namespace kilnova {

/// The pivot limit for test problems of a few dozen rows: a cycling one costs milliseconds, not
/// the seconds of the default (one that would still end after so long counts as cycling).
constexpr int kTestPivotLimit = 10000;

/// A linear programme as callers give it to ClpSolve: rows with a kind (1 at most, 0 equal,
/// -1 at least) and a right-hand side, a dense coefficient matrix by rows, an objective and a sense.
/// Indices here are 0-based; loadInto shifts them.
struct LpProblem {
    int columns = 0;
    int sense = 1;
    std::vector<std::vector<double>> rows;
    std::vector<double> rhs;
    std::vector<int> kinds;
    std::vector<double> objective;

    int rowCount() const { return static_cast<int>(rows.size()); }
    int count(int kind) const;
    void addRow(std::vector<double> coefficients, int kind, double value);

    /// Initialize and fill `solver` (any of the methods: they take the same calls) the way the
    /// optimisations do (every coefficient of each row, then its kind, then the objective); false if
    /// Initialize refused.
    template <typename Solver> bool loadInto(Solver& solver) const;
    /// c.x in the caller's terms.
    double objectiveAt(const std::vector<double>& x) const;
};

/// The same programme with only the non-zero coefficients of each row: what a blend of thousands
/// of sources is, whose dense rows would not fit in memory.
struct SparseProblem {
    using Entry = std::pair<int, double>; ///< column (from 0), coefficient

    int columns = 0;
    int sense = 1;
    std::vector<std::vector<Entry>> rows;
    std::vector<double> rhs;
    std::vector<int> kinds;
    std::vector<double> objective;

    int rowCount() const { return static_cast<int>(rows.size()); }
    int count(int kind) const;
    /// Adds a row, leaving out its zero coefficients.
    void addRow(const std::vector<double>& coefficients, int kind, double value);
    void addRow(std::vector<Entry> entries, int kind, double value);
    LpProblem dense() const;
};

template <typename Solver> bool LpProblem::loadInto(Solver& solver) const
{
    if (!solver.Initialize(rowCount(), columns, sense, count(-1), count(0), count(1)))
        return false;
    for (int i = 0; i < rowCount(); ++i) {
        const auto& row = rows[static_cast<std::size_t>(i)];
        for (int j = 0; j < columns; ++j)
            solver.SetCoefficient(i + 1, j + 1, row[static_cast<std::size_t>(j)]);
        solver.SetConstraint(i + 1, rhs[static_cast<std::size_t>(i)], kinds[static_cast<std::size_t>(i)]);
    }
    for (int j = 0; j < columns; ++j)
        solver.SetObjectiveCoefficient(j + 1, objective[static_cast<std::size_t>(j)]);
    return true;
}

} // namespace kilnova
