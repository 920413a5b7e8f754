#include "ui/BlastResultsWindow.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "common/MessageTable.h"
#include "project/CKilnovaDoc.h"

#include <QHBoxLayout>
#include <QPushButton>

namespace kilnova {

BlastResultsWindow::BlastResultsWindow(const BlastOptimization::Result& result, CKilnovaDoc& doc,
                                       UserPrompt& ui, QWidget* parent)
    : ReportWindow(QStringLiteral("Blast Optimization Results"), result.report, ui, parent)
    , mResult(result)
    , mDoc(doc)
{
    setPageHeader(PageHeader::of(doc));
    auto* store = new QPushButton(QStringLiteral("Store blend…"));
    store->setObjectName(QStringLiteral("storeBlend"));
    store->setToolTip(
        QStringLiteral("Save the blend as a new stockpile and subtract its tonnes from the blasts"));
    connect(store, &QPushButton::clicked, this, [this, store] {
        if (storeBlend())
            store->setEnabled(false); // the blasts have changed; a second store would take twice
    });
    actionArea()->addWidget(store);
    setChart(BlendChartData::of(result.request, result.outcome, chemCoefficients()));
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
