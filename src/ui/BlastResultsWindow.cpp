#include "ui/BlastResultsWindow.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "common/MessageTable.h"
#include "optimise/BlendChartData.h"
#include "project/CKilnovaDoc.h"

namespace kilnova {

BlastResultsWindow::BlastResultsWindow(const BlastOptimization::Result& result, CKilnovaDoc& doc,
                                       UserPrompt& ui, QWidget* parent)
    : OptimizationResultsWindow(QStringLiteral("Blast Optimization Results"), result.report, doc, ui, parent)
    , mResult(result)
    , mDoc(doc)
{
    addStoreAction(
        QStringLiteral("Store blend…"), QStringLiteral("storeBlend"),
        QStringLiteral("Save the blend as a new stockpile and subtract its tonnes from the blasts"),
        [this] { return storeBlend(); });
    setChart(BlendChartData::of(result.request, result.outcome, chemCoefficients()));
    explain(result.outcome, elementNames());
}

bool BlastResultsWindow::storeBlend()
{
    ProjectDatabase* db = mDoc.database();
    if (!db)
        return false;
    return SourceUpdate::storeAsking(*db, prompt(), message(Msg::StockpileNamePrompt),
                                     BlastOptimization::blendOf(mResult),
                                     BlastOptimization::takesOf(mResult));
}

} // namespace kilnova
