#include "ui/CoalResultsWindow.h"

#include "common/MessageTable.h"
#include "project/CKilnovaDoc.h"

namespace kilnova {

CoalResultsWindow::CoalResultsWindow(const CoalOptimization::Result& result, CKilnovaDoc& doc, UserPrompt& ui,
                                     QWidget* parent)
    : OptimizationResultsWindow(QStringLiteral("Coal Optimization Results"), result.report, doc, ui, parent)
    , mResult(result)
    , mDoc(doc)
{
    addStoreAction(QStringLiteral("Store coal…"), QStringLiteral("storeCoal"),
                   QStringLiteral("Save the mix as a new coal and subtract its tonnes from the coals used"),
                   [this] { return storeCoal(); });
    setChart(CoalOptimization::chartOf(result));
    explain(result.outcome, CoalProperties::names());
}

bool CoalResultsWindow::storeCoal()
{
    ProjectDatabase* db = mDoc.database();
    if (!db)
        return false;
    return SourceUpdate::storeAsking(*db, prompt(), message(Msg::CoalNamePrompt),
                                     CoalOptimization::blendOf(mResult), CoalOptimization::takesOf(mResult),
                                     CoalOptimization::subtractQuestion());
}

} // namespace kilnova
