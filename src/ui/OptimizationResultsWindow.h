#pragma once

#include "ui/ReportWindow.h"

#include <QStringList>

#include <functional>

namespace kilnova {

class CKilnovaDoc;
struct OptimizationOutcome;

/// The results window of every optimisation kind: the report (OK, Print, PDF, text) with the
/// project's page header on paper, the kind's blend chart, why the answer is what it is, and the
/// kind's store actions. An action that stored something is disabled: its sources have changed, and
/// a second store would take their tonnes twice.
class OptimizationResultsWindow : public ReportWindow {
    Q_OBJECT
public:
    OptimizationResultsWindow(const QString& title, const QString& reportText, const CKilnovaDoc& doc,
                              UserPrompt& ui, QWidget* parent = nullptr);

    /// A button in the action area running `store`; true from `store` means something was stored.
    void addStoreAction(const QString& caption, const QString& objectName, const QString& toolTip,
                        std::function<bool()> store);

    /// Shows why the answer is what it is in a panel under the report, and prints and exports it
    /// after the report. `propertyNames` name the problem's properties in order.
    void explain(const OptimizationOutcome& outcome, const QStringList& propertyNames);
    /// The message of a run that found no blend, exactly as it is, with the explanation under it.
    static void showFailure(UserPrompt& ui, const OptimizationOutcome& outcome,
                            const QStringList& propertyNames);
};

} // namespace kilnova
