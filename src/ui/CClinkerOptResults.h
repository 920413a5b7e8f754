#pragma once

#include "optimise/ClinkerOptimization.h"
#include "ui/OptimizationResultsWindow.h"

namespace kilnova {

class CKilnovaDoc;

/// "Clinker Optimization Results": the report, and "Store clinker and crude…" to keep the clinker as
/// a new Clinker record and the raw mix as a new Crude record, then take the tonnes out of the
/// crudes, stockpiles and coals.
class CClinkerOptResults final : public OptimizationResultsWindow {
    Q_OBJECT
public:
    CClinkerOptResults(const ClinkerOptimization::Result& result, CKilnovaDoc& doc, UserPrompt& ui,
                       QWidget* parent = nullptr);

    /// Asks for both names and whether to subtract, then stores everything at once; true when stored.
    bool store();

private:
    ClinkerOptimization::Result mResult;
    CKilnovaDoc& mDoc;
};

} // namespace kilnova
