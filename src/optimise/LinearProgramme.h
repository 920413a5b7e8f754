#pragma once

#include <vector>

namespace kilnova {

class BoundedSimplex;
class ClpSolve;

/// A linear programme as the optimisation model builds it, before it is handed to the solver: the
/// sizes and row-kind counts given to Initialize, every row in row-number order and the objective.
/// Kept apart from the solver so that the rows each mode builds can be checked directly.
struct LinearProgramme {
    struct Row {
        std::vector<double> coefficients; ///< one per source, in selection order; empty for a bound row
        double rhs = 0.0;
        int kind = 0; ///< 1 at most, 0 equality, -1 at least
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

    /// Initialize and fill a solver; false when Initialize refuses the counts. Setter refusals are
    /// ignored, as the model expects. Both methods take the same calls.
    bool loadInto(ClpSolve& solver) const;
    bool loadInto(BoundedSimplex& solver) const;
};

} // namespace kilnova
