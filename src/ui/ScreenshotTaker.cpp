#include "ui/ScreenshotTaker.h"

#include "project/CKilnovaDoc.h"
#include "ui/AboutBox.h"
#include "ui/BlastResultsWindow.h"
#include "ui/CClinkerOptResults.h"
#include "ui/CCombineBlasts.h"
#include "ui/CMainFrame.h"
#include "ui/COptimizeAdditives.h"
#include "ui/COptimizeBlasts.h"
#include "ui/COptimizeCoal.h"
#include "ui/COptimizeStockpiles.h"
#include "ui/CUpdateActualStockpiles.h"
#include "ui/CoalResultsWindow.h"
#include "ui/QuietPrompt.h"
#include "ui/RecordDialog.h"
#include "ui/StockpileResultsWindow.h"
#include "ui/TableDialog.h"

#include <QApplication>
#include <QEventLoop>
#include <QMessageBox>
#include <QPixmap>
#include <QTableView>
#include <QTimer>

#include <cstdio>
#include <map>

namespace kilnova {

namespace {

/// Lets the window system lay out and paint before the picture is taken.
void settle()
{
    QEventLoop loop;
    QTimer::singleShot(400, &loop, &QEventLoop::quit);
    loop.exec();
}

bool save(QWidget* widget, const QString& output)
{
    settle();
    if (widget->grab().save(output, "PNG"))
        return true;
    std::fprintf(stderr, "cannot write %s\n", qPrintable(output));
    return false;
}

} // namespace

int ScreenshotTaker::run(const QString& project, const QString& dialog, const QString& output)
{
    // Settings of their own, so that the pictures show no one's recent files and add none.
    QCoreApplication::setOrganizationName(QStringLiteral("KilnovaScreenshots"));
    CKilnovaDoc doc;
    QuietPrompt prompt;
    CMainFrame frame(doc, std::make_unique<QuietPrompt>());
    frame.resize(1100, 700);
    frame.show();
    if (!project.isEmpty() && !frame.openProject(project))
        return 1;
    if (dialog.isEmpty())
        return save(&frame, output) ? 0 : 1;
    if (dialog == QLatin1String("about")) {
        std::unique_ptr<QMessageBox> about = AboutBox::create(&frame);
        about->show();
        return save(about.get(), output) ? 0 : 1;
    }

    if (QStringList({"optimize-blasts", "optimize-results", "optimize-map"}).contains(dialog)) {
        if (!doc.database())
            return 1;
        COptimizeBlasts optimize(*doc.database(), doc.settings().blastOptimization, prompt, {}, &frame);
        optimize.show();
        if (dialog == QLatin1String("optimize-blasts"))
            return save(&optimize, output) ? 0 : 1;
        const BlastOptimization::Result result = optimize.optimization().optimize();
        if (!result.outcome.solved) {
            std::fprintf(stderr, "%s\n", qPrintable(result.outcome.message));
            return 1;
        }
        if (dialog == QLatin1String("optimize-map")) {
            // The map after Optimize: the blasts taken carry their tonnes.
            optimize.optimize();
            return save(&optimize, output) ? 0 : 1;
        }
        BlastResultsWindow results(result, doc, prompt, &frame);
        results.show();
        return save(&results, output) ? 0 : 1;
    }
    if (dialog == QLatin1String("combine-blasts")) {
        if (!doc.database())
            return 1;
        CCombineBlasts combine(*doc.database(), doc.settings().combination, prompt, &frame);
        if (!combine.ready())
            return 1;
        // The blasts of the blast optimisation's settings, so that both pictures tell one story.
        for (const QString& name : doc.settings().blastOptimization.selectedSources)
            combine.combiner().setSelected(name, true);
        combine.refreshSources();
        combine.show();
        return save(&combine, output) ? 0 : 1;
    }

    if (dialog == QLatin1String("optimize-clinker") || dialog == QLatin1String("clinker-results")) {
        if (!doc.database())
            return 1;
        const ClinkerProcessParameters process = doc.clinkerProcessForDialog();
        COptimizeAdditives optimize(*doc.database(), doc.settings().clinkerOptimization, process,
                                    static_cast<double>(process.FreeLime), prompt, {}, &frame);
        optimize.show();
        if (dialog == QLatin1String("optimize-clinker"))
            return save(&optimize, output) ? 0 : 1;
        const ClinkerOptimization::Result result = optimize.optimization().optimize();
        if (!result.outcome.solved) {
            std::fprintf(stderr, "%s\n", qPrintable(result.outcome.message));
            return 1;
        }
        CClinkerOptResults results(result, doc, prompt, &frame);
        results.show();
        return save(&results, output) ? 0 : 1;
    }

    if (dialog == QLatin1String("optimize-stockpiles") || dialog == QLatin1String("stockpile-results")) {
        if (!doc.database())
            return 1;
        COptimizeStockpiles optimize(*doc.database(), doc.settings().stockpileOptimization, prompt, {}, {},
                                     &frame);
        optimize.show();
        if (dialog == QLatin1String("optimize-stockpiles"))
            return save(&optimize, output) ? 0 : 1;
        const StockpileOptimization::Result result = optimize.optimization().optimize();
        if (!result.outcome.solved) {
            std::fprintf(stderr, "%s\n", qPrintable(result.outcome.message));
            return 1;
        }
        StockpileResultsWindow results(result, doc, prompt, &frame);
        results.show();
        return save(&results, output) ? 0 : 1;
    }
    if (dialog == QLatin1String("update-actual")) {
        if (!doc.database())
            return 1;
        const StockpileOptimization stockpiles(*doc.database(), {});
        CUpdateActualStockpiles update(*doc.database(), prompt, stockpiles.stockpileKeys(),
                                       {{"Bed A-0611", "Pre-blending"}}, &frame);
        update.show();
        return save(&update, output) ? 0 : 1;
    }

    if (dialog == QLatin1String("optimize-coal") || dialog == QLatin1String("coal-results")) {
        if (!doc.database())
            return 1;
        // The project keeps no choice of coals: all of them, as on the command line.
        COptimizeCoal optimize(*doc.database(), doc.settings().coalOptimization, prompt, {}, &frame);
        optimize.optimization().setSelection(optimize.optimization().sourceNames());
        optimize.refreshSources();
        optimize.show();
        if (dialog == QLatin1String("optimize-coal"))
            return save(&optimize, output) ? 0 : 1;
        const CoalOptimization::Result result = optimize.optimization().optimize();
        if (!result.outcome.solved) {
            std::fprintf(stderr, "%s\n", qPrintable(result.outcome.message));
            return 1;
        }
        CoalResultsWindow results(result, doc, prompt, &frame);
        results.show();
        return save(&results, output) ? 0 : 1;
    }

    const std::map<QString, Table> tables = {{"blast", Table::Blast},         {"stockpile", Table::Stockpile},
                                             {"crude", Table::Crude},         {"clinker", Table::Clinker},
                                             {"additives", Table::Additives}, {"coal", Table::Coal}};
    const QString kind = dialog.section(u'-', 0, 0);
    const auto table = tables.find(dialog.section(u'-', 1));
    if (table == tables.end() || !QStringList({"view", "modify", "form"}).contains(kind) || !doc.database()) {
        std::fprintf(stderr, "no dialog %s for this project\n", qPrintable(dialog));
        return 1;
    }
    const TableDialog::Mode mode = kind == "view" ? TableDialog::Mode::View : TableDialog::Mode::Modify;
    std::unique_ptr<TableDialog> list =
        TableDialog::create(*doc.database(), table->second, mode, prompt, &frame);
    if (!list)
        return 1;
    list->resize(1260, 600);
    list->show();
    if (list->editor().model().rowCount() > 2)
        list->selectRow(2);
    if (kind != "form")
        return save(list.get(), output) ? 0 : 1;

    std::optional<RecordForm> form = list->editor().formForRow(2);
    if (!form)
        return 1;
    RecordDialog record(list->editor(), std::move(*form), list.get());
    record.show();
    return save(&record, output) ? 0 : 1;
}

} // namespace kilnova
