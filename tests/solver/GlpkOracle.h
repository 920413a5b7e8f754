#pragma once

#include "LpProblem.h"

#include <vector>

namespace kilnova {

/// GLPK's answer for a problem (primal simplex, no presolve).
struct GlpkOracle {
    enum class Verdict { Optimal, Infeasible, Unbounded };

    Verdict verdict = Verdict::Infeasible;
    double objective = 0.0;
    std::vector<double> x;

    static GlpkOracle solve(const LpProblem& problem);
    /// The least total of artificial variables that phase 1 can reach: the rows are sign-normalised
    /// so every right-hand side is >= 0, and each equality and at-least row gets an artificial.
    static double leastArtificialSum(const LpProblem& problem);
};

} // namespace kilnova
