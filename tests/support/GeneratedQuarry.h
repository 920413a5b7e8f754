#pragma once

#include "optimise/BlendProblem.h"
#include "optimise/COptimizationParameters.h"

#include <QStringList>

namespace kilnova {

class ProjectDatabase;

/// A quarry of limestone, marl and clay blasts with believable chemistry, the same on every run:
/// what a planner selects when a whole quarry goes into one blend. Shared by the tests and the
/// benchmarks.
class GeneratedQuarry final {
public:
    /// Adds `blasts` blasts named Q00000, Q00001, ... to the Blast table in one transaction; their
    /// names in order.
    static QStringList fill(ProjectDatabase& db, int blasts);

    /// Settings that select every named blast and ask for `tonnage` tonnes at 12-16 SiO2, 2.5-5
    /// Al2O3, 1-3 Fe2O3 and at most 2.5 MgO, maximising CaO (mode 1) or targeting 42 CaO (mode 0).
    static COptimizationParameters parameters(const QStringList& names, double tonnage, int mode);

    /// A blast problem of `blasts` generated blasts that has no blend: 2500 t a blast, CaO maximised,
    /// ten limits (at most 12 SiO2, 0.7 LSF, 10 Al2O3, 5 Fe2O3 and 3 MgO, each at least 0), of which
    /// low silica wants limestone and a low lime saturation wants clay.
    static BlendProblem conflicting(int blasts);
};

} // namespace kilnova
