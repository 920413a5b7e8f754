#include "combine/BlastCombiner.h"

#include "combine/CombinationRequest.h"
#include "common/MessageTable.h"
#include "common/PrintfFormat.h"
#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"

namespace kilnova {

namespace {

QString propertyName(int property)
{
    const std::string_view name = elementDisplayName(property);
    return QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
}

QString withCounts(const QString& text, std::initializer_list<int> counts)
{
    // These texts carry printf-style "%d" fields, filled in order.
    QString result = text;
    for (int count : counts) {
        const qsizetype at = result.indexOf(QStringLiteral("%d"));
        if (at < 0)
            break;
        result.replace(at, 2, QString::number(count));
    }
    return result;
}

} // namespace

BlastCombiner::BlastCombiner(ProjectDatabase& db, const CCombinationParameters& parameters, UserPrompt& ui)
    : mDb(db)
    , mTables(db)
    , mParameters(parameters)
    , mUi(ui)
{
}

void BlastCombiner::reportFailure(const QString& details)
{
    mUi.showMessage(message(Msg::DatabaseOperationFailed), UserPrompt::Icon::Error, details);
}

bool BlastCombiner::databaseFileIsThere()
{
    const auto gone = mDb.missingFileMessage();
    if (gone)
        mUi.showMessage(*gone, UserPrompt::Icon::Error);
    return !gone;
}

bool BlastCombiner::open()
{
    mPeriod = 1;
    mSources.clear();
    mSelected.clear();
    if (!databaseFileIsThere())
        return false;
    try {
        mTables.refresh();
        fillSources();
        return true;
    } catch (const DatabaseError& e) {
        reportFailure(e.message());
        return false;
    }
}

bool BlastCombiner::close()
{
    if (!databaseFileIsThere())
        return false;
    try {
        mTables.clearBlasts();
        return true;
    } catch (const DatabaseError& e) {
        reportFailure(e.message());
        return false;
    }
}

void BlastCombiner::fillSources()
{
    WorkingBlastTables::CoordinateFilter filter{mParameters.eastMinimum,      mParameters.eastMaximum,
                                                mParameters.northMinimum,     mParameters.northMaximum,
                                                mParameters.elevationMinimum, mParameters.elevationMaximum};
    mSources = mTables.sources(mParameters.coordinateFilter ? &filter : nullptr);
}

QString BlastCombiner::sourceText(const WorkingBlastTables::Source& source)
{
    return formatPrintf("%s   (%.2lf t)", source.name.toUtf8().constData(), source.quantity);
}

bool BlastCombiner::refreshSources()
{
    const QStringList before = selectedNames();
    try {
        fillSources();
    } catch (const DatabaseError& e) {
        reportFailure(e.message());
        return false;
    }
    mSelected.clear();
    for (const QString& name : before)
        setSelected(name, true);
    return true;
}

void BlastCombiner::setSelected(const QString& name, bool selected)
{
    if (!selected) {
        mSelected.remove(name);
        return;
    }
    for (const WorkingBlastTables::Source& s : mSources) {
        if (s.name == name) {
            mSelected.insert(name);
            return;
        }
    }
}

void BlastCombiner::selectAll()
{
    for (const WorkingBlastTables::Source& s : mSources)
        mSelected.insert(s.name);
}

QStringList BlastCombiner::selectedNames() const
{
    QStringList names;
    for (const WorkingBlastTables::Source& s : mSources) {
        if (mSelected.contains(s.name))
            names << s.name;
    }
    return names;
}

QString BlastCombiner::describeSource(const QString& name)
{
    std::optional<Record> blast;
    std::optional<Record> deviations;
    try {
        blast = mTables.blast(name);
        deviations = mTables.deviations(name);
    } catch (const DatabaseError& e) {
        reportFailure(e.message());
        return {};
    }
    if (!blast)
        return {};
    QString text = formatPrintf("Blast %s\r\n", name.toUtf8().constData());
    for (const char* column : {"East", "North", "Elevation", "Quantity"})
        text += formatPrintf("%11.11s %10.2lf\r\n", column, blast->number(QString::fromLatin1(column)));
    const Analysis values = blast->analysis();
    for (int p = 0; p < kElementCount; ++p)
        text += formatPrintf("%11.11s %10.2lf\r\n", elementDisplayName(p).data(),
                             static_cast<double>(values[static_cast<std::size_t>(p)]));
    if (!deviations)
        return text + formatPrintf("No standard deviations are recorded for this blast.\r\n");
    text += formatPrintf("Standard deviations\r\n");
    for (int c = 1; c < deviations->columnCount(); ++c)
        text += formatPrintf(
            "%11.11s %10.2lf\r\n",
            deviations->definition().columns[static_cast<std::size_t>(c)].name.toUtf8().constData(),
            deviations->value(c).toDouble());
    return text;
}

bool BlastCombiner::setTarget(int property, double value)
{
    CCombinationParameters::Target& t = mParameters.targets.at(static_cast<std::size_t>(property));
    if (t.active) {
        mUi.showMessage(message(Msg::CombinationTargetAlreadySet, {propertyName(property)}),
                        UserPrompt::Icon::Warning);
        return false;
    }
    t = {value, propertyName(property), 1};
    return true;
}

bool BlastCombiner::modifyTarget(int property, double value)
{
    CCombinationParameters::Target& t = mParameters.targets.at(static_cast<std::size_t>(property));
    if (!t.active) {
        mUi.showMessage(message(Msg::CombinationTargetNotSet, {propertyName(property)}),
                        UserPrompt::Icon::Warning);
        return false;
    }
    t.value = value;
    return true;
}

bool BlastCombiner::removeTarget(int property)
{
    CCombinationParameters::Target& t = mParameters.targets.at(static_cast<std::size_t>(property));
    if (!t.active) {
        mUi.showMessage(message(Msg::CombinationTargetNotSet, {propertyName(property)}),
                        UserPrompt::Icon::Warning);
        return false;
    }
    t = CCombinationParameters::Target{};
    return true;
}

std::vector<int> BlastCombiner::targetProperties() const
{
    std::vector<int> properties;
    for (int p = 0; p < kElementCount; ++p) {
        if (mParameters.targets[static_cast<std::size_t>(p)].active)
            properties.push_back(p);
    }
    return properties;
}

std::optional<CombinationOutcome> BlastCombiner::combine(ReportSink& report,
                                                         const CombinationProgress& progress)
{
    const QStringList names = selectedNames();
    if (names.size() < CSuccessfulComb::kSize) {
        mUi.showMessage(message(Msg::SelectTwoSources), UserPrompt::Icon::Warning);
        return std::nullopt;
    }
    // Every pair of the selection may succeed, and each one that does is kept.
    const auto n = static_cast<std::uint64_t>(names.size());
    const std::uint64_t needed = MemoryGuard::pairwise(n, kBytesPerPair, kBytesPerBlast);
    if (!mMemory.fits(needed)) {
        const auto megabytes = [](std::uint64_t bytes) {
            return QString::number((bytes + (1 << 20) - 1) >> 20);
        };
        mUi.showMessage(message(Msg::SelectionTooLarge,
                                {QString::number(n), megabytes(needed), megabytes(mMemory.machine()),
                                 QString::number(mMemory.largestPairwise(kBytesPerPair, kBytesPerBlast))}),
                        UserPrompt::Icon::Warning);
        return std::nullopt;
    }
    auto request = CombinationRequest::fromParameters(mParameters, mPeriod);
    if (const QString* refusal = std::get_if<QString>(&request)) {
        mUi.showMessage(*refusal, UserPrompt::Icon::Warning);
        return std::nullopt;
    }
    std::vector<BLASTSD> series;
    try {
        series = mTables.loadSeries(names);
    } catch (const DatabaseError& e) {
        reportFailure(e.message());
        return std::nullopt;
    }
    if (series.size() < CSuccessfulComb::kSize) {
        // The text's "%d" has never been filled in; it is shown as it stands.
        mUi.showMessage(message(Msg::TooFewBlasts, {QString()}), UserPrompt::Icon::Warning);
        return std::nullopt;
    }
    CombinationOutcome outcome =
        CombinationSearch(std::get<CombinationRequest>(std::move(request)), std::move(series))
            .run(report, progress);
    if (outcome.cancelled)
        return std::nullopt;
    if (outcome.pairs.empty()) {
        mUi.showMessage(withCounts(message(Msg::SuccessfulCombinations), {0, CSuccessfulComb::kSize}),
                        UserPrompt::Icon::Information);
        return std::nullopt;
    }
    return outcome;
}

bool BlastCombiner::applyResults(const CSuccessfulComb& chosen, int windowPeriod)
{
    if (windowPeriod <= mPeriod || !databaseFileIsThere())
        return false;
    QStringList deleted;
    try {
        deleted = mTables.takeOut(chosen);
    } catch (const DatabaseError& e) {
        reportFailure(e.message());
        return false;
    }
    for (int b = 0; b < CSuccessfulComb::kSize; ++b) {
        const QString& name = chosen.Names[static_cast<std::size_t>(b)];
        for (auto s = mSources.begin(); s != mSources.end(); ++s) {
            if (s->name != name)
                continue;
            if (deleted.contains(name)) {
                mSources.erase(s);
                mSelected.remove(name);
            } else {
                s->quantity -= chosen.Quantities[static_cast<std::size_t>(b)];
            }
            break;
        }
    }
    mPeriod = windowPeriod;
    return true;
}

bool BlastCombiner::updateBlastTable()
{
    if (!mUi.askYesNo(message(Msg::ConfirmUpdateBlastTable)) || !databaseFileIsThere())
        return false;
    try {
        const WorkingBlastTables::WriteBack counts = mTables.writeBack();
        mUi.showMessage(
            message(Msg::BlastTableUpdated, {QString::number(counts.changed), QString::number(counts.deleted),
                                             QString::number(counts.added)}));
        return true;
    } catch (const DatabaseError& e) {
        reportFailure(e.message());
        return false;
    }
}

} // namespace kilnova
