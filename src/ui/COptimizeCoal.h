#pragma once

#include "optimise/CoalOptimization.h"
#include "ui/OptimizeDialog.h"

#include <functional>

class QListWidget;

namespace kilnova {

class ConstraintEditor;

/// "Optimize Coal": a thin view over CoalOptimization. The coals to mix, the objective over the 25
/// coal properties, the requested tonnage and the constraint editor; Optimize shows the report
/// through the showResults callback (the results window); OK hands the settings back through
/// parameters().
class COptimizeCoal final : public OptimizeDialog {
    Q_OBJECT
public:
    using ResultsHandler = std::function<void(const CoalOptimization::Result&)>;

    COptimizeCoal(ProjectDatabase& db, const CCoalOptParameters& parameters, UserPrompt& ui,
                  ResultsHandler showResults, QWidget* parent = nullptr);

    CoalOptimization& optimization() { return mOptimization; }
    /// The settings OK stored.
    const CCoalOptParameters& parameters() const { return mParameters; }

    void optimize() override;
    void accept() override;
    /// Lists the coals again, keeping those chosen that are still there.
    void refreshSources();

private:
    OptimizationSettings& settings() override { return mOptimization; }
    void updateEnabling() override;
    void selectionChanged();

    CoalOptimization mOptimization;
    CCoalOptParameters mParameters;
    ResultsHandler mShowResults;

    QListWidget* mSources;
    ConstraintEditor* mConstraints;
};

} // namespace kilnova
