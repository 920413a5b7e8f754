#include "ui/CClinkerOptResults.h"

#include "common/MessageTable.h"
#include "optimise/ConstraintEntry.h"
#include "project/CKilnovaDoc.h"

namespace kilnova {

CClinkerOptResults::CClinkerOptResults(const ClinkerOptimization::Result& result, CKilnovaDoc& doc,
                                       UserPrompt& ui, QWidget* parent)
    : OptimizationResultsWindow(QStringLiteral("Clinker Optimization Results"), result.report, doc, ui,
                                parent)
    , mResult(result)
    , mDoc(doc)
{
    addStoreAction(QStringLiteral("Store clinker and crude…"), QStringLiteral("storeClinker"),
                   QStringLiteral("Save the clinker and the crude as new records and subtract the tonnes "
                                  "from the sources"),
                   [this] { return store(); });
    setChart(ClinkerOptimization::chartOf(result));
    explain(result.outcome, elementNames());
}

bool CClinkerOptResults::store()
{
    ProjectDatabase* db = mDoc.database();
    if (!db)
        return false;
    return SourceUpdate::storeAsking(
        *db, prompt(),
        {{message(Msg::ClinkerNamePrompt), ClinkerOptimization::clinkerOf(mResult)},
         {message(Msg::CrudeNamePrompt), ClinkerOptimization::crudeOf(mResult)}},
        ClinkerOptimization::takesOf(mResult));
}

} // namespace kilnova
