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

QString nameOf(UserLimit l, const BlendProblem& p, const QStringList& names)
{
    switch (l.kind) {
    case Kind::Maximum:
    case Kind::Minimum: {
        const QString property =
            l.index >= 0 && l.index < names.size() ? names[l.index] : QString::number(l.index);
        return property + (l.kind == Kind::Maximum ? QStringLiteral(" maximum") : QStringLiteral(" minimum"));
    }
    case Kind::Tonnage:
        return QStringLiteral("Requested tonnage");
    case Kind::SourceTonnage:
        return l.index < 0
                   ? QStringLiteral("Tonnages of the sources")
                   : QStringLiteral("Tonnage of ") + p.sources[static_cast<std::size_t>(l.index)].name;
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

/// The value on the grid (the step's size) nearest to `exact` on its relaxed side that the solver finds
/// feasible, with the grid step inwards no longer feasible; nothing when four steps outwards are not enough.
std::optional<double> onGrid(ProgrammeProbe& probe, const BlendProblem& p, UserLimit l, double exact,
                             double outwards)
{
    auto feasibleAt = [&](double value) {
        return probe.solve(ProgrammeProbe::moved(p, l, value), everyLimit, Objective::None).feasible();
    };
    const double grid = std::abs(outwards);
    const double scaled = exact / grid;
    double value = (outwards > 0 ? std::ceil(scaled - 1e-6) : std::floor(scaled + 1e-6)) * grid;
    int tries = 0;
    while (!feasibleAt(value)) {
        if (++tries > 4)
            return std::nullopt;
        value += outwards;
    }
    // The solver's own tolerance may accept a step further in.
    for (int i = 0; i < 2 && feasibleAt(value - outwards); ++i)
        value -= outwards;
    return value;
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
            return infeasible(p, names);
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

Explanation Explainer::infeasible(const BlendProblem& p, const QStringList& names) const
{
    Explanation e;
    ProgrammeProbe probe(mModel, 1, kSolveBudget);
    if (probe.solve(p, everyLimit, Objective::None).feasible()) {
        e.statement =
            QStringLiteral("Solved again, every limit holds together: the answer \"infeasible\" could not "
                           "be confirmed, so it is not explained.");
        return e;
    }
    e.status = Explanation::Status::Infeasible;
    if (!probe
             .solve(
                 p, [](UserLimit) { return false; }, Objective::None)
             .feasible()) {
        e.statement =
            QStringLiteral("Even without any of the limits set the sources cannot make a blend: the "
                           "cause lies in the problem's own rows.");
        return e;
    }

    // Deletion filter: a limit whose removal leaves the rest infeasible is not needed for the conflict.
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
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        in[i] = false;
        if (probe.solve(p, inSet, Objective::None).feasible())
            in[i] = true;
    }

    // The fullest blend the other limits allow, for the tonnage and the sources' tonnages.
    std::optional<ProgrammeProbe::Result> fullest;
    auto fullestBlend = [&]() -> const ProgrammeProbe::Result& {
        if (!fullest)
            fullest = probe.solve(p, allBut(kTonnage), Objective::MaximiseTonnage);
        return *fullest;
    };

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
        if (!probe.solve(p, allBut(l), Objective::None).feasible()) {
            x.note = QStringLiteral("not enough alone: other limits conflict as well");
            e.conflict.push_back(std::move(x));
            continue;
        }
        if (l == kTonnage) {
            const ProgrammeProbe::Result& f = fullestBlend();
            if (f.optimal() && p.tonnage > f.objective) {
                x.needed = onGrid(probe, p, l, f.objective, -kTonneGrid);
            } else {
                const ProgrammeProbe::Result least =
                    probe.solve(p, allBut(kTonnage), Objective::MinimiseTonnage);
                if (least.optimal() && p.tonnage < least.objective)
                    x.needed = onGrid(probe, p, l, least.objective, kTonneGrid);
            }
        } else {
            // The product's value of the property is a ratio of two sums over the blend, r0·x / (r0 − r1)·x
            // with r(b) the limit's row at bound b; its optimum over the other limits by Dinkelbach.
            const std::vector<double> r0 = probe.rowOf(ProgrammeProbe::moved(p, l, 0.0), l);
            const std::vector<double> r1 = probe.rowOf(ProgrammeProbe::moved(p, l, 1.0), l);
            auto ratio = [&](const std::vector<double>& blend) -> std::optional<double> {
                const double numerator = dot(r0, blend);
                const double denominator = numerator - dot(r1, blend);
                if (!(std::abs(denominator) > 1e-12 * std::max(1.0, magnitude(r0, blend))))
                    return std::nullopt;
                return numerator / denominator;
            };
            const bool maximum = l.kind == Kind::Maximum;
            std::optional<double> b = ratio(probe.solve(p, allBut(l), Objective::None).x);
            bool settled = false;
            for (int it = 0; b && it < kRatioIterations; ++it) {
                const ProgrammeProbe::Result r =
                    probe.solve(ProgrammeProbe::moved(p, l, *b), allBut(l),
                                maximum ? Objective::MinimiseLimit : Objective::MaximiseLimit, l);
                if (!r.optimal())
                    break;
                // The rows carry single-precision coefficients: the optimum is 0 to within their rounding.
                const double tolerance = 1e-7 * std::max(1.0, magnitude(r0, r.x));
                const std::optional<double> next = ratio(r.x);
                if ((maximum ? r.objective >= -tolerance : r.objective <= tolerance) || !next ||
                    std::abs(*next - *b) <= 1e-12 * std::max(1.0, std::abs(*b))) {
                    settled = true;
                    break;
                }
                b = next;
            }
            if (settled)
                x.needed = onGrid(probe, p, l, *b, maximum ? kGrid : -kGrid);
        }
        if (!x.needed)
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
    const ProgrammeProbe::Result base = probe.solve(p, everyLimit, Objective::Programme);
    if (!base.optimal()) {
        e.statement = QStringLiteral("Solved again, the blend has no optimum: nothing to explain.");
        return e;
    }
    const LinearProgramme lp = mModel.build(p, programme);
    for (int i = 0; i < lp.rows; ++i) {
        const LinearProgramme::Row& row = lp.rowList[static_cast<std::size_t>(i)];
        const std::optional<UserLimit> l = ProgrammeProbe::limitOfRow(row);
        if (!l)
            continue;
        bool active = false;
        switch (l->kind) {
        case Kind::Maximum:
        case Kind::Minimum: {
            const std::vector<double> a = row.dense(lp.columns);
            active = std::abs(dot(a, base.x) - row.rhs) <= 1e-7 * magnitude(a, base.x) + 1e-9;
            break;
        }
        case Kind::Tonnage:
            active = true;
            break;
        case Kind::SourceTonnage:
            active = tonnageWithheld(p, static_cast<std::size_t>(l->index), base.x);
            break;
        }
        if (!active)
            continue;
        ExplainedLimit x{*l, nameOf(*l, p, names), ProgrammeProbe::valueOf(p, *l), {}, {}, 0.0, {}, {}};
        const bool tonnes = l->kind == Kind::Tonnage || l->kind == Kind::SourceTonnage;
        std::vector<double> steps = {tonnes ? 1.0 : (l->kind == Kind::Maximum ? kGrid : -kGrid)};
        // More of an equality may not be there: then the price of less.
        if (l->kind == Kind::Tonnage)
            steps.push_back(-1.0);
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
