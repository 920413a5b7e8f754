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
#include <QStandardPaths>

#include <algorithm>

namespace kilnova {

namespace {

/// The names in the order the source list shows them (by name, as the database sorts).
QStringList listed(QStringList names)
{
    std::stable_sort(names.begin(), names.end(), Schema::nameLess);
    return names;
}

} // namespace

const QStringList& BlastOptimization::modeChoices()
{
    static const QStringList choices = {"Minimize", "Maximize", "Target", "Maximize Tonnage"};
    return choices;
}

int BlastOptimization::modeOfChoice(int position)
{
    switch (position) {
    case 1:
        return 1;
    case 2:
        return 0;
    case 3:
        return 2;
    default:
        return -1;
    }
}

int BlastOptimization::choiceOfMode(int mode)
{
    switch (mode) {
    case -1:
        return 0;
    case 1:
        return 1;
    case 0:
        return 2;
    case 2:
        return 3;
    default:
        return -1;
    }
}

BlastOptimization::BlastOptimization(ProjectDatabase& db, const COptimizationParameters& p)
    : mDb(db)
    , mModeChoice(choiceOfMode(p.mode))
    , mElement(elementFromName(p.optimizedElement.toStdString()).value_or(0))
    , mTarget(p.target)
    , mRequestedTonnage(p.requestedTonnage)
    , mConstraints(p.constraints)
    , mFilter(p.coordinateFilter != 0)
    , mBounds{p.eastMinimum,  p.eastMaximum,      p.northMinimum,
              p.northMaximum, p.elevationMinimum, p.elevationMaximum}
    , mSelection(listed(p.selectedSources))
{
    for (int k = 0; k < kElementCount; ++k) {
        if (mConstraints[static_cast<std::size_t>(k)].isActive())
            mConstraintOrder.push_back(k);
    }
}

QStringList BlastOptimization::constraintTexts() const
{
    QStringList texts;
    for (int k : mConstraintOrder)
        texts << mConstraints[static_cast<std::size_t>(k)].text;
    return texts;
}

std::optional<QString> BlastOptimization::checkConstraint(int element, std::optional<int> replacing) const
{
    for (std::size_t row = 0; row < mConstraintOrder.size(); ++row) {
        if (mConstraintOrder[row] == element && std::optional<int>(static_cast<int>(row)) != replacing)
            return message(Msg::ConstraintAlreadySet);
    }
    if (mode() == 0 && element == mElement)
        return message(Msg::NoConstraintOnTargetElement);
    return std::nullopt;
}

std::optional<QString> BlastOptimization::addConstraint(int element, double minimum, double maximum)
{
    if (auto refusal = checkConstraint(element, std::nullopt))
        return refusal;
    ConstraintEntry& c = mConstraints[static_cast<std::size_t>(element)];
    c = {minimum, maximum, ConstraintEntry::format(minimum, elementName(element), maximum), 1};
    mConstraintOrder.push_back(element);
    return std::nullopt;
}

std::optional<QString> BlastOptimization::modifyConstraint(int row, int element, double minimum,
                                                           double maximum)
{
    if (row < 0 || row >= static_cast<int>(mConstraintOrder.size()))
        return addConstraint(element, minimum, maximum);
    if (auto refusal = checkConstraint(element, row))
        return refusal;
    const int old = mConstraintOrder[static_cast<std::size_t>(row)];
    mConstraints[static_cast<std::size_t>(old)] = ConstraintEntry{};
    mConstraints[static_cast<std::size_t>(element)] = {
        minimum, maximum, ConstraintEntry::format(minimum, elementName(element), maximum), 1};
    mConstraintOrder[static_cast<std::size_t>(row)] = element;
    return std::nullopt;
}

void BlastOptimization::removeConstraint(int row)
{
    if (row < 0 || row >= static_cast<int>(mConstraintOrder.size()))
        return;
    mConstraints[static_cast<std::size_t>(mConstraintOrder[static_cast<std::size_t>(row)])] =
        ConstraintEntry{};
    mConstraintOrder.erase(mConstraintOrder.begin() + row);
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
    mSelection = listed(names);
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
    r.element = mElement;
    r.target = mTarget;
    r.requestedTonnage = mRequestedTonnage;
    r.constraints = mConstraints;
    if (mSelection.size() < 2) {
        result.outcome.message = message(Msg::SelectTwoSources);
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
    result.outcome = model.run(r, [&debugFile](const ClpSolve& lp1) {
        if (!debugFile.isEmpty())
            lp1.DumpToFile(QDir::toNativeSeparators(debugFile).toStdString());
    });
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
    if (mModeChoice != 3)
        p.mode = mode();
    p.optimizedElement = elementName(mElement);
    p.target = mTarget;
    p.requestedTonnage = mRequestedTonnage;
    p.constraints = mConstraints;
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

QString BlastOptimization::debugFilePath()
{
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/Kilnova");
    QDir().mkpath(folder);
    return folder + QStringLiteral("/debug.txt");
}

} // namespace kilnova
