#include "optimise/Explainer.h"

#include "solver/ClpSolve.h"

#include <algorithm>
#include <cmath>

namespace kilnova {

namespace {

using Kind = UserLimit::Kind;
using Objective = ProgrammeProbe::Objective;

/// The limits are written with two decimals: needed values are given on that grid; a tonnage in
/// whole tonnes, well above the solver's feasibility tolerance.
constexpr double kGrid = 0.01;
constexpr double kTonneGrid = 1.0;
/// Iterations of the ratio's optimum; each ends closer and the last is exact, a handful suffice.
constexpr int kRatioIterations = 30;
/// Steps from the optimum to the grid value that holds and the one inwards that does not.
constexpr int kGridSteps = 4;

const UserLimit kTonnage{Kind::Tonnage, -1};
/// All the sources' tonnages at once.
const UserLimit kSourceTonnages{Kind::SourceTonnage, -1};

double dot(const std::vector<double>& a, const std::vector<double>& x)
{
    double sum = 0.0;
    for (std::size_t j = 0; j < a.size() && j < x.size(); ++j)
        sum += a[j] * x[j];
    return sum;
}

double magnitude(const std::vector<double>& a, const std::vector<double>& x)
{
    double sum = 0.0;
    for (std::size_t j = 0; j < a.size() && j < x.size(); ++j)
        sum += std::abs(a[j] * x[j]);
    return sum;
}

QString sourceName(const BlendProblem& p, int index)
{
    return index >= 0 && static_cast<std::size_t>(index) < p.sources.size()
               ? p.sources[static_cast<std::size_t>(index)].name
               : QString::number(index);
}

QString nameOf(UserLimit l, const BlendProblem& p, const QStringList& names)
{
    const QString property =
        l.index >= 0 && l.index < names.size() ? names[l.index] : QString::number(l.index);
    switch (l.kind) {
    case Kind::Maximum:
        return property + QStringLiteral(" maximum");
    case Kind::Minimum:
        return property + QStringLiteral(" minimum");
    case Kind::RemainderMaximum:
        return property + QStringLiteral(" maximum of the material left");
    case Kind::RemainderMinimum:
        return property + QStringLiteral(" minimum of the material left");
    case Kind::Tonnage:
        return QStringLiteral("Requested tonnage");
    case Kind::SourceTonnage:
        return l.index < 0 ? QStringLiteral("Tonnages of the sources")
                           : QStringLiteral("Tonnage of ") + sourceName(p, l.index);
    case Kind::TakenMaximum:
        return QStringLiteral("Maximum tonnage of ") + sourceName(p, l.index);
    case Kind::TakenMinimum:
        return QStringLiteral("Minimum tonnage of ") + sourceName(p, l.index);
    }
    return {};
}

/// Every limit but `out` (the sources' tonnages all together when `out` is kSourceTonnages).
std::function<bool(UserLimit)> allBut(UserLimit out)
{
    return [out](UserLimit l) {
        if (out == kSourceTonnages)
            return l.kind != Kind::SourceTonnage;
        return !(l == out);
    };
}

bool everyLimit(UserLimit)
{
    return true;
}

bool tonnageWithheld(const BlendProblem& p, std::size_t j, const std::vector<double>& x)
{
    const std::optional<double>& available = p.sources[j].available;
    return available && *available > 0.0 && j < x.size() &&
           x[j] >= *available - 1e-6 * std::max(1.0, *available);
}

/// The value on the grid nearest to `exact` on the limit's loose side that the solver finds
/// feasible, with the grid step inwards found infeasible; nothing when `steps` steps either way do
/// not settle it.
std::optional<double> onGrid(ProgrammeProbe& probe, const BlendProblem& p, UserLimit l, double exact,
                             int steps = kGridSteps)
{
    const double grid = l.inTonnes() ? kTonneGrid : kGrid;
    const bool raises = l.kind == Kind::Tonnage ? exact > ProgrammeProbe::valueOf(p, l) : l.raises();
    const double outwards = raises ? grid : -grid;
    auto feasibleAt = [&](double value) {
        return probe.solve(ProgrammeProbe::moved(p, l, value), everyLimit, Objective::None).feasible();
    };
    const double scaled = exact / grid;
    double value = (raises ? std::ceil(scaled - 1e-6) : std::floor(scaled + 1e-6)) * grid;
    for (int tries = 0; !feasibleAt(value); ++tries) {
        if (tries == steps)
            return std::nullopt;
        value += outwards;
    }
    // The solver's own tolerance may accept a step further in.
    for (int tries = 0; feasibleAt(value - outwards); ++tries) {
        if (tries == steps)
            return std::nullopt;
        value -= outwards;
    }
    return value;
}

/// What a one-sided limit of a conflict would need.
struct Needed {
    bool alone = true; ///< false: the other limits conflict even without it
    std::optional<double> value;
};

/// The loosest value of the limit's quantity the other limits allow, on the grid. The quantity is a
/// ratio of two affine sums over the blend, (a0·x − c0) / ((a0 − a1)·x − (c0 − c1)) with a_b·x ⋚ c_b
/// the limit's row at bound b; its optimum by Dinkelbach's iteration, whose step at b is the least
/// excess of the row at b. Started from the current value, the first step also says whether the
/// other limits hold together at all.
Needed neededValue(ProgrammeProbe& probe, const BlendProblem& p, UserLimit l)
{
    const LinearProgramme::Row row0 = ProgrammeProbe::rowOf(probe.build(ProgrammeProbe::moved(p, l, 0.0)), l);
    const LinearProgramme::Row row1 = ProgrammeProbe::rowOf(probe.build(ProgrammeProbe::moved(p, l, 1.0)), l);
    auto ratio = [&](const std::vector<double>& x) -> std::optional<double> {
        const double numerator = dot(row0.coefficients, x) - row0.rhs;
        const double denominator = numerator - (dot(row1.coefficients, x) - row1.rhs);
        if (!(std::abs(denominator) >
              1e-12 * std::max(1.0, magnitude(row0.coefficients, x) + std::abs(row0.rhs))))
            return std::nullopt;
        return numerator / denominator;
    };
    double b = ProgrammeProbe::valueOf(p, l);
    for (int it = 0; it < kRatioIterations; ++it) {
        const BlendProblem at = ProgrammeProbe::moved(p, l, b);
        const ProgrammeProbe::Result r = probe.solve(at, allBut(l), Objective::LimitExcess, l);
        if (it == 0 && !r.feasible())
            return {false, std::nullopt};
        const std::optional<double> next = r.optimal() ? ratio(r.x) : std::nullopt;
        if (!next)
            return {};
        // The rows carry single-precision coefficients: the optimum is 0 to within their rounding.
        const double tolerance = 1e-7 * std::max(1.0, magnitude(row0.coefficients, r.x) + std::abs(row0.rhs));
        // From the second step on b is the value of a blend the other limits allow.
        if (it > 0 &&
            (r.objective >= -tolerance || std::abs(*next - b) <= 1e-12 * std::max(1.0, std::abs(b))))
            return {true, onGrid(probe, p, l, b)};
        b = *next;
        // The first blend's value is often the optimum already: the grid then says so at once.
        if (it == 0) {
            if (const std::optional<double> value = onGrid(probe, p, l, b, 0))
                return {true, value};
        }
    }
    return {};
}

/// Narrows the candidates `in` marks to some that cannot hold together, by the elastic filter: the
/// limits that give way in the cheapest blend breaking some are made to hold, until the ones made
/// to hold conflict. The sources' tonnages hold from the start. All stay marked when it is not
/// settled that way.
void shortlist(ProgrammeProbe& probe, const BlendProblem& p, const LinearProgramme& full,
               const std::vector<UserLimit>& candidates, std::vector<bool>& in)
{
    std::vector<bool> hard(candidates.size(), false);
    for (std::size_t i = 0; i < candidates.size(); ++i)
        hard[i] = candidates[i] == kSourceTonnages;
    auto isHard = [&](UserLimit l) {
        for (std::size_t i = 0; i < candidates.size(); ++i) {
            if (hard[i] &&
                (candidates[i] == l || (candidates[i] == kSourceTonnages && l.kind == Kind::SourceTonnage)))
                return true;
        }
        return false;
    };
    for (;;) {
        std::vector<UserLimit> elastic;
        for (std::size_t i = 0; i < candidates.size(); ++i) {
            if (!hard[i])
                elastic.push_back(candidates[i]);
        }
        if (elastic.empty())
            return;
        const std::optional<std::vector<UserLimit>> given = probe.yielding(p, full, isHard, elastic);
        if (!given) {
            // The hard limits conflict in the programme as solved with them alone, unless the
            // tonnage gave way: without it that programme is another one (rows follow the blend's
            // tonnage, or a blend is scaled to it), which is asked.
            const bool tonnageGave = std::find(elastic.begin(), elastic.end(), kTonnage) != elastic.end();
            if (!tonnageGave || !probe.solve(p, full, isHard, Objective::None).feasible())
                in = hard;
            return;
        }
        if (given->empty())
            return;
        for (std::size_t i = 0; i < candidates.size(); ++i)
            hard[i] = hard[i] || std::find(given->begin(), given->end(), candidates[i]) != given->end();
    }
}

} // namespace

Explainer::Explainer(const OptimizationModel& model)
    : mModel(model)
{
}

Explanation Explainer::explain(const OptimizationOutcome& outcome, const QStringList& names) const
{
    Explanation e;
    if (!outcome.problem) {
        e.statement = QStringLiteral("The run stopped before the blend was solved; its message says why.");
        return e;
    }
    const BlendProblem& p = *outcome.problem;
    const auto& codes = outcome.codes;
    try {
        // The solver can end "optimal" on an open ray, with a value of about 1e30.
        const bool open =
            std::any_of(outcome.values.begin(), outcome.values.end(),
                        [](const std::optional<double>& v) { return v && std::abs(*v) >= 1e20; });
        if (outcome.solved && !open)
            return optimal(p, outcome.programme, names);
        if (open)
            return unbounded(p, outcome, names);
        if (codes[0] == ClpSolve::kUnbounded || codes[1] == ClpSolve::kUnbounded)
            return unbounded(p, outcome, names);
        if (codes[0] == ClpSolve::kInfeasible || codes[1] == ClpSolve::kInfeasible)
            return infeasible(p, names, outcome.infeasibleByBoth);
        e.statement =
            codes[0] == ClpSolve::kPivotLimit || codes[1] == ClpSolve::kPivotLimit
                ? QStringLiteral("The solver stopped at its pivot limit without an answer: there is "
                                 "nothing to explain.")
                : QStringLiteral("The solver gave no answer that can be explained.");
    } catch (const ProgrammeProbe::CutShort& cut) {
        e = {};
        e.statement = QStringLiteral("The explanation was cut short: it needed more solving than is allowed "
                                     "(%1 solves, each of a bounded number of pivots; %2).")
                          .arg(kSolveBudget)
                          .arg(QString::fromLatin1(cut.what()));
    }
    return e;
}

Explanation Explainer::infeasible(const BlendProblem& p, const QStringList& names, bool confirmed) const
{
    Explanation e;
    ProgrammeProbe probe(mModel, 1, kSolveBudget);
    const LinearProgramme full = probe.build(p);
    // Without the target row the programme holds a blend exactly when one of the two does.
    if (!confirmed && probe.solve(p, full, everyLimit, Objective::None).feasible()) {
        e.statement =
            QStringLiteral("Solved again, every limit holds together: the answer \"infeasible\" could not "
                           "be confirmed, so it is not explained.");
        return e;
    }
    e.status = Explanation::Status::Infeasible;
    if (!probe
             .solve(
                 p, full, [](UserLimit) { return false; }, Objective::None)
             .feasible()) {
        e.statement =
            QStringLiteral("Even without any of the limits set the sources cannot make a blend: the "
                           "cause lies in the problem's own rows.");
        return e;
    }

    std::vector<UserLimit> candidates;
    bool anySourceTonnage = false;
    for (const UserLimit& l : ProgrammeProbe::limitsOf(p)) {
        if (l.kind == Kind::SourceTonnage)
            anySourceTonnage = true;
        else
            candidates.push_back(l);
    }
    if (anySourceTonnage)
        candidates.push_back(kSourceTonnages);
    std::vector<bool> in(candidates.size(), true);
    auto inSet = [&](UserLimit l) {
        for (std::size_t i = 0; i < candidates.size(); ++i) {
            if (in[i] &&
                (candidates[i] == l || (candidates[i] == kSourceTonnages && l.kind == Kind::SourceTonnage)))
                return true;
        }
        return false;
    };
    shortlist(probe, p, full, candidates, in);
    // Deletion filter: a limit whose removal leaves the rest infeasible is not needed for the conflict.
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        if (!in[i])
            continue;
        in[i] = false;
        if (probe.solve(p, full, inSet, Objective::None).feasible())
            in[i] = true;
    }

    // The fullest blend the other limits allow, for the tonnage and the sources' tonnages.
    std::optional<ProgrammeProbe::Result> fullest;
    auto fullestBlend = [&]() -> const ProgrammeProbe::Result& {
        if (!fullest)
            fullest = probe.solve(p, full, allBut(kTonnage), Objective::MaximiseTonnage);
        return *fullest;
    };
    const QString notAlone = QStringLiteral("not enough alone: other limits conflict as well");

    for (std::size_t i = 0; i < candidates.size(); ++i) {
        if (!in[i])
            continue;
        const UserLimit l = candidates[i];
        ExplainedLimit x{l, nameOf(l, p, names), 0.0, {}, {}, 0.0, {}, {}};
        if (l == kSourceTonnages) {
            for (const ModelSource& s : p.sources)
                x.current += s.available.value_or(0.0);
            const ProgrammeProbe::Result& f = fullestBlend();
            if (p.mode != 2 && f.optimal() && p.tonnage > f.objective) {
                e.missingTonnes = p.tonnage - f.objective;
                for (std::size_t j = 0; j < p.sources.size(); ++j) {
                    if (tonnageWithheld(p, j, f.x))
                        x.sources << p.sources[j].name;
                }
            } else {
                x.note = QStringLiteral("the missing tonnes cannot be worked out");
            }
            e.conflict.push_back(std::move(x));
            continue;
        }
        x.current = ProgrammeProbe::valueOf(p, l);
        if (l == kTonnage) {
            const ProgrammeProbe::Result& f = fullestBlend();
            // No blend of a whole tonne at all: an empty blend is no answer.
            if (!f.feasible() || (f.optimal() && f.objective < kTonneGrid)) {
                x.note = notAlone;
            } else if (f.optimal() && p.tonnage > f.objective) {
                x.needed = onGrid(probe, p, l, f.objective);
            } else {
                const ProgrammeProbe::Result least =
                    probe.solve(p, full, allBut(kTonnage), Objective::MinimiseTonnage);
                if (least.optimal() && p.tonnage < least.objective)
                    x.needed = onGrid(probe, p, l, least.objective);
            }
        } else {
            const Needed needed = neededValue(probe, p, l);
            x.needed = needed.value;
            if (!needed.alone)
                x.note = notAlone;
        }
        if (!x.needed && x.note.isEmpty())
            x.note = QStringLiteral("the value it would need cannot be worked out");
        e.conflict.push_back(std::move(x));
    }
    return e;
}

Explanation Explainer::optimal(const BlendProblem& p, int programme, const QStringList& names) const
{
    Explanation e;
    e.status = Explanation::Status::Optimal;
    if (p.mode != 2 && p.tonnage <= 0.0) {
        e.statement = QStringLiteral("The requested tonnage is 0 t: every limit holds with an empty blend.");
        return e;
    }
    ProgrammeProbe probe(mModel, programme, kSolveBudget);
    const LinearProgramme lp = probe.build(p);
    const ProgrammeProbe::Result base = probe.solve(p, lp, everyLimit, Objective::Programme);
    if (!base.optimal()) {
        e.statement = QStringLiteral("Solved again, the blend has no optimum: nothing to explain.");
        return e;
    }
    for (int i = 0; i < lp.rows; ++i) {
        const LinearProgramme::Row& row = lp.rowList[static_cast<std::size_t>(i)];
        const std::optional<UserLimit> l = ProgrammeProbe::limitOfRow(row);
        if (!l)
            continue;
        bool active = true;
        if (l->kind == Kind::SourceTonnage) {
            active = tonnageWithheld(p, static_cast<std::size_t>(l->index), base.x);
        } else if (l->kind != Kind::Tonnage) {
            const std::vector<double> a = row.dense(lp.columns);
            active = std::abs(dot(a, base.x) - row.rhs) <=
                     1e-7 * (magnitude(a, base.x) + std::abs(row.rhs)) + 1e-9;
        }
        if (!active)
            continue;
        ExplainedLimit x{*l, nameOf(*l, p, names), ProgrammeProbe::valueOf(p, *l), {}, {}, 0.0, {}, {}};
        const double grid = l->inTonnes() ? kTonneGrid : kGrid;
        std::vector<double> steps = {l->raises() || l->kind == Kind::Tonnage ? grid : -grid};
        // More of an equality may not be there: then the price of less.
        if (l->kind == Kind::Tonnage)
            steps.push_back(-grid);
        for (double step : steps) {
            const ProgrammeProbe::Result r =
                probe.solve(ProgrammeProbe::moved(p, *l, x.current + step), everyLimit, Objective::Programme);
            if (r.optimal()) {
                x.marginal = r.objective - base.objective;
                x.step = step;
                break;
            }
        }
        if (!x.marginal)
            x.note = QStringLiteral("moved by one step the blend has no optimum");
        e.binding.push_back(std::move(x));
    }
    if (e.binding.empty())
        e.statement = QStringLiteral("No limit holds the answer: the best blend lies inside every limit.");
    return e;
}

Explanation Explainer::unbounded(const BlendProblem& p, const OptimizationOutcome& outcome,
                                 const QStringList& names)
{
    Explanation e;
    e.status = Explanation::Status::Unbounded;
    QStringList open;
    for (const ModelSource& s : p.sources) {
        if (!s.available)
            open << s.name;
    }
    const QString sources =
        open.isEmpty()
            ? QString()
            : QStringLiteral(" (sources with no tonnage limit: %1)").arg(open.join(QStringLiteral(", ")));
    if (p.mode == 2) {
        e.statement =
            QStringLiteral("The problem is unbounded: the blend's tonnage can increase without limit") +
            sources + QLatin1Char('.');
        return e;
    }
    // Target mode minimises in programme 1 and maximises in programme 2.
    const int unboundedProgramme = outcome.solved                             ? outcome.programme
                                   : outcome.codes[0] == ClpSolve::kUnbounded ? 1
                                                                              : 2;
    const int sense = p.mode == 0 ? (unboundedProgramme == 1 ? -1 : 1) : p.mode;
    const QString property =
        p.element >= 0 && p.element < names.size() ? names[p.element] : QStringLiteral("the objective");
    e.statement = QStringLiteral("The problem is unbounded: the objective on %1 can %2 without limit")
                      .arg(property, sense > 0 ? QStringLiteral("increase") : QStringLiteral("decrease")) +
                  sources + QLatin1Char('.');
    return e;
}

} // namespace kilnova
