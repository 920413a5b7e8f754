#include "optimise/StockpileOptimization.h"

#include "common/MessageTable.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Schema.h"
#include "optimise/BlendSummary.h"
#include "optimise/StockpileReport.h"

#include <QSqlQuery>

#include <algorithm>

namespace kilnova {

namespace {

bool keyLess(const RecordKey& a, const RecordKey& b)
{
    if (Schema::nameLess(a.name, b.name))
        return true;
    if (Schema::nameLess(b.name, a.name))
        return false;
    return Schema::nameLess(a.source, b.source);
}

/// The database compares keys without regard to case.
bool sameKey(const RecordKey& a, const RecordKey& b)
{
    return a.name.compare(b.name, Qt::CaseInsensitive) == 0 &&
           a.source.compare(b.source, Qt::CaseInsensitive) == 0;
}

/// Stored entries as the constraint list takes them, and the list order their positions give.
std::vector<ConstraintEntry> entriesOf(const std::array<CSTKOptParameters::Entry, kElementCount>& stored,
                                       std::vector<int>& order)
{
    std::vector<ConstraintEntry> entries;
    std::vector<std::pair<qint32, int>> positions;
    for (int k = 0; k < kElementCount; ++k) {
        const CSTKOptParameters::Entry& e = stored[static_cast<std::size_t>(k)];
        // A text lost on the way is written again rather than shown empty.
        const QString text = e.text.isEmpty() && e.active != 0
                                 ? ConstraintEntry::format(e.minimum, elementName(k), e.maximum)
                                 : e.text;
        entries.push_back({e.minimum, e.maximum, text, e.active});
        if (e.active != 0 && e.position > 0)
            positions.emplace_back(e.position, k);
    }
    std::stable_sort(positions.begin(), positions.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    order.clear();
    for (const auto& p : positions)
        order.push_back(p.second);
    return entries;
}

std::array<CSTKOptParameters::Entry, kElementCount> storedOf(const ConstraintList& list)
{
    std::array<CSTKOptParameters::Entry, kElementCount> stored{};
    for (int k = 0; k < kElementCount && k < list.size(); ++k) {
        const ConstraintEntry& e = list.entry(k);
        stored[static_cast<std::size_t>(k)] = {e.minimum, e.maximum, e.text, e.active, 0};
    }
    for (std::size_t row = 0; row < list.order().size(); ++row)
        stored[static_cast<std::size_t>(list.order()[row])].position = static_cast<qint32>(row + 1);
    return stored;
}

std::vector<ElementBound> boundsOf(const ConstraintList& list)
{
    // Rows go in element order, whatever the order of the list.
    std::vector<ElementBound> bounds;
    for (int k = 0; k < list.size(); ++k) {
        if (list.entry(k).isActive())
            bounds.push_back({k, list.entry(k).minimum, list.entry(k).maximum});
    }
    return bounds;
}

} // namespace

StockpileOptimization::StockpileOptimization(ProjectDatabase& db, const CSTKOptParameters& p)
    // Cl can be constrained but not optimised.
    : OptimizationSettings(modeChoiceNames(), elementNames(), elementIndex(Element::Cl))
    , mDb(db)
    , mLeft(elementNames())
{
    std::vector<int> order;
    const std::vector<ConstraintEntry> product = entriesOf(p.productConstraints, order);
    loadSettings(p.mode, elementOfName(p.optimizedElement), p.target, p.requestedTonnage, product, order);
    const std::vector<ConstraintEntry> left = entriesOf(p.remainderConstraints, order);
    mLeft.assign(left, order);

    const qsizetype claimed = std::max<qsizetype>(p.stockpileCount, 0);
    const qsizetype pairs = std::min(claimed, p.sources.size() / 2);
    std::vector<RecordKey> stockpiles;
    for (qsizetype i = 0; i < pairs; ++i)
        stockpiles.push_back({p.sources[2 * i], p.sources[2 * i + 1]});
    setSelectedStockpiles(std::move(stockpiles));
    setSelectedAdditives(2 * claimed <= p.sources.size() ? p.sources.mid(2 * claimed) : QStringList());
}

std::optional<QString> StockpileOptimization::addLeftConstraint(int element, double minimum, double maximum)
{
    return mLeft.add(element, minimum, maximum);
}

std::optional<QString> StockpileOptimization::modifyLeftConstraint(int row, int element, double minimum,
                                                                   double maximum)
{
    return mLeft.modify(row, element, minimum, maximum);
}

void StockpileOptimization::removeLeftConstraint(int row)
{
    mLeft.remove(row);
}

QString StockpileOptimization::keyText(const RecordKey& key)
{
    return QStringLiteral("%1 (%2)").arg(key.name, key.source);
}

std::optional<RecordKey> StockpileOptimization::parseKeyText(const QString& text)
{
    const qsizetype open = text.lastIndexOf(QStringLiteral(" ("));
    if (open <= 0 || !text.endsWith(u')'))
        return std::nullopt;
    return RecordKey{text.left(open), text.mid(open + 2, text.size() - open - 3)};
}

std::vector<RecordKey> StockpileOptimization::stockpileKeys() const
{
    std::vector<RecordKey> keys;
    QSqlQuery q = mDb.exec(QStringLiteral("SELECT DISTINCT [Name], [Source] FROM [Stockpile]"));
    while (q.next())
        keys.push_back({q.value(0).toString(), q.value(1).toString()});
    std::stable_sort(keys.begin(), keys.end(), keyLess);
    return keys;
}

QStringList StockpileOptimization::additiveNames() const
{
    return inListOrder(RecordTable(mDb, Table::Additives).names());
}

void StockpileOptimization::setSelectedStockpiles(std::vector<RecordKey> keys)
{
    std::stable_sort(keys.begin(), keys.end(), keyLess);
    mStockpiles = std::move(keys);
}

void StockpileOptimization::setSelectedAdditives(const QStringList& names)
{
    mAdditives = inListOrder(names);
}

std::optional<QString> StockpileOptimization::selectByText(const QStringList& texts)
{
    const std::vector<RecordKey> stockpiles = stockpileKeys();
    const QStringList additives = additiveNames();
    std::vector<RecordKey> chosenStockpiles;
    QStringList chosenAdditives;
    for (const QString& text : texts) {
        if (const std::optional<RecordKey> key = parseKeyText(text)) {
            const auto found = std::find_if(stockpiles.begin(), stockpiles.end(),
                                            [&key](const RecordKey& k) { return sameKey(k, *key); });
            if (found != stockpiles.end()) {
                chosenStockpiles.push_back(*found);
                continue;
            }
        }
        const qsizetype additive = additives.indexOf(text);
        if (additive < 0)
            return message(Msg::UnknownSource, {text});
        chosenAdditives << additives[additive];
    }
    setSelectedStockpiles(std::move(chosenStockpiles));
    setSelectedAdditives(chosenAdditives);
    return std::nullopt;
}

std::optional<Record> StockpileOptimization::stockpile(const RecordKey& key) const
{
    return RecordTable(mDb, Table::Stockpile).find(key);
}

std::optional<Record> StockpileOptimization::additive(const QString& name) const
{
    return RecordTable(mDb, Table::Additives).find({name, {}});
}

StockpileOptimization::Result StockpileOptimization::optimize(const QString& debugFile) const
{
    Result result;
    BlendProblem& p = result.problem;
    p.mode = mode();
    p.element = element();
    p.target = target();
    p.tonnage = requestedTonnage();
    // Maximize Tonnage makes as much crude as the limits allow, as it does for blasts.
    p.tonnageRow = mode() != 2;
    p.bounds = boundsOf(constraintList());
    p.remainderBounds = boundsOf(mLeft);
    if (std::optional<QString> refusal =
            sourceCountRefusal(static_cast<qsizetype>(mStockpiles.size()) + mAdditives.size())) {
        result.outcome.message = *refusal;
        return result;
    }

    // Every stockpile in one query: the selection is matched in memory.
    const std::vector<Record> piles = RecordTable(mDb, Table::Stockpile).all();
    for (const RecordKey& key : mStockpiles) {
        const auto found = std::find_if(piles.begin(), piles.end(),
                                        [&key](const Record& r) { return sameKey(r.key(), key); });
        if (found == piles.end()) {
            result.outcome.message =
                message(Msg::SourceRecordGone,
                        {QStringLiteral("stockpile"), keyText(key), Schema::table(Table::Stockpile).name});
            return result;
        }
        p.sources.push_back({keyText(found->key()), found->number(QStringLiteral("Quantity")),
                             found->analysis(), SourceWeights::unit(), std::nullopt});
        result.keys.push_back(found->key());
    }
    const std::vector<Record> additives = RecordTable(mDb, Table::Additives).findNames(mAdditives);
    for (qsizetype i = 0; i < mAdditives.size(); ++i) {
        const std::size_t j = static_cast<std::size_t>(i);
        if (j >= additives.size() || additives[j].name().compare(mAdditives[i], Qt::CaseInsensitive) != 0) {
            result.outcome.message =
                message(Msg::SourceRecordGone,
                        {QStringLiteral("additive"), mAdditives[i], Schema::table(Table::Additives).name});
            return result;
        }
        p.sources.push_back({additives[j].name(), std::nullopt, additives[j].analysis(),
                             SourceWeights::unit(), std::nullopt});
        result.keys.push_back({additives[j].name(), {}});
    }

    const ChemEquationCoefficients coefficients = chemCoefficients();
    result.outcome = OptimizationModel(coefficients).run(p, OptimizationModel::debugDump(debugFile));
    if (result.outcome.solved)
        result.report = StockpileReport::build(p, result.keys, result.outcome, constraintTexts(),
                                               mLeft.texts(), coefficients);
    return result;
}

SourceUpdate::Blend StockpileOptimization::crudeOf(const Result& result)
{
    const BlendSummary crude = StockpileReport::crude(result.problem, result.outcome, chemCoefficients());
    return {Table::Crude, {}, crude.tonnage, crude.values};
}

std::vector<SourceUpdate::Take> StockpileOptimization::takesOf(const Result& result)
{
    std::vector<SourceUpdate::Take> takes;
    for (std::size_t j = 0; j < result.problem.sources.size() && j < result.keys.size(); ++j) {
        const ModelSource& read = result.problem.sources[j];
        if (read.available)
            takes.push_back({Table::Stockpile, result.keys[j], result.outcome.tonnes(j), *read.available,
                             read.values.analysis()});
    }
    return takes;
}

BlendChartData StockpileOptimization::chartOf(const Result& result)
{
    const BlendSummary crude = StockpileReport::crude(result.problem, result.outcome, chemCoefficients());
    return BlendChartData::of(result.problem, crude.values, crude.tonnage);
}

CSTKOptParameters StockpileOptimization::parameters(const CSTKOptParameters& previous) const
{
    CSTKOptParameters p = previous;
    p.mode = mode();
    p.optimizedElement = elementName(element());
    p.target = target();
    p.requestedTonnage = requestedTonnage();
    p.productConstraints = storedOf(constraintList());
    p.remainderConstraints = storedOf(mLeft);
    p.stockpileCount = static_cast<qint32>(mStockpiles.size());
    p.sources.clear();
    for (const RecordKey& key : mStockpiles)
        p.sources << key.name << key.source;
    p.sources << mAdditives;
    return p;
}

} // namespace kilnova
