#include "optimise/OptimizationModel.h"

#include "common/MessageTable.h"
#include "optimise/ReportLines.h"
#include "solver/BoundedSimplex.h"
#include "solver/ClpSolve.h"

#include <QDir>

#include <algorithm>
#include <cmath>
#include <future>

namespace kilnova {

namespace {

/// A property beyond the weights a source was given counts tonne for tonne.
double weightAt(const std::vector<double>& weights, int property)
{
    return property >= 0 && static_cast<std::size_t>(property) < weights.size()
               ? weights[static_cast<std::size_t>(property)]
               : 1.0;
}

} // namespace

bool OptimizationOutcome::counts(std::size_t source) const
{
    return source < values.size() && values[source] && std::abs(*values[source]) >= kSmallestTonnage;
}

double OptimizationOutcome::total() const
{
    double sum = 0.0;
    for (std::size_t j = 0; j < values.size(); ++j)
        sum += tonnes(j);
    return sum;
}

SourceWeights SourceWeights::unit(int count)
{
    const std::size_t n = static_cast<std::size_t>(std::max(count, 0));
    return {std::vector<double>(n, 1.0), std::vector<double>(n, 1.0), std::vector<double>(n, 1.0)};
}

SourceWeights SourceWeights::conversion(double yield, std::span<const double> factor)
{
    SourceWeights w;
    w.value.assign(factor.begin(), factor.end());
    w.bound.assign(factor.size(), yield);
    for (double phi : factor)
        w.objective.push_back(yield * phi);
    return w;
}

OptimizationModel::OptimizationModel(const ChemEquationCoefficients& coefficients)
    : mCoefficients(coefficients)
{
}

BlendProblem OptimizationModel::problemOf(const OptimizationRequest& r)
{
    BlendProblem p;
    for (const SourceRecord& s : r.sources)
        p.sources.push_back({s.name, s.tonnage, s.values, SourceWeights::unit(), std::nullopt, {}});
    p.mode = r.mode;
    p.element = r.element;
    p.target = r.target;
    p.tonnage = r.requestedTonnage;
    for (int k = 0; k < kElementCount; ++k) {
        const ConstraintEntry& c = r.constraints[static_cast<std::size_t>(k)];
        if (c.isActive())
            p.bounds.push_back({k, c.minimum, c.maximum});
    }
    p.declaredRows = blendRowCount(r.mode, p.bounds.size(), p.sources.size());
    return p;
}

int OptimizationModel::blendRowCount(int mode, std::size_t bounds, std::size_t sources)
{
    const int K = static_cast<int>(bounds + sources);
    return mode == 0 ? 2 * K + 2 : mode == 2 ? 2 * K : 2 * K + 1;
}

float OptimizationModel::rowCoefficient(const ModelSource& s, int element, double bound, double offset,
                                        const PropertyLayout& layout) const
{
    const auto& c = mCoefficients;
    // Each oxide of a ratio with its own value weight (a clinker's retention, a coal's ash).
    auto oxide = [&s](int property) {
        return static_cast<double>(s.values.at(property)) * weightAt(s.weights.value, property);
    };
    if (element == layout.MS)
        return static_cast<float>(oxide(layout.SiO2) - bound * oxide(layout.Al2O3) -
                                  bound * oxide(layout.Fe2O3));
    if (element == layout.MA)
        return static_cast<float>(oxide(layout.Al2O3) - bound * oxide(layout.Fe2O3));
    if (element == layout.LSF)
        return static_cast<float>(static_cast<double>(c.LSFCaO) * oxide(layout.CaO) -
                                  (static_cast<double>(c.LSFFe2O3) * oxide(layout.Fe2O3) +
                                   static_cast<double>(c.LSFAl2O3) * oxide(layout.Al2O3) +
                                   static_cast<double>(c.LSFSiO2) * oxide(layout.SiO2)) *
                                      bound);
    return static_cast<float>(static_cast<double>(s.values.at(element)) * weightAt(s.weights.value, element) -
                              (offset + bound) * weightAt(s.weights.bound, element));
}

float OptimizationModel::rowCoefficient(const PropertyValues& values, int element, double bound,
                                        const PropertyLayout& layout) const
{
    return rowCoefficient(ModelSource{{}, {}, values, SourceWeights::unit(layout.count), {}, {}}, element,
                          bound, 0.0, layout);
}

float OptimizationModel::objectiveCoefficient(const ModelSource& s, int element, double offset,
                                              const PropertyLayout& layout) const
{
    // A ratio's numerator, weighted or as it stands.
    auto numerator = [&](int oxide, double coefficient) {
        const double weight = layout.weightedRatioObjective ? weightAt(s.weights.value, oxide) : 1.0;
        return static_cast<float>(coefficient * static_cast<double>(s.values.at(oxide)) * weight);
    };
    if (element == layout.MS)
        return numerator(layout.SiO2, 1.0);
    if (element == layout.MA)
        return numerator(layout.Al2O3, 1.0);
    if (element == layout.LSF)
        return numerator(layout.CaO, static_cast<double>(mCoefficients.LSFCaO));
    return static_cast<float>(
        static_cast<double>(s.values.at(element)) * weightAt(s.weights.objective, element) + offset);
}

float OptimizationModel::objectiveCoefficient(const Analysis& values, int element) const
{
    return objectiveCoefficient(ModelSource{{}, {}, values, SourceWeights::unit(), {}, {}}, element);
}

std::optional<QString> OptimizationModel::refusal(const BlendProblem& p) const
{
    auto check = [&p](int element) -> std::optional<QString> {
        for (const ModelSource& s : p.sources) {
            if (s.values.at(element) == -1.0f)
                return message(Msg::MissingValueInSource, {s.name});
            const std::size_t k = static_cast<std::size_t>(element);
            if (k < s.propertyRefusals.size() && s.propertyRefusals[k])
                return s.propertyRefusals[k];
            if (s.refusal)
                return s.refusal;
        }
        return std::nullopt;
    };
    for (const ElementBound& b : p.bounds) {
        if (auto refused = check(b.element))
            return refused;
    }
    if (auto refused = check(p.element))
        return refused;
    for (const ModelSource& s : p.sources) {
        if (s.available && *s.available == -1.0)
            return message(Msg::MissingValueInSource, {s.name});
    }
    for (const ElementBound& b : p.remainderBounds) {
        for (const ModelSource& s : p.sources) {
            if (s.available && s.values[static_cast<std::size_t>(b.element)] == -1.0f)
                return message(Msg::MissingValueInSource, {s.name});
        }
    }
    return std::nullopt;
}

LinearProgramme OptimizationModel::build(const BlendProblem& p, int programme) const
{
    using Role = LinearProgramme::Role;
    const std::size_t n = p.sources.size();
    LinearProgramme lp;
    lp.columns = static_cast<int>(n);
    lp.sense = p.mode == 0 ? (programme == 1 ? -1 : 1) : p.mode;

    auto addRow = [&lp](std::vector<double> coefficients, double rhs, int kind, Role role, int index) {
        lp.rowList.push_back({std::move(coefficients), rhs, kind, role, index});
    };
    // The one row loop of every kind: a coefficient per source, in selection order.
    auto elementRow = [&](int element, double bound) {
        std::vector<double> coefficients;
        coefficients.reserve(n);
        const double offset = p.offsetOf(element);
        for (const ModelSource& s : p.sources)
            coefficients.push_back(static_cast<double>(rowCoefficient(s, element, bound, offset, p.layout)));
        return coefficients;
    };

    for (const ElementBound& b : p.bounds) {
        addRow(elementRow(b.element, b.maximum), 0.0, ClpSolve::kAtMost, Role::ElementMaximum, b.element);
        addRow(elementRow(b.element, b.minimum), 0.0, ClpSolve::kAtLeast, Role::ElementMinimum, b.element);
    }
    if (p.mode == 0) {
        addRow(elementRow(p.element, p.target), 0.0, programme == 1 ? ClpSolve::kAtLeast : ClpSolve::kAtMost,
               Role::Target, p.element);
    }
    // A source's bounds hold their one coefficient in its column, not n - 1 zeros besides.
    for (std::size_t j = 0; j < n; ++j) {
        const int source = static_cast<int>(j);
        lp.rowList.push_back({{}, 0.0, ClpSolve::kAtLeast, Role::SourceMinimum, source, source});
        if (p.sources[j].available)
            lp.rowList.push_back(
                {{}, *p.sources[j].available, ClpSolve::kAtMost, Role::SourceMaximum, source, source});
    }
    if (p.tonnageRow) {
        addRow(p.tonnageWeights.empty() ? std::vector<double>(n, 1.0) : p.tonnageWeights, p.tonnage,
               ClpSolve::kEqual, Role::Tonnage, -1);
    }
    // What stays behind lies within [min, max] exactly when Σ r·(available − x) does, r the raw
    // row coefficient of a source with a tonnage: the right-hand side is Σ r·available.
    auto remainderRow = [&](int element, double bound, int kind, Role role) {
        std::vector<double> coefficients(n, 0.0);
        double rhs = 0.0;
        for (std::size_t j = 0; j < n; ++j) {
            const ModelSource& s = p.sources[j];
            if (!s.available)
                continue;
            coefficients[j] = static_cast<double>(rowCoefficient(s.values, element, bound, p.layout));
            rhs += coefficients[j] * *s.available;
        }
        addRow(std::move(coefficients), rhs, kind, role, element);
    };
    for (const ElementBound& b : p.remainderBounds) {
        remainderRow(b.element, b.maximum, ClpSolve::kAtLeast, Role::RemainderMaximum);
        remainderRow(b.element, b.minimum, ClpSolve::kAtMost, Role::RemainderMinimum);
    }
    for (std::size_t i = 0; i < p.kindRows.size(); ++i) {
        const LinearProgramme::Row& row = p.kindRows[i];
        if (row.role == Role::KindRow)
            addRow(row.coefficients, row.rhs, row.kind, Role::KindRow, static_cast<int>(i));
        else
            addRow(row.coefficients, row.rhs, row.kind, row.role, row.index);
    }

    lp.rows = p.declaredRows.value_or(static_cast<int>(lp.rowList.size()));
    while (static_cast<int>(lp.rowList.size()) < lp.rows)
        addRow(std::vector<double>(n, 0.0), 0.0, ClpSolve::kEqual, Role::Unused, -1);
    // The solver is told the kinds of the rows it will store: a row beyond the declared count is not.
    for (int i = 0; i < lp.rows; ++i) {
        switch (lp.rowList[static_cast<std::size_t>(i)].kind) {
        case ClpSolve::kAtLeast:
            ++lp.countAtLeast;
            break;
        case ClpSolve::kEqual:
            ++lp.countEqual;
            break;
        default:
            ++lp.countAtMost;
            break;
        }
    }

    const double offset = p.offsetOf(p.element);
    for (const ModelSource& s : p.sources) {
        const float c = p.mode == 0 ? rowCoefficient(s, p.element, p.target, offset, p.layout)
                                    : objectiveCoefficient(s, p.element, offset, p.layout);
        lp.objective.push_back(static_cast<double>(c));
    }
    return lp;
}

OptimizationOutcome OptimizationModel::run(const BlendProblem& r,
                                           const std::function<void(const ClpSolve&)>& beforeSolve) const
{
    OptimizationOutcome outcome;
    if (r.sources.size() < 2) {
        outcome.message = message(Msg::SelectTwoSources);
        return outcome;
    }
    if (std::optional<QString> refused = refusal(r)) {
        outcome.message = std::move(*refused);
        return outcome;
    }

    outcome.problem = std::make_shared<const BlendProblem>(r);
    const LinearProgramme programme1 = build(r, 1);
    const LinearProgramme programme2 = build(r, 2);
    ClpSolve lp1, lp2;
    if (!programme1.loadInto(lp1) || !programme2.loadInto(lp2)) {
        outcome.message = message(Msg::CannotInitialize);
        return outcome;
    }
    // What follows a step along a ray is no blend: the programme is unbounded (a source that makes
    // negative product tonnes, say).
    lp1.setStopOnRay(true);
    lp2.setStopOnRay(true);
    int code1 = 0, code2 = 0;
    bool stopped = false;
    try {
        // The first programme is handed over (written to the debug file) while the second one is
        // solved: the two share nothing, and a dump of thousands of sources takes as long as a solve.
        // It is done before the first programme is solved, which changes it.
        std::future<void> handedOver;
        if (beforeSolve)
            handedOver = std::async(std::launch::async, [&beforeSolve, &lp1] { beforeSolve(lp1); });
        code2 = lp2.Solve();
        if (handedOver.valid())
            handedOver.get();
        code1 = lp1.Solve();
        outcome.codes = {code1, code2};
    } catch (const std::invalid_argument&) {
        stopped = true;
    }

    const int chosen =
        stopped ? 0
                : chooseProgramme(r.mode, r.target, code1, code1 == 1 ? lp1.GetObjectiveValue() : 0.0, code2,
                                  code2 == 1 ? lp2.GetObjectiveValue() : 0.0);
    if (chosen == 0) {
        outcome.message = stopped ? message(Msg::CannotDeriveOptimum) : messageForCode(code1);
        // Rows that do not match their counts are the caller's mistake, not the method's.
        if (stopped || (code1 != ClpSolve::kRowsInconsistent && code2 != ClpSolve::kRowsInconsistent))
            solveBySecondMethod(r, programme1, programme2, outcome);
        return outcome;
    }

    const ClpSolve& solver = chosen == 1 ? lp1 : lp2;
    outcome.solved = true;
    outcome.programme = chosen;
    for (std::size_t j = 0; j < r.sources.size(); ++j) {
        double value = 0.0;
        if (solver.GetVariableValue(static_cast<int>(j) + 1, value))
            outcome.values.emplace_back(value);
        else
            outcome.values.emplace_back(std::nullopt);
    }
    return outcome;
}

void OptimizationModel::solveBySecondMethod(const BlendProblem& r, const LinearProgramme& programme1,
                                            const LinearProgramme& programme2,
                                            OptimizationOutcome& outcome) const
{
    BoundedSimplex second1, second2;
    if (!programme1.loadInto(second1) || !programme2.loadInto(second2))
        return;
    int infeasible = 0;
    const auto code = [&infeasible](BoundedSimplex& s) {
        const BoundedSimplex::Status status = s.Solve();
        infeasible += status == BoundedSimplex::Status::Infeasible;
        return status == BoundedSimplex::Status::Optimal ? ClpSolve::kOptimal : ClpSolve::kInfeasible;
    };
    // Outside Target mode the two programmes are the same.
    const int code1 = code(second1);
    const int code2 = r.mode == 0 ? code(second2) : code1;
    outcome.infeasibleByBoth = outcome.codes == std::array{ClpSolve::kInfeasible, ClpSolve::kInfeasible} &&
                               infeasible == (r.mode == 0 ? 2 : 1);
    const int chosen =
        chooseProgramme(r.mode, r.target, code1, second1.objective(), code2, second2.objective());
    if (chosen == 0)
        return;
    const BoundedSimplex& solver = chosen == 1 ? second1 : second2;
    outcome.solved = true;
    outcome.method = OptimizationOutcome::Method::Second;
    outcome.programme = chosen;
    outcome.values.clear();
    for (std::size_t j = 0; j < r.sources.size(); ++j)
        outcome.values.emplace_back(solver.value(static_cast<int>(j) + 1));
}

int OptimizationModel::chooseProgramme(int mode, double target, int code1, double objective1, int code2,
                                       double objective2)
{
    if (code1 == 1 && code2 == 1) {
        if (mode != 0)
            return 1;
        // The objective, already a tonne-weighted deviation, is compared with the target itself.
        return std::abs(objective1 - target) < std::abs(objective2 - target) ? 1 : 2;
    }
    if (code1 == 1)
        return 1;
    if (code2 == 1)
        return 2;
    return 0;
}

std::function<void(const ClpSolve&)> OptimizationModel::debugDump(const QString& path)
{
    if (path.isEmpty())
        return {};
    return [file = QDir::toNativeSeparators(path).toStdString()](const ClpSolve& lp1) {
        lp1.DumpToFile(file);
    };
}

QString OptimizationModel::messageForCode(int code)
{
    switch (code) {
    case ClpSolve::kRowsInconsistent:
        return message(Msg::RowsInconsistent);
    case ClpSolve::kUnbounded:
        return message(Msg::Unbounded);
    case ClpSolve::kInfeasible:
        return message(Msg::Infeasible);
    default:
        return message(Msg::CannotDeriveOptimum);
    }
}

QString OptimizationModel::secondMethodPreface(const OptimizationOutcome& outcome)
{
    if (!outcome.solved || outcome.method != OptimizationOutcome::Method::Second)
        return {};
    return outcome.message + QStringLiteral("\r\n\r\n") + message(Msg::SecondMethodFound) +
           QStringLiteral("\r\n\r\n");
}

QString OptimizationModel::reportHead(const OptimizationOutcome& outcome, const QString& title, int mode,
                                      const QString& elementName, const QStringList& constraintTexts)
{
    return secondMethodPreface(outcome) + reportHead(title, mode, elementName, constraintTexts);
}

QString OptimizationModel::reportHead(const QString& title, int mode, const QString& elementName,
                                      const QStringList& constraintTexts)
{
    QString head = title + QStringLiteral("\r\n\r\n");
    if (mode == -1)
        head += QStringLiteral("successfully minimized ");
    else if (mode == 1)
        head += QStringLiteral("successfully maximized ");
    else if (mode == 0)
        head += QStringLiteral("successfully targeted ");
    head += elementName + QStringLiteral("\r\n\r\n");
    head += ReportLines::constraints(QStringLiteral("List of Constraints applied:"), constraintTexts);
    return head;
}

} // namespace kilnova
