#pragma once

#include "optimise/Explanation.h"
#include "optimise/OptimizationModel.h"

#include <QStringList>

namespace kilnova {

/// Explains the outcome of an optimisation of any kind from the problem it solved, by solving
/// variants of it with the same solver:
///   - infeasible: a deletion filter over the user's limits (each property bound side, the
///     requested tonnage, and the sources' tonnages together) leaves a smallest set that cannot
///     hold together; for each, the value it would need with every other limit kept, worked out as
///     the optimum of the blend's value (a ratio of two sums, found by Dinkelbach's iteration) or
///     of its tonnage, then rounded outwards to the 0.01 the limits are written with and checked by
///     solving; with the sources' tonnages among them, the tonnes missing;
///   - optimal: the limits active at the solution, and for each the change of the objective when it
///     is loosened by 0.01 (1 t for tonnages), by solving again;
///   - unbounded: what grows without limit, in which direction, and the sources with no tonnage.
/// The work is bounded: a run that would need more solves than kSolveBudget, or a solve that
/// reaches its pivot bound, says so instead of answering.
class Explainer final {
public:
    static constexpr int kSolveBudget = 400;

    explicit Explainer(const OptimizationModel& model);

    /// `propertyNames` name the properties of the problem in property order.
    Explanation explain(const OptimizationOutcome& outcome, const QStringList& propertyNames) const;

private:
    /// `confirmed`: both methods found the whole problem infeasible already; otherwise it is solved
    /// again first.
    Explanation infeasible(const BlendProblem& problem, const QStringList& names, bool confirmed) const;
    Explanation optimal(const BlendProblem& problem, int programme, const QStringList& names) const;
    static Explanation unbounded(const BlendProblem& problem, const OptimizationOutcome& outcome,
                                 const QStringList& names);

    const OptimizationModel& mModel;
};

} // namespace kilnova
