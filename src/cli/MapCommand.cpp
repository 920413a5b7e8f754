#include "cli/MapCommand.h"

#include "cli/CliProject.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "optimise/BlastOptimization.h"
#include "optimise/QuarryMapData.h"
#include "render/PictureFile.h"
#include "render/QuarryMapRenderer.h"

#include <QPainter>

namespace kilnova {

MapCommand::MapCommand(QTextStream& err)
    : mErr(err)
{
}

int MapCommand::run(const QStringList& args)
{
    if (args.isEmpty() || args[0].startsWith(QLatin1String("--"))) {
        mProblem = QStringLiteral("map needs a project file");
        return kWrongUsage;
    }
    QuarryMapOptions options;
    QString out;
    std::optional<QStringList> selection;
    for (qsizetype i = 1; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == QLatin1String("--element") && i + 1 < args.size()) {
            const std::optional<int> element = elementFromName(args[++i].toStdString());
            if (!element) {
                mProblem = QStringLiteral("no element named \"%1\"").arg(args[i]);
                return kWrongUsage;
            }
            options.element = *element;
        } else if (a == QLatin1String("--out") && i + 1 < args.size()) {
            out = args[++i];
        } else if (a == QLatin1String("--select")) {
            selection = QStringList();
            while (i + 1 < args.size() && !args[i + 1].startsWith(QLatin1String("--")))
                *selection << args[++i];
        } else {
            mProblem = QStringLiteral("unknown option \"%1\" for map").arg(a);
            return kWrongUsage;
        }
    }
    if (out.isEmpty()) {
        mProblem = QStringLiteral("map needs --out FILE.png, FILE.pdf or FILE.svg");
        return kWrongUsage;
    }
    if (!PictureFile::formatOf(out)) {
        mProblem = QStringLiteral("the map is written as .png, .pdf or .svg, not \"%1\"").arg(out);
        return kWrongUsage;
    }

    std::optional<CliProject> project = CliProject::open(args[0], mErr);
    if (!project)
        return 1;
    QuarryMapData data;
    try {
        data = QuarryMapData::load(*project->db, Table::Blast);
        // The blasts the filter leaves out are drawn faded, as in the dialog.
        const COptimizationParameters& p = project->settings.blastOptimization;
        const BlastOptimization optimization(*project->db, p);
        data.setListed(optimization.sourceNames());
        options.filter = std::array<double, 4>{p.eastMinimum, p.eastMaximum, p.northMinimum, p.northMaximum};
        options.filterOn = p.coordinateFilter != 0;
    } catch (const DatabaseError& e) {
        mErr << message(Msg::DatabaseOperationFailed) << '\n' << e.message() << '\n';
        return 1;
    }
    if (selection) {
        if (const QStringList unknown = data.setSelection(*selection); !unknown.isEmpty()) {
            mErr << QStringLiteral("kilnova-cli: no blast named \"%1\"\n").arg(unknown.first());
            return 1;
        }
    }
    const std::optional<QString> failure =
        PictureFile::write(out, QSizeF(kWidth, kHeight), [&](QPainter& painter, const QRectF& area) {
            QuarryMapRenderer(data, options, area).paint(painter);
        });
    if (failure) {
        mErr << *failure << '\n';
        return 1;
    }
    return 0;
}

} // namespace kilnova
