#pragma once

#include "optimise/StockpileOptimization.h"
#include "ui/OptimizationResultsWindow.h"

namespace kilnova {

class CKilnovaDoc;

/// "Stockpile Optimization Results": the report, and "Store crude…" to keep the crude as a new record
/// and take its tonnes out of the stockpiles (the additives are bought, nothing is taken from them).
class StockpileResultsWindow final : public OptimizationResultsWindow {
    Q_OBJECT
public:
    StockpileResultsWindow(const StockpileOptimization::Result& result, CKilnovaDoc& doc, UserPrompt& ui,
                           QWidget* parent = nullptr);

    /// Asks for the crude's name and whether to subtract, then stores; true when stored.
    bool storeCrude();

private:
    StockpileOptimization::Result mResult;
    CKilnovaDoc& mDoc;
};

} // namespace kilnova
