#pragma once

#include "optimise/CoalOptimization.h"
#include "ui/OptimizationResultsWindow.h"

namespace kilnova {

class CKilnovaDoc;

/// "Coal Optimization Results": the report with the mix's blend chart, and "Store coal…" to keep the
/// mix as a new coal and take its tonnes out of the coals used (which have no backup).
class CoalResultsWindow final : public OptimizationResultsWindow {
    Q_OBJECT
public:
    CoalResultsWindow(const CoalOptimization::Result& result, CKilnovaDoc& doc, UserPrompt& ui,
                      QWidget* parent = nullptr);

    /// Asks for the coal's name and whether to subtract, then stores; true when stored.
    bool storeCoal();

private:
    CoalOptimization::Result mResult;
    CKilnovaDoc& mDoc;
};

} // namespace kilnova
