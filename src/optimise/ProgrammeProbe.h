#pragma once

#include "optimise/BlendProblem.h"
#include "optimise/LinearProgramme.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <vector>

namespace kilnova {

class OptimizationModel;

/// One of the user's limits on a blend: a side of a property's bounds (on the product, or on what the
/// sources leave behind), the requested tonnage, the tonnage a source holds, or a side of a kind's
/// limit on the tonnes taken from one source.
struct UserLimit {
    enum class Kind {
        Maximum,
        Minimum,
        Tonnage,
        SourceTonnage,
        RemainderMaximum,
        RemainderMinimum,
        TakenMaximum,
        TakenMinimum,
    };
    Kind kind = Kind::Maximum;
    /// The property of a Maximum, Minimum or Remainder limit, the source of the others (-1 for the
    /// requested tonnage).
    int index = -1;

    bool operator==(const UserLimit&) const = default;
    /// Loosened by raising it (a maximum, a source's tonnage), not by lowering it; the requested
    /// tonnage, an equality, is neither.
    bool raises() const;
    /// Counted in tonnes rather than in a property's units.
    bool inTonnes() const;
};

/// Solves variants of one problem's programme, for explaining its answer: with some of the user's
/// limits out of force, with one limit moved, or with another objective. Every solve asks one of the
/// two methods, and the other too when the first ends without an optimum, as the optimisation does:
/// no blend is declared only when neither finds one. Each has a pivot bound and all of them together
/// a budget, so that an explanation never runs for long.
///
/// The programme solved is the model's, less what binds nothing in either method: the rows x >= 0
/// (every column is non-negative already), empty rows, and the rows out of force. A few empty rows
/// stay where ClpSolve needs its rows to outnumber its columns.
class ProgrammeProbe final {
public:
    /// Thrown when the budget is spent, or a solve cannot be settled: one method stopped without an
    /// answer (at its pivot bound) and the other found no optimum.
    struct CutShort : std::runtime_error {
        using std::runtime_error::runtime_error;
    };

    enum class Objective {
        None,      ///< feasibility only; the target row (Target mode) is left out
        Programme, ///< the programme's own objective, sense and target row
        /// The least excess of the limit's row, its row left out: a·x − rhs for an upper row, rhs − a·x
        /// for a lower one (at most 0 where the row holds).
        LimitExcess,
        MaximiseTonnage, ///< the tonnage row as the objective, its row left out
        MinimiseTonnage, ///< likewise, minimised
    };

    struct Result {
        int code = 0;           ///< as ClpSolve's
        std::vector<double> x;  ///< per source; 0 for a non-basic one
        double objective = 0.0; ///< the objective at x, in double
        bool feasible() const;
        bool optimal() const;
    };

    /// `programme` is 1 or 2: whose rows, objective and sense Objective::Programme takes.
    ProgrammeProbe(const OptimizationModel& model, int programme, int budget);

    /// The limits of a problem: each property bound's maximum and minimum in bound order, each
    /// remainder bound's likewise, then the requested tonnage when its row is solved, each source's
    /// tonnage, and the kind's limits on the tonnes taken in the order of its rows.
    static std::vector<UserLimit> limitsOf(const BlendProblem& problem);
    /// The problem with the limit at `value`.
    static BlendProblem moved(const BlendProblem& problem, UserLimit limit, double value);
    /// The limit's value in the problem.
    static double valueOf(const BlendProblem& problem, UserLimit limit);

    /// The model's programme of the problem, for the solves that share it.
    LinearProgramme build(const BlendProblem& problem) const;
    /// Solves the problem, whose programme is `full`, with only the limits `inForce` accepts. A blend
    /// without its tonnage row is still asked to weigh the requested tonnage (or 1 t when none is
    /// requested) where the rows allow scaling it (every row in force but the upper bounds on a
    /// source holds at 0): a blend of some tonnage then holds at any smaller one, so only a source
    /// holding nothing keeps its upper bound. `limit` names the row of Objective::LimitExcess.
    Result solve(const BlendProblem& problem, const LinearProgramme& full,
                 const std::function<bool(UserLimit)>& inForce, Objective objective, UserLimit limit = {});
    Result solve(const BlendProblem& problem, const std::function<bool(UserLimit)>& inForce,
                 Objective objective, UserLimit limit = {})
    {
        return solve(problem, build(problem), inForce, objective, limit);
    }

    /// The limits that give way in the cheapest blend where the limits `hard` hold and each of
    /// `elastic` may give at a cost (its excess): none when the hard limits cannot hold together. A
    /// limit neither hard nor elastic is out of force.
    std::optional<std::vector<UserLimit>> yielding(const BlendProblem& problem, const LinearProgramme& full,
                                                   const std::function<bool(UserLimit)>& hard,
                                                   const std::vector<UserLimit>& elastic);

    /// The user's limit a row stands for, if any.
    static std::optional<UserLimit> limitOfRow(const LinearProgramme::Row& row);
    /// The limit's row in a programme, its coefficients over every source; an empty row if absent.
    static LinearProgramme::Row rowOf(const LinearProgramme& full, UserLimit limit);
    int solves() const { return mSolves; }

private:
    /// What is solved: the model's rows in force, rewritten as solve() says, with the objective
    /// asked for; `constant` receives what the objective adds to the programme's.
    static LinearProgramme programme(const BlendProblem& problem, const LinearProgramme& full,
                                     const std::function<bool(UserLimit)>& inForce, Objective objective,
                                     UserLimit limit, double& constant);

    const OptimizationModel& mModel;
    int mProgramme;
    int mBudget;
    int mSolves = 0;
};

} // namespace kilnova
