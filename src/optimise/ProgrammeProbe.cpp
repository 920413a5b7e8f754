#include "optimise/ProgrammeProbe.h"

#include "optimise/OptimizationModel.h"
#include "solver/ClpSolve.h"

#include <algorithm>

namespace kilnova {

namespace {

using Role = LinearProgramme::Role;

} // namespace

std::optional<UserLimit> ProgrammeProbe::limitOfRow(const LinearProgramme::Row& row)
{
    switch (row.role) {
    case Role::ElementMaximum:
        return UserLimit{UserLimit::Kind::Maximum, row.index};
    case Role::ElementMinimum:
        return UserLimit{UserLimit::Kind::Minimum, row.index};
    case Role::Tonnage:
        return UserLimit{UserLimit::Kind::Tonnage, -1};
    case Role::SourceMaximum:
        return UserLimit{UserLimit::Kind::SourceTonnage, row.index};
    default:
        return std::nullopt;
    }
}

bool ProgrammeProbe::Result::feasible() const
{
    return code == ClpSolve::kOptimal || code == ClpSolve::kUnbounded;
}

bool ProgrammeProbe::Result::optimal() const
{
    return code == ClpSolve::kOptimal;
}

ProgrammeProbe::ProgrammeProbe(const OptimizationModel& model, int programme, int budget)
    : mModel(model)
    , mProgramme(programme)
    , mBudget(budget)
{
}

std::vector<UserLimit> ProgrammeProbe::limitsOf(const BlendProblem& p)
{
    std::vector<UserLimit> limits;
    for (const ElementBound& b : p.bounds) {
        limits.push_back({UserLimit::Kind::Maximum, b.element});
        limits.push_back({UserLimit::Kind::Minimum, b.element});
    }
    // Maximize Tonnage solves without its tonnage row.
    if (p.mode != 2)
        limits.push_back({UserLimit::Kind::Tonnage, -1});
    for (std::size_t j = 0; j < p.sources.size(); ++j) {
        if (p.sources[j].available)
            limits.push_back({UserLimit::Kind::SourceTonnage, static_cast<int>(j)});
    }
    return limits;
}

BlendProblem ProgrammeProbe::moved(const BlendProblem& problem, UserLimit limit, double value)
{
    BlendProblem p = problem;
    switch (limit.kind) {
    case UserLimit::Kind::Maximum:
    case UserLimit::Kind::Minimum:
        for (ElementBound& b : p.bounds) {
            if (b.element == limit.index)
                (limit.kind == UserLimit::Kind::Maximum ? b.maximum : b.minimum) = value;
        }
        break;
    case UserLimit::Kind::Tonnage:
        p.tonnage = value;
        for (std::size_t i : p.tonnageKindRows)
            p.kindRows.at(i).rhs = value;
        break;
    case UserLimit::Kind::SourceTonnage:
        p.sources[static_cast<std::size_t>(limit.index)].available = value;
        break;
    }
    return p;
}

double ProgrammeProbe::valueOf(const BlendProblem& p, UserLimit limit)
{
    switch (limit.kind) {
    case UserLimit::Kind::Maximum:
    case UserLimit::Kind::Minimum:
        for (const ElementBound& b : p.bounds) {
            if (b.element == limit.index)
                return limit.kind == UserLimit::Kind::Maximum ? b.maximum : b.minimum;
        }
        return 0.0;
    case UserLimit::Kind::Tonnage:
        return p.tonnage;
    case UserLimit::Kind::SourceTonnage:
        return p.sources[static_cast<std::size_t>(limit.index)].available.value_or(0.0);
    }
    return 0.0;
}

std::vector<double> ProgrammeProbe::rowOf(const BlendProblem& problem, UserLimit limit) const
{
    const LinearProgramme full = mModel.build(problem, mProgramme);
    for (const LinearProgramme::Row& row : full.rowList) {
        if (limitOfRow(row) == limit)
            return row.dense(full.columns);
    }
    return std::vector<double>(problem.sources.size(), 0.0);
}

ProgrammeProbe::Result ProgrammeProbe::solve(const BlendProblem& problem,
                                             const std::function<bool(UserLimit)>& inForce,
                                             Objective objective, UserLimit limit)
{
    if (++mSolves > mBudget)
        throw CutShort("the budget was spent");
    const LinearProgramme full = mModel.build(problem, mProgramme);
    const bool limitObjective =
        objective == Objective::MinimiseLimit || objective == Objective::MaximiseLimit;
    auto followsTonnage = [&problem](const LinearProgramme::Row& row) {
        return row.role == Role::KindRow &&
               std::find(problem.tonnageKindRows.begin(), problem.tonnageKindRows.end(),
                         static_cast<std::size_t>(row.index)) != problem.tonnageKindRows.end();
    };
    // Without the tonnage row, a row following the requested tonnage follows the blend's own:
    // a·x = tonnage becomes (a − t)·x = 0, t the tonnage row.
    std::vector<double> tonnageRow;
    for (int i = 0; i < full.rows; ++i) {
        const LinearProgramme::Row& row = full.rowList[static_cast<std::size_t>(i)];
        if (row.role == Role::Tonnage && row.kind == ClpSolve::kEqual)
            tonnageRow = row.dense(full.columns);
    }
    const bool tonnageInForce = inForce({UserLimit::Kind::Tonnage, -1});
    const bool tonnageFree =
        !tonnageInForce || objective == Objective::MaximiseTonnage || objective == Objective::MinimiseTonnage;
    const bool rewrite = tonnageFree && !tonnageRow.empty();
    const bool scalable =
        problem.mode != 2 && std::all_of(full.rowList.begin(), full.rowList.end(), [&](const auto& r) {
            return r.role != Role::KindRow || r.rhs == 0.0 || (rewrite && followsTonnage(r));
        });
    const bool normalise = scalable && !tonnageInForce && objective != Objective::MaximiseTonnage &&
                           objective != Objective::MinimiseTonnage;

    LinearProgramme lp;
    lp.columns = full.columns;
    lp.sense = 1;
    // A row out of force becomes an empty 0 <= 0: the solver keeps the row count the model gives it
    // (it needs at least about as many rows as columns).
    auto outOfForce = [&lp](const LinearProgramme::Row&) {
        lp.rowList.push_back({{}, 0.0, ClpSolve::kAtMost, Role::Unused, -1});
    };
    for (int i = 0; i < full.rows; ++i) {
        LinearProgramme::Row row = full.rowList[static_cast<std::size_t>(i)];
        if (rewrite && followsTonnage(row)) {
            row.coefficients = row.dense(full.columns);
            for (std::size_t j = 0; j < row.coefficients.size() && j < tonnageRow.size(); ++j)
                row.coefficients[j] -= tonnageRow[j];
            row.rhs = 0.0;
        }
        const std::optional<UserLimit> user = limitOfRow(row);
        if (row.role == Role::Target && objective != Objective::Programme) {
            outOfForce(row);
            continue;
        }
        if (row.role == Role::Tonnage) {
            if (objective == Objective::MaximiseTonnage || objective == Objective::MinimiseTonnage ||
                (!tonnageInForce && !normalise)) {
                outOfForce(row);
                continue;
            }
            if (!tonnageInForce)
                row.rhs = problem.tonnage > 0.0 ? problem.tonnage : 1.0;
        } else if (user) {
            // Scaled down, a blend keeps within every source that holds something.
            if (!inForce(*user) || (limitObjective && *user == limit) ||
                (row.role == Role::SourceMaximum && normalise && row.rhs > 0.0)) {
                outOfForce(row);
                continue;
            }
        }
        lp.rowList.push_back(std::move(row));
    }

    switch (objective) {
    case Objective::None:
        lp.objective.assign(static_cast<std::size_t>(lp.columns), 0.0);
        break;
    case Objective::Programme:
        lp.objective = full.objective;
        lp.sense = full.sense;
        break;
    case Objective::MinimiseLimit:
    case Objective::MaximiseLimit:
        lp.objective = rowOf(problem, limit);
        lp.sense = objective == Objective::MinimiseLimit ? -1 : 1;
        break;
    case Objective::MaximiseTonnage:
    case Objective::MinimiseTonnage:
        lp.objective = rowOf(problem, {UserLimit::Kind::Tonnage, -1});
        lp.sense = objective == Objective::MinimiseTonnage ? -1 : 1;
        break;
    }

    lp.rows = static_cast<int>(lp.rowList.size());
    for (const LinearProgramme::Row& row : lp.rowList) {
        if (row.kind == ClpSolve::kAtLeast)
            ++lp.countAtLeast;
        else if (row.kind == ClpSolve::kEqual)
            ++lp.countEqual;
        else
            ++lp.countAtMost;
    }

    ClpSolve solver;
    if (!lp.loadInto(solver))
        throw CutShort("a programme was refused");
    // Far above what a blend needs (about two pivots per row and column), far below the default.
    solver.setPivotLimit(
        std::min(ClpSolve::kDefaultPivotLimit, std::max(20000, 50 * (lp.rows + lp.columns))));
    Result result;
    try {
        result.code = solver.Solve();
    } catch (const std::invalid_argument&) {
        throw CutShort("a solve failed");
    }
    if (result.code == ClpSolve::kPivotLimit || result.code == ClpSolve::kRowsInconsistent)
        throw CutShort("a solve reached its pivot bound");
    for (int j = 0; j < lp.columns; ++j) {
        double v = 0.0;
        if (!solver.GetVariableValue(j + 1, v))
            v = 0.0;
        result.x.push_back(v);
        result.objective += lp.objective[static_cast<std::size_t>(j)] * v;
    }
    return result;
}

} // namespace kilnova
