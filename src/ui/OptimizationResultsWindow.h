#pragma once

#include "ui/ReportWindow.h"

#include <functional>

namespace kilnova {

class CKilnovaDoc;

/// The results window of every optimisation kind: the report (OK, Print, PDF, text) with the
/// project's page header on paper, the kind's blend chart, and the kind's store actions. An action that
/// stored something is disabled: its sources have changed, and a second store would take their tonnes twice.
class OptimizationResultsWindow : public ReportWindow {
    Q_OBJECT
public:
    OptimizationResultsWindow(const QString& title, const QString& reportText, const CKilnovaDoc& doc,
                              UserPrompt& ui, QWidget* parent = nullptr);

    /// A button in the action area running `store`; true from `store` means something was stored.
    void addStoreAction(const QString& caption, const QString& objectName, const QString& toolTip,
                        std::function<bool()> store);
};

} // namespace kilnova
