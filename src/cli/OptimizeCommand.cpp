#include "cli/OptimizeCommand.h"

#include "cli/CliProject.h"
#include "cli/OptimizeOptions.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "optimise/BlastOptimization.h"
#include "optimise/BlendSummary.h"
#include "optimise/StockpileOptimization.h"
#include "optimise/StockpileReport.h"
#include "project/ProjectFileError.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace kilnova {

namespace {

QJsonObject blastJson(const BlastOptimization::Result& r)
{
    QJsonObject json;
    json["status"] = r.outcome.solved ? "optimal" : "failed";
    json["message"] = r.outcome.message;
    if (!r.outcome.solved)
        return json;
    QJsonArray tonnes;
    for (std::size_t j = 0; j < r.request.sources.size(); ++j) {
        if (r.outcome.counts(j))
            tonnes.append(QJsonObject{{"blast", r.request.sources[j].name}, {"tonnes", r.outcome.tonnes(j)}});
    }
    json["tonnes"] = tonnes;
    const BlendSummary blend = BlendSummary::of(r.request, r.outcome, chemCoefficients());
    json["optimizedTonnage"] = blend.tonnage;
    QJsonObject mix;
    for (int k = 0; k < kElementCount; ++k)
        mix[elementName(k)] = blend.values[static_cast<std::size_t>(k)];
    json["mix"] = mix;
    return json;
}

QJsonObject valuesJson(const std::array<double, kElementCount>& values)
{
    QJsonObject json;
    for (int k = 0; k < kElementCount; ++k)
        json[elementName(k)] = values[static_cast<std::size_t>(k)];
    return json;
}

QJsonObject stockpileJson(const StockpileOptimization::Result& r)
{
    QJsonObject json;
    json["status"] = r.outcome.solved ? "optimal" : "failed";
    json["message"] = r.outcome.message;
    if (!r.outcome.solved)
        return json;
    QJsonArray tonnes;
    for (std::size_t j = 0; j < r.problem.sources.size() && j < r.keys.size(); ++j) {
        if (!r.outcome.counts(j))
            continue;
        if (r.problem.sources[j].available)
            tonnes.append(QJsonObject{{"stockpile", r.keys[j].name},
                                      {"source", r.keys[j].source},
                                      {"tonnes", r.outcome.tonnes(j)}});
        else
            tonnes.append(QJsonObject{{"additive", r.keys[j].name}, {"tonnes", r.outcome.tonnes(j)}});
    }
    json["tonnes"] = tonnes;
    const BlendSummary crude = StockpileReport::crude(r.problem, r.outcome, chemCoefficients());
    json["optimizedTonnage"] = crude.tonnage;
    json["crude"] = valuesJson(crude.values);
    const BlendSummary left = StockpileReport::left(r.problem, r.outcome, chemCoefficients());
    json["leftTonnage"] = left.tonnage;
    json["left"] = valuesJson(left.values);
    return json;
}

} // namespace

OptimizeCommand::OptimizeCommand(QTextStream& out, QTextStream& err)
    : mOut(out)
    , mErr(err)
{
}

QString OptimizeCommand::usage()
{
    return QStringLiteral(
               "  optimize blasts PROJECT.knv [SETTINGS] [--json] [--store NAME [--subtract]]\n"
               "                                      optimise blasts with the project's stored settings\n"
               "  optimize stockpiles PROJECT.knv [SETTINGS] [--left \"MIN <= ELEMENT <= MAX\"]... [--json]\n"
               "      [--store NAME [--subtract]]     optimise a crude from stockpiles and additives; "
               "--select\n"
               "                                      takes \"NAME (SOURCE)\" for a stockpile, NAME for an "
               "additive\n"
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
        return blasts(args[1], args.mid(2));
    if (args.size() >= 2 && args[0] == QLatin1String("stockpiles"))
        return stockpiles(args[1], args.mid(2));
    return wrongUsage(QStringLiteral("optimize needs: blasts|stockpiles PROJECT.knv"));
}

bool OptimizeCommand::saveSettings(CliProject& project, const std::function<void(ProjectSettings&)>& change)
{
    ProjectSettings settings = project.settings;
    change(settings);
    try {
        ProjectFile::save(settings, project.path);
    } catch (const ProjectFileError& e) {
        mErr << message(Msg::CannotSaveProject, {QDir::toNativeSeparators(project.path)}) << '\n'
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

int OptimizeCommand::blasts(const QString& projectPath, const QStringList& args)
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
        BlastOptimization optimization(*project->db, project->settings.blastOptimization);
        if (!options.applyTo(optimization))
            return wrongUsage(options.problem());
        if (options.selection())
            optimization.setSelection(*options.selection());
        if (storeName) {
            if (const std::optional<QString> refusal =
                    SourceUpdate::nameRefusal(*project->db, Table::Stockpile, *storeName)) {
                mErr << *refusal << '\n';
                return 1;
            }
        }
        if (options.save() && !saveSettings(*project, [&optimization](ProjectSettings& s) {
                s.blastOptimization = optimization.parametersForOk(s.blastOptimization);
            }))
            return 1;

        const BlastOptimization::Result result = optimization.optimize(BlastOptimization::debugFilePath());
        const int status = finish(options.json(), blastJson(result), result.outcome.solved,
                                  result.outcome.message, result.report);
        if (status != 0 || !storeName)
            return status;
        const bool subtract = options.flag(QStringLiteral("--subtract"));
        SourceUpdate::Blend blend = BlastOptimization::blendOf(result);
        blend.name = *storeName;
        SourceUpdate::store(*project->db, blend, BlastOptimization::takesOf(result), subtract);
        if (!options.json())
            mOut << QStringLiteral("Stored the blend as stockpile \"%1\"%2.\n")
                        .arg(*storeName,
                             subtract ? QStringLiteral(" and subtracted it from the blasts") : QString());
        return 0;
    } catch (const DatabaseError& e) {
        mErr << message(Msg::DatabaseOperationFailed) << '\n' << e.message() << '\n';
        return 1;
    }
}

int OptimizeCommand::stockpiles(const QString& projectPath, const QStringList& args)
{
    OptimizeOptions options({{QStringLiteral("--store"), OptimizeOptions::Arity::One},
                             {QStringLiteral("--subtract"), OptimizeOptions::Arity::Flag},
                             {QStringLiteral("--left"), OptimizeOptions::Arity::Repeated}});
    if (!options.parse(args))
        return wrongUsage(options.problem());
    const std::optional<QString> storeName = options.value(QStringLiteral("--store"));
    if (options.flag(QStringLiteral("--subtract")) && !storeName)
        return wrongUsage(QStringLiteral("--subtract needs --store NAME"));

    std::optional<CliProject> project = CliProject::open(projectPath, mErr);
    if (!project)
        return 1;
    try {
        StockpileOptimization optimization(*project->db, project->settings.stockpileOptimization);
        if (!options.applyTo(optimization))
            return wrongUsage(options.problem());
        if (!options.values(QStringLiteral("--left")).isEmpty() &&
            !options.applyLimits(
                QStringLiteral("--left"), options.values(QStringLiteral("--left")),
                [&optimization] {
                    while (!optimization.leftConstraintList().order().empty())
                        optimization.removeLeftConstraint(0);
                },
                [&optimization](int e, double min, double max) {
                    return optimization.addLeftConstraint(e, min, max);
                }))
            return wrongUsage(options.problem());
        if (options.selection()) {
            if (const std::optional<QString> unknown = optimization.selectByText(*options.selection())) {
                mErr << *unknown << '\n';
                return 1;
            }
        }
        if (storeName) {
            if (const std::optional<QString> refusal =
                    SourceUpdate::nameRefusal(*project->db, Table::Crude, *storeName)) {
                mErr << *refusal << '\n';
                return 1;
            }
        }
        if (options.save() && !saveSettings(*project, [&optimization](ProjectSettings& s) {
                s.stockpileOptimization = optimization.parameters(s.stockpileOptimization);
            }))
            return 1;

        const StockpileOptimization::Result result =
            optimization.optimize(OptimizationSettings::debugFilePath());
        const int status = finish(options.json(), stockpileJson(result), result.outcome.solved,
                                  result.outcome.message, result.report);
        if (status != 0 || !storeName)
            return status;
        const bool subtract = options.flag(QStringLiteral("--subtract"));
        SourceUpdate::Blend crude = StockpileOptimization::crudeOf(result);
        crude.name = *storeName;
        SourceUpdate::store(*project->db, crude, StockpileOptimization::takesOf(result), subtract);
        if (!options.json())
            mOut << QStringLiteral("Stored the crude as \"%1\"%2.\n")
                        .arg(*storeName,
                             subtract ? QStringLiteral(" and subtracted it from the stockpiles") : QString());
        return 0;
    } catch (const DatabaseError& e) {
        mErr << message(Msg::DatabaseOperationFailed) << '\n' << e.message() << '\n';
        return 1;
    }
}

} // namespace kilnova
