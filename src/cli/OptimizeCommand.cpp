#include "cli/OptimizeCommand.h"

#include "cli/CliProject.h"
#include "cli/CliWording.h"
#include "cli/OptimizeKind.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "optimise/Explainer.h"
#include "optimise/OptimizationModel.h"
#include "optimise/OptimizationSettings.h"
#include "optimise/StoreRefused.h"
#include "project/ProjectFileError.h"
#include "render/BlendChartRenderer.h"
#include "render/PictureFile.h"

#include <QDir>
#include <QJsonDocument>
#include <QPainter>

#include <algorithm>

namespace kilnova {

namespace {

const QString kJson = QStringLiteral("--json");
const QString kSubtract = QStringLiteral("--subtract");
const QString kAllowDuplicate = QStringLiteral("--allow-duplicate");
const QString kChart = QStringLiteral("--chart");

/// The blend chart as a picture file; the message when it cannot be written.
std::optional<QString> writeChart(const QString& path, const BlendChartData& chart)
{
    return PictureFile::write(
        path, BlendChartRenderer::preferredSize(chart.rows.size()),
        [&chart](QPainter& painter, const QRectF& area) { BlendChartRenderer(chart, area).paint(painter); });
}

} // namespace

OptimizeCommand::OptimizeCommand(QTextStream& out, QTextStream& err)
    : mOut(out)
    , mErr(err)
{
}

QString OptimizeCommand::usage()
{
    QString text;
    for (const OptimizeKind::Entry& kind : OptimizeKind::entries())
        text += kind.usage;
    return text +
           QStringLiteral(
               "  COMMON: [--json] [--chart FILE.png|FILE.pdf|FILE.svg] [--subtract] [--allow-duplicate]\n"
               "      --subtract takes the stored blend's tonnes out of its sources; a name already taken\n"
               "      is refused unless --allow-duplicate\n"
               "  SETTINGS override the stored settings for the run (--save keeps them in the project):\n") +
           QString::fromLatin1(OptimizeOptions::settingsUsage());
}

int OptimizeCommand::wrongUsage(const QString& problem)
{
    mErr << "kilnova-cli: " << problem << '\n' << usage();
    return 2;
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

int OptimizeCommand::run(const QStringList& args)
{
    const std::vector<OptimizeKind::Entry>& kinds = OptimizeKind::entries();
    const auto kind = std::find_if(kinds.begin(), kinds.end(), [&args](const OptimizeKind::Entry& k) {
        return !args.isEmpty() && args[0] == k.word;
    });
    if (args.size() < 2 || kind == kinds.end()) {
        QStringList words;
        for (const OptimizeKind::Entry& k : kinds)
            words << k.word;
        return wrongUsage(QStringLiteral("optimize needs: %1 PROJECT.knv").arg(words.join('|')));
    }

    using Arity = OptimizeOptions::Arity;
    std::vector<OptimizeOptions::KindOption> accepted = kind->options;
    accepted.push_back({kSubtract, Arity::Flag});
    accepted.push_back({kAllowDuplicate, Arity::Flag});
    accepted.push_back({kChart, Arity::One});
    QStringList storeOptions;
    for (const OptimizeKind::Store& store : kind->stores) {
        accepted.push_back({store.option, Arity::One});
        storeOptions << store.option + QStringLiteral(" NAME");
    }
    OptimizeOptions options(accepted);
    if (!options.parse(args.mid(2)))
        return wrongUsage(options.problem());
    const std::optional<QString> chartFile = options.value(kChart);
    if (chartFile && !PictureFile::formatOf(*chartFile))
        return wrongUsage(
            QStringLiteral("the chart is written as .png, .pdf or .svg, not \"%1\"").arg(*chartFile));
    std::vector<std::pair<std::size_t, QString>> names;
    for (std::size_t i = 0; i < kind->stores.size(); ++i) {
        if (const std::optional<QString> name = options.value(kind->stores[i].option))
            names.emplace_back(i, *name);
    }
    const bool subtract = options.flag(kSubtract);
    if (subtract && names.empty())
        return wrongUsage(
            QStringLiteral("--subtract needs %1").arg(storeOptions.join(QStringLiteral(" or "))));
    for (const auto& [store, name] : names) {
        if (name.isEmpty() || name.size() > Schema::kTextLength) {
            mErr << message(Msg::InvalidRecordName, {QString::number(Schema::kTextLength)}) << '\n';
            return 1;
        }
    }

    std::optional<CliProject> project = CliProject::open(args[1], mErr);
    if (!project)
        return 1;
    try {
        const std::unique_ptr<OptimizeKind> run = kind->make(*project);
        if (!options.applyTo(run->settings()))
            return wrongUsage(options.problem());
        if (const std::optional<QString> problem = run->configure(options))
            return wrongUsage(*problem);
        // A taken name is refused before the run; the store checks again under its write lock.
        if (!options.flag(kAllowDuplicate)) {
            for (const auto& [store, name] : names) {
                const Table table = kind->stores[store].table;
                const std::size_t taken = DuplicateNamePolicy::holders(*project->db, table, name).size();
                if (taken > 0)
                    throw StoreRefused(DuplicateNamePolicy::refusal(table, name, taken));
            }
        }
        if (options.save() && !saveSettings(*project, [&run](ProjectSettings& s) { run->keep(s); }))
            return 1;

        run->optimize();
        QJsonObject result = run->json();
        if (run->solved())
            result["method"] =
                run->outcome().method == OptimizationOutcome::Method::Second ? "second" : "classic";
        QString report = run->report();
        QString failure = run->failure();
        if (options.explain()) {
            // After the report or the message, which stay as they are.
            const OptimizationModel model;
            const Explanation explanation =
                Explainer(model).explain(run->outcome(), run->settings().propertyNames());
            if (options.json())
                result["explanation"] = explanation.json();
            else if (run->solved())
                report += QStringLiteral("\r\n") + explanation.text();
            else
                failure += QStringLiteral("\n\n") + QString(explanation.text())
                                                        .replace(QStringLiteral("\r\n"), QStringLiteral("\n"))
                                                        .trimmed();
        }
        const int status = finish(options.json(), result, run->solved(), failure, report);
        if (status != 0)
            return status;
        for (const QString& warning : run->warnings())
            mErr << CliWording::reword(warning) << '\n';
        if (chartFile) {
            if (const std::optional<QString> failure = writeChart(*chartFile, run->chart())) {
                mErr << *failure << '\n';
                return 1;
            }
        }
        if (names.empty())
            return 0;
        std::vector<SourceUpdate::Blend> blends;
        for (const auto& [store, name] : names) {
            SourceUpdate::Blend blend = run->blend(store);
            blend.name = name;
            blend.onDuplicate = options.flag(kAllowDuplicate) ? DuplicateNamePolicy::Choice::KeepBoth
                                                              : DuplicateNamePolicy::Choice::Refuse;
            blends.push_back(blend);
        }
        const StoreSummary stored = SourceUpdate::store(*project->db, blends, run->takes(), subtract);
        if (!options.json())
            mOut << stored.describe() << '\n';
        return 0;
    } catch (const StoreRefused& e) {
        mErr << e.message() << "\nAdd --allow-duplicate to store a second record of that name.\n";
        return 1;
    } catch (const DatabaseError& e) {
        mErr << message(Msg::DatabaseOperationFailed) << '\n' << CliWording::reword(e.message()) << '\n';
        return 1;
    } catch (const OptimizeKind::Refused& e) {
        mErr << e.message() << '\n';
        return 1;
    }
}

} // namespace kilnova
