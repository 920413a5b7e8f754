#include "ui/StockpileResultsWindow.h"

#include "common/MessageTable.h"
#include "optimise/ConstraintEntry.h"
#include "project/CKilnovaDoc.h"

namespace kilnova {

StockpileResultsWindow::StockpileResultsWindow(const StockpileOptimization::Result& result, CKilnovaDoc& doc,
                                               UserPrompt& ui, QWidget* parent)
    : OptimizationResultsWindow(QStringLiteral("Stockpile Optimization Results"), result.report, doc, ui,
                                parent)
    , mResult(result)
    , mDoc(doc)
{
    addStoreAction(
        QStringLiteral("Store crude…"), QStringLiteral("storeCrude"),
        QStringLiteral("Save the crude as a new record and subtract its tonnes from the stockpiles"),
        [this] { return storeCrude(); });
    setChart(StockpileOptimization::chartOf(result));
    explain(result.outcome, elementNames());
}

bool StockpileResultsWindow::storeCrude()
{
    ProjectDatabase* db = mDoc.database();
    if (!db)
        return false;
    return SourceUpdate::storeAsking(*db, prompt(), message(Msg::CrudeNamePrompt),
                                     StockpileOptimization::crudeOf(mResult),
                                     StockpileOptimization::takesOf(mResult));
}

} // namespace kilnova
