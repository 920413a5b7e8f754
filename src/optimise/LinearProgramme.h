#pragma once

#include <vector>

namespace kilnova {

class ClpSolve;

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
        Unused,           ///< an empty row filling the declared count
    };

    struct Row {
        std::vector<double> coefficients; ///< one per source, in selection order
        double rhs = 0.0;
        int kind = 0; ///< 1 at most, 0 equality, -1 at least
        Role role = Role::KindRow;
        int index = -1;
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
    /// ignored, as the model expects.
    bool loadInto(ClpSolve& solver) const;
};

} // namespace kilnova
