#include "cli/OptimizeCommand.h"

#include "cli/CliProject.h"
#include "cli/OptimizeOptions.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "optimise/BlastOptimization.h"
#include "optimise/BlendSummary.h"
#include "optimise/CoalOptimization.h"
#include "optimise/Explainer.h"
#include "project/ProjectFileError.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace kilnova {

class OptimizeCommand::Kind {
public:
    virtual ~Kind() = default;

    virtual OptimizationSettings& settings() = 0;
    /// The sources named after --select, or the kind's own choice when there are none.
    virtual void select(const std::optional<QStringList>& names) = 0;
    /// The settings as --save writes them into the project.
    virtual void keep(ProjectSettings& settings) const = 0;
    /// Runs; the outcome stays with the kind. Throws DatabaseError.
    virtual void optimize() = 0;
    virtual bool solved() const = 0;
    virtual QString message() const = 0;
    virtual QString report() const = 0;
    virtual QJsonObject json() const = 0;
    /// What the shared model answered, for the explanation.
    virtual const OptimizationOutcome& outcome() const = 0;
    /// The new record of a solved run (its name still empty) and what it takes from the sources.
    virtual SourceUpdate::Blend blend() const = 0;
    virtual std::vector<SourceUpdate::Take> takes() const = 0;
    /// Where --store puts the new record.
    virtual Table storedIn() const = 0;
    /// "stockpile", "coal": what the stored record is; "blasts", "coals": where its tonnes come from.
    virtual QString storedAs() const = 0;
    virtual QString sources() const = 0;
};

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

class BlastKind final : public OptimizeCommand::Kind {
public:
    explicit BlastKind(CliProject& project)
        : mOptimization(*project.db, project.settings.blastOptimization)
    {
    }
    OptimizationSettings& settings() override { return mOptimization; }
    void select(const std::optional<QStringList>& names) override
    {
        if (names)
            mOptimization.setSelection(*names);
    }
    void keep(ProjectSettings& s) const override
    {
        s.blastOptimization = mOptimization.parametersForOk(s.blastOptimization);
    }
    void optimize() override { mResult = mOptimization.optimize(OptimizationSettings::debugFilePath()); }
    bool solved() const override { return mResult.outcome.solved; }
    QString message() const override { return mResult.outcome.message; }
    QString report() const override { return mResult.report; }
    const OptimizationOutcome& outcome() const override { return mResult.outcome; }
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
    SourceUpdate::Blend blend() const override { return BlastOptimization::blendOf(mResult); }
    std::vector<SourceUpdate::Take> takes() const override { return BlastOptimization::takesOf(mResult); }
    Table storedIn() const override { return Table::Stockpile; }
    QString storedAs() const override { return QStringLiteral("stockpile"); }
    QString sources() const override { return QStringLiteral("blasts"); }

private:
    BlastOptimization mOptimization;
    BlastOptimization::Result mResult;
};

class CoalKind final : public OptimizeCommand::Kind {
public:
    explicit CoalKind(CliProject& project)
        : mOptimization(*project.db, project.settings.coalOptimization)
    {
    }
    OptimizationSettings& settings() override { return mOptimization; }
    /// The project keeps no choice of coals: without --select every coal is offered.
    void select(const std::optional<QStringList>& names) override
    {
        mOptimization.setSelection(names ? *names : mOptimization.sourceNames());
    }
    void keep(ProjectSettings& s) const override
    {
        s.coalOptimization = mOptimization.parametersForOk(s.coalOptimization);
    }
    void optimize() override { mResult = mOptimization.optimize(OptimizationSettings::debugFilePath()); }
    bool solved() const override { return mResult.outcome.solved; }
    QString message() const override { return mResult.outcome.message; }
    QString report() const override { return mResult.report; }
    const OptimizationOutcome& outcome() const override { return mResult.outcome; }
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
    SourceUpdate::Blend blend() const override { return CoalOptimization::blendOf(mResult); }
    std::vector<SourceUpdate::Take> takes() const override { return CoalOptimization::takesOf(mResult); }
    Table storedIn() const override { return Table::Coal; }
    QString storedAs() const override { return QStringLiteral("coal"); }
    QString sources() const override { return QStringLiteral("coals"); }

private:
    CoalOptimization mOptimization;
    CoalOptimization::Result mResult;
};

} // namespace

OptimizeCommand::OptimizeCommand(QTextStream& out, QTextStream& err)
    : mOut(out)
    , mErr(err)
{
}

QString OptimizeCommand::usage()
{
    return QStringLiteral(
               "  optimize blasts PROJECT.knv [SETTINGS] [--json] [--explain] [--store NAME [--subtract]]\n"
               "                                      optimise blasts with the project's stored settings\n"
               "  optimize coal PROJECT.knv [SETTINGS] [--json] [--explain] [--store NAME [--subtract]]\n"
               "                                      a coal mix, of every coal unless --select names some\n"
               "  SETTINGS override the stored settings for the run (--save keeps them in the project):\n") +
           QString::fromLatin1(OptimizeOptions::settingsUsage());
}

int OptimizeCommand::wrongUsage(const QString& problem)
{
    mErr << "kilnova-cli: " << problem << '\n' << usage();
    return 2;
}

int OptimizeCommand::run(const QStringList& args)
{
    if (args.size() >= 2 && args[0] == QLatin1String("blasts"))
        return optimize(args[1], args.mid(2), [](CliProject& p) { return std::make_unique<BlastKind>(p); });
    if (args.size() >= 2 && args[0] == QLatin1String("coal"))
        return optimize(args[1], args.mid(2), [](CliProject& p) { return std::make_unique<CoalKind>(p); });
    return wrongUsage(QStringLiteral("optimize needs: blasts|coal PROJECT.knv"));
}

bool OptimizeCommand::saveSettings(CliProject& project, const std::function<void(ProjectSettings&)>& change)
{
    ProjectSettings settings = project.settings;
    change(settings);
    try {
        ProjectFile::save(settings, project.path);
    } catch (const ProjectFileError& e) {
        mErr << kilnova::message(Msg::CannotSaveProject, {QDir::toNativeSeparators(project.path)}) << '\n'
             << e.what() << '\n';
        return false;
    }
    project.settings = settings;
    return true;
}

int OptimizeCommand::finish(bool json, const QJsonObject& result, bool solved, const QString& failure,
                            const QString& report)
{
    if (json)
        mOut << QJsonDocument(result).toJson(QJsonDocument::Indented);
    if (!solved) {
        mErr << failure << '\n';
        return 1;
    }
    if (!json)
        mOut << QString(report).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return 0;
}

int OptimizeCommand::optimize(const QString& projectPath, const QStringList& args,
                              const std::function<std::unique_ptr<Kind>(CliProject&)>& makeKind)
{
    OptimizeOptions options({{QStringLiteral("--store"), OptimizeOptions::Arity::One},
                             {QStringLiteral("--subtract"), OptimizeOptions::Arity::Flag}});
    if (!options.parse(args))
        return wrongUsage(options.problem());
    const std::optional<QString> storeName = options.value(QStringLiteral("--store"));
    if (options.flag(QStringLiteral("--subtract")) && !storeName)
        return wrongUsage(QStringLiteral("--subtract needs --store NAME"));

    std::optional<CliProject> project = CliProject::open(projectPath, mErr);
    if (!project)
        return 1;
    try {
        const std::unique_ptr<Kind> kind = makeKind(*project);
        if (!options.applyTo(kind->settings()))
            return wrongUsage(options.problem());
        kind->select(options.selection());
        if (storeName) {
            if (const std::optional<QString> refusal =
                    SourceUpdate::nameRefusal(*project->db, kind->storedIn(), *storeName)) {
                mErr << *refusal << '\n';
                return 1;
            }
        }
        if (options.save() && !saveSettings(*project, [&kind](ProjectSettings& s) { kind->keep(s); }))
            return 1;

        kind->optimize();
        QJsonObject json = options.json() ? kind->json() : QJsonObject();
        QString report = kind->report();
        QString failure = kind->message();
        if (options.explain()) {
            // After the report or the message, which stay as they are.
            const OptimizationModel model;
            const Explanation explanation =
                Explainer(model).explain(kind->outcome(), kind->settings().propertyNames());
            if (options.json())
                json["explanation"] = explanation.json();
            else if (kind->solved())
                report += QStringLiteral("\r\n") + explanation.text();
            else
                failure += QStringLiteral("\n\n") + QString(explanation.text())
                                                        .replace(QStringLiteral("\r\n"), QStringLiteral("\n"))
                                                        .trimmed();
        }
        const int status = finish(options.json(), json, kind->solved(), failure, report);
        if (status != 0 || !storeName)
            return status;
        const bool subtract = options.flag(QStringLiteral("--subtract"));
        SourceUpdate::Blend blend = kind->blend();
        blend.name = *storeName;
        SourceUpdate::store(*project->db, blend, kind->takes(), subtract);
        if (!options.json())
            mOut << QStringLiteral("Stored the blend as %1 \"%2\"%3.\n")
                        .arg(kind->storedAs(), *storeName,
                             subtract ? QStringLiteral(" and subtracted it from the %1").arg(kind->sources())
                                      : QString());
        return 0;
    } catch (const DatabaseError& e) {
        mErr << kilnova::message(Msg::DatabaseOperationFailed) << '\n' << e.message() << '\n';
        return 1;
    }
}

} // namespace kilnova
