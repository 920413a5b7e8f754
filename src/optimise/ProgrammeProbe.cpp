#include "optimise/ProgrammeProbe.h"

#include "optimise/OptimizationModel.h"
#include "solver/BoundedSimplex.h"
#include "solver/ClpSolve.h"

#include <algorithm>

namespace kilnova {

namespace {

using Role = LinearProgramme::Role;
using Kind = UserLimit::Kind;

/// A limit gives way in an answer by more than this (tonnes, or tonne-percent): far below what
/// either method can tell from nothing.
constexpr double kYieldTolerance = 1e-6;

double product(const std::vector<double>& a, const std::vector<double>& x)
{
    double sum = 0.0;
    for (std::size_t j = 0; j < a.size() && j < x.size(); ++j)
        sum += a[j] * x[j];
    return sum;
}

/// Counts the rows of each kind, as Initialize wants them.
void countKinds(LinearProgramme& lp)
{
    lp.rows = static_cast<int>(lp.rowList.size());
    lp.countAtLeast = lp.countEqual = lp.countAtMost = 0;
    for (const LinearProgramme::Row& row : lp.rowList) {
        if (row.kind == ClpSolve::kAtLeast)
            ++lp.countAtLeast;
        else if (row.kind == ClpSolve::kEqual)
            ++lp.countEqual;
        else
            ++lp.countAtMost;
    }
}

/// ClpSolve sizes its working arrays on the rows, and they must hold the columns, a slack per row and
/// an artificial per lower row (a row with a negative right-hand side changes side): empty upper rows
/// make room where the rows left are few.
void padRows(LinearProgramme& lp)
{
    int lower = 0;
    for (const LinearProgramme::Row& row : lp.rowList) {
        const bool negative = row.rhs < 0.0;
        lower += (row.kind == ClpSolve::kAtLeast && !negative) || (row.kind == ClpSolve::kAtMost && negative);
    }
    while (static_cast<int>(lp.rowList.size()) <= lp.columns + lower)
        lp.rowList.push_back({{}, 0.0, ClpSolve::kAtMost, Role::Unused, -1});
    countKinds(lp);
}

/// The answer of the second method, or nothing when it cannot settle the programme either.
std::optional<ProgrammeProbe::Result> bySecondMethod(const LinearProgramme& lp, double constant)
{
    BoundedSimplex second;
    if (!lp.loadInto(second))
        return std::nullopt;
    ProgrammeProbe::Result result;
    switch (second.Solve()) {
    case BoundedSimplex::Status::Optimal:
        result.code = ClpSolve::kOptimal;
        for (int j = 0; j < lp.columns; ++j)
            result.x.push_back(second.value(j + 1));
        result.objective = product(lp.objective, result.x) + constant;
        return result;
    case BoundedSimplex::Status::Infeasible:
        result.code = ClpSolve::kInfeasible;
        break;
    case BoundedSimplex::Status::Unbounded:
        result.code = ClpSolve::kUnbounded;
        break;
    default:
        return std::nullopt;
    }
    result.x.assign(static_cast<std::size_t>(lp.columns), 0.0);
    return result;
}

/// The answer of the classic method, or nothing when it stops without one (its pivot bound).
std::optional<ProgrammeProbe::Result> byClassicMethod(const LinearProgramme& lp, double constant)
{
    ClpSolve solver;
    if (!lp.loadInto(solver))
        throw ProgrammeProbe::CutShort("a programme was refused");
    // Far above what a blend needs (about two pivots per row and column), far below the default.
    solver.setPivotLimit(
        std::min(ClpSolve::kDefaultPivotLimit, std::max(20000, 50 * (lp.rows + lp.columns))));
    // An open ray is an answer (unbounded), not pivots circling until the bound.
    solver.setStopOnRay(true);
    ProgrammeProbe::Result result;
    try {
        result.code = solver.Solve();
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
    if (result.code == ClpSolve::kRowsInconsistent)
        throw ProgrammeProbe::CutShort("a programme was refused");
    if (result.code == ClpSolve::kPivotLimit)
        return std::nullopt;
    for (int j = 0; j < lp.columns; ++j) {
        double v = 0.0;
        if (!solver.GetVariableValue(j + 1, v))
            v = 0.0;
        result.x.push_back(v);
    }
    result.objective = product(lp.objective, result.x) + constant;
    return result;
}

/// Each method's answer stands when it is an optimum. Otherwise the other method is asked too, as the
/// optimisation does: no blend is declared only when both find none.
ProgrammeProbe::Result settle(const LinearProgramme& lp, double constant, bool classicFirst)
{
    const std::optional<ProgrammeProbe::Result> first =
        classicFirst ? byClassicMethod(lp, constant) : bySecondMethod(lp, constant);
    if (first && first->optimal())
        return *first;
    const std::optional<ProgrammeProbe::Result> second =
        classicFirst ? bySecondMethod(lp, constant) : byClassicMethod(lp, constant);
    if (second && second->optimal())
        return *second;
    for (const std::optional<ProgrammeProbe::Result>* r : {&first, &second}) {
        if (*r && (*r)->code == ClpSolve::kUnbounded)
            return **r;
    }
    if (!first || !second)
        throw ProgrammeProbe::CutShort("a solve could not be settled by either method");
    return *first;
}

} // namespace

bool UserLimit::raises() const
{
    switch (kind) {
    case Kind::Maximum:
    case Kind::SourceTonnage:
    case Kind::RemainderMaximum:
    case Kind::TakenMaximum:
        return true;
    default:
        return false;
    }
}

bool UserLimit::inTonnes() const
{
    return kind == Kind::Tonnage || kind == Kind::SourceTonnage || kind == Kind::TakenMaximum ||
           kind == Kind::TakenMinimum;
}

std::optional<UserLimit> ProgrammeProbe::limitOfRow(const LinearProgramme::Row& row)
{
    switch (row.role) {
    case Role::ElementMaximum:
        return UserLimit{Kind::Maximum, row.index};
    case Role::ElementMinimum:
        return UserLimit{Kind::Minimum, row.index};
    case Role::Tonnage:
        return UserLimit{Kind::Tonnage, -1};
    case Role::SourceMaximum:
        return UserLimit{Kind::SourceTonnage, row.index};
    case Role::RemainderMaximum:
        return UserLimit{Kind::RemainderMaximum, row.index};
    case Role::RemainderMinimum:
        return UserLimit{Kind::RemainderMinimum, row.index};
    case Role::TakenMaximum:
        return UserLimit{Kind::TakenMaximum, row.index};
    case Role::TakenMinimum:
        return UserLimit{Kind::TakenMinimum, row.index};
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
        limits.push_back({Kind::Maximum, b.element});
        limits.push_back({Kind::Minimum, b.element});
    }
    for (const ElementBound& b : p.remainderBounds) {
        limits.push_back({Kind::RemainderMaximum, b.element});
        limits.push_back({Kind::RemainderMinimum, b.element});
    }
    // Maximize Tonnage solves without its tonnage row.
    if (p.mode != 2 && p.tonnageRow)
        limits.push_back({Kind::Tonnage, -1});
    for (std::size_t j = 0; j < p.sources.size(); ++j) {
        if (p.sources[j].available)
            limits.push_back({Kind::SourceTonnage, static_cast<int>(j)});
    }
    for (const LinearProgramme::Row& row : p.kindRows) {
        if (row.role != Role::KindRow) {
            if (const std::optional<UserLimit> l = limitOfRow(row))
                limits.push_back(*l);
        }
    }
    return limits;
}

BlendProblem ProgrammeProbe::moved(const BlendProblem& problem, UserLimit limit, double value)
{
    BlendProblem p = problem;
    auto bound = [&limit, value](std::vector<ElementBound>& bounds, bool maximum) {
        for (ElementBound& b : bounds) {
            if (b.element == limit.index)
                (maximum ? b.maximum : b.minimum) = value;
        }
    };
    switch (limit.kind) {
    case Kind::Maximum:
    case Kind::Minimum:
        bound(p.bounds, limit.kind == Kind::Maximum);
        break;
    case Kind::RemainderMaximum:
    case Kind::RemainderMinimum:
        bound(p.remainderBounds, limit.kind == Kind::RemainderMaximum);
        break;
    case Kind::Tonnage:
        p.tonnage = value;
        for (std::size_t i : p.tonnageKindRows)
            p.kindRows.at(i).rhs = value;
        break;
    case Kind::SourceTonnage:
        p.sources[static_cast<std::size_t>(limit.index)].available = value;
        break;
    case Kind::TakenMaximum:
    case Kind::TakenMinimum:
        for (LinearProgramme::Row& row : p.kindRows) {
            if (limitOfRow(row) == limit)
                row.rhs = value;
        }
        break;
    }
    return p;
}

double ProgrammeProbe::valueOf(const BlendProblem& p, UserLimit limit)
{
    auto bound = [&limit](const std::vector<ElementBound>& bounds, bool maximum) {
        for (const ElementBound& b : bounds) {
            if (b.element == limit.index)
                return maximum ? b.maximum : b.minimum;
        }
        return 0.0;
    };
    switch (limit.kind) {
    case Kind::Maximum:
    case Kind::Minimum:
        return bound(p.bounds, limit.kind == Kind::Maximum);
    case Kind::RemainderMaximum:
    case Kind::RemainderMinimum:
        return bound(p.remainderBounds, limit.kind == Kind::RemainderMaximum);
    case Kind::Tonnage:
        return p.tonnage;
    case Kind::SourceTonnage:
        return p.sources[static_cast<std::size_t>(limit.index)].available.value_or(0.0);
    case Kind::TakenMaximum:
    case Kind::TakenMinimum:
        for (const LinearProgramme::Row& row : p.kindRows) {
            if (limitOfRow(row) == limit)
                return row.rhs;
        }
        return 0.0;
    }
    return 0.0;
}

LinearProgramme ProgrammeProbe::build(const BlendProblem& problem) const
{
    return mModel.build(problem, mProgramme);
}

LinearProgramme::Row ProgrammeProbe::rowOf(const LinearProgramme& full, UserLimit limit)
{
    for (const LinearProgramme::Row& row : full.rowList) {
        if (limitOfRow(row) == limit) {
            LinearProgramme::Row dense = row;
            dense.coefficients = row.dense(full.columns);
            dense.boundColumn = -1;
            return dense;
        }
    }
    return {std::vector<double>(static_cast<std::size_t>(full.columns), 0.0), 0.0, ClpSolve::kAtMost,
            Role::Unused, -1};
}

LinearProgramme ProgrammeProbe::programme(const BlendProblem& problem, const LinearProgramme& full,
                                          const std::function<bool(UserLimit)>& inForce, Objective objective,
                                          UserLimit limit, double& constant)
{
    const bool limitObjective = objective == Objective::LimitExcess;
    const bool tonnageObjective =
        objective == Objective::MaximiseTonnage || objective == Objective::MinimiseTonnage;
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
    const bool tonnageInForce = inForce({Kind::Tonnage, -1});
    const bool rewrite = (!tonnageInForce || tonnageObjective) && !tonnageRow.empty();
    // Whether a row is in force; the tonnage row's case is settled below.
    auto holds = [&](const LinearProgramme::Row& row) {
        const std::optional<UserLimit> user = limitOfRow(row);
        return !user || user->kind == Kind::Tonnage ||
               (inForce(*user) && !(limitObjective && *user == limit));
    };
    // Upper bounds on one source's tonnes hold for any smaller blend.
    auto upperBound = [](const LinearProgramme::Row& r) {
        return r.role == Role::SourceMaximum || r.role == Role::TakenMaximum;
    };
    const bool scalable =
        problem.mode != 2 &&
        std::all_of(full.rowList.begin(), full.rowList.begin() + full.rows, [&](const auto& r) {
            return r.role == Role::Tonnage || r.role == Role::SourceMinimum || upperBound(r) || !holds(r) ||
                   r.rhs == 0.0 || (rewrite && followsTonnage(r));
        });
    const bool normalise = scalable && !tonnageInForce && !tonnageObjective;

    LinearProgramme lp;
    lp.columns = full.columns;
    lp.sense = 1;
    for (int i = 0; i < full.rows; ++i) {
        LinearProgramme::Row row = full.rowList[static_cast<std::size_t>(i)];
        if (row.role == Role::SourceMinimum || row.role == Role::Unused ||
            (row.role == Role::Target && objective != Objective::Programme) || !holds(row))
            continue;
        if (rewrite && followsTonnage(row)) {
            row.coefficients = row.dense(full.columns);
            for (std::size_t j = 0; j < row.coefficients.size() && j < tonnageRow.size(); ++j)
                row.coefficients[j] -= tonnageRow[j];
            row.rhs = 0.0;
        }
        if (row.role == Role::Tonnage) {
            if (tonnageObjective || (!tonnageInForce && !normalise))
                continue;
            if (!tonnageInForce)
                row.rhs = problem.tonnage > 0.0 ? problem.tonnage : 1.0;
        } else if (upperBound(row) && normalise && row.rhs > 0.0) {
            continue;
        }
        lp.rowList.push_back(std::move(row));
    }
    padRows(lp);

    constant = 0.0;
    switch (objective) {
    case Objective::None:
        lp.objective.assign(static_cast<std::size_t>(lp.columns), 0.0);
        break;
    case Objective::Programme:
        lp.objective = full.objective;
        lp.sense = full.sense;
        break;
    case Objective::LimitExcess: {
        const LinearProgramme::Row row = rowOf(full, limit);
        const double side = row.kind == ClpSolve::kAtLeast ? -1.0 : 1.0;
        for (double a : row.coefficients)
            lp.objective.push_back(side * a);
        constant = -side * row.rhs;
        lp.sense = -1;
        break;
    }
    case Objective::MaximiseTonnage:
    case Objective::MinimiseTonnage:
        lp.objective = rowOf(full, {Kind::Tonnage, -1}).coefficients;
        lp.sense = objective == Objective::MinimiseTonnage ? -1 : 1;
        break;
    }
    return lp;
}

ProgrammeProbe::Result ProgrammeProbe::solve(const BlendProblem& problem, const LinearProgramme& full,
                                             const std::function<bool(UserLimit)>& inForce,
                                             Objective objective, UserLimit limit)
{
    if (++mSolves > mBudget)
        throw CutShort("the budget was spent");
    double constant = 0.0;
    const LinearProgramme lp = programme(problem, full, inForce, objective, limit, constant);
    // The optimisation's own objective goes to the classic method first, whose optimum the report
    // gave; the explanation's other questions to the second, the faster on these programmes.
    return settle(lp, constant, objective == Objective::Programme);
}

std::optional<std::vector<UserLimit>> ProgrammeProbe::yielding(const BlendProblem& problem,
                                                               const LinearProgramme& full,
                                                               const std::function<bool(UserLimit)>& hard,
                                                               const std::vector<UserLimit>& elastic)
{
    if (++mSolves > mBudget)
        throw CutShort("the budget was spent");
    auto isElastic = [&elastic](UserLimit l) {
        return std::find(elastic.begin(), elastic.end(), l) != elastic.end();
    };
    double constant = 0.0;
    LinearProgramme lp = programme(
        problem, full, [&](UserLimit l) { return hard(l) || isElastic(l); }, Objective::None, {}, constant);
    // One column per way a row may give: below an upper row's bound, above a lower row's, either
    // side of an equality; each tonne (or tonne-percent) given costs 1.
    const int sources = lp.columns;
    std::vector<UserLimit> given;
    for (LinearProgramme::Row& row : lp.rowList) {
        const std::optional<UserLimit> l = limitOfRow(row);
        if (!l || hard(*l) || !isElastic(*l))
            continue;
        row.coefficients = row.dense(sources);
        row.boundColumn = -1;
        for (double sign : {1.0, -1.0}) {
            if ((row.kind == ClpSolve::kAtMost && sign > 0) || (row.kind == ClpSolve::kAtLeast && sign < 0))
                continue;
            row.coefficients.resize(static_cast<std::size_t>(lp.columns) + 1, 0.0);
            row.coefficients.back() = sign;
            lp.objective.push_back(1.0);
            given.push_back(*l);
            ++lp.columns;
        }
    }
    lp.sense = -1;
    padRows(lp);
    const Result r = settle(lp, 0.0, false);
    if (!r.feasible())
        return std::nullopt;
    std::vector<UserLimit> support;
    for (std::size_t k = 0; k < given.size(); ++k) {
        const double excess = r.x[static_cast<std::size_t>(sources) + k];
        if (excess > kYieldTolerance && std::find(support.begin(), support.end(), given[k]) == support.end())
            support.push_back(given[k]);
    }
    return support;
}

} // namespace kilnova
