#pragma once

#include "LpProblem.h"

#include <vector>

namespace kilnova::bench {

/// A problem in the peers' own input formats, prepared once outside the timed loop so that their
/// load time is only the library call.
struct PreparedProblem {
    int rows = 0;
    int columns = 0;
    bool minimise = false;
    // Column-major matrix for CLP.
    std::vector<int> columnStart;
    std::vector<int> rowIndex;
    std::vector<double> value;
    // 1-based triplets for GLPK (slot 0 unused).
    std::vector<int> tripletRow;
    std::vector<int> tripletColumn;
    std::vector<double> tripletValue;
    std::vector<double> objective;
    std::vector<double> rowLower;
    std::vector<double> rowUpper;
    std::vector<int> kinds;
};

PreparedProblem prepare(const LpProblem& problem);

/// Load, solve and read every column value; the objective, or NaN when not optimal. Logging is
/// off. CLP runs its dual simplex and GLPK its default primal simplex, both without presolve
/// (CLP's costs more than it saves at these sizes).
double solveWithClp(const PreparedProblem& problem);
double solveWithGlpk(const PreparedProblem& problem);

} // namespace kilnova::bench
