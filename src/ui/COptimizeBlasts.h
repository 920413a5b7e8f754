#pragma once

#include "optimise/BlastOptimization.h"
#include "ui/OptimizeDialog.h"

#include <functional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;

namespace kilnova {

class ConstraintEditor;
class QuarryMapLink;
class QuarryMapPane;

/// "Optimize Blasts": a thin view over BlastOptimization, with the quarry map beside the source
/// list. Optimize shows the report through the showResults callback (the results window) and labels
/// the blasts taken on the map; OK hands the settings back through parameters().
class COptimizeBlasts final : public OptimizeDialog {
    Q_OBJECT
public:
    using ResultsHandler = std::function<void(const BlastOptimization::Result&)>;

    COptimizeBlasts(ProjectDatabase& db, const COptimizationParameters& parameters, UserPrompt& ui,
                    ResultsHandler showResults, QWidget* parent = nullptr);

    BlastOptimization& optimization() { return mOptimization; }
    /// The settings OK stored.
    const COptimizationParameters& parameters() const { return mParameters; }

    void optimize() override;
    void accept() override;
    void refreshSources();
    /// Reads the blasts of the map again from the database.
    void reloadMap();
    QuarryMapPane* map() const { return mMap; }

private:
    OptimizationSettings& settings() override { return mOptimization; }
    /// The objective fields, then the coordinate filter.
    bool readFields() override;
    void updateEnabling() override;
    void selectionChanged();

    ProjectDatabase& mDb;
    BlastOptimization mOptimization;
    COptimizationParameters mParameters;
    ResultsHandler mShowResults;

    ConstraintEditor* mConstraints;
    QLabel* mSourceCaption;
    QListWidget* mSources;
    QCheckBox* mFilter;
    std::array<NumberField*, 6> mBounds{};
    QLineEdit* mRunningTotal;
    QuarryMapPane* mMap;
    QuarryMapLink* mMapLink = nullptr;
    /// The last Optimize, whose tonnes the map labels.
    std::optional<BlastOptimization::Result> mLastRun;
};

} // namespace kilnova
