#pragma once

#include "optimise/BlastOptimization.h"
#include "ui/OptimizationResultsWindow.h"

namespace kilnova {

class CKilnovaDoc;

/// "Blast Optimization Results": the report, and "Store blend…" to keep the blend as a new
/// stockpile and take its tonnes out of the blasts.
class BlastResultsWindow final : public OptimizationResultsWindow {
    Q_OBJECT
public:
    BlastResultsWindow(const BlastOptimization::Result& result, CKilnovaDoc& doc, UserPrompt& ui,
                       QWidget* parent = nullptr);

    /// Asks for the stockpile's name and whether to subtract, then stores; true when stored.
    bool storeBlend();

private:
    BlastOptimization::Result mResult;
    CKilnovaDoc& mDoc;
};

} // namespace kilnova
