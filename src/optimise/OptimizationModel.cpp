#include "optimise/OptimizationModel.h"

#include "common/MessageTable.h"
#include "solver/BoundedSimplex.h"
#include "solver/ClpSolve.h"

#include <cmath>

namespace kilnova {

namespace {

double at(const Analysis& values, Element e)
{
    return static_cast<double>(values[static_cast<std::size_t>(e)]);
}

constexpr int kMS = elementIndex(Element::MS);
constexpr int kMA = elementIndex(Element::MA);
constexpr int kLSF = elementIndex(Element::LSF);

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

OptimizationModel::OptimizationModel(const ChemEquationCoefficients& coefficients)
    : mCoefficients(coefficients)
{
}

float OptimizationModel::rowCoefficient(const Analysis& v, int element, double bound) const
{
    const auto& c = mCoefficients;
    switch (element) {
    case kMS:
        return static_cast<float>(at(v, Element::SiO2) - bound * at(v, Element::Al2O3) -
                                  bound * at(v, Element::Fe2O3));
    case kMA:
        return static_cast<float>(at(v, Element::Al2O3) - bound * at(v, Element::Fe2O3));
    case kLSF:
        return static_cast<float>(static_cast<double>(c.LSFCaO) * at(v, Element::CaO) -
                                  (static_cast<double>(c.LSFFe2O3) * at(v, Element::Fe2O3) +
                                   static_cast<double>(c.LSFAl2O3) * at(v, Element::Al2O3) +
                                   static_cast<double>(c.LSFSiO2) * at(v, Element::SiO2)) *
                                      bound);
    default:
        return static_cast<float>(static_cast<double>(v[static_cast<std::size_t>(element)]) - bound);
    }
}

float OptimizationModel::objectiveCoefficient(const Analysis& v, int element) const
{
    switch (element) {
    case kMS:
        return v[static_cast<std::size_t>(elementIndex(Element::SiO2))];
    case kMA:
        return v[static_cast<std::size_t>(elementIndex(Element::Al2O3))];
    case kLSF:
        return static_cast<float>(static_cast<double>(mCoefficients.LSFCaO) * at(v, Element::CaO));
    default:
        return v[static_cast<std::size_t>(element)];
    }
}

std::optional<QString> OptimizationModel::sourceWithMissingValue(const OptimizationRequest& r) const
{
    auto firstLacking = [&r](auto lacks) -> std::optional<QString> {
        for (const SourceRecord& s : r.sources) {
            if (lacks(s))
                return s.name;
        }
        return std::nullopt;
    };
    for (int k = 0; k < kElementCount; ++k) {
        if (!r.constraints[static_cast<std::size_t>(k)].isActive())
            continue;
        if (auto name = firstLacking(
                [k](const SourceRecord& s) { return s.values[static_cast<std::size_t>(k)] == -1.0f; }))
            return name;
    }
    if (auto name = firstLacking(
            [&r](const SourceRecord& s) { return s.values[static_cast<std::size_t>(r.element)] == -1.0f; }))
        return name;
    return firstLacking([](const SourceRecord& s) { return s.tonnage == -1.0; });
}

LinearProgramme OptimizationModel::build(const OptimizationRequest& r, int programme) const
{
    const int n = static_cast<int>(r.sources.size());
    int e = 0;
    for (const ConstraintEntry& c : r.constraints)
        e += c.isActive() ? 1 : 0;
    const int K = e + n;

    LinearProgramme lp;
    lp.columns = n;
    if (r.mode == 0) {
        lp.rows = 2 * K + 2;
        lp.sense = programme == 1 ? -1 : 1;
        lp.countAtLeast = programme == 1 ? K + 1 : K;
        lp.countEqual = 1;
        lp.countAtMost = programme == 1 ? K : K + 1;
    } else if (r.mode == 2) {
        lp.rows = 2 * K;
        lp.sense = 2;
        lp.countAtLeast = K;
        lp.countEqual = 0;
        lp.countAtMost = K;
    } else {
        lp.rows = 2 * K + 1;
        lp.sense = r.mode;
        lp.countAtLeast = K;
        lp.countEqual = 1;
        lp.countAtMost = K;
    }

    auto addRow = [&lp](std::vector<double> coefficients, double rhs, int kind) {
        lp.rowList.push_back({std::move(coefficients), rhs, kind});
    };
    auto perSource = [&r](auto coefficient) {
        std::vector<double> coefficients;
        for (const SourceRecord& s : r.sources)
            coefficients.push_back(static_cast<double>(coefficient(s)));
        return coefficients;
    };

    for (int k = 0; k < kElementCount; ++k) {
        const ConstraintEntry& c = r.constraints[static_cast<std::size_t>(k)];
        if (!c.isActive())
            continue;
        addRow(perSource([&](const SourceRecord& s) { return rowCoefficient(s.values, k, c.maximum); }), 0.0,
               ClpSolve::kAtMost);
        addRow(perSource([&](const SourceRecord& s) { return rowCoefficient(s.values, k, c.minimum); }), 0.0,
               ClpSolve::kAtLeast);
    }
    if (r.mode == 0) {
        addRow(
            perSource([&](const SourceRecord& s) { return rowCoefficient(s.values, r.element, r.target); }),
            0.0, programme == 1 ? ClpSolve::kAtLeast : ClpSolve::kAtMost);
    }
    for (int j = 0; j < n; ++j) {
        lp.rowList.push_back({{}, 0.0, ClpSolve::kAtLeast, j});
        lp.rowList.push_back({{}, r.sources[static_cast<std::size_t>(j)].tonnage, ClpSolve::kAtMost, j});
    }
    // The tonnage row. In Maximize Tonnage mode it lies beyond the programme's rows, so the solver
    // does not store it and the mode maximises the element's quantity over the sources' tonnages.
    addRow(std::vector<double>(static_cast<std::size_t>(n), 1.0), r.requestedTonnage, ClpSolve::kEqual);

    for (const SourceRecord& s : r.sources) {
        const float c = r.mode == 0 ? rowCoefficient(s.values, r.element, r.target)
                                    : objectiveCoefficient(s.values, r.element);
        lp.objective.push_back(static_cast<double>(c));
    }
    return lp;
}

OptimizationOutcome OptimizationModel::run(const OptimizationRequest& r,
                                           const std::function<void(const ClpSolve&)>& beforeSolve) const
{
    OptimizationOutcome outcome;
    if (r.sources.size() < 2) {
        outcome.message = message(Msg::SelectTwoSources);
        return outcome;
    }
    if (const std::optional<QString> source = sourceWithMissingValue(r)) {
        outcome.message = message(Msg::MissingValueInSource, {*source});
        return outcome;
    }

    const LinearProgramme programme1 = build(r, 1);
    const LinearProgramme programme2 = build(r, 2);
    ClpSolve lp1, lp2;
    if (!programme1.loadInto(lp1) || !programme2.loadInto(lp2)) {
        outcome.message = message(Msg::CannotInitialize);
        return outcome;
    }
    if (beforeSolve)
        beforeSolve(lp1);
    int code1 = 0, code2 = 0;
    bool stopped = false;
    try {
        code1 = lp1.Solve();
        code2 = lp2.Solve();
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

void OptimizationModel::solveBySecondMethod(const OptimizationRequest& r, const LinearProgramme& programme1,
                                            const LinearProgramme& programme2,
                                            OptimizationOutcome& outcome) const
{
    BoundedSimplex second1, second2;
    if (!programme1.loadInto(second1) || !programme2.loadInto(second2))
        return;
    const auto code = [](BoundedSimplex& s) {
        return s.Solve() == BoundedSimplex::Status::Optimal ? ClpSolve::kOptimal : ClpSolve::kInfeasible;
    };
    // Outside Target mode the two programmes are the same.
    const int code1 = code(second1);
    const int code2 = r.mode == 0 ? code(second2) : code1;
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
    head += QStringLiteral("List of Constraints applied:\r\n");
    if (constraintTexts.isEmpty()) {
        head += QStringLiteral("none\r\n\r\n");
    } else {
        for (const QString& text : constraintTexts)
            head += text + QStringLiteral("\r\n");
        head += QStringLiteral("\r\n\r\n");
    }
    return head;
}

} // namespace kilnova
