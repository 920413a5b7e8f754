#pragma once

#include <cstddef>
#include <vector>

namespace kilnova {

/// A linear programme as the optimisation model builds it, before it is handed to the solver: the
/// sizes and row-kind counts given to Initialize, every row in row-number order and the objective.
/// Kept apart from the solver so that the rows each mode builds can be checked directly.
struct LinearProgramme {
    /// What a row stands for, so that a reader of the programme (a test, the explanation of an
    /// answer) can tell the user's limits from the rows the model adds.
    enum class Role {
        ElementMaximum,   ///< index: the element
        ElementMinimum,   ///< index: the element
        Target,           ///< index: the element
        SourceMinimum,    ///< index: the source
        SourceMaximum,    ///< index: the source
        Tonnage,          ///< the product tonnage
        RemainderMaximum, ///< index: the element, on what the sources leave behind
        RemainderMinimum, ///< index: the element, on what the sources leave behind
        KindRow,          ///< index: the kind's own row number, from 0
        TakenMaximum,     ///< index: the source; a kind's limit on the tonnes taken from it
        TakenMinimum,     ///< index: the source
        Unused,           ///< an empty row filling the declared count
    };

    struct Row {
        std::vector<double> coefficients; ///< one per source, in selection order; empty for a bound row
        double rhs = 0.0;
        int kind = 0; ///< 1 at most, 0 equality, -1 at least
        Role role = Role::KindRow;
        int index = -1;
        /// A bound row (x_j >= 0, x_j <= its tonnage) has the single coefficient 1, in this column
        /// (from 0): two such rows per source would otherwise hold n zeros each.
        int boundColumn = -1;

        /// The coefficients of every source, zeros included.
        std::vector<double> dense(int columns) const;
    };

    int rows = 0;
    int columns = 0;
    int sense = 1;
    int countAtLeast = 0;
    int countEqual = 0;
    int countAtMost = 0;
    /// Row number i + 1 is rowList[i]. A row numbered beyond `rows` is built but the solver refuses
    /// to store it (the tonnage row in Maximize Tonnage mode).
    std::vector<Row> rowList;
    std::vector<double> objective;

    /// Initialize and fill a solver (ClpSolve, or the second method, which takes the same calls);
    /// false when Initialize refuses the counts. Setter refusals are ignored, as the model expects.
    template <typename Solver> bool loadInto(Solver& solver) const;
};

template <typename Solver> bool LinearProgramme::loadInto(Solver& solver) const
{
    if (!solver.Initialize(rows, columns, sense, countAtLeast, countEqual, countAtMost))
        return false;
    for (std::size_t i = 0; i < rowList.size(); ++i) {
        const int row = static_cast<int>(i) + 1;
        const Row& r = rowList[i];
        if (r.boundColumn >= 0)
            solver.SetCoefficient(row, r.boundColumn + 1, 1.0);
        for (std::size_t j = 0; j < r.coefficients.size(); ++j)
            solver.SetCoefficient(row, static_cast<int>(j) + 1, r.coefficients[j]);
        solver.SetConstraint(row, r.rhs, r.kind);
    }
    for (std::size_t j = 0; j < objective.size(); ++j)
        solver.SetObjectiveCoefficient(static_cast<int>(j) + 1, objective[j]);
    return true;
}

} // namespace kilnova
