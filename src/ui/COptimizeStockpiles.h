#pragma once

#include "optimise/StockpileOptimization.h"
#include "ui/OptimizeDialog.h"

#include <functional>

class QListWidget;
class QTreeWidget;

namespace kilnova {

class ConstraintEditor;

/// "Optimize Stockpiles": a thin view over StockpileOptimization. Optimize shows the report through
/// the showResults callback (the dialog stays open); "Refresh Actual" replaces the Actual stockpiles
/// from a data source chosen through chooseSource; OK hands the settings back through parameters().
class COptimizeStockpiles final : public OptimizeDialog {
    Q_OBJECT
public:
    using ResultsHandler = std::function<void(const StockpileOptimization::Result&)>;
    /// The data source for "Refresh Actual" (a name the driver manager knows, or a connection
    /// string), or nothing when the user cancels.
    using SourceChooser = std::function<std::optional<QString>()>;

    COptimizeStockpiles(ProjectDatabase& db, const CSTKOptParameters& parameters, UserPrompt& ui,
                        ResultsHandler showResults, SourceChooser chooseSource, QWidget* parent = nullptr);

    StockpileOptimization& optimization() { return mOptimization; }
    /// The settings OK stored.
    const CSTKOptParameters& parameters() const { return mParameters; }
    QTreeWidget* stockpileList() const { return mStockpiles; }
    QListWidget* additiveList() const { return mAdditives; }

    void optimize() override;
    void refreshActual();
    void accept() override;
    /// Lists the stockpiles and additives again, the selection kept.
    void refreshSources();

private:
    OptimizationSettings& settings() override { return mOptimization; }
    void selectionChanged();
    void viewSource();

    StockpileOptimization mOptimization;
    CSTKOptParameters mParameters;
    ProjectDatabase& mDb;
    ResultsHandler mShowResults;
    SourceChooser mChooseSource;

    ConstraintEditor* mProduct;
    ConstraintEditor* mLeft;
    QTreeWidget* mStockpiles;
    QListWidget* mAdditives;
};

} // namespace kilnova
