#include "cli/OptimizeCommand.h"

#include "cli/CliProject.h"
#include "cli/OptimizeOptions.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "optimise/BlastOptimization.h"
#include "optimise/BlendSummary.h"
#include "optimise/ClinkerOptimization.h"
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

QJsonObject elementsJson(const std::array<double, kElementCount>& values)
{
    QJsonObject o;
    for (int k = 0; k < kElementCount; ++k)
        o[elementName(k)] = values[static_cast<std::size_t>(k)];
    return o;
}

QJsonObject clinkerJson(const ClinkerOptimization::Result& r)
{
    QJsonObject json;
    json["status"] = r.outcome.solved ? "optimal" : "failed";
    json["message"] = r.outcome.message;
    if (!r.outcome.solved)
        return json;
    QJsonArray tonnes;
    for (std::size_t j = 0; j < r.request.sources.size(); ++j) {
        if (!r.outcome.counts(j))
            continue;
        const SOURCE& s = r.request.sources[j];
        QJsonObject taken{
            {"kind", SOURCE::kindWord(s.kind)}, {"name", s.name}, {"tonnes", r.outcome.tonnes(j)}};
        if (!s.source.isEmpty())
            taken["source"] = s.source;
        tonnes.append(taken);
    }
    const ClinkerBalance& b = r.balance;
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
               "  optimize clinker PROJECT.knv [SETTINGS] [--crude-coal | --stockpile-additives-coal]\n"
               "      [--tonnage-limit \"MIN <= STOCKPILE (SOURCE) <= MAX\"]... [--json]\n"
               "      [--store-clinker NAME] [--store-crude NAME] [--subtract]\n"
               "                                      optimise a clinker with the project's stored settings\n"
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
    if (args.size() < 2 || (args[0] != QLatin1String("blasts") && args[0] != QLatin1String("clinker")))
        return wrongUsage(QStringLiteral("optimize needs: blasts|clinker PROJECT.knv"));
    if (args[0] == QLatin1String("blasts"))
        return blasts(args[1], args.mid(2));
    return clinker(args[1], args.mid(2));
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

int OptimizeCommand::clinker(const QString& projectPath, const QStringList& args)
{
    using Arity = OptimizeOptions::Arity;
    const QString crudeCoal = QStringLiteral("--crude-coal"),
                  stockpiles = QStringLiteral("--stockpile-additives-coal"),
                  limits = QStringLiteral("--tonnage-limit"),
                  storeClinker = QStringLiteral("--store-clinker"),
                  storeCrude = QStringLiteral("--store-crude"), subtractOption = QStringLiteral("--subtract");
    OptimizeOptions options({{crudeCoal, Arity::Flag},
                             {stockpiles, Arity::Flag},
                             {limits, Arity::Repeated},
                             {storeClinker, Arity::One},
                             {storeCrude, Arity::One},
                             {subtractOption, Arity::Flag}});
    if (!options.parse(args))
        return wrongUsage(options.problem());
    if (options.flag(crudeCoal) && options.flag(stockpiles))
        return wrongUsage(QStringLiteral("choose either --crude-coal or --stockpile-additives-coal"));
    const std::optional<QString> clinkerName = options.value(storeClinker);
    const std::optional<QString> crudeName = options.value(storeCrude);
    const bool subtract = options.flag(subtractOption);
    if (subtract && !clinkerName && !crudeName)
        return wrongUsage(QStringLiteral("--subtract needs --store-clinker NAME or --store-crude NAME"));

    std::optional<CliProject> project = CliProject::open(projectPath, mErr);
    if (!project)
        return 1;
    try {
        const ProjectSettings& stored = project->settings;
        ClinkerOptimization optimization(*project->db, stored.clinkerOptimization, stored.clinkerProcess,
                                         static_cast<double>(stored.clinkerProcess.FreeLime));
        if (options.flag(crudeCoal) || options.flag(stockpiles))
            optimization.setStockpiles(options.flag(stockpiles));
        if (!options.applyTo(optimization))
            return wrongUsage(options.problem());
        if (options.flag(limits)) {
            while (!optimization.tonnageConstraints().isEmpty())
                optimization.removeTonnageConstraint(0);
            const std::vector<RecordKey> piles = optimization.stockpileKeys();
            for (const QString& text : options.values(limits)) {
                const std::optional<OptimizeOptions::Limit> limit = OptimizeOptions::parseLimit(text);
                if (!limit)
                    return wrongUsage(
                        QStringLiteral("--tonnage-limit \"%1\" is not \"MIN <= STOCKPILE (SOURCE) <= MAX\"")
                            .arg(text));
                const auto pile = std::find_if(piles.begin(), piles.end(), [&limit](const RecordKey& k) {
                    return SOURCE::listText(k.name, k.source) == limit->name;
                });
                if (pile == piles.end())
                    return wrongUsage(QStringLiteral("--tonnage-limit \"%1\": there is no stockpile \"%2\"")
                                          .arg(text, limit->name));
                if (const std::optional<QString> refusal =
                        optimization.addTonnageConstraint(*pile, limit->minimum, limit->maximum))
                    return wrongUsage(QStringLiteral("--tonnage-limit \"%1\": %2").arg(text, *refusal));
            }
        }
        if (options.selection()) {
            optimization.setRawSelection({});
            optimization.setAdditiveSelection({});
            optimization.setCoalSelection({});
            for (const QString& name : *options.selection()) {
                if (!optimization.select(name))
                    return wrongUsage(QStringLiteral("--select: \"%1\" names no single %2, additive or coal")
                                          .arg(name, optimization.rawCaption().toLower()));
            }
        }
        for (const auto& [name, table] :
             {std::pair{clinkerName, Table::Clinker}, {crudeName, Table::Crude}}) {
            if (!name)
                continue;
            if (const std::optional<QString> refusal =
                    SourceUpdate::nameRefusal(*project->db, table, *name)) {
                mErr << *refusal << '\n';
                return 1;
            }
        }
        if (options.save() && !saveSettings(*project, [&optimization](ProjectSettings& s) {
                s.clinkerOptimization = optimization.parametersForOk(s.clinkerOptimization);
            }))
            return 1;

        const ClinkerOptimization::Result result =
            optimization.optimize(ClinkerOptimization::debugFilePath());
        const int status = finish(options.json(), clinkerJson(result), result.outcome.solved,
                                  result.outcome.message, result.report);
        if (status != 0)
            return status;
        if (result.balance.degenerated)
            mErr << message(Msg::DegeneratedSolution) << '\n';
        if (!clinkerName && !crudeName)
            return 0;
        std::vector<SourceUpdate::Blend> blends;
        QStringList what;
        if (clinkerName) {
            blends.push_back(ClinkerOptimization::clinkerOf(result));
            blends.back().name = *clinkerName;
            what << QStringLiteral("the clinker as \"%1\"").arg(*clinkerName);
        }
        if (crudeName) {
            blends.push_back(ClinkerOptimization::crudeOf(result));
            blends.back().name = *crudeName;
            what << QStringLiteral("the crude as \"%1\"").arg(*crudeName);
        }
        SourceUpdate::store(*project->db, blends, ClinkerOptimization::takesOf(result), subtract);
        if (!options.json())
            mOut << QStringLiteral("Stored %1%2.\n")
                        .arg(what.join(QStringLiteral(" and ")),
                             subtract ? QStringLiteral(" and subtracted the tonnes from the sources")
                                      : QString());
        return 0;
    } catch (const DatabaseError& e) {
        mErr << message(Msg::DatabaseOperationFailed) << '\n' << e.message() << '\n';
        return 1;
    }
}

} // namespace kilnova
