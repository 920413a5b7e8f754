#pragma once

#include "optimise/ClinkerOptimization.h"
#include "ui/OptimizeDialog.h"

#include <functional>

class QComboBox;
class QLabel;
class QListWidget;
class QRadioButton;

namespace kilnova {

class ConstraintEditor;
class NumberField;

/// "Optimize Clinker": a thin view over ClinkerOptimization. Optimize shows the report through the
/// showResults callback (the results window) and leaves the dialog open; OK hands the settings back
/// through parameters(); Cancel keeps nothing.
class COptimizeAdditives final : public OptimizeDialog {
    Q_OBJECT
public:
    using ResultsHandler = std::function<void(const ClinkerOptimization::Result&)>;

    COptimizeAdditives(ProjectDatabase& db, const CClinkerOptParameters& parameters,
                       const ClinkerProcessParameters& process, double freeLime, UserPrompt& ui,
                       ResultsHandler showResults, QWidget* parent = nullptr);

    ClinkerOptimization& optimization() { return mOptimization; }
    /// The settings OK stored.
    const CClinkerOptParameters& parameters() const { return mParameters; }

    void optimize() override;
    void accept() override;
    /// Lists every table's records again, keeping the choice.
    void refreshSources();

private:
    OptimizationSettings& settings() override { return mOptimization; }
    void selectionChanged();
    void selectionKindChanged(bool stockpiles);
    void showTonnageConstraints();
    void editTonnageConstraint(bool modify);

    ClinkerOptimization mOptimization;
    CClinkerOptParameters mParameters;
    ResultsHandler mShowResults;
    std::vector<RecordKey> mStockpileKeys;

    QRadioButton* mCrudeAndCoal;
    QRadioButton* mStockpiles;
    QLabel* mRawCaption;
    QListWidget* mRaw;
    QLabel* mAdditivesCaption;
    QListWidget* mAdditives;
    QListWidget* mCoal;
    QListWidget* mLastList = nullptr;
    ConstraintEditor* mConstraints;
    NumberField* mTonnageMinimum;
    QComboBox* mTonnageStockpile;
    NumberField* mTonnageMaximum;
    QListWidget* mTonnageConstraints;
    QWidget* mTonnageBox;
};

} // namespace kilnova
