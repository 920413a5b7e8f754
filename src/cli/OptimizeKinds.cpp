#include "cli/CliProject.h"
#include "cli/CliWording.h"
#include "cli/OptimizeKind.h"
#include "common/MessageTable.h"
#include "optimise/BlastOptimization.h"
#include "optimise/BlendSummary.h"
#include "optimise/ClinkerOptimization.h"
#include "optimise/CoalOptimization.h"
#include "optimise/StockpileOptimization.h"
#include "optimise/StockpileReport.h"

#include <QJsonArray>

#include <algorithm>

namespace kilnova {

namespace {

QJsonObject failedJson(const QString& message)
{
    return {{"status", "failed"}, {"message", message}};
}

/// The JSON of a solved run: the tonnes of each source taken under `sourceKey`, the mix by name.
QJsonObject solvedJson(const QString& sourceKey, const QStringList& names, const OptimizationOutcome& outcome,
                       double tonnage, const QStringList& propertyNames, const std::vector<double>& mix)
{
    QJsonObject json = {{"status", "optimal"}, {"message", QString()}};
    QJsonArray tonnes;
    for (qsizetype j = 0; j < names.size(); ++j) {
        if (outcome.counts(static_cast<std::size_t>(j)))
            tonnes.append(
                QJsonObject{{sourceKey, names[j]}, {"tonnes", outcome.tonnes(static_cast<std::size_t>(j))}});
    }
    json["tonnes"] = tonnes;
    json["optimizedTonnage"] = tonnage;
    QJsonObject values;
    for (qsizetype k = 0; k < propertyNames.size() && k < static_cast<qsizetype>(mix.size()); ++k)
        values[propertyNames[k]] = mix[static_cast<std::size_t>(k)];
    json["mix"] = values;
    return json;
}

QJsonObject elementsJson(const std::array<double, kElementCount>& values)
{
    QJsonObject o;
    for (int k = 0; k < kElementCount; ++k)
        o[elementName(k)] = values[static_cast<std::size_t>(k)];
    return o;
}

/// What every kind does alike with its optimisation and the result of its last run.
template <typename Optimization> class KindOf : public OptimizeKind {
public:
    template <typename... Settings>
    explicit KindOf(CliProject& project, const Settings&... settings)
        : mOptimization(*project.db, settings...)
    {
    }
    OptimizationSettings& settings() override { return mOptimization; }
    void optimize() override { mResult = mOptimization.optimize(OptimizationSettings::debugFilePath()); }
    bool solved() const override { return mResult.outcome.solved; }
    QString message() const override { return mResult.outcome.message; }
    const OptimizationOutcome& outcome() const override { return mResult.outcome; }
    QString report() const override { return mResult.report; }

protected:
    Optimization mOptimization;
    typename Optimization::Result mResult;
};

class BlastKind final : public KindOf<BlastOptimization> {
public:
    explicit BlastKind(CliProject& project)
        : KindOf(project, project.settings.blastOptimization)
    {
    }
    std::optional<QString> configure(OptimizeOptions& options) override
    {
        if (options.selection())
            mOptimization.setSelection(*options.selection());
        return std::nullopt;
    }
    void keep(ProjectSettings& s) const override
    {
        s.blastOptimization = mOptimization.parametersForOk(s.blastOptimization);
    }
    /// The blast messages name the dialog's controls; the command line names its options.
    QString failure() const override { return CliWording::reword(message()); }
    QJsonObject json() const override
    {
        if (!solved())
            return failedJson(message());
        QStringList names;
        for (const SourceRecord& s : mResult.request.sources)
            names << s.name;
        const BlendSummary blend = BlendSummary::of(mResult.request, mResult.outcome, chemCoefficients());
        return solvedJson("blast", names, mResult.outcome, blend.tonnage, elementNames(),
                          {blend.values.begin(), blend.values.end()});
    }
    BlendChartData chart() const override
    {
        return BlendChartData::of(mResult.request, mResult.outcome, chemCoefficients());
    }
    SourceUpdate::Blend blend(std::size_t) const override { return BlastOptimization::blendOf(mResult); }
    std::vector<SourceUpdate::Take> takes() const override { return BlastOptimization::takesOf(mResult); }
};

const QString kCrudeCoal = QStringLiteral("--crude-coal");
const QString kStockpiles = QStringLiteral("--stockpile-additives-coal");
const QString kTonnageLimit = QStringLiteral("--tonnage-limit");

class ClinkerKind final : public KindOf<ClinkerOptimization> {
public:
    explicit ClinkerKind(CliProject& project)
        : KindOf(project, project.settings.clinkerOptimization, project.settings.clinkerProcess,
                 static_cast<double>(project.settings.clinkerProcess.FreeLime))
    {
    }
    std::optional<QString> configure(OptimizeOptions& options) override
    {
        if (options.flag(kCrudeCoal) && options.flag(kStockpiles))
            return QStringLiteral("choose either --crude-coal or --stockpile-additives-coal");
        if (options.flag(kCrudeCoal) || options.flag(kStockpiles))
            mOptimization.setStockpiles(options.flag(kStockpiles));
        if (options.flag(kTonnageLimit)) {
            if (std::optional<QString> problem = tonnageLimits(options.values(kTonnageLimit)))
                return problem;
        }
        if (options.selection()) {
            mOptimization.setRawSelection({});
            mOptimization.setAdditiveSelection({});
            mOptimization.setCoalSelection({});
            for (const QString& name : *options.selection()) {
                if (!mOptimization.select(name))
                    return QStringLiteral("--select: \"%1\" names no single %2, additive or coal")
                        .arg(name, mOptimization.rawCaption().toLower());
            }
        }
        return std::nullopt;
    }
    void keep(ProjectSettings& s) const override
    {
        s.clinkerOptimization = mOptimization.parametersForOk(s.clinkerOptimization);
    }
    QJsonObject json() const override
    {
        if (!solved())
            return failedJson(message());
        QJsonObject json = {{"status", "optimal"}, {"message", mResult.outcome.message}};
        QJsonArray tonnes;
        for (std::size_t j = 0; j < mResult.request.sources.size(); ++j) {
            if (!mResult.outcome.counts(j))
                continue;
            const SOURCE& s = mResult.request.sources[j];
            QJsonObject taken{
                {"kind", SOURCE::kindWord(s.kind)}, {"name", s.name}, {"tonnes", mResult.outcome.tonnes(j)}};
            if (!s.source.isEmpty())
                taken["source"] = s.source;
            tonnes.append(taken);
        }
        const ClinkerBalance& b = mResult.balance;
        json["tonnes"] = tonnes;
        json["clinkerTonnage"] = b.clinkerTonnage;
        json["areNeeded"] = b.areNeeded();
        json["degenerated"] = b.degenerated;
        json["clinker"] = elementsJson(b.clinker);
        json["crudeTonnage"] = b.crudeTonnage;
        json["crude"] = elementsJson(b.crude);
        if (b.coalUsed)
            json["coal"] = elementsJson(b.coal);
        json["crudeCost"] = b.crudeCost;
        json["clinkerCost"] = b.clinkerCost;
        return json;
    }
    QStringList warnings() const override
    {
        if (mResult.balance.degenerated)
            return {kilnova::message(Msg::DegeneratedSolution)};
        return {};
    }
    BlendChartData chart() const override { return ClinkerOptimization::chartOf(mResult); }
    SourceUpdate::Blend blend(std::size_t store) const override
    {
        return store == 0 ? ClinkerOptimization::clinkerOf(mResult) : ClinkerOptimization::crudeOf(mResult);
    }
    std::vector<SourceUpdate::Take> takes() const override { return ClinkerOptimization::takesOf(mResult); }

private:
    /// --tonnage-limit replaces the stored limits.
    std::optional<QString> tonnageLimits(const QStringList& texts)
    {
        while (!mOptimization.tonnageConstraints().isEmpty())
            mOptimization.removeTonnageConstraint(0);
        const std::vector<RecordKey> piles = mOptimization.stockpileKeys();
        for (const QString& text : texts) {
            const std::optional<OptimizeOptions::Limit> limit = OptimizeOptions::parseLimit(text);
            if (!limit)
                return QStringLiteral("--tonnage-limit \"%1\" is not \"MIN <= STOCKPILE (SOURCE) <= MAX\"")
                    .arg(text);
            const auto pile = std::find_if(piles.begin(), piles.end(), [&limit](const RecordKey& k) {
                return SOURCE::listText(k.name, k.source) == limit->name;
            });
            if (pile == piles.end())
                return QStringLiteral("--tonnage-limit \"%1\": there is no stockpile \"%2\"")
                    .arg(text, limit->name);
            if (const std::optional<QString> refusal =
                    mOptimization.addTonnageConstraint(*pile, limit->minimum, limit->maximum))
                return QStringLiteral("--tonnage-limit \"%1\": %2").arg(text, *refusal);
        }
        return std::nullopt;
    }
};

const QString kLeft = QStringLiteral("--left");

class StockpileKind final : public KindOf<StockpileOptimization> {
public:
    explicit StockpileKind(CliProject& project)
        : KindOf(project, project.settings.stockpileOptimization)
    {
    }
    std::optional<QString> configure(OptimizeOptions& options) override
    {
        if (!options.values(kLeft).isEmpty() &&
            !options.applyLimits(
                kLeft, options.values(kLeft), mOptimization,
                [this] {
                    while (!mOptimization.leftConstraintList().order().empty())
                        mOptimization.removeLeftConstraint(0);
                },
                [this](int e, double min, double max) {
                    return mOptimization.addLeftConstraint(e, min, max);
                }))
            return options.problem();
        if (options.selection()) {
            if (const std::optional<QString> unknown = mOptimization.selectByText(*options.selection()))
                throw Refused(*unknown);
        }
        return std::nullopt;
    }
    void keep(ProjectSettings& s) const override
    {
        s.stockpileOptimization = mOptimization.parameters(s.stockpileOptimization);
    }
    QJsonObject json() const override
    {
        if (!solved())
            return failedJson(message());
        QJsonObject json = {{"status", "optimal"}, {"message", QString()}};
        QJsonArray tonnes;
        for (std::size_t j = 0; j < mResult.problem.sources.size() && j < mResult.keys.size(); ++j) {
            if (!mResult.outcome.counts(j))
                continue;
            if (mResult.problem.sources[j].available)
                tonnes.append(QJsonObject{{"stockpile", mResult.keys[j].name},
                                          {"source", mResult.keys[j].source},
                                          {"tonnes", mResult.outcome.tonnes(j)}});
            else
                tonnes.append(
                    QJsonObject{{"additive", mResult.keys[j].name}, {"tonnes", mResult.outcome.tonnes(j)}});
        }
        json["tonnes"] = tonnes;
        const BlendSummary crude =
            StockpileReport::crude(mResult.problem, mResult.outcome, chemCoefficients());
        json["optimizedTonnage"] = crude.tonnage;
        json["crude"] = elementsJson(crude.values);
        const BlendSummary left = StockpileReport::left(mResult.problem, mResult.outcome, chemCoefficients());
        json["leftTonnage"] = left.tonnage;
        json["left"] = elementsJson(left.values);
        return json;
    }
    BlendChartData chart() const override { return StockpileOptimization::chartOf(mResult); }
    SourceUpdate::Blend blend(std::size_t) const override { return StockpileOptimization::crudeOf(mResult); }
    std::vector<SourceUpdate::Take> takes() const override { return StockpileOptimization::takesOf(mResult); }
};

class CoalKind final : public KindOf<CoalOptimization> {
public:
    explicit CoalKind(CliProject& project)
        : KindOf(project, project.settings.coalOptimization)
    {
    }
    /// The project keeps no choice of coals: without --select every coal is offered.
    std::optional<QString> configure(OptimizeOptions& options) override
    {
        mOptimization.setSelection(options.selection() ? *options.selection() : mOptimization.sourceNames());
        return std::nullopt;
    }
    void keep(ProjectSettings& s) const override
    {
        s.coalOptimization = mOptimization.parametersForOk(s.coalOptimization);
    }
    QJsonObject json() const override
    {
        if (!solved())
            return failedJson(message());
        QStringList names;
        for (const CoalSource& c : mResult.coals)
            names << c.name;
        return solvedJson("coal", names, mResult.outcome, mResult.mix.tonnage, CoalProperties::names(),
                          {mResult.mix.properties.begin(), mResult.mix.properties.end()});
    }
    BlendChartData chart() const override { return CoalOptimization::chartOf(mResult); }
    SourceUpdate::Blend blend(std::size_t) const override { return CoalOptimization::blendOf(mResult); }
    std::vector<SourceUpdate::Take> takes() const override { return CoalOptimization::takesOf(mResult); }
};

template <typename K> std::function<std::unique_ptr<OptimizeKind>(CliProject&)> maker()
{
    return [](CliProject& project) -> std::unique_ptr<OptimizeKind> {
        return std::make_unique<K>(project);
    };
}

} // namespace

const std::vector<OptimizeKind::Entry>& OptimizeKind::entries()
{
    using Arity = OptimizeOptions::Arity;
    static const std::vector<Entry> kinds = {
        {QStringLiteral("blasts"),
         QStringLiteral(
             "  optimize blasts PROJECT.knv [SETTINGS] [COMMON] [--store NAME]\n"
             "                                      optimise blasts with the project's stored settings\n"),
         {},
         {{QStringLiteral("--store"), Table::Stockpile}},
         maker<BlastKind>()},
        {QStringLiteral("stockpiles"),
         QStringLiteral(
             "  optimize stockpiles PROJECT.knv [SETTINGS] [COMMON] [--left \"MIN <= ELEMENT <= MAX\"]...\n"
             "      [--store NAME]                 optimise a crude from stockpiles and additives; "
             "--select\n"
             "                                      takes \"NAME (SOURCE)\" for a stockpile, NAME for an "
             "additive\n"),
         {{kLeft, Arity::Repeated}},
         {{QStringLiteral("--store"), Table::Crude}},
         maker<StockpileKind>()},
        {QStringLiteral("clinker"),
         QStringLiteral(
             "  optimize clinker PROJECT.knv [SETTINGS] [COMMON] [--crude-coal | "
             "--stockpile-additives-coal]\n"
             "      [--tonnage-limit \"MIN <= STOCKPILE (SOURCE) <= MAX\"]... [--store-clinker NAME]\n"
             "      [--store-crude NAME]           optimise a clinker with the project's stored settings\n"),
         {{kCrudeCoal, Arity::Flag}, {kStockpiles, Arity::Flag}, {kTonnageLimit, Arity::Repeated}},
         {{QStringLiteral("--store-clinker"), Table::Clinker},
          {QStringLiteral("--store-crude"), Table::Crude}},
         maker<ClinkerKind>()},
        {QStringLiteral("coal"),
         QStringLiteral(
             "  optimize coal PROJECT.knv [SETTINGS] [COMMON] [--store NAME]\n"
             "                                      a coal mix, of every coal unless --select names some\n"),
         {},
         {{QStringLiteral("--store"), Table::Coal}},
         maker<CoalKind>()},
    };
    return kinds;
}

} // namespace kilnova
