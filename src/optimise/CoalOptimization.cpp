#include "optimise/CoalOptimization.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "common/MessageTable.h"
#include "common/PrintfFormat.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "optimise/CoalReport.h"
#include "optimise/ReportLines.h"

#include <QSqlQuery>

#include <algorithm>

namespace kilnova {

static_assert(CCoalOptParameters::kEntryCount == kCoalPropertyCount);

CoalOptimization::CoalOptimization(ProjectDatabase& db, const CCoalOptParameters& p)
    : OptimizationSettings(modeChoiceNames(), CoalProperties::names(), kCoalPropertyCount)
    , mDb(db)
{
    loadSettings(p.mode, elementOfName(p.optimizedElement), p.target, p.requestedTonnage,
                 {p.constraints.begin(), p.constraints.end()});
}

QStringList CoalOptimization::sourceNames() const
{
    QSqlQuery q = mDb.exec(QStringLiteral("SELECT [Name] FROM [Coal] ORDER BY [Name]"));
    QStringList names;
    while (q.next())
        names << q.value(0).toString();
    return names;
}

void CoalOptimization::setSelection(const QStringList& names)
{
    mSelection = inListOrder(names);
}

std::optional<Record> CoalOptimization::source(const QString& name) const
{
    return RecordTable(mDb, Table::Coal).find({name, {}});
}

BlendProblem CoalOptimization::problemOf(const std::vector<CoalSource>& coals) const
{
    BlendProblem p;
    p.layout = CoalProperties::layout();
    p.boundOffset.assign(kCoalPropertyCount, 0.0);
    for (const CoalSource& c : coals) {
        std::vector<float> values;
        for (double v : c.properties)
            values.push_back(static_cast<float>(v));
        ModelSource s{c.name, c.tonnage, PropertyValues(std::move(values)),
                      SourceWeights::unit(kCoalPropertyCount), std::nullopt};
        // The ash analysis weighs by the coal's ash; without a usable Ash it cannot be weighed.
        const double ash =
            static_cast<double>(s.values[static_cast<std::size_t>(coalPropertyIndex(CoalProperty::Ash))]);
        std::optional<QString> ashRefusal;
        if (ash == kMissing)
            ashRefusal = message(Msg::MissingValueInSource, {c.name});
        else if (ash <= 0.0)
            ashRefusal = message(Msg::CoalWithoutAsh, {c.name, formatPrintf("%.2lf", ash)});
        s.propertyRefusals.resize(kCoalPropertyCount);
        for (int k = 0; k < kCoalPropertyCount; ++k) {
            if (!CoalProperties::inAshAnalysis(k))
                continue;
            const std::size_t i = static_cast<std::size_t>(k);
            s.weights.value[i] = s.weights.bound[i] = s.weights.objective[i] = ash;
            s.propertyRefusals[i] = ashRefusal;
        }
        p.sources.push_back(std::move(s));
    }
    p.mode = mode();
    p.element = element();
    p.target = target();
    p.tonnage = requestedTonnage();
    for (int k = 0; k < kCoalPropertyCount; ++k) {
        const ConstraintEntry& c = constraint(k);
        if (c.isActive())
            p.bounds.push_back({k, c.minimum, c.maximum});
    }
    p.declaredRows = OptimizationModel::blendRowCount(p.mode, p.bounds.size(), p.sources.size());
    return p;
}

std::optional<QString> CoalOptimization::tonnageRefusal(const std::vector<CoalSource>& coals) const
{
    // Maximize Tonnage has no tonnage row; otherwise more than the coals hold cannot be had.
    if (mode() == 2)
        return std::nullopt;
    double held = 0.0;
    for (const CoalSource& c : coals)
        held += c.tonnage;
    if (requestedTonnage() <= held)
        return std::nullopt;
    return message(Msg::CoalTonnageNotAvailable,
                   {formatPrintf("%.2lf", requestedTonnage()), formatPrintf("%.2lf", held)});
}

CoalOptimization::Result CoalOptimization::optimize(const QString& debugFile) const
{
    Result result;
    result.mode = mode();
    result.property = element();
    if (std::optional<QString> refusal = sourceCountRefusal(mSelection.size())) {
        result.outcome.message = *refusal;
        return result;
    }
    const std::vector<Record> records = RecordTable(mDb, Table::Coal).findNames(mSelection);
    for (qsizetype i = 0; i < mSelection.size(); ++i) {
        const std::size_t j = static_cast<std::size_t>(i);
        if (j >= records.size() || records[j].name().compare(mSelection[i], Qt::CaseInsensitive) != 0) {
            result.outcome.message = message(Msg::SourceRecordGone, {QStringLiteral("coal"), mSelection[i],
                                                                     Schema::table(Table::Coal).name});
            return result;
        }
        result.coals.push_back(CoalSource::fromRecord(records[j]));
    }

    const ChemEquationCoefficients coefficients = chemCoefficients();
    const OptimizationModel model(coefficients);
    const BlendProblem problem = problemOf(result.coals);
    std::optional<QString> refusal = model.refusal(problem);
    if (!refusal)
        refusal = tonnageRefusal(result.coals);
    if (refusal) {
        result.outcome.message = *refusal;
        return result;
    }
    result.outcome = model.run(problem, OptimizationModel::debugDump(debugFile));
    if (!result.outcome.solved)
        return result;
    std::vector<double> tonnes;
    for (std::size_t j = 0; j < result.coals.size(); ++j)
        tonnes.push_back(result.outcome.tonnes(j));
    result.mix = CoalSummary::of(result.coals, tonnes, coefficients);
    result.report = CoalReport::build(result.coals, result.outcome, result.mode, result.property,
                                      constraintTexts(), result.mix);
    return result;
}

SourceUpdate::Blend CoalOptimization::blendOf(const Result& result)
{
    SourceUpdate::Blend blend{Table::Coal, {}, result.mix.tonnage, {}};
    blend.values.fill(kMissing);
    for (int k = 0; k < kCoalPropertyCount; ++k) {
        const double v = result.mix.properties[static_cast<std::size_t>(k)];
        if (const std::optional<Element> e = CoalProperties::ashElement(k))
            blend.values[static_cast<std::size_t>(elementIndex(*e))] = v;
        else if (k == coalPropertyIndex(CoalProperty::CostFactor))
            blend.values[static_cast<std::size_t>(elementIndex(Element::CostFactor))] = v;
        else
            blend.columns.emplace_back(CoalProperties::columnName(k), v);
    }
    blend.values[static_cast<std::size_t>(elementIndex(Element::Cl))] = result.mix.Cl;
    return blend;
}

std::vector<SourceUpdate::Take> CoalOptimization::takesOf(const Result& result)
{
    std::vector<SourceUpdate::Take> takes;
    for (std::size_t j = 0; j < result.coals.size(); ++j)
        takes.push_back({Table::Coal,
                         {result.coals[j].name, {}},
                         result.outcome.tonnes(j),
                         result.coals[j].tonnage,
                         result.coals[j].read});
    return takes;
}

BlendChartData::Quantity CoalOptimization::quantityOf(int property)
{
    return {CoalProperties::names().at(property), CoalProperties::unit(property), ReportLines::kDecimals};
}

BlendChartData CoalOptimization::chartOf(const Result& result)
{
    if (!result.outcome.problem)
        return {};
    BlendChartData chart =
        BlendChartData::of(*result.outcome.problem, result.mix.properties, result.mix.tonnage, quantityOf);
    chart.caption = QStringLiteral("Coal mix of %1 t").arg(chart.tonnage, 0, 'f', 2);
    // "SiO2 52 %" of a coal would read as its own silica; the report gives the ash's.
    if (std::any_of(chart.rows.begin(), chart.rows.end(),
                    [](const BlendChartData::Row& r) { return CoalProperties::inAshAnalysis(r.element); }))
        chart.caption += QStringLiteral("; oxides, moduli and phases of its ash");
    return chart;
}

QString CoalOptimization::subtractQuestion()
{
    return message(Msg::SubtractQuantities) + QStringLiteral("\n\n") +
           message(Msg::CoalChangeCannotBeRestored);
}

CCoalOptParameters CoalOptimization::parametersForOk(const CCoalOptParameters& previous) const
{
    CCoalOptParameters p = previous;
    p.mode = mode();
    p.optimizedElement = CoalProperties::names()[element()];
    p.target = target();
    p.requestedTonnage = requestedTonnage();
    for (int k = 0; k < kCoalPropertyCount; ++k)
        p.constraints[static_cast<std::size_t>(k)] = constraint(k);
    return p;
}

} // namespace kilnova
