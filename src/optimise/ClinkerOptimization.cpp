#include "optimise/ClinkerOptimization.h"

#include "common/MessageTable.h"
#include "database/RecordTable.h"
#include "optimise/ClinkerReport.h"

#include <map>

namespace kilnova {

namespace {

bool sameKey(const RecordKey& a, const QString& name, const QString& source)
{
    return a.name == name && a.source == source;
}

} // namespace

const QStringList& ClinkerOptimization::modeChoices()
{
    static const QStringList choices = {"Minimize", "Maximize", "Target"};
    return choices;
}

const QStringList& ClinkerOptimization::selectionChoices()
{
    static const QStringList choices = {"Crude + Coal", "Stockpile + Additives + Coal"};
    return choices;
}

ClinkerOptimization::ClinkerOptimization(ProjectDatabase& db, const CClinkerOptParameters& p,
                                         const ClinkerProcessParameters& process, double freeLime)
    : OptimizationSettings(modeChoices(), elementNames(), kElementCount)
    , mDb(db)
    , mProcess(process)
    , mFreeLime(freeLime)
    , mSelection(p.sourceSelection == CClinkerOptParameters::kStockpileAdditivesAndCoal
                     ? CClinkerOptParameters::kStockpileAdditivesAndCoal
                     : CClinkerOptParameters::kCrudeAndCoal)
    , mRaw(inListOrder(p.crudeSources))
    , mAdditives(inListOrder(p.additiveSources))
    , mCoal(inListOrder(p.coalSources))
    , mLimits(p.tonnageConstraints)
{
    loadSettings(p.mode, elementOfName(p.optimizedElement), p.target, p.requestedTonnage,
                 {p.constraints.begin(), p.constraints.end()});
    if (modeChoice() >= modeChoices().size())
        setModeChoice(choiceOfMode(CClinkerOptParameters::kMaximize));
}

void ClinkerOptimization::setStockpiles(bool on)
{
    if (on == stockpiles())
        return;
    mSelection =
        on ? CClinkerOptParameters::kStockpileAdditivesAndCoal : CClinkerOptParameters::kCrudeAndCoal;
    mRaw.clear();
}

QString ClinkerOptimization::rawCaption() const
{
    return stockpiles() ? QStringLiteral("Stockpile") : QStringLiteral("Crude");
}

QStringList ClinkerOptimization::listOf(Table table) const
{
    QStringList texts;
    for (const Record& r : RecordTable(mDb, table).all())
        texts << SOURCE::fromRecord(r).listText();
    return inListOrder(texts);
}

QStringList ClinkerOptimization::rawList() const
{
    return listOf(rawTable());
}

QStringList ClinkerOptimization::additiveList() const
{
    return stockpiles() ? listOf(Table::Additives) : QStringList();
}

QStringList ClinkerOptimization::coalList() const
{
    return listOf(Table::Coal);
}

bool ClinkerOptimization::select(const QString& name)
{
    const std::vector<Record> raw = RecordTable(mDb, rawTable()).all();
    int named = 0;
    QString text;
    for (const Record& r : raw) {
        const SOURCE s = SOURCE::fromRecord(r);
        if (s.listText() == name) {
            named = 1;
            text = name;
            break;
        }
        if (s.name == name) {
            ++named;
            text = s.listText();
        }
    }
    if (named == 1) {
        setRawSelection(mRaw + QStringList{text});
        return true;
    }
    if (named > 1)
        return false;
    if (additiveList().contains(name)) {
        setAdditiveSelection(mAdditives + QStringList{name});
        return true;
    }
    if (coalList().contains(name)) {
        setCoalSelection(mCoal + QStringList{name});
        return true;
    }
    return false;
}

std::optional<Record> ClinkerOptimization::source(const QString& listText) const
{
    for (Table table : {rawTable(), Table::Additives, Table::Coal}) {
        for (const Record& r : RecordTable(mDb, table).all()) {
            if (SOURCE::fromRecord(r).listText() == listText)
                return r;
        }
    }
    return std::nullopt;
}

std::vector<RecordKey> ClinkerOptimization::stockpileKeys() const
{
    std::map<QString, RecordKey> keys;
    QStringList texts;
    for (const Record& r : RecordTable(mDb, Table::Stockpile).all()) {
        const QString text = SOURCE::fromRecord(r).listText();
        if (keys.emplace(text, r.key()).second)
            texts << text;
    }
    std::vector<RecordKey> ordered;
    for (const QString& text : inListOrder(texts))
        ordered.push_back(keys.at(text));
    return ordered;
}

QStringList ClinkerOptimization::tonnageConstraintTexts() const
{
    QStringList texts;
    for (const CClinkerOptParameters::TonnageConstraint& t : mLimits)
        texts << t.text;
    return texts;
}

std::optional<QString> ClinkerOptimization::checkLimit(const RecordKey& stockpile,
                                                       std::optional<int> replacing) const
{
    for (int row = 0; row < mLimits.size(); ++row) {
        if (sameKey(stockpile, mLimits[row].stockpile, mLimits[row].source) &&
            std::optional<int>(row) != replacing)
            return message(Msg::ConstraintAlreadySet);
    }
    return std::nullopt;
}

std::optional<QString> ClinkerOptimization::addTonnageConstraint(const RecordKey& stockpile, double minimum,
                                                                 double maximum)
{
    if (auto refusal = checkLimit(stockpile, std::nullopt))
        return refusal;
    CClinkerOptParameters::TonnageConstraint t{stockpile.name, stockpile.source, minimum, maximum, {}};
    t.text = t.describe();
    mLimits.append(t);
    return std::nullopt;
}

std::optional<QString> ClinkerOptimization::modifyTonnageConstraint(int row, const RecordKey& stockpile,
                                                                    double minimum, double maximum)
{
    if (row < 0 || row >= mLimits.size())
        return addTonnageConstraint(stockpile, minimum, maximum);
    if (auto refusal = checkLimit(stockpile, row))
        return refusal;
    CClinkerOptParameters::TonnageConstraint t{stockpile.name, stockpile.source, minimum, maximum, {}};
    t.text = t.describe();
    mLimits[row] = t;
    return std::nullopt;
}

void ClinkerOptimization::removeTonnageConstraint(int row)
{
    if (row >= 0 && row < mLimits.size())
        mLimits.removeAt(row);
}

std::vector<SOURCE> ClinkerOptimization::load(Table table, const QStringList& texts, QString& missing) const
{
    std::map<QString, Record> byText;
    for (Record& r : RecordTable(mDb, table).all())
        byText.emplace(SOURCE::fromRecord(r).listText(), std::move(r));
    std::vector<SOURCE> sources;
    for (const QString& text : texts) {
        const auto found = byText.find(text);
        if (found == byText.end()) {
            missing = message(Msg::SourceRecordGone, {SOURCE::kindWord(SOURCE::kindOf(table)).toLower(), text,
                                                      Schema::table(table).name});
            return {};
        }
        sources.push_back(SOURCE::fromRecord(found->second));
    }
    return sources;
}

ClinkerOptimization::Result ClinkerOptimization::optimize(const QString& debugFile) const
{
    Result result;
    ClinkerRequest& r = result.request;
    r.stockpiles = stockpiles();
    r.mode = mode();
    r.element = element();
    r.target = target();
    r.requestedTonnage = requestedTonnage();
    r.constraints = elementConstraints();
    r.process = mProcess;
    r.freeLime = mFreeLime;
    // Counted before anything is read, as every optimisation counts its sources.
    if (std::optional<QString> few =
            sourceCountRefusal(mRaw.size() + (stockpiles() ? mAdditives.size() : 0) + mCoal.size())) {
        result.outcome.message = *few;
        return result;
    }

    QString missing;
    std::vector<std::pair<Table, const QStringList*>> lists = {{rawTable(), &mRaw}};
    if (stockpiles())
        lists.emplace_back(Table::Additives, &mAdditives);
    lists.emplace_back(Table::Coal, &mCoal);
    for (const auto& [table, texts] : lists) {
        std::vector<SOURCE> loaded = load(table, *texts, missing);
        if (!missing.isEmpty()) {
            result.outcome.message = missing;
            return result;
        }
        r.sources.insert(r.sources.end(), loaded.begin(), loaded.end());
    }
    if (stockpiles()) {
        for (const CClinkerOptParameters::TonnageConstraint& t : mLimits) {
            for (std::size_t j = 0; j < r.sources.size(); ++j) {
                if (r.sources[j].kind == SOURCE::kStockpile &&
                    sameKey(r.sources[j].key(), t.stockpile, t.source))
                    r.tonnageLimits.push_back({j, t.minimum, t.maximum});
            }
        }
    }

    const ChemEquationCoefficients coefficients = chemCoefficients();
    result.outcome = ClinkerModel(coefficients).run(r, OptimizationModel::debugDump(debugFile));
    if (result.outcome.solved) {
        result.balance = ClinkerBalance::of(r, result.outcome, coefficients);
        result.report = ClinkerReport::build(r, result.outcome, constraintTexts(), result.balance);
    }
    return result;
}

SourceUpdate::Blend ClinkerOptimization::clinkerOf(const Result& result)
{
    return {Table::Clinker, {}, result.balance.clinkerTonnage, result.balance.clinker};
}

SourceUpdate::Blend ClinkerOptimization::crudeOf(const Result& result)
{
    return {Table::Crude, {}, result.balance.crudeTonnage, result.balance.crude};
}

std::vector<SourceUpdate::Take> ClinkerOptimization::takesOf(const Result& result)
{
    std::vector<SourceUpdate::Take> takes;
    for (std::size_t j = 0; j < result.request.sources.size(); ++j) {
        const SOURCE& s = result.request.sources[j];
        if (s.kind != SOURCE::kAdditive)
            takes.push_back(
                {s.table(), s.key(), result.outcome.tonnes(j), s.quantity.value_or(0.0), s.values});
    }
    return takes;
}

BlendChartData ClinkerOptimization::chartOf(const Result& result)
{
    const ClinkerRequest& r = result.request;
    // The tonnage the report says is needed: the requested one unless the blend degenerates.
    return BlendChartData::of(r.mode, r.element, r.target, r.constraints, result.balance.clinker,
                              result.balance.areNeeded());
}

CClinkerOptParameters ClinkerOptimization::parametersForOk(const CClinkerOptParameters& previous) const
{
    CClinkerOptParameters p = previous;
    p.mode = mode();
    p.optimizedElement = elementName(element());
    p.target = target();
    p.requestedTonnage = requestedTonnage();
    p.constraints = elementConstraints();
    p.sourceSelection = mSelection;
    p.tonnageConstraints = mLimits;
    p.crudeSources = mRaw;
    p.additiveSources = mAdditives;
    p.coalSources = mCoal;
    return p;
}

} // namespace kilnova
