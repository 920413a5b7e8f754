#pragma once

#include "optimise/BlendProblem.h"
#include "optimise/LinearProgramme.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <vector>

namespace kilnova {

class OptimizationModel;

/// One of the user's limits on a blend: a side of a property's bounds, the requested tonnage, or the
/// tonnage a source holds.
struct UserLimit {
    enum class Kind { Maximum, Minimum, Tonnage, SourceTonnage };
    Kind kind = Kind::Maximum;
    int index = -1; ///< the property of a Maximum or Minimum, the source of a SourceTonnage

    bool operator==(const UserLimit&) const = default;
};

/// Solves variants of one problem's programme, for explaining its answer: with some of the user's
/// limits out of force, with one limit moved, or with another objective. Every solve is ClpSolve's,
/// used as the optimisation uses it; each has a pivot bound and all of them together a budget, so
/// that an explanation never runs for long.
class ProgrammeProbe final {
public:
    /// Thrown when the budget is spent or a solve reaches its pivot bound.
    struct CutShort : std::runtime_error {
        using std::runtime_error::runtime_error;
    };

    enum class Objective {
        None,            ///< feasibility only; the target row (Target mode) is left out
        Programme,       ///< the programme's own objective, sense and target row
        MinimiseLimit,   ///< the limit's own row as the objective, its row left out
        MaximiseLimit,   ///< likewise, maximised
        MaximiseTonnage, ///< the tonnage row as the objective, its row left out
        MinimiseTonnage, ///< likewise, minimised
    };

    struct Result {
        int code = 0;
        std::vector<double> x;  ///< per source; 0 for a non-basic one
        double objective = 0.0; ///< the objective's coefficients times x, in double
        bool feasible() const;
        bool optimal() const;
    };

    /// `programme` is 1 or 2: whose rows, objective and sense Objective::Programme takes.
    ProgrammeProbe(const OptimizationModel& model, int programme, int budget);

    /// The limits of a problem: each property bound's maximum and minimum in bound order, then the
    /// requested tonnage when its row is solved, then each source's tonnage.
    static std::vector<UserLimit> limitsOf(const BlendProblem& problem);
    /// The problem with the limit at `value`.
    static BlendProblem moved(const BlendProblem& problem, UserLimit limit, double value);
    /// The limit's value in the problem.
    static double valueOf(const BlendProblem& problem, UserLimit limit);

    /// Solves the problem with only the limits `inForce` accepts. A blend without its tonnage row is
    /// still asked to weigh the requested tonnage (or 1 t when none is requested) where the rows
    /// allow scaling it (every row but the tonnage row holds at 0): a blend of some tonnage then
    /// holds at any smaller one, so only a source holding nothing keeps its limit. `limit` names the
    /// row of the Minimise/MaximiseLimit objectives.
    Result solve(const BlendProblem& problem, const std::function<bool(UserLimit)>& inForce,
                 Objective objective, UserLimit limit = {});
    /// The user's limit a row stands for, if any.
    static std::optional<UserLimit> limitOfRow(const LinearProgramme::Row& row);
    /// The coefficients of the limit's row as the model builds it.
    std::vector<double> rowOf(const BlendProblem& problem, UserLimit limit) const;

    int solves() const { return mSolves; }

private:
    const OptimizationModel& mModel;
    int mProgramme;
    int mBudget;
    int mSolves = 0;
};

} // namespace kilnova
