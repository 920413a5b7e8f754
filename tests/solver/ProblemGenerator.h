#pragma once

#include "BlendCase.h"
#include "LpProblem.h"

#include <cstdint>
#include <random>

namespace kilnova {

/// Reproducible random problems from a fixed seed (the same on every platform: the uniform draws
/// are made here from the raw engine output, not by the library's distributions).
class ProblemGenerator final {
public:
    explicit ProblemGenerator(std::uint32_t seed);

    /// A blend request over `sources` raw materials (limestone, marl, clay, sand, iron ore) with
    /// bounds on `constrained` elements. With `reachable` the bounds and the tonnage are drawn
    /// around a blend of the sources, so the request is feasible; otherwise they are drawn from the
    /// sources' range, and many requests are infeasible.
    BlendCase blend(int sources, int constrained, BlendCase::Mode mode, bool reachable);
    /// A dense-ish problem with every row kind, signed right-hand sides and no bounds on the
    /// variables beyond x >= 0: some are infeasible, some unbounded.
    LpProblem general(int rows, int columns);

    double uniform(double low, double high);
    int integer(int low, int high);
    bool chance(double probability);

private:
    std::mt19937 mEngine;
};

} // namespace kilnova
