#include "cli/OptimizeCommand.h"

#include "cli/CliProject.h"
#include "cli/CliWording.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "database/Schema.h"
#include "optimise/BlastOptimization.h"
#include "optimise/BlendChartData.h"
#include "optimise/BlendSummary.h"
#include "render/BlendChartRenderer.h"
#include "render/PictureFile.h"
#include "optimise/StoreRefused.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>

namespace kilnova {

namespace {

QJsonObject resultJson(const BlastOptimization::Result& r)
{
    QJsonObject json;
    json["status"] = r.outcome.solved ? "optimal" : "failed";
    json["message"] = r.outcome.message;
    if (!r.outcome.solved)
        return json;
    json["method"] = r.outcome.method == OptimizationOutcome::Method::Second ? "second" : "classic";
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

/// The blend chart of a solved run as a picture file; the message when it cannot be written.
std::optional<QString> writeChart(const QString& path, const OptimizationRequest& request,
                                  const OptimizationOutcome& outcome)
{
    const BlendChartData chart = BlendChartData::of(request, outcome, chemCoefficients());
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

const char* OptimizeCommand::usage()
{
    return "  optimize blasts PROJECT.knv [--select NAME...] [--json] [--store NAME [--subtract]\n"
           "                                      [--allow-duplicate]] [--chart FILE.png|FILE.pdf|FILE.svg]\n"
           "                                      optimise blasts with the project's stored settings; a\n"
           "                                      stockpile name already taken is refused unless "
           "--allow-duplicate\n";
}

int OptimizeCommand::run(const QStringList& args)
{
    if (args.size() < 2 || args[0] != QLatin1String("blasts")) {
        mErr << "kilnova-cli: optimize needs: blasts PROJECT.knv\n" << usage();
        return 2;
    }
    bool json = false, subtract = false, allowDuplicate = false;
    std::optional<QString> storeName;
    std::optional<QString> chartFile;
    std::optional<QStringList> selection;
    for (qsizetype i = 2; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == "--json") {
            json = true;
        } else if (a == "--subtract") {
            subtract = true;
        } else if (a == "--chart" && i + 1 < args.size()) {
            chartFile = args[++i];
            if (!PictureFile::formatOf(*chartFile)) {
                mErr << "kilnova-cli: the chart is written as .png, .pdf or .svg, not \"" << *chartFile
                     << "\"\n";
                return 2;
            }
        } else if (a == "--allow-duplicate") {
            allowDuplicate = true;
        } else if (a == "--store" && i + 1 < args.size()) {
            storeName = args[++i];
        } else if (a == "--select") {
            selection = QStringList();
            while (i + 1 < args.size() && !args[i + 1].startsWith("--"))
                *selection << args[++i];
        } else {
            mErr << "kilnova-cli: unknown option \"" << a << "\"\n" << usage();
            return 2;
        }
    }
    if (subtract && !storeName) {
        mErr << "kilnova-cli: --subtract needs --store NAME\n";
        return 2;
    }
    if (storeName && (storeName->isEmpty() || storeName->size() > Schema::kTextLength)) {
        mErr << message(Msg::InvalidRecordName, {QString::number(Schema::kTextLength)}) << '\n';
        return 1;
    }

    std::optional<CliProject> project = CliProject::open(args[1], mErr);
    if (!project)
        return 1;
    try {
        BlastOptimization optimization(*project->db, project->settings.blastOptimization);
        if (selection)
            optimization.setSelection(*selection);
        const BlastOptimization::Result result = optimization.optimize(BlastOptimization::debugFilePath());
        if (json)
            mOut << QJsonDocument(resultJson(result)).toJson(QJsonDocument::Indented);
        if (!result.outcome.solved) {
            mErr << CliWording::reword(result.outcome.message) << '\n';
            return 1;
        }
        if (!json)
            mOut << QString(result.report).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        if (chartFile) {
            if (const std::optional<QString> failure =
                    writeChart(*chartFile, result.request, result.outcome)) {
                mErr << *failure << '\n';
                return 1;
            }
        }
        if (storeName) {
            SourceUpdate::Blend blend = BlastOptimization::blendOf(result);
            blend.name = *storeName;
            const StoreSummary stored = SourceUpdate::store(
                *project->db, blend, BlastOptimization::takesOf(result), subtract,
                allowDuplicate ? DuplicateNamePolicy::Choice::KeepBoth : DuplicateNamePolicy::Choice::Refuse);
            if (!json)
                mOut << stored.describe() << '\n';
        }
        return 0;
    } catch (const StoreRefused& e) {
        mErr << e.message() << "\nAdd --allow-duplicate to store a second record of that name.\n";
        return 1;
    } catch (const DatabaseError& e) {
        mErr << message(Msg::DatabaseOperationFailed) << '\n' << e.message() << '\n';
        return 1;
    }
}

} // namespace kilnova
