#pragma once

#include "LpProblem.h"

#include <optional>
#include <vector>

namespace kilnova {

/// The solver's method written out plainly: dense loops over every index, in the documented order,
/// with no skipped terms and no kept patterns. ClpSolve must reach bit for bit the same result on
/// every problem; any shortcut it takes for speed is checked against this.
struct ReferenceSimplex {
    int code = -1;
    int iterations = 0;
    float objective = 0.0f;               ///< the method's own (maximising) objective
    double reported = 0.0;                ///< sense x objective, as GetObjectiveValue gives it
    std::vector<std::optional<double>> x; ///< nullopt for a non-basic column

    /// Solves `problem` (whose row kinds match its counts) and stops with code 4 once the pivot
    /// count passes `pivotLimit`.
    static ReferenceSimplex solve(const LpProblem& problem, int pivotLimit);
};

} // namespace kilnova
