#include "optimise/BlastOptimization.h"

#include "chemistry/ChemistryFunctions.h"
#include "common/MessageTable.h"
#include "common/PrintfFormat.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Schema.h"
#include "database/Transaction.h"
#include "optimise/BlastReport.h"
#include "optimise/BlendSummary.h"
#include "solver/ClpSolve.h"

#include <QDir>
#include <QSqlQuery>

#include <algorithm>

namespace kilnova {

const QStringList& BlastOptimization::modeChoices()
{
    return modeChoiceNames();
}

BlastOptimization::BlastOptimization(ProjectDatabase& db, const COptimizationParameters& p)
    // Cl can be constrained but not optimised.
    : OptimizationSettings(modeChoices(), elementNames(), elementIndex(Element::Cl))
    , mDb(db)
    , mFilter(p.coordinateFilter != 0)
    , mBounds{p.eastMinimum,  p.eastMaximum,      p.northMinimum,
              p.northMaximum, p.elevationMinimum, p.elevationMaximum}
    , mSelection(inListOrder(p.selectedSources))
{
    loadSettings(p.mode, elementOfName(p.optimizedElement), p.target, p.requestedTonnage,
                 {p.constraints.begin(), p.constraints.end()});
}

void BlastOptimization::computeExtent()
{
    std::array<double, 6> extent = {1e39, -1e39, 1e39, -1e39, 1e39, -1e39};
    QSqlQuery q = mDb.exec(QStringLiteral("SELECT [East], [North], [Elevation] FROM [Blast]"));
    while (q.next()) {
        for (int c = 0; c < 3; ++c) {
            const double v = q.value(c).toDouble();
            extent[static_cast<std::size_t>(2 * c)] = std::min(extent[static_cast<std::size_t>(2 * c)], v);
            extent[static_cast<std::size_t>(2 * c + 1)] =
                std::max(extent[static_cast<std::size_t>(2 * c + 1)], v);
        }
    }
    mBounds = extent;
}

QStringList BlastOptimization::sourceNames() const
{
    QString sql = QStringLiteral("SELECT [Name] FROM [Blast]");
    QVariantList values;
    if (mFilter) {
        sql +=
            QStringLiteral(" WHERE [East]>=? AND [East]<=? AND [North]>=? AND [North]<=? AND [Elevation]>=? "
                           "AND [Elevation]<=?");
        for (double b : mBounds)
            values << b;
    }
    sql += QStringLiteral(" ORDER BY [Name]");
    QSqlQuery q = mDb.exec(sql, values);
    QStringList names;
    while (q.next())
        names << q.value(0).toString();
    return names;
}

void BlastOptimization::setSelection(const QStringList& names)
{
    mSelection = inListOrder(names);
}

QString BlastOptimization::sourceCaption() const
{
    return mFilter ? QStringLiteral("Blasts (filtered)") : QStringLiteral("Blasts");
}

std::optional<Record> BlastOptimization::source(const QString& name) const
{
    return RecordTable(mDb, Table::Blast).find({name, {}});
}

QString BlastOptimization::runningTotal() const
{
    if (mSelection.isEmpty())
        return {};
    double total = 0.0;
    std::array<double, kElementCount> sums{};
    for (const Record& blast : RecordTable(mDb, Table::Blast).findNames(mSelection)) {
        const double quantity = blast.number(QStringLiteral("Quantity"));
        const Analysis a = blast.analysis();
        total += quantity;
        // Missing values (-1) are summed like any other here, on purpose.
        for (std::size_t k = 0; k < kElementCount; ++k)
            sums[k] += static_cast<double>(a[k]) * quantity;
    }
    auto v = [&sums](Element e) -> double& {
        return sums[static_cast<std::size_t>(elementIndex(e))];
    };
    if (total != 0.0) {
        for (int k = elementIndex(Element::Titration); k <= elementIndex(Element::P2O5); ++k)
            sums[static_cast<std::size_t>(k)] /= total;
        v(Element::CostFactor) /= total;
        v(Element::MS) = ComputeMS(v(Element::SiO2), v(Element::Al2O3), v(Element::Fe2O3));
        v(Element::MA) = ComputeMA(v(Element::Al2O3), v(Element::Fe2O3));
        v(Element::LSF) = ComputeLSF(v(Element::CaO), v(Element::SiO2), v(Element::Al2O3), v(Element::Fe2O3));
    }
    return formatPrintf(
        "Quantity %.2lf; Titration %.2f; SiO2 %.2f; Al2O3 %.2f; Fe2O3 %.2f; MS %.2f; MA %.2f; LSF %.2f",
        total, v(Element::Titration), v(Element::SiO2), v(Element::Al2O3), v(Element::Fe2O3), v(Element::MS),
        v(Element::MA), v(Element::LSF));
}

BlastOptimization::Result BlastOptimization::optimize(const QString& debugFile) const
{
    Result result;
    OptimizationRequest& r = result.request;
    r.mode = mode();
    r.element = element();
    r.target = target();
    r.requestedTonnage = requestedTonnage();
    r.constraints = elementConstraints();
    if (std::optional<QString> refusal = sourceCountRefusal(mSelection.size())) {
        result.outcome.message = *refusal;
        return result;
    }
    const std::vector<Record> blasts = RecordTable(mDb, Table::Blast).findNames(mSelection);
    for (qsizetype i = 0; i < mSelection.size(); ++i) {
        const std::size_t j = static_cast<std::size_t>(i);
        if (j >= blasts.size() || blasts[j].name().compare(mSelection[i], Qt::CaseInsensitive) != 0) {
            result.outcome.message = message(Msg::SourceNoLongerThere, {mSelection[i]});
            return result;
        }
        r.sources.push_back(
            {blasts[j].name(), blasts[j].number(QStringLiteral("Quantity")), blasts[j].analysis()});
    }

    const ChemEquationCoefficients coefficients = chemCoefficients();
    const OptimizationModel model(coefficients);
    result.outcome = model.run(r, OptimizationModel::debugDump(debugFile));
    if (result.outcome.solved)
        result.report = BlastReport::build(r, result.outcome, constraintTexts(),
                                           BlendSummary::of(r, result.outcome, coefficients));
    return result;
}

SourceUpdate::Blend BlastOptimization::blendOf(const Result& result)
{
    const BlendSummary summary = BlendSummary::of(result.request, result.outcome, chemCoefficients());
    return {Table::Stockpile, {}, summary.tonnage, summary.values};
}

std::vector<SourceUpdate::Take> BlastOptimization::takesOf(const Result& result)
{
    std::vector<SourceUpdate::Take> takes;
    for (std::size_t j = 0; j < result.request.sources.size(); ++j) {
        const BLAST& blast = result.request.sources[j];
        takes.push_back(
            {Table::Blast, {blast.name, {}}, result.outcome.tonnes(j), blast.tonnage, blast.values});
    }
    return takes;
}

COptimizationParameters BlastOptimization::parametersForOk(const COptimizationParameters& previous) const
{
    COptimizationParameters p = previous;
    if (modeChoice() != 3)
        p.mode = mode();
    p.optimizedElement = elementName(element());
    p.target = target();
    p.requestedTonnage = requestedTonnage();
    p.constraints = elementConstraints();
    p.coordinateFilter = mFilter ? 1 : 0;
    p.eastMinimum = mBounds[0];
    p.eastMaximum = mBounds[1];
    p.northMinimum = mBounds[2];
    p.northMaximum = mBounds[3];
    p.elevationMinimum = mBounds[4];
    p.elevationMaximum = mBounds[5];
    p.selectedSources = mSelection;
    return p;
}

COptimizationParameters BlastOptimization::accept(const COptimizationParameters& previous)
{
    Transaction transaction(mDb);
    RecordTable(mDb, Table::TempBlast).removeAll();
    transaction.commit();
    return parametersForOk(previous);
}

} // namespace kilnova
