#pragma once

#include "LpProblem.h"

#include <vector>

namespace kilnova::bench {

/// A problem in the solvers' input formats, prepared once outside the timed loop so that their
/// load time is only the library call. Every solver gets the same non-zero coefficients.
struct PreparedProblem {
    int rows = 0;
    int columns = 0;
    int sense = 1;
    bool minimise = false;
    // Column-major matrix for CLP.
    std::vector<int> columnStart;
    std::vector<int> rowIndex;
    std::vector<double> value;
    // 1-based triplets for GLPK and Kilnova (slot 0 unused).
    std::vector<int> tripletRow;
    std::vector<int> tripletColumn;
    std::vector<double> tripletValue;
    std::vector<double> objective;
    std::vector<double> rhs;
    std::vector<double> rowLower;
    std::vector<double> rowUpper;
    std::vector<int> kinds;
};

PreparedProblem prepare(const SparseProblem& problem);

/// Load, solve and read every column value; the objective, or NaN when not optimal. Logging is
/// off. Kilnova solves as the optimisations do: ClpSolve, and its second method when ClpSolve ends
/// without an optimum. CLP runs its dual simplex and GLPK its default primal simplex, both without
/// presolve (CLP's costs more than it saves at these sizes). A time limit in seconds stops the
/// peers (0: none).
double solveWithKilnova(const PreparedProblem& problem);
/// Kilnova's second method alone, as if the classic one had ended without an optimum.
double solveWithSecondMethod(const PreparedProblem& problem);
double solveWithClp(const PreparedProblem& problem, double seconds = 0.0);
/// `iterations`, when given, receives the simplex iterations GLPK took.
double solveWithGlpk(const PreparedProblem& problem, double seconds = 0.0, int* iterations = nullptr);

} // namespace kilnova::bench
