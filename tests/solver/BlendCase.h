#pragma once

#include "LpProblem.h"

#include <array>
#include <utility>
#include <vector>

namespace kilnova {

/// A blend request as the optimisations build it: sources with tonnage and analysis, an objective
/// mode, the optimised element, and lower/upper bounds on some elements. The moduli MS, MA and LSF
/// are linearised on their oxides.
struct BlendCase {
    enum Element { SiO2, Al2O3, Fe2O3, CaO, MgO, SO3, K2O, MS, MA, LSF, ElementCount };
    /// Objective modes; the value is also the sense given to the solver.
    enum Mode { Minimize = -1, Target = 0, Maximize = 1, MaximizeTonnage = 2 };

    struct Source {
        double tonnage = 0.0;
        std::array<float, ElementCount> values{};
    };
    struct Bound {
        int element = 0;
        float minimum = 0.0f;
        float maximum = 0.0f;
    };

    std::vector<Source> sources;
    Mode mode = Minimize;
    int optimised = CaO;
    float target = 0.0f;
    double requestedTonnage = 0.0;
    std::vector<Bound> bounds; ///< in element order, at most one per element

    /// The two programmes solved for this request (identical unless in Target mode).
    std::pair<LpProblem, LpProblem> programmes() const;
    /// Programme 1 or 2 with its non-zero coefficients only (the same rows as programmes()).
    SparseProblem sparseProgramme(int which) const;

private:
    std::vector<double> rowFor(int element, float bound) const;
};

} // namespace kilnova
